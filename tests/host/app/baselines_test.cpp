// The command on real sessions with known coordinates.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "command_fixture.h"
#include "io/navigation.h"
#include "session/broadcast_orbit.h"
#include "session/ephemerides.h"
#include "session/geodesy.h"
#include "session/text.h"

namespace vornel::app {
namespace {

using session::Vector3;

struct Truth {
    Vector3 base;
    Vector3 rover;
};

// Sources stand in the README files beside the data.
const Truth kWettzell{{4075580.3111, 931854.0543, 4801568.2808},
                      {4075579.1913, 931853.3696, 4801569.1897}};
const Truth kCiboure{{4639940.42956, -136224.81156, 4359552.50278},
                     {4644908.98702, -156644.93706, 4353623.15858}};
const Truth kEbre{{4833520.1869, 41537.0456, 4147461.5113},
                  {4775849.4285, 116814.3080, 4213018.9309}};

Vector3 VectorOf(const nlohmann::json& solution) {
    return solution.at("vector_xyz_m").get<Vector3>();
}

// North, east, up error in metres.
Vector3 Error(const nlohmann::json& solution, const Truth& truth) {
    return session::ToNeu(
        session::ToGeodetic(truth.base),
        session::Minus(VectorOf(solution), session::Minus(truth.rover, truth.base)));
}

class Baselines : public test::CommandFixture {
  protected:
    static std::string Data(const std::string& name) {
        return (test::ProjectFolder() / "tests" / "data" / "baselines" / name).string();
    }
    static std::vector<std::string> Ciboure() {
        return {"solve",
                "--base",
                Data("ciboure-pasaia/SCOA00FRA_R_20261201000_02H_30S_MO.rnx.xz"),
                "--rover",
                Data("ciboure-pasaia/PASA00ESP_R_20261201000_02H_30S_MO.rnx.xz"),
                Data("ciboure-pasaia/BRDC00WRD_R_20261200800_06H_MN.rnx.xz")};
    }
    static std::vector<std::string> Ebre() {
        return {"solve",
                "--base",
                Data("ebre-bell/ebre0300.02o.xz"),
                "--rover",
                Data("ebre-bell/bell0300.02o.xz"),
                Data("ebre-bell/brdc0300.02n.xz")};
    }

    nlohmann::json Solve(std::vector<std::string> words, int code) {
        words.insert(words.end(), {"--json", Path("out.json")});
        const test::Answer answer = Vornel(words);
        EXPECT_EQ(answer.code, code) << answer.err;
        EXPECT_EQ(answer.err, "");
        text_ = answer.out;
        return nlohmann::json::parse(Read(Path("out.json")));
    }

