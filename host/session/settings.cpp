#include "session/settings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numeric>

namespace vornel::session {
namespace {

using Words = std::span<const std::string>;

double ParseNumber(const std::string& text) {
    double value = 0.0;
    const char* begin = text.data();
    const char* end = begin + text.size();
    if (begin != end && *begin == '+') {
        ++begin;
    }
    const auto [stop, error] = std::from_chars(begin, end, value);
    if (error != std::errc() || stop != end || !std::isfinite(value)) {
        throw SettingError("'" + text + "' is not a number");
    }
    return value;
}

// The shortest text that reads back as the same number, always with a decimal point or exponent,
// so that TOML takes it for a float.
std::string Number(double value) {
    char text[64];
    const auto result = std::to_chars(text, text + sizeof text, value);
    std::string written(text, result.ptr);
    if (written.find_first_of(".en") == std::string::npos) {
        written += ".0";
    }
    return written;
}

std::string Quoted(const std::string& text) {
    return "\"" + text + "\"";
}

double ParseWithin(const std::string& text, double low, double high, const char* unit) {
    const double value = ParseNumber(text);
    if (value < low || value > high) {
        throw SettingError("'" + text + "' is outside " + Number(low) + " to " + Number(high) +
                           (*unit != '\0' ? std::string(" ") + unit : std::string()));
    }
    return value;
}

int ParseInteger(const std::string& text, int low, int high) {
    int value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || stop != text.data() + text.size()) {
        throw SettingError("'" + text + "' is not a whole number");
    }
    if (value < low || value > high) {
        throw SettingError("'" + text + "' is outside " + std::to_string(low) + " to " +
                           std::to_string(high));
    }
    return value;
}

bool ParseSwitch(Words words) {
    if (words.empty() || words[0] == "true") {
        return true;
    }
    if (words[0] == "false") {
        return false;
    }
    throw SettingError("'" + words[0] + "' is neither true nor false");
}

std::array<double, 3> ParsePosition(Words words) {
    std::array<double, 3> xyz{};
    for (std::size_t i = 0; i < 3; ++i) {
        xyz[i] = ParseNumber(words[i]);
    }
    const double radius = std::hypot(xyz[0], xyz[1], xyz[2]);
    constexpr double kLow = 6.3e6, kHigh = 6.5e6;  // m: from the poles to 120 km up
    if (radius < kLow || radius > kHigh) {
        throw SettingError("X Y Z lie " + Number(std::round(radius / 1000.0)) +
                           " km from the earth's centre; give earth-centred coordinates in metres");
    }
    return xyz;
}

std::array<bool, engine::kSystemCount> ParseSystems(const std::string& text) {
    std::array<bool, engine::kSystemCount> systems = {false, false, false, false};
    for (const char letter : text) {
        if (letter == ',' || letter == ' ') {
            continue;
        }
        const auto found = std::find_if(
            engine::kSystems.begin(), engine::kSystems.end(), [&](engine::System system) {
                return LetterOf(system) == std::toupper(static_cast<unsigned char>(letter));
            });
        if (found == engine::kSystems.end()) {
            throw SettingError("'" + text + "': letters are G (GPS), R (GLONASS), C (BeiDou), " +
                               "E (Galileo)");
        }
        systems[IndexOf(*found)] = true;
    }
    if (std::none_of(systems.begin(), systems.end(), [](bool on) { return on; })) {
        throw SettingError("no system is left; letters are G, R, C, E");
    }
    return systems;
}

EphemerisChoice ParseEphemeris(const std::string& text) {
    if (text == "auto") {
        return EphemerisChoice::kAutomatic;
    }
    if (text == "broadcast" || text == "0") {
        return EphemerisChoice::kBroadcast;
    }
    if (text == "precise" || text == "1") {
        return EphemerisChoice::kPrecise;
    }
    throw SettingError("'" + text + "' is none of auto, broadcast, precise");
}

std::string EphemerisName(EphemerisChoice choice) {
    switch (choice) {
        case EphemerisChoice::kAutomatic:
            return "auto";
        case EphemerisChoice::kBroadcast:
            return "broadcast";
        case EphemerisChoice::kPrecise:
            return "precise";
    }
    return "auto";
}

std::string TimeText(const io::GpsTime& time) {
    return io::FormatTime(time, 3);
}

// ---- makers of rows -----------------------------------------------------------------------------

// Bounds that a double setting keeps, in the unit of the option.
struct Range {
    double low;
    double high;
    const char* unit;
};

SettingSpec RealSetting(const char* name, const char* field, const char* argument,
                        const char* group, double Settings::*member, Range range,
                        const char* help) {
    return {name,
            field,
            argument,
            1,
            false,
            group,
            help,
            [member, range](Settings& s, Words w) {
                s.*member = ParseWithin(w[0], range.low, range.high, range.unit);
            },
            [member](const Settings& s) { return Number(s.*member); }};
}

SettingSpec OptionalReal(const char* name, const char* field, const char* argument,
                         const char* group, std::optional<double> Settings::*member, Range range,
                         const char* help) {
    return {
        name,
        field,
        argument,
        1,
        false,
        group,
        help,
        [member, range](Settings& s, Words w) {
            s.*member = ParseWithin(w[0], range.low, range.high, range.unit);
        },
        [member](const Settings& s) { return (s.*member) ? Number(*(s.*member)) : std::string(); }};
}

SettingSpec IntegerSetting(const char* name, const char* field, const char* argument,
                           const char* group, int Settings::*member, int low, int high,
                           const char* help) {
    return {
        name,
        field,
        argument,
        1,
        false,
        group,
        help,
        [member, low, high](Settings& s, Words w) { s.*member = ParseInteger(w[0], low, high); },
        [member](const Settings& s) { return std::to_string(s.*member); }};
}

SettingSpec BandSetting(const char* name, const char* field, std::optional<int> Settings::*member,
                        const char* help) {
    return {name,
            field,
            "1-5",
            1,
            false,
            "Signals and systems",
            help,
            [member](Settings& s, Words w) {
                s.*member = ParseInteger(w[0], VORNEL_GALILEO_E1, VORNEL_GALILEO_E6);
            },
            [member](const Settings& s) {
                return (s.*member) ? std::to_string(*(s.*member)) : std::string();
            }};
}

SettingSpec SwitchSetting(const char* name, const char* group, bool Settings::*member,
                          const char* help) {
    return {name,
            "",
            "",
            0,
            false,
            group,
            help,
            [member](Settings& s, Words w) { s.*member = ParseSwitch(w); },
            [member](const Settings& s) { return std::string(s.*member ? "true" : "false"); }};
}

SettingSpec PositionSetting(const char* name,
                            std::optional<std::array<double, 3>> Settings::*member,
                            const char* help) {
    return {name,
            "",
            "X Y Z",
            3,
            false,
            "Stations",
            help,
            [member](Settings& s, Words w) { s.*member = ParsePosition(w); },
            [member](const Settings& s) {
                if (!(s.*member)) {
                    return std::string();
                }
                const auto& xyz = *(s.*member);
                std::string list("[");
                return list.append(Number(xyz[0]) + ", " + Number(xyz[1]) + ", ")
                    .append(Number(xyz[2]) + "]");
            }};
}

SettingSpec TimeSetting(const char* name, std::optional<io::GpsTime> Settings::*member,
                        const char* help) {
    return {name,
            "",
            "TIME",
            1,
            false,
            "Time",
            help,
            [member](Settings& s, Words w) { s.*member = ParseTime(w[0]); },
            [member](const Settings& s) {
                return (s.*member) ? Quoted(TimeText(*(s.*member))) : std::string();
            }};
}

SettingSpec SystemsSetting() {
    return {"systems",
            "systems",
            "GRCE",
            1,
            false,
            "Signals and systems",
            "systems to use, by letter (GRCE)",
            [](Settings& s, Words w) { s.systems = ParseSystems(w[0]); },
            [](const Settings& s) {
                std::string letters;
                for (const engine::System system : engine::kSystems) {
                    if (s.systems[IndexOf(system)]) {
                        letters += LetterOf(system);
                    }
                }
                return Quoted(letters);
            }};
}

SettingSpec EphemerisSetting() {
    return {"ephemeris-source",
            "ephemerisSource",
            "WHICH",
            1,
            false,
            "Signals and systems",
            "auto, broadcast, precise (auto: SP3 when given)",
            [](Settings& s, Words w) { s.ephemerisSource = ParseEphemeris(w[0]); },
            [](const Settings& s) { return Quoted(EphemerisName(s.ephemerisSource)); }};
}

SettingSpec ExclusionSetting() {
    return {"exclude",
            "",
            "SAT[@START/END]",
            1,
            true,
            "Signals and systems",
            "leave a satellite out, whole or for a span",
            [](Settings& s, Words w) { s.exclusions.push_back(ParseExclusion(w[0])); },
            [](const Settings& s) {
                std::string list;
                for (const Exclusion& exclusion : s.exclusions) {
                    list += (list.empty() ? "[" : ", ") + Quoted(exclusion.text);
                }
                return list.empty() ? list : list + "]";
            }};
}

constexpr double kAnyLength = 1e8;  // m
constexpr double kADay = 86400.0;

std::vector<SettingSpec> MakeSettings() {
    using S = Settings;
    const char* model = "Model";
    const char* tuning = "Fine tuning";
    const char* stations = "Stations";
    return {
        IntegerSetting("solve-mode", "slvmode", "0-6", model, &S::solveMode, VORNEL_MODEL_AUTOMATIC,
                       VORNEL_MODEL_IONO_FREE, "0 auto 1 L1 2 L2 3 both 4 sum 5 wide 6 iono-free"),
        RealSetting("elevation-mask", "elevationMask", "DEG", model, &S::elevationMask,
                    {0.0, 90.0, "degrees"}, "elevation mask in degrees (15)"),
        SystemsSetting(),
        EphemerisSetting(),
        BandSetting("gal-freq1", "galFreq1", &S::galFreq1,
                    "Galileo: 1 E1, 2 E5a, 3 E5b, 4 E5, 5 E6 (1)"),
        BandSetting("gal-freq2", "galFreq2", &S::galFreq2,
                    "second Galileo signal (2, or what both have)"),
        ExclusionSetting(),
        SwitchSetting("no-iono", "Signals and systems", &S::noIonosphere,
                      "no broadcast ionosphere coefficients"),
        PositionSetting("base-xyz", &S::baseXyz, "position of the base marker, ECEF metres"),
        PositionSetting("rover-xyz", &S::roverXyz,
                        "approximate position of the rover, ECEF metres"),
        OptionalReal("base-height", "trueHgtB", "M", stations, &S::baseHeight,
                     {-100.0, 1000.0, "metres"}, "antenna height of the base (header)"),
        OptionalReal("rover-height", "trueHgtR", "M", stations, &S::roverHeight,
                     {-100.0, 1000.0, "metres"}, "antenna height of the rover (header)"),
        SwitchSetting("trust-code", stations, &S::trustCode,
                      "let the code observations place the base too"),
        TimeSetting("start", &S::start, "first epoch to use, GPS time"),
        TimeSetting("end", &S::end, "last epoch to use, GPS time"),
        RealSetting("interval", "", "S", "Time", &S::interval, {0.0, kADay, "seconds"},
                    "thin the observations to this interval"),
        SwitchSetting("strict", "Files", &S::strict, "refuse a file of which anything is damaged"),
        RealSetting("unpack-limit", "", "GIB", "Files", &S::unpackLimit, {0.001, 1e6, "GiB"},
                    "what all files together may unpack to (4)"),
        OptionalReal("sampling-interval", "samplingInterval", "S", "Time", &S::samplingInterval,
                     {0.001, kADay, "seconds"}, "interval told to the engine (that of the data)"),
        IntegerSetting("min-epochs", "minEpochs", "N", tuning, &S::minEpochs, 1, 1000000,
                       "fewest epochs of a period and of an arc (10)"),
        RealSetting("period-length", "periodLength", "S", tuning, &S::periodLength,
                    {1.0, 100.0 * kADay, "seconds"}, "length of a period in seconds (7200)"),
        RealSetting("short-baseline-limit", "shortBaselineLimit", "M", tuning,
                    &S::shortBaselineLimit, {0.0, kAnyLength, "metres"},
                    "below it automatic mode takes L1 alone (10000)"),
        RealSetting("max-fix-baseline", "maxFixBaseline", "M", tuning, &S::maxFixBaseline,
                    {0.0, kAnyLength, "metres"}, "modes 1 and 2 fix no longer baseline (30000)"),
        RealSetting("ratio-threshold", "ratioThreshold", "X", tuning, &S::ratioThreshold,
                    {0.0, VORNEL_GREATEST_RATIO, ""}, "acceptance ratio of ambiguity fixing (1.8)"),
        RealSetting("outlier-factor", "outlierFactor", "X", tuning, &S::outlierFactor,
                    {3.001, 1000.0, "standard deviations"},
                    "outliers lie beyond so many sigmas (3.5)"),
        RealSetting("slip-test-cap", "slipTestCap", "CYC", tuning, &S::slipTestCap,
                    {0.001, 10.0, "cycles"}, "upper bound of the slip test's tolerance (0.25)"),
        RealSetting("phase-std", "phaseStd", "CYC", tuning, &S::phaseStd, {1e-6, 10.0, "cycles"},
                    "carrier phase noise in cycles of GPS L1 (0.01)"),
        IntegerSetting("tropo-model", "tropoModel", "0-2", tuning, &S::tropoModel, 0, 2,
                       "0 Hopfield, 1 Saastamoinen, 2 none (1)"),
        RealSetting("pressure", "pressure", "HPA", tuning, &S::pressure, {500.001, 1999.999, "hPa"},
                    "surface pressure (1013.25)"),
        RealSetting("temperature", "temperature", "C", tuning, &S::temperature,
                    {-49.999, 99.999, "degrees Celsius"}, "surface temperature (15)"),
        RealSetting("humidity", "humidity", "PCT", tuning, &S::humidity, {0.001, 99.999, "percent"},
                    "relative humidity (50)"),
    };
}

std::size_t EditDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] =
                std::min({above + 1, row[j - 1] + 1,
                          diagonal + (a[i - 1] == b[j - 1] ? std::size_t{0} : std::size_t{1})});
            diagonal = above;
        }
    }
    return row.back();
}

}  // namespace

