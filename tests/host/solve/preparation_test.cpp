// What is decided on sessions of real files.
#include "solve/preparation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "engine/recording_engine.h"
#include "io/observation_reader.h"
#include "session/fault.h"
#include "solve/feed.h"
#include "solve/outcome.h"
#include "solve/wettzell.h"

namespace vornel::solve {
namespace {

using namespace session;
using namespace engine;
using test::Call;
using test::Calls;
using test::kWtzr;
using test::kWtzz;
using test::ReadWettzell;
using test::Wettzell;

const std::filesystem::path kRoot = test::ProjectFolder();

TEST(SessionPreparation, CodePositionsAreGoodToMetres) {
    const Session session = PrepareSession(ReadWettzell(), {});
    ASSERT_TRUE(session.base.codeFix && session.rover.codeFix);
    // Known markers; the antennas stand less than 0.3 m above.
    EXPECT_LT(Length(Minus(session.base.codeFix->position, kWtzr)), 5.0);
    EXPECT_LT(Length(Minus(session.rover.codeFix->position, kWtzz)), 5.0);
}

TEST(SessionPreparation, AMissingPositionIsFoundFromCode) {
    Inputs inputs = ReadWettzell();
    inputs.rover.stations[0].approximatePosition.reset();
    inputs.base.stations[0].approximatePosition = Vector3{1.0, 2.0, 3.0};
    const Session session = PrepareSession(std::move(inputs), {});
    EXPECT_EQ(session.rover.positionSource, PositionSource::kCode);
    EXPECT_EQ(session.base.positionSource, PositionSource::kCode);
    EXPECT_LT(Length(Minus(session.rover.position, kWtzz)), 5.0);
    EXPECT_THAT(session.notes, testing::Contains(testing::HasSubstr("rover: the header has no")));
}

TEST(SessionPreparation, EverySystemAloneGivesAPosition) {
    for (const engine::System system :
         {engine::System::kGps, engine::System::kGlonass, engine::System::kGalileo}) {
        ConfiguredSettings settings;
        settings.values.systems = {false, false, false, false};
        settings.values.systems[IndexOf(system)] = true;
        const Session session = PrepareSession(ReadWettzell(), settings);
        ASSERT_TRUE(session.base.codeFix) << NameOf(system);
        EXPECT_LT(Length(Minus(session.base.codeFix->position, kWtzr)), 12.0) << NameOf(system);
    }
}

TEST(SessionPreparation, WithoutAnyPositionThereIsAFault) {
    Inputs inputs = ReadWettzell();
    // Three satellites of one system are too few for a position.
    inputs.rover.stations[0].approximatePosition.reset();
    std::erase_if(inputs.navigation[0].kepler, [](const io::KeplerRecord& record) {
        return record.satellite.system != io::GnssSystem::kGps || record.satellite.number > 8;
    });
    ConfiguredSettings settings;
    settings.values.systems = {true, false, false, false};
    try {
        PrepareSession(std::move(inputs), settings);
        FAIL() << "no fault";
    } catch (const SessionFault& fault) {
        EXPECT_EQ(fault.fault(), Fault::kNoPosition);
        EXPECT_THAT(fault.what(), testing::HasSubstr("rover (WTZZ00DEU): no position"));
        EXPECT_EQ(fault.hint(), "give --rover-xyz X Y Z");
    }
}

Vector3 Moved(const Vector3& position, double metres) {
    return {position[0] + metres, position[1], position[2]};
}

TEST(SessionPreparation, AContradictedRoverIsReplacedAndSaid) {
    Inputs inputs = ReadWettzell();
    inputs.rover.stations[0].approximatePosition = Moved(kWtzz, 110.0);
    const Session session = PrepareSession(std::move(inputs), {});
    EXPECT_EQ(session.rover.positionSource, PositionSource::kCode);
    EXPECT_LT(Length(Minus(session.rover.position, kWtzz)), 5.0);
    EXPECT_THAT(session.warnings, testing::Contains(testing::HasSubstr("code position is used")));
}

TEST(SessionPreparation, AContradictedBaseIsRefusedUnlessToldOtherwise) {
    const auto prepare = [](const ConfiguredSettings& settings) {
        Inputs inputs = ReadWettzell();
        inputs.base.stations[0].approximatePosition = Moved(kWtzr, -5000.0);
        return PrepareSession(std::move(inputs), settings);
    };
    try {
        prepare({});
        FAIL() << "no fault";
    } catch (const SessionFault& fault) {
        EXPECT_EQ(fault.fault(), Fault::kBaseContradicted);
    }
    ConfiguredSettings trusting;
    trusting.values.trustCode = true;
    EXPECT_EQ(prepare(trusting).base.positionSource, PositionSource::kCode);
    ConfiguredSettings given;
    given.values.baseXyz = kWtzr;
    const Session session = prepare(given);
    EXPECT_EQ(session.base.positionSource, PositionSource::kOption);
    EXPECT_EQ(session.base.position, kWtzr);
    EXPECT_TRUE(session.warnings.empty());
}

TEST(SessionPreparation, AnEccentricAntennaIsReducedToItsMarker) {
    Inputs inputs = ReadWettzell();
    inputs.base.stations[0].antennaNorth = 2.0;
    inputs.base.stations[0].antennaEast = -1.0;
    const Session session = PrepareSession(std::move(inputs), {});
    const Vector3 neu = ToNeu(ToGeodetic(session.base.position), session.base.eccentricity);
    EXPECT_NEAR(neu[0], 2.0, 1e-9);
    EXPECT_NEAR(neu[1], -1.0, 1e-9);
    EXPECT_NEAR(neu[2], 0.0, 1e-9);
    Engine engine(test::RecordingEngine());
    Feed(session, engine, {});
    const auto call = std::find_if(Calls().begin(), Calls().end(),
                                   [](const Call& c) { return c.name == "InputAntCorrData"; });
    const Vector3 handed{call->values[10], call->values[11], call->values[12]};
    EXPECT_NEAR(Length(Minus(handed, session.base.position)), std::sqrt(5.0), 1e-9);
}

TEST(SessionPreparation, ALengthThatNoAntennaHasIsNotUsed) {
    Inputs inputs = ReadWettzell();
    inputs.base.stations.front().antennaHeight = 1e9;
    inputs.rover.stations.front().antennaEast = NAN;
    const Session session = PrepareSession(std::move(inputs), {});
    EXPECT_EQ(session.base.antennaHeight, 0.0);
    EXPECT_EQ(Length(session.rover.eccentricity), 0.0);
    EXPECT_EQ(session.rover.antennaHeight, 0.284);
    EXPECT_THAT(session.warnings,
                testing::IsSupersetOf({"base: the antenna height of the header, 1e+09 m, is none "
                                       "that an antenna has; 0 is used",
                                       "rover: the antenna's offset east of the header, nan m, is "
                                       "none that an antenna has; 0 is used"}));
}

TEST(SessionPreparation, AnAntennaWithoutFiniteOffsetsIsNotFound) {
    Inputs inputs = ReadWettzell();
    io::AntennaFile file;
    io::AntennaCalibration& antenna = file.antennas.emplace_back();
    antenna.type = "LEIAR25.R3";
    antenna.radome = "LEIT";
    antenna.offsets = {{"G01", 0.0, 0.0, 0.16}, {"G02", 0.0, INFINITY, 0.15}};
    inputs.antennas.push_back(file);
    const Session session = PrepareSession(std::move(inputs), {});
    EXPECT_FALSE(session.base.antenna.found);
    EXPECT_FALSE(session.antennasApplied);
}

TEST(SessionPreparation, EpochsThatNoCalendarHasAreLeftOut) {
    Inputs inputs = ReadWettzell();
    inputs.base.epochs[3].time = {-3, 0.0};
    inputs.rover.epochs[7].time.seconds = NAN;
    const Session session = PrepareSession(std::move(inputs), {});
    EXPECT_EQ(session.pairs.size(), 118U);
    EXPECT_THAT(session.warnings,
                testing::Contains("2 epochs without a date between 1980 and 2100 were left out"));
}

TEST(SessionPreparation, SatellitesWithoutANumberAreNamed) {
    Inputs inputs = ReadWettzell();
    const Session session = PrepareSession(std::move(inputs), {});
    EXPECT_THAT(session.leftOut.unnumbered, testing::Contains("C37"));
}

TEST(SessionPreparation, TheIntervalOfTheDataIsToldToTheEngine) {
    ConfiguredSettings settings;
    settings.values.interval = 60.0;
    const Session session = PrepareSession(ReadWettzell(settings.values), settings);
    EXPECT_EQ(session.pairs.size(), 60U);
    EXPECT_EQ(session.config.samplingInterval, 60.0);
    EXPECT_EQ(session.settings.origins.at("sampling-interval").kind, "data");
}

// --- precise orbits

// The session with the navigation of these files and precise orbits of its day, brought forward by
// hours so that they reach over both ends of it.
Inputs WithPreciseOrbits(const std::vector<std::string>& navigation, double hours) {
    InputPaths paths = Wettzell();
    paths.others.clear();
    for (const std::string& name : navigation) {
        paths.others.push_back((kRoot / "data" / "wettzell" / name).string());
    }
    paths.others.push_back((kRoot / "tests" / "data" / "formats" / "Sta21114.sp3.gz").string());
    Inputs inputs = ReadInputs(paths, {});
    for (io::GpsTime& time : inputs.orbits.at(0).epochs) {
        time = io::Shifted(time, -3600.0 * hours);
    }
    return inputs;
}

std::vector<std::string> NamesOfUnknownChannels(const Session& session) {
    std::vector<std::string> names;
    for (const auto& [satellite, reason] : session.leftOut.unknownChannel) {
        names.push_back(ToString(satellite));
    }
    return names;
}

const std::string kMixedNavigation = "ESBC00DNK_R_20201770000_01D_MN.rnx.gz";  // without GLONASS
const std::string kGlonassNavigation = "ESBC00DNK_R_20201770000_01D_RN.rnx.gz";

TEST(SessionPreparation, WithPreciseOrbitsGlonassChannelsMustBeThoseThatTheEngineAssumes) {
    // Without broadcast records the engine takes channels as they once were. In 2020 slot 17 has
    // another, and slot 26 has none there; the headers tell so.
    const Session session = PrepareSession(WithPreciseOrbits({kMixedNavigation}, 6.0), {});
    ASSERT_TRUE(session.precise);
    const std::vector<std::string> asRecorded = NamesOfUnknownChannels(session);
    for (const std::string& name : asRecorded) {
        EXPECT_TRUE(name == "R17" || name == "R26") << name;
    }

    Inputs inputs = WithPreciseOrbits({kMixedNavigation}, 6.0);
    int changed = 0;
    for (auto& [slot, channel] : inputs.rover.stations[0].glonassChannels) {
        if (slot == 1 || slot == 11) {
            channel += 1;
            ++changed;
        }
    }
    ASSERT_EQ(changed, 2);
    const Session contradicted = PrepareSession(std::move(inputs), {});
    std::vector<std::string> expected = asRecorded;
    expected.insert(expected.end(), {"R01", "R11"});
    EXPECT_THAT(NamesOfUnknownChannels(contradicted), testing::UnorderedElementsAreArray(expected));
    for (const auto& [satellite, reason] : contradicted.leftOut.unknownChannel) {
        EXPECT_THAT(reason, testing::HasSubstr("stands in the header"));
    }
}

TEST(SessionPreparation, ASlotThatNeitherHeaderNorTableKnowsIsLeftOut) {
    Inputs inputs = WithPreciseOrbits({kMixedNavigation}, 6.0);
    // Slot 1 under a number that the table has no place for.
    for (io::Observations* side : {&inputs.base, &inputs.rover}) {
        side->stations[0].glonassChannels.clear();
        for (io::SatelliteRow& row : side->satellites) {
            if (row.satellite == io::SatelliteId{io::GnssSystem::kGlonass, 1}) {
                row.satellite.number = 27;
            }
        }
    }
    for (io::OrbitSeries& series : inputs.orbits[0].satellites) {
        if (series.satellite == io::SatelliteId{io::GnssSystem::kGlonass, 1}) {
            series.satellite.number = 27;
        }
    }
    const Session session = PrepareSession(std::move(inputs), {});
    const auto& unknown = session.leftOut.unknownChannel;
    const auto found = std::find_if(unknown.begin(), unknown.end(), [](const auto& entry) {
        return ToString(entry.first) == "R27";
    });
    ASSERT_NE(found, unknown.end());
    EXPECT_EQ(found->second, "its frequency channel is not known");
}

TEST(SessionPreparation, BroadcastRecordsTellTheChannelsUnderPreciseOrbitsToo) {
    const Session session =
        PrepareSession(WithPreciseOrbits({kMixedNavigation, kGlonassNavigation}, 6.0), {});
    ASSERT_TRUE(session.precise);
    EXPECT_TRUE(session.leftOut.unknownChannel.empty());
}

TEST(SessionPreparation, PreciseOrbitsMustReachOverBothEndsOfTheSession) {
    for (const double hours : {0.0, 23.5, 48.0, -1.0}) {
        try {
            PrepareSession(WithPreciseOrbits({kMixedNavigation}, hours), {});
            FAIL() << "no fault";
        } catch (const SessionFault& fault) {
            EXPECT_EQ(fault.fault(), Fault::kNoOrbitCoverage) << hours;
        }
    }
    ConfiguredSettings broadcast;
    broadcast.values.ephemerisSource = EphemerisChoice::kBroadcast;
    EXPECT_FALSE(PrepareSession(WithPreciseOrbits({kMixedNavigation}, 0.0), broadcast).precise);
}

TEST(SessionPreparation, WithoutASatelliteInCommonThereIsAFault) {
    Inputs inputs = ReadWettzell();
    for (io::SatelliteRow& row : inputs.rover.satellites) {
        row.satellite.number = row.satellite.number == 30 ? 29 : 30;
    }
    for (io::SatelliteRow& row : inputs.base.satellites) {
        if (row.satellite.number == 29 || row.satellite.number == 30) {
            row.satellite.number = 28;
        }
    }
    try {
        PrepareSession(std::move(inputs), {});
        FAIL() << "no fault";
    } catch (const SessionFault& fault) {
        EXPECT_EQ(fault.fault(), Fault::kNoCommonSignals) << fault.what();
    }
}

// --- antennas

TEST(SessionPreparation, ARadomeWithoutACalibrationFallsBackToNoneAndSaysSo) {
    Inputs inputs = ReadWettzell();
    io::AntennaCalibration bare;
    bare.type = "LEIAR25.R3";
    bare.radome = "NONE";
    bare.offsets = {{"G01", 0.001, 0.002, 0.161}, {"G02", 0.003, 0.004, 0.158}};
    inputs.antennas.emplace_back().antennas.push_back(bare);
    const Session session = PrepareSession(std::move(inputs), {});
    EXPECT_TRUE(session.antennasApplied);
    EXPECT_EQ(session.rover.antenna.usedRadome, "NONE");
    EXPECT_THAT(session.warnings,
                testing::Contains("rover: no calibration of LEIAR25.R3 with radome LEIT; that with "
                                  "radome NONE is used"));
    EXPECT_THAT(session.warnings, testing::Contains(testing::StartsWith("base: no calibration")));
}

TEST(SessionPreparation, AnAntennaThatChangesWithinTheFilesIsTold) {
    Inputs inputs = ReadWettzell();
    io::StationHeader other = inputs.rover.stations[0];
    other.antennaType = "TRM55971.00";
    other.antennaHeight += 0.5;
    inputs.rover.stations.push_back(other);
    inputs.rover.epochs.back().station = 1;
    const Session session = PrepareSession(std::move(inputs), {});
    EXPECT_THAT(session.warnings,
                testing::Contains(testing::HasSubstr(
                    "the antenna changes within the files from LEIAR25.R3 to TRM55971.00")));
    EXPECT_THAT(session.warnings, testing::Contains(testing::HasSubstr("from 0.2840 to 0.7840 m")));
}

TEST(SessionPreparation, HourlyPiecesJoinIntoTheWhole) {
    Settings first, second;
    first.end = ParseTime("2020-06-25T00:29:30");
    second.start = ParseTime("2020-06-25T00:15:00");  // overlaps
    const Inputs whole = ReadWettzell();
    Inputs pieces = ReadWettzell(second);
    std::vector<io::Observations> parts = {std::move(pieces.base)};
    parts.push_back(ReadWettzell(first).base);
    const io::Observations joined = io::JoinObservations(std::move(parts));
    ASSERT_EQ(joined.epochs.size(), whole.base.epochs.size());
    const SignalChoice signals = ChooseSignals(whole.rover, whole.base, {});
    ValueLosses losses;
    for (std::size_t i = 0; i < joined.epochs.size(); ++i) {
        ASSERT_EQ(joined.epochs[i].time, whole.base.epochs[i].time);
        const auto a = SignalReader(joined, signals, false).Read(joined.epochs[i], losses);
        const auto b = SignalReader(whole.base, signals, false).Read(whole.base.epochs[i], losses);
        ASSERT_EQ(a.size(), b.size());
        for (std::size_t k = 0; k < a.size(); ++k) {
            ASSERT_EQ(a[k].satellite, b[k].satellite);
            ASSERT_EQ(a[k].code, b[k].code);
            ASSERT_EQ(a[k].phase, b[k].phase);
        }
    }
}

}  // namespace
}  // namespace vornel::solve
