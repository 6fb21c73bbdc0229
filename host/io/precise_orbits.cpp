// SP3: fixed columns; kilometres and microseconds. Lines are told apart by their first characters.
#include "io/precise_orbits.h"

#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include "io/text_fields.h"

namespace vornel::io {
namespace {

constexpr std::size_t kNumberWidth = 14;
constexpr double kMissingClock = 999999.0;  // microseconds; written 999999.999999
constexpr double kAbsent = std::numeric_limits<double>::quiet_NaN();

class OrbitReader {
  public:
    explicit OrbitReader(LineCursor& text) : cursor_(text), seriesOf_(kSystemCount * 100, kNone) {
        data_.file = text.file();
    }

    PreciseOrbits Read() {
        ReadFirstLine();
        while (!ended_ && cursor_.Next()) {
            ReadLine();
        }
        if (!ended_) {
            RequireWhole();
        } else if (data_.epochs.size() < announcedEpochs_) {
            data_.notes.push_back({1, "the header announces " + std::to_string(announcedEpochs_) +
                                          " epochs, the file has " +
                                          std::to_string(data_.epochs.size())});
        }
        return std::move(data_);
    }

  private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    void ReadFirstLine() {
        if (!cursor_.Next()) {
            throw InputError(InputFault::kEmpty, cursor_.file(), 0, "the file is empty",
                             "fetch the file again");
        }
        const std::string_view line = cursor_.line();
        if (line.size() < 3 || line[0] != '#') {
            cursor_.Refuse(InputFault::kWrongKind, "the first line is not that of an SP3 file",
                           "give an SP3 file");
        }
        if (line[1] == ' ') {
            data_.version = 'a';
            data_.notes.push_back({1, "no version letter; read as version a"});
        } else if (std::string_view("abcd").find(line[1]) == std::string_view::npos) {
            cursor_.Refuse(InputFault::kUnsupportedVersion,
                           "SP3 version " + Quote(line.substr(1, 1)) + " is not read",
                           "the versions a, b, c and d are");
        } else {
            data_.version = line[1];
        }
        const auto count = ParseInteger(Field(line, 32, 7));
        if (!count || *count < 0) {
            cursor_.RefuseField("the number of epochs " + Quote(Trim(Field(line, 32, 7))) +
                                " is no count");
        }
        announcedEpochs_ = static_cast<std::size_t>(*count);
        data_.coordinateSystem = Trim(Field(line, 46, 5));
        data_.agency = Trim(Field(line, 56, 4));
    }

    void ReadLine() {
        const std::string_view line = cursor_.line();
        const auto starts = [&](std::string_view mark) {
            return line.substr(0, mark.size()) == mark;
        };
        if (starts("P")) {
            ReadPosition();
        } else if (starts("*")) {
            ReadEpoch();
        } else if (starts("EOF")) {
            ended_ = true;
        } else if (starts("##")) {
            ReadInterval();
        } else if (starts("%c")) {
            ReadTimeSystem();
        } else if (starts("+ ")) {
            ReadSatelliteCount();
        } else if (!(starts("+") || starts("%") || starts("/*") || starts("V") || starts("EP") ||
                     starts("EV") || Trim(line).empty())) {
            cursor_.RefuseField("no record of SP3 in " + Quote(line));
        }
    }

    void ReadInterval() {
        const auto interval = ParseReal(Field(cursor_.line(), 24, 14));
        if (!interval || *interval < 0.0) {
            cursor_.RefuseField("the interval " + Quote(Trim(Field(cursor_.line(), 24, 14))) +
                                " is no number of seconds");
        }
        data_.interval = *interval;
    }

    // Only the first of the two lines names the time system; version a has "ccc" there.
    void ReadTimeSystem() {
        if (timeSystemKnown_) {
            return;
        }
        timeSystemKnown_ = true;
        const std::string_view letters = Trim(Field(cursor_.line(), 9, 3));
        if (letters == "ccc" || letters.empty()) {
            return;
        }
        const auto system = ParseTimeSystem(letters);
        if (!system) {
            cursor_.RefuseField("unknown time system " + Quote(letters));
        }
        data_.timeSystem = *system;
    }

    void ReadSatelliteCount() {
        if (!announcedSatellites_) {
            announcedSatellites_ = ParseInteger(Field(cursor_.line(), 3, 3));
        }
    }