const std::vector<SettingSpec>& AllSettings() {
    static const std::vector<SettingSpec> settings = MakeSettings();
    return settings;
}

const SettingSpec* FindSetting(const std::string& name) {
    for (const SettingSpec& spec : AllSettings()) {
        if (name == spec.name || (*spec.engineField != '\0' && name == spec.engineField)) {
            return &spec;
        }
    }
    return nullptr;
}

std::string NearestSettingName(const std::string& name) {
    constexpr std::size_t kTelling = 3;  // letters that a part of a name must have
    std::string nearest;
    std::size_t best = std::numeric_limits<std::size_t>::max();
    for (const SettingSpec& spec : AllSettings()) {
        for (const std::string candidate : {spec.name, spec.engineField}) {
            if (candidate.empty()) {
                continue;
            }
            const bool part = name.size() >= kTelling && candidate.find(name) != std::string::npos;
            const std::size_t distance = part ? 0 : 1 + EditDistance(name, candidate);
            if (distance < best) {
                best = distance;
                nearest = candidate;
            }
        }
    }
    return nearest;
}

io::GpsTime ParseTime(const std::string& text) {
    const std::string help =
        "'" + text + "' is no time; write 2020-06-25T00:10:00 or WEEK:SECONDS, in GPS time";
    int week = 0;
    double seconds = 0.0;
    int used = 0;
    const int length = static_cast<int>(text.size());
    if (std::sscanf(text.c_str(), "%d:%lf%n", &week, &seconds, &used) == 2 && used == length &&
        text.find('-') == std::string::npos) {
        // A smaller week would be the hour of "12:00".
        constexpr int kFirstWeek = 100, kLastWeek = 6260;  // in 1981 and 2099
        if (week < kFirstWeek || week > kLastWeek ||
            !(seconds >= 0.0 && seconds < io::kSecondsPerWeek)) {
            throw SettingError(help);
        }
        return {week, seconds};
    }
    io::CalendarTime c;
    char dash1 = 0, dash2 = 0, gap = 0;
    used = 0;
    const int dateParts = std::sscanf(text.c_str(), "%4d%c%2d%c%2d%n", &c.year, &dash1, &c.month,
                                      &dash2, &c.day, &used);
    if (dateParts != 5 || dash1 != dash2 || (dash1 != '-' && dash1 != '/')) {
        throw SettingError(help);
    }
    if (used != length) {
        int more = 0;
        const char* rest = text.c_str() + used;
        const int withSeconds =
            std::sscanf(rest, "%c%2d:%2d:%lf%n", &gap, &c.hour, &c.minute, &c.second, &more);
        if (withSeconds != 4) {
            c.second = 0.0;
            more = 0;
            if (std::sscanf(rest, "%c%2d:%2d%n", &gap, &c.hour, &c.minute, &more) != 3) {
                throw SettingError(help);
            }
        }
        used += more;
        if (used != length || (gap != 'T' && gap != ' ' && gap != '_')) {
            throw SettingError(help);
        }
    }
    const auto time = io::FromCalendar(c);
    if (!time || c.second >= 60.0) {
        throw SettingError(help);
    }
    return *time;
}

