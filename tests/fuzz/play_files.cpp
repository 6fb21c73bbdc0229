// Plays inputs through a fuzzing target without libFuzzer, so that every compiler and every test run
// sees what fuzzing has kept:
//   fuzz_TARGET PATH...      each a file, or a folder whose files are played in order of their names
// A finding ends the process, and so does an input that takes longer than a minute.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr unsigned kMostSeconds = 60;

std::vector<std::filesystem::path> FilesOf(const std::filesystem::path& path) {
    if (std::filesystem::is_regular_file(path)) {
        return {path};
    }
    if (!std::filesystem::is_directory(path)) {
        std::printf("%s: nothing kept there\n", path.c_str());
        return {};
    }
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool Play(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    // A copy of exactly that size, so that reading beyond its end is seen.
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad()) {
        std::fprintf(stderr, "%s: cannot be read\n", path.c_str());
        return false;
    }
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    alarm(kMostSeconds);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    alarm(0);
    return true;
}

}  // namespace

int main(int count, char** arguments) {
    std::size_t played = 0;
    for (int i = 1; i < count; ++i) {
        for (const std::filesystem::path& path : FilesOf(arguments[i])) {
            if (!Play(path)) {
                return 1;
            }
            ++played;
        }
    }
    std::printf("%zu inputs played\n", played);
    if (played == 0) {
        std::fprintf(stderr, "there is nothing to play\n");
        return 1;
    }
    return 0;
}
