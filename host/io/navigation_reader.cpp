// RINEX navigation of the versions 2, 3 and 4. A record is a first line (satellite, clock reference,
// clock) and lines of four numbers; which number is what depends on the message alone. Versions 2 and
// 3 tell the end of a record by the next one's first line, version 4 by lines that begin with '>'.
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "io/file_kind.h"
#include "io/navigation.h"
#include "io/rinex_version.h"
#include "io/text_fields.h"

namespace vornel::io {
namespace {

constexpr std::size_t kNumberWidth = 19;  // D19.12
constexpr std::size_t kMostLines = 10;    // of a record, CNV1 and CNV2
constexpr std::size_t kLineWidth = 96;    // kept of a line, which has 80 columns

// A line of a record, without what lies behind its last column.
struct RecordLine {
    std::string_view text;
    std::size_t number = 0;
    bool terminated = true;
};

// The columns of the first line and of the others.
struct RecordColumns {
    std::size_t year, yearWidth, month, second, secondWidth, firstNumbers, numbers;
};
constexpr RecordColumns kColumns2 = {3, 2, 6, 17, 5, 22, 3};
constexpr RecordColumns kColumns2Lettered = {4, 2, 7, 18, 5, 23, 4};  // with a system letter
constexpr RecordColumns kColumns3 = {4, 4, 9, 21, 2, 23, 4};

// Why a record is dropped. Caught within this file.
struct Dropped {
    std::size_t line;
    std::string reason;
};

// The numbers of a record, [line][column]; the first line has its three in the columns 1 to 3.
using Numbers = std::array<std::array<double, 4>, kMostLines>;

// Lines of a record after the first, of the messages that are read. 0 for all others.
std::size_t OrbitLines(NavigationMessage message, double version) {
    switch (message) {
        case NavigationMessage::kFdma:
            return version > 3.045 ? 4 : 3;
        case NavigationMessage::kCnav:
        case NavigationMessage::kCnv3:
            return 8;
        case NavigationMessage::kCnv1:
        case NavigationMessage::kCnv2:
            return 9;
        case NavigationMessage::kLnav:
        case NavigationMessage::kD1:
        case NavigationMessage::kD2:
        case NavigationMessage::kInav:
        case NavigationMessage::kFnav:
            break;
    }
    return 7;
}

bool IsBeiDouGeostationary(std::uint8_t number) {
    return number <= 5 || (number >= 59 && number <= 63);
}

std::int32_t ToCode(double value, const RecordLine& line, const char* what) {
    if (!(std::abs(value) < 1e9)) {
        throw Dropped{line.number, std::string(what) + " is out of range"};
    }
    return static_cast<std::int32_t>(std::lround(value));
}

class NavigationReader {
  public:
    explicit NavigationReader(LineCursor& text) : cursor_(text) { data_.file = text.file(); }

    Navigation Read() {
        ReadHeader();
        if (data_.version >= 4.0) {
            ReadRecords4();
        } else {
            ReadRecords();
        }
        RequireSomething();
        return std::move(data_);
    }

  private:
    // --- header

    void ReadHeader() {
        if (!cursor_.Next()) {
            throw InputError(InputFault::kEmpty, cursor_.file(), 0, "the file is empty");
        }
        ReadVersion();
        while (cursor_.Next()) {
            const std::string_view label = HeaderLabel(cursor_.line());
            if (label == "END OF HEADER") {
                return;
            }
            if (cursor_.line().substr(0, 1) == ">") {
                cursor_.Refuse(InputFault::kMalformed, "records begin before END OF HEADER");
            }
            ReadHeaderLine(label);
        }
        cursor_.Refuse(InputFault::kTruncated, "the file ends before END OF HEADER",
                       "fetch or export the file again");
    }

    void ReadVersion() {
        const std::string_view line = cursor_.line();
        if (RecogniseFile(line, cursor_.file()) != FileKind::kNavigation) {
            cursor_.Refuse(InputFault::kWrongKind, "it is no RINEX navigation file",
                           "give a RINEX navigation file");
        }
        data_.version = ReadRinexVersion(cursor_);
        fileSystem_ = SystemOfFile(line);
    }

