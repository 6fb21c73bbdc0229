#include "made_up_session.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "exports/process_fixture.h"
#include "simulation/simulator.h"

namespace vornel::fuzz {
namespace {

using engine::Satellite;
using engine::System;

simulation::Session Simulated() {
    simulation::Scenario scenario;
    scenario.epochCount = kMadeUpEpochs;
    const int satellites[4] = {4, 4, 3, 3};
    std::copy(satellites, satellites + 4, scenario.satellites);
    scenario.config.minEpochs = 4;
    const simulation::Session session = Simulate(scenario);
    ForgetEverything();  // the simulator sets the engine's atmosphere
    return session;
}

const simulation::Session& Simulation() {
    static const simulation::Session session = Simulated();
    return session;
}

engine::Satellite SatelliteOf(int number) {
    engine::Satellite satellite;
    satellite.system = static_cast<engine::System>(SplitSatNumber(number, &satellite.prn));
    return satellite;
}

engine::ReceiverEpoch ToEngine(const simulation::ReceiverRecord& record) {
    engine::ReceiverEpoch epoch;
    epoch.week = record.week;
    epoch.seconds = record.seconds;
    epoch.satellites = record.satellites;
    epoch.code1 = record.code1;
    epoch.code2 = record.code2;
    epoch.phase1 = record.phase1;
    epoch.phase2 = record.phase2;
    return epoch;
}

engine::Kepler ToEngine(const KeplerEphemeris& k, engine::System system) {
    engine::Kepler r;
    r.system = system;
    r.satId = k.satId;
    r.tocWeek = k.tocWeek;
    r.tocSeconds = k.tocSeconds;
    r.af0 = k.af0;
    r.af1 = k.af1;
    r.af2 = k.af2;
    r.sqrtA = k.sqrtA;
    r.e = k.e;
    r.i0 = k.i0;
    r.omega0 = k.omega0;
    r.omega = k.omega;
    r.m0 = k.m0;
    r.deltaN = k.deltaN;
    r.omegaDot = k.omegaDot;
    r.idot = k.idot;
    r.crc = k.crc;
    r.crs = k.crs;
    r.cuc = k.cuc;
    r.cus = k.cus;
    r.cic = k.cic;
    r.cis = k.cis;
    r.toe = k.toe;
    r.toeWeek = k.toeWeek;
    return r;
}

engine::Glonass ToEngine(const GlonassEphemeris& g) {
    engine::Glonass r;
    r.slot = g.slot;
    g.refEpoch.ToWeekSeconds(r.week, r.seconds);
    r.tbSeconds = g.tbSeconds;
    r.clockBias = g.clockBias;
    r.clockDrift = g.clockDrift;
    r.position = {g.x, g.y, g.z};
    r.velocity = {g.vx, g.vy, g.vz};
    r.acceleration = {g.ax, g.ay, g.az};
    r.channel = g.channel;
    r.leapSeconds = g.leapSeconds;
    return r;
}

constexpr int kTableEntries = 14;
constexpr int kEntriesBefore = 6;
constexpr double kTableStep = 900.0;  // s

// Of all but GLONASS, whose motion is known near the session alone.
std::vector<PreciseTable> TablesOf(const simulation::Session& s) {
    std::vector<PreciseTable> tables;
    for (const int number : s.satellites) {
        const engine::Satellite satellite = SatelliteOf(number);
        if (satellite.system == engine::System::kGlonass) {
            continue;
        }
        for (int component = 0; component < 4; ++component) {
            PreciseTable table{component, satellite, {}, {}, {}};
            for (int i = 0; i < kTableEntries; ++i) {
                const double time = (i - kEntriesBefore) * kTableStep;
                const auto state = s.sky.At(number, time);
                const simulation::Real values[4] = {state.position.x, state.position.y,
                                                    state.position.z, state.clock};
                table.weeks.push_back(s.scenario.week);
                table.seconds.push_back(s.scenario.startSeconds + time);
                table.values.push_back(static_cast<double>(values[component]));
            }
            tables.push_back(std::move(table));
        }
    }
    return tables;
}

EngineSession MakeSession() {
    const simulation::Session& s = Simulation();
    EngineSession made;
    made.config.minEpochs = s.scenario.config.minEpochs;
    made.rover.xyz = {s.roverApproximate.X, s.roverApproximate.Y, s.roverApproximate.Z};
    made.base.xyz = {s.base.X, s.base.Y, s.base.Z};
    const std::set<int> observed(s.satellites.begin(), s.satellites.end());
    for (const engine::System system :
         {engine::System::kGps, engine::System::kBds, engine::System::kGalileo}) {
        const int code = static_cast<int>(system);
        for (const KeplerEphemeris& record : s.sky.keplerRecords(code)) {
            if (observed.contains(MakeSatNumber(code, record.satId))) {
                made.kepler.push_back(ToEngine(record, system));
            }
        }
    }
    for (const GlonassEphemeris& record : s.sky.glonassRecords()) {
        if (observed.contains(MakeSatNumber(kGlonass, record.slot))) {
            made.glonass.push_back(ToEngine(record));
        }
    }
    made.precise = TablesOf(s);
    for (const simulation::SessionEpoch& epoch : s.epochs) {
        made.epochs.push_back({ToEngine(epoch.rover), ToEngine(epoch.base)});
    }
    return made;
}

// ---- as records of the readers ------------------------------------------------------------------

// The codes that each system's two signals come with, by the engine's order of systems.
constexpr const char* kColumns[4][4] = {{"C1C", "L1C", "C2W", "L2W"},
                                        {"C1C", "L1C", "C2C", "L2C"},
                                        {"C2I", "L2I", "C7I", "L7I"},
                                        {"C1X", "L1X", "C5X", "L5X"}};

io::SignalTable Signals() {
    io::SignalTable table;
    for (const engine::System system : engine::kSystems) {
        auto& signals = table[static_cast<std::size_t>(engine::FormatSystemOf(system))];
        for (const char* name : kColumns[engine::IndexOf(system)]) {
            signals.push_back({{name[0], name[1], name[2]}, name});
        }
    }
    return table;
}

void AddRow(io::Observations& observations, engine::Satellite satellite,
            const std::array<double, 4>& values) {
    io::SatelliteRow row;
    row.satellite = {engine::FormatSystemOf(satellite.system),
                     static_cast<std::uint8_t>(satellite.prn)};
    row.firstValue = static_cast<std::uint32_t>(observations.values.size());
    for (const double value : values) {
        observations.values.push_back(value == 0.0 ? NAN : value);
    }
    observations.satellites.push_back(row);
    ++observations.epochs.back().satelliteCount;
}

io::Observations ToObservations(bool rover) {
    const EngineSession& made = MadeUpSession();
    const auto& station = rover ? made.rover : made.base;
    io::Observations observations;
    observations.file = rover ? "rover" : "base";
    observations.version = 3.04;
    io::StationHeader header;
    header.markerName = rover ? "ROVR" : "BASE";
    header.antennaType = "MADE UP";
    header.antennaRadome = "NONE";
    header.approximatePosition = station.xyz;
    observations.stations.push_back(header);
    observations.signalTables.push_back(Signals());
    for (const EpochOfTwo& both : made.epochs) {
        const engine::ReceiverEpoch& given = rover ? both.rover : both.base;
        io::ObservationEpoch epoch;
        epoch.time = {given.week, given.seconds};
        epoch.firstSatellite = static_cast<std::uint32_t>(observations.satellites.size());
        observations.epochs.push_back(epoch);
        for (std::size_t s = 0; s < engine::kSlots; ++s) {
            if (given.satellites[s] != 0) {
                AddRow(observations, SatelliteOf(given.satellites[s]),
                       {given.code1[s], given.phase1[s], given.code2[s], given.phase2[s]});
            }
        }
    }
    observations.lossOfLock.resize(observations.values.size());
    observations.signalStrength.resize(observations.values.size());
    return observations;
}

io::KeplerRecord ToRecord(const engine::Kepler& k) {
    io::KeplerRecord r;
    r.satellite = {engine::FormatSystemOf(k.system), static_cast<std::uint8_t>(k.satId)};
    r.tocWeek = k.tocWeek;
    r.tocSeconds = k.tocSeconds;
    r.af0 = k.af0;
    r.af1 = k.af1;
    r.af2 = k.af2;
    r.sqrtA = k.sqrtA;
    r.eccentricity = k.e;
    r.i0 = k.i0;
    r.omega0 = k.omega0;
    r.omega = k.omega;
    r.m0 = k.m0;
    r.deltaN = k.deltaN;
    r.omegaDot = k.omegaDot;
    r.idot = k.idot;
    r.crc = k.crc;
    r.crs = k.crs;
    r.cuc = k.cuc;
    r.cus = k.cus;
    r.cic = k.cic;
    r.cis = k.cis;
    r.toeWeek = k.toeWeek;
    r.toeSeconds = k.toe;
    return r;
}

io::GlonassRecord ToRecord(const engine::Glonass& g) {
    io::GlonassRecord r;
    r.slot = static_cast<std::uint8_t>(g.slot);
    r.referenceWeek = g.week;
    r.referenceSeconds = g.seconds;
    r.leapSeconds = g.leapSeconds;
    r.clockBias = g.clockBias;
    r.clockDrift = g.clockDrift;
    r.position = g.position;
    r.velocity = g.velocity;
    r.acceleration = g.acceleration;
    r.channel = g.channel;
    return r;
}

io::PreciseOrbits ToOrbits(const std::vector<PreciseTable>& tables) {
    io::PreciseOrbits orbits;
    orbits.file = "orbits";
    orbits.version = 'd';
    orbits.interval = kTableStep;
    orbits.coordinateSystem = "IGS20";
    for (std::size_t i = 0; i < tables.front().weeks.size(); ++i) {
        orbits.epochs.push_back({tables.front().weeks[i], tables.front().seconds[i]});
    }
    for (const PreciseTable& table : tables) {
        const io::SatelliteId id = {engine::FormatSystemOf(table.satellite.system),
                                    static_cast<std::uint8_t>(table.satellite.prn)};
        if (table.component == 0) {
            orbits.satellites.push_back({id, {}});
            orbits.satellites.back().points.resize(table.values.size());
        }
        auto& points = orbits.satellites.back().points;
        for (std::size_t i = 0; i < points.size(); ++i) {
            points[i].epoch = static_cast<std::uint32_t>(i);
            double& target = table.component == 3
                                 ? points[i].clock
                                 : points[i].position[static_cast<std::size_t>(table.component)];
            target = table.values[i];
        }
    }
    return orbits;
}

io::AntennaFile MadeUpAntennas() {
    io::AntennaFile file;
    file.file = "antennas";
    file.version = 1.4;
    io::AntennaCalibration antenna;
    antenna.type = "MADE UP";
    antenna.radome = "NONE";
    antenna.offsets = {{"G01", 0.001, -0.001, 0.06}, {"G02", 0.0, 0.0, 0.08}};
    file.antennas.push_back(antenna);
    return file;
}

session::Inputs MakeInputs() {
    const EngineSession& made = MadeUpSession();
    session::Inputs inputs;
    inputs.rover = ToObservations(true);
    inputs.base = ToObservations(false);
    io::Navigation navigation;
    navigation.file = "navigation";
    navigation.version = 3.04;
    for (const engine::Kepler& record : made.kepler) {
        navigation.kepler.push_back(ToRecord(record));
    }
    for (const engine::Glonass& record : made.glonass) {
        navigation.glonass.push_back(ToRecord(record));
    }
    io::IonosphereSet ionosphere;
    ionosphere.alpha = {1.2e-8, 0.0, -6e-8, 6e-8};
    ionosphere.beta = {1e5, 0.0, -2e5, 6.5e4};
    ionosphere.hasAlpha = ionosphere.hasBeta = true;
    navigation.ionosphere.push_back(ionosphere);
    inputs.navigation.push_back(navigation);
    inputs.orbits.push_back(ToOrbits(made.precise));
    inputs.antennas.push_back(MadeUpAntennas());
    return inputs;
}

}  // namespace

const EngineSession& MadeUpSession() {
    static const EngineSession session = MakeSession();
    return session;
}

const session::Inputs& MadeUpInputs() {
    static const session::Inputs inputs = MakeInputs();
    return inputs;
}

void ForgetEverything() {
    test::ForgetProcess();
}

}  // namespace vornel::fuzz
