#include "io/observation_header.h"

#include <algorithm>
#include <utility>

#include "io/observation_codes.h"
#include "io/rinex_version.h"
#include "io/text_fields.h"

namespace vornel::io {
namespace {

std::string Text(std::string_view line, std::size_t start, std::size_t width) {
    return std::string(Trim(Field(line, start, width)));
}

// The words of a part of a line.
std::vector<std::string_view> Words(std::string_view text) {
    std::vector<std::string_view> words;
    std::size_t at = 0;
    while ((at = text.find_first_not_of(' ', at)) != std::string_view::npos) {
        const std::size_t end = std::min(text.find(' ', at), text.size());
        words.push_back(text.substr(at, end - at));
        at = end;
    }
    return words;
}

// Three numbers: three words where the line has them, as some writers shift the columns; else by the
// columns of the format, 14 each, where blank ones are zero.
std::array<double, 3> ReadTriple(const LineCursor& cursor, const char* what) {
    const std::string_view line = cursor.line().substr(0, 60);
    const auto words = Words(line);
    std::array<double, 3> triple{};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string_view field = words.size() == 3 ? words[i] : Field(line, 14 * i, 14);
        if (IsBlank(field)) {
            continue;
        }
        const auto value = ParseReal(field);
        if (!value) {
            cursor.RefuseField(std::string(what) + ": " + Quote(Trim(field)) + " is not a number");
        }
        triple[i] = *value;
    }
    return triple;
}

TimeSystem TimeSystemOf(char systemLetter) {
    switch (systemLetter) {
        case 'R':
            return TimeSystem::kGlonass;
        case 'E':
            return TimeSystem::kGalileo;
        case 'C':
            return TimeSystem::kBeiDou;
        case 'J':
            return TimeSystem::kQzss;
        case 'I':
            return TimeSystem::kNavIc;
        default:
            return TimeSystem::kGps;
    }
}

// A label of letters, as all labels of the formats are; data that run into the label columns have
// digits and blanks there.
bool LooksLikeLabel(std::string_view label) {
    const auto letters = std::count_if(label.begin(), label.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    });
    return letters >= 3 && letters * 2 >= static_cast<std::ptrdiff_t>(label.size());
}

// Type and radome of an antenna stand in 16 and 4 columns; some writers leave one blank between.
void SplitAntenna(std::string_view field, StationHeader& station) {
    station.antennaType = Text(field, 0, 16);
    station.antennaRadome = Text(field, 16, 4);
    const auto words = Words(station.antennaType);
    if (station.antennaRadome.empty() && words.size() == 2 && words[1].size() == 4) {
        station.antennaRadome = std::string(words[1]);
        station.antennaType = std::string(words[0]);
    }
}

}  // namespace

void ObservationHeader::ReadVersion(const LineCursor& cursor) {
    const std::string_view line = cursor.line();
    if (HeaderLabel(line) != "RINEX VERSION / TYPE") {
        cursor.Refuse(InputFault::kWrongKind, "the first line is not RINEX VERSION / TYPE",
                      "give a RINEX observation file");
    }
    version_ = ReadRinexVersion(cursor);
    const std::string_view type = Field(line, 20, 1);
    if (type != "O" && type != "o") {
        cursor.Refuse(InputFault::kWrongKind, "it is not an observation file");
    }
    const std::string_view systemField = Field(line, 40, 1);
    const char letter = systemField.empty() ? ' ' : systemField.front();
    const auto system = SystemOfLetter(letter);
    if (!system && letter != ' ' && letter != 'M') {
        cursor.Refuse(
            InputFault::kMalformed,
            std::string("unknown satellite system ") + Quote(systemField) + " of the file",
            "G, R, E, C, J, I, S or M stands in column 41");
    }
    blankSystem_ = system.value_or(GnssSystem::kGps);
    station_.timeSystem = TimeSystemOf(letter);
}

