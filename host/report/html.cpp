#include "report/html.h"

#include <cmath>

#include "session/text.h"

namespace vornel::report {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

// Bytes of the UTF-8 character at the start of `text`; 0 when there is none (RFC 3629, table 3-7 of
// the Unicode standard).
std::size_t CharacterLength(std::string_view text) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const auto follows = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
    const unsigned first = byte(0), second = byte(1);
    if (first < 0x80U) {
        return 1;
    }
    if (first >= 0xC2U && first <= 0xDFU) {
        return follows(1) ? 2 : 0;
    }
    if (first >= 0xE0U && first <= 0xEFU) {
        const bool overlong = first == 0xE0U && second < 0xA0U;
        const bool surrogate = first == 0xEDU && second > 0x9FU;
        return follows(1) && follows(2) && !overlong && !surrogate ? 3 : 0;
    }
    if (first >= 0xF0U && first <= 0xF4U) {
        const bool overlong = first == 0xF0U && second < 0x90U;
        const bool beyond = first == 0xF4U && second > 0x8FU;
        return follows(1) && follows(2) && follows(3) && !overlong && !beyond ? 4 : 0;
    }
    return 0;
}

std::string_view Reference(char c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        case '\n':
        case '\r':
        case '\t':
            return " ";
        default:
            return {};
    }
}

}  // namespace

std::string Escaped(std::string_view text) {
    constexpr char kFirstPrintable = ' ', kDelete = '\x7f';
    std::string result;
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        const std::string_view reference = Reference(text.front());
        const bool control =
            length == 1 && (text.front() < kFirstPrintable || text.front() == kDelete);
        if (!reference.empty()) {
            result += reference;
        } else if (length == 0 || control) {
            result += kReplacement;
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

std::string Paragraph(std::string_view text, std::string_view className) {
    const std::string attribute =
        className.empty() ? std::string() : " class=\"" + std::string(className) + "\"";
    return "<p" + attribute + ">" + Escaped(text) + "</p>\n";
}

std::string List(const std::vector<std::string>& entries) {
    if (entries.empty()) {
        return {};
    }
    std::string text = "<ul>\n";
    for (const std::string& entry : entries) {
        text += "<li>" + Escaped(entry) + "</li>\n";
    }
    return text + "</ul>\n";
}

Table::Table(std::string_view caption, const std::vector<std::string>& columns) {
    const std::string name = Escaped(caption);
    std::string head, numbers;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        std::string column = columns[i];
        if (!column.empty() && column.back() == '#') {
            column.pop_back();
            numbers += (numbers.empty() ? "n" : " n") + std::to_string(i + 1);
        }
        head += "<th scope=\"col\">" + Escaped(column) + "</th>";
    }
    text_ = "<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-label=\"" + name +
            "\"><table class=\"" + numbers + "\">\n<caption>" + name + "</caption>\n<thead><tr>" +
            head + "</tr></thead>\n<tbody>\n";
}

Table& Table::Row(const std::vector<std::string>& cells, std::string_view className) {
    text_ += className.empty() ? "<tr>" : "<tr class=\"" + std::string(className) + "\">";
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const char* const tag = i == 0 ? "th" : "td";
        text_ += i == 0 ? "<th scope=\"row\">" : "<td>";
        text_ += Escaped(cells[i]);
        text_ += std::string("</") + tag + ">";
    }
    text_ += "</tr>\n";
    return *this;
}

std::string Table::Html() const {
    return text_ + "</tbody></table></div>\n";
}

std::string Decimal(double value, int decimals) {
    if (!std::isfinite(value)) {
        return "\xE2\x80\x93";  // en dash
    }
    std::string text = session::Format("%.*f", decimals, value);
    if (text.front() == '-') {
        const bool zero = text.find_first_of("123456789") == std::string::npos;
        text.replace(0, 1, zero ? "" : "\xE2\x88\x92");  // minus sign
    }
    return text;
}

}  // namespace vornel::report