    // The system of records without a letter, which only version 2 has.
    static GnssSystem SystemOfFile(std::string_view line) {
        switch (Field(line, 20, 1).front()) {
            case 'G':
                return GnssSystem::kGlonass;
            case 'E':
            case 'L':
                return GnssSystem::kGalileo;
            case 'H':
            case 'B':
                return GnssSystem::kSbas;
            case 'J':
                return GnssSystem::kQzss;
            default:
                break;
        }
        const std::string_view letter = Field(line, 40, 1);
        const auto system = letter.empty() ? std::nullopt : SystemOfLetter(letter.front());
        return system.value_or(GnssSystem::kGps);
    }

    void ReadHeaderLine(std::string_view label) {
        if (label == "ION ALPHA") {
            AddIonosphere(GnssSystem::kGps, false, 2);
        } else if (label == "ION BETA") {
            AddIonosphere(GnssSystem::kGps, true, 2);
        } else if (label == "IONOSPHERIC CORR") {
            ReadIonosphericCorrection();
        } else if (label == "LEAP SECONDS") {
            const auto leap = ParseInteger(Field(cursor_.line(), 0, 6));
            const bool fromBdt = Trim(Field(cursor_.line(), 24, 3)) == "BDS";
            data_.leapSeconds = leap && fromBdt ? std::optional(*leap + 14) : leap;
        } else if (label == "RINEX VERSION / TYPE") {
            cursor_.Refuse(InputFault::kMalformed, "a second file begins within the file",
                           "give files one by one, not joined end to end");
        }
    }

    void ReadIonosphericCorrection() {
        const std::string_view kind = Trim(Field(cursor_.line(), 0, 4));
        static constexpr std::array<std::pair<std::string_view, GnssSystem>, 5> kNames = {
            {{"GPS", GnssSystem::kGps},
             {"QZS", GnssSystem::kQzss},
             {"BDS", GnssSystem::kBeiDou},
             {"CMP", GnssSystem::kBeiDou},
             {"IRN", GnssSystem::kNavIc}}};
        if (kind == "GAL") {
            IonosphereSet set;
            set.system = GnssSystem::kGalileo;
            set.model = IonosphereModel::kNequick;
            set.alpha = ReadCoefficients(5);
            set.hasAlpha = true;
            set.line = static_cast<std::uint32_t>(cursor_.number());
            data_.ionosphere.push_back(set);
            return;
        }
        for (const auto& [name, system] : kNames) {
            if (kind.size() == 4 && kind.substr(0, 3) == name &&
                (kind[3] == 'A' || kind[3] == 'B')) {
                AddIonosphere(system, kind[3] == 'B', 5);
            }
        }
    }

    std::array<double, 4> ReadCoefficients(std::size_t start) const {
        std::array<double, 4> values{};
        for (std::size_t i = 0; i < 4; ++i) {
            const std::string_view field = Field(cursor_.line(), start + 12 * i, 12);
            if (IsBlank(field)) {
                continue;
            }
            const auto value = ParseReal(field);
            if (!value) {
                cursor_.RefuseField("the ionosphere coefficient " + Quote(Trim(field)) +
                                    " is not a number");
            }
            values[i] = *value;
        }
        return values;
    }

    // Alpha and beta stand on lines of their own and join in the last set of the system that still
    // lacks them.
    void AddIonosphere(GnssSystem system, bool isBeta, std::size_t start) {
        const auto values = ReadCoefficients(start);
        auto& sets = data_.ionosphere;
        const auto last = std::find_if(sets.rbegin(), sets.rend(), [&](const IonosphereSet& s) {
            return s.system == system && s.model == IonosphereModel::kKlobuchar;
        });
        const bool joins = last != sets.rend() && !(isBeta ? last->hasBeta : last->hasAlpha);
        if (!joins) {
            IonosphereSet set;
            set.system = system;
            set.line = static_cast<std::uint32_t>(cursor_.number());
            sets.push_back(set);
        }
        IonosphereSet& set = joins ? *last : sets.back();
        (isBeta ? set.beta : set.alpha) = values;
        (isBeta ? set.hasBeta : set.hasAlpha) = true;
    }