void ObservationHeader::ReadAll(LineCursor& cursor) {
    if (!cursor.Next()) {
        throw InputError(InputFault::kEmpty, cursor.file(), 0, "the file is empty");
    }
    ReadVersion(cursor);
    while (cursor.Next()) {
        const std::string_view label = HeaderLabel(cursor.line());
        if (label == "END OF HEADER") {
            RequireComplete(cursor);
            return;
        }
        const bool epochRecord = !isVersion2() && Field(cursor.line(), 0, 1) == ">";
        if (epochRecord || (!LooksLikeLabel(label) && !Trim(cursor.line()).empty())) {
            if (!cursor.terminated()) {
                break;
            }
            cursor.Refuse(InputFault::kMalformed, "a header line without a label in column 61",
                          "the END OF HEADER line may be missing before it");
        }
        ReadLine(cursor);
    }
    cursor.Refuse(InputFault::kTruncated, "the file ends before END OF HEADER",
                  "fetch or export the file again");
}

void ObservationHeader::ReadLine(const LineCursor& cursor) {
    const std::string_view label = HeaderLabel(cursor.line());
    if (label == "# / TYPES OF OBSERV") {
        if (isVersion2()) {
            ReadTypes2(cursor);
        }
    } else if (label == "SYS / # / OBS TYPES") {
        if (!isVersion2()) {
            ReadTypes3(cursor);
        }
    } else if (label == "RINEX VERSION / TYPE") {
        cursor.Refuse(InputFault::kMalformed, "a second file begins within the file",
                      "give files one by one, not joined end to end");
    } else {
        ReadStationLine(cursor, label);
        ReadSettingsLine(cursor, label);
    }
}

void ObservationHeader::ReadStationLine(const LineCursor& cursor, std::string_view label) {
    const std::string_view line = cursor.line().substr(0, 60);
    if (label == "MARKER NAME") {
        station_.markerName = Text(line, 0, 60);
    } else if (label == "MARKER NUMBER") {
        station_.markerNumber = Text(line, 0, 20);
    } else if (label == "MARKER TYPE") {
        station_.markerType = Text(line, 0, 20);
    } else if (label == "OBSERVER / AGENCY") {
        station_.observer = Text(line, 0, 20);
        station_.agency = Text(line, 20, 40);
    } else if (label == "REC # / TYPE / VERS") {
        station_.receiverSerial = Text(line, 0, 20);
        station_.receiverType = Text(line, 20, 20);
        station_.receiverVersion = Text(line, 40, 20);
    } else if (label == "ANT # / TYPE") {
        station_.antennaSerial = Text(line, 0, 20);
        SplitAntenna(Field(line, 20, 20), station_);
    } else if (label == "PGM / RUN BY / DATE") {
        station_.programName = Text(line, 0, 20);
        station_.runBy = Text(line, 20, 20);
        station_.fileDate = Text(line, 40, 20);
    } else if (label == "APPROX POSITION XYZ") {
        ReadPosition(cursor);
    } else if (label == "ANTENNA: DELTA H/E/N") {
        ReadAntennaOffset(cursor);
    }
}

void ObservationHeader::ReadSettingsLine(const LineCursor& cursor, std::string_view label) {
    if (label == "INTERVAL") {
        ReadInterval(cursor);
    } else if (label == "TIME OF FIRST OBS") {
        station_.firstEpoch = ReadTime(cursor, true);
    } else if (label == "TIME OF LAST OBS") {
        station_.lastEpoch = ReadTime(cursor, false);
    } else if (label == "RCV CLOCK OFFS APPL") {
        station_.clockOffsetApplied = ParseInteger(Field(cursor.line(), 0, 6)).value_or(0) == 1;
    } else if (label == "LEAP SECONDS") {
        const auto leap = ParseInteger(Field(cursor.line(), 0, 6));
        const std::string_view scale = Trim(Field(cursor.line(), 24, 3));
        station_.leapSeconds = scale == "BDS" && leap ? std::optional(*leap + 14) : leap;
    } else if (label == "SYS / SCALE FACTOR") {
        ReadScaleFactor(cursor);
    } else if (label == "WAVELENGTH FACT L1/2" && isVersion2()) {
        ReadWavelengthFactor(cursor);
    } else if (label == "GLONASS SLOT / FRQ #") {
        ReadGlonassChannels(cursor);
    }
    // SYS / PHASE SHIFT and GLONASS COD/PHS/BIS tell corrections that the observations of the file
    // already have: nothing is to be applied. All other labels have no bearing on the observations.
}

