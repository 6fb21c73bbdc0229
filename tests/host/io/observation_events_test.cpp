// Events, header changes, time systems, selection and joining of observations, on small texts made
// here: what the format documents say about them is what must come out.
#include <gtest/gtest.h>

#include <cmath>

#include "io/observation_reader.h"
#include "specimens.h"

namespace vornel::io {
namespace {

// A line of a header: the text in 60 columns, then the label.
std::string Line(std::string text, const std::string& label) {
    text.resize(60, ' ');
    return text + label + '\n';
}

std::string Header3(const std::string& types = "G    2 C1C L1C", const std::string& more = "") {
    return Line("     3.04           OBSERVATION DATA    M", "RINEX VERSION / TYPE") +
           Line(types, "SYS / # / OBS TYPES") +
           Line("  2020     6    25     0     0    0.0000000     GPS", "TIME OF FIRST OBS") + more +
           Line("", "END OF HEADER");
}

std::string Header2(const std::string& types = "     2    C1    L1", const std::string& more = "") {
    return Line("     2.11           OBSERVATION DATA    M (MIXED)", "RINEX VERSION / TYPE") +
           Line(types, "# / TYPES OF OBSERV") +
           Line("  2020     6    25     0     0    0.0000000     GPS", "TIME OF FIRST OBS") + more +
           Line("", "END OF HEADER");
}

std::string Epoch3(int second, const std::string& flagAndCount = "0  1") {
    std::string digits = std::to_string(second);
    digits.insert(0, 2 - digits.size(), '0');
    return "> 2020 06 25 00 00 " + digits + ".0000000  " + flagAndCount + "\n";
}

Observations Read(const std::string& text, const ObservationSelection& selection = {}) {
    return ReadObservations(text, "made.rnx", selection);
}

const std::string kG01 = "G01  20000000.123   105100000.45617\n";

TEST(ObservationEvents, ValuesAndFlagsOfARow) {
    const Observations data = Read(Header3() + Epoch3(0) + kG01);
    ASSERT_EQ(data.epochs.size(), 1U);
    EXPECT_EQ(data.epochs[0].line, 5U);
    EXPECT_EQ(ValueOf(data, 0, Gps(1), "C1C"), 20000000.123);
    EXPECT_EQ(ValueOf(data, 0, Gps(1), "L1C"), 105100000.456);
    EXPECT_EQ(FlagsOf(data, 0, Gps(1), "L1C"), 17);
}

TEST(ObservationEvents, WhatIsNoLongerNeededIsFreed) {
    Observations data = Read(Header3() + Epoch3(0) + kG01 + Epoch3(30) + kG01);
    ASSERT_EQ(data.SatellitesOf(data.epochs[1]).size(), 1U);
    data.ForgetSatellites();
    ASSERT_EQ(data.epochs.size(), 2U);
    for (const ObservationEpoch& epoch : data.epochs) {
        EXPECT_TRUE(data.SatellitesOf(epoch).empty());
    }
    EXPECT_EQ(data.epochs[1].line, 7U);
    EXPECT_EQ(data.satellites.capacity() + data.values.capacity() + data.lossOfLock.capacity() +
                  data.signalStrength.capacity(),
              0U);
}

TEST(ObservationEvents, WindowsLineEndsChangeNothing) {
    std::string text = Header3() + Epoch3(0) + kG01;
    std::string windows;
    for (const char c : text) {
        windows += c == '\n' ? "\r\n" : std::string(1, c);
    }
    const Observations data = Read(windows + "\x1a");
    ASSERT_EQ(data.epochs.size(), 1U);
    EXPECT_EQ(ValueOf(data, 0, Gps(1), "L1C"), 105100000.456);
    EXPECT_EQ(FlagsOf(data, 0, Gps(1), "L1C"), 17);
}

TEST(ObservationEvents, BlankAndZeroAreAbsent) {
    const Observations data =
        Read(Header3() + Epoch3(0, "0  2") + "G01         0.000   105100000.456\n" +
             "G02                 105100000.456\n");
    EXPECT_TRUE(std::isnan(ValueOf(data, 0, Gps(1), "C1C")));
    EXPECT_TRUE(std::isnan(ValueOf(data, 0, Gps(2), "C1C")));
    EXPECT_EQ(ValueOf(data, 0, Gps(2), "L1C"), 105100000.456);
}

TEST(ObservationEvents, ASatelliteWithoutAnyObservationHasNoRow) {
    const Observations data = Read(Header3() + Epoch3(0, "0  2") + "G02\n" + kG01);
    ASSERT_EQ(data.epochs[0].satelliteCount, 1U);
    EXPECT_EQ(data.satellites[0].satellite, Gps(1));
}

TEST(ObservationEvents, ExponentsOfAnyLetterAreNumbers) {
    const Observations data =
        Read(Header3() + Epoch3(0, "0  4") + "G01  2.0000000D+7\nG02  2.0000000d+7\n" +
             "G03  2.0000000E+7\nG04  2.0000000e+7\n");
    for (int n = 1; n <= 4; ++n) {
        EXPECT_EQ(ValueOf(data, 0, Gps(n), "C1C"), 2e7) << n;
    }
}

TEST(ObservationEvents, NegativeValuesKeepTheirSign) {
    const Observations data = Read(Header3() + Epoch3(0) + "G01        -0.001   -21700656.314\n");
    EXPECT_EQ(ValueOf(data, 0, Gps(1), "C1C"), -0.001);
    EXPECT_EQ(ValueOf(data, 0, Gps(1), "L1C"), -21700656.314);
}

TEST(ObservationEvents, TheFractionOfATagIsKept) {
    const std::string text = Header3() + "> 2020 06 25 00 00 29.9890123  0  1\n" + kG01;
    // 25 June 2020 is a Thursday: 4 days into week 2111.
    const GpsTime time = Read(text).epochs[0].time;
    EXPECT_EQ(time.week, 2111);
    EXPECT_EQ(time.seconds, 345629.9890123);
}

TEST(ObservationEvents, APowerFailureIsMarked) {
    const Observations data = Read(Header3() + Epoch3(0) + kG01 + Epoch3(30, "1  1") + kG01);
    EXPECT_FALSE(data.epochs[0].powerFailure);
    EXPECT_TRUE(data.epochs[1].powerFailure);
}

TEST(ObservationEvents, APowerFailureInAnEpochNotKeptMarksTheNextOne) {
    ObservationSelection selection;
    selection.interval = 30.0;
    const Observations data = Read(
        Header3() + Epoch3(0) + kG01 + Epoch3(15, "1  1") + kG01 + Epoch3(30) + kG01, selection);
    ASSERT_EQ(data.epochs.size(), 2U);
    EXPECT_TRUE(data.epochs[1].powerFailure);
}

TEST(ObservationEvents, ANewHeaderInMidFileChangesTypesAndStation) {
    const Observations data =
        Read(Header3("G    2 C1C L1C", Line("ONE", "MARKER NAME")) + Epoch3(0) + kG01 +
             ">                              4  3\n" + Line("TWO", "MARKER NAME") +
             Line("        1.5000        0.0000        0.0000", "ANTENNA: DELTA H/E/N") +
             Line("G    1 C2W", "SYS / # / OBS TYPES") + Epoch3(30) + "G01  20000001.000\n");
    ASSERT_EQ(data.stations.size(), 2U);
    EXPECT_EQ(data.stations[data.epochs[0].station].markerName, "ONE");
    EXPECT_EQ(data.stations[data.epochs[1].station].markerName, "TWO");
    EXPECT_EQ(data.stations[data.epochs[1].station].antennaHeight, 1.5);
    EXPECT_EQ(ValueOf(data, 0, Gps(1), "C1C"), 20000000.123);
    EXPECT_EQ(ValueOf(data, 1, Gps(1), "C2W"), 20000001.0);
    EXPECT_TRUE(std::isnan(ValueOf(data, 1, Gps(1), "C1C")));
}

TEST(ObservationEvents, CommentsInMidFileChangeNothing) {
    const Observations data =
        Read(Header3() + Epoch3(0) + kG01 + ">                              4  1\n" +
             Line("all is well", "COMMENT") + Epoch3(30) + kG01);
    EXPECT_EQ(data.stations.size(), 1U);
    EXPECT_EQ(data.signalTables.size(), 1U);
    EXPECT_EQ(data.epochs.size(), 2U);
}

TEST(ObservationEvents, AHeaderThatChangesWithoutEndIsRefused) {
    std::string text = Header3();
    for (int i = 0; i < 1100; ++i) {
        text += ">                              4  1\n" + Line(std::to_string(i), "MARKER NAME");
    }
    try {
        Read(text);
        FAIL();
    } catch (const InputError& error) {
        EXPECT_EQ(error.fault(), InputFault::kTooLarge);
        EXPECT_EQ(error.reason(), "the header changes more than 1000 times within the file");
    }
    // Comments are no change, however many there are.
    std::string comments = Header3() + Epoch3(0) + kG01;
    for (int i = 0; i < 1100; ++i) {
        comments += ">                              4  1\n" + Line(std::to_string(i), "COMMENT");
    }
    EXPECT_EQ(Read(comments).epochs.size(), 1U);
}

TEST(ObservationEvents, MovingLastsFromEvent2To3) {
    const std::string event2 = ">                              2  0\n";
    const std::string event3 = ">                              3  1\n";
    const Observations data = Read(Header3() + Epoch3(0) + kG01 + event2 + Epoch3(1) + kG01 +
                                   event3 + Line("NEW", "MARKER NAME") + Epoch3(2) + kG01);
    EXPECT_FALSE(data.epochs[0].moving);
    EXPECT_TRUE(data.epochs[1].moving);
    EXPECT_FALSE(data.epochs[2].moving);
    EXPECT_EQ(data.stations.size(), 2U);
}

TEST(ObservationEvents, SlipRecordsAndExternalEventsAreNoEpochs) {
    const Observations data =
        Read(Header3() + Epoch3(0) + kG01 + Epoch3(0, "6  1") + "G01         1.000\n" +
             "> 2020 06 25 00 00 07.1234567  5  0\n" + Epoch3(30) + kG01);
    EXPECT_EQ(data.epochs.size(), 2U);
    EXPECT_EQ(data.slipRecords, 1U);
    EXPECT_EQ(data.externalEvents, 1U);
    EXPECT_EQ(ValueOf(data, 1, Gps(1), "C1C"), 20000000.123);
}

TEST(ObservationEvents, EventsOfVersion2) {
    const std::string epoch = " 20  6 25  0  0  0.0000000  0  1G01\n";
    const std::string later = " 20  6 25  0  0 30.0000000  0  1 02\n";
    const std::string row = "  20000000.123   105100000.45617\n";
    const Observations data = Read(Header2() + epoch + row + "                            4  1\n" +
                                   Line("TWO", "MARKER NAME") + later + row);
    ASSERT_EQ(data.epochs.size(), 2U);
    EXPECT_EQ(data.stations.size(), 2U);
    EXPECT_EQ(ValueOf(data, 1, Gps(2), "L1C"), 105100000.456);  // a blank letter is GPS
}

TEST(ObservationEvents, YearsOfTwoDigits) {
    const std::string row = "  20000000.123   105100000.45617\n";
    const auto yearOf = [&](const std::string& digits) {
        const Observations data =
            Read(Header2() + ' ' + digits + "  6 25  0  0  0.0000000  0  1G01\n" + row);
        return FormatTime(data.epochs.at(0).time, 0).substr(0, 4);
    };
    EXPECT_EQ(yearOf("80"), "1980");
    EXPECT_EQ(yearOf("99"), "1999");
    EXPECT_EQ(yearOf("00"), "2000");
    EXPECT_EQ(yearOf(" 5"), "2005");
    EXPECT_EQ(yearOf("79"), "2079");
}

TEST(ObservationEvents, WavelengthFactorTwoMeansHalfCycles) {
    const std::string factors = Line("     1     1", "WAVELENGTH FACT L1/2") +
                                Line("     1     2     1   G01", "WAVELENGTH FACT L1/2");
    const std::string epoch = " 20  6 25  0  0  0.0000000  0  2G01G02\n";
    // L1 and L2 of both satellites; bit 1 of the indicator swaps the factor.
    const std::string plain = " 105100000.456    80100000.456\n";
    const std::string swapped = " 105100000.4562   80100000.4562\n";
    const Observations data =
        Read(Header2("     2    L1    L2", factors) + epoch + plain + swapped);
    EXPECT_EQ(FlagsOf(data, 0, Gps(1), "L1C"), 0);
    EXPECT_EQ(FlagsOf(data, 0, Gps(1), "L2W"), 20);
    EXPECT_EQ(FlagsOf(data, 0, Gps(2), "L1C"), 20);
    EXPECT_EQ(FlagsOf(data, 0, Gps(2), "L2W"), 20);
}

TEST(ObservationEvents, ScaleFactorsAreDividedOut) {
    const std::string named = Line("G  100   1 C1C", "SYS / SCALE FACTOR");
    const std::string all = Line("G   10", "SYS / SCALE FACTOR");
    const std::string row = "G01 200000000.000  1051000000.000\n";
    const Observations one = Read(Header3("G    2 C1C L1C", named) + Epoch3(0) + row);
    EXPECT_EQ(ValueOf(one, 0, Gps(1), "C1C"), 2e6);
    EXPECT_EQ(ValueOf(one, 0, Gps(1), "L1C"), 1051e6);
    const Observations both = Read(Header3("G    2 C1C L1C", all) + Epoch3(0) + row);
    EXPECT_EQ(ValueOf(both, 0, Gps(1), "C1C"), 2e7);
    EXPECT_EQ(ValueOf(both, 0, Gps(1), "L1C"), 1051e5);
}

TEST(ObservationEvents, PhaseShiftsAndBiasesOfTheHeaderAreAlreadyInTheData) {
    const std::string more =
        Line("G L1C  0.25000", "SYS / PHASE SHIFT") + Line(" C1C  -71.940", "GLONASS COD/PHS/BIS");
    const Observations data = Read(Header3("G    2 C1C L1C", more) + Epoch3(0) + kG01);
    EXPECT_EQ(ValueOf(data, 0, Gps(1), "L1C"), 105100000.456);
}

TEST(ObservationEvents, TimeSystemsBecomeGpsTime) {
    const auto tagIn = [](const std::string& system) {
        std::string text = Header3() + Epoch3(10) + kG01;
        text.replace(text.find("     GPS "), 9, "     " + system + ' ');
        return FormatTime(Read(text).epochs.at(0).time, 0).substr(11);
    };
    EXPECT_EQ(tagIn("GPS"), "00:00:10");
    EXPECT_EQ(tagIn("GAL"), "00:00:10");
    EXPECT_EQ(tagIn("QZS"), "00:00:10");
    EXPECT_EQ(tagIn("BDT"), "00:00:24");  // 14 s
    EXPECT_EQ(tagIn("GLO"), "00:00:28");  // UTC, 18 leap seconds in 2020
}

TEST(ObservationEvents, RepeatedEpochsAndSatellitesAreLeftOutAndSaid) {
    const Observations data = Read(Header3() + Epoch3(30) + kG01 + Epoch3(30) + kG01 + Epoch3(0) +
                                   kG01 + Epoch3(31, "0  2") + kG01 + kG01);
    ASSERT_EQ(data.epochs.size(), 2U);
    EXPECT_EQ(data.epochs[1].satelliteCount, 1U);
    ASSERT_EQ(data.notes.size(), 3U);
    EXPECT_EQ(data.notes[0].line, 7U);
    EXPECT_EQ(data.notes[0].text,
              "the epoch 2020-06-25 00:00:30.000 does not come after the one before it and is "
              "left out");
    EXPECT_EQ(data.notes[2].line, 13U);
    EXPECT_EQ(data.notes[2].text, "satellite G01 stands twice in an epoch; the first is kept");
}

TEST(ObservationSelection, KeepsAPartOfTheFile) {
    std::string text = Header3("G    3 C1C L1C S1C");
    for (int second = 0; second < 60; second += 5) {
        text += Epoch3(second) + "G01  20000000.123   105100000.45617        45.000\n";
    }
    const GpsTime midnight{2111, 345600.0};
    ObservationSelection selection;
    selection.start = Shifted(midnight, 10.0);
    selection.end = Shifted(midnight, 40.0);
    selection.interval = 15.0;
    selection.types = "CL";
    const Observations data = Read(text, selection);
    ASSERT_EQ(data.epochs.size(), 2U);
    EXPECT_EQ(SecondsBetween(midnight, data.epochs[0].time), 15.0);
    EXPECT_EQ(SecondsBetween(midnight, data.epochs[1].time), 30.0);
    EXPECT_EQ(data.values.size(), 4U);
    selection.systems[0] = false;
    EXPECT_TRUE(Read(text, selection).satellites.empty());
}

TEST(ObservationSelection, TagsOfADriftingClockBelongToTheirSecond) {
    const std::string text = Header3() + "> 2020 06 25 00 00 29.9890000  0  1\n" + kG01 +
                             "> 2020 06 25 00 00 35.0180000  0  1\n" + kG01;
    ObservationSelection selection;
    selection.interval = 30.0;
    const Observations data = Read(text, selection);
    ASSERT_EQ(data.epochs.size(), 1U);
    EXPECT_EQ(data.epochs[0].time.seconds, 345629.989);
}

// The halves of a file, given in the wrong order and overlapping by an epoch, give the whole.
TEST(JoinObservations, PiecesGiveTheWhole) {
    const FileBytes file = ReadSpecimen("delf0010.21o");
    const Observations whole = ReadObservations(file.bytes, file.name);
    ObservationSelection first, second;
    first.end = whole.epochs[50].time;
    second.start = whole.epochs[50].time;
    std::vector<Observations> parts;
    parts.push_back(ReadObservations(file.bytes, "second", second));
    parts.push_back(ReadObservations(file.bytes, "first", first));
    const Observations joined = JoinObservations(std::move(parts));
    ASSERT_EQ(joined.epochs.size(), whole.epochs.size());
    ASSERT_EQ(joined.satellites.size(), whole.satellites.size());
    ASSERT_EQ(joined.values.size(), whole.values.size());
    for (std::size_t i = 0; i < whole.epochs.size(); ++i) {
        ASSERT_EQ(joined.epochs[i].time, whole.epochs[i].time);
        for (const SatelliteRow& row : whole.SatellitesOf(whole.epochs[i])) {
            for (std::size_t c = 0; c < whole.SignalsOf(row).size(); ++c) {
                const std::string code = ToString(whole.SignalsOf(row)[c].code);
                const double value = ValueOf(joined, i, row.satellite, code);
                ASSERT_TRUE(value == whole.Value(row, c) ||
                            (std::isnan(value) && std::isnan(whole.Value(row, c))));
            }
        }
    }
    ASSERT_EQ(joined.notes.size(), 1U);
    EXPECT_EQ(joined.notes[0].text,
              "second: 1 epochs that earlier files have already are left out");
}

TEST(JoinObservations, NothingGivesNothing) {
    EXPECT_TRUE(JoinObservations({}).epochs.empty());
}

}  // namespace
}  // namespace vornel::io
