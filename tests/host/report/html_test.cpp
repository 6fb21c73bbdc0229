#include "report/html.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace vornel::report {
namespace {

TEST(Escaped, LeavesNothingThatMeansSomethingInHtml) {
    EXPECT_EQ(Escaped("<script>alert('x' & \"y\")</script>"),
              "&lt;script&gt;alert(&#39;x&#39; &amp; &quot;y&quot;)&lt;/script&gt;");
    EXPECT_EQ(Escaped("a\tb\nc\rd"), "a b c d");
}

TEST(Escaped, KeepsUtf8AndReplacesWhatIsNone) {
    const std::string replaced = "\xEF\xBF\xBD";
    for (const std::string good : {"Ebre", "\xC3\xA9", "\xE2\x88\x92", "\xF0\x9F\x9B\xB0"}) {
        EXPECT_EQ(Escaped(good), good);
    }
    EXPECT_EQ(Escaped(std::string("a\0b\x1b[c\x7f", 7)),
              "a" + replaced + "b" + replaced + "[c" + replaced);
    // A lone byte of Latin-1, a cut sequence, an overlong slash, a surrogate, beyond U+10FFFF.
    EXPECT_EQ(Escaped("Mont\xE9"), "Mont" + replaced);
    EXPECT_EQ(Escaped("\xE2\x88"), replaced + replaced);
    EXPECT_EQ(Escaped("\xC0\xAF"), replaced + replaced);
    EXPECT_EQ(Escaped("\xED\xA0\x80"), replaced + replaced + replaced);
    EXPECT_EQ(Escaped("\xF4\x90\x80\x80"), replaced + replaced + replaced + replaced);
    // A byte that begins nothing does not swallow the markup after it.
    EXPECT_EQ(Escaped("\xE2<b>"), replaced + "&lt;b&gt;");
}

TEST(Decimal, HasAMinusSignAndNoNegativeZero) {
    EXPECT_EQ(Decimal(1.25, 1), "1.2");
    EXPECT_EQ(Decimal(-1.26, 1), "\xE2\x88\x92\x31.3");
    EXPECT_EQ(Decimal(-0.04, 1), "0.0");
    EXPECT_EQ(Decimal(std::numeric_limits<double>::quiet_NaN(), 3), "\xE2\x80\x93");
    EXPECT_EQ(Decimal(-std::numeric_limits<double>::infinity(), 3), "\xE2\x80\x93");
}

TEST(Table, EscapesCellsAndNamesRowsAndColumns) {
    const std::string html = Table("A & B", {"Name", "Size (m)#"}).Row({"<i>", "1"}).Html();
    EXPECT_THAT(html, testing::HasSubstr("<caption>A &amp; B</caption>"));
    EXPECT_THAT(html, testing::HasSubstr("<table class=\"n2\">"));
    EXPECT_THAT(html, testing::HasSubstr("<th scope=\"col\">Size (m)</th>"));
    EXPECT_THAT(html, testing::HasSubstr("<tr><th scope=\"row\">&lt;i&gt;</th><td>1</td></tr>"));
}

TEST(List, IsNothingWithoutEntries) {
    EXPECT_EQ(List({}), "");
    EXPECT_EQ(List({"a<b"}), "<ul>\n<li>a&lt;b</li>\n</ul>\n");
}

}  // namespace
}  // namespace vornel::report
