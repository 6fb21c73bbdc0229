// Compact RINEX (Hatanaka, 1996 and 2008). Observations stand as differences of a fixed order over
// the epochs, in thousandths; epoch lines and the flags as differences of text against the epoch
// before, where a blank keeps a character and '&' makes it blank.
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "io/observation_builder.h"
#include "io/observation_reader.h"
#include "io/text_fields.h"

namespace vornel::io {
namespace {

constexpr int kMaximumOrder = 9;
constexpr std::int64_t kLargestValue = 100'000'000'000'000;  // thousandths; F14.3 has 13 digits

// The text of the epoch before, changed by the differences of a line.
void ApplyTextDifference(std::string& text, std::string_view difference) {
    if (difference.size() > text.size()) {
        text.resize(difference.size(), ' ');
    }
    for (std::size_t i = 0; i < difference.size(); ++i) {
        if (difference[i] == '&') {
            text[i] = ' ';
        } else if (difference[i] != ' ') {
            text[i] = difference[i];
        }
    }
}

// One number over the epochs: the last value and its differences up to the order of the arc.
class DifferenceArc {
  public:
    bool active() const { return order_ >= 0; }
    void Stop() { order_ = -1; }
    void Start(int order, std::int64_t value) {
        order_ = order;
        known_ = 0;
        differences_[0] = static_cast<std::uint64_t>(value);
    }
    // The difference of the highest order that the values so far allow. Sums wrap around like
    // unsigned numbers, so that no bytes of a file can overflow them; Value() is checked after.
    void Advance(std::int64_t difference) {
        known_ = known_ < order_ ? known_ + 1 : order_;
        auto i = static_cast<std::size_t>(known_);
        differences_[i] =
            static_cast<std::uint64_t>(difference) + (known_ == 0 ? differences_[0] : 0U);
        for (; i > 0; --i) {
            differences_[i - 1] += differences_[i];
        }
    }
    std::int64_t Value() const { return static_cast<std::int64_t>(differences_[0]); }

  private:
    std::array<std::uint64_t, kMaximumOrder + 1> differences_{};
    int order_ = -1;
    int known_ = 0;
};

// What is carried from epoch to epoch for a satellite.
struct SatelliteState {
    std::size_t lastEpoch = 0;  // counted from 1; arcs hold only from one epoch to the next
    std::vector<DifferenceArc> arcs;
    std::string flags;  // loss of lock and signal strength of each column
};

class CompactReader {
  public:
    CompactReader(LineCursor& text, const ObservationSelection& selection)
        : cursor_(text), builder_(text.file(), selection), states_(kSystemCount * 100) {}

    Observations Read() {
        ReadCompactHeader();
        header_.ReadAll(cursor_);
        if (header_.isVersion2() != isVersion1_) {
            cursor_.Refuse(InputFault::kMalformed,
                           "Compact RINEX 1 holds RINEX 2, and Compact RINEX 3 later versions");
        }
        builder_.UseHeader(header_, cursor_);
        while (cursor_.Next()) {
            if (!Trim(cursor_.line()).empty()) {
                ReadEpoch();
            }
        }
        return builder_.Finish(header_, true);
    }

  private:
    void ReadCompactHeader() {
        if (!cursor_.Next()) {
            throw InputError(InputFault::kEmpty, cursor_.file(), 0, "the file is empty");
        }
        if (HeaderLabel(cursor_.line()) != "CRINEX VERS   / TYPE") {
            cursor_.Refuse(InputFault::kWrongKind, "the first line is not CRINEX VERS   / TYPE",
                           "give a Compact RINEX file");
        }
        const std::string_view text = Trim(Field(cursor_.line(), 0, 20));
        if (text != "1.0" && text != "3.0") {
            cursor_.Refuse(InputFault::kUnsupportedVersion,
                           "Compact RINEX version " + Quote(text) + " is not read",
                           "versions 1.0 and 3.0 are");
        }
        isVersion1_ = text == "1.0";
        if (!cursor_.Next()) {
            cursor_.Refuse(InputFault::kTruncated, "the file ends in its header",
                           "fetch or export the file again");
        }
    }

