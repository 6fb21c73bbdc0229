#include "session/signals.h"

#include <gtest/gtest.h>

#include "observation_maker.h"

namespace vornel::session {
namespace {

using io::GnssSystem;
using test::ObservationMaker;

constexpr double kCode = 2.2e7, kPhase = 1.1e8;

const SignalPair& Gps(const SignalChoice& choice, std::size_t f) {
    return choice[IndexOf(engine::System::kGps)][f];
}

TEST(Signals, TheCommonCodeIsTakenBeforeThePreferredOne) {
    const auto rover =
        ObservationMaker("C1C L1C C2W L2W C2X L2X")
            .Epoch(2111, 0)
            .Satellite(GnssSystem::kGps, 1, {kCode, kPhase, kCode, kPhase, kCode, kPhase})
            .Done();
    const auto base = ObservationMaker("C1C L1C C2X L2X")
                          .Epoch(2111, 0)
                          .Satellite(GnssSystem::kGps, 1, {kCode, kPhase, kCode, kPhase})
                          .Done();
    const SignalChoice choice = ChooseSignals(rover, base, {});
    EXPECT_EQ(Gps(choice, 1).rover->Tracking(), "2X");
    EXPECT_EQ(Gps(choice, 1).base->Tracking(), "2X");
    EXPECT_TRUE(Gps(choice, 1).SameTracking());
}

TEST(Signals, WithoutACommonCodeEachTakesItsOwn) {
    const auto rover = ObservationMaker("C1X L1X")
                           .Epoch(2111, 0)
                           .Satellite(GnssSystem::kGalileo, 1, {kCode, kPhase})
                           .Done();
    const auto base = ObservationMaker("C1C L1C")
                          .Epoch(2111, 0)
                          .Satellite(GnssSystem::kGalileo, 1, {kCode, kPhase})
                          .Done();
    const auto pair = ChooseSignals(rover, base, {})[IndexOf(engine::System::kGalileo)][0];
    EXPECT_TRUE(pair.Usable());
    EXPECT_FALSE(pair.SameTracking());
    EXPECT_EQ(pair.rover->Tracking(), "1X");
    EXPECT_EQ(pair.base->Tracking(), "1C");
}

TEST(Signals, ACodeInTheHeaderAloneDoesNotCount) {
    // 2W is declared by both and never observed; 2L is.
    const auto made = [] {
        return ObservationMaker("C1C L1C C2W L2W C2L L2L")
            .Epoch(2111, 0)
            .Satellite(GnssSystem::kGps, 1, {kCode, kPhase, NAN, NAN, kCode, kPhase})
            .Done();
    };
    EXPECT_EQ(Gps(ChooseSignals(made(), made(), {}), 1).base->Tracking(), "2L");
}

TEST(Signals, ASparseCodeGivesWayToAFullOne) {
    // 2W comes first in the order, but is there for one of three satellites.
    const auto made = [] {
        return ObservationMaker("C1C L1C C2W L2W C2L L2L")
            .Epoch(2111, 0)
            .Satellite(GnssSystem::kGps, 1, {kCode, kPhase, kCode, kPhase, kCode, kPhase})
            .Satellite(GnssSystem::kGps, 2, {kCode, kPhase, NAN, NAN, kCode, kPhase})
            .Satellite(GnssSystem::kGps, 3, {kCode, kPhase, NAN, NAN, kCode, kPhase})
            .Done();
    };
    EXPECT_EQ(Gps(ChooseSignals(made(), made(), {}), 1).base->Tracking(), "2L");
}

TEST(Signals, PhasesOfRinex2ServeEveryCodeOfTheirBand) {
    const auto made = [] {
        return ObservationMaker("C1C C1W L1C C2W L2W", 2.11)
            .Epoch(1151, 0)
            .Satellite(GnssSystem::kGps, 1, {NAN, kCode, kPhase, kCode, kPhase})
            .Done();
    };
    const SignalChoice choice = ChooseSignals(made(), made(), {});
    EXPECT_EQ(Gps(choice, 0).base->Tracking(), "1W");
    EXPECT_EQ(Gps(choice, 0).base->phaseName, "L1C");
    // In RINEX 3 the phase of another code is another observable.
    const auto rinex3 = ObservationMaker("C1W L1C")
                            .Epoch(2111, 0)
                            .Satellite(GnssSystem::kGps, 1, {kCode, kPhase})
                            .Done();
    EXPECT_FALSE(Gps(ChooseSignals(rinex3, rinex3, {}), 0).Usable());
}

TEST(Signals, BeiDouTakesB1IAnd1207) {
    const auto made = [] {
        return ObservationMaker("C1P L1P C2I L2I C6I L6I C7I L7I")
            .Epoch(2111, 0)
            .Satellite(GnssSystem::kBeiDou, 11,
                       {kCode, kPhase, kCode, kPhase, kCode, kPhase, kCode, kPhase})
            .Done();
    };
    const auto pairs = ChooseSignals(made(), made(), {})[IndexOf(engine::System::kBds)];
    EXPECT_EQ(pairs[0].base->Tracking(), "2I");
    EXPECT_EQ(pairs[1].base->Tracking(), "7I");
}

TEST(Signals, GalileoBandsAreThoseConfigured) {
    const auto made = [] {
        return ObservationMaker("C1C L1C C7Q L7Q C8Q L8Q")
            .Epoch(2111, 0)
            .Satellite(GnssSystem::kGalileo, 1, {kCode, kPhase, kCode, kPhase, kCode, kPhase})
            .Done();
    };
    const auto pairs = [&](GalileoSignals signals) {
        return ChooseSignals(made(), made(), signals)[IndexOf(engine::System::kGalileo)];
    };
    EXPECT_FALSE(pairs({1, 2})[1].Usable());
    EXPECT_EQ(pairs({1, 3})[1].base->Tracking(), "7Q");
    EXPECT_EQ(pairs({4, 1})[0].base->Tracking(), "8Q");
    EXPECT_EQ(SecondGalileoSignal(made(), made(), 1), 3);
    EXPECT_EQ(SecondGalileoSignal(made(), made(), 3), 4);
    const auto e1 = ObservationMaker("C1C L1C")
                        .Epoch(2111, 0)
                        .Satellite(GnssSystem::kGalileo, 1, {kCode, kPhase})
                        .Done();
    EXPECT_EQ(SecondGalileoSignal(e1, e1, 2), 1);
    EXPECT_EQ(SecondGalileoSignal(e1, e1, 1), 2);
}

TEST(Signals, ValuesOutsideTheBoundsAreMissing) {
    const auto o = ObservationMaker("C1C L1C C2W L2W")
                       .Epoch(2111, 0)
                       .Satellite(GnssSystem::kGps, 4, {kCode, kPhase, 9.9e5, kPhase})
                       .Satellite(GnssSystem::kGps, 3, {kCode, 1e12, 1.1e9, INFINITY})
                       .Satellite(GnssSystem::kGps, 2, {5.0, kPhase, kCode, kPhase})
                       .Satellite(GnssSystem::kGps, 1, {kCode, kPhase, kCode, kPhase})
                       .Satellite(GnssSystem::kGps, 1, {1.5e7, kPhase, kCode, kPhase})
                       .Satellite(GnssSystem::kBeiDou, 40, {kCode, kPhase, kCode, kPhase})
                       .Done();
    const SignalChoice choice = ChooseSignals(o, o, {});
    ValueLosses losses;
    const auto values = SignalReader(o, choice, true).Read(o.epochs[0], losses);
    // Ascending; G02 has no first code; the second G01 and C40 are left out.
    ASSERT_EQ(values.size(), 3U);
    EXPECT_EQ(ToString(values[0].satellite), "G01");
    EXPECT_EQ(values[0].code[0], kCode);
    EXPECT_EQ(ToString(values[1].satellite), "G03");
    EXPECT_EQ(values[1].phase[0], 0.0);
    EXPECT_EQ(values[1].code[1], 0.0);
    EXPECT_EQ(values[1].phase[1], 0.0);
    EXPECT_EQ(values[2].code[1], 0.0);
    EXPECT_EQ(losses.outOfBounds, 5U);
    EXPECT_EQ(losses.noFirstCode, 1U);
}

}  // namespace
}  // namespace vornel::session
