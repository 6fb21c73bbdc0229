// Bad input: one exact line, one exit code for each kind, and no output file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "command_fixture.h"

namespace vornel::app {
namespace {

using Words = std::vector<std::string>;

class BadInput : public test::CommandFixture {
  protected:
    // Runs and expects the line, in which {} stands for the folder of the test.
    void Expect(const Words& words, int code, const std::string& line) {
        Words all = words;
        if (!all.empty() && all.front() == "solve") {
            all.insert(all.end(), {"--json", Path("out.json"), "--csv", Path("out.csv")});
        }
        const test::Answer answer = Vornel(all);
        EXPECT_EQ(answer.code, code) << answer.err;
        EXPECT_EQ(answer.err, "vornel: " + WithFolder(line) + "\n");
        EXPECT_EQ(answer.out, "");
        EXPECT_FALSE(std::filesystem::exists(Path("out.json")));
        EXPECT_FALSE(std::filesystem::exists(Path("out.csv")));
    }

    // The same where the end of the line is the reader's own business.
    void ExpectBeginning(const Words& words, int code, const std::string& beginning) {
        const test::Answer answer = Vornel(words);
        EXPECT_EQ(answer.code, code) << answer.err;
        EXPECT_THAT(answer.err, testing::StartsWith("vornel: " + WithFolder(beginning)));
        EXPECT_EQ(std::count(answer.err.begin(), answer.err.end(), '\n'), 1) << answer.err;
        EXPECT_EQ(answer.out, "");
    }

    std::string WithFolder(std::string text) const {
        for (std::size_t at = text.find("{}"); at != std::string::npos; at = text.find("{}")) {
            text.replace(at, 2, folder_.string());
        }
        return text;
    }

