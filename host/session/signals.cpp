#include "session/signals.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <map>
#include <string_view>

namespace vornel::session {
namespace {

constexpr double kRinexWithPhaseCodes = 3.0;  // RINEX 2 phases name a band only
constexpr double kLeastCode = 1e6;            // m, bounds of the engine
constexpr double kMostCode = 1e9;
constexpr double kMostPhase = 1e12;  // cycles

char GalileoBand(int number) {
    constexpr std::string_view kBands = " 15786";
    return kBands[static_cast<std::size_t>(number)];
}

char BandOf(engine::System system, std::size_t frequency, GalileoSignals galileo) {
    switch (system) {
        case engine::System::kGps:
        case engine::System::kGlonass:
            return frequency == 0 ? '1' : '2';
        case engine::System::kBds:
            return frequency == 0 ? '2' : '7';
        case engine::System::kGalileo:
            return GalileoBand(frequency == 0 ? galileo.first : galileo.second);
    }
    return ' ';
}

std::string_view PreferenceOf(engine::System system, char band) {
    switch (system) {
        case engine::System::kGps:
            return band == '1' ? "CWPYLSXMND" : "WPYXLSCMND";
        case engine::System::kGlonass:
            return "CP";
        case engine::System::kBds:
            return "IQXDPZ";
        case engine::System::kGalileo:
            return band == '1' || band == '6' ? "CXBAZ" : "QXI";
    }
    return "";
}

// Where code and phase of a tracking code stand among a system's columns. In RINEX 2 the phase
// types name no tracking mode, so that one phase of the band serves every code of it.
struct ColumnPair {
    std::optional<std::size_t> code;
    std::optional<std::size_t> phase;
};

ColumnPair FindColumns(const std::vector<io::Signal>& signals, char band, char attribute,
                       bool anyPhase) {
    ColumnPair found;
    std::optional<std::size_t> phaseOfBand;
    for (std::size_t i = 0; i < signals.size(); ++i) {
        const io::ObservationCode& code = signals[i].code;
        if (code.band != band) {
            continue;
        }
        if (code.type == 'C' && code.attribute == attribute && !found.code) {
            found.code = i;
        }
        if (code.type == 'L') {
            if (code.attribute == attribute && !found.phase) {
                found.phase = i;
            }
            if (!phaseOfBand) {
                phaseOfBand = i;
            }
        }
    }
    if (!found.phase && anyPhase) {
        found.phase = phaseOfBand;
    }
    return found;
}

bool InCodeBounds(double value) {
    return value >= kLeastCode && value <= kMostCode;
}
bool InPhaseBounds(double value) {
    return std::abs(value) < kMostPhase && value != 0.0;
}

// The tracking codes of a band at a receiver, with their counts and names.
std::map<char, TrackedSignal> TrackedOnBand(const io::Observations& observations,
                                            engine::System system, char band) {
    std::map<char, TrackedSignal> tracked;
    const bool anyPhase = observations.version < kRinexWithPhaseCodes;
    const auto formatSystem = FormatSystemOf(system);
    const auto systemIndex = static_cast<std::size_t>(formatSystem);
    // Columns of each tracking code, by signal table.
    std::vector<std::vector<std::pair<char, ColumnPair>>> columns(observations.signalTables.size());
    for (std::size_t t = 0; t < columns.size(); ++t) {
        const auto& signals = observations.signalTables[t][systemIndex];
        for (const io::Signal& signal : signals) {
            if (signal.code.type != 'C' || signal.code.band != band) {
                continue;
            }
            const char attribute = signal.code.attribute;
            const ColumnPair pair = FindColumns(signals, band, attribute, anyPhase);
            const bool seen =
                std::any_of(columns[t].begin(), columns[t].end(),
                            [attribute](const auto& entry) { return entry.first == attribute; });
            if (pair.code && pair.phase && !seen) {
                columns[t].emplace_back(attribute, pair);
                tracked.try_emplace(attribute,
                                    TrackedSignal{band, attribute, signals[*pair.code].fileName,
                                                  signals[*pair.phase].fileName, 0});
            }
        }
    }
    for (const io::SatelliteRow& row : observations.satellites) {
        if (row.satellite.system != formatSystem) {
            continue;
        }
        for (const auto& [attribute, pair] : columns[row.signalTable]) {
            if (InCodeBounds(observations.Value(row, *pair.code)) &&
                InPhaseBounds(observations.Value(row, *pair.phase))) {
                ++tracked[attribute].count;
            }
        }
    }
    std::erase_if(tracked, [](const auto& entry) { return entry.second.count == 0; });
    return tracked;
}

// Of candidates (attribute and its count), the one that the rules take.
std::optional<char> Preferred(const std::map<char, std::size_t>& candidates,
                              std::string_view preference) {
    std::size_t fullest = 0;
    for (const auto& [attribute, count] : candidates) {
        fullest = std::max(fullest, count);
    }
    for (const char attribute : preference) {
        const auto found = candidates.find(attribute);
        if (found != candidates.end() && 2 * found->second >= fullest) {
            return attribute;
        }
    }
    return std::nullopt;
}

std::optional<TrackedSignal> PreferredOf(const std::map<char, TrackedSignal>& tracked,
                                         std::string_view preference) {
    std::map<char, std::size_t> counts;
    for (const auto& [attribute, signal] : tracked) {
        counts[attribute] = signal.count;
    }
    const auto attribute = Preferred(counts, preference);
    return attribute ? std::optional(tracked.at(*attribute)) : std::nullopt;
}

SignalPair ChooseOnBand(const io::Observations& rover, const io::Observations& base,
                        engine::System system, char band) {
    const auto ofRover = TrackedOnBand(rover, system, band);
    const auto ofBase = TrackedOnBand(base, system, band);
    const std::string_view preference = PreferenceOf(system, band);
    std::map<char, std::size_t> common;
    for (const auto& [attribute, signal] : ofRover) {
        const auto other = ofBase.find(attribute);
        if (other != ofBase.end()) {
            common[attribute] = std::min(signal.count, other->second.count);
        }
    }
    if (const auto attribute = Preferred(common, preference)) {
        return {ofRover.at(*attribute), ofBase.at(*attribute)};
    }
    return {PreferredOf(ofRover, preference), PreferredOf(ofBase, preference)};
}

}  // namespace

const char* GalileoSignalName(int number) {
    constexpr std::array<const char*, 6> kNames = {"?", "E1", "E5a", "E5b", "E5", "E6"};
    return number >= VORNEL_GALILEO_E1 && number <= VORNEL_GALILEO_E6
               ? kNames[static_cast<std::size_t>(number)]
               : kNames[0];
}

SignalChoice ChooseSignals(const io::Observations& rover, const io::Observations& base,
                           GalileoSignals galileo) {
    SignalChoice choice;
    for (const engine::System system : engine::kSystems) {
        for (std::size_t f = 0; f < kFrequencies; ++f) {
            choice[engine::IndexOf(system)][f] =
                ChooseOnBand(rover, base, system, BandOf(system, f, galileo));
        }
    }
    return choice;
}

int SecondGalileoSignal(const io::Observations& rover, const io::Observations& base, int first) {
    constexpr std::array<int, 5> kOrder = {VORNEL_GALILEO_E5A, VORNEL_GALILEO_E5B,
                                           VORNEL_GALILEO_E5, VORNEL_GALILEO_E6, VORNEL_GALILEO_E1};
    for (const int number : kOrder) {
        if (number != first &&
            ChooseOnBand(rover, base, engine::System::kGalileo, GalileoBand(number)).Usable()) {
            return number;
        }
    }
    return first == kOrder[0] ? kOrder[1] : kOrder[0];
}

SignalReader::SignalReader(const io::Observations& observations, const SignalChoice& choice,
                           bool rover)
    : observations_(observations), columns_(observations.signalTables.size()) {
    const bool anyPhase = observations.version < kRinexWithPhaseCodes;
    for (std::size_t t = 0; t < columns_.size(); ++t) {
        for (const engine::System system : engine::kSystems) {
            const auto& signals =
                observations.signalTables[t][static_cast<std::size_t>(FormatSystemOf(system))];
            for (std::size_t f = 0; f < kFrequencies; ++f) {
                const SignalPair& pair = choice[engine::IndexOf(system)][f];
                const auto& chosen = rover ? pair.rover : pair.base;
                if (!pair.Usable() || !chosen) {
                    continue;
                }
                const ColumnPair found =
                    FindColumns(signals, chosen->band, chosen->attribute, anyPhase);
                columns_[t][engine::IndexOf(system)][f] = {found.code, found.phase};
            }
        }
    }
}

std::vector<SignalValues> SignalReader::Read(const io::ObservationEpoch& epoch,
                                             ValueLosses& losses) const {
    const auto rows = observations_.SatellitesOf(epoch);
    std::vector<SignalValues> list;
    list.reserve(rows.size());
    std::bitset<VORNEL_SATELLITES + 1> seen;
    for (const io::SatelliteRow& row : rows) {
        const auto satellite = engine::ToEngine(row.satellite);
        if (!satellite) {
            continue;
        }
        const auto number = static_cast<std::size_t>(engine::NumberAcrossSystems(*satellite));
        if (seen.test(number)) {
            continue;
        }
        seen.set(number);
        SignalValues values;
        values.satellite = *satellite;
        bool any = false;
        for (std::size_t f = 0; f < kFrequencies; ++f) {
            const Columns& columns =
                columns_[row.signalTable][engine::IndexOf(satellite->system)][f];
            const double code = columns.code ? observations_.Value(row, *columns.code) : NAN;
            const double phase = columns.phase ? observations_.Value(row, *columns.phase) : NAN;
            if (InCodeBounds(code)) {
                values.code[f] = code;
            } else if (!std::isnan(code)) {
                ++losses.outOfBounds;
            }
            if (InPhaseBounds(phase)) {
                values.phase[f] = phase;
            } else if (!std::isnan(phase)) {
                ++losses.outOfBounds;
            }
            any = any || values.code[f] != 0.0;
        }
        if (values.code[0] != 0.0) {
            list.push_back(values);
        } else if (any) {
            ++losses.noFirstCode;
        }
    }
    std::sort(list.begin(), list.end(), [](const SignalValues& a, const SignalValues& b) {
        return a.satellite < b.satellite;
    });
    return list;
}

}  // namespace vornel::session
