// Bad input, one by one: each has one line on standard error, one exit code, and leaves no output
// file. What the readers say of further damaged texts stands in io/malformed_input_test.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "command_fixture.h"
#include "packing.h"

namespace vornel::app {
namespace {

using Words = std::vector<std::string>;

class BadInput : public test::CommandFixture {
  public:
    // Runs and expects the line, in which {} stands for the folder of the test and {demo} for that
    // of the session of the demo.
    void Expect(Words words, int code, const std::string& line) const {
        const Words outputs = {"--json",        Path("out.json"), "--csv",
                               Path("out.csv"), "--report",       Path("out.html")};
        if (!words.empty() && words.front() == "solve") {
            words.insert(words.end(), outputs.begin(), outputs.end());
        }
        const std::size_t before = FilesInFolder().size();
        const test::Answer answer = Vornel(words);
        EXPECT_EQ(answer.code, code) << answer.err;
        EXPECT_EQ(answer.err, "vornel: " + WithFolders(line) + "\n");
        EXPECT_EQ(answer.out, "");
        EXPECT_EQ(FilesInFolder().size(), before);
    }

    std::string WithFolders(std::string text) const {
        const std::string demo = Demo("");
        for (const auto& [mark, folder] :
             {std::pair{std::string("{}"), folder_.string()},
              std::pair{std::string("{demo}"), demo.substr(0, demo.size() - 1)}}) {
            for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark)) {
                text.replace(at, mark.size(), folder);
            }
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

    // A file of that content as the base, or beside the rest.
    Words Base(const std::string& name, const std::string& content) const {
        return WithBase(Write(name, content));
    }
    Words Other(const std::string& name, const std::string& content) const {
        return WithOther(Write(name, content));
    }

    Words Config(const std::string& content) const {
        return {"config", "--config", Write("c.toml", content)};
    }

    static std::string BaseText() { return Unpacked(DemoBase()); }
    static std::string NavigationText() { return Unpacked(DemoNavigation()); }
    static std::string Ciboure(const std::string& name) {
        return (test::ProjectFolder() / "tests/data/baselines/ciboure-pasaia" / name).string();
    }

    // The text with its first `count` lines alone.
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
        return at == std::string::npos ? text : text.replace(at, from.size(), to);
    }

    using CommandFixture::Demo;
    using CommandFixture::DemoBase;
    using CommandFixture::DemoGlonass;
    using CommandFixture::DemoNavigation;
    using CommandFixture::DemoRover;
    using CommandFixture::DemoSolve;
    using CommandFixture::Path;
    using CommandFixture::Read;
    using CommandFixture::Unpacked;
    using CommandFixture::Write;

