// Receivers: noise, locks, slips, gaps, clocks, hardware; each effect alone.
#include <gtest/gtest.h>

#include "effect.h"
#include "simulator/calendar.h"
#include "simulator/receiver_clock.h"
#include "simulator/sky.h"
#include "simulator/tracking.h"

namespace vornel::rough {
namespace {

// Codes, phases and indicators of one signal with a given strength, through the tracker alone.
struct Trace {
    std::vector<double> code, phase, ambiguity;
    std::vector<int> lossOfLock;
    int lost = 0;
};

Trace Follow(Scenario scenario, int epochs, double elevation = 0.5 * kPi) {
    Tracker tracker(scenario, 0, 1);
    Trace trace;
    const double azimuth = 1.0;
    const Vector3 direction = {std::cos(elevation) * std::cos(azimuth),
                               std::cos(elevation) * std::sin(azimuth), std::sin(elevation)};
    for (int k = 0; k < epochs; ++k) {
        const Reception got = tracker.Receive(0, 0, 0.19, {azimuth, elevation, direction, 0.0, 0.0},
                                              k * scenario.interval);
        if (!got.code) {
            ++trace.lost;
            continue;
        }
        trace.code.push_back(got.codeError);
        trace.phase.push_back(got.phaseError);
        trace.ambiguity.push_back(got.ambiguity);
        trace.lossOfLock.push_back(got.lossOfLock);
    }
    return trace;
}

Scenario OneReceiver() {
    Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 0, 0.0});
    scenario.effects.tracking = 1.0;
    Receiver& receiver = scenario.occupations[0].receiver;
    receiver.strengthAtZenith = 45.0;
    receiver.strengthDrop = 16.0;
    return scenario;
}

TEST(Noise, IsThatOfTheReceiverAt45DbHzAndGrowsTowardsTheHorizon) {
    Scenario scenario = OneReceiver();
    scenario.effects.codeNoise = scenario.effects.phaseNoise = 1.0;
    scenario.occupations[0].receiver.codeNoise = 0.2;
    scenario.occupations[0].receiver.phaseNoise = 0.001;
    // One value in a hundred is five times as large: 1.24 times the variance.
    const double tails = std::sqrt(1.24);
    const Trace zenith = Follow(scenario, 20000);
    EXPECT_NEAR(Rms(zenith.code), 0.2 * tails, 0.01);
    EXPECT_NEAR(Rms(zenith.phase), 0.001 * tails, 5e-5);
    EXPECT_NEAR(LagCorrelation(zenith.code, 1), 0.0, 0.03);
    // At 10 degrees 16 (1 - sin 10)^1.5 = 12.0 dB are lost: four times the code noise.
    const Trace low = Follow(scenario, 20000, 10.0 * kDegree);
    EXPECT_NEAR(Rms(low.code) / Rms(zenith.code), 3.98, 0.3);
    EXPECT_NEAR(Rms(low.phase) / Rms(zenith.phase), std::pow(3.98, 0.7), 0.2);
}

TEST(Noise, OfASmoothedCodeLasts) {
    Scenario scenario = OneReceiver();
    scenario.effects.codeNoise = 1.0;
    scenario.occupations[0].receiver.smoothing = 60.0;
    const Trace trace = Follow(scenario, 20000);
    EXPECT_NEAR(LagCorrelation(trace.code, 1), std::exp(-0.5), 0.03);
}

TEST(Slips, ComeAtTheirRateAndMoreOftenFromWeakSignals) {
    Scenario scenario = OneReceiver();
    scenario.effects.slips = 1.0;
    Receiver& receiver = scenario.occupations[0].receiver;
    receiver.slipRate = 0.5;
    receiver.burst = 0.0;
    receiver.slipsReported = 0.7;
    const auto slipsOf = [](const Trace& trace, int& reported) {
        int slips = 0;
        reported = 0;
        for (std::size_t i = 1; i < trace.ambiguity.size(); ++i) {
            slips += trace.ambiguity[i] != trace.ambiguity[i - 1] ? 1 : 0;
            reported += trace.lossOfLock[i];
        }
        return slips;
    };
    int reported = 0;
    const int high = slipsOf(Follow(scenario, 120000), reported);  // 1000 hours
    EXPECT_NEAR(high, 500, 60);
    EXPECT_NEAR(reported, 0.7 * high, 40);
    const int low = slipsOf(Follow(scenario, 120000, 10.0 * kDegree), reported);
    EXPECT_NEAR(static_cast<double>(low) / high, 10.0, 2.0);
    receiver.burst = 0.5;
    EXPECT_GT(slipsOf(Follow(scenario, 120000), reported), 600);
    scenario.effects.slips = 0.0;
    EXPECT_EQ(slipsOf(Follow(scenario, 120000), reported), 0);
}

