// The trace: templates of its path, what reaches the file and the standard error stream, and the
// change of files with the day.
#include "foundation/trace.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "foundation/trace_fixture.h"

namespace {

using gult::matrixT;
using vornel::Epoch;
using vornel::TraceArray;
using vornel::TraceClose;
using vornel::TraceMatrix;
using vornel::TraceOpen;
using vornel::TraceSetLevel;
using vornel::TraceWrite;
using vornel::test::FakeClock;
using vornel::test::ReadFile;
using vornel::test::StderrCapture;
using vornel::test::TemporaryDirectory;

// --- path templates ------------------------------------------------------------------------------

struct Expansion {
    int count;
    std::string path;
};

Expansion Expand(const std::string& pathTemplate, const Epoch& time, const char* rover = "",
                 const char* base = "") {
    char path[1024] = {};
    std::strncpy(path, pathTemplate.c_str(), sizeof path - 1);
    const int count = vornel::ExpandPath(path, rover, base, time);
    return {count, path};
}

Epoch FromCalendar(double year, double month, double day, double hour, double minute,
                   double seconds) {
    const double calendar[6] = {year, month, day, hour, minute, seconds};
    return Epoch(calendar);
}

// A Saturday, day 6 of GPS week 2290.
const Epoch kEvening = FromCalendar(2023, 12, 2, 22, 47, 5.75);

TEST(TracePath, EveryKeywordOfTheTime) {
    const struct {
        const char* keyword;
        const char* text;
    } table[] = {{"%ha", "21"}, {"%hb", "18"},  {"%hc", "12"}, {"%Y", "2023"}, {"%y", "23"},
                 {"%m", "12"},  {"%d", "02"},   {"%h", "22"},  {"%M", "47"},   {"%S", "05"},
                 {"%n", "336"}, {"%W", "2290"}, {"%D", "6"},   {"%H", "w"},    {"%t", "45"}};
    for (const auto& [keyword, text] : table) {
        const Expansion bare = Expand(keyword, kEvening);
        EXPECT_EQ(bare.path, text) << keyword;
        EXPECT_EQ(bare.count, 1) << keyword;
        const Expansion inside = Expand(std::string("a/") + keyword + ".log", kEvening);
        EXPECT_EQ(inside.path, std::string("a/") + text + ".log");
    }
}

TEST(TracePath, ShortNumbersArePaddedWithZeros) {
    // Week 1 of GPS time begins on 1980-01-13, a Sunday and day 13 of the year.
    const Epoch early = FromCalendar(1980, 1, 13, 3, 4, 9.999);
    EXPECT_EQ(Expand("%Y-%y-%m-%d-%h-%M-%S", early).path, "1980-80-01-13-03-04-09");
    EXPECT_EQ(Expand("%ha-%hb-%hc-%n-%W-%D-%H-%t", early).path, "03-00-00-013-0001-0-d-00");
    EXPECT_EQ(Expand("%y", FromCalendar(2005, 6, 7, 0, 0, 0.5)).path, "05");
}

TEST(TracePath, HoursOfADayAsLettersAndBlocks) {
    for (int hour = 0; hour < 24; ++hour) {
        char expected[64];
        std::snprintf(expected, sizeof expected, "%c %02d %02d %02d %02d",
                      "abcdefghijklmnopqrstuvwx"[hour], hour, hour / 3 * 3, hour / 6 * 6,
                      hour / 12 * 12);
        const Epoch time = FromCalendar(2024, 5, 6, hour, 59, 59.5);
        EXPECT_EQ(Expand("%H %h %ha %hb %hc", time).path, expected);
    }
}

TEST(TracePath, QuartersOfAnHour) {
    const char* const quarters[] = {"00", "15", "30", "45"};
    for (int minute = 0; minute < 60; ++minute) {
        EXPECT_EQ(Expand("%t", FromCalendar(2024, 5, 6, 7, minute, 0.0)).path,
                  quarters[minute / 15]);
    }
}

TEST(TracePath, SecondsAreCutNotRounded) {
    EXPECT_EQ(Expand("%S", FromCalendar(2024, 5, 6, 7, 8, 59.875)).path, "59");
    EXPECT_EQ(Expand("%S", FromCalendar(2024, 5, 6, 7, 8, 0.5)).path, "00");
}

TEST(TracePath, EveryOccurrenceIsReplacedAndCounted) {
    const Expansion expansion = Expand("%Y/%Y%m%d/%h%h%h.log", kEvening);
    EXPECT_EQ(expansion.path, "2023/20231202/222222.log");
    EXPECT_EQ(expansion.count, 7);
}

TEST(TracePath, TheHourBlocksComeBeforeTheHour) {
    EXPECT_EQ(Expand("%h%ha%hd%h_a", kEvening).path, "222122d22_a");
}

TEST(TracePath, WhatIsNoKeywordStays) {
    for (const char* path : {"", "plain.log", "100%", "%", "%q%x", "%%", "% Y", "a%"}) {
        const Expansion expansion = Expand(path, kEvening);
        EXPECT_EQ(expansion.path, path);
        EXPECT_EQ(expansion.count, 0) << path;
    }
    EXPECT_EQ(Expand("%%Y", kEvening).path, "%2023");
}

TEST(TracePath, StationKeywordsNeedAName) {
    const Expansion without = Expand("%r-%b.log", kEvening);
    EXPECT_EQ(without.path, "%r-%b.log");
    EXPECT_EQ(without.count, 0);
    const Expansion both = Expand("%r-%b-%r.log", kEvening, "ROVR", "BASE");
    EXPECT_EQ(both.path, "ROVR-BASE-ROVR.log");
    EXPECT_EQ(both.count, 3);
    EXPECT_EQ(Expand("%r-%b", kEvening, "ROVR", "").path, "ROVR-%b");
    EXPECT_EQ(Expand("%r-%b", kEvening, "", "BASE").path, "%r-BASE");
}

TEST(TracePath, StationNamesAreExpandedFirst) {
    const Expansion expansion = Expand("%r.log", kEvening, "day%d", "");
    EXPECT_EQ(expansion.path, "day02.log");
    EXPECT_EQ(expansion.count, 2);
}

TEST(TracePath, NoTimeRefusesTheKeywordsOfTheTime) {
    for (const char* keyword : {"%ha", "%hb", "%hc", "%Y", "%y", "%m", "%d", "%h", "%M", "%S", "%n",
                                "%W", "%D", "%H", "%t"}) {
        const Expansion expansion = Expand(std::string("x") + keyword, Epoch());
        EXPECT_EQ(expansion.count, -1) << keyword;
        EXPECT_EQ(expansion.path, std::string("x") + keyword);
    }
    const Expansion named = Expand("%r%Y", Epoch(), "ROVR", "");
    EXPECT_EQ(named.count, -1);
    EXPECT_EQ(named.path, "ROVR%Y");
}

TEST(TracePath, NoTimeIsEnoughForWhatNeedsNone) {
    EXPECT_EQ(Expand("plain", Epoch()).count, 0);
    EXPECT_EQ(Expand("%q", Epoch()).count, 0);
    const Expansion named = Expand("%r-%b", Epoch(), "ROVR", "BASE");
    EXPECT_EQ(named.count, 2);
    EXPECT_EQ(named.path, "ROVR-BASE");
}

TEST(TracePath, ANameTooLongForTheBufferIsCut) {
    const std::string long1020(1020, 'a');
    EXPECT_EQ(Expand(long1020 + "%Y", kEvening).path, long1020 + "202");
    EXPECT_EQ(Expand(std::string(1019, 'a') + "%Y", kEvening).path,
              std::string(1019, 'a') + "2023");
    // A name put in near the front pushes the end out.
    const std::string tail(1021, 'b');
    const Expansion pushed = Expand("%r" + tail, kEvening, "ROVR", "");
    EXPECT_EQ(pushed.path, "ROVR" + std::string(1019, 'b'));
    EXPECT_EQ(pushed.count, 1);
    const std::string huge(3000, 'c');
    EXPECT_EQ(Expand("x%r", kEvening, huge.c_str(), "").path, "x" + std::string(1022, 'c'));
}

// --- writing -------------------------------------------------------------------------------------

// Noon of a Wednesday, far from any change of day.
constexpr vornel::UtcClock kNoon = {2024, 3, 6, 12, 0, 0, 0};

class Trace : public testing::Test {
  protected:
    void SetUp() override {
        TraceClose();
        TraceSetLevel(0);
    }
    void TearDown() override {
        TraceClose();
        TraceSetLevel(0);
    }

