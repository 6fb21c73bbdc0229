// Plain RINEX observations. Numbers are read by hand: nearly all are F14.3, and a day of data has
// millions of them.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "io/observation_builder.h"
#include "io/observation_reader.h"
#include "io/text_fields.h"

namespace vornel::io {
namespace {

constexpr std::size_t kValueWidth = 14;  // F14.3
constexpr std::size_t kFieldWidth = 16;  // value, loss of lock, signal strength
constexpr double kLargestValue = 1e11;   // F14.3 has 10 digits before the point
constexpr std::size_t kFieldsPerLine2 = 5;
constexpr std::size_t kSatellitesPerLine2 = 12;

enum class Parsed { kBlank, kNumber, kOther };

bool IsBlank14(const char* text) {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    std::memcpy(&first, text, 8);
    std::memcpy(&last, text + kValueWidth - 8, 8);
    return (first & last) == 0x2020202020202020ULL && (first | last) == 0x2020202020202020ULL;
}

// 14 columns as thousandths when they are written as F14.3: blanks, a sign, digits, a point in
// column 11 and three digits. kOther for everything else.
Parsed ParseF14_3(const char* text, std::int64_t& milli) {
    if (text[10] != '.') {
        return IsBlank14(text) ? Parsed::kBlank : Parsed::kOther;
    }
    std::size_t i = 0;
    while (i < 10 && text[i] == ' ') {
        ++i;
    }
    const bool negative = text[i] == '-';
    i += negative ? 1U : 0U;
    std::int64_t value = 0;
    for (; i < 10; ++i) {
        const auto digit = static_cast<unsigned>(text[i] - '0');
        if (digit > 9) {
            return Parsed::kOther;
        }
        value = value * 10 + digit;
    }
    for (i = 11; i < kValueWidth; ++i) {
        const auto digit = static_cast<unsigned>(text[i] - '0');
        if (digit > 9) {
            return Parsed::kOther;
        }
        value = value * 10 + digit;
    }
    milli = negative ? -value : value;
    return Parsed::kNumber;
}

class RinexReader {
  public:
    RinexReader(LineCursor& text, const ObservationSelection& selection)
        : cursor_(text), builder_(text.file(), selection) {
        builder_.Reserve(text.SizeHint());
    }

    Observations Read() {
        header_.ReadAll(cursor_);
        builder_.UseHeader(header_, cursor_);
        while (cursor_.Next()) {
            const std::string_view text = Trim(cursor_.line());
            if (text == "END OF FILE") {
                builder_.Note(cursor_.number(),
                              "the line END OF FILE is not of the format; ignored");
            } else if (!text.empty()) {
                ReadEpoch();
            }
        }
        return builder_.Finish(header_, false);
    }

  private:
    void ReadEpoch() {
        RequireEpochLine();
        epochLine_ = cursor_.number();
        EpochRecord record = ReadEpochRecord(cursor_, cursor_.line(), header_);
        if (record.IsEvent()) {
            ReadEvent(record);
        } else if (header_.isVersion2()) {
            record.clockOffset = ReadClockOffset(cursor_, Field(cursor_.line(), 68, 12));
            ReadSatelliteList(record.count);
            ReadRows2(record);
        } else {
            // F15.12 from column 42; the columns before it are reserved, and writers that shift it
            // have it begin there.
            record.clockOffset = ReadClockOffset(cursor_, Field(cursor_.line(), 35, 21));
            ReadRows3(record);
        }
    }

    void RequireEpochLine() const {
        if (HeaderLabel(cursor_.line()) == "RINEX VERSION / TYPE") {
            cursor_.Refuse(InputFault::kMalformed, "a second file begins within the file",
                           "give files one by one, not joined end to end");
        }
        if (!header_.isVersion2() && cursor_.line().front() != '>') {
            cursor_.RefuseField("an epoch record, which begins with '>', should stand here",
                                epochLine_ == 0
                                    ? ""
                                    : "the epoch of line " + std::to_string(epochLine_) +
                                          " may announce too few satellites");
        }
    }

