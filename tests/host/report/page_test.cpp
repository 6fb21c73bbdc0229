// The page as a whole: well formed, closed in itself, complete, and small.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <random>
#include <regex>
#include <set>

#include "app/command_fixture.h"
#include "decoding.h"
#include "report/html_report.h"
#include "session/observation_maker.h"

namespace vornel::report {
namespace {

using engine::Satellite;
using engine::System;

// Failures name what is missing, not the whole page.
bool Holds(const std::string& text, const std::string& what) {
    return text.find(what) != std::string::npos;
}

// Reads a page strictly, as XHTML: every element closed in its order, every attribute quoted, no
// bare < or &, no id twice. Style and script are taken as they are. Throws std::runtime_error.
class StrictReader {
  public:
    explicit StrictReader(std::string_view page) : page_(page) {
        Require(Take("<!DOCTYPE html>\n"), "document type");
        while (at_ < page_.size()) {
            Next();
        }
        Require(open_.empty(), "an element is not closed");
    }

    std::multiset<std::string> elements;
    std::set<std::string> ids;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::string text;                  // between the elements, references as they are
    std::vector<std::string> scripts;  // their contents

  private:
    void Require(bool good, const std::string& what) const {
        if (!good) {
            throw std::runtime_error(what + " at: " + std::string(page_.substr(at_, 80)));
        }
    }
    bool Take(std::string_view word) {
        const bool found = page_.substr(at_, word.size()) == word;
        at_ += found ? word.size() : 0;
        return found;
    }
    std::string Until(std::string_view word) {
        const std::size_t end = page_.find(word, at_);
        Require(end != std::string_view::npos, "no " + std::string(word));
        const std::string found(page_.substr(at_, end - at_));
        at_ = end + word.size();
        return found;
    }
    std::string Name() {
        std::string name;
        while (at_ < page_.size() &&
               (std::isalnum(static_cast<unsigned char>(page_[at_])) != 0 || page_[at_] == '-')) {
            name += page_[at_++];
        }
        Require(!name.empty(), "a name");
        return name;
    }
    void Next() {
        if (Take("<!--")) {
            Require(Until("-->").find("--") == std::string::npos, "-- in a comment");
        } else if (Take("</")) {
            const std::string name = Name();
            Require(Take(">") && !open_.empty() && open_.back() == name, "end of " + name);
            open_.pop_back();
        } else if (Take("<")) {
            Element();
        } else {
            const std::size_t end = std::min(page_.find('<', at_), page_.size());
            const std::string piece(page_.substr(at_, end - at_));
            Require(References(piece), "a bare & or >");
            text += piece;
            at_ = end;
        }
    }
    static bool References(const std::string& piece) {
        static const std::regex bare("&(?!(amp|lt|gt|quot|#39);)|>");
        return !std::regex_search(piece, bare);
    }
    void Element() {
        const std::string name = Name();
        elements.insert(name);
        while (Take(" ")) {
            if (page_[at_] == '/') {
                break;
            }
            const std::string attribute = Name();
            Require(Take("=\""), "a quoted value");
            const std::string value = Until("\"");
            Require(References(value) && value.find('<') == std::string::npos, "value");
            if (attribute == "id") {
                Require(ids.insert(value).second, "id " + value + " twice");
            }
            attributes.emplace_back(attribute, value);
        }
        if (Take("/>")) {
            return;
        }
        Require(Take(">"), "end of a start");
        if (name == "style" || name == "script") {
            const std::string content = Until("</" + name + ">");
            if (name == "script") {
                Require(content.find("<!--") == std::string::npos, "<!-- in a script");
                scripts.push_back(content);
            }
            return;
        }
        open_.push_back(name);
    }

