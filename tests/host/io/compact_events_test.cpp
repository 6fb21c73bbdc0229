// Events within Compact RINEX: what is read must be what the plain text holds.
#include <gtest/gtest.h>

#include <string>

#include "compact_writer.h"
#include "io/observation_reader.h"
#include "specimens.h"

namespace vornel::io {
namespace {

// A line of a header: the text in 60 columns, then the label.
std::string Line(std::string text, const std::string& label) {
    text.resize(60, ' ');
    return text + label + '\n';
}

// The parts of a file in one of the two versions of the format.
struct Format {
    bool isVersion1;

    std::string Header(bool twoTypes) const {
        const std::string time =
            Line("  2020     6    25     0     0    0.0000000     GPS", "TIME OF FIRST OBS") +
            Line("", "END OF HEADER");
        return isVersion1
                   ? Line("     2.11           OBSERVATION DATA    M (MIXED)",
                          "RINEX VERSION / TYPE") +
                         Types(twoTypes) + time
                   : Line("     3.04           OBSERVATION DATA    M", "RINEX VERSION / TYPE") +
                         Types(twoTypes) + time;
    }
    std::string Types(bool two) const {
        return isVersion1 ? Line(two ? "     2    C1    L1" : "     1    C1", "# / TYPES OF OBSERV")
                          : Line(two ? "G    2 C1C L1C" : "G    1 C1C", "SYS / # / OBS TYPES");
    }
    // An epoch of two satellites, whose values go on smoothly.
    std::string Epoch(int second, bool twoTypes) const {
        char line[80];
        std::snprintf(line, sizeof line,
                      isVersion1 ? " 20  6 25  0  0 %2d.0000000  0  2G01G07\n"
                                 : "> 2020 06 25 00 00 %02d.0000000  0  2\n",
                      second);
        std::string text = line;
        for (const int satellite : {1, 7}) {
            if (!isVersion1) {
                std::snprintf(line, sizeof line, "G%02d", satellite);
                text += line;
            }
            std::snprintf(
                line, sizeof line, "%14.3f  ",
                20000000.123 + 1000.0 * satellite + 31.5 * second + 0.01 * second * second);
            text += line;
            if (twoTypes) {
                std::snprintf(line, sizeof line, "%14.3f17",
                              105100000.456 + 5000.0 * satellite + 160.25 * second);
                text += line;
            }
            text += '\n';
        }
        return text;
    }
    // The line of an event; in Compact RINEX it stands for itself, as after a fresh start.
    std::string Event(const std::string& flagAndCount, bool compact) const {
        return isVersion1
                   ? std::string(compact ? "&" : " ") + std::string(27, ' ') + flagAndCount + '\n'
                   : ">                              " + flagAndCount + '\n';
    }
    // What follows the header of a compacted text.
    static std::string Body(const std::string& compact) {
        const std::string end = "END OF HEADER\n";
        return compact.substr(compact.find(end) + end.size());
    }
};

class CompactEvents : public ::testing::TestWithParam<bool> {
  protected:
    Format format{GetParam()};