void ObservationHeader::ReadTypes2(const LineCursor& cursor) {
    const std::string_view countField = Field(cursor.line(), 0, 6);
    if (!IsBlank(countField)) {
        const auto count = ParseInteger(countField);
        if (!count || *count < 1 || *count > kMaximumTypes) {
            cursor.RefuseField("the number of observation types " + Quote(Trim(countField)) +
                               " is none from 1 to " + std::to_string(kMaximumTypes));
        }
        RequireComplete(cursor);
        types2_ = {*count, {}};
    } else if (types2_.announced == 0) {
        cursor.RefuseField("observation types continue that have not begun");
    }
    AppendTypes(cursor, types2_);
}

void ObservationHeader::ReadTypes3(const LineCursor& cursor) {
    const std::string_view letter = Field(cursor.line(), 0, 1);
    if (letter != " ") {
        const auto system = letter.empty() ? std::nullopt : SystemOfLetter(letter.front());
        if (!system) {
            cursor.RefuseField("unknown satellite system " + Quote(letter) +
                               " of observation types");
        }
        const std::string_view countField = Field(cursor.line(), 1, 5);
        const auto count = ParseInteger(countField);
        if (!count || *count < 1 || *count > kMaximumTypes) {
            cursor.RefuseField("the number of observation types " + Quote(Trim(countField)) +
                               " is none from 1 to " + std::to_string(kMaximumTypes));
        }
        RequireComplete(cursor);
        typesSystem_ = *system;
        typesBegun_ = true;
        types3_[static_cast<std::size_t>(typesSystem_)] = {*count, {}};
    } else if (!typesBegun_) {
        cursor.RefuseField("observation types continue that have not begun");
    }
    AppendTypes(cursor, types3_[static_cast<std::size_t>(typesSystem_)]);
}

void ObservationHeader::AppendTypes(const LineCursor& cursor, TypeList& list) {
    ++layoutChanges_;
    const std::size_t width = isVersion2() ? 2 : 3;
    for (const std::string_view word : Words(Field(cursor.line().substr(0, 60), 6, 54))) {
        if (word.size() != width) {
            cursor.RefuseField(Quote(word) + " is no observation type");
        }
        list.names.emplace_back(word);
    }
    if (list.names.size() > static_cast<std::size_t>(list.announced)) {
        cursor.RefuseField("the header announces " + std::to_string(list.announced) +
                               " observation types but lists " + std::to_string(list.names.size()),
                           "correct the number or the list");
    }
}

void ObservationHeader::RequireComplete(const LineCursor& cursor) const {
    const auto require = [&](const TypeList& list) {
        if (list.names.size() < static_cast<std::size_t>(list.announced)) {
            cursor.RefuseField("the header announces " + std::to_string(list.announced) +
                                   " observation types but lists only " +
                                   std::to_string(list.names.size()),
                               "correct the number or the list");
        }
    };
    require(types2_);
    for (const TypeList& list : types3_) {
        require(list);
    }
}

void ObservationHeader::ReadScaleFactor(const LineCursor& cursor) {
    const std::string_view line = cursor.line().substr(0, 60);
    if (Field(line, 0, 1) != " ") {
        const auto system = line.empty() ? std::nullopt : SystemOfLetter(line.front());
        const auto factor = ParseInteger(Field(line, 2, 4));
        if (!system || !factor || *factor < 1 || *factor > 9999) {
            cursor.RefuseField("a scale factor needs a satellite system and a whole number");
        }
        scaleSystem_ = *system;
        scaleFactor_ = static_cast<double>(*factor);
        if (ParseInteger(Field(line, 8, 2)).value_or(0) <= 0) {
            scales_[static_cast<std::size_t>(*system)] = {scaleFactor_, {}};
        }
    } else if (scaleFactor_ == 0.0) {
        cursor.RefuseField("scale factors continue that have not begun");
    }
    auto& named = scales_[static_cast<std::size_t>(scaleSystem_)].ofNamed;
    for (const std::string_view word : Words(Field(line, 10, 50))) {
        named[std::string(word)] = scaleFactor_;
    }
    if (named.size() > static_cast<std::size_t>(kMaximumTypes)) {
        cursor.RefuseField("scale factors of more than " + std::to_string(kMaximumTypes) +
                           " types");
    }
    ++layoutChanges_;
}