    std::string_view page_;
    std::size_t at_ = 0;
    std::vector<std::string> open_;
};

void ExpectClosedInItself(const StrictReader& page) {
    for (const auto& [name, value] : page.attributes) {
        EXPECT_NE(name.substr(0, 2), "on") << "an event handler: " << value;
        if (name == "href") {
            EXPECT_TRUE(value[0] == '#' || value == "data:,") << value;
        }
        EXPECT_NE(name, "src") << value;
        EXPECT_NE(name, "style") << value;
    }
    for (const char* fetched : {"link", "img", "iframe", "object", "embed", "form", "base"}) {
        const bool icon = std::string(fetched) == "link";
        EXPECT_EQ(page.elements.count(fetched), icon ? 1U : 0U) << fetched;
    }
}

class Page : public test::CommandFixture {
  protected:
    // The page of a solve that ends with `code`.
    std::string Report(std::vector<std::string> words, int code) {
        words.insert(words.end(), {"--report", Path("out.html")});
        const test::Answer answer = Vornel(words);
        EXPECT_EQ(answer.code, code) << answer.err;
        return Read(Path("out.html"));
    }
};

TEST_F(Page, IsWellFormedAndClosedInItself) {
    const std::string html = Report(DemoSolve(), 0);
    const StrictReader page(html);
    ExpectClosedInItself(page);
    EXPECT_TRUE(Holds(html, "<html lang=\"en\">"));
    EXPECT_TRUE(Holds(html, "default-src 'none'"));
    EXPECT_EQ(page.elements.count("h1"), 1U);
    EXPECT_EQ(page.scripts.size(), 3U);
    // Every place that something points to is there.
    for (const auto& [name, value] : page.attributes) {
        if ((name == "href" && value[0] == '#') || name == "aria-labelledby") {
            std::istringstream targets(name == "href" ? value.substr(1) : value);
            for (std::string id; targets >> id;) {
                EXPECT_TRUE(page.ids.contains(id)) << id;
            }
        }
    }
    EXPECT_TRUE(Holds(html, "Copyright (c) 2022 Leon Sorokin"));
}

TEST_F(Page, HoldsEverything) {
    auto words =
        DemoSolve({"--exclude", "G13", "--json", Path("out.json"), "--ratio-threshold", "2"});
    const StrictReader page(Report(words, 0));
    const auto json = nlohmann::json::parse(Read(Path("out.json")));
    for (const char* id : {"result", "vector", "stations", "satellites", "residuals", "fixing",
                           "data", "settings", "inputs", "run", "chart-data"}) {
        EXPECT_TRUE(page.ids.contains(id)) << id;
    }
    const auto holds = [&](const std::string& what) {
        EXPECT_TRUE(Holds(page.text, what)) << what;
    };
    const auto number = [](const nlohmann::json& value, double factor, int decimals) {
        char text[64];
        std::snprintf(text, sizeof text, "%.*f", decimals, std::abs(value.get<double>()) * factor);
        return std::string(text);
    };
    const auto& solution = json.at("solution");
    for (std::size_t i = 0; i < 3; ++i) {
        holds(number(solution.at("vector_xyz_m").at(i), 1.0, 4));
        holds(number(solution.at("vector_neu_m").at(i), 1.0, 4));
        for (std::size_t j = 0; j < 3; ++j) {
            holds(number(solution.at("covariance_xyz_m2").at(i).at(j), 1e6, 3));
            holds(number(solution.at("covariance_neu_m2").at(i).at(j), 1e6, 3));
        }
    }
    for (const auto& input : json.at("inputs")) {
        holds(input.at("sha256"));
        holds(std::to_string(input.at("size").get<int>()));
    }
    for (const auto& setting : json.at("settings")) {
        holds(setting.at("name"));
    }
    for (const char* station : {"base", "rover"}) {
        holds(json.at(station).at("antenna").at("type"));
        holds(json.at(station).at("receiver"));
        holds(number(json.at(station).at("antenna").at("height_m"), 1.0, 4));
    }
    for (const auto& note : json.at("notes")) {
        holds(note);
    }
    for (const auto& warning : json.at("warnings")) {
        holds(warning);
    }
    holds("option");
    holds("excluded");
    holds("12 &gt; 14 &gt; 21");
    // A bar and a row in the table for each ambiguity.
    const auto& ambiguities = json.at("solutions").at("fixed").back().at("ambiguities");
    holds("Table of all " + std::to_string(ambiguities.size()) + " ambiguity tracks");
    for (const auto& ambiguity : ambiguities) {
        const std::string title =
            ambiguity.at("satellite").get<std::string>() + ", " +
            ambiguity.at("first_time").at("gps_time").get<std::string>().substr(11, 8);
        holds(title);
    }
}

TEST_F(Page, ResidualsAreThoseOfTheSolution) {
    const StrictReader page(Report(DemoSolve({"--json", Path("out.json")}), 0));
    const auto json = nlohmann::json::parse(Read(Path("out.json")));
    const auto data = nlohmann::json::parse(page.scripts[0]);
    const auto& all = json.at("solutions").at("fixed").back().at("residuals");
    ASSERT_EQ(data.at("residuals").size(), all.size());
    EXPECT_EQ(data.at("start"), 1593043200);  // 2020-06-25 00:00:00
    EXPECT_EQ(data.at("thinning"), 1);
    for (const auto& series : data.at("residuals")) {
        const auto found = std::find_if(all.begin(), all.end(), [&](const auto& other) {
            return other.at("satellite") == series.at(0) && other.at("block") == series.at(1);
        });
        ASSERT_NE(found, all.end());
        EXPECT_EQ(test::Integers(series.at(3)),
                  found->at("millimetres").template get<std::vector<std::int64_t>>());
        std::vector<std::uint32_t> epochs;
        for (const double seconds : found->at("seconds")) {
            epochs.push_back(static_cast<std::uint32_t>(std::lround((seconds - 345600.0) / 30.0)));
        }
        EXPECT_EQ(test::Epochs(series.at(2)), epochs);
    }
}

TEST_F(Page, NamesFromFilesAreTextAndNothingElse) {
    const std::string evil = "<img src=x onerror=alert(1)>\"'&\xE9</script>";
    std::string base = Unpacked(DemoBase());
    const std::size_t line = base.rfind('\n', base.find("MARKER NAME")) + 1;
    std::string name = evil;
    name.resize(60, ' ');
    base.replace(line, 60, name);
    auto words = DemoSolve();
    words[2] = Write("<script>alert(2)<!--.rnx", base);
    const std::string html = Report(words, 0);
    const StrictReader page(html);
    ExpectClosedInItself(page);
    EXPECT_TRUE(Holds(html,
                      "<h1><span class=\"station\">&lt;img src=x onerror=alert(1)&gt;&quot;"
                      "&#39;&amp;\xEF\xBF\xBD&lt;/script&gt;</span>"));
    EXPECT_TRUE(Holds(html, "&lt;script&gt;alert(2)&lt;!--.rnx"));
    EXPECT_FALSE(Holds(html, "<img"));
    EXPECT_EQ(page.scripts.size(), 3U);
}

TEST_F(Page, TellsWarningsFirst) {
    // Two kinds of antenna, and no calibrations.
    const std::string folder =
        (test::ProjectFolder() / "tests" / "data" / "baselines" / "ciboure-pasaia").string() + "/";
    const std::string html =
        Report({"solve", "--base", folder + "SCOA00FRA_R_20261201000_02H_30S_MO.rnx.xz", "--rover",
                folder + "PASA00ESP_R_20261201000_02H_30S_MO.rnx.xz",
                folder + "BRDC00WRD_R_20261200800_06H_MN.rnx.xz"},
               8);
    EXPECT_TRUE(Holds(html, "DOUBTFUL"));
    EXPECT_TRUE(Holds(html, "Why it is not trusted"));
    const StrictReader page(html);
    EXPECT_TRUE(Holds(html, "<strong>Check</strong>"));
    EXPECT_TRUE(Holds(page.text, "no ANTEX file is given"));
    EXPECT_LT(html.find("class=\"warnings\""), html.find("id=\"vector\""));
}

TEST_F(Page, IsThereWithoutASolution) {
    const std::string html = Report(DemoSolve({"--elevation-mask", "89"}), 6);
    const StrictReader page(html);
    ExpectClosedInItself(page);
    EXPECT_TRUE(Holds(html, "<strong>Fail</strong>"));
    EXPECT_TRUE(Holds(html, "NO SOLUTION"));
    EXPECT_TRUE(Holds(page.text, "no solution, hence no vector"));
}

TEST_F(Page, IsNotWrittenWhenTheRunCannotBegin) {
    EXPECT_EQ(Vornel({"solve", "--base", Path("none"), "--rover", DemoRover(), "--report",
                      Path("out.html")})
                  .code,
              20);
    EXPECT_THAT(FilesInFolder(), testing::IsEmpty());
    EXPECT_EQ(Vornel(DemoSolve({"--report", Path("no/such/folder.html")})).code, 12);
}

// ---- a made-up day --------------------------------------------------------------------------------

constexpr int kWeek = 2111;
constexpr int kPerSystem = 15;
constexpr std::uint32_t kEpochs = 2880;

std::vector<engine::Satellite> SixtySatellites() {
    std::vector<engine::Satellite> list;
    for (const engine::System system : engine::kSystems) {
        for (int prn = 1; prn <= kPerSystem; ++prn) {
            list.push_back({system, prn});
        }
    }
    return list;
}

// One record every two hours; orbits of 26600 km whose ground tracks never leave the sky matter
// less here than that there are paths for all.
void AddOrbit(session::Session& s, engine::Satellite satellite) {
    for (int hour = 0; hour <= 24; hour += 2) {
        session::TimedKepler timed;
        timed.reference = {kWeek, 3600.0 * hour};
        engine::Kepler& r = timed.record;
        r.system = satellite.system;
        r.satId = satellite.prn;
        r.tocWeek = r.toeWeek = kWeek;
        r.tocSeconds = r.toe = 3600.0 * hour;
        r.sqrtA = 5153.7;
        r.i0 = 0.96;
        r.omega0 = 0.4 * satellite.prn;
        constexpr double kMeanMotion = 1.4585e-4;  // rad/s
        r.m0 = std::fmod(0.9 * satellite.prn + kMeanMotion * 3600.0 * hour, 2.0 * M_PI);
        s.ephemerides.kepler.push_back(timed);
    }
}

// Sixty satellites without a break, residuals of ten millimetres, every track cut twice in each
// period: more than a day of four systems brings.
solve::SolveResult BusyDay(int blocks) {
    solve::SolveResult result;
    session::Session& s = result.session;
    test::ObservationMaker maker("C1C L1C");
    for (std::uint32_t i = 0; i < kEpochs; ++i) {
        const io::GpsTime time{kWeek, 30.0 * i};
        maker.Epoch(time.week, time.seconds);
        s.pairs.push_back({i, i});
        result.fed.times.push_back(time);
    }
    s.inputs.rover = s.inputs.base = maker.Done();
    s.interval = 30.0;
    s.base.name = "BASE";
    s.rover.name = "ROVR";
    s.base.position = {4075580.3, 931854.1, 4801568.3};
    result.fed.epochs = kEpochs;

    engine::Solution fixed;
    fixed.mode = blocks == 2 ? 3 : 1;
    fixed.vector = {1000.0, 2000.0, 3000.0};
    fixed.length = session::Length(fixed.vector);
    fixed.ratio = 5.0;
    std::mt19937 random(20200625);
    std::normal_distribution<double> noise(0.0, 10.0);
    for (const engine::Satellite& satellite : SixtySatellites()) {
        AddOrbit(s, satellite);
        auto& epochs = result.fed.common[satellite];
        engine::ResidualSeries series{static_cast<int>(satellite.system), satellite.prn, 0, {}};
        for (std::uint32_t i = 0; i < kEpochs; ++i) {
            epochs.push_back(i);
            series.points.push_back({kWeek, 30.0 * i, static_cast<int>(noise(random))});
        }
        for (int first = 0; first < static_cast<int>(kEpochs); first += 120) {
            engine::Ambiguity a;
            a.system = series.system;
            a.prn = satellite.prn;
            a.firstEpoch = first;
            a.lastEpoch = std::min(first + 119, static_cast<int>(kEpochs) - 1);
            a.rows1 = 120;
            a.value1 = -123456.0;
            fixed.ambiguities.push_back(a);
        }
        for (int block = 0; block < blocks; ++block) {
            series.kind = block;
            fixed.residuals.push_back(series);
        }
    }
    result.outcome.results.status = 81;
    result.outcome.results.solveModel = fixed.mode;
    result.outcome.results.floats = {fixed};
    result.outcome.results.fixeds = {fixed};
    result.outcome.acceptance = solve::Acceptance::kFixed;
    return result;
}

TEST(BusyDayPage, FitsIntoAMegabyteWithEveryResidual) {
    const solve::SolveResult result = BusyDay(1);
    const std::string html = HtmlReport(result);
    EXPECT_LT(html.size(), kPageLimit);
    const StrictReader page(html);
    const auto data = nlohmann::json::parse(page.scripts[0]);
    EXPECT_EQ(data.at("thinning"), 1);
    ASSERT_EQ(data.at("residuals").size(), 60U);
    EXPECT_GT(data.at("sky").size(), 20U);
    const auto& given = result.outcome.results.fixeds[0].residuals[0].points;
    const auto values = test::Integers(data.at("residuals").at(0).at(3));
    ASSERT_EQ(values.size(), given.size());
    for (std::size_t i = 0; i < given.size(); ++i) {
        EXPECT_EQ(values[i], given[i].millimetres);
    }
    EXPECT_EQ(test::Epochs(data.at("residuals").at(0).at(2)).size(), kEpochs);
}

TEST(BusyDayPage, IsThinnedRatherThanLarge) {
    solve::SolveResult result = BusyDay(2);
    // Residuals of metres take three characters each.
    for (engine::ResidualSeries& series : result.outcome.results.fixeds[0].residuals) {
        for (engine::ResidualPoint& point : series.points) {
            point.millimetres *= 1000;
        }
    }
    const std::string html = HtmlReport(result);
    EXPECT_LT(html.size(), kPageLimit);
    const StrictReader page(html);
    const auto data = nlohmann::json::parse(page.scripts[0]);
    const int thinning = data.at("thinning");
    EXPECT_GT(thinning, 1);
    EXPECT_TRUE(Holds(page.text, "every " + std::to_string(thinning)));
    const auto values = test::Integers(data.at("residuals").at(0).at(3));
    const auto& given = result.outcome.results.fixeds[0].residuals[0].points;
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(values[i], given[i * static_cast<std::size_t>(thinning)].millimetres);
    }
}

}  // namespace
}  // namespace vornel::report
