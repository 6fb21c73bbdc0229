// The header of RINEX observation files of all versions, at the top of a file and in the events
// that change it later.
#pragma once

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "io/line_cursor.h"
#include "io/observations.h"

namespace vornel::io {

// Where a column of the file goes.
struct ColumnPlan {
    int slot = -1;         // column of the model; -1 is read over
    double divisor = 1.0;  // of the value in the file (SYS / SCALE FACTOR)
    char band = ' ';       // of a phase, for half-cycle receivers of RINEX 2; else blank
};

using ColumnPlans = std::array<std::vector<ColumnPlan>, kSystemCount>;

// Limits of the formats and of sense; more is refused.
inline constexpr int kMaximumTypes = 200;  // of a system

class ObservationHeader {
  public:
    // The line of the version, which says how the others are read. Refuses other kinds of RINEX and
    // versions that are not read.
    void ReadVersion(const LineCursor& cursor);

    // One of the other header lines, of the top or of an event.
    void ReadLine(const LineCursor& cursor);

    // Reads lines from the version to END OF HEADER.
    void ReadAll(LineCursor& cursor);

    // To be asked at the end of a header or of an event: refuses lists of types that stopped short.
    void RequireComplete(const LineCursor& cursor) const;

    // The columns of the model and the way to them, for the first letters of codes that are wanted.
    SignalTable MakeSignals(const std::string& types) const;
    ColumnPlans MakePlans(const SignalTable& signals) const;

    // Grows whenever the columns of the file or their meaning may have changed.
    std::size_t layoutChanges() const { return layoutChanges_; }

    bool isVersion2() const { return version_ < 3.0; }
    double version() const { return version_; }
    GnssSystem blankSystem() const { return blankSystem_; }
    const StationHeader& station() const { return station_; }
    const std::vector<InputNote>& notes() const { return notes_; }

    // Whether the phase of a band ('1', '2') comes in half cycles (wavelength factor 2).
    bool HasHalfCycles() const { return !halfCycles_.empty(); }
    bool IsHalfCycle(SatelliteId satellite, char band) const;

  private:
    struct TypeList {
        int announced = 0;
        std::vector<std::string> names;
    };

    void ReadStationLine(const LineCursor& cursor, std::string_view label);
    void ReadSettingsLine(const LineCursor& cursor, std::string_view label);
    void ReadTypes2(const LineCursor& cursor);
    void ReadTypes3(const LineCursor& cursor);
    void AppendTypes(const LineCursor& cursor, TypeList& list);
    void ReadScaleFactor(const LineCursor& cursor);
    void ReadWavelengthFactor(const LineCursor& cursor);
    void ReadGlonassChannels(const LineCursor& cursor);
    void ReadPosition(const LineCursor& cursor);
    void ReadAntennaOffset(const LineCursor& cursor);
    void ReadInterval(const LineCursor& cursor);
    std::optional<GpsTime> ReadTime(const LineCursor& cursor, bool namesTimeSystem);
    std::optional<ObservationCode> CodeOf(const std::string& name, GnssSystem system) const;
    double DivisorOf(const std::string& name, GnssSystem system) const;
    const std::vector<std::string>& TypesOf(GnssSystem system) const;

    double version_ = 0.0;
    GnssSystem blankSystem_ = GnssSystem::kGps;
    StationHeader station_;
    TypeList types2_;
    std::array<TypeList, kSystemCount> types3_;
    GnssSystem typesSystem_ = GnssSystem::kGps;  // that continuation lines belong to
    bool typesBegun_ = false;
    // Factors of the types that the records name, and of all others.
    struct ScaleFactors {
        double ofOthers = 1.0;
        std::map<std::string, double> ofNamed;
    };
    std::array<ScaleFactors, kSystemCount> scales_;
    double scaleFactor_ = 0.0;  // that continuation lines belong to; 0 before the first
    GnssSystem scaleSystem_ = GnssSystem::kGps;
    std::map<std::pair<SatelliteId, char>, bool>
        halfCycles_;  // number 0 is the default of a system
    std::vector<InputNote> notes_;
    std::size_t layoutChanges_ = 0;
};

}  // namespace vornel::io
