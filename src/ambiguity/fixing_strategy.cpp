// From real ambiguities to integers: period by period, or, kept behind a flag, the whole session at
// once.
//
// Of the run, FixAmbiguity
//   reads   config (ratioThreshold), equationBlock; for the whole session also epochs (activeSats,
//           phase, glonassChannel), periods, ambiguityParas, roverPosition, basePosition, antennas,
//           resultManage (floatResults, fixedResults), config (reservedMode, galFreq1, galFreq2)
//   writes  modelCache, for the whole session alone
#include <algorithm>
#include <cmath>
#include <functional>
#include <set>

#include "ambiguity/integer_search.h"
#include "ambiguity/lambda.h"
#include "ambiguity/period_fixing.h"
#include "difference/double_difference.h"
#include "foundation/index.h"
#include "foundation/trace.h"
#include "run/static_solve.h"

namespace vornel {

using gult::matrixT;

namespace {

constexpr double kFarFromInteger = 0.35;  // cycles
constexpr double kBlunder = 2.35;         // cycles
constexpr double kNothingToSearch = 0.001;

// The ambiguities of a session that are still to be fixed, and their covariance: value1 of all
// tracks, then in model 3 value2 of all tracks.
struct AmbiguitySet {
    int mode;
    std::vector<AmbRstInfo> tracks;
    matrixT Q;

    int TrackCount() const { return static_cast<int>(tracks.size()); }
    int Size() const { return TrackCount() * BlockCount(mode); }
    int TrackOf(int i) const { return i % TrackCount(); }

    matrixT Values() const {
        matrixT a(Index(Size()), 1);
        for (int i = 0; i < Size(); ++i) {
            const AmbRstInfo& track = tracks[Slot(TrackOf(i))];
            a(Index(i), 0) = i < TrackCount() ? track.value1 : track.value2;
        }
        return a;
    }

    void Erase(int track) {
        if (mode == VORNEL_MODEL_BOTH) {
            EraseRowAndColumn(TrackCount() + track);
        }
        EraseRowAndColumn(track);
        tracks.erase(tracks.begin() + track);
    }