TEST(Slips, AreOfHalfCyclesWhereAReceiverHasThem) {
    Scenario scenario = OneReceiver();
    scenario.effects.slips = 1.0;
    Receiver& receiver = scenario.occupations[0].receiver;
    receiver.slipRate = 5.0;
    for (const double share : {0.0, 1.0}) {
        receiver.halfCycles = share;
        const Trace trace = Follow(scenario, 12000);
        int halves = 0, slips = 0;
        for (std::size_t i = 1; i < trace.ambiguity.size(); ++i) {
            const double step = trace.ambiguity[i] - trace.ambiguity[i - 1];
            slips += step != 0.0 ? 1 : 0;
            halves += std::abs(step - std::round(step)) > 0.4 ? 1 : 0;
        }
        EXPECT_GT(slips, 100);
        if (share == 0.0) {
            EXPECT_EQ(halves, 0);
        } else {
            EXPECT_GT(halves, slips / 3);
        }
    }
}

TEST(Lock, IsLostBelowItsStrengthAndBehindTheHorizon) {
    Scenario scenario = OneReceiver();
    Receiver& receiver = scenario.occupations[0].receiver;
    receiver.elevationCutoff = 5.0 * kDegree;
    EXPECT_EQ(Follow(scenario, 100, 4.9 * kDegree).code.size(), 0U);
    EXPECT_EQ(Follow(scenario, 100, 5.1 * kDegree).code.size(), 100U);
    receiver.acquisition = 46.0;
    EXPECT_EQ(Follow(scenario, 100).code.size(), 0U);
    receiver.acquisition = 30.0;
    scenario.sites[0].around.horizon.assign(kHorizonDirections, 20.0 * kDegree);
    EXPECT_EQ(Follow(scenario, 100, 19.0 * kDegree).code.size(), 0U);
    EXPECT_EQ(Follow(scenario, 100, 21.0 * kDegree).code.size(), 100U);
}

TEST(Lock, DropsOutForMomentsAndComesBackWithAnotherNumber) {
    Scenario scenario = OneReceiver();
    scenario.effects.slips = 1.0;
    Receiver& receiver = scenario.occupations[0].receiver;
    receiver.slipRate = 0.0;
    receiver.dropouts = 2.0;
    const Trace trace = Follow(scenario, 12000);  // 100 hours
    int renewed = 0;
    for (std::size_t i = 1; i < trace.ambiguity.size(); ++i) {
        renewed += trace.ambiguity[i] != trace.ambiguity[i - 1] ? 1 : 0;
    }
    EXPECT_NEAR(renewed, 200, 45);
    EXPECT_GT(trace.lost, renewed / 2);
    EXPECT_LT(trace.lost, 5 * renewed);
}

TEST(Lock, UnderLeavesIsLostOftenAndThePhaseTrembles) {
    Scenario scenario = OneReceiver();
    scenario.effects.canopy = 1.0;
    scenario.occupations[0].receiver.strengthAtZenith = 50.0;
    Surroundings& around = scenario.sites[0].around;
    around.canopyLoss = 5.0;
    around.canopyFlutter = 3.0;
    around.canopyScatter = 0.004;
    const Trace trace = Follow(scenario, 20000, 40.0 * kDegree);
    EXPECT_GT(trace.lost, 100);
    ASSERT_GT(trace.phase.size(), 1000U);
    EXPECT_NEAR(Rms(trace.phase), 0.004 / std::sqrt(std::sin(40.0 * kDegree)), 0.002);
    EXPECT_GT(LagCorrelation(trace.phase, 1), 0.1);
}

TEST(Gaps, ComeAtTheirRate) {
    Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 0, 0.0});
    scenario.duration = 6 * 3600.0;
    scenario.interval = 10.0;
    scenario.effects.gaps = 1.0;
    for (Occupation& occupation : scenario.occupations) {
        occupation.duration = scenario.duration;
        occupation.receiver.missedEpochs = 0.02;
    }
    scenario.occupations[1].receiver.gapRate = 1.0;
    scenario.occupations[1].receiver.gapLength = 600.0;
    const SimulatedSession session = Simulate(scenario);
    EXPECT_NEAR(static_cast<double>(session.stations[0].observations.epochs.size()), 2160 * 0.98,
                30.0);
    EXPECT_LT(session.stations[1].observations.epochs.size(), 2050U);
    EXPECT_GT(session.stations[1].observations.epochs.size(), 1000U);
}

TEST(Channels, KeepTheHighestSatellites) {
    Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 0, 0.0});
    scenario.occupations[1].receiver.channels = 10;
    const SimulatedSession session = Simulate(scenario);
    const io::Observations& data = session.stations[1].observations;
    for (const io::ObservationEpoch& epoch : data.epochs) {
        EXPECT_EQ(epoch.satelliteCount, 10U);
    }
    EXPECT_GT(session.stations[0].observations.epochs[0].satelliteCount, 30U);
}