    // --- records of versions 2 and 3

    bool IsFirstLine(std::string_view line) const {
        return !IsBlank(Field(line, 0, data_.version < 3.0 ? 2 : 1));
    }

    void ReadRecords() {
        while (cursor_.Next()) {
            if (Trim(cursor_.line()).empty()) {
                continue;
            }
            if (HeaderLabel(cursor_.line()) == "RINEX VERSION / TYPE") {
                cursor_.Refuse(InputFault::kMalformed, "a second file begins within the file",
                               "give files one by one, not joined end to end");
            }
            if (!IsFirstLine(cursor_.line())) {
                cursor_.RefuseField("a line of orbit numbers without the first line of its record");
            }
            CollectRecord([this](std::string_view line) { return IsFirstLine(line); });
            Attempt([this] { ReadRecordByLetter(); });
        }
    }

    // The lines from the current one to the next first line. Blank lines at the end do not count.
    template <typename IsNext>
    void CollectRecord(IsNext isNext) {
        lines_.clear();
        AddLine();
        while (cursor_.Next()) {
            if (isNext(cursor_.line())) {
                cursor_.Back();
                break;
            }
            AddLine();
        }
        while (!lines_.empty() && Trim(lines_.back().text).empty()) {
            lines_.pop_back();
        }
    }

    void AddLine() {
        if (lines_.size() < linesText_.size()) {
            auto& text = linesText_[lines_.size()];
            const std::size_t size = cursor_.line().copy(text.data(), text.size());
            lines_.push_back(
                {std::string_view(text.data(), size), cursor_.number(), cursor_.terminated()});
        }
    }

    template <typename Action>
    void Attempt(Action action) {
        try {
            action();
        } catch (const Dropped& dropped) {
            ++data_.droppedCount;
            if (data_.dropped.size() < kMaximumNotes) {
                data_.dropped.push_back({dropped.line, dropped.reason});
            }
        }
    }

    void ReadRecordByLetter() {
        const RecordLine& first = lines_.front();
        RecordColumns columns = kColumns3;
        std::string satelliteText(Field(first.text, 0, 3));
        if (data_.version < 3.0) {
            const bool lettered = SystemOfLetter(first.text.front()).has_value();
            columns = lettered ? kColumns2Lettered : kColumns2;
            if (!lettered) {
                satelliteText = ' ' + std::string(Field(first.text, 0, 2));
            }
        }
        const SatelliteId satellite = RequireSatellite(satelliteText, first);
        switch (satellite.system) {
            case GnssSystem::kSbas:
            case GnssSystem::kNavIc:
                ++data_.leftAside[SystemName(satellite.system)];
                return;
            case GnssSystem::kGlonass:
                AddGlonass(satellite, columns);
                return;
            case GnssSystem::kBeiDou:
                AddKepler(satellite,
                          IsBeiDouGeostationary(satellite.number) ? NavigationMessage::kD2
                                                                  : NavigationMessage::kD1,
                          columns);
                return;
            case GnssSystem::kGalileo:
                AddKepler(satellite, NavigationMessage::kInav, columns);
                return;
            case GnssSystem::kGps:
            case GnssSystem::kQzss:
                AddKepler(satellite, NavigationMessage::kLnav, columns);
                return;
        }
    }

    SatelliteId RequireSatellite(std::string_view text, const RecordLine& line) const {
        const auto satellite = ParseSatellite(text, fileSystem_);
        if (!satellite) {
            throw Dropped{line.number, "no satellite in " + Quote(text)};
        }
        return *satellite;
    }

    // --- records of version 4

    void ReadRecords4() {
        while (cursor_.Next()) {
            if (Trim(cursor_.line()).empty()) {
                continue;
            }
            if (cursor_.line().front() != '>') {
                cursor_.RefuseField("a record, which begins with '>', should stand here");
            }
            CollectRecord([](std::string_view line) { return line.substr(0, 1) == ">"; });
            Attempt([this] { ReadRecord4(); });
        }
    }

