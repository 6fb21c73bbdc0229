// The satellite of each system and period against which its double differences are formed.
//
// Of the run, SelectRefSats
//   reads   epochs (activeSats, azelA, azelB), periods, config (useGps, useGlonass, useBds,
//           useGalileo, minEpochs, samplingInterval)
//   writes  epochs (activeSats), periods (refSatGps, refSatGlo, refSatBds, refSatGal)
// Channels of GLONASS satellites come from the ephemerides of the process.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "foundation/satellite.h"
#include "foundation/trace.h"
#include "orbit/glonass_orbit.h"
#include "run/static_solve.h"

namespace vornel {

namespace {

// A satellite as a period sees it.
struct Candidate {
    int sat;
    int epochCount = 0;
    double elevationSum = 0.0;  // radians, mean of the two stations

    double MeanElevation() const { return elevationSum / epochCount; }
};

// A system's satellites in order of first appearance.
using CandidateTable = std::vector<Candidate>;

CandidateTable Survey(const StaticSolve& solver, const StaticPeriod& period, int system) {
    CandidateTable table;
    for (int i = period.startIndex; i <= period.endIndex; ++i) {
        const SDObsData& epoch = solver.epochs[static_cast<std::size_t>(i)];
        for (const int sat : epoch.activeSats) {
            if (SplitSatNumber(sat) != system) {
                continue;
            }
            auto entry = std::find_if(table.begin(), table.end(),
                                      [sat](const Candidate& other) { return other.sat == sat; });
            if (entry == table.end()) {
                entry = table.insert(table.end(), Candidate{sat});
            }
            ++entry->epochCount;
            entry->elevationSum += (epoch.azelA[sat - 1][1] + epoch.azelB[sat - 1][1]) / 2.0;
        }
    }
    return table;
}

std::vector<int> SeenTooLittle(const CandidateTable& table, int minEpochs) {
    std::vector<int> sats;
    for (const Candidate& candidate : table) {
        if (candidate.epochCount < minEpochs) {
            sats.push_back(candidate.sat);
        }
    }
    return sats;
}

// The satellite seen longest; of equals the higher one, of equals in that the first. -1 for none.
int LongestSeen(const CandidateTable& table, int minEpochs) {
    int best = minEpochs;
    double bestElevation = 0.0;
    int reference = -1;
    for (const Candidate& candidate : table) {
        if (candidate.epochCount > best) {
            reference = candidate.sat;
            best = candidate.epochCount;
            bestElevation = candidate.MeanElevation();
        } else if (candidate.epochCount == best && candidate.MeanElevation() > bestElevation) {
            reference = candidate.sat;
            bestElevation = candidate.MeanElevation();
        }
    }
    return reference;
}

// Channels are signed 16-bit numbers here, as in the records of the observations; what an ephemeris
// has beyond them wraps round.
std::int16_t ChannelOf(int sat) {
    int slot = 0;
    SplitSatNumber(sat, &slot);
    const GlonassEphemeris* record = GlonassEphemerides().FirstOfSlot(slot);
    return record == nullptr ? std::int16_t{0} : static_cast<std::int16_t>(record->channel);
}

// The satellite in the middle of the frequency channels that is seen long enough, so that the
// differences of wavelength stay small on both sides. -1 for none.
int MiddleOfChannels(CandidateTable table, double span, double samplingInterval) {
    std::stable_sort(table.begin(), table.end(), [](const Candidate& left, const Candidate& right) {
        return ChannelOf(left.sat) < ChannelOf(right.sat);
    });
    int most = 0;
    for (const Candidate& candidate : table) {
        most = std::max(most, candidate.epochCount);
    }
    double needed = std::trunc(span / (1.5 * samplingInterval));
    if (most < needed) {
        needed = std::trunc(most / 1.5);
    }

    const int n = static_cast<int>(table.size());
    const auto at = [&table](int i) -> const Candidate& {
        return table[static_cast<std::size_t>(i)];
    };
    const auto longEnough = [needed](const Candidate& candidate) {
        return candidate.epochCount >= needed;
    };
    // The one of a pair that wins: the higher one, `first` on equality. -1 when neither is seen
    // long enough.
    const auto winner = [&](const Candidate& first, const Candidate& second) {
        if (longEnough(first) && longEnough(second)) {
            return second.MeanElevation() > first.MeanElevation() ? second.sat : first.sat;
        }
        return longEnough(first) ? first.sat : (longEnough(second) ? second.sat : -1);
    };

    int reference = -1;
    if (n % 2 == 0) {
        for (int k = 0; k <= n / 2 - 1 && reference == -1; ++k) {
            reference = winner(at(n / 2 - 1 - k), at(n / 2 + k));
        }
        return reference;
    }
    const int middle = (n - 1) / 2;
    if (longEnough(at(middle))) {
        return at(middle).sat;
    }
    // The outermost two are not tried.
    for (int k = 1; k <= middle - 1 && reference == -1; ++k) {
        reference = winner(at(middle + k), at(middle - k));
    }
    return reference;
}

// An epoch without the reference loses its system; every epoch loses the satellites seen too
// little.
void CleanEpochs(StaticSolve& solver, const StaticPeriod& period, int system, int reference,
                 const std::vector<int>& removed) {
    for (int i = period.startIndex; i <= period.endIndex; ++i) {
        SDObsData& epoch = solver.epochs[static_cast<std::size_t>(i)];
        if (!epoch.IsActive(reference)) {
            std::erase_if(epoch.activeSats,
                          [system](int sat) { return SplitSatNumber(sat) == system; });
        }
        for (const int sat : removed) {
            epoch.RemoveActive(sat);
        }
    }
}

// Chooses a system's reference in a period and cleans the epochs; -1 for none, or a system switched
// off, of which nothing is cleaned.
int SelectReference(StaticSolve& solver, const StaticPeriod& period, int system, int use) {
    if (use != 1) {
        return -1;
    }
    const SolveConfig& config = solver.config;
    const CandidateTable table = Survey(solver, period, system);
    const int reference =
        system == kGlonass
            ? MiddleOfChannels(table, period.endTime - period.startTime, config.samplingInterval)
            : LongestSeen(table, config.minEpochs);
    CleanEpochs(solver, period, system, reference, SeenTooLittle(table, config.minEpochs));
    return reference;
}

}  // namespace

int StaticSolve::SelectRefSats() {
    bool anyReference = false;
    for (StaticPeriod& period : periods) {
        period.refSatGps = SelectReference(*this, period, kGps, config.useGps);
        period.refSatGlo = SelectReference(*this, period, kGlonass, config.useGlonass);
        period.refSatBds = SelectReference(*this, period, kBds, config.useBds);
        period.refSatGal = SelectReference(*this, period, kGalileo, config.useGalileo);
        anyReference = anyReference || period.HasReference();
    }
    for (std::size_t i = 0; i < periods.size(); ++i) {
        TraceWrite(3, "Period[%d],select refsat: G%d R%d C%d E%d.\n", static_cast<int>(i),
                   periods[i].refSatGps, periods[i].refSatGlo, periods[i].refSatBds,
                   periods[i].refSatGal);
    }
    return anyReference ? VORNEL_STATUS_REFERENCES_CHOSEN : VORNEL_STATUS_NO_REFERENCE;
}

}  // namespace vornel
