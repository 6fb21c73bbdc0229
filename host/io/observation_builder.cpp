#include "io/observation_builder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "io/text_fields.h"

namespace vornel::io {
namespace {

constexpr double kAbsent = std::numeric_limits<double>::quiet_NaN();

[[noreturn]] void RefuseChanges(const LineCursor& cursor) {
    cursor.Refuse(InputFault::kTooLarge,
                  "the header changes more than " + std::to_string(kMaximumHeaderChanges) +
                      " times within the file",
                  "cut the file into pieces");
}

// Adds `item` to `list` unless it equals the last one, and answers the place of it.
template <typename Item, typename Same>
std::size_t AddIfChanged(std::vector<Item>& list, const Item& item, Same same,
                         const LineCursor& cursor) {
    if (list.empty() || !same(list.back(), item)) {
        if (list.size() >= kMaximumHeaderChanges) {
            RefuseChanges(cursor);
        }
        list.push_back(item);
    }
    return list.size() - 1;
}

bool SameSignals(const SignalTable& a, const SignalTable& b) {
    for (std::size_t i = 0; i < kSystemCount; ++i) {
        const bool same = std::equal(a[i].begin(), a[i].end(), b[i].begin(), b[i].end(),
                                     [](const Signal& x, const Signal& y) {
                                         return x.code == y.code && x.fileName == y.fileName;
                                     });
        if (!same) {
            return false;
        }
    }
    return true;
}

// The columns of an epoch record, counted from 0.
struct EpochColumns {
    std::size_t year, yearWidth, month, step, second, flag, count;
};
constexpr EpochColumns kColumns2 = {1, 2, 4, 3, 15, 28, 29};
constexpr EpochColumns kColumns3 = {2, 4, 7, 3, 18, 31, 32};

// Years of two digits reach from 1980 to 2079.
int FullYear(int year, std::size_t digits) {
    return digits == 4 ? year : year + (year < 80 ? 2000 : 1900);
}

GpsTime ReadEpochTime(const LineCursor& cursor, std::string_view line, const EpochColumns& columns,
                      TimeSystem timeSystem) {
    const auto year = ParseInteger(Field(line, columns.year, columns.yearWidth));
    std::array<std::optional<int>, 4> parts;
    for (std::size_t i = 0; i < 4; ++i) {
        parts[i] = ParseInteger(Field(line, columns.month + columns.step * i, 2));
    }
    const auto second = ParseReal(Field(line, columns.second, 11));
    const std::string_view text =
        Trim(Field(line, columns.year, columns.second + 11 - columns.year));
    if (!year || *year < 0 || !parts[0] || !parts[1] || !parts[2] || !parts[3] || !second) {
        cursor.RefuseField("no date and time of an epoch in " + Quote(text));
    }
    const auto reading = FromCalendar(
        {FullYear(*year, columns.yearWidth), *parts[0], *parts[1], *parts[2], *parts[3], *second});
    if (!reading) {
        cursor.RefuseField("the date and time " + Quote(text) + " does not exist");
    }
    return ToGpsTime(*reading, timeSystem);
}

}  // namespace

EpochRecord ReadEpochRecord(const LineCursor& cursor, std::string_view line,
                            const ObservationHeader& header) {
    const EpochColumns& columns = header.isVersion2() ? kColumns2 : kColumns3;
    EpochRecord record;
    const std::string_view flag = Field(line, columns.flag, 1);
    if (!flag.empty() && flag.front() != ' ') {
        record.flag = flag.front() - '0';
        if (record.flag < 0 || record.flag > 6) {
            cursor.RefuseField("the epoch flag " + Quote(flag) + " is none from 0 to 6");
        }
    }
    if (!record.IsEvent() && !record.IsSlips()) {
        record.time = ReadEpochTime(cursor, line, columns, header.station().timeSystem);
    }
    const std::string_view countField = Field(line, columns.count, 3);
    const auto count = ParseInteger(countField);
    const bool noneNeeded = record.IsEvent() && IsBlank(countField);
    if ((!count && !noneNeeded) || count.value_or(0) < 0) {
        cursor.RefuseField(std::string("the number of ") +
                           (record.IsEvent() ? "event lines " : "satellites ") +
                           Quote(Trim(countField)) + " is no count");
    }
    record.count = count.value_or(0);
    record.clockOffset = kAbsent;
    return record;
}

double ReadClockOffset(const LineCursor& cursor, std::string_view field) {
    if (IsBlank(field)) {
        return kAbsent;
    }
    const auto offset = ParseReal(field);
    if (!offset) {
        cursor.RefuseField("the receiver clock offset " + Quote(Trim(field)) + " is not a number");
    }
    return *offset;
}

ObservationBuilder::ObservationBuilder(const std::string& name,
                                       const ObservationSelection& selection)
    : selection_(selection) {
    data_.file = name;
}

void ObservationBuilder::Reserve(std::uint64_t textSize) {
    if (selection_.start || selection_.end || selection_.interval > 0.0) {
        return;
    }
    constexpr std::uint64_t kCharactersPerValue = 16;
    const auto values = static_cast<std::size_t>(
        std::min<std::uint64_t>(textSize / kCharactersPerValue, kMaximumValues));
    data_.values.reserve(values);
    data_.lossOfLock.reserve(values);
    data_.signalStrength.reserve(values);
}

void ObservationBuilder::UseHeader(const ObservationHeader& header, const LineCursor& cursor) {
    header_ = &header;
    station_ = AddIfChanged(data_.stations, header.station(), std::equal_to<>(), cursor);
    if (layoutsMade_ > 0 && layoutChange_ == header.layoutChanges()) {
        return;
    }
    layoutChange_ = header.layoutChanges();
    if (++layoutsMade_ > kMaximumHeaderChanges) {
        RefuseChanges(cursor);
    }
    const SignalTable signals = header.MakeSignals(selection_.types);
    signalTable_ = AddIfChanged(data_.signalTables, signals, SameSignals, cursor);
    allPlans_ = header.MakePlans(signals);
}

bool ObservationBuilder::IsSelected(const GpsTime& time) const {
    if ((selection_.start && time < *selection_.start) ||
        (selection_.end && time > *selection_.end)) {
        return false;
    }
    if (selection_.interval <= 0.0) {
        return true;
    }
    // Receiver clocks keep their tags within milliseconds of the full second.
    const double tag = std::round(time.seconds * 10.0) / 10.0;
    return std::abs(std::remainder(tag, selection_.interval)) < 1e-6;
}

bool ObservationBuilder::BeginEpoch(const EpochRecord& record, std::size_t line) {
    powerFailure_ = powerFailure_ || record.flag == 1;
    if (record.IsSlips()) {
        ++data_.slipRecords;
        return false;
    }
    if (record.time <= lastTime_) {
        Note(line, "the epoch " + FormatTime(record.time) +
                       " does not come after the one before it and is left out");
        return false;
    }
    lastTime_ = record.time;
    if (!IsSelected(record.time)) {
        return false;
    }
    ObservationEpoch epoch;
    epoch.time = record.time;
    epoch.receiverClockOffset = record.clockOffset;
    epoch.firstSatellite = static_cast<std::uint32_t>(data_.satellites.size());
    epoch.line = static_cast<std::uint32_t>(line);
    epoch.station = static_cast<std::uint16_t>(station_);
    epoch.powerFailure = std::exchange(powerFailure_, false);
    epoch.moving = moving_;
    data_.epochs.push_back(epoch);
    seen_.reset();
    return true;
}

bool ObservationBuilder::BeginRow(SatelliteId satellite, const LineCursor& cursor) {
    const auto system = static_cast<std::size_t>(satellite.system);
    const std::size_t place = system * 100 + satellite.number;
    if (seen_.test(place)) {
        Note(cursor.number(),
             "satellite " + ToString(satellite) + " stands twice in an epoch; the first is kept");
        return false;
    }
    seen_.set(place);
    const std::size_t columns = data_.signalTables[signalTable_][system].size();
    if (!selection_.systems[system] || columns == 0) {
        return false;
    }
    rowStart_ = data_.values.size();
    if (rowStart_ + columns > kMaximumValues) {
        cursor.Refuse(
            InputFault::kTooLarge,
            "the file holds more than " + std::to_string(kMaximumValues) + " observations",
            "cut it into pieces, or keep fewer epochs");
    }
    plans_ = &allPlans_[system];
    data_.values.resize(rowStart_ + columns, kAbsent);
    data_.lossOfLock.resize(rowStart_ + columns, 0);
    data_.signalStrength.resize(rowStart_ + columns, 0);
    data_.satellites.push_back({satellite, static_cast<std::uint16_t>(signalTable_),
                                static_cast<std::uint32_t>(rowStart_)});
    rowHasData_ = false;
    return true;
}

void ObservationBuilder::EndRow() {
    if (!rowHasData_) {
        data_.values.resize(rowStart_);
        data_.lossOfLock.resize(rowStart_);
        data_.signalStrength.resize(rowStart_);
        data_.satellites.pop_back();
    } else if (header_->HasHalfCycles()) {
        MarkHalfCycles();
    }
}

// In RINEX 2 bit 1 of the loss of lock indicator swaps the wavelength factor of the header; in the
// model, as in RINEX 3, it tells half cycles by itself.
void ObservationBuilder::MarkHalfCycles() {
    const SatelliteId satellite = data_.satellites.back().satellite;
    for (const ColumnPlan& plan : *plans_) {
        const bool marked =
            plan.slot >= 0 && plan.band != ' ' && header_->IsHalfCycle(satellite, plan.band) &&
            !std::isnan(data_.values[rowStart_ + static_cast<std::size_t>(plan.slot)]);
        if (marked) {
            data_.lossOfLock[rowStart_ + static_cast<std::size_t>(plan.slot)] ^= kHalfCycle;
        }
    }
}

void ObservationBuilder::EndEpoch() {
    ObservationEpoch& epoch = data_.epochs.back();
    epoch.satelliteCount =
        static_cast<std::uint32_t>(data_.satellites.size()) - epoch.firstSatellite;
}

void ObservationBuilder::Note(std::size_t line, std::string text) {
    if (data_.notes.size() < kMaximumNotes) {
        data_.notes.push_back({line, std::move(text)});
    }
}

void ObservationBuilder::NoteEvent(int flag) {
    if (flag == 2) {
        moving_ = true;
    } else if (flag == 3) {
        moving_ = false;
    } else if (flag == 5) {
        ++data_.externalEvents;
    }
}

Observations ObservationBuilder::Finish(const ObservationHeader& header, bool compact) {
    data_.version = header.version();
    data_.compact = compact;
    data_.notes.insert(data_.notes.begin(), header.notes().begin(), header.notes().end());
    data_.notes.resize(std::min(data_.notes.size(), kMaximumNotes));
    return std::move(data_);
}

}  // namespace vornel::io