TEST(Clock, RunsAsItsStyleSays) {
    Receiver receiver;
    receiver.clockOffset = 4.0e-4;
    receiver.clockDrift = 1e-6;
    receiver.clock = ClockStyle::kJumping;
    const EpochTime before = EpochTimeOf(receiver, 1000.0, 99.0);
    const EpochTime after = EpochTimeOf(receiver, 1002.0, 101.0);
    EXPECT_EQ(before.tag, 1000.0);
    EXPECT_NEAR(before.offset, 4.99e-4, 1e-9);
    EXPECT_NEAR(after.offset, -4.99e-4, 1e-9);  // set back by a millisecond
    EXPECT_NEAR(after.moment, 1002.0 + 4.99e-4, 1e-9);
    receiver.clock = ClockStyle::kFree;
    EXPECT_NEAR(EpochTimeOf(receiver, 1002.0, 101.0).offset, 5.01e-4, 1e-9);
    receiver.clock = ClockStyle::kTagged;
    receiver.clockOffset = -2.0e-3;
    const EpochTime tagged = EpochTimeOf(receiver, 1000.0, 50.0);
    EXPECT_NEAR(tagged.tag, 1000.0 - 1.95e-3, 1e-7);
    EXPECT_LT(std::abs(tagged.offset), 1e-7);
    receiver.clock = ClockStyle::kSteered;
    receiver.clockOffset = 3e-8;
    EXPECT_LE(std::abs(EpochTimeOf(receiver, 1000.0, 50.0).offset), 3e-8);
}

TEST(Clock, JumpsMoveCodeAndPhaseTogether) {
    Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 0, 0.0});
    scenario.occupations[0].receiver.clock = ClockStyle::kJumping;
    scenario.occupations[0].receiver.clockOffset = 4.0e-4;
    scenario.occupations[0].receiver.clockDrift = 1e-7;
    const SimulatedSession session = Simulate(scenario);
    const io::Observations& data = session.stations[0].observations;
    // The first satellite of GPS, its code and phase against each other: no jump but of the code of
    // time that passed while the satellite moved.
    double jumps = 0.0;
    std::map<io::SatelliteId, std::pair<double, double>> last;
    for (const io::ObservationEpoch& epoch : data.epochs) {
        for (const io::SatelliteRow& row : data.SatellitesOf(epoch)) {
            const double code = data.Value(row, 0);
            const double phase = data.Value(row, 1) * WavelengthOf(data, row, 1);
            const auto found = last.find(row.satellite);
            if (found != last.end()) {
                EXPECT_NEAR(code - found->second.first, phase - found->second.second, 0.002);
                jumps += std::abs(code - found->second.first) > 200000.0 ? 1.0 : 0.0;
            }
            last[row.satellite] = {code, phase};
        }
    }
    EXPECT_GT(jumps, 20.0);  // of all satellites once
    EXPECT_LT(jumps, 60.0);
}

TEST(Hardware, GlonassPhasesOfDifferentMakesLieOnALineOverTheChannels) {
    Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 0, 0.0});
    scenario.occupations[0].receiver.glonassSlope = 0.024;
    const EffectSeries series =
        EffectAlone(scenario, [](Scenario& s) { s.effects.hardwareBiases = 1.0; });
    const SimulatedSession session = Simulate(scenario);
    std::map<int, int> channelOf;
    for (const auto& [slot, channel] : session.stations[0].observations.station().glonassChannels) {
        channelOf[slot] = channel;
    }
    std::vector<double> offsets;
    for (const auto& [key, points] : series) {
        if (key.first.system == io::GnssSystem::kGlonass && key.second == 0) {
            for (const EffectPoint& point : points) {
                offsets.push_back(point.phase - 0.024 * channelOf.at(key.first.number));
            }
        }
    }
    ASSERT_GT(offsets.size(), 500U);
    const auto [low, high] = std::minmax_element(offsets.begin(), offsets.end());
    EXPECT_LT(*high - *low, 0.001);
}

TEST(Hardware, CodeBiasesVanishInTheIonosphereFreeCombinationButForModes) {
    Scenario scenario = SilentPair(100.0, {2025, 3, 9, 1, 0, 0.0});
    const EffectSeries series =
        EffectAlone(scenario, [](Scenario& s) { s.effects.hardwareBiases = 1.0; });
    std::vector<double> first, combined;
    for (const auto& [key, points] : series) {
        const auto second = series.find({key.first, 1});
        if (key.first.system == io::GnssSystem::kGps && key.second == 0 && second != series.end()) {
            first.push_back(points[0].code);
            combined.push_back(2.5457 * points[0].code - 1.5457 * second->second[0].code);
        }
    }
    ASSERT_GT(first.size(), 5U);
    const auto spread = [](std::vector<double> values) {
        double mean = 0.0;
        for (const double value : values) {
            mean += value / static_cast<double>(values.size());
        }
        for (double& value : values) {
            value -= mean;
        }
        return Rms(values);
    };
    EXPECT_GT(spread(first), 0.7);
    // Modes differ by 0.2 m on either frequency.
    EXPECT_LT(spread(combined), 0.85);
}

}  // namespace
}  // namespace vornel::rough
