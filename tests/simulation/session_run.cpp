#include "simulation/session_run.h"

#include <cmath>
#include <stdexcept>

#include "VornelBlCore.h"
#include "frame/process.h"

namespace vornel::simulation {

namespace {

void HandOverConfig(const SolveConfig& c) {
    int systems[4] = {c.useGps, c.useGlonass, c.useBds, c.useGalileo};
    InputSolveConfig(c.slvmode, c.elevationMask, c.samplingInterval, c.minEpochs,
                     c.shortBaselineLimit, c.maxFixBaseline, c.ephemerisSource, systems,
                     c.outlierFactor, c.slipTestCap, c.ratioThreshold, c.reservedLimitA,
                     c.reservedLimitB, c.codeStd, c.phaseStd, c.periodLength, c.tropoModel,
                     c.pressure, c.temperature, c.humidity, c.reservedMode, 0, 0.0, 0, 0.0,
                     c.galFreq1, c.galFreq2);
}

void HandOverStations(const Session& session) {
    const Antenna& r = session.scenario.roverAntenna;
    const Antenna& b = session.scenario.baseAntenna;
    const XYZPosition& rover = session.roverApproximate;
    double xyzR[3] = {rover.X, rover.Y, rover.Z};
    double xyzB[3] = {session.base.X, session.base.Y, session.base.Z};
    double l1R[3] = {0.0, 0.0, r.l1Up}, l2R[3] = {0.0, 0.0, r.l2Up};
    double l1B[3] = {0.0, 0.0, b.l1Up}, l2B[3] = {0.0, 0.0, b.l2Up};
    InputAntCorrData(xyzR, l1R, l2R, r.height, xyzB, l1B, l2B, b.height);
}

void HandOverEphemerides(const MadeUpSky& sky) {
    for (const KeplerEphemeris& k : sky.keplerRecords(kGps)) {
        InputOneSatNavGPS(k.satId, k.tocWeek, k.tocSeconds, k.af0, k.af1, k.af2, k.sqrtA, k.e, k.i0,
                          k.omega0, k.omega, k.m0, k.deltaN, k.omegaDot, k.idot, k.crc, k.crs,
                          k.cuc, k.cus, k.cic, k.cis, k.iode, k.iodc, k.toe, k.toeWeek,
                          k.transmitTime, k.l2Codes, k.health, k.accuracy, k.l2PFlag, k.tgd,
                          k.fitInterval);
    }
    for (const int system : {kBds, kGalileo}) {
        auto* const input = system == kBds ? &InputOneSatNavBDS : &InputOneSatNavGAL;
        for (const KeplerEphemeris& k : sky.keplerRecords(system)) {
            input(k.satId, k.tocWeek, k.tocSeconds, k.af0, k.af1, k.af2, k.sqrtA, k.e, k.i0,
                  k.omega0, k.omega, k.m0, k.deltaN, k.omegaDot, k.idot, k.crc, k.crs, k.cuc, k.cus,
                  k.cic, k.cis, k.iode, k.iodc, k.toe, k.toeWeek, k.transmitTime, k.l2Codes,
                  k.health, k.accuracy, k.l2PFlag, k.tgd, k.tgd2, k.fitInterval);
        }
    }
    for (const GlonassEphemeris& g : sky.glonassRecords()) {
        int week = 0;
        double seconds = 0.0;
        g.refEpoch.ToWeekSeconds(week, seconds);
        InputOneSatNavGLO(g.slot, week, seconds, g.spare2, g.tbSeconds, g.spare1, g.clockBias,
                          g.clockDrift, g.x, g.y, g.z, g.vx, g.vy, g.vz, g.ax, g.ay, g.az, g.health,
                          g.channel, g.age, g.leapSeconds);
    }
}

void HandOverEpoch(const SessionEpoch& epoch) {
    // The exports take arrays that they only read.
    SessionEpoch e = epoch;
    ReceiverRecord& r = e.rover;
    ReceiverRecord& b = e.base;
    InputEpochObsData(r.week, r.seconds, r.satellites.data(), r.code1.data(), r.code2.data(),
                      r.phase1.data(), r.phase2.data(), b.week, b.seconds, b.satellites.data(),
                      b.code1.data(), b.code2.data(), b.phase1.data(), b.phase2.data());
}

}  // namespace

void HandOver(const Session& session) {
    CreateBLProcess();
    HandOverConfig(session.scenario.config);
    HandOverStations(session);
    if (session.scenario.broadcastIonosphere) {
        IonosphereParameters parameters = *session.scenario.broadcastIonosphere;
        InputIonCorrData(parameters.alpha, parameters.beta);
    }
    HandOverEphemerides(session.sky);
    for (const SessionEpoch& epoch : session.epochs) {
        HandOverEpoch(epoch);
    }
}

int RunSession(const Session& session) {
    HandOver(session);
    int status = -1;
    if (StartProcess(&status) != 1) {
        throw std::runtime_error("an exception left the run");
    }
    return status;
}

std::unique_ptr<StaticSolve> SolverOf(const Session& session) {
    HandOver(session);
    const CTRLSolve& control = *CurrentProcess().control;
    return std::make_unique<StaticSolve>(
        control.hasGlonass, control.reservedProcessFlag, control.config, control.epochs,
        &control.delSatList, &control.trackList0, &control.trackList1, &control.trackList2,
        control.roverDualFreq, control.roverPosition, control.l1PcoRover, control.l2PcoRover,
        control.trueHeightRover, control.baseDualFreq, control.basePosition, control.l1PcoBase,
        control.l2PcoBase, control.trueHeightBase);
}

std::unique_ptr<StaticSolve> PreparedSolverOf(const Session& session) {
    std::unique_ptr<StaticSolve> solver = SolverOf(session);
    solver->SelectSolveMode();
    if (solver->CutPeriods() != run_status::kPrepared ||
        solver->SelectRefSats() != run_status::kReferencesSelected) {
        throw std::runtime_error("the session has no period or no reference");
    }
    solver->roverPosition = session.rover;
    return solver;
}

double ErrorOf(const SolveResult& result, const Session& session) {
    const double x = result.dX - (session.rover.X - session.base.X);
    const double y = result.dY - (session.rover.Y - session.base.Y);
    const double z = result.dZ - (session.rover.Z - session.base.Z);
    return std::sqrt(x * x + y * y + z * z);
}

}  // namespace vornel::simulation