    std::string Folder() const { return folder_.string(); }
};

struct Case {
    const char* name;
    std::function<Words(const BadInput&)> words;
    int code;
    const char* line;
};

class BadInputs : public BadInput, public testing::WithParamInterface<Case> {};

// How a case shows itself in the output of a failed test.
void PrintTo(const Case& one, std::ostream* out) {
    *out << one.name;
}

TEST_P(BadInputs, HasItsLineAndItsExitCode) {
    const Case& one = GetParam();
    Expect(one.words(*this), one.code, one.line);
}

const auto kNameOf = [](const testing::TestParamInfo<Case>& test) {
    return std::string(test.param.name);
};

using T = const BadInput&;

const std::vector<Case> kFiles = {
    Case{"NoBase", [](T t) { return t.WithBase(t.Path("none.rnx")); }, 20,
         "{}/none.rnx: there is no such file (check the path)"},
    Case{"NoNavigationFile", [](T t) { return t.WithOther(t.Path("none.rnx")); }, 20,
         "{}/none.rnx: there is no such file (check the path)"},
    Case{"AFolder", [](T t) { return t.WithBase(t.Folder()); }, 21,
         "{}: it is a folder (give the files in it)"},
    Case{"ADevice", [](T t) { return t.WithBase("/dev/null"); }, 21,
         "/dev/null: it is no regular file (give a regular file)"},
    Case{"Empty", [](T t) { return t.Base("empty.rnx", ""); }, 22,
         "{}/empty.rnx: the file is empty (fetch or export the file again)"},
    Case{"EmptyPacked", [](T t) { return t.Base("empty.rnx.gz", test::Gzip("")); }, 22,
         "{}/empty.rnx.gz: the file is empty (fetch or export the file again)"},
    Case{"ALetter", [](T t) { return t.Base("letter.txt", "Dear Sir,\n"); }, 24,
         "{}/letter.txt:1: the first line is of no format that is read: 'Dear Sir,' (give RINEX "
         "observation or navigation, Compact RINEX, SP3, ANTEX or SINEX)"},
    Case{"Noise", [](T t) { return t.Base("noise.bin", std::string("\x01\xff\x00\x7f\x80", 5)); },
         24,
         "{}/noise.bin: it is a binary file (convert receiver formats to RINEX first; packed files "
         "may be .gz, .Z, .bz2, .xz, .zst, .zip or .tar)"}};
INSTANTIATE_TEST_SUITE_P(Files, BadInputs, testing::ValuesIn(kFiles), kNameOf);

const std::vector<Case> kPackings = {
    Case{"GzipCutOff", [](T t) { return t.Base("cut.gz", t.Read(t.DemoBase()).substr(0, 70000)); },
         23,
         "{}/cut.gz: the gzip data end too early: the last member is not whole (fetch the file "
         "again)"},
    Case{"GzipWithAChangedByte",
         [](T t) {
             std::string packed = t.Read(t.DemoBase());
             packed[90000] = static_cast<char>(packed[90000] ^ 4);
             return t.Base("changed.gz", packed);
         },
         27,
         "{}/changed.gz: the gzip data cannot be unpacked: incorrect data check (fetch the file "
         "again)"},
    Case{
        "GzipOverwritten",
        [](T t) { return t.Base("damaged.gz", t.Read(t.DemoBase()).replace(100, 60, 60, '\xff')); },
        27,
        "{}/damaged.gz: the gzip data cannot be unpacked: invalid block type (fetch the file "
        "again)"},
    Case{"Bzip2Overwritten",
         [](T t) {
             return t.Base("damaged.bz2", test::Bzip2(t.BaseText()).replace(1000, 60, 60, '\xff'));
         },
         27,
         "{}/damaged.bz2: the bzip2 data cannot be unpacked: bzip decompression failed (fetch the "
         "file again)"},
    Case{"XzOverwritten",
         [](T t) {
             return t.Base("damaged.xz", test::Xz(t.BaseText()).replace(1000, 60, 60, '\xff'));
         },
         27,
         "{}/damaged.xz: the xz data cannot be unpacked: Lzma library error: Corrupted input data "
         "(fetch the file again)"},
    Case{"ZipWithoutFiles",
         [](T t) { return t.Base("empty.zip", "PK\x05\x06" + std::string(18, '\0')); }, 22,
         "{}/empty.zip: the archive has no files in it (fetch or export the file again)"},
    Case{"PackedWithinItself",
         [](T t) { return t.Base("deep.gz", test::Gzip(test::Gzip(test::Gzip(test::Gzip("x"))))); },
         28,
         "{}/deep.gz: it is packed within itself too often (unpack it yourself and give the plain "
         "file)"}};
INSTANTIATE_TEST_SUITE_P(Packings, BadInputs, testing::ValuesIn(kPackings), kNameOf);

const std::vector<Case> kObservations = {
    Case{"HeaderCutOff", [](T t) { return t.Base("o.rnx", t.Head(t.BaseText(), 50)); }, 23,
         "{}/o.rnx:50: the file ends before END OF HEADER (fetch or export the file again)"},
    Case{"EpochCutOff", [](T t) { return t.Base("o.rnx", t.Head(t.BaseText(), 100)); }, 23,
         "{}/o.rnx:100: the file ends in the epoch of line 98: 2 of 35 satellites are there (fetch "
         "or export the file again)"},
    Case{"ValueCutOff",
         [](T t) {
             const std::string text = t.Head(t.BaseText(), 100);
             return t.Base("o.rnx", text.substr(0, text.size() - 60));
         },
         23,
         "{}/o.rnx:100: the file ends within a record: the observation '396' is cut off (fetch or "
         "export the file again)"},
    Case{"Version",
         [](T t) { return t.Base("o.rnx", t.Replaced(t.BaseText(), "     3.03", "     9.99")); },
         25,
         "{}/o.rnx:1: RINEX version 9.99 is not read (versions 2.00 to 2.12, 3.00 to 3.05 and 4.00 "
         "to 4.02 are)"},
    Case{"PositionOfLetters",
         [](T t) {
             return t.Base("o.rnx", t.Replaced(t.BaseText(), " 4075580.8863", " 40755x0.8863"));
         },
         26, "{}/o.rnx:8: approximate position: '40755x0.8863' is not a number"},
    Case{"HeightOfLetters",
         [](T t) {
             return t.Base("o.rnx", t.Replaced(t.BaseText(), "        0.0710        0.0000",
                                               "        O.O71O        0.0000"));
         },
         26, "{}/o.rnx:44: antenna height and offsets: 'O.O71O' is not a number"},
    Case{"EpochOfNoDay",
         [](T t) {
             return t.Base("o.rnx", t.Replaced(t.BaseText(), "> 2020 06 25 00 01 00",
                                               "> 2020 06 35 00 01 00"));
         },
         26, "{}/o.rnx:134: the date and time '2020 06 35 00 01 00.0000000' does not exist"},
    Case{"UnknownEventFlag",
         [](T t) {
             return t.Base("o.rnx", t.Replaced(t.BaseText(), "> 2020 06 25 00 01 00.0000000  0",
                                               "> 2020 06 25 00 01 00.0000000  9"));
         },
         26, "{}/o.rnx:134: the epoch flag '9' is none from 0 to 6"},
    Case{"ObservationOfLetters",
         [](T t) {
             std::string text = t.BaseText();
             const std::size_t row = text.find('\n', text.find("\n> 2020 06 25 00 01 00") + 1);
             return t.Base("o.rnx", text.replace(row + 6, 4, "abcd"));
         },
         26, "{}/o.rnx:135: the observation 'abcd2407.616' is not a number"},
    Case{"UnknownSatellite",
         [](T t) {
             std::string text = t.BaseText();
             const std::size_t row = text.find('\n', text.find("\n> 2020 06 25 00 01 00") + 1);
             return t.Base("o.rnx", text.replace(row + 1, 3, "Z99"));
         },
         26, "{}/o.rnx:135: no satellite in 'Z99', number 1 of 35"},
    Case{"CompactVersion",
         [](T t) {
             return t.Base("o.crx",
                           "2.0                 COMPACT RINEX FORMAT                    CRINEX "
                           "VERS   / TYPE\n" +
                               t.BaseText());
         },
         25, "{}/o.crx:1: Compact RINEX version '2.0' is not read (versions 1.0 and 3.0 are)"},
    Case{"CompactOfPlainText",
         [](T t) {
             return t.Base("o.crx",
                           "3.0                 COMPACT RINEX FORMAT                    CRINEX "
                           "VERS   / TYPE\n" +
                               std::string(60, ' ') + "CRINEX PROG / DATE\n" + t.BaseText());
         },
         26, "{}/o.crx:64: no satellite in '', number 1 of 35"}};
INSTANTIATE_TEST_SUITE_P(Observations, BadInputs, testing::ValuesIn(kObservations), kNameOf);

const std::vector<Case> kOtherFiles = {
    Case{"NavigationCutOff", [](T t) { return t.Other("n.rnx", t.Head(t.NavigationText(), 40)); },
         23,
         "{}/n.rnx:40: the file ends within a record: the record of C05 has 3 of 8 lines (fetch or "
         "export the file again)"},
    Case{"NavigationVersion",
         [](T t) {
             return t.Other("n.rnx", t.Replaced(t.NavigationText(), "     3.05", "     7.00"));
         },
         25,
         "{}/n.rnx:1: RINEX version 7.00 is not read (versions 2.00 to 2.12, 3.00 to 3.05 and 4.00 "
         "to 4.02 are)"},
    Case{"OrbitsCutOff",
         [](T t) {
             return t.Other("o.sp3",
                            "#dP2020  6 25  0  0  0.00000000     289 d+D   IGb14 FIT AIUB\n");
         },
         23, "{}/o.sp3:1: the file ends without EOF after 0 of 289 epochs (fetch the file again)"},
    Case{"OrbitsVersion",
         [](T t) {
             return t.Other("o.sp3",
                            "#fP2020  6 25  0  0  0.00000000     289 d+D   IGb14 FIT AIUB\n");
         },
         25, "{}/o.sp3:1: SP3 version 'f' is not read (the versions a, b, c and d are)"},
    Case{"OrbitsOfNoDate",
         [](T t) {
             return t.Other("o.sp3",
                            "#dP2020  6 25  0  0  0.00000000       1 d+D   IGb14 FIT AIUB\n"
                            "*  2020 16 25  0  0  0.00000000\nEOF\n");
         },
         26, "{}/o.sp3:2: no date and time of an epoch in '*  2020 16 25  0  0  0.00000000'"},
    Case{"AntennasCutOff",
         [](T t) { return t.Other("a.atx", t.Head(t.Read(t.Ciboure("antennas.atx")), 17)); }, 23,
         "{}/a.atx:17: the file ends within the antenna of line 5 (fetch the file again)"},
    Case{"AntennasVersion",
         [](T t) {
             return t.Other("a.atx",
                            t.Replaced(t.Read(t.Ciboure("antennas.atx")), "     1.4", "     2.0"));
         },
         25, "{}/a.atx:1: ANTEX version '2.0' is not read (the versions 1.3 and 1.4 are)"},
    Case{"AntennaOffsetOfLetters",
         [](T t) {
             return t.Other("a.atx", t.Replaced(t.Read(t.Ciboure("antennas.atx")), "    124.88",
                                                "    124,88"));
         },
         26, "{}/a.atx:13: the phase centre offset '124,88' is not a number"}};
INSTANTIATE_TEST_SUITE_P(OtherFiles, BadInputs, testing::ValuesIn(kOtherFiles), kNameOf);

// The base without a position, and navigation of few GPS satellites, which give none either.
Words WithoutPosition(T t) {
    std::string base = t.BaseText();
    const std::size_t line = base.rfind('\n', base.find("APPROX POSITION XYZ")) + 1;
    base.replace(line, 42, "        0.0000        0.0000        0.0000");
    std::istringstream lines(t.NavigationText());
    std::string kept;
    bool keep = true, header = true;
    for (std::string text; std::getline(lines, text);) {
        if (!header && text[0] != ' ') {
            keep = text[0] == 'G' && text.substr(0, 3) < "G09";
        }
        header = header && text.find("END OF HEADER") == std::string::npos;
        kept += keep ? text + "\n" : "";
    }
    return t.Solve(t.Write("zero.rnx", base), t.DemoRover(),
                   {t.Write("few.nav", kept), "--systems", "G"});
}

// The second half hour of the rover against the first of the base.
Words WithoutCommonEpochs(T t) {
    const std::string rover = t.Unpacked(t.DemoRover()), base = t.BaseText();
    const std::size_t body = rover.find("\n> ") + 1;
    return t.Solve(
        t.Write("early.rnx", base.substr(0, base.find("> 2020 06 25 00 30"))),
        t.Write("late.rnx", rover.substr(0, body) + rover.substr(rover.find("> 2020  6 25  0 30"))),
        {t.DemoNavigation()});
}

// The rover's BeiDou renamed to a system that the engine does not have, and only BeiDou wanted.
Words WithoutCommonSystem(T t) {
    std::string kept;
    std::istringstream lines(t.Unpacked(t.DemoRover()));
    for (std::string line; std::getline(lines, line);) {
        const bool types = line.find("SYS / # / OBS TYPES") != std::string::npos;
        if (line.size() > 2 && line[0] == 'C' && (types || std::isdigit(line[1]) != 0)) {
            line[0] = 'I';
        }
        kept += line + "\n";
    }
    return t.Solve(t.DemoBase(), t.Write("nobds.rnx", kept),
                   {t.DemoNavigation(), "--systems", "C"});
}

const std::vector<Case> kSessions = {
    Case{"NavigationAsBase", [](T t) { return t.Solve(t.DemoNavigation(), t.DemoRover(), {}); }, 37,
         "{demo}/ESBC00DNK_R_20201770000_01D_MN.rnx.gz: this is a RINEX navigation file, not "
         "observations; give the observations of the base with --base, and other files without "
         "an option"},
    Case{"NavigationAsRover", [](T t) { return t.Solve(t.DemoBase(), t.DemoNavigation(), {}); }, 37,
         "{demo}/ESBC00DNK_R_20201770000_01D_MN.rnx.gz: this is a RINEX navigation file, not "
         "observations; give the observations of the rover with --rover, and other files "
         "without an option"},
    Case{"OneFileForBoth",
         [](T t) { return t.Solve(t.DemoBase(), t.DemoBase(), {t.DemoNavigation()}); }, 37,
         "{demo}/WTZR00DEU_R_20201770000_01H_30S_MO.rnx.gz: given for base and rover; give each "
         "station its own observation file"},
    Case{"AThirdStation",
         [](T t) { return t.Other("abcd.rnx", t.Replaced(t.BaseText(), "\nWTZR  ", "\nABCD  ")); },
         38,
         "{}/abcd.rnx: observations of station ABCD, which is neither the base nor the rover; "
         "give it with --base or --rover, or leave it out"},
    Case{"NoNavigation", [](T t) { return t.Solve(t.DemoBase(), t.DemoRover(), {}); }, 32,
         "no navigation file is given; add the broadcast navigation of 2020-06-25, or precise "
         "orbits"},
    Case{"NavigationOfAnotherDay",
         [](T t) {
             return t.Solve(t.DemoBase(), t.DemoRover(),
                            {t.Ciboure("BRDC00WRD_R_20261200800_06H_MN.rnx.xz")});
         },
         32,
         "no usable record of the navigation files is within 4 hours of the session (2020-06-25 "
         "00:00:00 to 2020-06-25 00:59:30 GPS time); add the broadcast navigation of that day"},
    Case{"NavigationOfAnotherSystem",
         [](T t) {
             return t.Solve(t.DemoBase(), t.DemoRover(), {t.DemoGlonass(), "--systems", "G"});
         },
         32,
         "no broadcast orbit of any satellite that both receivers observed; add the files of "
         "the day and the systems observed"},
    Case{"StationsOfDifferentDays",
         [](T t) {
             return t.Solve(t.DemoBase(), t.Ciboure("PASA00ESP_R_20261201000_02H_30S_MO.rnx.xz"),
                            {t.DemoNavigation()});
         },
         30,
         "the stations were observed on different days: base 2020-06-25, rover 2026-04-30; give "
         "observation files of the same day"},
    Case{"NoCommonEpochs", WithoutCommonEpochs, 31,
         "no common epoch within 0.1 s: base 2020-06-25 00:00:00 to 2020-06-25 00:29:30, rover "
         "2020-06-25 00:30:00 to 2020-06-25 00:59:30 GPS time; give observation files of the "
         "same hours and the same full seconds"},
    Case{"NothingInTheSpan",
         [](T t) {
             return t.DemoSolve({"--start", "2020-06-26"});
         },
         31,
         "{demo}/WTZR00DEU_R_20201770000_01H_30S_MO.rnx.gz: no epoch of it can be used; see "
         "--start, --end and --interval, or give the whole file"},
    Case{"NoPosition", WithoutPosition, 33,
         "base (WTZR): no position in the header, and none could be found from its code "
         "observations; give --base-xyz X Y Z"},
    Case{"NoOrbits",
         [](T t) {
             return t.DemoSolve({"--ephemeris-source", "precise"});
         },
         34,
         "precise orbits are asked for, none given; add an SP3 file, or leave "
         "--ephemeris-source out"},
    Case{"NoCommonSystem", WithoutCommonSystem, 35,
         "no system whose first signal both receivers observed with code and phase; see `vornel "
         "info` for what the files hold, and --systems"}};
INSTANTIATE_TEST_SUITE_P(Sessions, BadInputs, testing::ValuesIn(kSessions), kNameOf);

// The distance depends on the code observations, so the line has a range in it.
TEST_F(BadInput, ABasePositionThatTheDataContradict) {
    const test::Answer answer =
        Vornel(WithBase(Write("far.rnx", Replaced(BaseText(), "4075580.8863", "4085580.8863"))));
    EXPECT_EQ(answer.code, 36);
    EXPECT_THAT(answer.err,
                testing::MatchesRegex(
                    "vornel: base \\(WTZR\\): the header position lies (9999|1000[0-9]) m from "
                    "where the code observations put it; give --base-xyz X Y Z, or --trust-code to "
                    "take the code position\n"));
}

const std::vector<Case> kConfiguration = {
    Case{"NoFile",
         [](T t) {
             return Words{"config", "--config", t.Path("none.toml")};
         },
         20, "{}/none.toml: there is no such file (check the path)"},
    Case{"NoValue", [](T t) { return t.Config("elevationMask = \n"); }, 40,
         "{}/c.toml:1: not TOML: Error while parsing key-value pair: expected value, saw '\\n'"},
    Case{"ATimeWithoutDigits", [](T t) { return t.Config("start = 2020-06-25T:00\n"); }, 40,
         "{}/c.toml:1: not TOML: Error while parsing time: expected 2-digit hour, saw ':'"},
    Case{"AKeyWithoutName", [](T t) { return t.Config("a.=1\n"); }, 40,
         "{}/c.toml:1: not TOML: Error while parsing key: expected bare key starting character or "
         "string "
         "delimiter, saw '='"},
    Case{"AKeyTwice", [](T t) { return t.Config("a = 1\na = 2\n"); }, 40,
         "{}/c.toml:2: not TOML: Error while parsing key-value pair: cannot redefine existing "
         "integer 'a'"},
    Case{"UnknownKey", [](T t) { return t.Config("min-epochs = 5\n\nratio = 3\n"); }, 41,
         "{}/c.toml:3: unknown key 'ratio'; did you mean 'ratio-threshold'?"},
    Case{"LettersOfAnotherScript",
         [](T t) {
             return t.Config("\xef\xbb\xbf# \xd0\xb2\xd1\x8b\xd1\x81\n\"\xc3\xa9xclude\" = 1\n");
         },
         41, "{}/c.toml:2: unknown key '??xclude'; did you mean 'exclude'?"},
    Case{"UnknownTable", [](T t) { return t.Config("[engine]\nslvmode = 1\n"); }, 41,
         "{}/c.toml:1: unknown key 'engine'; did you mean 'end'?"},
    Case{"OutOfRange", [](T t) { return t.Config("elevationMask = 91\n"); }, 42,
         "{}/c.toml:1: elevationMask: '91' is outside 0.0 to 90.0 degrees"},
    Case{"NoWholeNumber", [](T t) { return t.Config("min-epochs = 2.5\n"); }, 42,
         "{}/c.toml:1: min-epochs: '2.5' is not a whole number"},
    Case{"NeitherTrueNorFalse", [](T t) { return t.Config("no-iono = \"yes\"\n"); }, 42,
         "{}/c.toml:1: no-iono: 'yes' is neither true nor false"},
    Case{"TooFewValues", [](T t) { return t.Config("base-xyz = [1.0, 2.0]\n"); }, 42,
         "{}/c.toml:1: base-xyz: takes 3 values"},
    Case{"NoSatellite", [](T t) { return t.Config("exclude = [\"G05\", \"G50\"]\n"); }, 42,
         "{}/c.toml:1: exclude: 'G50' is no satellite; write G05, R12, C08 or E30"},
    Case{"Infinite", [](T t) { return t.Config("pressure = inf\n"); }, 42,
         "{}/c.toml:1: pressure: 'inf' is not a number"}};
INSTANTIATE_TEST_SUITE_P(Configuration, BadInputs, testing::ValuesIn(kConfiguration), kNameOf);

const std::vector<Case> kUsage = {
    Case{"Nothing", [](T) { return Words{}; }, 2,
         "no command is given: solve, info or config; see `vornel --help`"},
    Case{"NoCommand", [](T) { return Words{"frobnicate"}; }, 2,
         "'frobnicate' is no command; there are solve, info and config; see `vornel --help`"},
    Case{"BaseMissing", [](T) { return Words{"solve"}; }, 2,
         "the observation file of the base is missing: give --base FILE"},
    Case{"RoverMissing",
         [](T t) {
             return Words{"solve", "--base", t.DemoBase()};
         },
         2, "the observation file of the rover is missing: give --rover FILE"},
    Case{"InfoOfNothing", [](T) { return Words{"info"}; }, 2,
         "no file is given; see `vornel info --help`"},
    Case{"UnknownOption",
         [](T t) {
             return t.DemoSolve({"--elevation-msk", "3"});
         },
         2,
         "unknown option --elevation-msk; did you mean --elevation-mask? See `vornel solve "
         "--help`"},
    Case{"MaskOutOfRange",
         [](T t) {
             return t.DemoSolve({"--elevation-mask", "95"});
         },
         2, "--elevation-mask: '95' is outside 0.0 to 90.0 degrees"},
    Case{"MaskOfLetters",
         [](T t) {
             return t.DemoSolve({"--elevation-mask", "ten"});
         },
         2, "--elevation-mask: 'ten' is not a number"},
    Case{"NoModel",
         [](T t) {
             return t.DemoSolve({"--solve-mode", "7"});
         },
         2, "--solve-mode: '7' is outside 0 to 6"},
    Case{"NoSystem",
         [](T t) {
             return t.DemoSolve({"--systems", "X"});
         },
         2, "--systems: 'X': letters are G (GPS), R (GLONASS), C (BeiDou), E (Galileo)"},
    Case{"ExcludedSatellite",
         [](T t) {
             return t.DemoSolve({"--exclude", "G99"});
         },
         2, "--exclude: 'G99' is no satellite; write G05, R12, C08 or E30"},
    Case{"ExcludedSpan",
         [](T t) {
             return t.DemoSolve({"--exclude", "G05@12:00/13:00"});
         },
         2,
         "--exclude: '12:00' is no time; write 2020-06-25T00:10:00 or WEEK:SECONDS, in GPS "
         "time"},
    Case{"DegreesAsMetres",
         [](T t) {
             return t.DemoSolve({"--base-xyz", "49.1", "12.9", "666"});
         },
         2,
         "--base-xyz: X Y Z lie 1.0 km from the earth's centre; give earth-centred coordinates "
         "in metres"},
    Case{"EndBeforeStart",
         [](T t) {
             return t.DemoSolve({"--start", "2020-06-25T00:30", "--end", "2020-06-25T00:20"});
         },
         2, "--end lies before --start"},
    Case{"NoTime",
         [](T t) {
             return t.DemoSolve({"--start", "yesterday"});
         },
         2,
         "--start: 'yesterday' is no time; write 2020-06-25T00:10:00 or WEEK:SECONDS, in GPS "
         "time"},
    Case{"OneSignalTwice",
         [](T t) {
             return t.DemoSolve({"--gal-freq2", "1"});
         },
         2, "--gal-freq1 and --gal-freq2 name the same signal"},
    Case{"NoSignal",
         [](T t) {
             return t.DemoSolve({"--gal-freq2", "6"});
         },
         2, "--gal-freq2: '6' is outside 1 to 5"},
    Case{"TraceLevelAlone",
         [](T t) {
             return t.DemoSolve({"--trace-level", "3"});
         },
         2, "--trace-level requires --trace; see `vornel solve --help`"},
    Case{"NoTraceLevel",
         [](T t) {
             return t.DemoSolve({"--trace", t.Path("t"), "--trace-level", "9"});
         },
         2, "--trace-level: Value 9 not in range 0 to 5; see `vornel solve --help`"},
    Case{"TracePathTooLong",
         [](T t) {
             return t.DemoSolve({"--trace", std::string(1022, 'x') + "%Y"});
         },
         2, "--trace: a path of more than 1023 characters; see `vornel solve --help`"}};
INSTANTIATE_TEST_SUITE_P(Usage, BadInputs, testing::ValuesIn(kUsage), kNameOf);

TEST_F(BadInput, OutputsThatCannotBeWritten) {
    for (const char* option : {"--json", "--csv", "--report"}) {
        const test::Answer answer = Vornel(DemoSolve({option, Path("none/out")}));
        EXPECT_EQ(answer.code, 12);
        EXPECT_EQ(answer.err, "vornel: " + Path("none/out") +
                                  ": cannot be written: No such file or directory\n");
        EXPECT_EQ(answer.out, "");
    }
}

}  // namespace
}  // namespace vornel::app