    void ReadEpoch() {
        epochLine_ = cursor_.number();
        ReadEpochText();
        EpochRecord record = ReadEpochRecord(cursor_, epochText_, header_);
        if (record.IsEvent()) {
            ReadEvent(record);
            return;
        }
        ReadSatelliteList(record.count);
        NextLine("no receiver clock line follows");
        record.clockOffset = ReadClockLine();
        ++epochNumber_;
        const bool kept = builder_.BeginEpoch(record, epochLine_);
        for (std::size_t i = 0; i < satellites_.size(); ++i) {
            if (!cursor_.Next()) {
                RefuseEnd(std::to_string(i) + " of " + std::to_string(record.count) +
                          " satellites are there");
            }
            ReadRow(satellites_[i], kept);
        }
        if (kept) {
            builder_.EndEpoch();
        }
    }

    void ReadEpochText() {
        const std::string_view line = cursor_.line();
        const char mark = isVersion1_ ? '&' : '>';
        if (!line.empty() && line.front() == mark) {
            epochText_ = line;
            epochText_.front() = isVersion1_ ? ' ' : '>';
            begun_ = true;
            ++epochNumber_;  // no arc reaches over a fresh start
            return;
        }
        if (!begun_) {
            cursor_.RefuseField(std::string("the first epoch should begin with '") + mark + "'");
        }
        if (HeaderLabel(line) == "CRINEX VERS   / TYPE") {
            cursor_.Refuse(InputFault::kMalformed, "a second file begins within the file",
                           "give files one by one, not joined end to end");
        }
        ApplyTextDifference(epochText_, line);
        constexpr std::size_t kLongestEpoch = 41 + 3 * 999;
        if (epochText_.size() > kLongestEpoch) {
            cursor_.RefuseField("the epoch line is too long");
        }
    }

    [[noreturn]] void RefuseEnd(const std::string& what) const {
        cursor_.Refuse(
            InputFault::kTruncated,
            "the file ends in the epoch of line " + std::to_string(epochLine_) + ": " + what,
            "fetch or export the file again");
    }

    void NextLine(const char* what) {
        if (!cursor_.Next()) {
            RefuseEnd(what);
        }
    }

    void ReadEvent(const EpochRecord& record) {
        builder_.NoteEvent(record.flag);
        for (int i = 0; i < record.count; ++i) {
            NextLine("lines of the event are missing");
            if (HeaderLabel(cursor_.line()) != "END OF HEADER") {
                header_.ReadLine(cursor_);
            }
        }
        if (record.count > 0) {
            header_.RequireComplete(cursor_);
            builder_.UseHeader(header_, cursor_);
            ++epochNumber_;  // the types may have changed: no arc reaches over it
        } else if (cursor_.Next() && !Trim(cursor_.line()).empty()) {
            cursor_.Back();  // some writers leave a blank clock line after an event, some do not
        }
    }

    void ReadSatelliteList(int count) {
        satellites_.clear();
        const std::size_t start = isVersion1_ ? 32 : 41;
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            const std::string_view field = Field(epochText_, start + 3 * i, 3);
            const auto satellite = ParseSatellite(field, header_.blankSystem());
            if (!satellite) {
                cursor_.RefuseField("no satellite in " + Quote(field) + ", number " +
                                    std::to_string(i + 1) + " of " + std::to_string(count));
            }
            satellites_.push_back(*satellite);
        }
    }

    // Seconds, NaN when there is none.
    double ReadClockLine() {
        const std::string_view line = Trim(cursor_.line());
        if (line.empty()) {
            clock_.Stop();
            return std::numeric_limits<double>::quiet_NaN();
        }
        const char* at = line.data();
        ReadNumber(at, line.data() + line.size(), clock_);
        if (at != line.data() + line.size()) {
            cursor_.RefuseField("the receiver clock line " + Quote(line) + " is not a number");
        }
        return static_cast<double>(clock_.Value()) / (isVersion1_ ? 1e9 : 1e12);
    }

