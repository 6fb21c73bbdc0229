// SINEX: fixed columns within named blocks. Times are YY:DDD:SSSSS; the scale (UTC or GPS time) does
// not matter at the pace of stations.
#include "io/station_coordinates.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>

#include "io/text_fields.h"

namespace vornel::io {
namespace {

// Columns of the format, from 0.
struct Column {
    std::size_t start;
    std::size_t width;
};
constexpr Column kVersion{6, 4}, kAgency{11, 3};
constexpr Column kSiteCode{1, 4}, kSitePoint{6, 2}, kSiteDomes{9, 9};
constexpr Column kEpochCode{1, 4}, kEpochPoint{6, 2}, kEpochSolution{9, 4};
constexpr Column kEpochStart{16, 12}, kEpochEnd{29, 12};
constexpr Column kType{7, 6}, kCode{14, 4}, kPoint{19, 2}, kSolution{22, 4}, kReference{27, 12};
constexpr Column kUnit{40, 4}, kValue{47, 21}, kDeviation{69, 11};

constexpr const char* kFetchAgain = "fetch the file again";

// A solution as its lines come in, one for each coordinate.
struct Collected {
    SiteSolution solution;
    std::array<bool, 3> position{};
    std::array<bool, 3> velocity{};
    std::array<double, 3> velocities{};  // m a year
};

class CoordinateReader {
  public:
    explicit CoordinateReader(LineCursor& text) : cursor_(text) { data_.file = text.file(); }

    StationCoordinates Read() {
        ReadFirstLine();
        while (!ended_ && cursor_.Next()) {
            ReadLine();
        }
        if (!ended_) {
            RequireWhole();
        }
        Finish();
        return std::move(data_);
    }

  private:
    using Place = std::tuple<std::string, std::string, std::string>;  // site, point, solution

    std::string_view Of(const Column& column) const {
        return Field(cursor_.line(), column.start, column.width);
    }
    std::string Word(const Column& column) const { return std::string(Trim(Of(column))); }

    void ReadFirstLine() {
        if (!cursor_.Next()) {
            throw InputError(InputFault::kEmpty, cursor_.file(), 0, "the file is empty",
                             kFetchAgain);
        }
        if (cursor_.line().substr(0, 5) != "%=SNX") {
            cursor_.Refuse(InputFault::kWrongKind, "the first line is not that of a SINEX file",
                           "give a SINEX file");
        }
        const std::string_view text = Trim(Of(kVersion));
        const auto version = ParseReal(text);
        const bool isRead = version && *version > 0.99 && *version < 2.11;
        if (!isRead) {
            cursor_.Refuse(version ? InputFault::kUnsupportedVersion : InputFault::kMalformed,
                           "SINEX version " + Quote(text) + " is not read",
                           "the versions 1.00 to 2.10 are");
        }
        data_.version = *version;
        data_.agency = Word(kAgency);
    }

    void ReadLine() {
        const std::string_view line = cursor_.line();
        const char mark = line.empty() ? '*' : line.front();
        if (mark == '+') {
            block_ = Trim(line.substr(1));
        } else if (mark == '-') {
            block_.clear();
        } else if (mark == '%') {
            ended_ = line.substr(0, 7) == "%ENDSNX";
        } else if (mark == ' ') {
            ReadRecord();
        }
    }

    void ReadRecord() {
        if (block_ == "SOLUTION/ESTIMATE") {
            ReadEstimate();
        } else if (block_ == "SOLUTION/EPOCHS") {
            ReadSpan();
        } else if (block_ == "SITE/ID") {
            const std::string number = Word(kSiteDomes);
            if (number.find_first_not_of('-') != std::string::npos) {
                domes_.try_emplace({Word(kSiteCode), Word(kSitePoint)}, number);
            }
        }
    }

    // Empty for 00:000:00000, which stands for no bound. Years from 51 on are those of 1900; dates
    // before 1980-01-06 are that day.
    std::optional<GpsTime> ReadTime(const Column& column) const {
        const std::string_view field = Of(column);
        const auto year = ParseInteger(Field(field, 0, 2));
        const auto day = ParseInteger(Field(field, 3, 3));
        const auto second = ParseInteger(Field(field, 7, 5));
        const bool complete = year && day && second && field.size() == column.width &&
                              field[2] == ':' && field[6] == ':';
        constexpr int kMostDays = 366, kMostSeconds = 86400;
        if (!complete || *year < 0 || *day < 0 || *day > kMostDays || *second < 0 ||
            *second > kMostSeconds) {
            cursor_.RefuseField("no time YY:DDD:SSSSS in " + Quote(Trim(field)));
        }
        if (*year == 0 && *day == 0 && *second == 0) {
            return std::nullopt;
        }
        const int fullYear = *year + (*year > 50 ? 1900 : 2000);
        if (fullYear < 1980) {
            return GpsTime{0, 0.0};
        }
        constexpr int kJanuaryOf1980 = 5;  // days before the origin of GPS time
        const auto start = fullYear == 1980 ? std::optional(GpsTime{0, 0.0})
                                            : FromCalendar({fullYear, 1, 1, 0, 0, 0.0});
        const double seconds =
            (*day - 1 - (fullYear == 1980 ? kJanuaryOf1980 : 0)) * kSecondsPerDay + *second;
        return seconds < 0.0 && fullYear == 1980 ? GpsTime{0, 0.0} : Shifted(*start, seconds);
    }

