// Tracks of satellites: gaps with both ends inside, and the list's way of taking a repeated
// satellite.
#include "run/sat_track.h"

#include <gtest/gtest.h>

#include <vector>

namespace vornel {
namespace {

Epoch At(double seconds) {
    return {2200, seconds};
}

SatTrack Track(int sat, bool isActive = false, std::vector<TimePeriod> gaps = {}) {
    SatTrack track;
    track.sat = sat;
    track.isActive = isActive;
    track.gaps = std::move(gaps);
    return track;
}

std::vector<int> Satellites(const SatTrackList& list) {
    std::vector<int> satellites;
    for (const SatTrack& track : list.tracks) {
        satellites.push_back(track.sat);
    }
    return satellites;
}

SatTrackList ListOf(const std::vector<int>& satellites) {
    SatTrackList list;
    for (const int sat : satellites) {
        list.Add(Track(sat));
    }
    return list;
}

TEST(SatTrackGaps, BothEndsCountAsInside) {
    const SatTrack track = Track(5, false, {{At(100.0), At(200.0)}});
    EXPECT_FALSE(track.InGap(At(99.999)));
    EXPECT_TRUE(track.InGap(At(100.0)));
    EXPECT_TRUE(track.InGap(At(150.0)));
    EXPECT_TRUE(track.InGap(At(200.0)));
    EXPECT_FALSE(track.InGap(At(200.001)));
}

TEST(SatTrackGaps, AnyOfSeveralCounts) {
    const SatTrack track = Track(5, false, {{At(300.0), At(400.0)}, {At(100.0), At(100.0)}});
    EXPECT_TRUE(track.InGap(At(100.0)));
    EXPECT_FALSE(track.InGap(At(200.0)));
    EXPECT_TRUE(track.InGap(At(350.0)));
}

TEST(SatTrackGaps, NeitherTheOwnSpanNorTheActiveMarkIsConsulted) {
    SatTrack track = Track(5, true);
    track.span = TimePeriod(At(0.0), At(1000.0));
    EXPECT_FALSE(track.InGap(At(500.0)));
}

TEST(SatTrackGaps, AGapThatEndsBeforeItStartsHoldsNothing) {
    const SatTrack track = Track(5, false, {{At(200.0), At(100.0)}});
    EXPECT_FALSE(track.InGap(At(150.0)));
}

TEST(SatTrackCopies, AnAssignedTrackHoldsAllAndIsItsOwn) {
    SatTrack source = Track(7, true, {{At(100.0), At(200.0)}});
    source.value = 3.5;
    source.span = TimePeriod(At(10.0), At(20.0));
    SatTrack assigned = Track(9, false, {{At(1.0), At(2.0)}, {At(3.0), At(4.0)}});
    assigned = source;
    source.gaps.clear();
    EXPECT_EQ(assigned.sat, 7);
    EXPECT_TRUE(assigned.isActive);
    EXPECT_EQ(assigned.value, 3.5);
    EXPECT_TRUE(assigned.span.start == At(10.0));
    EXPECT_TRUE(assigned.span.end == At(20.0));
    EXPECT_EQ(assigned.gaps.size(), 1U);
    EXPECT_TRUE(assigned.InGap(At(150.0)));
    EXPECT_FALSE(assigned.InGap(At(1.5)));
}

TEST(SatTrackListAdd, ANewSatelliteIsAppendedWithAllItsFields) {
    SatTrack track = Track(7, true, {{At(1.0), At(2.0)}});
    track.value = 3.5;
    track.span = TimePeriod(At(10.0), At(20.0));
    SatTrackList list = ListOf({5});
    list.Add(track);
    track.gaps.clear();  // the list holds a copy
    ASSERT_EQ(Satellites(list), (std::vector<int>{5, 7}));
    EXPECT_TRUE(list.tracks[1].isActive);
    EXPECT_EQ(list.tracks[1].value, 3.5);
    EXPECT_TRUE(list.tracks[1].span.start == At(10.0));
    EXPECT_TRUE(list.tracks[1].span.end == At(20.0));
    EXPECT_EQ(list.tracks[1].gaps.size(), 1U);
}

TEST(SatTrackListAdd, ARepeatedSatelliteTakesEveryLaterTrackWithIt) {
    SatTrackList list = ListOf({5, 7, 9});
    list.Add(Track(7, true));
    EXPECT_EQ(Satellites(list), (std::vector<int>{5, 7}));
    EXPECT_TRUE(list.tracks[1].isActive);
}

TEST(SatTrackListAdd, ARepeatOfTheFirstEmptiesTheListBeforeIt) {
    SatTrackList list = ListOf({5, 7, 9});
    list.Add(Track(5));
    EXPECT_EQ(Satellites(list), std::vector<int>{5});
}

TEST(SatTrackListAdd, ARepeatOfTheLastReplacesItAlone) {
    SatTrackList list = ListOf({5, 7, 9});
    list.Add(Track(9, true));
    EXPECT_EQ(Satellites(list), (std::vector<int>{5, 7, 9}));
    EXPECT_TRUE(list.tracks[2].isActive);
}

TEST(SatTrackListAdd, TwoEarlierTracksOfOneSatelliteBothGo) {
    SatTrackList list;
    list.tracks = {Track(1), Track(7), Track(2), Track(7), Track(3)};
    list.Add(Track(7, true));
    EXPECT_EQ(Satellites(list), (std::vector<int>{1, 7}));
}

TEST(SatTrackListExclusion, FollowsTheFirstTrackOfTheSatellite) {
    SatTrackList list;
    list.tracks = {Track(5, false, {{At(100.0), At(200.0)}}), Track(5, true), Track(6, true)};
    EXPECT_TRUE(list.IsExcluded(5, At(150.0)));
    EXPECT_FALSE(list.IsExcluded(5, At(250.0)));
    EXPECT_TRUE(list.IsExcluded(6, At(250.0)));
    EXPECT_FALSE(list.IsExcluded(7, At(150.0)));
    EXPECT_FALSE(SatTrackList().IsExcluded(5, At(150.0)));
}

TEST(SatTrackListExclusion, AnActiveTrackExcludesAtAnyTimeWhateverItsGaps) {
    SatTrackList list;
    list.Add(Track(5, true, {{At(100.0), At(200.0)}}));
    EXPECT_TRUE(list.IsExcluded(5, At(0.0)));
    EXPECT_TRUE(list.IsExcluded(5, At(150.0)));
}

}  // namespace
}  // namespace vornel
