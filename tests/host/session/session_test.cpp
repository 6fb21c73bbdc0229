// The session of real files, with a recording engine in place of the library: what is handed over,
// in which order, and that no value lies outside the bounds of the public header.
#include "session/session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "io/observation_reader.h"
#include "recording_engine.h"
#include "session/fault.h"
#include "session/sky.h"

namespace vornel::session {
namespace {

using test::Call;
using test::Calls;

const std::filesystem::path kRoot = std::filesystem::path(VORNEL_TEST_DATA) / ".." / "..";

const Vector3 kWtzr{4075580.3111, 931854.0543, 4801568.2808};
const Vector3 kWtzz{4075579.1913, 931853.3696, 4801569.1897};

InputPaths Wettzell() {
    const std::string folder = (kRoot / "data" / "wettzell").string() + "/";
    return {{folder + "WTZR00DEU_R_20201770000_01H_30S_MO.rnx.gz"},
            {folder + "WTZZ00DEU_R_20201770000_01H_30S_MO.rnx.gz"},
            {folder + "ESBC00DNK_R_20201770000_01D_MN.rnx.gz",
             folder + "ESBC00DNK_R_20201770000_01D_RN.rnx.gz"}};
}

Inputs ReadWettzell(const Settings& settings = {}) {
    return ReadInputs(Wettzell(), SelectionFor(settings));
}

std::vector<std::string> NamesInOrder() {
    std::vector<std::string> names;
    for (const Call& call : Calls()) {
        if (names.empty() || names.back() != call.name) {
            names.push_back(call.name);
        }
    }
    return names;
}

std::size_t CountOf(const std::string& name) {
    std::size_t count = 0;
    for (const Call& call : Calls()) {
        count += call.name == name ? 1 : 0;
    }
    return count;
}

TEST(SessionFeed, CallsComeInTheOrderOfTheHeader) {
    ConfiguredSettings settings;
    settings.values.exclusions = {ParseExclusion("G05"),
                                  ParseExclusion("R01@2020-06-25T00:10/2020-06-25T00:20"),
                                  ParseExclusion("R01@2020-06-25T00:40/")};
    const Session session = PrepareSession(ReadWettzell(), settings);
    Engine engine(test::RecordingEngine());
    const FeedSummary fed = Feed(session, engine, {});
    vornel::session::Run(session, engine);
    EXPECT_THAT(NamesInOrder(),
                testing::ElementsAre("CreateBLProcess", "InputSolveConfig", "InputAntCorrData",
                                     "InputIonCorrData", "InputOneSatNavGPS", "InputOneSatNavBDS",
                                     "InputOneSatNavGAL", "InputOneSatNavGLO", "InputEpochObsData",
                                     "MarkDelSatList", "AddOneSatTrackInfo", "StartProcess"));
    EXPECT_EQ(CountOf("InputEpochObsData"), 120U);
    EXPECT_EQ(fed.epochs, 120U);
    EXPECT_EQ(CountOf("MarkDelSatList"), 1U);
    // Both spans of a satellite in one track: a second one would undo the first.
    EXPECT_EQ(CountOf("AddOneSatTrackInfo"), 1U);
    EXPECT_EQ(CountOf("InputIonCorrData"), 1U);
}

TEST(SessionFeed, NoIonosphereMeansNoCall) {
    ConfiguredSettings settings;
    settings.values.noIonosphere = true;
    const Session session = PrepareSession(ReadWettzell(), settings);
    Engine engine(test::RecordingEngine());
    Feed(session, engine, {});
    EXPECT_EQ(CountOf("InputIonCorrData"), 0U);
}

TEST(SessionFeed, EveryEpochKeepsTheBoundsAndItsOwnTags) {
    const Session session = PrepareSession(ReadWettzell(), {});
    Engine engine(test::RecordingEngine());
    Feed(session, engine, {});
    constexpr std::size_t kReceiver = 2 + 64 + 4 * 64;
    double lastRover = -1.0, lastBase = -1.0;
    for (const Call& call : Calls()) {
        if (call.name != "InputEpochObsData") {
            continue;
        }
        ASSERT_EQ(call.values.size(), 2 * kReceiver);
        for (const std::size_t offset : {std::size_t{0}, kReceiver}) {
            EXPECT_EQ(call.values[offset], 2111);
            std::set<double> seen;
            for (std::size_t slot = 0; slot < 64; ++slot) {
                const double number = call.values[offset + 2 + slot];
                const double* values = &call.values[offset + 2 + 64 + slot];
                if (number == 0.0) {
                    EXPECT_EQ(values[0], 0.0);
                    continue;
                }
                EXPECT_TRUE(number >= 1 && number <= 135);
                EXPECT_TRUE(seen.insert(number).second) << "satellite twice: " << number;
                EXPECT_TRUE(values[0] >= 1e6 && values[0] <= 1e9);
                EXPECT_TRUE(values[64] == 0.0 || (values[64] >= 1e6 && values[64] <= 1e9));
                EXPECT_TRUE(std::isfinite(values[128]) && std::isfinite(values[192]));
            }
        }
        EXPECT_GT(call.values[1], lastRover);
        EXPECT_GT(call.values[kReceiver + 1], lastBase);
        EXPECT_LE(std::abs(call.values[1] - call.values[kReceiver + 1]), 0.1);
        lastRover = call.values[1];
        lastBase = call.values[kReceiver + 1];
    }
    EXPECT_GE(lastRover, 345600.0 + 3570.0 - 0.1);
}

TEST(SessionFeed, StationsAreTheHeadersPositionsAndHeights) {
    const Session session = PrepareSession(ReadWettzell(), {});
    Engine engine(test::RecordingEngine());
    Feed(session, engine, {});
    const auto call = std::find_if(Calls().begin(), Calls().end(),
                                   [](const Call& c) { return c.name == "InputAntCorrData"; });
    ASSERT_NE(call, Calls().end());
    EXPECT_THAT(call->values, testing::ElementsAre(4075578.4, 931852.75, 4801569.98, 0, 0, 0, 0, 0,
                                                   0, 0.284, 4075580.8863, 931853.5784,
                                                   4801567.9707, 0, 0, 0, 0, 0, 0, 0.071));
}

TEST(SessionFeed, TheFirstRecordsStandInTheFile) {
    // First GPS record of the navigation file that reaches the session, digit by digit.
    const Session session = PrepareSession(ReadWettzell(), {});
    ASSERT_FALSE(session.ephemerides.kepler.empty());
    for (const TimedKepler& timed : session.ephemerides.kepler) {
        EXPECT_FALSE(OutOfBounds(timed.record));
        EXPECT_LE(std::abs(io::SecondsBetween(timed.reference, session.FirstTime())), 18100.0);
    }
    ASSERT_TRUE(session.ionosphere);
    EXPECT_EQ(session.ionosphere->alpha[0], 4.6566e-09);
    EXPECT_EQ(session.ionosphere->beta[3], -5.2429e+05);
}

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
    for (const EngineSystem system :
         {EngineSystem::kGps, EngineSystem::kGlonass, EngineSystem::kGalileo}) {
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

TEST(Sky, SatellitesStandWhereTheStationSawThem) {
    const Session session = PrepareSession(ReadWettzell(), {});
    Engine engine(test::RecordingEngine());
    const FeedSummary fed = Feed(session, engine, {});
    const auto tracks = SkyTracks(session, fed, 300.0);
    EXPECT_GT(tracks.size(), 25U);
    for (const auto& [satellite, points] : tracks) {
        for (const SkyPoint& point : points) {
            // What is observed is above the horizon.
            EXPECT_GT(point.elevation, -0.01) << ToString(satellite);
            EXPECT_LE(point.elevation, M_PI / 2.0);
            EXPECT_TRUE(point.azimuth >= 0.0 && point.azimuth < 2.0 * M_PI);
        }
        EXPECT_LE(points.size(), 12U);
    }
    // C05 at 58.75 degrees east: azimuth and elevation of a geostationary place over Wettzell.
    const auto geo = tracks.find({EngineSystem::kBds, 5});
    ASSERT_NE(geo, tracks.end());
    const Geodetic place = ToGeodetic(kWtzr);
    const double dlon = 58.75 * M_PI / 180.0 - place.longitude;
    const double azimuth = M_PI - std::atan(std::tan(dlon) / std::sin(place.latitude));
    EXPECT_NEAR(geo->second[0].azimuth, azimuth, 0.05);
}

Solution SolutionOf(int mode, double ratio) {
    Solution solution;
    solution.mode = mode;
    solution.ratio = ratio;
    return solution;
}

TEST(Judgement, AFixMustPassTheRatioOfTheLastModel) {
    EngineResults results;
    EXPECT_EQ(Judge(results, 1.8), Acceptance::kNone);
    results.status = 21;
    results.tripleDifference.mode = 3;
    EXPECT_EQ(Judge(results, 1.8), Acceptance::kTripleDifference);
    results.status = 73;
    results.floats = {SolutionOf(5, 0.0), SolutionOf(6, 0.0)};
    results.fixeds = {SolutionOf(5, 9.0), SolutionOf(6, 1.9)};
    EXPECT_EQ(Judge(results, 1.8), Acceptance::kFixed);
    EXPECT_EQ(Judge(results, 1.9), Acceptance::kFloat);  // equality does not pass
    results.status = 72;
    results.fixeds.pop_back();
    EXPECT_EQ(Judge(results, 1.8), Acceptance::kFloat);
    results.status = 71;
    results.floats.pop_back();
    results.fixeds[0].ratio = 1.2;
    EXPECT_EQ(Judge(results, 1.8), Acceptance::kFloat);
}

TEST(Judgement, AFixOnFewSatellitesIsSaidToBeDoubtful) {
    EngineResults results;
    results.status = 81;
    Solution fixed = SolutionOf(1, 9.0);
    for (int prn = 1; prn <= 3; ++prn) {
        fixed.residuals.push_back({1, prn, 0, {{2111, 0.0, 1}}});
    }
    results.fixeds = {fixed};
    results.floats = {SolutionOf(1, 0.0)};
    EXPECT_THAT(Doubts(results, Acceptance::kFixed),
                testing::ElementsAre(testing::HasSubstr("3 satellites")));
    results.fixeds[0].residuals.push_back({8, 1, 0, {{2111, 0.0, 1}}});
    EXPECT_TRUE(Doubts(results, Acceptance::kFixed).empty());
}

TEST(Judgement, AnEngineWithoutSolverIsNotAsked) {
    EngineApi api = test::RecordingEngine();
    test::NextRun() = {10, 0};
    const Session session = PrepareSession(ReadWettzell(), {});
    Engine engine(api);
    Feed(session, engine, {});
    const RunOutcome outcome = vornel::session::Run(session, engine);
    EXPECT_FALSE(outcome.completed);
    EXPECT_EQ(outcome.acceptance, Acceptance::kNone);
    EXPECT_EQ(outcome.Best(), nullptr);
}

}  // namespace
}  // namespace vornel::session
