#include "session/settings.h"

#include <gtest/gtest.h>

#include <set>

namespace vornel::session {
namespace {

TEST(Settings, TimesAreReadInSeveralSpellings) {
    const io::GpsTime expected{2111, 345600.0 + 600.0};
    for (const char* text : {"2020-06-25T00:10:00", "2020-06-25 00:10:00.000", "2020/06/25T00:10",
                             "2020-06-25_00:10", "2111:346200"}) {
        EXPECT_EQ(ParseTime(text), expected) << text;
    }
    EXPECT_EQ(ParseTime("2020-06-25"), (io::GpsTime{2111, 345600.0}));
    for (const char* text : {"", "2020", "2020-06", "2020-13-01", "2020-06-31", "2020-06-25T25:00",
                             "2020-06-25T00:10:60", "2020-06-25T", "2020-06-25T00:10x", "25:700000",
                             "1979-01-01", "now", "12:00"}) {
        EXPECT_THROW(ParseTime(text), SettingError) << text;
    }
}

TEST(Settings, ExclusionsMayHaveOpenEnds) {
    EXPECT_FALSE(ParseExclusion("G05").start);
    const Exclusion span = ParseExclusion("R12@2020-06-25T00:10/2020-06-25T00:20");
    EXPECT_EQ(ToString(span.satellite), "R12");
    EXPECT_EQ(span.start, ParseTime("2020-06-25T00:10"));
    EXPECT_EQ(span.end, ParseTime("2020-06-25T00:20"));
    EXPECT_EQ(ParseExclusion("E30@2020/06/25T00:10/2020/06/25T00:20").end,
              ParseTime("2020-06-25T00:20"));
    EXPECT_FALSE(ParseExclusion("C08@/2020-06-25T00:20").start);
    EXPECT_FALSE(ParseExclusion("C08@2020-06-25T00:20/").end);
    for (const char* text :
         {"G99", "S23", "", "G05@", "G05@2020-06-25", "G05@2020-06-25T00:20/2020-06-25T00:10"}) {
        EXPECT_THROW(ParseExclusion(text), SettingError) << text;
    }
}

TEST(Settings, EveryNameIsThereOnceAndDefaultsReadBack) {
    std::set<std::string> names;
    const Settings defaults;
    for (const SettingSpec& spec : AllSettings()) {
        EXPECT_TRUE(names.insert(spec.name).second) << spec.name;
        EXPECT_EQ(FindSetting(spec.name), &spec);
        if (*spec.engineField != '\0') {
            EXPECT_EQ(FindSetting(spec.engineField), &spec);
        }
        const std::string value = spec.toml(defaults);
        if (spec.words == 1 && !value.empty()) {
            Settings settings;
            const std::string word =
                value.front() == '"' ? value.substr(1, value.size() - 2) : value;
            spec.set(settings, std::span(&word, 1));
            EXPECT_EQ(spec.toml(settings), value) << spec.name;
        }
    }
}

TEST(Settings, ValuesOutsideTheEnginesRangesAreRefused) {
    const std::pair<const char*, const char*> cases[] = {
        {"solve-mode", "7"},        {"solve-mode", "-1"},      {"solve-mode", "1.5"},
        {"elevation-mask", "90.1"}, {"elevation-mask", "-1"},  {"elevation-mask", "nan"},
        {"min-epochs", "0"},        {"outlier-factor", "3"},   {"sampling-interval", "0"},
        {"pressure", "500"},        {"pressure", "2000"},      {"temperature", "100"},
        {"humidity", "0"},          {"gal-freq1", "6"},        {"gal-freq2", "0"},
        {"systems", "GX"},          {"systems", ""},           {"ephemeris-source", "both"},
        {"tropo-model", "3"},       {"base-height", "1e9"},    {"interval", "-1"},
        {"phase-std", "inf"},       {"ratio-threshold", "1,8"}};
    for (const auto& [name, text] : cases) {
        Settings settings;
        const std::string word = text;
        EXPECT_THROW(FindSetting(name)->set(settings, std::span(&word, 1)), SettingError)
            << name << " " << text;
    }
}

TEST(Settings, PositionsMustLieOnTheEarth) {
    Settings settings;
    const std::vector<std::string> good = {"4075580.3111", "931854.0543", "4801568.2808"};
    FindSetting("base-xyz")->set(settings, good);
    EXPECT_EQ(settings.baseXyz->at(1), 931854.0543);
    const std::vector<std::string> degrees = {"49.1", "12.9", "666"};
    EXPECT_THROW(FindSetting("base-xyz")->set(settings, degrees), SettingError);
}

TEST(Settings, NearNamesAreFound) {
    EXPECT_EQ(NearestSettingName("elevation_mask"), "elevation-mask");
    EXPECT_EQ(NearestSettingName("elevationMsk"), "elevationMask");
    EXPECT_EQ(NearestSettingName("ratio"), "ratio-threshold");
    EXPECT_EQ(NearestSettingName("exclud"), "exclude");
}

}  // namespace
}  // namespace vornel::session