    void NextLineOfEpoch(const char* what, int found, int announced) {
        if (!cursor_.Next()) {
            cursor_.Refuse(InputFault::kTruncated,
                           "the file ends in the epoch of line " + std::to_string(epochLine_) +
                               ": " + std::to_string(found) + " of " + std::to_string(announced) +
                               ' ' + what,
                           "fetch or export the file again");
        }
    }

    // Lines of the header that an event brings. Time tags of events are of no use here.
    void ReadEvent(const EpochRecord& record) {
        builder_.NoteEvent(record.flag);
        for (int i = 0; i < record.count; ++i) {
            NextLineOfEpoch("event lines are there", i, record.count);
            if (!header_.isVersion2() && Field(cursor_.line(), 0, 1) == ">") {
                cursor_.Refuse(InputFault::kMalformed,
                               "the event of line " + std::to_string(epochLine_) + " announces " +
                                   std::to_string(record.count) + " lines, but only " +
                                   std::to_string(i) + " follow");
            }
            if (HeaderLabel(cursor_.line()) != "END OF HEADER") {
                header_.ReadLine(cursor_);
            }
        }
        if (record.count > 0) {
            header_.RequireComplete(cursor_);
            builder_.UseHeader(header_, cursor_);
        }
    }

    void ReadSatelliteList(int count) {
        satellites_.clear();
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            const std::size_t inLine = i % kSatellitesPerLine2;
            if (i > 0 && inLine == 0) {
                NextLineOfEpoch("satellites are named", static_cast<int>(i), count);
                if (!IsBlank(Field(cursor_.line(), 0, 32))) {
                    cursor_.RefuseField("the list of satellites should continue here",
                                        "the epoch of line " + std::to_string(epochLine_) +
                                            " announces " + std::to_string(count) + " satellites");
                }
            }
            const std::string_view field = Field(cursor_.line(), 32 + 3 * inLine, 3);
            const auto satellite = ParseSatellite(field, header_.blankSystem());
            if (!satellite) {
                cursor_.RefuseField("no satellite in " + Quote(field) + ", number " +
                                    std::to_string(i + 1) + " of " + std::to_string(count));
            }
            satellites_.push_back(*satellite);
        }
        const std::size_t used = count == 0 ? 0 : static_cast<std::size_t>(count - 1) % 12 + 1;
        const std::size_t listEnd = 32 + 3 * used;
        if (listEnd < 68 && !IsBlank(Field(cursor_.line(), listEnd, 68 - listEnd))) {
            cursor_.RefuseField("the epoch announces " + std::to_string(count) +
                                " satellites but names more");
        }
    }

    void ReadRows2(const EpochRecord& record) {
        const bool keptEpoch = builder_.BeginEpoch(record, epochLine_);
        for (std::size_t i = 0; i < satellites_.size(); ++i) {
            const auto& plans = builder_.PlansOf(satellites_[i].system);
            RequireTypes(satellites_[i], plans.size());
            const bool kept = keptEpoch && builder_.BeginRow(satellites_[i], cursor_);
            for (std::size_t column = 0; column < plans.size(); column += kFieldsPerLine2) {
                NextLineOfEpoch("satellites are complete", static_cast<int>(i), record.count);
                ReadFields(cursor_.line(), column, std::min(kFieldsPerLine2, plans.size() - column),
                           kept);
            }
            if (kept) {
                builder_.EndRow();
            }
        }
        if (keptEpoch) {
            builder_.EndEpoch();
        }
    }

    void ReadRows3(const EpochRecord& record) {
        const bool keptEpoch = builder_.BeginEpoch(record, epochLine_);
        for (int i = 0; i < record.count; ++i) {
            NextLineOfEpoch("satellites are there", i, record.count);
            const std::string_view line = cursor_.line();
            const auto satellite = ParseSatellite(Field(line, 0, 3), header_.blankSystem());
            if (!satellite) {
                RefuseSatelliteLine(i, record.count);
            }
            const std::size_t columns = builder_.PlansOf(satellite->system).size();
            RequireTypes(*satellite, columns);
            const bool kept = keptEpoch && builder_.BeginRow(*satellite, cursor_);
            ReadFields(line.substr(3), 0, columns, kept);
            if (kept) {
                builder_.EndRow();
            }
        }
        if (keptEpoch) {
            builder_.EndEpoch();
        }
    }

