// The line of progress on a terminal, here at the end of a pipe.
#include "app/progress_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <string>
#include <thread>

namespace vornel::app {
namespace {

using std::chrono::milliseconds;

constexpr char kWipe[] = "\r\033[K";

// A pipe; what was written to it so far, once its writing end is closed.
class Pipe {
  public:
    Pipe() { EXPECT_EQ(::pipe(ends_.data()), 0); }
    ~Pipe() { ::close(ends_[0]); }
    int writing() const { return ends_[1]; }
    std::string Text() {
        ::close(ends_[1]);
        std::string text;
        char buffer[512];
        for (ssize_t n = 0; (n = ::read(ends_[0], buffer, sizeof buffer)) > 0;) {
            text.append(buffer, static_cast<std::size_t>(n));
        }
        return text;
    }

  private:
    std::array<int, 2> ends_{};
};

TEST(ProgressLineTest, FromTheFirstSecondOnItTellsAndIsWipedInTheEnd) {
    Pipe pipe;
    {
        ProgressLine line(pipe.writing(), true);
        line.Tell("reading", 3, 10);
        std::this_thread::sleep_for(milliseconds(1400));
        line.Tell("solving", 0, 0);
        std::this_thread::sleep_for(milliseconds(400));
        line.Stop();
        line.Tell("too late", 1, 2);
        line.Stop();
    }
    const std::string text = pipe.Text();
    EXPECT_THAT(text, testing::StartsWith(std::string(kWipe) + "reading: 3 of 10 (1 s)"));
    EXPECT_THAT(text, testing::HasSubstr(std::string(kWipe) + "solving ("));
    EXPECT_THAT(text, testing::EndsWith(std::string(" s)") + kWipe));
    EXPECT_THAT(text, testing::Not(testing::HasSubstr("too late")));
}

TEST(ProgressLineTest, WithNothingToTellNothingIsWritten) {
    Pipe pipe;
    {
        ProgressLine line(pipe.writing(), true);
        std::this_thread::sleep_for(milliseconds(1200));
    }
    EXPECT_EQ(pipe.Text(), "");
}

TEST(ProgressLineTest, WorkOfLessThanASecondIsNotTold) {
    Pipe pipe;
    const auto begin = std::chrono::steady_clock::now();
    {
        ProgressLine line(pipe.writing(), true);
        line.Tell("reading", 3, 10);
    }
    // The line ends at once, not after its second; on a machine that stood still this shows nothing.
    if (std::chrono::steady_clock::now() - begin < milliseconds(900)) {
        EXPECT_EQ(pipe.Text(), "");
    }
}

TEST(ProgressLineTest, AwayFromATerminalItIsSilent) {
    Pipe pipe;
    {
        ProgressLine line(pipe.writing(), false);
        line.Tell("reading", 3, 10);
        std::this_thread::sleep_for(milliseconds(1200));
    }
    EXPECT_EQ(pipe.Text(), "");
}

}  // namespace
}  // namespace vornel::app