void ObservationHeader::ReadWavelengthFactor(const LineCursor& cursor) {
    const std::string_view line = cursor.line().substr(0, 60);
    const int factor1 = ParseInteger(Field(line, 0, 6)).value_or(1);
    const int factor2 = ParseInteger(Field(line, 6, 6)).value_or(1);
    const int count = ParseInteger(Field(line, 12, 6)).value_or(0);
    std::vector<SatelliteId> satellites;
    for (std::size_t i = 0; i < 7 && static_cast<int>(i) < count; ++i) {
        const auto satellite = ParseSatellite(Field(line, 21 + 6 * i, 3), blankSystem_);
        if (!satellite) {
            cursor.RefuseField("the wavelength factors name no satellite in " +
                               Quote(Field(line, 21 + 6 * i, 3)));
        }
        satellites.push_back(*satellite);
    }
    const bool usual = factor1 != 2 && factor2 != 2;
    if (satellites.empty()) {
        halfCycles_.clear();
        if (usual) {
            return;
        }
        for (std::size_t i = 0; i < kSystemCount; ++i) {
            satellites.push_back({static_cast<GnssSystem>(i), 0});
        }
    }
    for (const SatelliteId satellite : satellites) {
        halfCycles_[{satellite, '1'}] = factor1 == 2;
        halfCycles_[{satellite, '2'}] = factor2 == 2;
    }
}

bool ObservationHeader::IsHalfCycle(SatelliteId satellite, char band) const {
    auto found = halfCycles_.find({satellite, band});
    if (found == halfCycles_.end()) {
        found = halfCycles_.find({SatelliteId{satellite.system, 0}, band});
    }
    return found != halfCycles_.end() && found->second;
}

void ObservationHeader::ReadGlonassChannels(const LineCursor& cursor) {
    const std::string_view text = Field(cursor.line().substr(0, 60), 3, 57);
    std::size_t at = 0;
    while ((at = text.find('R', at)) != std::string_view::npos) {
        const auto satellite = ParseSatellite(Field(text, at, 3), GnssSystem::kGlonass);
        const std::size_t next = std::min(text.find('R', at + 1), text.size());
        const auto channel =
            at + 3 < next ? ParseInteger(text.substr(at + 3, next - at - 3)) : std::nullopt;
        if (!satellite || !channel || *channel < -7 || *channel > 13) {
            cursor.RefuseField("no slot and channel of GLONASS in " +
                               Quote(Trim(text.substr(at, next - at))));
        }
        const int slot = satellite->number;
        auto& channels = station_.glonassChannels;
        std::erase_if(channels, [slot](const auto& entry) { return entry.first == slot; });
        channels.emplace_back(slot, *channel);
        at = next;
    }
}

void ObservationHeader::ReadPosition(const LineCursor& cursor) {
    const auto position = ReadTriple(cursor, "approximate position");
    const bool given = position[0] != 0.0 || position[1] != 0.0 || position[2] != 0.0;
    station_.approximatePosition = given ? std::optional(position) : std::nullopt;
}

void ObservationHeader::ReadAntennaOffset(const LineCursor& cursor) {
    const auto offset = ReadTriple(cursor, "antenna height and offsets");
    station_.antennaHeight = offset[0];
    station_.antennaEast = offset[1];
    station_.antennaNorth = offset[2];
}