    void ReadRecord4() {
        const RecordLine mark = lines_.front();
        const std::string_view kind = Trim(Field(mark.text, 2, 3));
        const std::string_view message = Trim(Field(mark.text, 10, 4));
        if (kind == "STO" || kind == "EOP") {
            ++data_.leftAside[std::string(kind)];
            return;
        }
        if (kind != "EPH" && kind != "ION") {
            throw Dropped{mark.number, "unknown record " + Quote(Trim(mark.text))};
        }
        const SatelliteId satellite = RequireSatellite(Field(mark.text, 6, 3), mark);
        if (kind == "ION") {
            ReadIonosphere4(satellite.system, message);
            return;
        }
        lines_.erase(lines_.begin());
        const auto known = MessageOf(satellite.system, message);
        if (!known) {
            LeaveAside(satellite.system, message);
            return;
        }
        if (lines_.empty()) {
            RefuseShort(satellite, mark, 1 + OrbitLines(*known, data_.version));
        }
        const SatelliteId named =
            RequireSatellite(Field(lines_.front().text, 0, 3), lines_.front());
        if (named != satellite) {
            throw Dropped{lines_.front().number,
                          "the record of " + ToString(satellite) + " names " + ToString(named)};
        }
        if (*known == NavigationMessage::kFdma) {
            AddGlonass(satellite, kColumns3);
        } else {
            AddKepler(satellite, *known, kColumns3);
        }
    }

    // Names of messages come from the file; only so many different ones are counted.
    void LeaveAside(GnssSystem system, std::string_view message) {
        constexpr std::size_t kMostNames = 64;
        const bool whole = system == GnssSystem::kSbas || system == GnssSystem::kNavIc;
        std::string name = whole
                               ? SystemName(system)
                               : std::string(1, SystemLetter(system)) + ' ' + std::string(message);
        if (data_.leftAside.size() >= kMostNames && !data_.leftAside.contains(name)) {
            name = "others";
        }
        ++data_.leftAside[name];
    }

    static std::optional<NavigationMessage> MessageOf(GnssSystem system, std::string_view name) {
        using enum NavigationMessage;
        struct Entry {
            GnssSystem system;
            std::string_view name;
            NavigationMessage message;
        };
        static constexpr std::array<Entry, 14> kEntries = {{{GnssSystem::kGps, "LNAV", kLnav},
                                                            {GnssSystem::kGps, "CNAV", kCnav},
                                                            {GnssSystem::kGps, "CNV2", kCnv2},
                                                            {GnssSystem::kQzss, "LNAV", kLnav},
                                                            {GnssSystem::kQzss, "CNAV", kCnav},
                                                            {GnssSystem::kQzss, "CNV2", kCnv2},
                                                            {GnssSystem::kGlonass, "FDMA", kFdma},
                                                            {GnssSystem::kGalileo, "INAV", kInav},
                                                            {GnssSystem::kGalileo, "FNAV", kFnav},
                                                            {GnssSystem::kBeiDou, "D1", kD1},
                                                            {GnssSystem::kBeiDou, "D2", kD2},
                                                            {GnssSystem::kBeiDou, "CNV1", kCnv1},
                                                            {GnssSystem::kBeiDou, "CNV2", kCnv2},
                                                            {GnssSystem::kBeiDou, "CNV3", kCnv3}}};
        for (const Entry& entry : kEntries) {
            if (entry.system == system && entry.name == name) {
                return entry.message;
            }
        }
        return std::nullopt;
    }

