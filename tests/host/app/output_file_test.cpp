#include "app/output_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "command_fixture.h"

namespace vornel::app {
namespace {

class OutputFiles : public test::CommandFixture {};

TEST_F(OutputFiles, AreThereWholeOrNotAtAll) {
    Write("out.json", "before");
    {
        OutputFile file(Path("out.json"));
        file.Write("half");
        EXPECT_EQ(Read(Path("out.json")), "before");
    }
    EXPECT_THAT(FilesInFolder(), testing::ElementsAre("out.json"));
    WriteWhole(Path("out.json"), "after");
    EXPECT_EQ(Read(Path("out.json")), "after");
    EXPECT_THAT(FilesInFolder(), testing::ElementsAre("out.json"));
}

TEST_F(OutputFiles, AnInterruptLeavesNothingBehind) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            InstallInterruptHandlers();
            OutputFile file(Path("out.json"));
            file.Write("half");
            std::raise(signal);
            ::_exit(99);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(WTERMSIG(status), signal);
        EXPECT_TRUE(FilesInFolder().empty());
    }
}

// A run of some tenths of a second, interrupted early and late: what is there afterwards is whole.
TEST_F(OutputFiles, AnInterruptedRunLeavesWholeFilesOrNone) {
    const std::string ebre = (test::ProjectFolder() / "tests/data/baselines/ebre-bell").string();
    const std::vector<std::string> words = {"solve",
                                            "--base",
                                            ebre + "/ebre0300.02o.xz",
                                            "--rover",
                                            ebre + "/bell0300.02o.xz",
                                            ebre + "/brdc0300.02n.xz",
                                            "--json",
                                            Path("out.json"),
                                            "--csv",
                                            Path("out.csv")};
    std::size_t interrupted = 0;
    for (int milliseconds = 5; milliseconds < 700; milliseconds += 80) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            InstallInterruptHandlers();
            Vornel(words);
            ::_exit(0);
        }
        ::usleep(static_cast<useconds_t>(1000 * milliseconds));
        ::kill(child, SIGINT);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        interrupted += WIFSIGNALED(status) ? 1 : 0;
        for (const std::string& name : FilesInFolder()) {
            const std::string content = Read(Path(name));
            if (name == "out.json") {
                EXPECT_TRUE(nlohmann::json::accept(content));
            } else {
                EXPECT_EQ(name, "out.csv");
                EXPECT_EQ(content.substr(content.size() - 1), "\n");
            }
            std::filesystem::remove(Path(name));
        }
    }
    EXPECT_GT(interrupted, 0U);
}

TEST_F(OutputFiles, PlacesThatCannotBeWrittenAreNamed) {
    EXPECT_THROW(RequireWritable(Path("none/out.json")), OutputError);
    EXPECT_THROW(RequireWritable(folder_.string()), OutputError);
    EXPECT_THROW(WriteWhole(Path("none/out.json"), "x"), OutputError);
    EXPECT_NO_THROW(RequireWritable(Path("out.json")));
    EXPECT_TRUE(FilesInFolder().empty());
}

}  // namespace
}  // namespace vornel::app