    void ReadEpoch() {
        const std::string_view line = cursor_.line();
        const auto year = ParseInteger(Field(line, 3, 4));
        std::array<std::optional<int>, 4> parts;
        for (std::size_t i = 0; i < 4; ++i) {
            parts[i] = ParseInteger(Field(line, 8 + 3 * i, 2));
        }
        const auto second = ParseReal(Field(line, 20, 11));
        const bool complete = year && parts[0] && parts[1] && parts[2] && parts[3] && second;
        const auto reading =
            complete ? FromCalendar({*year, *parts[0], *parts[1], *parts[2], *parts[3], *second})
                     : std::nullopt;
        if (!reading) {
            cursor_.RefuseField("no date and time of an epoch in " + Quote(line));
        }
        const GpsTime time = ToGpsTime(*reading, data_.timeSystem);
        if (!data_.epochs.empty() && time <= data_.epochs.back()) {
            cursor_.RefuseField("the epoch " + FormatTime(time, 0) +
                                " does not come after the one before it");
        }
        data_.epochs.push_back(time);
        inEpoch_ = 0;
    }

    void ReadPosition() {
        if (data_.epochs.empty()) {
            cursor_.RefuseField("a position before the first epoch");
        }
        ++inEpoch_;
        const std::string_view field = Field(cursor_.line(), 1, 3);
        if (!field.empty() && field.front() >= 'A' && field.front() <= 'Z' &&
            !SystemOfLetter(field.front())) {
            return;  // low orbiters and the like
        }
        const auto satellite = ParseSatellite(field, GnssSystem::kGps);
        if (!satellite) {
            cursor_.RefuseField("no satellite in " + Quote(field));
        }
        OrbitPoint point;
        point.epoch = static_cast<std::uint32_t>(data_.epochs.size() - 1);
        bool allZero = true;
        for (std::size_t i = 0; i < 3; ++i) {
            const double kilometres = ReadNumber(4 + kNumberWidth * i, "position");
            allZero = allZero && kilometres == 0.0;
            point.position[i] = kilometres * 1000.0;
        }
        if (allZero) {
            point.position = {kAbsent, kAbsent, kAbsent};
        }
        point.clock = ReadClock();
        AddPoint(*satellite, point);
    }

    double ReadNumber(std::size_t start, const char* what) const {
        const std::string_view field = Field(cursor_.line(), start, kNumberWidth);
        const auto value = ParseReal(field);
        const bool cutOff = !cursor_.terminated() && field.size() < kNumberWidth;
        if (!value || cutOff) {
            cursor_.RefuseField(std::string("the ") + what + ' ' + Quote(Trim(field)) +
                                (cutOff ? " is cut off" : " is not a number"));
        }
        return *value;
    }

    double ReadClock() const {
        constexpr std::size_t kStart = 46;
        if (IsBlank(Field(cursor_.line(), kStart, kNumberWidth)) && cursor_.terminated()) {
            return kAbsent;
        }
        const double microseconds = ReadNumber(kStart, "clock");
        return std::abs(microseconds) >= kMissingClock ? kAbsent : microseconds * 1e-6;
    }

    void AddPoint(SatelliteId satellite, const OrbitPoint& point) {
        std::size_t& place =
            seriesOf_[static_cast<std::size_t>(satellite.system) * 100 + satellite.number];
        if (place == kNone) {
            place = data_.satellites.size();
            data_.satellites.push_back({satellite, {}});
        }
        auto& points = data_.satellites[place].points;
        if (!points.empty() && points.back().epoch == point.epoch) {
            cursor_.RefuseField("satellite " + ToString(satellite) + " stands twice in the epoch");
        }
        points.push_back(point);
    }

    // Without EOF the file may have been cut off; it is taken when all that it announces is there.
    void RequireWhole() {
        const bool allEpochs = !data_.epochs.empty() && data_.epochs.size() >= announcedEpochs_;
        const bool allSatellites = inEpoch_ > 0 && inEpoch_ >= announcedSatellites_.value_or(0);
        if (!allEpochs || !allSatellites) {
            cursor_.Refuse(InputFault::kTruncated,
                           "the file ends without EOF after " +
                               std::to_string(data_.epochs.size()) + " of " +
                               std::to_string(announcedEpochs_) + " epochs",
                           "fetch the file again");
        }
        data_.notes.push_back({cursor_.number(), "the EOF line is missing"});
    }

    LineCursor& cursor_;
    PreciseOrbits data_;
    std::size_t announcedEpochs_ = 0;
    std::optional<int> announcedSatellites_;
    int inEpoch_ = 0;  // positions of the epoch at hand
    bool timeSystemKnown_ = false;
    bool ended_ = false;
    std::vector<std::size_t> seriesOf_;  // place in data_.satellites by system and number
};

}  // namespace

PreciseOrbits ReadPreciseOrbits(LineCursor& text) {
    return OrbitReader(text).Read();
}

}  // namespace vornel::io