    static Words Solve(const std::string& base, const std::string& rover, const Words& more) {
        Words words = {"solve", "--base", base, "--rover", rover};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    static Words WithBase(const std::string& base) {
        return Solve(base, DemoRover(), {DemoNavigation()});
    }

    static Words WithOther(const std::string& other) {
        return Solve(DemoBase(), DemoRover(), {DemoNavigation(), other});
    }

    // The text with `count` lines of it kept.
    static std::string Head(const std::string& text, std::size_t count) {
        std::size_t end = 0;
        for (std::size_t i = 0; i < count; ++i) {
            end = text.find('\n', end) + 1;
        }
        return text.substr(0, end);
    }

    static std::string Replaced(std::string text, const std::string& from, const std::string& to) {
        const std::size_t at = text.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        return text.replace(at, from.size(), to);
    }
};

// ---- files --------------------------------------------------------------------------------------

TEST_F(BadInput, FilesThatCannotBeUsed) {
    ExpectBeginning(WithBase(Path("none.rnx")), 20, "{}/none.rnx: ");
    ExpectBeginning(WithOther(Path("none.rnx")), 20, "{}/none.rnx: ");
    ExpectBeginning(WithBase(folder_.string()), 21, "{}: ");
    ExpectBeginning(WithBase(Write("empty.rnx", "")), 22, "{}/empty.rnx: ");
    ExpectBeginning(WithBase(Write("letter.txt", "Dear Sir,\n")), 24, "{}/letter.txt:1: ");
    ExpectBeginning(WithBase(Write("noise.bin", std::string("\x01\xff\x00\x7f\x80", 5))), 24,
                    "{}/noise.bin");
    const std::string packed = Read(DemoBase());
    ExpectBeginning(WithBase(Write("cut.rnx.gz", packed.substr(0, packed.size() / 2))), 23,
                    "{}/cut.rnx.gz: ");
    // The beginning of the compressed data overwritten.
    std::string damaged = packed;
    damaged.replace(100, 60, std::string(60, '\xff'));
    ExpectBeginning(WithBase(Write("damaged.rnx.gz", damaged)), 27, "{}/damaged.rnx.gz: ");
}

TEST_F(BadInput, ObservationFilesCutOffOrSpoiled) {
    const std::string base = Unpacked(DemoBase());
    // Line 1 begins the file; the header ends somewhere before line 40.
    const std::string header = base.substr(0, base.find("END OF HEADER") + 14);
    const auto headerLines =
        static_cast<std::size_t>(std::count(header.begin(), header.end(), '\n'));
    const std::string inHeader = Write("header.rnx", Head(base, headerLines - 3));
    ExpectBeginning(WithBase(inHeader), 23, "{}/header.rnx:");
    const std::string inEpoch = Write("epoch.rnx", Head(base, headerLines + 3));
    ExpectBeginning(WithBase(inEpoch), 23,
                    "{}/epoch.rnx:" + std::to_string(headerLines + 3) + ": ");
    const std::string version =
        Write("version.rnx", Replaced(base, base.substr(0, 9), "     9.99"));
    ExpectBeginning(WithBase(version), 25, "{}/version.rnx:1: ");
    const std::size_t number = base.find('\n', header.size()) + 1;  // of the first satellite
    std::string letters = base;
    letters.replace(number + 5, 4, "abcd");
    const std::string malformed = Write("letters.rnx", letters);
    ExpectBeginning(WithBase(malformed), 26,
                    "{}/letters.rnx:" + std::to_string(headerLines + 2) + ": ");
}

TEST_F(BadInput, OtherFilesCutOffOrSpoiled) {
    const std::string navigation = Unpacked(DemoNavigation());
    const std::string header = navigation.substr(0, navigation.find("END OF HEADER") + 14);
    const auto lines = static_cast<std::size_t>(std::count(header.begin(), header.end(), '\n'));
    ExpectBeginning(WithOther(Write("cut.nav", Head(navigation, lines + 20))), 23, "{}/cut.nav:");
    ExpectBeginning(
        WithOther(Write("version.nav", Replaced(navigation, navigation.substr(0, 9), "     7.00"))),
        25, "{}/version.nav:1: ");
    ExpectBeginning(WithOther(Write("cut.sp3",
                                    "#dP2020  6 25  0  0  0.00000000     289 d+D   "
                                    "IGb14 FIT AIUB\n")),
                    23, "{}/cut.sp3");
}

// ---- sessions -----------------------------------------------------------------------------------

TEST_F(BadInput, FilesInTheWrongPlace) {
    Expect(Solve(DemoNavigation(), DemoRover(), {}), 37,
           DemoNavigation() +
               ": this is a RINEX navigation file, not observations; give the observations of the "
               "base with --base, and other files without an option");
    Expect(Solve(DemoBase(), DemoNavigation(), {}), 37,
           DemoNavigation() +
               ": this is a RINEX navigation file, not observations; give the observations of the "
               "rover with --rover, and other files without an option");
    Expect(Solve(DemoBase(), DemoBase(), {DemoNavigation()}), 37,
           DemoBase() + ": given for base and rover; give each station its own observation file");
}

TEST_F(BadInput, ObservationsOfAThirdStation) {
    std::string other = Unpacked(DemoBase());
    const std::size_t marker = other.find("MARKER NAME");
    other.replace(marker - 60, 4, "ABCD");
    Expect(WithOther(Write("abcd.rnx", other)), 38,
           "{}/abcd.rnx: observations of station ABCD, which is neither the base nor the rover; "
           "give it with --base or --rover, or leave it out");
}

TEST_F(BadInput, NavigationMissingOrOfAnotherDay) {
    Expect(Solve(DemoBase(), DemoRover(), {}), 32,
           "no navigation file is given; add the broadcast navigation of 2020-06-25, or precise "
           "orbits");
    const std::string later =
        (test::ProjectFolder() / "tests/data/baselines/ciboure-pasaia").string() +
        "/BRDC00WRD_R_20261200800_06H_MN.rnx.xz";
    Expect(Solve(DemoBase(), DemoRover(), {later}), 32,
           "no usable record of the navigation files is within 4 hours of the session (2020-06-25 "
           "00:00:00 to 2020-06-25 00:59:30 GPS time); add the broadcast navigation of that day");
    // GLONASS records alone, and GPS alone switched on.
    Expect(Solve(DemoBase(), DemoRover(), {DemoGlonass(), "--systems", "G"}), 32,
           "no broadcast orbit of any satellite that both receivers observed; add the files of the "
           "day and the systems observed");
}

TEST_F(BadInput, StationsOfDifferentDays) {
    const std::string other =
        (test::ProjectFolder() / "tests/data/baselines/ciboure-pasaia").string() +
        "/PASA00ESP_R_20261201000_02H_30S_MO.rnx.xz";
    Expect(Solve(DemoBase(), other, {DemoNavigation()}), 30,
           "the stations were observed on different days: base 2020-06-25, rover 2026-04-30; give "
           "observation files of the same day");
}

TEST_F(BadInput, NoCommonEpochs) {
    // The second half hour of the rover against the first of the base, by their epoch lines.
    const std::string rover = Unpacked(DemoRover());
    const std::size_t body = rover.find("\n> ") + 1;
    const std::size_t half = rover.find("> 2020  6 25  0 30");
    ASSERT_NE(half, std::string::npos);
    const std::string late = Write("late.rnx", rover.substr(0, body) + rover.substr(half));
    const std::string base = Unpacked(DemoBase());
    const std::string early = Write("early.rnx", base.substr(0, base.find("> 2020 06 25 00 30")));
    Expect(
        Solve(early, late, {DemoNavigation()}), 31,
        "no common epoch within 0.1 s: base 2020-06-25 00:00:00 to 2020-06-25 00:29:30, rover "
        "2020-06-25 00:30:00 to 2020-06-25 00:59:30 GPS time; give observation files of the same "
        "hours and the same full seconds");
    Expect(DemoSolve({"--start", "2020-06-26"}), 31,
           DemoBase() +
               ": no epoch of it can be used; see --start, --end and --interval, or give the whole "
               "file");
}

TEST_F(BadInput, AStationWithoutPosition) {
    std::string base = Unpacked(DemoBase());
    const std::size_t label = base.find("APPROX POSITION XYZ");
    const std::size_t line = base.rfind('\n', label) + 1;
    base.replace(line, 42, "        0.0000        0.0000        0.0000");
    const std::string path = Write("zero.rnx", base);
    // Navigation of three GPS satellites, which give no position.
    std::istringstream lines(Unpacked(DemoNavigation()));
    std::string kept;
    bool keep = true, header = true;
    for (std::string text; std::getline(lines, text);) {
        if (!header && text[0] != ' ') {
            keep = text[0] == 'G' && text.substr(0, 3) < "G09";
        }
        header = header && text.find("END OF HEADER") == std::string::npos;
        kept += keep ? text + "\n" : "";
    }
    Expect(Solve(path, DemoRover(), {Write("few.nav", kept), "--systems", "G"}), 33,
           "base (WTZR): no position in the header, and none could be found from its code "
           "observations; give --base-xyz X Y Z");
}

TEST_F(BadInput, ABasePositionThatTheDataContradict) {
    std::string base = Unpacked(DemoBase());
    base = Replaced(base, "4075580.8863", "4085580.8863");
    const test::Answer answer =
        Vornel(Solve(Write("far.rnx", base), DemoRover(), {DemoNavigation()}));
    EXPECT_EQ(answer.code, 36);
    EXPECT_THAT(answer.err,
                testing::MatchesRegex(
                    "vornel: base \\(WTZR\\): the header position lies (9999|1000[0-9]) m from "
                    "where the code observations put it; give --base-xyz X Y Z, or --trust-code to "
                    "take the code position\n"));
}

TEST_F(BadInput, OrbitsThatDoNotCoverTheSession) {
    Expect(DemoSolve({"--ephemeris-source", "precise"}), 34,
           "precise orbits are asked for, none given; add an SP3 file, or leave --ephemeris-source "
           "out");
}

TEST_F(BadInput, NothingInCommon) {
    Words words = DemoSolve({"--systems", "C"});
    const std::string rover = Unpacked(DemoRover());
    std::string kept;
    std::istringstream lines(rover);
    for (std::string line; std::getline(lines, line);) {
        // BeiDou renamed to a system that the engine does not have.
        const bool types = line.find("SYS / # / OBS TYPES") != std::string::npos;
        if (line.size() > 2 && line[0] == 'C' && (types || std::isdigit(line[1]) != 0)) {
            line[0] = 'I';
        }
        kept += line + "\n";
    }
    words[4] = Write("nobds.rnx", kept);
    Expect(words, 35,
           "no system whose first signal both receivers observed with code and phase; see `vornel "
           "info` for what the files hold, and --systems");
}

// ---- configuration ------------------------------------------------------------------------------

TEST_F(BadInput, ConfigurationFiles) {
    const auto with = [this](const std::string& text) {
        return Words{"config", "--config", Write("c.toml", text)};
    };
    ExpectBeginning({"config", "--config", Path("none.toml")}, 20, "{}/none.toml: ");
    ExpectBeginning(with("elevationMask = \n"), 40, "{}/c.toml:1: not TOML: ");
    ExpectBeginning(with("a = 1\na = 2\n"), 40, "{}/c.toml:2: not TOML: ");
    Expect(with("min-epochs = 5\n\nratio = 3\n"), 41,
           "{}/c.toml:3: unknown key 'ratio'; did you mean 'ratio-threshold'?");
    Expect(with("[engine]\nslvmode = 1\n"), 41,
           "{}/c.toml:1: unknown key 'engine'; did you mean 'end'?");
    Expect(with("elevationMask = 91\n"), 42,
           "{}/c.toml:1: elevationMask: '91' is outside 0.0 to 90.0 degrees");
    Expect(with("min-epochs = 2.5\n"), 42, "{}/c.toml:1: min-epochs: '2.5' is not a whole number");
    Expect(with("no-iono = \"yes\"\n"), 42,
           "{}/c.toml:1: no-iono: 'yes' is neither true nor false");
    Expect(with("base-xyz = [1.0, 2.0]\n"), 42, "{}/c.toml:1: base-xyz: takes 3 values");
    Expect(with("exclude = [\"G05\", \"G50\"]\n"), 42,
           "{}/c.toml:1: exclude: 'G50' is no satellite; write G05, R12, C08 or E30");
    Expect(with("pressure = inf\n"), 42, "{}/c.toml:1: pressure: 'inf' is not a number");
}

// ---- usage --------------------------------------------------------------------------------------

TEST_F(BadInput, Usage) {
    Expect({}, 2, "no command is given: solve, info or config; see `vornel --help`");
    Expect({"frobnicate"}, 2,
           "'frobnicate' is no command; there are solve, info and config; see `vornel --help`");
    Expect({"solve"}, 2, "the observation file of the base is missing: give --base FILE");
    Expect({"solve", "--base", DemoBase()}, 2,
           "the observation file of the rover is missing: give --rover FILE");
    Expect({"info"}, 2, "no file is given; see `vornel info --help`");
    Expect(DemoSolve({"--elevation-msk", "3"}), 2,
           "unknown option --elevation-msk; did you mean --elevation-mask? See `vornel solve "
           "--help`");
    Expect(DemoSolve({"--elevation-mask", "95"}), 2,
           "--elevation-mask: '95' is outside 0.0 to 90.0 degrees");
    Expect(DemoSolve({"--elevation-mask", "ten"}), 2, "--elevation-mask: 'ten' is not a number");
    Expect(DemoSolve({"--solve-mode", "7"}), 2, "--solve-mode: '7' is outside 0 to 6");
    Expect(DemoSolve({"--systems", "X"}), 2,
           "--systems: 'X': letters are G (GPS), R (GLONASS), C (BeiDou), E (Galileo)");
    Expect(DemoSolve({"--exclude", "G99"}), 2,
           "--exclude: 'G99' is no satellite; write G05, R12, C08 or E30");
    Expect(DemoSolve({"--exclude", "G05@12:00/13:00"}), 2,
           "--exclude: '12:00' is no time; write 2020-06-25T00:10:00 or WEEK:SECONDS, in GPS time");
    Expect(DemoSolve({"--base-xyz", "49.1", "12.9", "666"}), 2,
           "--base-xyz: X Y Z lie 1.0 km from the earth's centre; give earth-centred coordinates "
           "in metres");
    Expect(DemoSolve({"--start", "2020-06-25T00:30", "--end", "2020-06-25T00:20"}), 2,
           "--end lies before --start");
    Expect(DemoSolve({"--start", "yesterday"}), 2,
           "--start: 'yesterday' is no time; write 2020-06-25T00:10:00 or WEEK:SECONDS, in GPS "
           "time");
    Expect(DemoSolve({"--gal-freq2", "1"}), 2, "--gal-freq1 and --gal-freq2 name the same signal");
    Expect(DemoSolve({"--gal-freq2", "6"}), 2, "--gal-freq2: '6' is outside 1 to 5");
    ExpectBeginning(DemoSolve({"--trace-level", "3"}), 2, "--trace-level requires --trace");
    ExpectBeginning(DemoSolve({"--trace", Path("t"), "--trace-level", "9"}), 2, "--trace-level: ");
}

TEST_F(BadInput, OutputsThatCannotBeWritten) {
    const test::Answer answer = Vornel(DemoSolve({"--json", Path("none/out.json")}));
    EXPECT_EQ(answer.code, 12);
    EXPECT_EQ(answer.err, "vornel: " + Path("none/out.json") +
                              ": cannot be written: No such file or directory\n");
    EXPECT_EQ(answer.out, "");
}

}  // namespace
}  // namespace vornel::app