    // Klobuchar and BDGIM coefficients on three lines, NeQuick on two; the first has the time.
    void ReadIonosphere4(GnssSystem system, std::string_view message) {
        const RecordLine mark = lines_.front();
        lines_.erase(lines_.begin());
        const bool nequick = message == "IFNV";
        const bool bdgim = message == "CNVX" && system == GnssSystem::kBeiDou;
        const bool klobuchar = message == "LNAV" || message == "D1D2" || message == "CNVX";
        if (!nequick && !klobuchar) {
            LeaveAside(system, "ION " + std::string(message));
            return;
        }
        const std::size_t needed = nequick ? 2 : 3;
        if (lines_.size() < needed) {
            RefuseShort(SatelliteId{system, 0}, mark, needed);
        }
        const Numbers n = ReadNumbers(kColumns3, needed);
        IonosphereSet set;
        set.system = system;
        set.line = static_cast<std::uint32_t>(mark.number);
        set.transmitTime = ReadTime(lines_.front(), kColumns3);
        set.hasAlpha = true;
        if (bdgim) {
            set.model = IonosphereModel::kBdgim;
            set.bdgim = {n[0][1], n[0][2], n[0][3], n[1][0], n[1][1],
                         n[1][2], n[1][3], n[2][0], n[2][1]};
        } else if (nequick) {
            set.model = IonosphereModel::kNequick;
            set.alpha = {n[0][1], n[0][2], n[0][3], 0.0};
        } else {
            set.alpha = {n[0][1], n[0][2], n[0][3], n[1][0]};
            set.beta = {n[1][1], n[1][2], n[1][3], n[2][0]};
            set.hasBeta = true;
        }
        data_.ionosphere.push_back(set);
    }

    // --- what the versions share

    // A record with too few lines is dropped, but at the end of the file the file was cut off.
    [[noreturn]] void RefuseShort(SatelliteId satellite, const RecordLine& last,
                                  std::size_t needed) const {
        const std::string name =
            satellite.number == 0 ? std::string("ionosphere") : ToString(satellite);
        const std::string reason = "the record of " + name + " has " +
                                   std::to_string(lines_.size()) + " of " + std::to_string(needed) +
                                   " lines";
        if (cursor_.AtEnd()) {
            throw InputError(InputFault::kTruncated, cursor_.file(), last.number,
                             "the file ends within a record: " + reason,
                             "fetch or export the file again");
        }
        throw Dropped{last.number, reason};
    }

    void RequireLines(SatelliteId satellite, std::size_t needed) const {
        if (lines_.size() < needed) {
            RefuseShort(satellite, lines_.back(), needed);
        }
        if (lines_.size() > needed) {
            throw Dropped{lines_[needed].number, "the record of " + ToString(satellite) +
                                                     " has more than " + std::to_string(needed) +
                                                     " lines"};
        }
    }

    Numbers ReadNumbers(const RecordColumns& columns, std::size_t lineCount) const {
        Numbers numbers{};
        for (std::size_t i = 0; i < lineCount; ++i) {
            for (std::size_t column = i == 0 ? 1 : 0; column < 4; ++column) {
                const std::size_t start = i == 0
                                              ? columns.firstNumbers + kNumberWidth * (column - 1)
                                              : columns.numbers + kNumberWidth * column;
                numbers[i][column] = ReadNumber(lines_[i], start);
            }
        }
        return numbers;
    }

    // Blank is zero: the format leaves spare and unknown numbers blank.
    double ReadNumber(const RecordLine& line, std::size_t start) const {
        const std::string_view field = Field(line.text, start, kNumberWidth);
        if (Trim(field).empty()) {
            return 0.0;
        }
        const auto value = ParseReal(field);
        const bool cutOff = !line.terminated && field.size() < kNumberWidth;
        if (cutOff) {
            throw InputError(InputFault::kTruncated, cursor_.file(), line.number,
                             "the file ends within the number " + Quote(Trim(field)),
                             "fetch or export the file again");
        }
        if (!value) {
            throw Dropped{line.number, Quote(Trim(field)) + " is not a number"};
        }
        return *value;
    }

    // A reading of the clock of the record's time scale.
    static GpsTime ReadTime(const RecordLine& line, const RecordColumns& columns) {
        const auto year = ParseInteger(Field(line.text, columns.year, columns.yearWidth));
        std::array<std::optional<int>, 4> parts;
        for (std::size_t i = 0; i < 4; ++i) {
            parts[i] = ParseInteger(Field(line.text, columns.month + 3 * i, 2));
        }
        const auto second = ParseReal(Field(line.text, columns.second, columns.secondWidth));
        const std::string_view text = Trim(
            Field(line.text, columns.year, columns.second + columns.secondWidth - columns.year));
        if (!year || *year < 0 || !parts[0] || !parts[1] || !parts[2] || !parts[3] || !second) {
            throw Dropped{line.number, "no date and time in " + Quote(text)};
        }
        const int century = *year < 80 ? 2000 : 1900;
        const int fullYear = columns.yearWidth == 4 ? *year : *year + century;
        const auto time =
            FromCalendar({fullYear, *parts[0], *parts[1], *parts[2], *parts[3], *second});
        if (!time) {
            throw Dropped{line.number, "the date and time " + Quote(text) + " does not exist"};
        }
        return *time;
    }