    TemporaryDirectory directory_;
    FakeClock clock_{kNoon};
};

TEST_F(Trace, ALineIsTheLevelABlankAndTheMessage) {
    const std::string path = directory_.File("trace.log");
    const StderrCapture standardError;
    TraceOpen(path.c_str());
    TraceSetLevel(5);
    TraceWrite(3, "solve %d of %s: %.3f\n", 7, "nine", 1.5);
    TraceWrite(5, "no line end;");
    TraceWrite(4, "%s", "\n");
    TraceClose();
    EXPECT_EQ(ReadFile(path), "3 solve 7 of nine: 1.500\n5 no line end;4 \n");
    EXPECT_EQ(standardError.Text(), "");
}

TEST_F(Trace, LevelsAboveTheSetOneAreLeftOut) {
    const std::string path = directory_.File("trace.log");
    TraceOpen(path.c_str());
    TraceSetLevel(3);
    for (const int level : {2, 3, 4, 5}) {
        TraceWrite(level, "line\n");
    }
    TraceSetLevel(4);
    TraceWrite(4, "now\n");
    TraceWrite(5, "never\n");
    EXPECT_EQ(ReadFile(path), "2 line\n3 line\n4 now\n");
}

TEST_F(Trace, EveryLineIsFlushed) {
    const std::string path = directory_.File("trace.log");
    TraceOpen(path.c_str());
    TraceSetLevel(3);
    EXPECT_EQ(ReadFile(path), "");
    TraceWrite(3, "one\n");
    EXPECT_EQ(ReadFile(path), "3 one\n");
    TraceWrite(3, "two");
    EXPECT_EQ(ReadFile(path), "3 one\n3 two");
}

TEST_F(Trace, ALongMessageIsWhole) {
    const std::string path = directory_.File("trace.log");
    const std::string text(100000, 'x');
    const StderrCapture standardError;
    TraceOpen(path.c_str());
    TraceSetLevel(3);
    TraceWrite(3, "%s\n", text.c_str());
    TraceWrite(1, "%s\n", text.c_str());
    EXPECT_EQ(ReadFile(path), "3 " + text + "\n1 " + text + "\n");
    EXPECT_EQ(standardError.Text(), text + "\n");
}

TEST_F(Trace, LevelOneReachesTheStandardErrorStreamWithoutItsLevel) {
    const std::string path = directory_.File("trace.log");
    const StderrCapture standardError;
    TraceOpen(path.c_str());
    TraceSetLevel(1);
    TraceWrite(1, "model %d, step %d.\n", 6, 2);
    TraceWrite(2, "silent\n");
    EXPECT_EQ(ReadFile(path), "1 model 6, step 2.\n");
    EXPECT_EQ(standardError.Text(), "model 6, step 2.\n");
}

TEST_F(Trace, LevelOneAboveTheSetLevelGoesToTheStandardErrorStreamAlone) {
    const std::string path = directory_.File("trace.log");
    const StderrCapture standardError;
    TraceOpen(path.c_str());
    TraceSetLevel(0);
    TraceWrite(1, "one\n");
    TraceWrite(0, "zero\n");
    TraceWrite(-1, "below\n");
    EXPECT_EQ(ReadFile(path), "0 zero\n-1 below\n");
    EXPECT_EQ(standardError.Text(), "one\nzero\nbelow\n");
}

TEST_F(Trace, WithoutATraceLevelOneGoesToTheStandardErrorStreamAndNowhereElse) {
    const StderrCapture standardError;
    TraceWrite(1, "alone %d\n", 1);
    TraceSetLevel(5);
    TraceWrite(1, "again\n");
    TraceWrite(2, "silent\n");
    TraceWrite(5, "silent\n");
    EXPECT_EQ(standardError.Text(), "alone 1\nagain\n");
    EXPECT_EQ(directory_.EntryCount(), 0);
}

TEST_F(Trace, AnEmptyPathTracesOnTheStandardErrorStream) {
    const StderrCapture standardError;
    TraceOpen("");
    TraceSetLevel(3);
    EXPECT_EQ(standardError.Text(), "");
    TraceWrite(3, "three\n");
    TraceWrite(4, "four\n");
    TraceWrite(1, "one\n");
    EXPECT_EQ(standardError.Text(), "3 three\none\n1 one\n");
    TraceClose();
    TraceWrite(3, "closed\n");
    EXPECT_EQ(standardError.Text(), "3 three\none\n1 one\n");
}

TEST_F(Trace, NoPathAtAllTracesOnTheStandardErrorStreamToo) {
    const StderrCapture standardError;
    TraceOpen(nullptr);
    TraceSetLevel(3);
    TraceWrite(3, "three\n");
    EXPECT_EQ(standardError.Text(), "3 three\n");
    EXPECT_EQ(directory_.EntryCount(), 0);
}

TEST_F(Trace, ClosingDoesNotCloseTheStandardErrorStream) {
    const StderrCapture standardError;
    TraceOpen("");
    TraceClose();
    TraceWrite(1, "still here\n");
    EXPECT_EQ(standardError.Text(), "still here\n");
}

TEST_F(Trace, APathThatCannotBeOpenedTracesOnTheStandardErrorStreamWithoutAWord) {
    const StderrCapture standardError;
    TraceOpen(directory_.File("missing/trace.log").c_str());
    TraceSetLevel(2);
    EXPECT_EQ(standardError.Text(), "");
    TraceWrite(2, "here\n");
    EXPECT_EQ(standardError.Text(), "2 here\n");
    EXPECT_EQ(directory_.EntryCount(), 0);
}

TEST_F(Trace, ASecondOpenOfTheSamePathOverwrites) {
    const std::string path = directory_.File("trace.log");
    TraceSetLevel(3);
    TraceOpen(path.c_str());
    TraceWrite(3, "a first run, a long line\n");
    TraceClose();
    TraceOpen(path.c_str());
    EXPECT_EQ(ReadFile(path), "");
    TraceWrite(3, "second\n");
    EXPECT_EQ(ReadFile(path), "3 second\n");
}

TEST_F(Trace, ClosingKeepsTheLevelAndMayBeRepeated) {
    const std::string first = directory_.File("first.log");
    const std::string second = directory_.File("second.log");
    TraceSetLevel(4);
    TraceOpen(first.c_str());
    TraceWrite(4, "one\n");
    TraceClose();
    TraceClose();
    TraceWrite(4, "lost\n");
    EXPECT_EQ(ReadFile(first), "4 one\n");
    TraceOpen(second.c_str());
    TraceWrite(4, "two\n");
    EXPECT_EQ(ReadFile(first), "4 one\n");
    EXPECT_EQ(ReadFile(second), "4 two\n");
}

TEST_F(Trace, OpeningExpandsThePathWithGpsTime) {
    clock_.Set({2024, 3, 6, 23, 59, 45, 900});  // 18 leap seconds on, the next day has begun
    TraceOpen(directory_.File("t%Y%m%d_%h%M%S_%W%D_%r%b.log").c_str());
    EXPECT_TRUE(std::filesystem::exists(directory_.File("t20240307_000003_23044_%r%b.log")));
    EXPECT_EQ(directory_.EntryCount(), 1);
}

TEST_F(Trace, APathTooLongForTheBufferIsCut) {
    // Steps in place fill the name up; the file's own name begins three characters before the cut.
    std::string path = directory_.File("");
    if (path.back() != '/') {
        path += '/';
    }
    while (path.size() + 2 <= 1020) {
        path += "./";
    }
    while (path.size() < 1020) {
        path += '/';
    }
    path += "abcdefgh";
    TraceOpen(path.c_str());
    EXPECT_TRUE(std::filesystem::exists(directory_.File("abc")));
    EXPECT_EQ(directory_.EntryCount(), 1);
}

TEST_F(Trace, TheClockIsReadForWrittenLinesAlone) {
    TraceOpen(directory_.File("trace.log").c_str());
    TraceSetLevel(3);
    const int opened = clock_.Readings();
    EXPECT_GE(opened, 1);
    TraceWrite(4, "not written\n");
    TraceMatrix(4, matrixT(1, 1), 13, 4);
    EXPECT_EQ(clock_.Readings(), opened);
    TraceWrite(3, "written\n");
    TraceWrite(2, "written\n");
    EXPECT_EQ(clock_.Readings(), opened + 2);
}

// --- dumps ---------------------------------------------------------------------------------------

matrixT SampleMatrix() {
    matrixT m(2, 3);
    m(0, 0) = 1.0;
    m(0, 1) = -2.25;
    m(0, 2) = 1e9;
    m(1, 0) = 0.00004;
    m(1, 1) = -0.00006;
    m(1, 2) = 123456789012.5;
    return m;
}

constexpr char kSampleText[] =
    "        1.0000       -2.2500 1000000000.0000\n"
    "        0.0000       -0.0001 123456789012.5000\n";

TEST_F(Trace, AMatrixIsARowToALineWithoutTheLevel) {
    const std::string path = directory_.File("trace.log");
    const StderrCapture standardError;
    TraceOpen(path.c_str());
    TraceSetLevel(5);
    TraceMatrix(5, SampleMatrix(), 13, 4);
    EXPECT_EQ(ReadFile(path), kSampleText);  // flushed
    TraceMatrix(1, SampleMatrix(), 1, 0);
    EXPECT_EQ(ReadFile(path), std::string(kSampleText) + " 1 -2 1000000000\n 0 -0 123456789012\n");
    EXPECT_EQ(standardError.Text(), "");
}

TEST_F(Trace, AMatrixAboveTheLevelIsLeftOut) {
    const std::string path = directory_.File("trace.log");
    TraceOpen(path.c_str());
    TraceSetLevel(4);
    TraceMatrix(5, SampleMatrix(), 13, 4);
    const double values[] = {1.0};
    TraceArray(5, values, 1, 1, 13, 3);
    EXPECT_EQ(ReadFile(path), "");
    TraceMatrix(4, SampleMatrix(), 13, 4);
    EXPECT_EQ(ReadFile(path), kSampleText);
}

TEST_F(Trace, WithoutATraceDumpsWriteNothing) {
    const StderrCapture standardError;
    TraceSetLevel(5);
    TraceMatrix(1, SampleMatrix(), 13, 4);
    const double values[] = {1.0};
    TraceArray(1, values, 1, 1, 13, 3);
    EXPECT_EQ(standardError.Text(), "");
}

TEST_F(Trace, DumpsGoToTheStandardErrorStreamWhereTheTraceIs) {
    const StderrCapture standardError;
    TraceOpen("");
    TraceSetLevel(5);
    TraceMatrix(5, SampleMatrix(), 13, 4);
    EXPECT_EQ(standardError.Text(), kSampleText);
}

TEST_F(Trace, TheReferenceOfAMatrixIsGivenBackOnEveryPath) {
    matrixT m = SampleMatrix();
    const matrixT sharer = m;
    TraceMatrix(3, m, 13, 4);  // closed
    EXPECT_EQ(m.RefCount(), 2);
    TraceOpen(directory_.File("trace.log").c_str());
    TraceMatrix(3, m, 13, 4);  // above the level
    EXPECT_EQ(m.RefCount(), 2);
    TraceSetLevel(3);
    TraceMatrix(3, m, 13, 4);  // written
    EXPECT_EQ(m.RefCount(), 2);
    EXPECT_EQ(ReadFile(directory_.File("trace.log")), kSampleText);
}

TEST_F(Trace, AMatrixWithoutRowsWritesNothing) {
    const std::string path = directory_.File("trace.log");
    TraceOpen(path.c_str());
    TraceSetLevel(5);
    TraceMatrix(3, matrixT(0, 3), 13, 4);
    EXPECT_EQ(ReadFile(path), "");
}

TEST_F(Trace, AnArrayIsReadColumnByColumn) {
    const std::string path = directory_.File("trace.log");
    const StderrCapture standardError;
    TraceOpen(path.c_str());
    TraceSetLevel(4);
    const double values[] = {1.0, 2.0, 3.0, 4.0, 5.0, -6.5};
    TraceArray(4, values, 2, 3, 13, 3);
    const std::string twoByThree =
        "         1.000         3.000         5.000\n"
        "         2.000         4.000        -6.500\n";
    EXPECT_EQ(ReadFile(path), twoByThree);
    TraceArray(1, values, 1, 2, 5, 1);
    EXPECT_EQ(ReadFile(path), twoByThree + "   1.0   2.0\n");
    EXPECT_EQ(standardError.Text(), "");
}

TEST_F(Trace, AnArrayWithoutRowsWritesNothing) {
    const std::string path = directory_.File("trace.log");
    TraceOpen(path.c_str());
    TraceSetLevel(5);
    TraceArray(4, nullptr, 0, 3, 13, 3);
    EXPECT_EQ(ReadFile(path), "");
}

// --- the change of day ---------------------------------------------------------------------------

TEST_F(Trace, ANewDayBeginsANewFile) {
    const std::string pathTemplate = directory_.File("t%m%d.log");
    TraceSetLevel(3);
    TraceOpen(pathTemplate.c_str());
    TraceWrite(3, "wednesday\n");
    clock_.Set({2024, 3, 6, 23, 59, 41, 999});
    TraceWrite(3, "wednesday still\n");
    clock_.Set({2024, 3, 6, 23, 59, 42, 0});  // midnight of GPS time
    TraceWrite(3, "thursday\n");
    clock_.Set({2024, 3, 8, 1, 0, 0, 0});
    TraceWrite(3, "friday\n");
    TraceWrite(3, "friday still\n");
    EXPECT_EQ(ReadFile(directory_.File("t0306.log")), "3 wednesday\n3 wednesday still\n");
    EXPECT_EQ(ReadFile(directory_.File("t0307.log")), "3 thursday\n");
    EXPECT_EQ(ReadFile(directory_.File("t0308.log")), "3 friday\n3 friday still\n");
    EXPECT_EQ(directory_.EntryCount(), 3);
}

TEST_F(Trace, WithinADayTheFileStaysHoweverItsNameWouldChange) {
    TraceSetLevel(3);
    TraceOpen(directory_.File("t%h%M.log").c_str());
    clock_.Set({2024, 3, 6, 18, 30, 0, 0});
    TraceWrite(3, "later\n");
    EXPECT_EQ(ReadFile(directory_.File("t1200.log")), "3 later\n");
    EXPECT_EQ(directory_.EntryCount(), 1);
}

TEST_F(Trace, TheEndOfTheWeekIsAChangeOfDay) {
    clock_.Set({2024, 3, 9, 12, 0, 0, 0});  // Saturday
    TraceSetLevel(3);
    TraceOpen(directory_.File("t%W%D.log").c_str());
    TraceWrite(3, "saturday\n");
    clock_.Set({2024, 3, 10, 12, 0, 0, 0});
    TraceWrite(3, "sunday\n");
    EXPECT_EQ(ReadFile(directory_.File("t23046.log")), "3 saturday\n");
    EXPECT_EQ(ReadFile(directory_.File("t23050.log")), "3 sunday\n");
}

TEST_F(Trace, AWeekLaterIsNoChangeOfDay) {
    // The days of the week are compared, not running days.
    TraceSetLevel(3);
    TraceOpen(directory_.File("t%m%d.log").c_str());
    clock_.Set({2024, 3, 13, 12, 0, 0, 0});
    TraceWrite(3, "wednesday again\n");
    EXPECT_EQ(ReadFile(directory_.File("t0306.log")), "3 wednesday again\n");
    EXPECT_EQ(directory_.EntryCount(), 1);
}

TEST_F(Trace, APathWithoutKeywordStaysOverTheDays) {
    const std::string path = directory_.File("trace_%r%b.log");
    TraceSetLevel(3);
    TraceOpen(path.c_str());
    for (int day = 6; day < 12; ++day) {
        clock_.Set({2024, 3, day, 12, 0, 0, 0});
        TraceWrite(3, "day %d\n", day);
    }
    EXPECT_EQ(ReadFile(path), "3 day 6\n3 day 7\n3 day 8\n3 day 9\n3 day 10\n3 day 11\n");
    EXPECT_EQ(directory_.EntryCount(), 1);
}

TEST_F(Trace, ANewDayWithTheSameNameOverwrites) {
    const std::string path = directory_.File("t2024.log");
    TraceSetLevel(3);
    TraceOpen(directory_.File("t%Y.log").c_str());
    TraceWrite(3, "wednesday\n");
    clock_.Set({2024, 3, 7, 12, 0, 0, 0});
    TraceWrite(3, "thursday\n");
    EXPECT_EQ(ReadFile(path), "3 thursday\n");
}

TEST_F(Trace, LinesAboveTheLevelAndDumpsDoNotChangeTheFile) {
    TraceSetLevel(3);
    TraceOpen(directory_.File("t%d.log").c_str());
    clock_.Set({2024, 3, 7, 12, 0, 0, 0});
    TraceWrite(4, "not written\n");
    matrixT one(1, 1);
    TraceMatrix(3, one, 4, 1);
    const double values[] = {2.0};
    TraceArray(3, values, 1, 1, 4, 1);
    EXPECT_EQ(ReadFile(directory_.File("t06.log")), "  0.0\n  2.0\n");
    EXPECT_EQ(directory_.EntryCount(), 1);
}

TEST_F(Trace, AFileThatCannotBeOpenedAtTheNewDayLeavesTheStandardErrorStream) {
    std::filesystem::create_directory(directory_.File("06"));
    const StderrCapture standardError;
    TraceSetLevel(3);
    TraceOpen(directory_.File("%d/trace.log").c_str());
    TraceWrite(3, "in the file\n");
    clock_.Set({2024, 3, 7, 12, 0, 0, 0});
    EXPECT_EQ(standardError.Text(), "");
    TraceWrite(3, "astray\n");
    TraceWrite(1, "both\n");
    EXPECT_EQ(ReadFile(directory_.File("06/trace.log")), "3 in the file\n");
    EXPECT_EQ(standardError.Text(), "3 astray\nboth\n1 both\n");
}

// --- in a process of its own ---------------------------------------------------------------------

// What a new process does before any call to the trace. Status 0 when all is as it should be.
[[noreturn]] void WriteBeforeAnyOpen(const std::string& path) {
    TraceWrite(3, "closed at load\n");
    TraceOpen(path.c_str());
    TraceWrite(1, "above the level at load\n");
    TraceWrite(0, "at the level at load\n");
    TraceClose();
    std::_Exit(ReadFile(path) == "0 at the level at load\n" ? 0 : 1);
}

TEST(TraceDeathTest, IsClosedWithLevelZeroAtLoad) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // the child starts afresh
    const TemporaryDirectory directory;
    EXPECT_EXIT(WriteBeforeAnyOpen(directory.File("load.log")), testing::ExitedWithCode(0),
                "^above the level at load\nat the level at load\n$");
}

