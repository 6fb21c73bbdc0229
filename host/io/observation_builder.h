// Fills the model of observations for the readers of RINEX and Compact RINEX, which differ in how
// the text tells a value and in nothing else.
#pragma once

#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>

#include "io/line_cursor.h"
#include "io/observation_header.h"
#include "io/observations.h"

namespace vornel::io {

// A file that changes its header more often than this, or holds more values, is refused.
inline constexpr std::size_t kMaximumHeaderChanges = 1000;
inline constexpr std::size_t kMaximumValues = 500'000'000;  // 5 GB in memory

// What the first line of an epoch tells.
struct EpochRecord {
    int flag = 0;   // 0 observations, 1 after a power failure, 2 to 5 events, 6 cycle slips
    int count = 0;  // satellites; lines that follow for the events 2 to 5
    GpsTime time;   // GPS time; flags 0 and 1 only
    double clockOffset = 0.0;  // seconds, NaN when not given

    bool IsEvent() const { return flag >= 2 && flag <= 5; }
    bool IsSlips() const { return flag == 6; }
};

// Reads time, flag and count of an epoch record at the columns of the version. Refuses what the
// format does not allow.
EpochRecord ReadEpochRecord(const LineCursor& cursor, std::string_view line,
                            const ObservationHeader& header);

// The clock offset at its columns of an epoch record; NaN when blank.
double ReadClockOffset(const LineCursor& cursor, std::string_view field);

class ObservationBuilder {
  public:
    ObservationBuilder(const std::string& name, const ObservationSelection& selection);

    // Room for the observations of a text of that many characters, if all of it is kept. Memory that
    // is never filled is never taken from the machine.
    void Reserve(std::uint64_t textSize);

    // The header in force from here on. To be called after the header and after each event.
    void UseHeader(const ObservationHeader& header, const LineCursor& cursor);

    // Starts an epoch; false when it is not kept, and then nothing of it is to be added.
    // `line` is that of the epoch record.
    bool BeginEpoch(const EpochRecord& record, std::size_t line);

    // Starts the row of a satellite; false when it is not kept. Every row is ended.
    bool BeginRow(SatelliteId satellite, const LineCursor& cursor);
    // A value of a column of the file: thousandths of the unit as in the file, not zero.
    void SetMilli(std::size_t column, std::int64_t milli) {
        SetValue(column, static_cast<double>(milli) / 1000.0);
    }
    void SetValue(std::size_t column, double value) {
        const ColumnPlan& plan = (*plans_)[column];
        if (plan.slot >= 0 && value != 0.0) {
            data_.values[rowStart_ + static_cast<std::size_t>(plan.slot)] =
                plan.divisor == 1.0 ? value : value / plan.divisor;
            rowHasData_ = true;
        }
    }
    // Loss of lock and signal strength, the digits themselves, 0 for blank.
    void SetFlags(std::size_t column, std::uint8_t lossOfLock, std::uint8_t strength) {
        const ColumnPlan& plan = (*plans_)[column];
        if (plan.slot >= 0 && (lossOfLock | strength) != 0) {
            const std::size_t at = rowStart_ + static_cast<std::size_t>(plan.slot);
            data_.lossOfLock[at] = lossOfLock & 7U;
            data_.signalStrength[at] = strength;
            rowHasData_ = true;
        }
    }
    // Takes the row back when nothing was set.
    void EndRow();
    void EndEpoch();

    // The columns of the file for a system.
    const std::vector<ColumnPlan>& PlansOf(GnssSystem system) const {
        return allPlans_[static_cast<std::size_t>(system)];
    }

    void Note(std::size_t line, std::string text);
    void NoteEvent(int flag);
    Observations Finish(const ObservationHeader& header, bool compact);

  private:
    bool IsSelected(const GpsTime& time) const;
    void MarkHalfCycles();

    ObservationSelection selection_;
    Observations data_;
    ColumnPlans allPlans_;
    const std::vector<ColumnPlan>* plans_ = nullptr;  // of the row
    const ObservationHeader* header_ = nullptr;
    std::size_t layoutChange_ = 0;  // of the header, that the plans are made for
    std::size_t layoutsMade_ = 0;
    std::size_t signalTable_ = 0;
    std::size_t station_ = 0;
    bool moving_ = false;
    bool powerFailure_ = false;  // waits for the next epoch that is kept
    GpsTime lastTime_{-1, 0.0};
    std::bitset<kSystemCount * 100> seen_;  // satellites of the epoch
    std::size_t rowStart_ = 0;
    bool rowHasData_ = false;
};

}  // namespace vornel::io
