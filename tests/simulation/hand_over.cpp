#include "simulation/hand_over.h"

#include "VornelBlCore.h"

namespace vornel::simulation {

namespace {

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

void HandOverGps(const KeplerEphemeris& k) {
    InputOneSatNavGPS(k.satId, k.tocWeek, k.tocSeconds, k.af0, k.af1, k.af2, k.sqrtA, k.e, k.i0,
                      k.omega0, k.omega, k.m0, k.deltaN, k.omegaDot, k.idot, k.crc, k.crs, k.cuc,
                      k.cus, k.cic, k.cis, k.iode, k.iodc, k.toe, k.toeWeek, k.transmitTime,
                      k.l2Codes, k.health, k.accuracy, k.l2PFlag, k.tgd, k.fitInterval);
}

// To InputOneSatNavBDS or InputOneSatNavGAL.
template <class Input>
void HandOverKepler(Input input, const KeplerEphemeris& k) {
    input(k.satId, k.tocWeek, k.tocSeconds, k.af0, k.af1, k.af2, k.sqrtA, k.e, k.i0, k.omega0,
          k.omega, k.m0, k.deltaN, k.omegaDot, k.idot, k.crc, k.crs, k.cuc, k.cus, k.cic, k.cis,
          k.iode, k.iodc, k.toe, k.toeWeek, k.transmitTime, k.l2Codes, k.health, k.accuracy,
          k.l2PFlag, k.tgd, k.tgd2, k.fitInterval);
}

void HandOverGlonass(const GlonassEphemeris& g) {
    int week = 0;
    double seconds = 0.0;
    g.refEpoch.ToWeekSeconds(week, seconds);
    InputOneSatNavGLO(g.slot, week, seconds, g.spare2, g.tbSeconds, g.spare1, g.clockBias,
                      g.clockDrift, g.x, g.y, g.z, g.vx, g.vy, g.vz, g.ax, g.ay, g.az, g.health,
                      g.channel, g.age, g.leapSeconds);
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

void HandOverConfig(const SolveConfig& c) {
    int systems[4] = {c.useGps, c.useGlonass, c.useBds, c.useGalileo};
    InputSolveConfig(c.slvmode, c.elevationMask, c.samplingInterval, c.minEpochs,
                     c.shortBaselineLimit, c.maxFixBaseline, c.ephemerisSource, systems,
                     c.outlierFactor, c.slipTestCap, c.ratioThreshold, c.reservedLimitA,
                     c.reservedLimitB, c.codeStd, c.phaseStd, c.periodLength, c.tropoModel,
                     c.pressure, c.temperature, c.humidity, c.reservedMode, 0, 0.0, 0, 0.0,
                     c.galFreq1, c.galFreq2);
}

std::vector<std::function<void()>> EphemerisCalls(const MadeUpSky& sky) {
    std::vector<std::function<void()>> calls;
    for (const KeplerEphemeris& record : sky.keplerRecords(kGps)) {
        calls.push_back([record] { HandOverGps(record); });
    }
    for (const KeplerEphemeris& record : sky.keplerRecords(kBds)) {
        calls.push_back([record] { HandOverKepler(&InputOneSatNavBDS, record); });
    }
    for (const KeplerEphemeris& record : sky.keplerRecords(kGalileo)) {
        calls.push_back([record] { HandOverKepler(&InputOneSatNavGAL, record); });
    }
    for (const GlonassEphemeris& record : sky.glonassRecords()) {
        calls.push_back([record] { HandOverGlonass(record); });
    }
    return calls;
}

void HandOverSettings(const Session& session) {
    CreateBLProcess();
    HandOverConfig(session.scenario.config);
    HandOverStations(session);
    if (session.scenario.broadcastIonosphere) {
        IonosphereParameters parameters = *session.scenario.broadcastIonosphere;
        InputIonCorrData(parameters.alpha, parameters.beta);
    }
}

void HandOverEpochs(const Session& session) {
    for (const SessionEpoch& epoch : session.epochs) {
        HandOverEpoch(epoch);
    }
}

void HandOver(const Session& session) {
    HandOverSettings(session);
    for (const auto& call : EphemerisCalls(session.sky)) {
        call();
    }
    HandOverEpochs(session);
}

}  // namespace vornel::simulation
