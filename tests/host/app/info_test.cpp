// `vornel info` on files of every kind, against what can be counted in their text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>

#include "command_fixture.h"

namespace vornel::app {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

class Info : public test::CommandFixture {
  protected:
    static std::string Data(const std::string& name) {
        return (test::ProjectFolder() / "tests" / "data" / name).string();
    }
    std::string InfoOf(const std::string& path) const {
        const test::Answer answer = Vornel({"info", path});
        EXPECT_EQ(answer.code, 0) << answer.err;
        return answer.out;
    }
};

// The text in 60 columns, then the label.
std::string Line(std::string text, const std::string& label) {
    text.resize(60, ' ');
    return text + label + '\n';
}

TEST_F(Info, CountsGlonassRecords) {
    // A record begins with slot and time; the fourth number of its second line is the health.
    std::istringstream text(Unpacked(DemoGlonass()));
    std::set<std::string> slots;
    int records = 0, unhealthy = 0;
    std::string line;
    while (std::getline(text, line) && line.find("END OF HEADER") == std::string::npos) {
    }
    while (std::getline(text, line)) {
        if (line[0] == 'R') {
            ++records;
            slots.insert(line.substr(0, 3));
            std::getline(text, line);
            unhealthy += std::stod(line.substr(61, 19)) != 0.0 ? 1 : 0;
        }
    }
    ASSERT_GT(records, 50);
    EXPECT_THAT(InfoOf(DemoGlonass()),
                HasSubstr("GLONASS FDMA  " + std::to_string(records) + " records of " +
                          std::to_string(slots.size()) + " satellites, " +
                          std::to_string(unhealthy) + " not healthy"));
}

TEST_F(Info, TellsTheTimesOfGlonassRecordsInGpsTime) {
    // Of slot 1, from a reference time of 00:15 UTC, when GPS time was 18 s ahead.
    std::istringstream text(Unpacked(DemoGlonass()));
    std::string line, one;
    bool inHeader = true;
    while (std::getline(text, line)) {
        if (inHeader) {
            one += line + '\n';
            inHeader = line.find("END OF HEADER") == std::string::npos;
        } else if (line.find("R01 2020 06 25 00 15 00") == 0) {
            one += line + '\n';
            for (int i = 0; i < 3 && std::getline(text, line); ++i) {
                one += line + '\n';
            }
        }
    }
    ASSERT_THAT(one, HasSubstr("R01 2020 06 25 00 15 00"));
    const std::string info = InfoOf(Write("one.rnx", one));
    EXPECT_THAT(info, HasSubstr("1 records of 1 satellites"));
    EXPECT_THAT(info, HasSubstr("2020-06-25 00:15:18 to 2020-06-25 00:15:18 GPS time"));
}

TEST_F(Info, NamesTheFirstUnreadableRecordAndThoseNotUsed) {
    const std::string text = Unpacked(DemoGlonass());
    const std::size_t at = text.find("\nR01") + 1;
    std::string sbas = text;
    sbas.replace(at, 3, "S20");
    EXPECT_THAT(InfoOf(Write("sbas.rnx", sbas)),
                ContainsRegex("SBAS[^\n]* +1 records, not used\n"));
    std::string damaged = text;
    damaged.replace(at + 23, 19, "       not a number");
    const std::string broken = InfoOf(Write("damaged.rnx", damaged));
    EXPECT_THAT(broken, ContainsRegex("Unreadable    1 records, the first at line [0-9]+: "));
}

TEST_F(Info, CountsTheSatellitesOfPreciseOrbits) {
    // The list of satellites stands in the lines that begin with "+ ".
    const std::string path = Data("formats/Sta21114.sp3.gz");
    std::istringstream text(Unpacked(path));
    std::map<char, int> counts;
    int epochs = 0;
    for (std::string line; std::getline(text, line);) {
        for (std::size_t i = 9; line.starts_with("+ ") && i + 2 < line.size(); i += 3) {
            counts[line[i]] += 1;
        }
        epochs += line.starts_with("* ") ? 1 : 0;
    }
    const std::string info = InfoOf(path);
    EXPECT_THAT(info, HasSubstr("SP3 orbit file (gzip)"));
    EXPECT_THAT(info, HasSubstr("Version       d, IAC, frame IGS14"));
    EXPECT_THAT(info, HasSubstr("Epochs        " + std::to_string(epochs) + ", every 900 s"));
    EXPECT_THAT(info, HasSubstr("2020-06-25 00:00:00 to 2020-06-26 00:00:00 GPS time"));
    for (const auto& [letter, name] : {std::pair{'G', "GPS"}, {'R', "GLONASS"}, {'C', "BeiDou"}}) {
        EXPECT_THAT(info, ContainsRegex(std::string(name) + " +" + std::to_string(counts[letter]) +
                                        " satellites"));
    }
}

TEST_F(Info, ListsTheAntennasOfACalibrationFile) {
    const std::string path = Data("baselines/ciboure-pasaia/antennas.atx");
    const std::string info = InfoOf(path);
    EXPECT_THAT(info, HasSubstr("ANTEX antenna file"));
    EXPECT_THAT(info, HasSubstr("Version     1.4, absolute phase centres"));
    EXPECT_THAT(info, HasSubstr("Antennas    2 of receivers, 0 of satellites"));
    EXPECT_THAT(info, HasSubstr("    LEIAR20 LEIM, G01 up 0.1249 m, G02 up 0.1335 m\n"));

    // Twenty are listed.
    const std::string text = Read(path);
    const std::size_t begin = text.find("START OF ANTENNA") - 60,
                      end = text.find('\n', text.find("END OF ANTENNA")) + 1;
    std::string many = text.substr(0, begin);
    for (int i = 0; i < 22; ++i) {
        many += text.substr(begin, end - begin);
    }
    EXPECT_THAT(InfoOf(Write("many.atx", many)),
                testing::AllOf(HasSubstr("Antennas    22 of receivers"), HasSubstr("and 2 more")));
}

TEST_F(Info, ListsTheStationsOfACoordinatesFile) {
    const std::string path = Data("baselines/stations.snx");
    const std::string info = InfoOf(path);
    EXPECT_THAT(info, HasSubstr("SINEX station coordinates 2.02"));
    EXPECT_THAT(info, HasSubstr("Stations    6, in 7 solutions, 6 with velocity\n"));
    EXPECT_THAT(info,
                HasSubstr("Epochs      2010-01-01 00:00:00 to 2026-04-30 10:59:45 GPS time\n"));
    EXPECT_THAT(info, HasSubstr("    WTZR A\n"));

    // Twenty are listed.
    std::string many = Read(path);
    const std::string estimates = many.substr(many.find("     1 STAX"), 3 * 81);
    for (int i = 10; i < 26; ++i) {
        std::string copy = estimates;
        for (std::size_t at = 0; (at = copy.find("WTZR", at)) != std::string::npos;) {
            copy.replace(at, 4, "ST" + std::to_string(i));
        }
        many.insert(many.find("     1 STAX"), copy);
    }
    EXPECT_THAT(InfoOf(Write("many.snx", many)),
                testing::AllOf(HasSubstr("Stations    22, in 23"), HasSubstr("and 2 more")));
}

TEST_F(Info, SaysWhatAHeaderAloneLacks) {
    const std::string header =
        Line("     3.04           OBSERVATION DATA    M", "RINEX VERSION / TYPE") +
        Line("G    2 C1C L1C", "SYS / # / OBS TYPES") +
        Line("  2020     6    25     0     0    0.0000000     GPS", "TIME OF FIRST OBS") +
        Line("", "END OF HEADER");
    const std::string info = InfoOf(Write("header.rnx", header));
    EXPECT_THAT(info, HasSubstr("Position    not given"));
    EXPECT_THAT(info, HasSubstr("Epochs      none"));

    // Twelve gaps of a minute at every second epoch: ten are listed.
    std::string text = header;
    for (int i = 0; i < 26; ++i) {
        const int second = i / 2 * 70 + i % 2 * 10;
        char line[64];
        std::snprintf(line, sizeof line, "> 2020 06 25 00 %02d %02d.0000000  0  1\n", second / 60,
                      second % 60);
        text += line + std::string("G01  20000000.123   105100000.456\n");
    }
    const std::string gaps = InfoOf(Write("gaps.rnx", text));
    EXPECT_THAT(gaps, HasSubstr("Epochs      26, every 10 s"));
    EXPECT_THAT(gaps, HasSubstr("Gaps        12\n"));
    EXPECT_THAT(gaps, HasSubstr("and 2 more"));
}

}  // namespace
}  // namespace vornel::app
