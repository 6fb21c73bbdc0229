// Broadcast navigation of RINEX 2.00 to 2.12, 3.00 to 3.05 and 4.00 to 4.02. Values are handed on
// in the units of the formats, which the fields tell: metres, radians, seconds; GLONASS in
// kilometres.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io/gnss_time.h"
#include "io/input_error.h"
#include "io/line_cursor.h"
#include "io/satellite.h"

namespace vornel::io {

// The message a record was taken from. RINEX 2 and 3 name none: GPS and QZSS are LNAV, BeiDou is D1
// or D2 by the satellite, Galileo by the data source bits.
enum class NavigationMessage : std::uint8_t {
    kLnav,  // GPS, QZSS
    kCnav,  // GPS, QZSS
    kCnv2,  // GPS, QZSS CNAV-2; BeiDou B-CNAV2
    kCnv1,  // BeiDou B-CNAV1
    kCnv3,  // BeiDou B-CNAV3
    kD1,
    kD2,
    kInav,
    kFnav,
    kFdma  // GLONASS
};

// "LNAV" and so on, as RINEX 4 writes it.
const char* MessageName(NavigationMessage message);

// Keplerian elements of GPS, Galileo, BeiDou and QZSS. Times are in the time scale of the system
// (GPS, Galileo and QZSS time agree with GPS time; BDT is 14 s behind); weeks count from 1980-01-06
// for every system, BeiDou too.
struct KeplerRecord {
    SatelliteId satellite;
    NavigationMessage message = NavigationMessage::kLnav;
    std::int32_t tocWeek = 0;   // clock reference
    double tocSeconds = 0.0;    // seconds of the week
    double af0 = 0.0;           // s
    double af1 = 0.0;           // s/s
    double af2 = 0.0;           // s/s^2
    double sqrtA = 0.0;         // m^0.5
    double eccentricity = 0.0;  // none
    double i0 = 0.0;            // rad
    double omega0 = 0.0;        // rad, longitude of the ascending node
    double omega = 0.0;         // rad, argument of perigee
    double m0 = 0.0;            // rad
    double deltaN = 0.0;        // rad/s
    double omegaDot = 0.0;      // rad/s
    double idot = 0.0;          // rad/s
    double crc = 0.0;           // m
    double crs = 0.0;           // m
    double cuc = 0.0;           // rad
    double cus = 0.0;           // rad
    double cic = 0.0;           // rad
    double cis = 0.0;           // rad
    std::int32_t toeWeek = 0;   // orbit reference
    double toeSeconds = 0.0;    // seconds of the week
    double aDot = 0.0;          // m/s; CNAV family only, else 0
    double deltaNDot = 0.0;     // rad/s^2; CNAV family only, else 0
    bool hasRates = false;      // aDot and deltaNDot belong to the message
    double iode = 0.0;        // IODE, IODnav (Galileo), AODE (BeiDou); 0 where the message has none
    double iodc = 0.0;        // IODC, AODC (BeiDou)
    double accuracy = 0.0;    // m (URA, SISA); the URAI number of ED for the CNAV family
    std::int32_t health = 0;  // as broadcast, 0 usable
    std::int32_t codesOnL2 = 0;    // GPS, QZSS
    std::int32_t dataSources = 0;  // Galileo: bit 0 I/NAV E1-B, 1 F/NAV E5a-I, 2 I/NAV E5b-I
    std::int32_t l2PFlag = 0;      // GPS
    double groupDelay1 = 0.0;      // s: TGD; BGD E5a/E1 (Galileo); TGD1 B1/B3 (BeiDou)
    double groupDelay2 = 0.0;      // s: BGD E5b/E1 (Galileo); TGD2 B2/B3 (BeiDou); else 0
    double transmitTime = 0.0;     // seconds of the week, as in the file
    double fitInterval = 0.0;      // hours, as in the file; 0 when blank
    std::uint32_t line = 0;        // of the record's first line
};

// GLONASS state vector in the frame of the broadcast (PZ-90), kilometres and seconds. The reference
// is the UTC date and time of the record, counted in weeks and seconds from 1980-01-06 as if UTC
// had no leap seconds.
struct GlonassRecord {
    std::uint8_t slot = 0;
    std::int32_t referenceWeek = 0;        // UTC
    double referenceSeconds = 0.0;         // UTC, seconds of the week
    std::int32_t leapSeconds = 0;          // GPS minus UTC on that day
    double clockBias = 0.0;                // s, -TauN: to be added like af0
    double clockDrift = 0.0;               // s/s, +GammaN
    double messageFrameTime = 0.0;         // s, of the UTC day (RINEX 2) or week, as in the file
    std::array<double, 3> position{};      // km
    std::array<double, 3> velocity{};      // km/s
    std::array<double, 3> acceleration{};  // km/s^2, of sun and moon
    std::int32_t health = 0;               // Bn, 0 usable
    std::int32_t channel = 0;              // -7 to 13
    double age = 0.0;                      // days
    std::uint32_t line = 0;
};

enum class IonosphereModel : std::uint8_t { kKlobuchar, kNequick, kBdgim };

// Ionosphere coefficients of one system, in the order met.
struct IonosphereSet {
    GnssSystem system = GnssSystem::kGps;
    IonosphereModel model = IonosphereModel::kKlobuchar;
    // Klobuchar: alpha0-3 (s, s/semicircle, ...) and beta0-3. NeQuick: ai0-2 in alpha[0..2].
    std::array<double, 4> alpha{};
    std::array<double, 4> beta{};
    std::array<double, 9> bdgim{};  // TECu, BDGIM only
    bool hasAlpha = false;
    bool hasBeta = false;
    std::optional<GpsTime> transmitTime;  // RINEX 4; in the time scale of the system
    std::uint32_t line = 0;
};

struct Navigation {
    std::string file;
    double version = 0.0;
    std::vector<KeplerRecord> kepler;    // in the order of the file, healthy or not
    std::vector<GlonassRecord> glonass;  // in the order of the file
    std::vector<IonosphereSet> ionosphere;
    std::optional<int> leapSeconds;  // GPS minus UTC, from the header
    // Records read over because nothing here uses them, by name: "SBAS", "NavIC", "R L1OC",
    // "STO", "EOP", ...
    std::map<std::string, std::size_t> leftAside;
    // Records dropped because their numbers cannot be: unreadable fields, dates that do not exist,
    // missing lines. Each with line and reason (at most kMaximumNotes are kept).
    std::size_t droppedCount = 0;
    std::vector<InputNote> dropped;
    std::vector<InputNote> notes;
};

// Throws InputError: wrong kind, unsupported version, a header that cannot be, a file cut off in a
// record, or no record that can be read although there are some.
Navigation ReadNavigation(LineCursor& text);

// The same of a text in memory.
inline Navigation ReadNavigation(std::string_view bytes, const std::string& name) {
    LineCursor text(bytes, name);
    return ReadNavigation(text);
}

}  // namespace vornel::io
