#include "engine/engine.h"

#include <utility>

namespace vornel::engine {
namespace {

void Require(int answer, const char* function) {
    if (answer == 0) {
        throw Failure(std::string("the engine gave up in ") + function +
                      " (out of memory, or an error of its own)");
    }
}

std::size_t Count(int answer) {
    return answer > 0 ? static_cast<std::size_t>(answer) : 0;
}

// Calls a base data query of the engine and gathers its 31 values. `leading` stands before the
// block: the index, or nothing.
template <typename Query, typename... Leading>
Solution BaseData(Query query, int mode, Leading... leading) {
    Solution s;
    s.mode = mode;
    auto& x = s.covarianceXyz;
    auto& n = s.covarianceNeu;
    const int answer =
        query(leading..., &s.mode, &s.vector[0], &s.vector[1], &s.vector[2], &s.length,
              &s.horizontalDistance, &s.heightDifference, &s.dof, &s.varianceFactor, &x[0], &x[1],
              &x[2], &x[3], &x[4], &x[5], &x[6], &x[7], &x[8], &n[0], &n[1], &n[2], &n[3], &n[4],
              &n[5], &n[6], &n[7], &n[8], &s.sigma3, &s.sigmaLength, &s.relativeAccuracy, &s.rms);
    return answer == 0 ? Solution{} : s;
}

// Arrays for one call of an ambiguity query.
struct AmbiguityArrays {
    explicit AmbiguityArrays(std::size_t count) {
        for (auto& list : ints) {
            list.resize(count);
        }
        for (auto& list : doubles) {
            list.resize(count);
        }
    }
    std::array<std::vector<int>, 10> ints;
    std::array<std::vector<double>, 6> doubles;
};

// Calls `query(arrays...)`, which answers how many entries it wrote, and gathers them.
template <typename Query>
std::vector<Ambiguity> Ambiguities(std::size_t count, Query query) {
    AmbiguityArrays a(count);
    const int written =
        query(a.ints[0].data(), a.ints[1].data(), a.ints[2].data(), a.ints[3].data(),
              a.ints[4].data(), a.doubles[0].data(), a.ints[5].data(), a.doubles[1].data(),
              a.doubles[2].data(), a.doubles[3].data(), a.ints[6].data(), a.ints[7].data(),
              a.ints[8].data(), a.ints[9].data(), a.doubles[4].data(), a.doubles[5].data());
    std::vector<Ambiguity> list(std::min(count, Count(written)));
    for (std::size_t i = 0; i < list.size(); ++i) {
        Ambiguity& entry = list[i];
        entry.system = a.ints[0][i];
        entry.prn = a.ints[1][i];
        entry.firstEpoch = a.ints[2][i];
        entry.lastEpoch = a.ints[3][i];
        entry.firstWeek = a.ints[4][i];
        entry.firstSeconds = a.doubles[0][i];
        entry.lastWeek = a.ints[5][i];
        entry.lastSeconds = a.doubles[1][i];
        entry.rms1 = a.doubles[2][i];
        entry.rms2 = a.doubles[3][i];
        entry.rows1 = a.ints[6][i];
        entry.rows2 = a.ints[7][i];
        entry.rejected1 = a.ints[8][i];
        entry.rejected2 = a.ints[9][i];
        entry.value1 = a.doubles[4][i];
        entry.value2 = a.doubles[5][i];
    }
    return list;
}

// All residuals of a solution, by the four queries of its kind (float or fixed).
template <typename SatNum, typename SatList, typename Size, typename List>
std::vector<ResidualSeries> Residuals(int index, SatNum satNum, SatList satList, Size size,
                                      List list) {
    std::vector<ResidualSeries> series;
    const int satellites = satNum(index);
    std::vector<int> systems(Count(satellites)), prns(Count(satellites));
    const std::size_t named = Count(satList(index, satellites, systems.data(), prns.data()));
    for (std::size_t i = 0; i < named; ++i) {
        for (int kind = 0; kind < 2; ++kind) {
            const int points = size(index, systems[i], prns[i], kind);
            if (points <= 0) {
                continue;
            }
            std::vector<int> weeks(Count(points)), values(Count(points));
            std::vector<double> seconds(Count(points));
            const std::size_t written = Count(list(index, systems[i], prns[i], kind, points,
                                                   weeks.data(), seconds.data(), values.data()));
            ResidualSeries one{systems[i], prns[i], kind, {}};
            for (std::size_t k = 0; k < written; ++k) {
                one.points.push_back({weeks[k], seconds[k], values[k]});
            }
            series.push_back(std::move(one));
        }
    }
    return series;
}

}  // namespace

Engine::~Engine() {
    if (created_) {
        api_.diposeProcess();
    }
}

void Engine::Create() {
    Require(api_.createBLProcess(), "CreateBLProcess");
    created_ = true;
}

void Engine::CreateWithTrace(const std::string& path, int level) {
    Require(api_.createBLProcessWithTrace(path.c_str(), level), "CreateBLProcessWithTrace");
    created_ = true;
}

void Engine::Configure(Config c) {
    Require(api_.inputSolveConfig(
                c.slvmode, c.elevationMask, c.samplingInterval, c.minEpochs, c.shortBaselineLimit,
                c.maxFixBaseline, c.ephemerisSource, c.systems.data(), c.outlierFactor,
                c.slipTestCap, c.ratioThreshold, c.reservedLimitA, c.reservedLimitB, c.codeStd,
                c.phaseStd, c.periodLength, c.tropoModel, c.pressure, c.temperature, c.humidity,
                c.reservedMode, c.sessionStartWeek, c.sessionStartSeconds, c.sessionEndWeek,
                c.sessionEndSeconds, c.galFreq1, c.galFreq2),
            "InputSolveConfig");
}

void Engine::SetStations(Station rover, Station base) {
    Require(api_.inputAntCorrData(rover.xyz.data(), rover.offset1.data(), rover.offset2.data(),
                                  rover.height, base.xyz.data(), base.offset1.data(),
                                  base.offset2.data(), base.height),
            "InputAntCorrData");
}

void Engine::SetIonosphere(std::array<double, 4> alpha, std::array<double, 4> beta) {
    Require(api_.inputIonCorrData(alpha.data(), beta.data()), "InputIonCorrData");
}

void Engine::AddKepler(const Kepler& r) {
    if (r.system == System::kGps) {
        Require(api_.inputOneSatNavGPS(r.satId, r.tocWeek, r.tocSeconds, r.af0, r.af1, r.af2,
                                       r.sqrtA, r.e, r.i0, r.omega0, r.omega, r.m0, r.deltaN,
                                       r.omegaDot, r.idot, r.crc, r.crs, r.cuc, r.cus, r.cic, r.cis,
                                       r.iode, r.iodc, r.toe, r.toeWeek, r.transmitTime, r.l2Codes,
                                       r.health, r.accuracy, r.l2PFlag, r.tgd, r.fitInterval),
                "InputOneSatNavGPS");
        return;
    }
    const bool bds = r.system == System::kBds;
    const auto input = bds ? api_.inputOneSatNavBDS : api_.inputOneSatNavGAL;
    Require(input(r.satId, r.tocWeek, r.tocSeconds, r.af0, r.af1, r.af2, r.sqrtA, r.e, r.i0,
                  r.omega0, r.omega, r.m0, r.deltaN, r.omegaDot, r.idot, r.crc, r.crs, r.cuc, r.cus,
                  r.cic, r.cis, r.iode, r.iodc, r.toe, r.toeWeek, r.transmitTime, r.l2Codes,
                  r.health, r.accuracy, r.l2PFlag, r.tgd, r.tgd2, r.fitInterval),
            bds ? "InputOneSatNavBDS" : "InputOneSatNavGAL");
}

void Engine::AddGlonass(const Glonass& r) {
    Require(api_.inputOneSatNavGLO(r.slot, r.week, r.seconds, 0.0, r.tbSeconds, 0.0, r.clockBias,
                                   r.clockDrift, r.position[0], r.position[1], r.position[2],
                                   r.velocity[0], r.velocity[1], r.velocity[2], r.acceleration[0],
                                   r.acceleration[1], r.acceleration[2], r.health, r.channel, r.age,
                                   r.leapSeconds),
            "InputOneSatNavGLO");
}

void Engine::AddPrecise(int component, Satellite satellite, std::vector<int> weeks,
                        std::vector<double> seconds, std::vector<double> values) {
    Require(api_.inputOneSatPreEphValue(component, static_cast<int>(satellite.system),
                                        satellite.prn, static_cast<int>(values.size()),
                                        weeks.data(), seconds.data(), values.data()),
            "InputOneSatPreEphValue");
}

void Engine::AddEpoch(ReceiverEpoch rover, ReceiverEpoch base) {
    Require(api_.inputEpochObsData(rover.week, rover.seconds, rover.satellites.data(),
                                   rover.code1.data(), rover.code2.data(), rover.phase1.data(),
                                   rover.phase2.data(), base.week, base.seconds,
                                   base.satellites.data(), base.code1.data(), base.code2.data(),
                                   base.phase1.data(), base.phase2.data()),
            "InputEpochObsData");
}

void Engine::ForgetExclusions() {
    Require(api_.markDelSatList(0, nullptr, nullptr), "MarkDelSatList");
    Require(api_.cleanSatTrackList(), "CleanSatTrackList");
}

void Engine::ExcludeSatellites(const std::vector<Satellite>& satellites) {
    std::vector<int> systems, prns;
    for (const Satellite& satellite : satellites) {
        systems.push_back(static_cast<int>(satellite.system));
        prns.push_back(satellite.prn);
    }
    Require(api_.markDelSatList(static_cast<int>(satellites.size()), systems.data(), prns.data()),
            "MarkDelSatList");
}

void Engine::ExcludeSpans(Satellite satellite, const std::vector<Span>& spans) {
    if (spans.empty()) {
        return;
    }
    std::vector<int> startWeeks, endWeeks;
    std::vector<double> startSeconds, endSeconds;
    for (const Span& span : spans) {
        startWeeks.push_back(span.startWeek);
        startSeconds.push_back(span.startSeconds);
        endWeeks.push_back(span.endWeek);
        endSeconds.push_back(span.endSeconds);
    }
    constexpr int kList = 0;
    constexpr int kOnlyInGaps = 0;
    Require(api_.addOneSatTrackInfo(kList, static_cast<int>(satellite.system), satellite.prn,
                                    kOnlyInGaps, startWeeks.front(), startSeconds.front(),
                                    endWeeks.back(), endSeconds.back(), 0.0,
                                    static_cast<int>(spans.size()), startWeeks.data(),
                                    startSeconds.data(), endWeeks.data(), endSeconds.data()),
            "AddOneSatTrackInfo");
}

int Engine::Run(bool& completed) {
    int status = 0;
    completed = api_.startProcess(&status) != 0;
    return status;
}

Solution Engine::FloatSolution(int index) const {
    Solution solution = BaseData(api_.getFloatSolBaseData, 0, index);
    const int count = api_.getFloatSolAmbNum(index);
    solution.ambiguities = Ambiguities(Count(count), [&](auto... arrays) {
        return api_.getFloatSolAmbListData(index, count, arrays...);
    });
    if (solution.mode != VORNEL_MODEL_BOTH) {
        std::vector<double> variances(solution.ambiguities.size());
        api_.getFloatAmbCov(index, static_cast<int>(variances.size()), variances.data());
        for (std::size_t i = 0; i < variances.size(); ++i) {
            solution.ambiguities[i].variance = variances[i];
        }
    }
    solution.residuals = Residuals(index, api_.getFloatSolSatNum, api_.getFloatSolSatList,
                                   api_.getFloatSolResListSize, api_.getFloatSolResList);
    return solution;
}

Solution Engine::FixedSolution(int index) const {
    Solution solution = BaseData(api_.getFixedSolBaseData, 0, index);
    const int count = api_.getFixedSolAmbNum(index);
    double ratio = 0.0;
    solution.ambiguities = Ambiguities(Count(count), [&](auto... arrays) {
        return api_.getFixedSolAmbListData(index, count, &ratio, arrays...);
    });
    solution.ratio = ratio;
    solution.residuals = Residuals(index, api_.getFixedSolSatNum, api_.getFixedSolSatList,
                                   api_.getFixedSolResListSize, api_.getFixedSolResList);
    return solution;
}

Results Engine::ReadResults(int status) const {
    Results results;
    results.status = status;
    bool flagA = false, flagB = false, flagC = false;
    int code = 0;
    std::array<double, 10> v{};
    api_.getSolveResultsBaseData(&results.solveModel, &flagA, &flagB, &flagC, &code, nullptr,
                                 nullptr, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &v[7],
                                 &v[8], &v[9]);
    results.tripleDifference = BaseData(api_.getTripDiffSol, 0);
    const int floats = api_.getFloatSolNum();
    for (int i = 0; i < floats; ++i) {
        results.floats.push_back(FloatSolution(i));
    }
    const int fixeds = api_.getFixedSolNum();
    for (int i = 0; i < fixeds; ++i) {
        results.fixeds.push_back(FixedSolution(i));
    }
    return results;
}

}  // namespace vornel::engine
