// Runs the command in this process, in a folder of its own that goes when the test ends.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "app/command.h"
#include "io/file_bytes.h"
#include "project_folder.h"

namespace vornel::test {

struct Answer {
    int code = 0;
    std::string out;
    std::string err;
};

class CommandFixture : public ::testing::Test {
  protected:
    void SetUp() override {
        std::string name = (std::filesystem::temp_directory_path() / "vornel-XXXXXX").string();
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        folder_ = name;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    Answer Vornel(const std::vector<std::string>& arguments, const engine::Api& engine = {}) const {
        std::ostringstream out, err;
        Answer answer;
        answer.code = app::RunCommand(arguments, {out, err, false, engine});
        answer.out = out.str();
        answer.err = err.str();
        return answer;
    }

    std::string Path(const std::string& name) const { return (folder_ / name).string(); }

    std::string Write(const std::string& name, const std::string& content) const {
        std::ofstream(folder_ / name, std::ios::binary) << content;
        return Path(name);
    }

    static std::string Read(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

    std::vector<std::string> FilesInFolder() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    // Files of the session of the demo.
    static std::string Demo(const std::string& name) {
        return (ProjectFolder() / "data" / "wettzell" / name).string();
    }
    static std::string DemoBase() { return Demo("WTZR00DEU_R_20201770000_01H_30S_MO.rnx.gz"); }
    static std::string DemoRover() { return Demo("WTZZ00DEU_R_20201770000_01H_30S_MO.rnx.gz"); }
    static std::string DemoNavigation() { return Demo("ESBC00DNK_R_20201770000_01D_MN.rnx.gz"); }
    static std::string DemoGlonass() { return Demo("ESBC00DNK_R_20201770000_01D_RN.rnx.gz"); }
    static std::string Unpacked(const std::string& path) {
        return io::ReadFile(path).front().bytes;
    }

    // solve --base BASE --rover ROVER NAVIGATION..., with more words behind.
    static std::vector<std::string> DemoSolve(const std::vector<std::string>& more = {}) {
        std::vector<std::string> words = {"solve",     "--base",         DemoBase(),   "--rover",
                                          DemoRover(), DemoNavigation(), DemoGlonass()};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    std::filesystem::path folder_;
};

}  // namespace vornel::test
