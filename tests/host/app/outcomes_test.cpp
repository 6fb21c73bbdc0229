// Runs that end without a fixed solution: what the answer says, in text, JSON and report, and the
// exit code.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "command_fixture.h"

namespace vornel::app {
namespace {

using testing::HasSubstr;

class Outcomes : public test::CommandFixture {
  protected:
    // Solves with the words behind, into the three kinds of output.
    void Solve(std::vector<std::string> words) {
        for (const std::string& word : {std::string("--json"), Path("answer.json"),
                                        std::string("--report"), Path("report.html")}) {
            words.push_back(word);
        }
        answer = Vornel(words);
        json = nlohmann::json::parse(Read(Path("answer.json")));
        report = Read(Path("report.html"));
        EXPECT_EQ(json["outcome"]["exit_code"], answer.code);
    }
    double LengthOf(const nlohmann::json& solution) const {
        const auto v = solution.at("vector_xyz_m").get<std::vector<double>>();
        return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    }

    test::Answer answer;
    nlohmann::json json;
    std::string report;
};

TEST_F(Outcomes, WithOneEpochThereIsNoSolution) {
    Solve(DemoSolve({"--end", "2020-06-25T00:00:00", "--systems", "GCE"}));
    EXPECT_EQ(answer.code, 6);
    EXPECT_THAT(answer.out, HasSubstr("NO SOLUTION"));
    EXPECT_THAT(answer.out, HasSubstr("a longer session"));
    EXPECT_EQ(json["outcome"]["acceptance"], "none");
    EXPECT_EQ(json["outcome"]["status"]["number"], 13);
    EXPECT_TRUE(json["solution"].is_null());
    EXPECT_THAT(report, HasSubstr("NO SOLUTION"));
}

TEST_F(Outcomes, EpochsInAPeriodWithoutSuccessorsFailTheTripleDifference) {
    // One epoch is enough for a period, not for a difference of epochs.
    Solve(DemoSolve({"--end", "2020-06-25T00:00:00", "--min-epochs", "1"}));
    EXPECT_EQ(answer.code, 7);
    EXPECT_THAT(answer.out, HasSubstr("NO SOLUTION"));
    EXPECT_EQ(json["outcome"]["status"]["number"], 20);
    EXPECT_EQ(json["outcome"]["acceptance"], "none");
}

TEST_F(Outcomes, FiveEpochsGiveATripleDifferenceAlone) {
    Solve(DemoSolve({"--end", "2020-06-25T00:02:00", "--min-epochs", "3"}));
    EXPECT_EQ(answer.code, 4);
    EXPECT_THAT(answer.out, HasSubstr("APPROXIMATE"));
    EXPECT_EQ(json["outcome"]["acceptance"], "triple difference");
    EXPECT_EQ(json["outcome"]["status"]["number"], 40);
    EXPECT_EQ(json["solution"]["kind"], "triple difference");
    EXPECT_NEAR(LengthOf(json["solution"]), 1.595, 0.3);  // known: 1.595 m
    EXPECT_TRUE(json["solutions"]["float"].empty());
    EXPECT_THAT(report, HasSubstr("Triple difference"));
}

TEST_F(Outcomes, ALongBaselineOnOneFrequencyStaysFloat) {
    const auto data = [](const std::string& name) {
        return (test::ProjectFolder() / "tests" / "data" / "baselines" / "ebre-bell" / name)
            .string();
    };
    Solve({"solve", "--base", data("ebre0300.02o.xz"), "--rover", data("bell0300.02o.xz"),
           data("brdc0300.02n.xz"), "--solve-mode", "1", "--end", "2002-01-30T04:00:00"});
    EXPECT_EQ(answer.code, 3);
    EXPECT_THAT(answer.out, HasSubstr("Too long to fix on one frequency (limit 30000 m)."));
    EXPECT_EQ(json["outcome"]["acceptance"], "float");
    EXPECT_EQ(json["outcome"]["status"]["number"], 41);
    EXPECT_NEAR(LengthOf(json["solution"]), 115283.6, 3.0);
    EXPECT_TRUE(json["solutions"]["fixed"].empty());
    EXPECT_THAT(report, HasSubstr("Float"));
}

}  // namespace
}  // namespace vornel::app