// A trace that fell back on the standard error stream closes that stream when a day changes.
[[noreturn]] void ChangeTheDayOfAFallenBackTrace(const TemporaryDirectory& directory) {
    struct stat before {};
    fstat(STDERR_FILENO, &before);
    FakeClock clock(kNoon);
    TraceSetLevel(3);
    TraceOpen(directory.File("later/t%d.log").c_str());
    TraceWrite(3, "fallen back\n");
    std::filesystem::create_directory(directory.File("later"));
    clock.Set({2024, 3, 7, 12, 0, 0, 0});
    TraceWrite(3, "in a file\n");
    if (ReadFile(directory.File("later/t07.log")) != "3 in a file\n") {
        std::_Exit(1);
    }
    struct stat after {};
    const bool open = fstat(STDERR_FILENO, &after) == 0 && after.st_ino == before.st_ino &&
                      after.st_dev == before.st_dev;
    std::_Exit(open ? 2 : 0);
}

TEST(TraceDeathTest, AChangeOfDayClosesAStandardErrorStreamFallenBackOn) {
    GTEST_FLAG_SET(death_test_style, "fast");  // the fork shares the directory
    const TemporaryDirectory directory;
    EXPECT_EXIT(ChangeTheDayOfAFallenBackTrace(directory), testing::ExitedWithCode(0),
                "^3 fallen back\n$");
}

}  // namespace
