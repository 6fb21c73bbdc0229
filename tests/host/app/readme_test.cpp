// What the README shows and names is so.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_fixture.h"

namespace vornel::app {
namespace {

class Readme : public test::CommandFixture {
  protected:
    static std::string Text() { return Read((test::ProjectFolder() / "README.md").string()); }
};

TEST_F(Readme, ShowsTheAnswerOfTheDemo) {
    const std::string text = Text();
    const std::size_t begin = text.find("```\nWTZR ");
    ASSERT_NE(begin, std::string::npos);
    const std::size_t answer = begin + 4;
    EXPECT_EQ(text.substr(answer, text.find("```", answer) - answer), Vornel(DemoSolve()).out);
}

TEST_F(Readme, NamesEveryDocument) {
    const std::string text = Text();
    for (const auto& file : std::filesystem::directory_iterator(test::ProjectFolder() / "docs")) {
        const std::string name = "docs/" + file.path().filename().string();
        EXPECT_THAT(text, testing::HasSubstr("[" + name + "](" + name + ")"));
    }
}

}  // namespace
}  // namespace vornel::app