    std::string text_;  // of the last Solve
};

TEST_F(Baselines, WettzellWithinEightMillimetres) {
    const auto json = Solve(DemoSolve(), 0);
    EXPECT_EQ(json.at("outcome").at("status").at("number"), 81);
    EXPECT_EQ(json.at("outcome").at("solve_model"), 1);
    EXPECT_LT(session::Length(Error(json.at("solutions").at("triple_difference"), kWettzell)),
              0.10);
    const Vector3 error = Error(json.at("solution"), kWettzell);
    for (const double component : error) {
        EXPECT_LT(std::abs(component), 0.008);
    }
    for (const auto& ambiguity : json.at("solutions").at("fixed").at(0).at("ambiguities")) {
        const double value = ambiguity.at("value").get<double>();
        EXPECT_EQ(value, std::round(value));
    }
    EXPECT_THAT(text_, testing::StartsWith("WTZR (base) to WTZZ00DEU (rover): TRUSTED\n"));
    EXPECT_THAT(text_, testing::HasSubstr("Status 81: first-frequency fixed solution done"));
    EXPECT_THAT(text_, testing::HasSubstr("Ionosphere  GPS coefficients of ESBC00DNK"));
}

TEST_F(Baselines, CiboureWithoutAntennaOffsets) {
    const auto json = Solve(Ciboure(), 8);  // one check in three agrees
    EXPECT_EQ(json.at("outcome").at("status").at("number"), 73);
    EXPECT_LT(session::Length(Error(json.at("solutions").at("triple_difference"), kCiboure)), 0.25);
    const Vector3 error = Error(json.at("solution"), kCiboure);
    EXPECT_LT(std::hypot(error[0], error[1]), 0.020);
    EXPECT_LT(std::abs(error[2]), 0.070);
    // One BeiDou satellite alone has a second frequency in the file of SCOA.
    EXPECT_THAT(json.at("notes").dump(),
                testing::HasSubstr("BeiDou: 14 satellites observed by both, but no two of them"));
    // No ANTEX, and two kinds of antenna.
    EXPECT_THAT(json.at("warnings").dump(), testing::HasSubstr("no ANTEX file is given"));
    EXPECT_THAT(text_, testing::HasSubstr("12 > 14 > 21 > 31 > 52 > 71 > 33\n  > 55 > 73"));
}

TEST_F(Baselines, CiboureWithAntennaOffsets) {
    auto words = Ciboure();
    words.push_back(Data("ciboure-pasaia/antennas.atx"));
    const auto json = Solve(words, 8);
    EXPECT_EQ(json.at("outcome").at("status").at("number"), 73);
    for (const double component : Error(json.at("solution"), kCiboure)) {
        EXPECT_LT(std::abs(component), 0.020);
    }
    const auto& calibration = json.at("rover").at("antenna").at("calibration");
    EXPECT_EQ(calibration.at("applied"), true);
    EXPECT_EQ(calibration.at("l1_neu_m").at(2), 0.12488);
    EXPECT_EQ(calibration.at("l2_neu_m").at(2), 0.13351);
}

TEST_F(Baselines, EbreOver115Kilometres) {
    const auto json = Solve(Ebre(), 0);
    EXPECT_EQ(json.at("outcome").at("status").at("number"), 73);
    EXPECT_LT(session::Length(Error(json.at("solutions").at("triple_difference"), kEbre)), 0.60);
    for (const double component : Error(json.at("solution"), kEbre)) {
        EXPECT_LT(std::abs(component), 0.015);
    }
    EXPECT_EQ(json.at("rover").at("antenna").at("height_m"), 0.054);
}

TEST_F(Baselines, TheTextFitsALineOf80Columns) {
    auto withAntennas = Ciboure();
    withAntennas.push_back(Data("ciboure-pasaia/antennas.atx"));
    for (const auto& words : {DemoSolve(), withAntennas, Ebre()}) {
        std::istringstream lines(Vornel(words).out);
        std::size_t count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            EXPECT_LE(line.size(), 80U) << line;
        }
        EXPECT_GT(count, 20U);
        EXPECT_LT(count, 60U);  // lines of a printed page
    }
}

// An SP3 file of GPS and Galileo from `hours` hours before the session's day to three after, every
// five minutes, made of the broadcast orbits; without its records where the broadcast has none.
std::string OrbitFile(double hours) {
    const io::GpsTime day{2111, 345600.0};
    const io::GpsTime first = io::Shifted(day, -3600.0 * hours), last = io::Shifted(day, 10800.0);
    const std::string folder = (test::ProjectFolder() / "data" / "wettzell").string();
    const auto file = io::ReadFile(folder + "/ESBC00DNK_R_20201770000_01D_MN.rnx.gz").front();
    const auto ephemerides =
        session::SelectEphemerides({io::ReadNavigation(file.bytes, file.name)}, first, last);
    std::string satellites, body;
    int count = 0;
    for (const auto system : {engine::System::kGps, engine::System::kGalileo}) {
        for (int prn = 1; prn <= 32; ++prn) {
            satellites += engine::ToString(engine::Satellite{system, prn});
            ++count;
        }
    }
    int epochs = 0;
    for (io::GpsTime time = first; time <= last; time = io::Shifted(time, 300.0)) {
        const io::CalendarTime c = io::ToCalendar(time);
        body += session::Format("*  %4d %2d %2d %2d %2d %11.8f\n", c.year, c.month, c.day, c.hour,
                                c.minute, c.second);
        ++epochs;
        for (std::size_t i = 0; i < satellites.size(); i += 3) {
            const auto satellite = *engine::ParseSatellite(satellites.substr(i, 3));
            const auto state = session::BroadcastState(ephemerides, satellite, time);
            const Vector3 p = state ? state->position : Vector3{};
            body += session::Format("P%s%14.6f%14.6f%14.6f%14.6f\n",
                                    satellites.substr(i, 3).c_str(), p[0] / 1e3, p[1] / 1e3,
                                    p[2] / 1e3, state ? state->clock * 1e6 : 999999.999999);
        }
    }
    const io::CalendarTime c = io::ToCalendar(first);
    std::string text = session::Format("#dP%4d %2d %2d %2d %2d %11.8f %7d ORBIT IGb14 HLM  TST\n",
                                       c.year, c.month, c.day, c.hour, c.minute, c.second, epochs);
    text += session::Format("## %4d %15.8f %14.8f %5d %15.13f\n", first.week, first.seconds, 300.0,
                            59025, 0.0);
    for (int line = 0; line < 5; ++line) {
        std::string names = satellites.substr(
            std::min<std::size_t>(satellites.size(), 51UL * static_cast<std::size_t>(line)), 51);
        while (names.size() < 51) {
            names += "  0";
        }
        text += (line == 0 ? session::Format("+  %3d   ", count) : std::string("+        ")) +
                names + "\n";
    }
    for (int line = 0; line < 5; ++line) {
        text += "++       ";
        for (int i = 0; i < 17; ++i) {
            text += "  0";
        }
        text += "\n";
    }
    text += "%c M  cc GPS ccc cccc cccc cccc cccc ccccc ccccc ccccc ccccc\n";
    text += "%c cc cc ccc ccc cccc cccc cccc cccc ccccc ccccc ccccc ccccc\n";
    text += "%f  1.2500000  1.025000000  0.00000000000  0.000000000000000\n";
    text += "%f  0.0000000  0.000000000  0.00000000000  0.000000000000000\n";
    text += "%i    0    0    0    0      0      0      0      0         0\n";
    text += "%i    0    0    0    0      0      0      0      0         0\n";
    text += "/* made from broadcast orbits\n/*\n/*\n/*\n";
    return text + body + "EOF\n";
}

TEST_F(Baselines, PreciseOrbitsAreUsedWhenGiven) {
    const auto json = Solve(DemoSolve({Write("wide.sp3", OrbitFile(1.0)), "--systems", "GE"}), 0);
    EXPECT_EQ(json.at("orbits").at("source"), "precise");
    EXPECT_EQ(json.at("session").at("epochs"), 120);
    EXPECT_EQ(json.at("session").at("epochs_lost_at_orbit_table_ends"), 0);
    for (const double component : Error(json.at("solution"), kWettzell)) {
        EXPECT_LT(std::abs(component), 0.010);
    }
}

TEST_F(Baselines, EpochsNearTheEndsOfTheOrbitsAreLostAndSaid) {
    const auto json = Solve(DemoSolve({Write("day.sp3", OrbitFile(0.0)), "--systems", "GE"}), 8);
    // Five entries before: the first epoch that is served comes after 00:20:00.
    EXPECT_EQ(json.at("session").at("epochs_lost_at_orbit_table_ends"), 41);
    EXPECT_EQ(json.at("session").at("epochs"), 79);
    EXPECT_THAT(text_, testing::HasSubstr("41 epochs lost near the ends of the precise orbits"));
    // The broadcast orbits can be had back.
    const auto broadcast = Solve(
        DemoSolve({Path("day.sp3"), "--systems", "GE", "--ephemeris-source", "broadcast"}), 0);
    EXPECT_EQ(broadcast.at("session").at("epochs"), 120);
}

TEST_F(Baselines, PiecesOfAStationGiveTheWhole) {
    const auto whole = Solve(DemoSolve(), 0);
    const std::string base = Unpacked(DemoBase());
    const std::size_t body = base.find("\n> ") + 1, half = base.find("> 2020 06 25 00 30");
    auto words = DemoSolve();
    words[2] = Write("second.rnx", base.substr(0, body) + base.substr(half));
    // The first half comes without an option and finds its station by the marker's name.
    words.push_back(Write("first.rnx", base.substr(0, half)));
    const auto pieces = Solve(words, 0);
    EXPECT_EQ(whole.at("solutions"), pieces.at("solutions"));
    EXPECT_EQ(pieces.at("session").at("epochs"), 120);
}

TEST_F(Baselines, ARoverFarFromItsHeaderIsMoved) {
    std::string rover = Unpacked(DemoRover());
    rover.replace(rover.find("4075578.4000"), 12, "4075978.4000");
    auto words = DemoSolve();
    words[4] = Write("far.rnx", rover);
    const auto json = Solve(words, 0);
    EXPECT_THAT(text_, testing::ContainsRegex(
                           "rover WTZZ00DEU: [0-9. ]+\\(code; the header is (39|40)[0-9]"));
    EXPECT_THAT(json.at("warnings").dump(),
                testing::HasSubstr("the code position is used instead"));
    for (const double component : Error(json.at("solution"), kWettzell)) {
        EXPECT_LT(std::abs(component), 0.010);
    }
}

TEST_F(Baselines, WhatTheReadersSayIsPassedOn) {
    // A navigation record whose numbers cannot be read.
    std::string navigation = Unpacked(DemoNavigation());
    const std::size_t record = navigation.find("\nG05 ") + 1;
    const auto line = std::count(navigation.begin(),
                                 navigation.begin() + static_cast<std::ptrdiff_t>(record), '\n');
    navigation.replace(record + 25, 4, "abcd");
    auto words = DemoSolve();
    words[5] = Write("nav.rnx", navigation);
    const auto json = Solve(words, 0);
    ASSERT_FALSE(json.at("file_notes").empty());
    const auto& note = json.at("file_notes").front();
    EXPECT_EQ(note.at("file"), words[5]);
    EXPECT_EQ(note.at("line"), line + 1);
    EXPECT_EQ(json.at("orbits").at("broadcast").at("records_dropped").at("unreadable in the file"),
              1);
    EXPECT_THAT(text_, testing::HasSubstr("1 unreadable in the file"));
    EXPECT_THAT(text_, testing::HasSubstr("nav.rnx:" + std::to_string(line + 1) + ": "));
}

TEST_F(Baselines, ExclusionsLeaveNoTrace) {
    const auto json = Solve(
        DemoSolve({"--exclude", "G15", "--exclude", "E30@2020-06-25T00:00/2020-06-25T00:30"}), 0);
    EXPECT_EQ(json.at("left_out").at("excluded"),
              nlohmann::json({"G15", "E30@2020-06-25T00:00/2020-06-25T00:30"}));
    for (const auto& solution : json.at("solutions").at("fixed")) {
        for (const auto& series : solution.at("residuals")) {
            EXPECT_NE(series.at("satellite"), "G15");
            if (series.at("satellite") == "E30") {
                for (const double seconds : series.at("seconds")) {
                    EXPECT_GT(seconds, 345600.0 + 1800.0);
                }
            }
        }
    }
}

TEST_F(Baselines, JsonHoldsInputsWithTheirSums) {
    const std::string base = Write("base.rnx", Unpacked(DemoBase()));
    auto words = DemoSolve();
    words[2] = base;
    const auto json = Solve(words, 0);
    EXPECT_EQ(json.at("schema"), "vornel-solve/1.1");
    const auto& inputs = json.at("inputs");
    ASSERT_EQ(inputs.size(), 4U);
    EXPECT_EQ(inputs[0].at("path"), base);
    EXPECT_EQ(inputs[0].at("size"), std::filesystem::file_size(base));
    EXPECT_EQ(inputs[0].at("packing"), "plain");
    EXPECT_EQ(inputs[1].at("packing"), "gzip");
    EXPECT_EQ(inputs[1].at("sha256").get<std::string>().size(), 64U);
    // Packed or not, the answer is the same.
    EXPECT_EQ(json.at("solutions"), Solve(DemoSolve(), 0).at("solutions"));
}

// Every field name of the JSON stands in its document.
void ExpectDocumented(const nlohmann::json& json, const std::string& document) {
    if (json.is_object()) {
        for (const auto& [key, value] : json.items()) {
            const bool name = std::all_of(key.begin(), key.end(), [](char c) {
                return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
            });
            if (name) {
                EXPECT_THAT(document, testing::HasSubstr("`" + key + "`"));
            }
            ExpectDocumented(value, document);
        }
    }
    if (json.is_array() && !json.empty()) {
        ExpectDocumented(json.front(), document);
    }
}

TEST_F(Baselines, EveryFieldOfTheJsonIsDocumented) {
    auto words = DemoSolve({"--solve-mode", "3"});
    nlohmann::json json = Solve(words, 0);
    json.erase("engine_config");  // named as the engine names them
    for (auto& system : json["systems"]) {
        system["signals"]["base"].erase(1);
    }
    json["orbits"]["broadcast"].erase("records_dropped");  // by reason
    ExpectDocumented(json, Read((test::ProjectFolder() / "docs" / "json-schema.md").string()));
}

TEST_F(Baselines, FloatOrNothingHasItsExitCode) {
    // A threshold that no ratio passes.
    const auto low = Solve(DemoSolve({"--ratio-threshold", "99"}), 3);
    EXPECT_EQ(low.at("outcome").at("acceptance"), "float");
    EXPECT_THAT(text_, testing::HasSubstr("FLOAT\n  The integers are not certain: ratio"));
    const auto nothing = Solve(DemoSolve({"--elevation-mask", "89"}), 6);
    EXPECT_EQ(nothing.at("outcome").at("acceptance"), "none");
    EXPECT_TRUE(nothing.at("solution").is_null());
    EXPECT_THAT(text_, testing::HasSubstr("NO SOLUTION"));
}

TEST_F(Baselines, CsvHasEveryResidualOfTheJson) {
    const auto json = Solve(DemoSolve({"--csv", Path("out.csv")}), 0);
    std::size_t points = 0;
    for (const char* kind : {"float", "fixed"}) {
        for (const auto& solution : json.at("solutions").at(kind)) {
            for (const auto& series : solution.at("residuals")) {
                points += series.at("seconds").size();
            }
        }
    }
    const std::string csv = Read(Path("out.csv"));
    EXPECT_GT(points, 1000U);
    EXPECT_EQ(static_cast<std::size_t>(std::count(csv.begin(), csv.end(), '\n')), points + 1);
    EXPECT_THAT(csv,
                testing::StartsWith("solution,model,block,satellite,gps_week,gps_seconds,gps_time,"
                                    "residual_mm\nfloat,1,1,"));
}

TEST_F(Baselines, TheEnginesLinesAreKeptOutOfSight) {
    testing::internal::CaptureStderr();
    const test::Answer quiet = Vornel(DemoSolve());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(quiet.err, "");
    const test::Answer verbose = Vornel(DemoSolve({"--verbose"}));
    EXPECT_THAT(verbose.err, testing::HasSubstr("CTRLSolve::Dispose suc."));
}

TEST_F(Baselines, ATraceIsWrittenWhereAskedFor) {
    Vornel(DemoSolve({"--trace", Path("trace.log"), "--trace-level", "4"}));
    EXPECT_THAT(Read(Path("trace.log")), testing::HasSubstr("solveConfig: slvmode=0"));
}

}  // namespace
}  // namespace vornel::app
