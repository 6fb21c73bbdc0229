#include "report/exit_codes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "app/command_fixture.h"

namespace vornel::report {
namespace {

TEST(ExitCodes, TheDocumentTellsEveryCodeInTheSameWords) {
    std::ifstream file(test::ProjectFolder() / "docs" / "exit-codes.md");
    std::ostringstream text;
    text << file.rdbuf();
    ASSERT_FALSE(text.str().empty());
    std::size_t rows = 0;
    for (const ExitCodeEntry& entry : AllExitCodes()) {
        const std::string row =
            "| " + std::to_string(static_cast<int>(entry.code)) + " | " + entry.meaning + " |";
        EXPECT_THAT(text.str(), testing::HasSubstr(row));
        ++rows;
    }
    std::size_t documented = 0;
    for (std::size_t at = text.str().find("\n| "); at != std::string::npos;
         at = text.str().find("\n| ", at + 1)) {
        documented += std::isdigit(static_cast<unsigned char>(text.str()[at + 3])) != 0 ? 1 : 0;
    }
    EXPECT_EQ(documented, rows);
}

TEST(ExitCodes, BadInputHasACodeOfItsOwnFrom20To99) {
    std::set<ExitCode> codes;
    const auto take = [&codes](ExitCode code) {
        EXPECT_GE(static_cast<int>(code), 20);
        EXPECT_LE(static_cast<int>(code), 99);
        EXPECT_TRUE(codes.insert(code).second) << static_cast<int>(code);
    };
    for (int i = 0; i <= static_cast<int>(io::InputFault::kTooLarge); ++i) {
        take(CodeOf(static_cast<io::InputFault>(i)));
    }
    for (int i = 0; i <= static_cast<int>(session::Fault::kUnassignedObservations); ++i) {
        take(CodeOf(static_cast<session::Fault>(i)));
    }
}

TEST(ExitCodes, RunsEndBelow20ByMeaning) {
    using solve::Grade;
    EXPECT_EQ(CodeOf(Grade::kTrusted, 81), ExitCode::kTrusted);
    EXPECT_EQ(CodeOf(Grade::kDoubtful, 81), ExitCode::kDoubtful);
    EXPECT_EQ(CodeOf(Grade::kFloat, 41), ExitCode::kFloat);
    EXPECT_EQ(CodeOf(Grade::kApproximate, 40), ExitCode::kTripleDifference);
    EXPECT_EQ(CodeOf(Grade::kNone, 10), ExitCode::kNoEpochs);
    EXPECT_EQ(CodeOf(Grade::kNone, 13), ExitCode::kNoReference);
    EXPECT_EQ(CodeOf(Grade::kNone, 20), ExitCode::kNoTripleDifference);
}

}  // namespace
}  // namespace vornel::report