    void AddGlonass(SatelliteId satellite, const RecordColumns& columns) {
        // Writers of 3.05 and 4 may leave the fifth line of status flags out.
        const std::size_t full = 1 + OrbitLines(NavigationMessage::kFdma, data_.version);
        RequireLines(satellite, lines_.size() == 4 ? 4 : full);
        const GpsTime reference = ReadTime(lines_.front(), columns);
        const Numbers n = ReadNumbers(columns, lines_.size());
        GlonassRecord record;
        record.slot = satellite.number;
        record.referenceWeek = reference.week;
        record.referenceSeconds = reference.seconds;
        record.leapSeconds = LeapSecondsAtUtc(reference);
        record.clockBias = n[0][1];
        record.clockDrift = n[0][2];
        record.messageFrameTime = n[0][3];
        for (std::size_t axis = 0; axis < 3; ++axis) {
            record.position[axis] = n[axis + 1][0];
            record.velocity[axis] = n[axis + 1][1];
            record.acceleration[axis] = n[axis + 1][2];
        }
        record.health = ToCode(n[1][3], lines_[1], "the health");
        record.channel = ToCode(n[2][3], lines_[2], "the frequency channel");
        record.age = n[3][3];
        record.line = static_cast<std::uint32_t>(lines_.front().number);
        if (record.channel < -7 || record.channel > 13) {
            throw Dropped{lines_[2].number, "the frequency channel " +
                                                std::to_string(record.channel) +
                                                " is none from -7 to 13"};
        }
        data_.glonass.push_back(record);
    }

    void AddKepler(SatelliteId satellite, NavigationMessage message, const RecordColumns& columns) {
        const std::size_t lineCount = 1 + OrbitLines(message, data_.version);
        RequireLines(satellite, lineCount);
        const GpsTime toc = ReadTime(lines_.front(), columns);
        const Numbers n = ReadNumbers(columns, lineCount);
        KeplerRecord record;
        record.satellite = satellite;
        record.message = message;
        record.line = static_cast<std::uint32_t>(lines_.front().number);
        record.tocWeek = toc.week;
        record.tocSeconds = toc.seconds;
        SetOrbit(record, n);
        if (IsCnavFamily(message)) {
            SetCnavDetails(record, n);
        } else {
            SetLegacyDetails(record, n);
        }
        SetOrbitWeek(record);
        data_.kepler.push_back(record);
    }

    static bool IsCnavFamily(NavigationMessage message) {
        return message == NavigationMessage::kCnav || message == NavigationMessage::kCnv1 ||
               message == NavigationMessage::kCnv2 || message == NavigationMessage::kCnv3;
    }

    // The numbers that all messages have at the same place.
    static void SetOrbit(KeplerRecord& record, const Numbers& n) {
        record.af0 = n[0][1];
        record.af1 = n[0][2];
        record.af2 = n[0][3];
        record.crs = n[1][1];
        record.deltaN = n[1][2];
        record.m0 = n[1][3];
        record.cuc = n[2][0];
        record.eccentricity = n[2][1];
        record.cus = n[2][2];
        record.sqrtA = n[2][3];
        record.toeSeconds = n[3][0];
        record.cic = n[3][1];
        record.omega0 = n[3][2];
        record.cis = n[3][3];
        record.i0 = n[4][0];
        record.crc = n[4][1];
        record.omega = n[4][2];
        record.omegaDot = n[4][3];
        record.idot = n[5][0];
    }

