// Help, version, info and config.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_fixture.h"
#include "report/exit_codes.h"
#include "session/settings.h"

namespace vornel::app {
namespace {

using testing::HasSubstr;

class Command : public test::CommandFixture {};

std::size_t Lines(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

std::size_t LongestLine(const std::string& text) {
    std::size_t longest = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        longest = std::max(longest, line.size());
    }
    return longest;
}

TEST_F(Command, HelpFitsAScreen) {
    for (const std::vector<std::string>& words : {std::vector<std::string>{"--help"},
                                                  {"solve", "--help"},
                                                  {"info", "--help"},
                                                  {"config", "-h"}}) {
        const test::Answer answer = Vornel(words);
        EXPECT_EQ(answer.code, 0);
        EXPECT_LE(Lines(answer.out), 40U) << answer.out;
        EXPECT_LE(LongestLine(answer.out), 80U) << answer.out;
        EXPECT_THAT(answer.out, HasSubstr("vornel"));
    }
    EXPECT_THAT(Vornel({"solve", "--help-all"}).out, HasSubstr("--slip-test-cap"));
    EXPECT_THAT(Vornel({"--version"}).out, testing::StartsWith("vornel "));
}

TEST_F(Command, ManualAndCompletionKnowEveryOption) {
    const auto share = test::ProjectFolder() / "host" / "share";
    const std::string manual = Read((share / "vornel.1").string());
    const std::string completion = Read((share / "vornel.bash").string());
    std::vector<std::string> options = {"base",  "rover",       "config",  "json",  "csv",
                                        "trace", "trace-level", "verbose", "report"};
    for (const session::SettingSpec& spec : session::AllSettings()) {
        options.emplace_back(spec.name);
    }
    for (const std::string& name : options) {
        const std::string option = std::string("--").append(name);
        std::string inManual;
        for (const char letter : option) {
            inManual += letter == '-' ? std::string("\\-") : std::string(1, letter);
        }
        EXPECT_THAT(manual, HasSubstr(inManual)) << option;
        EXPECT_THAT(completion, HasSubstr(option + " ")) << option;
    }
    for (const report::ExitCodeEntry& entry : report::AllExitCodes()) {
        EXPECT_THAT(manual, HasSubstr("\n.B " + std::to_string(static_cast<int>(entry.code)) +
                                      "\n" + entry.meaning + "\n"));
    }
}

TEST_F(Command, ConfigTellsWhereValuesComeFrom) {
    const std::string file = Write("c.toml", "minEpochs = 12\nexclude = [\"G05\", \"R01\"]\n");
    const test::Answer answer =
        Vornel({"config", "--config", file, "--elevation-mask", "10", "--exclude", "E30"});
    EXPECT_EQ(answer.code, 0) << answer.err;
    EXPECT_THAT(answer.out, testing::ContainsRegex("elevation-mask = 10.0 +# option\n"));
    EXPECT_THAT(answer.out, testing::ContainsRegex("min-epochs = 12 +# file: .*c.toml:1\n"));
    EXPECT_THAT(answer.out, testing::ContainsRegex("ratio-threshold = 1.8 +# default\n"));
    EXPECT_THAT(answer.out, HasSubstr("exclude = [\"G05\", \"R01\", \"E30\"]"));
}

TEST_F(Command, PrintedConfigurationReadsBack) {
    const test::Answer first =
        Vornel({"config", "--elevation-mask", "12.5", "--base-xyz", "4075580.3111", "-931854.0543",
                "4801568.2808", "--no-iono", "--start", "2020-06-25T00:10:00", "--exclude",
                "G05@2020-06-25T00:10/", "--systems", "GE"});
    ASSERT_EQ(first.code, 0) << first.err;
    const test::Answer second = Vornel({"config", "--config", Write("c.toml", first.out)});
    ASSERT_EQ(second.code, 0) << second.err;
    const auto withoutOrigins = [](const std::string& text) {
        std::string values;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            const std::string value = line.substr(0, line.find(" #"));
            values += value.substr(0, value.find_last_not_of(' ') + 1) + "\n";
        }
        return values;
    };
    EXPECT_EQ(withoutOrigins(first.out), withoutOrigins(second.out));
}

TEST_F(Command, ConfigWithFilesTellsWhatTheDataSettle) {
    std::vector<std::string> words = DemoSolve();
    words[0] = "config";
    const test::Answer answer = Vornel(words);
    EXPECT_EQ(answer.code, 0) << answer.err;
    EXPECT_THAT(answer.out, testing::ContainsRegex("sampling-interval = 30.0 +# data: interval"));
    EXPECT_THAT(answer.out, testing::ContainsRegex("ephemeris-source = \"broadcast\" +# data: "));
}

TEST_F(Command, InfoTellsWhatIsInAFile) {
    const test::Answer observations = Vornel({"info", DemoRover()});
    EXPECT_EQ(observations.code, 0) << observations.err;
    EXPECT_THAT(observations.out, HasSubstr("RINEX observation file 3.04 (gzip)"));
    EXPECT_THAT(observations.out, HasSubstr("Station     WTZZ00DEU"));
    EXPECT_THAT(observations.out, HasSubstr("Antenna     LEIAR25.R3 LEIT"));
    EXPECT_THAT(observations.out, HasSubstr("Epochs      120, every 30 s"));
    EXPECT_THAT(observations.out, HasSubstr("2020-06-25 00:00:00 to 2020-06-25 00:59:30 GPS time"));
    EXPECT_THAT(observations.out, HasSubstr("Gaps        none"));
    const test::Answer navigation = Vornel({"info", DemoNavigation()});
    EXPECT_THAT(navigation.out, testing::ContainsRegex("GPS LNAV +[0-9]+ records of"));
    EXPECT_THAT(navigation.out, HasSubstr("Leap seconds  18"));
}

TEST_F(Command, InfoGoesOnAfterABadFile) {
    const test::Answer answer =
        Vornel({"info", Write("empty.rnx", ""), Path("none.rnx"), DemoNavigation()});
    EXPECT_EQ(answer.code, 22);
    EXPECT_EQ(Lines(answer.err), 2U) << answer.err;
    EXPECT_THAT(answer.out, HasSubstr("RINEX navigation file"));
}

TEST_F(Command, InfoNamesGaps) {
    std::string text = Unpacked(DemoRover());
    const std::size_t from = text.find("> 2020  6 25  0 10"), to = text.find("> 2020  6 25  0 20");
    text.erase(from, to - from);
    const test::Answer answer = Vornel({"info", Write("gap.rnx", text)});
    EXPECT_THAT(answer.out, HasSubstr("Gaps        1\n    2020-06-25 00:09:30 to 2020-06-25 "
                                      "00:20:00 (630 s)"));
}

}  // namespace
}  // namespace vornel::app
