#include "io/observations.h"

#include <algorithm>

namespace vornel::io {
namespace {

// Appends the arrays of `part` to those of `whole`, with the places in them moved.
void AppendPart(Observations& whole, const Observations& part) {
    const auto firstStation = static_cast<std::uint16_t>(whole.stations.size());
    const auto firstTable = static_cast<std::uint16_t>(whole.signalTables.size());
    whole.stations.insert(whole.stations.end(), part.stations.begin(), part.stations.end());
    whole.signalTables.insert(whole.signalTables.end(), part.signalTables.begin(),
                              part.signalTables.end());
    std::size_t leftOut = 0;
    for (const ObservationEpoch& epoch : part.epochs) {
        if (!whole.epochs.empty() && epoch.time <= whole.epochs.back().time) {
            ++leftOut;
            continue;
        }
        ObservationEpoch moved = epoch;
        moved.firstSatellite = static_cast<std::uint32_t>(whole.satellites.size());
        moved.station = static_cast<std::uint16_t>(moved.station + firstStation);
        whole.epochs.push_back(moved);
        for (const SatelliteRow& row : part.SatellitesOf(epoch)) {
            const std::size_t columns = part.SignalsOf(row).size();
            SatelliteRow movedRow = row;
            movedRow.signalTable = static_cast<std::uint16_t>(row.signalTable + firstTable);
            movedRow.firstValue = static_cast<std::uint32_t>(whole.values.size());
            whole.satellites.push_back(movedRow);
            const auto copy = [&](auto& to, const auto& from) {
                const auto first = from.begin() + static_cast<std::ptrdiff_t>(row.firstValue);
                to.insert(to.end(), first, first + static_cast<std::ptrdiff_t>(columns));
            };
            copy(whole.values, part.values);
            copy(whole.lossOfLock, part.lossOfLock);
            copy(whole.signalStrength, part.signalStrength);
        }
    }
    if (leftOut > 0) {
        whole.notes.push_back({0, part.file + ": " + std::to_string(leftOut) +
                                      " epochs that earlier files have already are left out"});
    }
}

}  // namespace

void Observations::ForgetSatellites() {
    for (ObservationEpoch& epoch : epochs) {
        epoch.firstSatellite = 0;
        epoch.satelliteCount = 0;
    }
    // New ones in their place: a vector that is emptied keeps its memory.
    satellites = std::vector<SatelliteRow>();
    values = std::vector<double>();
    lossOfLock = std::vector<std::uint8_t>();
    signalStrength = std::vector<std::uint8_t>();
}

std::string ToString(ObservationCode code) {
    return {code.type, code.band, code.attribute};
}

Observations JoinObservations(std::vector<Observations> parts) {
    if (parts.empty()) {
        return {};
    }
    // Files without epochs go last: they have no time to be ordered by.
    std::stable_sort(parts.begin(), parts.end(), [](const Observations& a, const Observations& b) {
        if (a.epochs.empty() || b.epochs.empty()) {
            return !a.epochs.empty() && b.epochs.empty();
        }
        return a.epochs.front().time < b.epochs.front().time;
    });
    Observations whole = std::move(parts.front());
    std::size_t stations = whole.stations.size();
    std::size_t tables = whole.signalTables.size();
    std::size_t values = whole.values.size();
    for (std::size_t i = 1; i < parts.size(); ++i) {
        stations += parts[i].stations.size();
        tables += parts[i].signalTables.size();
        values += parts[i].values.size();
    }
    constexpr std::size_t kMostHeaders = 65535;  // what the places in the model can count
    constexpr std::size_t kMostValues = 4'000'000'000;
    if (stations > kMostHeaders || tables > kMostHeaders || values > kMostValues) {
        throw InputError(InputFault::kTooLarge, whole.file, 0,
                         "the files of the station are too many to be joined",
                         "give fewer at once");
    }
    for (std::size_t i = 1; i < parts.size(); ++i) {
        AppendPart(whole, parts[i]);
        whole.slipRecords += parts[i].slipRecords;
        whole.externalEvents += parts[i].externalEvents;
        parts[i] = {};  // its memory is free for the next
    }
    return whole;
}

}  // namespace vornel::io
