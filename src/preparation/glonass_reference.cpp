// The GLONASS reference satellite's ambiguity.
//
// A GLONASS double difference joins two wavelengths, so that (wavelength - reference's wavelength)
// times the reference's ambiguity stays in it. Knowing that ambiguity to a few cycles makes the
// term small: carrier-smoothed code (Hatch 1982) subtracted from the carrier gives it, arc by arc
// of the reference.
//
// Of the run, AlignGlonassReference
//   reads   epochs (phase, code, glonassChannel), periods, config (minEpochs, galFreq1, galFreq2),
//           ambiguityParas
//   writes  ambiguityParas
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "difference/single_difference.h"
#include "foundation/satellite.h"
#include "foundation/statistics.h"
#include "run/static_solve.h"

namespace vornel {

namespace {

constexpr double kOutlierLimit =
    3.5;  // standard deviations; of its own, whatever the configuration says

// Ambiguity in cycles at each epoch of an arc, from the single differences of one frequency (f 0 or
// 1).
std::vector<double> AmbiguitySeries(const StaticSolve& solver, const AmbiguityPara& arc,
                                    double wavelength, int f) {
    std::vector<double> series;
    double smoothed = 0.0;
    double count = 0.0;
    const auto phaseAt = [&](int t) {
        return solver.epochs[static_cast<std::size_t>(t)].phase[arc.sat - 1][f];
    };
    for (int t = arc.firstEpoch; t <= arc.lastEpoch; ++t) {
        const double code = solver.epochs[static_cast<std::size_t>(t)].code[arc.sat - 1][f];
        const double phase = phaseAt(t);
        if (smoothed == 0.0 || phase == 0.0 || phaseAt(t - 1) == 0.0) {
            smoothed = code;
            count = 1.0;
        } else {
            const double w = 1 / (count + 1);
            smoothed = w * code + (1 - w) * ((phase - phaseAt(t - 1)) * wavelength + smoothed);
            count += 1.0;
        }
        series.push_back((phase * wavelength - smoothed) / wavelength);
    }
    return series;
}

double Mean(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values) {
        sum += value;
    }
    return sum / static_cast<double>(values.size());
}

// The mean rounded, once no value is an outlier any more; 0.0 when fewer than minEpochs - 1 values
// stand.
double RobustAmbiguity(std::vector<double> values, int minEpochs) {
    double mean = 0.0;
    for (bool removed = true; removed;) {
        mean = Mean(values);
        double sumSquares = 0.0;
        for (const double value : values) {
            sumSquares += (value - mean) * (value - mean);
        }
        const double deviation = std::sqrt(sumSquares / static_cast<double>(values.size()));
        removed = std::erase_if(values, [=](double value) {
                      return std::fabs(value - mean) > kOutlierLimit * deviation;
                  }) > 0;
    }
    return static_cast<double>(values.size()) >= minEpochs - 1.0 ? RoundHalfAway(mean) : 0.0;
}

bool LiesWithin(const AmbiguityPara& para, const StaticPeriod& period) {
    return para.firstEpoch >= period.startIndex && para.lastEpoch <= period.endIndex;
}

// Moves the reference's arcs of the period out of the list, each with its two ambiguities.
std::vector<AmbiguityPara> TakeReferenceArcs(StaticSolve& solver, const StaticPeriod& period) {
    const SingleDifferenceModel model(solver);
    std::vector<AmbiguityPara> arcs;
    std::erase_if(solver.ambiguityParas, [&](const AmbiguityPara& para) {
        if (para.sat != period.refSatGlo || !LiesWithin(para, period) ||
            para.firstEpoch > para.lastEpoch) {
            return false;
        }
        const SDObsData& first = solver.epochs[static_cast<std::size_t>(para.firstEpoch)];
        const Carriers carriers = model.CarriersOf(first, para.sat);
        const int minEpochs = solver.config.minEpochs;
        AmbiguityPara& arc = arcs.emplace_back(para);
        arc.refAmbF1 =
            RobustAmbiguity(AmbiguitySeries(solver, arc, carriers.wavelength1, 0), minEpochs);
        arc.refAmbF2 =
            RobustAmbiguity(AmbiguitySeries(solver, arc, carriers.wavelength2, 1), minEpochs);
        return true;
    });
    return arcs;
}

// The parts of a segment that lie within one arc of the reference, long enough to count.
void CutByArcs(const AmbiguityPara& para, const std::vector<AmbiguityPara>& arcs, int minEpochs,
               std::vector<AmbiguityPara>& rebuilt) {
    for (const AmbiguityPara& arc : arcs) {
        if (!(arc.firstEpoch < para.lastEpoch && para.firstEpoch < arc.lastEpoch)) {
            continue;
        }
        const int low = std::max(arc.firstEpoch, para.firstEpoch);
        const int high = std::min(arc.lastEpoch, para.lastEpoch);
        if (high - low >= minEpochs - 1.0) {
            AmbiguityPara part(para.sat, low, high);
            part.refAmbF1 = arc.refAmbF1;
            part.refAmbF2 = arc.refAmbF2;
            rebuilt.push_back(part);
        }
    }
}

}  // namespace

void StaticSolve::AlignGlonassReference() {
    std::vector<AmbiguityPara> rebuilt;
    for (const StaticPeriod& period : periods) {
        if (period.refSatGlo == -1) {
            continue;
        }
        const std::vector<AmbiguityPara> arcs = TakeReferenceArcs(*this, period);
        std::erase_if(ambiguityParas, [&](const AmbiguityPara& para) {
            if (SplitSatNumber(para.sat) != kGlonass || !LiesWithin(para, period)) {
                return false;
            }
            CutByArcs(para, arcs, config.minEpochs, rebuilt);
            return true;
        });
    }
    ambiguityParas.insert(ambiguityParas.end(), rebuilt.begin(), rebuilt.end());
    SortAmbiguities(ambiguityParas);
}

}  // namespace vornel
