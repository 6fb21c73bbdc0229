// What a user can set, as one table: the command line, the TOML file, the printed configuration and
// the JSON output are all made from it.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <numbers>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/satellites.h"
#include "io/gnss_time.h"

namespace vornel::session {

enum class EphemerisChoice { kAutomatic, kBroadcast, kPrecise };

// A satellite left out, whole or between two times (GPS time, both ends inside).
struct Exclusion {
    engine::Satellite satellite;
    std::optional<io::GpsTime> start;
    std::optional<io::GpsTime> end;
    std::string text;  // as the user wrote it
};

// The engine's, in degrees.
inline constexpr double kDefaultElevationMask = 15.0;
static_assert(kDefaultElevationMask * std::numbers::pi / 180.0 == VORNEL_DEFAULT_ELEVATION_MASK);

struct Settings {
    // Handed to the engine.
    int solveMode = VORNEL_DEFAULT_SLVMODE;
    double elevationMask = kDefaultElevationMask;  // degrees
    std::optional<double> samplingInterval;        // s; empty: that of the data
    int minEpochs = VORNEL_DEFAULT_MIN_EPOCHS;
    double shortBaselineLimit = VORNEL_DEFAULT_SHORT_BASELINE_LIMIT;  // m
    double maxFixBaseline = VORNEL_DEFAULT_MAX_FIX_BASELINE;          // m
    EphemerisChoice ephemerisSource = EphemerisChoice::kAutomatic;
    std::array<bool, engine::kSystemCount> systems = {true, true, true, true};
    double outlierFactor = VORNEL_DEFAULT_OUTLIER_FACTOR;
    double slipTestCap = VORNEL_DEFAULT_SLIP_TEST_CAP;  // cycles
    double ratioThreshold = VORNEL_DEFAULT_RATIO_THRESHOLD;
    double phaseStd = VORNEL_DEFAULT_PHASE_STD;          // cycles of GPS L1
    double periodLength = VORNEL_DEFAULT_PERIOD_LENGTH;  // s
    int tropoModel = VORNEL_DEFAULT_TROPO_MODEL;
    double pressure = VORNEL_DEFAULT_PRESSURE;        // hPa
    double temperature = VORNEL_DEFAULT_TEMPERATURE;  // degrees Celsius
    double humidity = VORNEL_DEFAULT_HUMIDITY;        // percent
    std::optional<int> galFreq1;                      // empty: E1
    std::optional<int> galFreq2;  // empty: the first of E5a, E5b, E5, E6 that both receivers have
    std::vector<Exclusion> exclusions;

    // The host's own.
    std::optional<std::array<double, 3>> baseXyz;   // m
    std::optional<std::array<double, 3>> roverXyz;  // m
    std::optional<double> baseHeight;               // m, antenna reference point above the marker
    std::optional<double> roverHeight;              // m
    bool noIonosphere = false;
    bool trustCode = false;
    std::optional<io::GpsTime> start;  // GPS time
    std::optional<io::GpsTime> end;
    double interval = 0.0;     // s; 0: every epoch
    bool strict = false;       // refuse a file with damage instead of leaving the damage out
    double unpackLimit = 4.0;  // GiB that all files together may unpack to
};

// A value that cannot be taken; the text tells what would be.
class SettingError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct SettingSpec {
    const char* name;         // "elevation-mask": the option, and the key in TOML
    const char* engineField;  // "elevationMask": its name in the engine; "" for the host's own
    const char* argument;     // "DEG"; "" for a switch
    int words;                // how many words the option takes: 0 a switch, 1, 3
    bool repeatable;
    const char* group;  // heading in the help
    const char* help;
    // Takes the words (of one use). Throws SettingError.
    std::function<void(Settings&, std::span<const std::string>)> set;
    // The value as TOML; empty when it is not set.
    std::function<std::string(const Settings&)> toml;
};

const std::vector<SettingSpec>& AllSettings();

// By the option's name or the engine's field name. Null when there is none.
const SettingSpec* FindSetting(const std::string& name);

// The nearest name of a setting, for "did you mean": one that holds `name`, else by edit distance.
std::string NearestSettingName(const std::string& name);

// Where a value came from: "default", "option", "file NAME:LINE", or "data: REASON".
struct SettingOrigin {
    std::string kind;    // "default", "option", "file", "data"
    std::string detail;  // the file and line, or the reason
};

struct ConfiguredSettings {
    Settings values;
    std::map<std::string, SettingOrigin> origins;  // by SettingSpec::name; absent: default
};

// "2020-06-25T00:10:00", "2020-06-25 00:10", "2020/06/25 00:10:00.5" or "2111:345600" (GPS week and
// seconds), in GPS time. Throws SettingError.
io::GpsTime ParseTime(const std::string& text);

// "G05" or "G05@START/END"; either end may be missing. Throws SettingError.
Exclusion ParseExclusion(const std::string& text);

}  // namespace vornel::session
