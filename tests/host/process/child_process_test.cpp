// Work in a child: its answer, its words, its exceptions, its death.
#include "process/child_process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <new>
#include <thread>
#include <vector>

namespace vornel::process {
namespace {

using testing::HasSubstr;

template <typename Error>
std::string TextOf(const std::function<std::string(const Progress&)>& work,
                   const ChildOptions& options = {}) {
    try {
        RunInChild(work, options);
    } catch (const Error& error) {
        return error.what();
    }
    return "nothing was thrown";
}

TEST(ChildProcess, TheAnswerComesBackWholeAndMemoryStaysAsItWas) {
    int touched = 0;
    std::string big(5'000'000, 'x');
    big[4'999'999] = '\0';
    const ChildAnswer answer = RunInChild([&](const Progress&) {
        touched = 1;
        std::fprintf(stderr, "words %d", 7);
        return big;
    });
    EXPECT_EQ(answer.bytes, big);
    EXPECT_EQ(answer.errorStream, "words 7");
    EXPECT_EQ(touched, 0);
}

TEST(ChildProcess, AnEmptyAnswerIsOne) {
    EXPECT_EQ(RunInChild([](const Progress&) { return std::string(); }).bytes, "");
}

TEST(ChildProcess, ExceptionsComeBack) {
    EXPECT_EQ(TextOf<ChildException>([](const Progress&) -> std::string {
                  throw std::runtime_error("no such thing");
              }),
              "no such thing");
    EXPECT_THAT(TextOf<ChildException>([](const Progress&) -> std::string { throw 5; }),
                HasSubstr("no known type"));
    EXPECT_THROW(RunInChild([](const Progress&) -> std::string { throw std::bad_alloc(); }),
                 std::bad_alloc);
}

TEST(ChildProcess, ADeathIsToldWithItsSignalAndLastWords) {
    const std::string text = TextOf<ChildDied>([](const Progress&) -> std::string {
        std::fprintf(stderr, "about to go");
        std::fflush(stderr);
        ::raise(SIGKILL);
        return "never";
    });
    EXPECT_THAT(text, HasSubstr("signal 9"));
    EXPECT_THAT(text, HasSubstr("about to go"));
    EXPECT_THAT(TextOf<ChildDied>([](const Progress&) -> std::string { ::_exit(3); }),
                HasSubstr("exit code 3"));
}

TEST(ChildProcess, ItIsEndedWhenCancelledOrTooLate) {
    const auto forever = [](const Progress&) -> std::string {
        while (true) {
            ::pause();
        }
    };
    const auto begin = std::chrono::steady_clock::now();
    ChildOptions options;
    options.timeLimit = 0.2;
    EXPECT_THAT(TextOf<ChildDied>(forever, options), HasSubstr("time limit"));
    ChildOptions cancel;
    std::atomic<int> asked = 0;
    cancel.cancelled = [&] { return ++asked > 3; };
    EXPECT_THAT(TextOf<Cancelled>(forever, cancel), HasSubstr("cancelled"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST(ChildProcess, ProgressIsToldInTheParent) {
    std::vector<std::string> told;
    ChildOptions options;
    const pid_t here = ::getpid();
    options.progress = [&](const std::string& what, std::size_t done, std::size_t total) {
        EXPECT_EQ(::getpid(), here);
        told.push_back(what + " " + std::to_string(done) + "/" + std::to_string(total));
    };
    RunInChild(
        [](const Progress& progress) {
            progress("first part", 1, 10);
            progress("second", 0, 0);
            return std::string();
        },
        options);
    EXPECT_THAT(told, testing::ElementsAre("first part 1/10", "second 0/0"));
}

TEST(ChildProcess, WorksWhereEndedChildrenAreNotWaitedFor) {
    const auto before = ::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(RunInChild([](const Progress&) { return std::string("fine"); }).bytes, "fine");
    ::signal(SIGCHLD, before);
}

TEST(ChildProcess, SeveralThreadsAtOnce) {
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&right, i] {
            for (int k = 0; k < 5; ++k) {
                const std::string expected = std::to_string(100 * i + k);
                right += RunInChild([&](const Progress&) { return expected; }).bytes == expected;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(right, 40);
}

}  // namespace
}  // namespace vornel::process
