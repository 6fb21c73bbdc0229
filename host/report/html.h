// Pieces of HTML. Whatever comes from a file or a user passes through Escaped.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vornel::report {

// Text as content or as an attribute's value in double quotes. Characters with a meaning in HTML
// become references, control characters and bytes that are no UTF-8 become U+FFFD (line breaks and
// tabs become blanks).
std::string Escaped(std::string_view text);

// <p class="...">text</p>; no class when empty. `text` is escaped.
std::string Paragraph(std::string_view text, std::string_view className = {});

// <ul> of escaped entries; empty when there are none.
std::string List(const std::vector<std::string>& entries);

// A table that scrolls by itself where the page is too narrow for it. Cells are escaped. The first
// cell of each row is its heading.
class Table {
  public:
    // `caption` is shown above the table. Columns are "text" or "text#": # aligns the column as
    // numbers, by a class of the table, "n3" for the third column, so that cells stay short.
    Table(std::string_view caption, const std::vector<std::string>& columns);

    Table& Row(const std::vector<std::string>& cells, std::string_view className = {});
    std::string Html() const;

  private:
    std::string text_;
};

// A number with a proper minus sign, thousands not grouped; "–" when it is not finite.
std::string Decimal(double value, int decimals);

}  // namespace vornel::report
