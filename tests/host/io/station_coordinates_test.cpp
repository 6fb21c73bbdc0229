// SINEX: a made-up file of the stations of the test sessions, and the rules on small texts.
#include "io/station_coordinates.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "io/file_kind.h"

namespace vornel::io {
namespace {

std::string FileOfStations() {
    std::ifstream file(std::string(VORNEL_TEST_DATA) + "/baselines/stations.snx");
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// One line of SOLUTION/ESTIMATE, in the columns of the format description.
std::string Estimate(const char* type, const char* site, const char* solution, const char* time,
                     const char* unit, double value, double deviation) {
    char line[128];
    std::snprintf(line, sizeof line, " %5d %-6s %4s %2s %4s %12s %-4s %1s %21.14E %11.5E\n", 1,
                  type, site, "A", solution, time, unit, "2", value, deviation);
    return line;
}

std::string Position(const char* site, const char* solution, const char* time) {
    return Estimate("STAX", site, solution, time, "m", 4075580.5, 0.001) +
           Estimate("STAY", site, solution, time, "m", 931854.25, 0.002) +
           Estimate("STAZ", site, solution, time, "m", 4801568.125, 0.003);
}

const std::string kHeader =
    "%=SNX 2.02 IGS 20:200:00000 IGS 94:002:00000 20:100:00000 P 00006 2 S\n";

std::string File(const std::string& estimates, const std::string& blocks = {}) {
    return kHeader + blocks + "+SOLUTION/ESTIMATE\n*INDEX TYPE__ CODE\n" + estimates +
           "-SOLUTION/ESTIMATE\n%ENDSNX\n";
}

TEST(StationCoordinates, EveryFieldOfTheFile) {
    const StationCoordinates file = ReadStationCoordinates(FileOfStations(), "stations.snx");
    EXPECT_EQ(file.version, 2.02);
    EXPECT_EQ(file.agency, "XXX");
    EXPECT_TRUE(file.notes.empty());
    ASSERT_EQ(file.solutions.size(), 7U);
    const SiteSolution& second = file.solutions[1];
    EXPECT_EQ(second.site, "WTZR");
    EXPECT_EQ(second.point, "A");
    EXPECT_EQ(second.domes, "14201M010");
    EXPECT_EQ(second.solution, "2");
    EXPECT_EQ(FormatTime(second.reference, 0), "2010-01-01 00:00:00");
    EXPECT_EQ(second.position[0], 4075580.47878879);
    EXPECT_EQ(second.position[1], 931853.875082606);
    EXPECT_EQ(second.position[2], 4801568.17389840);
    EXPECT_EQ(second.positionSigma[2], 0.0012);
    ASSERT_TRUE(second.velocity);
    EXPECT_EQ((*second.velocity)[0], -0.0160);
    EXPECT_EQ((*second.velocity)[2], 0.0102);
    EXPECT_EQ(second.velocitySigma[1], 0.0001);
    ASSERT_TRUE(second.from && second.until);
    EXPECT_EQ(FormatTime(*second.from, 0), "2010-02-11 00:00:00");
    EXPECT_EQ(FormatTime(*second.until, 0), "2021-01-01 00:00:00");
    EXPECT_FALSE(second.postSeismic);
    const SiteSolution& last = file.solutions[6];
    EXPECT_EQ(last.site, "PASA");
    EXPECT_EQ(last.domes, "");
    EXPECT_FALSE(last.velocity);
    EXPECT_EQ(FormatTime(last.reference, 0), "2026-04-30 10:59:45");
}

TEST(StationCoordinates, IsToldByItsFirstLine) {
    EXPECT_EQ(RecogniseFile(kHeader, "made"), FileKind::kStationCoordinates);
    EXPECT_STREQ(KindName(FileKind::kStationCoordinates), "SINEX station coordinates");
}

TEST(StationCoordinates, TimesOfAllCenturiesAndWithoutBound) {
    const std::string spans =
        "+SOLUTION/EPOCHS\n"
        " WTZR  A    1 P 79:100:00000 00:000:00000 99:001:00000\n"
        " WTZR  A    2 P 00:060:43200 50:366:00000 20:001:00000\n"
        "-SOLUTION/EPOCHS\n";
    const StationCoordinates file = ReadStationCoordinates(
        File(Position("WTZR", "1", "80:006:00000") + Position("WTZR", "2", "99:365:86399"), spans),
        "made");
    ASSERT_EQ(file.solutions.size(), 2U);
    EXPECT_EQ(file.solutions[0].reference, (GpsTime{0, 0.0}));
    EXPECT_EQ(file.solutions[0].from, (GpsTime{0, 0.0}));
    EXPECT_FALSE(file.solutions[0].until);
    EXPECT_EQ(FormatTime(file.solutions[1].reference, 0), "1999-12-31 23:59:59");
    EXPECT_EQ(FormatTime(*file.solutions[1].from, 0), "2000-02-29 12:00:00");
    // The 366th day of a year of 365 is the first of the next.
    EXPECT_EQ(FormatTime(*file.solutions[1].until, 0), "2051-01-01 00:00:00");
}

TEST(StationCoordinates, ASiteWithoutAllThreeIsNamedAndLeftOut) {
    const StationCoordinates file =
        ReadStationCoordinates(File(Estimate("STAX", "ABCD", "1", "20:001:00000", "m", 1.0, 0.1) +
                                    Position("WTZR", "1", "20:001:00000") +
                                    Estimate("VELX", "WTZR", "1", "20:001:00000", "m/y", 0.1, 0.1)),
                               "made");
    ASSERT_EQ(file.solutions.size(), 1U);
    EXPECT_EQ(file.solutions[0].site, "WTZR");
    EXPECT_FALSE(file.solutions[0].velocity);
    ASSERT_EQ(file.notes.size(), 1U);
    EXPECT_EQ(file.notes[0].text, "site ABCD without all of STAX, STAY, STAZ");
    EXPECT_EQ(file.notes[0].line, 4U);
}

TEST(StationCoordinates, TermsAfterAnEarthquakeAreMarked) {
    const StationCoordinates file = ReadStationCoordinates(
        File(Position("WTZR", "1", "20:001:00000") + Position("WTZZ", "1", "20:001:00000") +
             Estimate("AEXP_E", "WTZR", "1", "20:001:00000", "m", 0.02, 0.001)),
        "made");
    ASSERT_EQ(file.solutions.size(), 2U);
    EXPECT_TRUE(file.solutions[0].postSeismic);
    EXPECT_FALSE(file.solutions[1].postSeismic);
}

TEST(StationCoordinates, OtherBlocksAndParametersAreReadOver) {
    const StationCoordinates file = ReadStationCoordinates(
        kHeader +
            "+SOLUTION/MATRIX_ESTIMATE L CORR\n     1     1  0.1\n-SOLUTION/MATRIX_ESTIMATE\n" +
            "+SOLUTION/ESTIMATE\n" + Position("WTZR", "1", "20:001:00000") +
            Estimate("LOD", "----", "----", "20:001:00000", "ms", 0.5, 0.1) +
            "-SOLUTION/ESTIMATE\n+SOLUTION/APRIORI\n" + Position("WTZZ", "1", "20:001:00000") +
            "-SOLUTION/APRIORI\n%ENDSNX\n",
        "made");
    ASSERT_EQ(file.solutions.size(), 1U);
    EXPECT_EQ(file.solutions[0].position[0], 4075580.5);
    EXPECT_EQ(file.solutions[0].positionSigma, (std::array<double, 3>{0.001, 0.002, 0.003}));
}

struct Refused {
    std::string text;
    InputFault fault;
    std::size_t line;
    std::string reason;
};

TEST(StationCoordinates, WhatCannotBeIsRefusedWithItsLine) {
    const std::string good = Position("WTZR", "1", "20:001:00000");
    const std::vector<Refused> all = {
        {"", InputFault::kEmpty, 0, "the file is empty"},
        {"+SITE/ID\n", InputFault::kWrongKind, 1, "the first line is not that of a SINEX file"},
        {"%=SNX 3.00 IGS\n", InputFault::kUnsupportedVersion, 1,
         "SINEX version '3.00' is not read"},
        {"%=SNX  ab  IGS\n", InputFault::kMalformed, 1, "SINEX version 'ab' is not read"},
        {kHeader + "%ENDSNX\n", InputFault::kWrongKind, 0,
         "the SINEX file has no coordinates of stations"},
        {kHeader + "+SOLUTION/ESTIMATE\n" + good, InputFault::kTruncated, 5,
         "the file ends within the block SOLUTION/ESTIMATE"},
        {File(good + good), InputFault::kMalformed, 7, "STAX of WTZR stands twice"},
        {File(Estimate("STAX", "WTZR", "1", "20:001:00000", "km", 1.0, 0.1)),
         InputFault::kMalformed, 4, "the unit of STAX is 'km'"},
        {File(Estimate("STAX", "WTZR", "1", "20-001-00000", "m", 1.0, 0.1)), InputFault::kMalformed,
         4, "no time YY:DDD:SSSSS in '20-001-00000'"},
        {File(Estimate("STAX", "WTZR", "1", "20:367:00000", "m", 1.0, 0.1)), InputFault::kMalformed,
         4, "no time YY:DDD:SSSSS in '20:367:00000'"},
        {File(Estimate("STAX", "WTZR", "1", "00:000:00000", "m", 1.0, 0.1)), InputFault::kMalformed,
         4, "a coordinate without a time"},
        {File(Estimate("STAX", "WTZR", "1", "20:001:00000", "m", 1.0, 0.1).replace(50, 3, "xyz")),
         InputFault::kMalformed, 4, "is not a number"},
    };
    for (const Refused& one : all) {
        try {
            ReadStationCoordinates(one.text, "made");
            ADD_FAILURE() << one.reason;
        } catch (const InputError& error) {
            EXPECT_EQ(error.fault(), one.fault) << one.reason;
            EXPECT_EQ(error.line(), one.line) << one.reason;
            EXPECT_THAT(error.reason(), testing::HasSubstr(one.reason));
        }
    }
}

TEST(StationCoordinates, AMissingLastLineIsToldWhenAllBlocksAreWhole) {
    std::string text = FileOfStations();
    text.erase(text.find("%ENDSNX"));
    const StationCoordinates file = ReadStationCoordinates(text, "made");
    EXPECT_EQ(file.solutions.size(), 7U);
    ASSERT_EQ(file.notes.size(), 1U);
    EXPECT_EQ(file.notes[0].text, "the line %ENDSNX is missing");
}

}  // namespace
}  // namespace vornel::io