    void SetLegacyDetails(KeplerRecord& record, const Numbers& n) const {
        record.iode = n[1][0];
        record.accuracy = n[6][0];
        record.health = ToCode(n[6][1], lines_[6], "the health");
        record.groupDelay1 = n[6][2];
        record.transmitTime = n[7][0];
        switch (record.satellite.system) {
            case GnssSystem::kGalileo:
                record.dataSources = ToCode(n[5][1], lines_[5], "the data source");
                record.groupDelay2 = n[6][3];
                if (data_.version < 4.0 && (record.dataSources & 7) == 2) {
                    record.message = NavigationMessage::kFnav;
                }
                break;
            case GnssSystem::kBeiDou:
                record.groupDelay2 = n[6][3];
                record.iodc = n[7][1];
                break;
            default:
                record.codesOnL2 = ToCode(n[5][1], lines_[5], "the codes on L2");
                record.l2PFlag = ToCode(n[5][3], lines_[5], "the L2 P flag");
                record.iodc = n[6][3];
                record.fitInterval = n[7][1];
        }
    }

    void SetCnavDetails(KeplerRecord& record, const Numbers& n) const {
        record.hasRates = true;
        record.aDot = n[1][0];
        record.deltaNDot = n[5][1];
        if (record.satellite.system != GnssSystem::kBeiDou) {
            // The fourth line begins with the time of prediction: the record has no orbit reference
            // of its own, it is the clock reference.
            record.toeSeconds = record.tocSeconds;
            record.accuracy = n[6][0];
            record.health = ToCode(n[6][1], lines_[6], "the health");
            record.groupDelay1 = n[6][2];
            record.transmitTime = n[record.message == NavigationMessage::kCnav ? 8 : 9][0];
        } else if (record.message == NavigationMessage::kCnv3) {
            record.accuracy = n[6][0];
            record.health = ToCode(n[7][1], lines_[7], "the health");
            record.groupDelay1 = n[7][3];
            record.transmitTime = n[8][0];
        } else {
            record.accuracy = n[6][0];
            record.groupDelay1 = n[7][2];
            record.groupDelay2 = n[7][3];
            record.health = ToCode(n[8][1], lines_[8], "the health");
            record.iodc = n[8][3];
            record.transmitTime = n[9][0];
            record.iode = n[9][3];
        }
    }

    // The week of the orbit reference is the one that brings it within half a week of the clock
    // reference. The week in the file is not asked: writers fill it in by different counts (modulo
    // 1024, from the origin of the system) or leave it out.
    void SetOrbitWeek(KeplerRecord& record) const {
        if (!(record.toeSeconds >= 0.0 && record.toeSeconds <= kSecondsPerWeek)) {
            throw Dropped{lines_[3].number, "the orbit reference time is outside the week"};
        }
        const double difference = record.toeSeconds - record.tocSeconds;
        record.toeWeek = record.tocWeek;
        if (difference > kSecondsPerWeek / 2) {
            --record.toeWeek;
        } else if (difference < -kSecondsPerWeek / 2) {
            ++record.toeWeek;
        }
        if (record.toeSeconds == kSecondsPerWeek) {
            record.toeSeconds = 0.0;
            ++record.toeWeek;
        }
    }

    void RequireSomething() const {
        const bool something =
            !data_.kepler.empty() || !data_.glonass.empty() || !data_.leftAside.empty();
        if (!something && data_.droppedCount > 0) {
            const InputNote& first = data_.dropped.front();
            throw InputError(InputFault::kMalformed, data_.file, first.line,
                             "none of the " + std::to_string(data_.droppedCount) +
                                 " records can be read; the first: " + first.text,
                             "fetch the file again");
        }
    }

    LineCursor& cursor_;
    Navigation data_;
    GnssSystem fileSystem_ = GnssSystem::kGps;
    std::vector<RecordLine> lines_;  // of the record at hand
    // What they say; the text moves on.
    std::array<std::array<char, kLineWidth>, kMostLines + 2> linesText_;
};

}  // namespace

const char* MessageName(NavigationMessage message) {
    static constexpr std::array<const char*, 10> kNames = {"LNAV", "CNAV", "CNV2", "CNV1", "CNV3",
                                                           "D1",   "D2",   "INAV", "FNAV", "FDMA"};
    return kNames[static_cast<std::size_t>(message)];
}

Navigation ReadNavigation(LineCursor& text) {
    return NavigationReader(text).Read();
}

}  // namespace vornel::io
