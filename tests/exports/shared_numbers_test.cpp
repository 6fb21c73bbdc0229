// The numbers of the public header, as a program has them that was compiled against an older one.
#include <gtest/gtest.h>

#include <iterator>

#include "VornelBlCore.h"

namespace {

TEST(SharedNumbers, Satellites) {
    const int numbers[][3] = {
        // code, count, offset
        {VORNEL_GPS, VORNEL_GPS_COUNT, VORNEL_GPS_OFFSET},
        {VORNEL_GLONASS, VORNEL_GLONASS_COUNT, VORNEL_GLONASS_OFFSET},
        {VORNEL_BDS, VORNEL_BDS_COUNT, VORNEL_BDS_OFFSET},
        {VORNEL_GALILEO, VORNEL_GALILEO_COUNT, VORNEL_GALILEO_OFFSET},
    };
    const int expected[][3] = {{1, 35, 0}, {2, 32, 35}, {4, 36, 67}, {8, 32, 103}};
    for (int i = 0; i < 4; ++i) {
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(numbers[i][k], expected[i][k]) << i << k;
        }
    }
    EXPECT_EQ(VORNEL_SATELLITES, 135);
    EXPECT_EQ(VORNEL_BDS_GEOSTATIONARY, 5);
    EXPECT_EQ(VORNEL_EPOCH_SLOTS, 64);
}

TEST(SharedNumbers, SolveModels) {
    EXPECT_EQ(VORNEL_MODEL_AUTOMATIC, 0);
    EXPECT_EQ(VORNEL_MODEL_FIRST, 1);
    EXPECT_EQ(VORNEL_MODEL_SECOND, 2);
    EXPECT_EQ(VORNEL_MODEL_BOTH, 3);
    EXPECT_EQ(VORNEL_MODEL_SUM, 4);
    EXPECT_EQ(VORNEL_MODEL_WIDE_LANE, 5);
    EXPECT_EQ(VORNEL_MODEL_IONO_FREE, 6);
}

TEST(SharedNumbers, StatusesUpToTheTripleDifference) {
    EXPECT_EQ(VORNEL_STATUS_CONSTRUCTED, 0);
    EXPECT_EQ(VORNEL_STATUS_STARTED, 10);
    EXPECT_EQ(VORNEL_STATUS_NO_PERIOD, 11);
    EXPECT_EQ(VORNEL_STATUS_PERIODS_CUT, 12);
    EXPECT_EQ(VORNEL_STATUS_NO_REFERENCE, 13);
    EXPECT_EQ(VORNEL_STATUS_REFERENCES_CHOSEN, 14);
    EXPECT_EQ(VORNEL_STATUS_TRIPLE_FAILED, 20);
    EXPECT_EQ(VORNEL_STATUS_TRIPLE_DONE, 21);
}

// Float failed, done; fixing failed, ratio low, passed; fixed failed, done.
#define STATUSES_OF(model)                                                              \
    {                                                                                   \
        VORNEL_STATUS_##model##_FLOAT_FAILED, VORNEL_STATUS_##model##_FLOAT_DONE,       \
            VORNEL_STATUS_##model##_FIXING_FAILED, VORNEL_STATUS_##model##_RATIO_LOW,   \
            VORNEL_STATUS_##model##_RATIO_PASSED, VORNEL_STATUS_##model##_FIXED_FAILED, \
            VORNEL_STATUS_##model##_FIXED_DONE                                          \
    }

TEST(SharedNumbers, StatusesOfTheSolveModels) {
    const int statuses[][7] = {STATUSES_OF(FIRST), STATUSES_OF(SECOND),    STATUSES_OF(BOTH),
                               STATUSES_OF(SUM),   STATUSES_OF(WIDE_LANE), STATUSES_OF(IONO_FREE)};
    const int expected[][7] = {{40, 41, 60, 61, 62, 80, 81}, {42, 43, 63, 64, 65, 82, 83},
                               {44, 45, 66, 67, 68, 84, 85}, {34, 35, 56, 57, 58, 74, 75},
                               {30, 31, 50, 51, 52, 70, 71}, {32, 33, 53, 54, 55, 72, 73}};
    for (int model = 1; model <= 6; ++model) {
        for (int k = 0; k < 7; ++k) {
            EXPECT_EQ(statuses[model - 1][k], expected[model - 1][k]) << model << ' ' << k;
        }
    }
}

TEST(SharedNumbers, OrbitsAndChannels) {
    EXPECT_EQ(VORNEL_GALILEO_E1, 1);
    EXPECT_EQ(VORNEL_GALILEO_E5A, 2);
    EXPECT_EQ(VORNEL_GALILEO_E5B, 3);
    EXPECT_EQ(VORNEL_GALILEO_E5, 4);
    EXPECT_EQ(VORNEL_GALILEO_E6, 5);
    EXPECT_EQ(VORNEL_PRECISE_X, 0);
    EXPECT_EQ(VORNEL_PRECISE_Y, 1);
    EXPECT_EQ(VORNEL_PRECISE_Z, 2);
    EXPECT_EQ(VORNEL_PRECISE_CLOCK, 3);
    EXPECT_EQ(VORNEL_PRECISE_BEFORE, 5);
    EXPECT_EQ(VORNEL_PRECISE_AFTER, 6);
    EXPECT_EQ(VORNEL_MISSING_PRECISE_VALUE, 0.999999999999);
    EXPECT_EQ(VORNEL_EPHEMERIS_REACH, 14400.0);
    EXPECT_EQ(VORNEL_LEAST_ORBIT_RADIUS, 15e6);
    EXPECT_EQ(VORNEL_GREATEST_ORBIT_RADIUS, 40e6);
    EXPECT_EQ(VORNEL_BDT_OFFSET, 14.0);
    EXPECT_EQ(VORNEL_LOWEST_CHANNEL, -7);
    EXPECT_EQ(VORNEL_HIGHEST_CHANNEL, 13);
    EXPECT_EQ(VORNEL_GREATEST_RATIO, 99.0);
}

// Satellites four slots apart lie opposite each other in their plane and share a channel; 17 and 21
// do not.
TEST(SharedNumbers, ChannelsOfOppositeSlots) {
    const int channels[] = VORNEL_CHANNELS_OF_SLOTS;
    ASSERT_EQ(std::size(channels), 24U);
    EXPECT_EQ(VORNEL_CHANNEL_SLOTS, 24);
    for (int i = 0; i < 24; ++i) {
        const bool shared = channels[i] == channels[i % 8 < 4 ? i + 4 : i - 4];
        EXPECT_EQ(shared, i != 16 && i != 20) << "slot " << i + 1;
    }
}

}  // namespace