    void ReadRow(SatelliteId satellite, bool keptEpoch) {
        const std::size_t columns = builder_.PlansOf(satellite.system).size();
        if (columns == 0) {
            cursor_.RefuseField("satellite " + ToString(satellite) +
                                ", but the header has no observation types of " +
                                SystemName(satellite.system));
        }
        SatelliteState& state = ContinueState(satellite, columns);
        const bool kept = keptEpoch && builder_.BeginRow(satellite, cursor_);
        const char* at = cursor_.line().data();
        const char* end = at + cursor_.line().size();
        for (std::size_t column = 0; column < columns; ++column) {
            DifferenceArc& arc = state.arcs[column];
            if (at == end || *at == ' ') {
                arc.Stop();
            } else {
                ReadNumber(at, end, arc);
                if (kept) {
                    builder_.SetMilli(column, arc.Value());
                }
            }
            at += at != end ? 1 : 0;
        }
        ReadFlags(std::string_view(at, static_cast<std::size_t>(end - at)), columns, state, kept);
        if (kept) {
            builder_.EndRow();
        }
    }

    // The state of a satellite of the epoch before, or a fresh one.
    SatelliteState& ContinueState(SatelliteId satellite, std::size_t columns) {
        SatelliteState& state =
            states_[static_cast<std::size_t>(satellite.system) * 100 + satellite.number];
        if (state.lastEpoch + 1 != epochNumber_ || state.arcs.size() != columns) {
            state.arcs.assign(columns, DifferenceArc());
            state.flags.assign(2 * columns, ' ');
        }
        state.lastEpoch = epochNumber_;
        return state;
    }

    // "3&123456" starts an arc of order 3, "-17" continues one. Leaves `at` on the blank after it.
    void ReadNumber(const char*& at, const char* end, DifferenceArc& arc) {
        const char* const start = at;
        const bool starts = end - at > 2 && at[1] == '&' && IsDigit(at[0]);
        const int order = starts ? at[0] - '0' : 0;
        at += starts ? 2 : 0;
        const bool negative = at != end && *at == '-';
        at += negative ? 1 : 0;
        const char* const digits = at;
        std::int64_t value = 0;
        while (at != end && IsDigit(*at) && at - digits < 18) {
            value = value * 10 + (*at - '0');
            ++at;
        }
        const char* const stop = at;
        if (stop == digits || (stop != end && *stop != ' ')) {
            RefuseNumber(start, end, "is not a number");
        }
        value = negative ? -value : value;
        if (starts) {
            arc.Start(order, value);
        } else if (arc.active()) {
            arc.Advance(value);
        } else {
            RefuseNumber(start, end, "continues differences that have not begun");
        }
        if (arc.Value() > kLargestValue || arc.Value() < -kLargestValue) {
            RefuseNumber(start, end, "leads to an impossible value");
        }
    }

    [[noreturn]] void RefuseNumber(const char* start, const char* end, const char* why) const {
        const std::string_view rest(start, static_cast<std::size_t>(end - start));
        cursor_.RefuseField(Quote(rest.substr(0, rest.find(' '))) + ' ' + why,
                            "the file is damaged from here on; fetch it again");
    }

    void ReadFlags(std::string_view difference, std::size_t columns, SatelliteState& state,
                   bool kept) {
        while (!difference.empty() && difference.back() == ' ') {
            difference.remove_suffix(1);
        }
        if (difference.size() > 2 * columns) {
            cursor_.RefuseField("more flags than the header has types");
        }
        for (const char c : difference) {
            if (c != ' ' && c != '&' && !IsDigit(c)) {
                cursor_.RefuseField("the flags " + Quote(difference) + " are no digits");
            }
        }
        ApplyTextDifference(state.flags, difference);
        if (!kept) {
            return;
        }
        for (std::size_t column = 0; column < columns; ++column) {
            if (!state.arcs[column].active()) {
                continue;  // flags of a missing observation are left over from earlier epochs
            }
            const auto digit = [&](std::size_t i) {
                const char c = state.flags[2 * column + i];
                return static_cast<std::uint8_t>(c == ' ' ? 0 : c - '0');
            };
            builder_.SetFlags(column, digit(0), digit(1));
        }
    }

    LineCursor& cursor_;
    ObservationHeader header_;
    ObservationBuilder builder_;
    bool isVersion1_ = false;
    bool begun_ = false;
    std::string epochText_;
    std::size_t epochLine_ = 0;
    std::size_t epochNumber_ = 1;
    DifferenceArc clock_;
    std::vector<SatelliteId> satellites_;
    std::vector<SatelliteState> states_;  // by system and number
};

}  // namespace

Observations ReadCompactRinex(LineCursor& text, const ObservationSelection& selection) {
    return CompactReader(text, selection).Read();
}

}  // namespace vornel::io
