#include "compact_writer.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace vornel::test {
namespace {

constexpr std::size_t kOrder = 3;
constexpr std::size_t kValueWidth = 14;  // F14.3, and two flags behind it
constexpr std::size_t kColumnWidth = 16;

std::string Trimmed(std::string text) {
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

std::string Piece(const std::string& text, std::size_t at, std::size_t width) {
    std::string piece = at < text.size() ? text.substr(at, width) : std::string();
    piece.resize(width, ' ');
    return piece;
}

// What changes `before` to `now`: a blank for a character that stays, '&' for one that goes.
std::string TextDifference(std::string before, std::string now) {
    const std::size_t length = std::max(before.size(), now.size());
    before.resize(length, ' ');
    now.resize(length, ' ');
    std::string difference(length, ' ');
    for (std::size_t i = 0; i < length; ++i) {
        if (before[i] != now[i]) {
            difference[i] = now[i] == ' ' ? '&' : now[i];
        }
    }
    return difference;
}

// The digits of a number with a fixed count of decimals, without its point.
std::int64_t Digits(std::string text) {
    text.erase(
        std::remove_if(text.begin(), text.end(), [](char c) { return c == '.' || c == ' '; }),
        text.end());
    return std::stoll(text);
}

// A number over the epochs, in which the next value is written as a difference.
class Arc {
  public:
    // Empty for a blank field, which ends the arc.
    std::string Write(const std::string& field) {
        if (Trimmed(field).empty()) {
            count_ = 0;
            return {};
        }
        const std::array<std::int64_t, kOrder + 1> before = last_;
        const std::size_t order = std::min(count_++, kOrder);
        last_[0] = Digits(field);
        for (std::size_t i = 1; i <= order; ++i) {
            last_[i] = last_[i - 1] - before[i - 1];
        }
        return (order == 0 ? std::to_string(kOrder) + "&" : "") + std::to_string(last_[order]);
    }

  private:
    std::array<std::int64_t, kOrder + 1> last_{};  // the value and its differences
    std::size_t count_ = 0;                        // of values since the arc began
};

struct Satellite {
    std::vector<Arc> arcs;
    std::string flags;
};

class Writer {
  public:
    explicit Writer(const std::string& plain) : in_(plain) {}

    std::string Write() {
        CopyHeader();
        while (Next()) {
            WriteEpoch();
        }
        return out_;
    }

  private:
    bool Next() {
        if (!std::getline(in_, line_)) {
            return false;
        }
        line_.erase(line_.find_last_not_of('\r') + 1);
        return true;
    }

    void Need() {
        if (!Next()) {
            throw std::runtime_error("the text ends too early");
        }
    }

    void Put(const std::string& line) { out_ += Trimmed(line) + '\n'; }

    void CopyHeader() {
        Need();
        isVersion2_ = std::stod(line_.substr(0, 9)) < 3.0;
        out_ = Piece(isVersion2_ ? "1.0" : "3.0", 0, 20) + Piece("COMPACT RINEX FORMAT", 0, 40) +
               "CRINEX VERS   / TYPE\n" + std::string(60, ' ') + "CRINEX PROG / DATE\n";
        for (;; Need()) {
            Put(line_);
            const std::string label = Trimmed(Piece(line_, 60, 20));
            if (label == "# / TYPES OF OBSERV" && Piece(line_, 0, 6) != "      ") {
                types_[' '] = std::stoul(line_.substr(0, 6));
            } else if (label == "SYS / # / OBS TYPES" && line_[0] != ' ') {
                types_[line_[0]] = std::stoul(line_.substr(3, 3));
            } else if (label == "END OF HEADER") {
                return;
            }
        }
    }

    // The epoch line as Compact RINEX has it: the satellites behind it, the clock for itself.
    void WriteEpoch() {
        const std::size_t head = isVersion2_ ? 32 : 35, list = isVersion2_ ? 32 : 41;
        const std::size_t clockAt = isVersion2_ ? 68 : 41, clockWidth = isVersion2_ ? 12 : 15;
        const int flag = line_.at(isVersion2_ ? 28 : 31) - '0';
        const auto count = std::stoul(line_.substr(head - 3, 3));
        if (flag > 1) {
            throw std::runtime_error("events are not taken");
        }
        const std::string clock = Piece(line_, clockAt, clockWidth);
        std::string text = Piece(line_, 0, head);
        text.resize(list, ' ');
        std::vector<std::string> names, rows;
        if (isVersion2_) {
            names = NamesOfVersion2(count);
        }
        for (std::size_t i = 0; i < count; ++i) {
            rows.push_back(Row(names, i));
        }
        for (const std::string& name : names) {
            text += name;
        }
        const bool first = epochText_.empty();
        std::string difference = TextDifference(first ? "" : epochText_, text);
        if (first && isVersion2_) {
            difference[0] = '&';
        }
        epochText_ = text;
        Put(difference);
        Put(clock_.Write(clock));
        std::map<std::string, Satellite> now;
        for (std::size_t i = 0; i < count; ++i) {
            now[names[i]] = Put(names[i], rows[i]);
        }
        satellites_ = std::move(now);  // a satellite that is missing at an epoch begins anew
    }

    // Twelve to a line, from column 32 on.
    std::vector<std::string> NamesOfVersion2(std::size_t count) {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < count; ++i) {
            if (i > 0 && i % 12 == 0) {
                Need();
            }
            names.push_back(Piece(line_, 32 + 3 * (i % 12), 3));
        }
        return names;
    }

    // All fields of a satellite in one line. Version 2 has five to a line; the later ones have them
    // behind the name, which is added to `names`.
    std::string Row(std::vector<std::string>& names, std::size_t index) {
        Need();
        if (!isVersion2_) {
            names.push_back(Piece(line_, 0, 3));
            return line_.substr(3);
        }
        const std::size_t columns = types_.at(' ');
        std::string row;
        for (std::size_t column = 0; column < columns; column += 5) {
            if (column > 0) {
                Need();
            }
            row += Piece(line_, 0, 5 * kColumnWidth);
        }
        return index < names.size() ? row : throw std::runtime_error("a row too many");
    }

    // Writes a row and gives the state to go on from.
    Satellite Put(const std::string& name, const std::string& row) {
        const std::size_t columns = types_.at(isVersion2_ ? ' ' : name[0]);
        Satellite state = satellites_[name];
        state.arcs.resize(columns);
        std::string text, flags;
        for (std::size_t column = 0; column < columns; ++column) {
            const std::string field = Piece(row, column * kColumnWidth, kColumnWidth);
            text += state.arcs[column].Write(field.substr(0, kValueWidth)) + ' ';
            flags += field.substr(kValueWidth);
        }
        Put(text + TextDifference(state.flags, flags));
        state.flags = flags;
        return state;
    }

    std::istringstream in_;
    std::string line_;
    std::string out_;
    bool isVersion2_ = false;
    std::map<char, std::size_t> types_;  // count by system; by ' ' in version 2
    std::string epochText_;
    Arc clock_;
    std::map<std::string, Satellite> satellites_;  // of the epoch before
};

}  // namespace

std::string ToCompactRinex(const std::string& plain) {
    return Writer(plain).Write();
}

}  // namespace vornel::test