    [[noreturn]] void RefuseSatelliteLine(int found, int announced) const {
        const std::string_view line = cursor_.line();
        if (!line.empty() && line.front() == '>') {
            cursor_.RefuseField("the epoch of line " + std::to_string(epochLine_) + " announces " +
                                std::to_string(announced) + " satellites, but only " +
                                std::to_string(found) + " follow");
        }
        cursor_.RefuseField("no satellite in " + Quote(Field(line, 0, 3)) + ", number " +
                            std::to_string(found + 1) + " of " + std::to_string(announced));
    }

    void RequireTypes(SatelliteId satellite, std::size_t columns) const {
        if (columns == 0) {
            cursor_.RefuseField("satellite " + ToString(satellite) +
                                ", but the header has no observation types of " +
                                SystemName(satellite.system));
        }
    }

    // `count` observations of a line, the first of which is the column `first` of the satellite.
    void ReadFields(std::string_view line, std::size_t first, std::size_t count, bool kept) {
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t start = i * kFieldWidth;
            if (start >= line.size()) {
                return;
            }
            if (line.size() - start >= kFieldWidth) {
                ReadField(line.data() + start, first + i, kept);
            } else {
                ReadLastField(line.substr(start), first + i, kept);
            }
        }
        const std::size_t end = count * kFieldWidth;
        if (end < line.size() && !Trim(line.substr(end)).empty()) {
            cursor_.RefuseField("more observations than the header has types",
                                "the number of types in the header may be wrong");
        }
    }

    // A field that the end of the line cuts short, as trailing blanks are often left out.
    void ReadLastField(std::string_view rest, std::size_t column, bool kept) {
        std::array<char, kFieldWidth> field;
        field.fill(' ');
        std::copy(rest.begin(), rest.end(), field.begin());
        if (rest.size() < kValueWidth && !IsBlank(rest)) {
            cursor_.RefuseField("the observation " + Quote(Trim(rest)) + " is cut off");
        }
        ReadField(field.data(), column, kept);
    }

    void ReadField(const char* field, std::size_t column, bool kept) {
        std::int64_t milli = 0;
        const Parsed parsed = ParseF14_3(field, milli);
        if (parsed == Parsed::kOther) {
            ReadUnusualValue(std::string_view(field, kValueWidth), column, kept);
        }
        const std::uint8_t lossOfLock = ReadDigit(field[14], "loss of lock");
        const std::uint8_t strength = ReadDigit(field[15], "signal strength");
        if (!kept) {
            return;
        }
        if (parsed == Parsed::kNumber) {
            builder_.SetMilli(column, milli);
        }
        builder_.SetFlags(column, lossOfLock, strength);
    }

    void ReadUnusualValue(std::string_view field, std::size_t column, bool kept) {
        const auto value = ParseReal(field);
        if (!value || std::abs(*value) > kLargestValue) {
            cursor_.RefuseField("the observation " + Quote(Trim(field)) +
                                (value ? " is impossibly large" : " is not a number"));
        }
        if (kept) {
            builder_.SetValue(column, *value);
        }
    }

    std::uint8_t ReadDigit(char c, const char* what) const {
        if (c == ' ') {
            return 0;
        }
        if (!IsDigit(c)) {
            cursor_.RefuseField(std::string("the ") + what + " indicator " +
                                Quote(std::string_view(&c, 1)) + " is no digit");
        }
        return static_cast<std::uint8_t>(c - '0');
    }

    LineCursor& cursor_;
    ObservationHeader header_;
    ObservationBuilder builder_;
    std::vector<SatelliteId> satellites_;  // of an epoch of version 2
    std::size_t epochLine_ = 0;
};

}  // namespace

Observations ReadRinexObservations(LineCursor& text, const ObservationSelection& selection) {
    return RinexReader(text, selection).Read();
}

}  // namespace vornel::io