void ObservationHeader::ReadInterval(const LineCursor& cursor) {
    const std::string_view field = Field(cursor.line(), 0, 20);
    const auto interval = ParseReal(field);
    if (!interval && !IsBlank(field)) {
        cursor.RefuseField("the interval " + Quote(Trim(field)) + " is not a number");
    }
    station_.interval = interval.value_or(0.0) > 0.0 ? interval : std::nullopt;
}

// A time of the header in GPS time; empty when blank or when the date does not exist, as some
// writers leave zeros there.
std::optional<GpsTime> ObservationHeader::ReadTime(const LineCursor& cursor, bool namesTimeSystem) {
    const std::string_view line = cursor.line().substr(0, 60);
    const std::string_view letters = Trim(Field(line, 44, 16));
    if (namesTimeSystem && !letters.empty()) {
        const auto system = ParseTimeSystem(letters);
        if (!system) {
            cursor.RefuseField("unknown time system " + Quote(letters),
                               "GPS, GLO, GAL, QZS, BDT, IRN and UTC are known");
        }
        station_.timeSystem = *system;
    }
    if (IsBlank(Field(line, 0, 43))) {
        return std::nullopt;
    }
    std::array<int, 5> parts{};
    for (std::size_t i = 0; i < 5; ++i) {
        const auto part = ParseInteger(Field(line, 6 * i, 6));
        if (!part) {
            cursor.RefuseField("no date and time in " + Quote(Trim(Field(line, 0, 43))));
        }
        parts[i] = *part;
    }
    const auto second = ParseReal(Field(line, 30, 13));
    if (!second) {
        cursor.RefuseField("the seconds " + Quote(Trim(Field(line, 30, 13))) + " are not a number");
    }
    const auto reading = FromCalendar({parts[0], parts[1], parts[2], parts[3], parts[4], *second});
    if (!reading) {
        notes_.push_back({cursor.number(), "a date of the header that does not exist is ignored"});
        return std::nullopt;
    }
    return ToGpsTime(*reading, station_.timeSystem);
}

const std::vector<std::string>& ObservationHeader::TypesOf(GnssSystem system) const {
    return isVersion2() ? types2_.names : types3_[static_cast<std::size_t>(system)].names;
}

std::optional<ObservationCode> ObservationHeader::CodeOf(const std::string& name,
                                                         GnssSystem system) const {
    return isVersion2() ? CodeOfRinex2(name, system, types2_.names)
                        : CodeOfRinex3(name, system, version_);
}

double ObservationHeader::DivisorOf(const std::string& name, GnssSystem system) const {
    const ScaleFactors& scales = scales_[static_cast<std::size_t>(system)];
    const auto found = scales.ofNamed.find(name);
    return found == scales.ofNamed.end() ? scales.ofOthers : found->second;
}

SignalTable ObservationHeader::MakeSignals(const std::string& types) const {
    SignalTable table;
    for (std::size_t i = 0; i < kSystemCount; ++i) {
        const auto system = static_cast<GnssSystem>(i);
        for (const std::string& name : TypesOf(system)) {
            const auto code = CodeOf(name, system);
            if (!code || types.find(code->type) == std::string::npos) {
                continue;
            }
            const bool known = std::any_of(table[i].begin(), table[i].end(),
                                           [&](const Signal& s) { return s.code == *code; });
            if (!known) {
                table[i].push_back({*code, name});
            }
        }
    }
    return table;
}

ColumnPlans ObservationHeader::MakePlans(const SignalTable& signals) const {
    ColumnPlans plans;
    for (std::size_t i = 0; i < kSystemCount; ++i) {
        const auto system = static_cast<GnssSystem>(i);
        for (const std::string& name : TypesOf(system)) {
            ColumnPlan plan;
            plan.divisor = DivisorOf(name, system);
            if (const auto code = CodeOf(name, system)) {
                const auto found = std::find_if(signals[i].begin(), signals[i].end(),
                                                [&](const Signal& s) { return s.code == *code; });
                plan.slot =
                    found == signals[i].end() ? -1 : static_cast<int>(found - signals[i].begin());
                plan.band = code->type == 'L' ? code->band : ' ';
            }
            plans[i].push_back(plan);
        }
    }
    return plans;
}

}  // namespace vornel::io
