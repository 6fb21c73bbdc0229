#include "app/output_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>

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

TEST_F(OutputFiles, PlacesThatCannotBeWrittenAreNamed) {
    EXPECT_THROW(RequireWritable(Path("none/out.json")), OutputError);
    EXPECT_THROW(RequireWritable(folder_.string()), OutputError);
    EXPECT_THROW(WriteWhole(Path("none/out.json"), "x"), OutputError);
    EXPECT_NO_THROW(RequireWritable(Path("out.json")));
    EXPECT_TRUE(FilesInFolder().empty());
}

}  // namespace
}  // namespace vornel::app