    // Two epochs, an event with records, two more epochs: plain and compacted. `blankClock`: whether
    // a blank line stands where an epoch has its receiver clock.
    Observations Plain(const std::string& flagAndCount, const std::string& records,
                       bool typesAfter) const {
        return ReadObservations(format.Header(true) + format.Epoch(0, true) +
                                    format.Epoch(10, true) + format.Event(flagAndCount, false) +
                                    records + format.Epoch(20, typesAfter) +
                                    format.Epoch(30, typesAfter),
                                "made.rnx", {});
    }
    Observations Compact(const std::string& flagAndCount, const std::string& records,
                         bool typesAfter, bool blankClock = false) const {
        return ReadObservations(
            test::ToCompactRinex(format.Header(true) + format.Epoch(0, true) +
                                 format.Epoch(10, true)) +
                format.Event(flagAndCount, true) + records + (blankClock ? "\n" : "") +
                Format::Body(test::ToCompactRinex(format.Header(typesAfter) +
                                                  format.Epoch(20, typesAfter) +
                                                  format.Epoch(30, typesAfter))),
            "made.crx", {});
    }
    static void ExpectSame(const Observations& compact, const Observations& plain) {
        ASSERT_EQ(plain.epochs.size(), 4U);
        ASSERT_EQ(compact.epochs.size(), 4U);
        ASSERT_EQ(compact.satellites.size(), plain.satellites.size());
        EXPECT_EQ(CountValues(compact), CountValues(plain));
        for (std::size_t e = 0; e < 4; ++e) {
            EXPECT_EQ(compact.epochs[e].time, plain.epochs[e].time);
            EXPECT_EQ(compact.epochs[e].moving, plain.epochs[e].moving);
            EXPECT_EQ(compact.stations[compact.epochs[e].station].markerName,
                      plain.stations[plain.epochs[e].station].markerName);
            for (const int satellite : {1, 7}) {
                EXPECT_EQ(ValueOf(compact, e, Gps(satellite), "C1C"),
                          ValueOf(plain, e, Gps(satellite), "C1C"));
            }
        }
    }
};
INSTANTIATE_TEST_SUITE_P(Versions, CompactEvents, ::testing::Bool(), [](const auto& version) {
    return version.param ? "Version1" : "Version3";
});

TEST_P(CompactEvents, ANewSiteHasItsOwnHeader) {
    const std::string records = Line("TWO", "MARKER NAME");
    const Observations compact = Compact("3  1", records, true);
    ExpectSame(compact, Plain("3  1", records, true));
    ASSERT_EQ(compact.stations.size(), 2U);
    EXPECT_EQ(compact.stations[1].markerName, "TWO");
    EXPECT_EQ(compact.epochs[1].station, 0U);
    EXPECT_EQ(compact.epochs[2].station, 1U);
}

TEST_P(CompactEvents, OtherTypesHoldFromThereOn) {
    const std::string records = format.Types(false) + Line("", "END OF HEADER");
    const Observations compact = Compact("4  2", records, false);
    ExpectSame(compact, Plain("4  2", records, false));
    EXPECT_EQ(CountValues(compact), 2U * 4U + 2U * 2U);
    EXPECT_EQ(ValueOf(compact, 1, Gps(7), "L1C"), 105100000.456 + 35000.0 + 1602.5);
}

TEST_P(CompactEvents, AnEventWithoutRecordsMayHaveABlankClockLine) {
    for (const bool blankClock : {false, true}) {
        const Observations compact = Compact("2  0", "", true, blankClock);
        ExpectSame(compact, Plain("2  0", "", true));
        EXPECT_FALSE(compact.epochs[1].moving);
        EXPECT_TRUE(compact.epochs[2].moving);
    }
}

TEST_P(CompactEvents, RecordsThatAreMissingAreAFault) {
    const std::string text = test::ToCompactRinex(format.Header(true) + format.Epoch(0, true)) +
                             format.Event("4  3", true) + Line("ONE", "COMMENT");
    try {
        ReadObservations(text, "made.crx", {});
        FAIL() << "no fault";
    } catch (const InputError& error) {
        EXPECT_EQ(error.fault(), InputFault::kTruncated);
    }
}

TEST_P(CompactEvents, FilesJoinedEndToEndAreRefused) {
    const std::string one = test::ToCompactRinex(format.Header(true) + format.Epoch(0, true));
    try {
        ReadObservations(one + one, "made.crx", {});
        FAIL() << "no fault";
    } catch (const InputError& error) {
        EXPECT_EQ(error.fault(), InputFault::kMalformed);
        EXPECT_NE(std::string(error.what()).find("a second file begins"), std::string::npos);
    }
}

}  // namespace
}  // namespace vornel::io
