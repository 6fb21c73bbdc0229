#include "exports/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "exports/export_set.h"

namespace vornel::exports {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

io::GpsTime At(int year, int month, int day, int hour = 0, int minute = 0, double second = 0.0) {
    return *io::FromCalendar({year, month, day, hour, minute, second});
}

TEST(ExportText, NumbersAreWrittenWithSoManyDigits) {
    EXPECT_EQ(Fixed(-0.00004, 4), "0.0000");
    EXPECT_EQ(Fixed(-0.00006, 4), "-0.0001");
    EXPECT_EQ(Fixed(6378137.123456, 4), "6378137.1235");
    EXPECT_EQ(Scientific(-1.5e-5, 14), "-1.50000000000000E-05");
    EXPECT_EQ(Scientific(0.0, 5), "0.00000E+00");
    EXPECT_EQ(Right("ab", 4), "  ab");
    EXPECT_EQ(Left("ab", 4), "ab  ");
    EXPECT_EQ(Right("abcde", 4), "abcde");
}

TEST(ExportText, TimesAreThoseOfTheFormats) {
    EXPECT_EQ(IsoTime(At(2020, 6, 25, 0, 59, 30.25), 2), "2020-06-25T00:59:30.25");
    EXPECT_EQ(IsoTime(At(2020, 6, 25, 0, 59, 30.0), 0, ' '), "2020-06-25 00:59:30");
    EXPECT_EQ(DayMonthYear(At(2020, 6, 5)), "05.06.2020");
    EXPECT_EQ(SinexTime(At(2020, 12, 31, 23, 59, 59.9)), "20:366:86399");
    EXPECT_EQ(SinexTime(At(2001, 1, 1)), "01:001:00000");
    EXPECT_DOUBLE_EQ(DecimalYear(At(2021, 1, 1)), 2021.0);
    EXPECT_DOUBLE_EQ(DecimalYear(At(2020, 7, 2)), 2020.5);
    EXPECT_DOUBLE_EQ(DecimalYear(At(2019, 7, 2, 12)), 2019.5);
}

TEST(ExportText, OnlyWhatXmlCanHoldIsLeft) {
    EXPECT_EQ(CleanText("a\tb\nc\x7F"
                        "d\x01"),
              "a b c d ");
    EXPECT_EQ(CleanText("\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x93\xA1"),
              "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x93\xA1");
    const std::string no = "\xEF\xBF\xBD";
    EXPECT_EQ(CleanText("\xC3"), no);                             // cut off
    EXPECT_EQ(CleanText("\xC0\x80"), no + no);                    // too long for its character
    EXPECT_EQ(CleanText("\xE0\x80\x80"), no + no + no);           // likewise
    EXPECT_EQ(CleanText("\xED\xA0\x80"), no + no + no);           // half of a pair
    EXPECT_EQ(CleanText("\xF4\x90\x80\x80"), no + no + no + no);  // beyond the last character
    EXPECT_EQ(CleanText("\xEF\xBF\xBF"), no);                     // no character
    EXPECT_EQ(CleanText("\xC2\x85"), " ");                        // a control character
    EXPECT_EQ(AsciiText("Stra\xC3\x9F"
                        "e\xFF"),
              "Stra?e?");
}

TEST(ExportText, NamesAreCutAtCharactersAndStayDifferent) {
    const NameRule rule{"X", 3, false, nullptr, false};
    const FittedNames fitted =
        FitNames({"\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F", "abc", "abcd", "abce", "a b"}, rule);
    EXPECT_THAT(fitted.names, ElementsAre("\xC3\xA4\xC3\xB6\xC3\xBC", "abc", "ab1", "ab2", "a_b"));
    EXPECT_THAT(fitted.warnings, SizeIs(4));
    EXPECT_EQ(fitted.warnings[1], "X: station abcd is called ab1");
    const std::vector<std::string> many(1002, "");
    EXPECT_THROW(FitNames(many, rule), ExportError);
}

}  // namespace
}  // namespace vornel::exports