Exclusion ParseExclusion(const std::string& text) {
    Exclusion exclusion;
    exclusion.text = text;
    const std::size_t at = text.find('@');
    const auto satellite = engine::ParseSatellite(text.substr(0, at));
    if (!satellite) {
        throw SettingError("'" + text.substr(0, at) +
                           "' is no satellite; write G05, R12, C08 or E30");
    }
    exclusion.satellite = *satellite;
    if (at == std::string::npos) {
        return exclusion;
    }
    std::string span = text.substr(at + 1);
    // A date may be written with slashes too, so the separator is the slash between the two halves:
    // the middle one of an odd number.
    const auto slashes = std::count(span.begin(), span.end(), '/');
    if (slashes % 2 == 0) {
        throw SettingError("'" + text + "': write " + ToString(*satellite) + "@START/END");
    }
    std::size_t middle = span.find('/');
    for (std::ptrdiff_t i = 0; i < slashes / 2; ++i) {
        middle = span.find('/', middle + 1);
    }
    const std::string first = span.substr(0, middle);
    const std::string last = span.substr(middle + 1);
    if (!first.empty()) {
        exclusion.start = ParseTime(first);
    }
    if (!last.empty()) {
        exclusion.end = ParseTime(last);
    }
    if (exclusion.start && exclusion.end && *exclusion.end < *exclusion.start) {
        throw SettingError("'" + text + "' ends before it starts");
    }
    return exclusion;
}

}  // namespace vornel::session
