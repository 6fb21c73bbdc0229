// Lines of a text that comes in portions: the same as those of the whole text, wherever it is parted.
#include "io/line_cursor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace vornel::io {
namespace {

// Hands a text over in portions of any size.
class Portions : public ByteSource {
  public:
    Portions(std::string text, unsigned seed) : text_(std::move(text)), random_(seed) {}

    std::size_t Read(char* to, std::size_t room) override {
        const std::size_t rest = std::min(room, text_.size() - at_);
        if (rest == 0) {
            return 0;
        }
        const std::size_t count = 1 + random_() % rest;
        text_.copy(to, count, at_);
        at_ += count;
        return count;
    }

  private:
    std::string text_;
    std::size_t at_ = 0;
    std::mt19937 random_;
};

struct Seen {
    std::string line;
    std::size_t number;
    bool terminated;

    friend bool operator==(const Seen&, const Seen&) = default;
};

std::vector<Seen> LinesOf(LineCursor& cursor) {
    std::vector<Seen> lines;
    while (cursor.Next()) {
        lines.push_back({std::string(cursor.line()), cursor.number(), cursor.terminated()});
    }
    EXPECT_FALSE(cursor.Next());
    return lines;
}

std::string TextOfAnyLines(unsigned seed) {
    std::mt19937 random(seed);
    const std::size_t lengths[] = {0,
                                   1,
                                   80,
                                   300,
                                   5000,
                                   kLongestLine - 1,
                                   kLongestLine,
                                   kLongestLine + 1,
                                   3 * kLongestLine,
                                   500'000};
    std::string text;
    for (int i = 0; i < 60; ++i) {
        const bool usual = random() % 4 != 0;
        const std::size_t size = usual ? random() % 100 : lengths[random() % std::size(lengths)];
        text += std::string(size, static_cast<char>('a' + random() % 26));
        text += random() % 5 == 0 ? "\r\n" : "\n";
    }
    return text + (random() % 2 == 0 ? "the last one" : "");
}

TEST(LineCursor, PortionsGiveTheLinesOfTheWhole) {
    for (unsigned seed = 0; seed < 30; ++seed) {
        const std::string text = TextOfAnyLines(seed);
        LineCursor whole(text, "whole");
        const std::vector<Seen> expected = LinesOf(whole);
        ASSERT_GE(expected.size(), 60U);
        Portions portions(text, seed);
        LineCursor inPortions(portions, "portions");
        ASSERT_EQ(LinesOf(inPortions), expected) << seed;
    }
}

TEST(LineCursor, ALongLineIsCutAndWhatFollowsIsNot) {
    const std::string text = std::string(1'000'000, 'x') + "\nnext\n";
    Portions portions(text, 1);
    LineCursor cursor(portions, "x");
    ASSERT_TRUE(cursor.Next());
    EXPECT_EQ(cursor.line().size(), kLongestLine);
    ASSERT_TRUE(cursor.Next());
    EXPECT_EQ(cursor.line(), "next");
    EXPECT_EQ(cursor.number(), 2U);
    EXPECT_FALSE(cursor.Next());
}

TEST(LineCursor, GoesBackByALineAndTellsTheLastOne) {
    const std::string text = TextOfAnyLines(7) + "\x1a\x1a";
    LineCursor whole(text, "whole");
    const std::vector<Seen> expected = LinesOf(whole);
    for (unsigned seed = 0; seed < 10; ++seed) {
        Portions portions(text, seed);
        LineCursor cursor(portions, "portions");
        for (const Seen& line : expected) {
            for (int time = 0; time < 2; ++time) {
                ASSERT_TRUE(cursor.Next());
                EXPECT_EQ(cursor.AtEnd(), line.number == expected.size()) << line.number;
                ASSERT_EQ(cursor.line(), line.line);
                ASSERT_EQ(cursor.number(), line.number);
                if (time == 0) {
                    cursor.Back();
                }
            }
        }
        EXPECT_FALSE(cursor.Next());
    }
}

TEST(LineCursor, AByteOrderMarkIsNoPartOfTheFirstLine) {
    LineCursor cursor("\xef\xbb\xbfone\ntwo\n", "x");
    EXPECT_EQ(cursor.Head(), "one\ntwo\n");
    ASSERT_TRUE(cursor.Next());
    EXPECT_EQ(cursor.line(), "one");
    EXPECT_EQ(cursor.number(), 1U);
    LineCursor nothingElse("\xef\xbb\xbf", "x");
    EXPECT_FALSE(nothingElse.Next());
}

TEST(LineCursor, TheHeadIsThereBeforeTheFirstLine) {
    const std::string text(10'000, 'h');
    for (unsigned seed = 0; seed < 10; ++seed) {
        Portions portions(text, seed);
        EXPECT_GE(LineCursor(portions, "x").Head().size(), 4096U);
    }
}

}  // namespace
}  // namespace vornel::io