    void ReadSpan() {
        const Place place{Word(kEpochCode), Word(kEpochPoint), Word(kEpochSolution)};
        spans_.try_emplace(place, ReadTime(kEpochStart), ReadTime(kEpochEnd));
    }

    void ReadEstimate() {
        const std::string type = Word(kType);
        for (const char* term : {"AEXP", "TEXP", "ALOG", "TLOG"}) {
            if (type.compare(0, 4, term) == 0) {
                postSeismic_.insert({Word(kCode), Word(kPoint)});
            }
        }
        const bool isPosition = type == "STAX" || type == "STAY" || type == "STAZ";
        const bool isVelocity = type == "VELX" || type == "VELY" || type == "VELZ";
        if (!isPosition && !isVelocity) {
            return;
        }
        const std::string unit = Word(kUnit);
        if (unit != (isPosition ? "m" : "m/y")) {
            cursor_.RefuseField("the unit of " + type + " is " + Quote(unit));
        }
        const double value = ReadNumber(kValue, "value");
        const double deviation =
            IsBlank(Of(kDeviation)) ? 0.0 : ReadNumber(kDeviation, "standard deviation");
        const auto reference = ReadTime(kReference);
        if (!reference) {
            cursor_.RefuseField("a coordinate without a time");
        }
        Collected& all = CollectedAt({Word(kCode), Word(kPoint), Word(kSolution)}, *reference);
        const auto axis = static_cast<std::size_t>(type[3] - 'X');
        bool& given = isPosition ? all.position[axis] : all.velocity[axis];
        if (given) {
            cursor_.RefuseField(type + " of " + all.solution.site + " stands twice");
        }
        given = true;
        if (isPosition) {
            all.solution.reference = *reference;
            all.solution.position[axis] = value;
            all.solution.positionSigma[axis] = deviation;
        } else {
            all.velocities[axis] = value;
            all.solution.velocitySigma[axis] = deviation;
        }
    }

    double ReadNumber(const Column& column, const char* what) const {
        const auto value = ParseReal(Of(column));
        if (!value) {
            cursor_.RefuseField(std::string("the ") + what + ' ' + Quote(Trim(Of(column))) +
                                " is not a number");
        }
        return *value;
    }

    Collected& CollectedAt(const Place& place, const GpsTime& reference) {
        const auto [found, isNew] = places_.try_emplace(place, collected_.size());
        if (isNew) {
            Collected& fresh = collected_.emplace_back();
            fresh.solution.site = std::get<0>(place);
            fresh.solution.point = std::get<1>(place);
            fresh.solution.solution = std::get<2>(place);
            fresh.solution.reference = reference;
            fresh.solution.line = static_cast<std::uint32_t>(cursor_.number());
        }
        return collected_[found->second];
    }

    void RequireWhole() {
        if (!block_.empty()) {
            cursor_.Refuse(InputFault::kTruncated, "the file ends within the block " + block_,
                           kFetchAgain);
        }
        data_.notes.push_back({cursor_.number(), "the line %ENDSNX is missing"});
    }

    void Note(std::size_t line, std::string text) {
        if (data_.notes.size() < kMaximumNotes) {
            data_.notes.push_back({line, std::move(text)});
        }
    }

    void Finish() {
        const auto all = [](const std::array<bool, 3>& given) {
            return given[0] && given[1] && given[2];
        };
        for (Collected& one : collected_) {
            SiteSolution& solution = one.solution;
            if (!all(one.position)) {
                Note(solution.line, "site " + solution.site + " without all of STAX, STAY, STAZ");
                continue;
            }
            if (all(one.velocity)) {
                solution.velocity = one.velocities;
            }
            const std::pair site(solution.site, solution.point);
            if (const auto found = domes_.find(site); found != domes_.end()) {
                solution.domes = found->second;
            }
            solution.postSeismic = postSeismic_.contains(site);
            const auto span = spans_.find({solution.site, solution.point, solution.solution});
            if (span != spans_.end()) {
                std::tie(solution.from, solution.until) = span->second;
            }
            data_.solutions.push_back(std::move(solution));
        }
        if (data_.solutions.empty()) {
            throw InputError(InputFault::kWrongKind, cursor_.file(), 0,
                             "the SINEX file has no coordinates of stations",
                             "give one with STAX, STAY and STAZ in SOLUTION/ESTIMATE");
        }
    }

    LineCursor& cursor_;
    StationCoordinates data_;
    std::string block_;  // that the line at hand stands in
    bool ended_ = false;
    std::vector<Collected> collected_;
    std::map<Place, std::size_t> places_;  // in collected_
    std::map<Place, std::pair<std::optional<GpsTime>, std::optional<GpsTime>>> spans_;
    std::map<std::pair<std::string, std::string>, std::string> domes_;  // by site and point
    std::set<std::pair<std::string, std::string>> postSeismic_;
};

}  // namespace

StationCoordinates ReadStationCoordinates(LineCursor& text) {
    return CoordinateReader(text).Read();
}

}  // namespace vornel::io