  private:
    void EraseRowAndColumn(int index) {
        const std::uint32_t erased = Index(index);
        const std::uint32_t size = Q.RowCount() - 1;
        matrixT smaller(size, size);
        for (std::uint32_t i = 0; i < size; ++i) {
            for (std::uint32_t j = 0; j < size; ++j) {
                smaller(i, j) = Q(i < erased ? i : i + 1, j < erased ? j : j + 1);
            }
        }
        Q = smaller;
    }
};

double SumOfMagnitudes(matrixT matrix) {
    double sum = 0.0;
    for (std::uint32_t i = 0; i < matrix.RowCount(); ++i) {
        for (std::uint32_t j = 0; j < matrix.ColCount(); ++j) {
            sum += std::fabs(matrix(i, j));
        }
    }
    return sum;
}

// The two best integer vectors by LAMBDA.
IntegerPair LambdaPair(matrixT a, matrixT Q) {
    const int n = static_cast<int>(a.RowCount());
    std::vector<double> values, covariance, F(Slot(2 * n), 0.0);
    double s[2] = {0.0, 0.0};
    for (int j = 0; j < n; ++j) {
        values.push_back(a(Index(j), 0));
        for (int i = 0; i < n; ++i) {
            covariance.push_back(Q(Index(i), Index(j)));
        }
    }
    TraceWrite(4, "afloat:\n");
    TraceArray(4, values.data(), 1, n, 13, 3);
    if (!LambdaSearch(n, 2, values.data(), covariance.data(), F.data(), s)) {
        s[0] = s[1] = 0.0;
    }
    IntegerPair pair{{F.begin(), F.begin() + n}, {F.begin() + n, F.end()}, s[0], s[1]};
    for (const std::vector<double>& integers : {pair.best, pair.second}) {
        TraceWrite(4, "afixed:\n");
        TraceArray(4, integers.data(), 1, n, 13, 3);
    }
    return pair;
}

// How one of the two whole-session methods shrinks the set.
struct ShrinkRules {
    int keep;               // tracks at which it stops
    bool stopInFirstRound;  // whether that counts in round 0 too
    bool markFarFromInteger;
    std::function<IntegerPair(const AmbiguitySet&, const matrixT&)> search;
};

// Tracks to give up after a round that did not pass.
std::set<int> MarkedTracks(const AmbiguitySet& set, matrixT a, const IntegerPair& pair,
                           bool markFarFromInteger) {
    std::set<int> marks;
    double largest = -1.0;
    int largestIndex = 0;
    for (int i = 0; i < set.Size(); ++i) {
        const double deviation = std::fabs(a(Index(i), 0) - pair.best[Slot(i)]);
        if (deviation > largest) {
            largest = deviation;
            largestIndex = i;
        }
        if (markFarFromInteger && deviation > kFarFromInteger) {
            marks.insert(set.TrackOf(i));
        }
    }
    if (largest > kBlunder) {
        marks.insert(set.TrackOf(largestIndex));
        return marks;
    }
    for (int i = 0; i < set.Size(); ++i) {
        if (pair.second[Slot(i)] != pair.best[Slot(i)]) {
            marks.insert(set.TrackOf(i));
        }
    }
    return marks;
}

struct RoundResult {
    std::vector<AmbRstInfo> tracks;
    std::vector<double> integers;
    double ratio = 0.0;
};

void File(int mode, const RoundResult& result, SolveResultFixed& out) {
    out = SolveResultFixed();
    out.mode = mode;
    out.ratio = result.ratio;
    const std::size_t count = result.tracks.size();
    for (std::size_t i = 0; i < count; ++i) {
        const AmbRstInfo& track = result.tracks[i];
        AmbRstInfo fixed = TrackOf(track);
        fixed.value1 = result.integers[i];
        if (mode == VORNEL_MODEL_BOTH) {
            fixed.value2 = result.integers[count + i];
        }
        out.ambiguities.push_back(fixed);
    }
}

// Rounds of search on a shrinking set, until the ratio passes or too few tracks are left; the first
// round's result when none passes; with reservedMode 0 there is one round. 0 when the best sum of
// squares is exactly 0.
int FixByShrinking(const SolveConfig& config, AmbiguitySet set, const ShrinkRules& rules,
                   SolveResultFixed& out) {
    RoundResult first, last;
    int round = 0;
    while (!((round > 0 || rules.stopInFirstRound) && set.TrackCount() <= rules.keep)) {
        const matrixT a = set.Values();
        IntegerPair pair;
        if (SumOfMagnitudes(a) + SumOfMagnitudes(set.Q) < kNothingToSearch) {
            matrixT values = a;
            for (int i = 0; i < set.Size(); ++i) {
                pair.best.push_back(values(Index(i), 0));
                pair.second.push_back(values(Index(i), 0) + 1.0);
            }
            pair.s1 = 0.1;
            pair.s2 = 100.0;
        } else {
            pair = rules.search(set, a);
        }
        if (pair.s1 == 0.0) {
            return 0;
        }
        last = {set.tracks, pair.best, std::min(pair.s2 / pair.s1, VORNEL_GREATEST_RATIO)};
        if (last.ratio > config.ratioThreshold || config.reservedMode == 0) {
            break;
        }
        if (round == 0) {
            first = last;
        }
        ++round;
        const std::set<int> marks = MarkedTracks(set, a, pair, rules.markFarFromInteger);
        // Equal best and second, all near integers: another round would change nothing.
        if (marks.empty()) {
            break;
        }
        for (auto mark = marks.rbegin(); mark != marks.rend(); ++mark) {
            set.Erase(*mark);
        }
    }
    const bool lastStands = last.ratio > config.ratioThreshold || round < 1;
    File(set.mode, lastStands ? last : first, out);
    return 1;
}

// The double differences of the session for the tracks of a set. Galileo takes no part.
EpochEquations BuildEpochEquations(StaticSolve& solver, const AmbiguitySet& set) {
    EpochEquations equations;
    const std::vector<AmbRstInfo> wideLane =
        set.mode == VORNEL_MODEL_IONO_FREE
            ? solver.resultManage.FindFixed(VORNEL_MODEL_WIDE_LANE).ambiguities
            : std::vector<AmbRstInfo>();
    const RowFinder rowFinder(solver, set.tracks,
                              set.mode == VORNEL_MODEL_IONO_FREE ? &wideLane : nullptr);
    std::vector<DoubleDifferencer> differencers;
    for (int block = 0; block < BlockCount(set.mode); ++block) {
        differencers.emplace_back(solver, set.mode, block, ModelForm::kConfigured);
    }
    for (int e = 0; e < static_cast<int>(solver.epochs.size()); ++e) {
        const StaticPeriod* period = solver.PeriodOf(e);
        if (period == nullptr || !period->HasReference()) {
            continue;
        }
        for (int block = 0; block < BlockCount(set.mode); ++block) {
            DoubleDifferencer& differencer = differencers[Slot(block)];
            if (!differencer.TakeUpEpoch(e, *period)) {
                continue;
            }
            std::vector<Row> rows = rowFinder.RowsOfEpoch(e, *period);
            std::erase_if(rows, [&differencer](const Row& row) {
                return row.system == kGalileo || !differencer.ReferenceOf(row.system).present;
            });
            if (rows.empty()) {
                continue;
            }
            const std::uint32_t m = Index(static_cast<int>(rows.size()));
            matrixT y(m, 1), B(m, 3);
            std::vector<int> indices;
            std::vector<double> wavelengths;
            for (std::uint32_t i = 0; i < m; ++i) {
                const DoubleDifference difference = differencer.Form(rows[i]);
                const LaneCombination& combination = difference.combination;
                double v = difference.v;
                double wavelength = combination.wavelength;
                if (set.mode == VORNEL_MODEL_IONO_FREE) {
                    const double wide = wideLane[Slot(rows[i].wideLane)].value1;
                    v -= combination.wideLane * wide * combination.wavelength;
                    wavelength *= combination.narrowLane;
                }
                y(i, 0) = v;
                for (std::uint32_t k = 0; k < 3; ++k) {
                    B(i, k) = difference.direction[k];
                }
                indices.push_back(rows[i].ambiguity + block * set.TrackCount());
                wavelengths.push_back(wavelength);
            }
            equations.y.push_back(y);
            equations.B.push_back(B);
            equations.ambiguityIndex.push_back(indices);
            equations.wavelength.push_back(wavelengths);
        }
    }
    return equations;
}

}  // namespace

int StaticSolve::FixAmbiguity(int useStrategy, int model, SolveResultFixed& out) {
    if (useStrategy != 1) {
        return FixPerPeriod(model, out);
    }
    if (FixByLambda(model, out) == 0) {
        return FixBySearch(model, out);
    }
    // A record that does not exist yet has ratio 0.0.
    const double filedRatio = resultManage.FindFixed(model).ratio;
    if (filedRatio >= config.ratioThreshold) {
        return 1;
    }
    // The search can only turn the outcome into a failure.
    SolveResultFixed searched;
    if (FixBySearch(model, searched) == 0 || filedRatio > searched.ratio) {
        return 0;
    }
    return 1;
}

int StaticSolve::FixPerPeriod(int model, SolveResultFixed& out) {
    PeriodFixing fixing(model, config.ratioThreshold, equationBlock);
    const bool anySearchSucceeded = fixing.Resolve();
    out.mode = model;
    out.ratio = fixing.ratio;
    out.ambiguities = fixing.ambiguities;
    return anySearchSucceeded ? 1 : 0;
}

int StaticSolve::FixByLambda(int model, SolveResultFixed& out) {
    const SolveResultFloat record = resultManage.FindFloat(model);
    if (record.ambiguities.empty()) {
        return 0;
    }
    const int tracks = static_cast<int>(record.ambiguities.size());
    const ShrinkRules rules{
        std::max(tracks / 2, 6), false, true,
        [](const AmbiguitySet& set, const matrixT& a) { return LambdaPair(a, set.Q); }};
    return FixByShrinking(config, {model, record.ambiguities, record.ambCov}, rules, out);
}

int StaticSolve::FixBySearch(int model, SolveResultFixed& out) {
    const SolveResultFloat record = resultManage.FindFloat(model);
    if (record.ambiguities.empty()) {
        return 0;
    }
    const int tracks = static_cast<int>(record.ambiguities.size());
    const ShrinkRules rules{tracks / 2, true, false,
                            [this, &record](const AmbiguitySet& set, const matrixT& a) {
                                EpochEquations equations = BuildEpochEquations(*this, set);
                                return SearchIntegers(a, set.Q, record.dof, equations);
                            }};
    return FixByShrinking(config, {model, record.ambiguities, record.ambCov}, rules, out);
}

}  // namespace vornel
