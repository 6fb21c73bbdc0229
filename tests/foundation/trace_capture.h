// A trace file for the length of a test.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "foundation/trace.h"

namespace vornel::reference {

class TraceCapture {
  public:
    explicit TraceCapture(int level) : path_(PathOfTest()) {
        TraceClose();
        TraceOpen(path_.c_str());
        TraceSetLevel(level);
    }
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;
    ~TraceCapture() {
        Close();
        std::remove(path_.c_str());
    }

    // Closes the trace and gives what it holds.
    std::string Text() {
        Close();
        std::ifstream file(path_, std::ios::binary);
        EXPECT_TRUE(file.is_open()) << path_;
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }

  private:
    // One of its own for each test, as tests may run side by side.
    static std::string PathOfTest() {
        const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
        return testing::TempDir() + "vornel_trace_" + test.test_suite_name() + "_" + test.name() +
               ".txt";
    }

    void Close() {
        TraceClose();
        TraceSetLevel(0);
    }

    std::string path_;
};

}  // namespace vornel::reference
