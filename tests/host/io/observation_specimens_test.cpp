// What each observation file of the specimens must give. Counts were taken from the texts by a count
// of epoch lines and of fields that are neither blank nor zero; values were read off the texts.
#include <gtest/gtest.h>

#include <cmath>

#include "io/observation_reader.h"
#include "specimens.h"

namespace vornel::io {
namespace {

struct Expected {
    const char* file;
    double version;
    bool compact;
    std::size_t epochs;
    std::size_t rows;    // satellites with an observation, over all epochs
    std::size_t values;  // observations
    const char* first;   // epoch, GPS time
    const char* last;
    const char* marker;
    const char* antenna;
    const char* radome;
    double height;  // m
};

class ObservationSpecimen : public ::testing::TestWithParam<Expected> {};

TEST_P(ObservationSpecimen, IsReadWhole) {
    const Expected& expected = GetParam();
    const FileBytes file = ReadSpecimen(expected.file);
    const Observations data = ReadObservations(file.bytes, file.name);
    EXPECT_NEAR(data.version, expected.version, 1e-9);
    EXPECT_EQ(data.compact, expected.compact);
    ASSERT_EQ(data.epochs.size(), expected.epochs);
    EXPECT_EQ(data.satellites.size(), expected.rows);
    EXPECT_EQ(CountValues(data), expected.values);
    if (expected.epochs > 0) {
        EXPECT_EQ(FormatTime(data.epochs.front().time, 7), expected.first);
        EXPECT_EQ(FormatTime(data.epochs.back().time, 7), expected.last);
    }
    EXPECT_EQ(data.station().markerName, expected.marker);
    EXPECT_EQ(data.station().antennaType, expected.antenna);
    EXPECT_EQ(data.station().antennaRadome, expected.radome);
    EXPECT_NEAR(data.station().antennaHeight, expected.height, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(
    Files, ObservationSpecimen,
    ::testing::Values(
        Expected{"KOSG0010.95O", 2.0, false, 3, 23, 92, "1995-01-01 00:00:00.0000000",
                 "1995-01-01 20:44:30.0000000", "KOSG", "AOAD/M_B", "DUTD", 0.105},
        Expected{"KOSG0010.95D", 2.0, true, 3, 23, 92, "1995-01-01 00:00:00.0000000",
                 "1995-01-01 20:44:30.0000000", "KOSG", "AOAD/M_B", "DUTD", 0.105},
        Expected{"aopr0010.17o", 2.10, false, 3, 30, 150, "2017-01-01 00:00:00.0000000",
                 "2017-01-01 06:09:10.0000000", "aopr", "-Unknown-", "", 0.0},
        Expected{"aopr0010.17d", 2.10, true, 3, 30, 150, "2017-01-01 00:00:00.0000000",
                 "2017-01-01 06:09:10.0000000", "aopr", "-Unknown-", "", 0.0},
        Expected{"14601736.18o", 2.11, false, 3, 38, 135, "2018-06-22 06:17:30.0000000",
                 "2018-06-22 06:18:00.0000000", "st", "UNKNOWN EXT", "", 2.0},
        Expected{"ab430140.18o.zip", 2.11, false, 9, 216, 2026, "2018-01-14 00:00:00.0000000",
                 "2018-01-14 00:02:00.0000000", "AB43", "TRM59800.80", "SCIT", 0.0083},
        Expected{"ac660270.18o.Z", 2.11, false, 23, 435, 2698, "2018-01-27 00:18:15.0000000",
                 "2018-01-27 01:36:15.0000000", "AC66", "TRM59800.80", "SCIT", 0.0083},
        Expected{"delf0010.21o", 2.11, false, 105, 2079, 14533, "2021-01-01 00:00:00.0000000",
                 "2021-01-01 00:52:00.0000000", "DELFT-16", "TRM29659.00", "UNAV", 0.05},
        Expected{"delf0010.21d", 2.11, true, 105, 2079, 14533, "2021-01-01 00:00:00.0000000",
                 "2021-01-01 00:52:00.0000000", "DELFT-16", "TRM29659.00", "UNAV", 0.05},
        Expected{"wsra0010.21o", 2.11, false, 17, 357, 2278, "2021-01-01 00:00:00.0000000",
                 "2021-01-01 00:08:00.0000000", "WSRA", "AOAD/M_T", "DUTD", 0.3888},
        Expected{"wsra0010.21d", 2.11, true, 17, 357, 2278, "2021-01-01 00:00:00.0000000",
                 "2021-01-01 00:08:00.0000000", "WSRA", "AOAD/M_T", "DUTD", 0.3888},
        Expected{"zegv0010.21o", 2.11, false, 19, 444, 3475, "2021-01-01 00:00:00.0000000",
                 "2021-01-01 00:09:00.0000000", "ZEGV", "SEPCHOKE_B3E6", "SPKE", 0.0},
        Expected{"zegv0010.21d", 2.11, true, 19, 444, 3475, "2021-01-01 00:00:00.0000000",
                 "2021-01-01 00:09:00.0000000", "ZEGV", "SEPCHOKE_B3E6", "SPKE", 0.0},
        Expected{"algo0010_2015001_v1_trim.rnx", 2.11, false, 2, 39, 299,
                 "2015-01-01 00:00:00.0000000", "2015-01-01 00:00:30.0000000",
                 "ALGO CACS-GSD 883160 Algonquin Park ON Canada", "AOAD/M_T", "NONE", 0.1},
        Expected{"algo0010_2015001_v1_trim.crx", 2.11, true, 2, 39, 299,
                 "2015-01-01 00:00:00.0000000", "2015-01-01 00:00:30.0000000",
                 "ALGO CACS-GSD 883160 Algonquin Park ON Canada", "AOAD/M_T", "NONE", 0.1},
        Expected{"demo.10o", 2.11, false, 2, 22, 126, "2010-03-05 00:00:00.0000000",
                 "2010-03-05 00:00:30.0000000", "MRKR", "AOAD/M_T", "NONE", 0.903},
        Expected{"minimal2.10o", 2.11, false, 1, 8, 44, "2010-03-05 00:00:30.0000000",
                 "2010-03-05 00:00:30.0000000", "", "", "", 0.0},
        Expected{"rinex2onesat.10o", 2.11, false, 2, 2, 14, "2010-03-05 00:00:00.0000000",
                 "2010-03-05 00:00:30.0000000", "MRKR", "AOAD/M_T", "NONE", 0.903},
        // A GLONASS file without a time system is in UTC, 15 s behind GPS time in 2010.
        Expected{"default_time_system2.10o", 2.11, false, 1, 8, 44, "2010-03-05 00:00:45.0000000",
                 "2010-03-05 00:00:45.0000000", "", "", "", 0.0},
        Expected{"blank.10o", 2.11, false, 0, 0, 0, "", "", "", "", "", 0.0},
        Expected{"ABMF00GLP_R_20181330000_01D_30S_MO.zip", 3.02, false, 3, 45, 381,
                 "2018-05-13 01:30:00.0000000", "2018-05-13 01:31:00.0000000", "ABMF",
                 "TRM57971.00", "NONE", 0.0},
        Expected{"LARM0630.22O", 3.02, false, 6, 108, 1104, "2022-03-04 00:00:00.0000000",
                 "2022-03-04 00:02:30.0000000", "LARM", "LEIAR25", "LEIT", 0.19},
        Expected{"VLNS0010.22O", 3.02, false, 3, 54, 306, "2022-01-01 00:00:00.0000000",
                 "2022-01-01 00:01:00.0000000", "VLNS", "LEIAR25.R4", "NONE", 0.073},
        Expected{"VLNS0010.22D", 3.02, true, 3, 54, 306, "2022-01-01 00:00:00.0000000",
                 "2022-01-01 00:01:00.0000000", "VLNS", "LEIAR25.R4", "NONE", 0.073},
        Expected{"P43300USA_R_20190012056_17M_15S_MO.crx", 3.03, true, 70, 2447, 21448,
                 "2019-01-01 20:56:45.0000000", "2019-01-01 21:14:00.0000000", "p433",
                 "TRM59800.80", "SCIT", 0.0083},
        Expected{"P43300USA_R_20190012056_17M_15S_MO.crx.bz2", 3.03, true, 70, 2447, 21448,
                 "2019-01-01 20:56:45.0000000", "2019-01-01 21:14:00.0000000", "p433",
                 "TRM59800.80", "SCIT", 0.0083},
        Expected{"ESBC00DNK_R_20201770000_01D_30S_MO_trim.rnx", 3.05, false, 2, 86, 1130,
                 "2020-06-25 00:00:00.0000000", "2020-06-25 00:00:30.0000000", "ESBC00DNK",
                 "ASH701945E_M", "SCIS", 0.216},
        Expected{"ESBC00DNK_R_20201770000_01D_30S_MO_trim.crx", 3.05, true, 2, 86, 1130,
                 "2020-06-25 00:00:00.0000000", "2020-06-25 00:00:30.0000000", "ESBC00DNK",
                 "ASH701945E_M", "SCIS", 0.216},
        Expected{"LAMA00POL_S_20261881407_04E_01S_MO.rnx", 3.05, false, 4, 52, 288,
                 "2026-07-07 14:07:40.0000000", "2026-07-07 14:08:10.0000000", "LAMA00POL",
                 "LEIAR20", "LEIM", 0.06},
        Expected{"demo3.10o", 3.01, false, 2, 22, 126, "2010-03-05 00:00:00.0000000",
                 "2010-03-05 00:00:30.0000000", "MRKR", "AOAD/M_T", "NONE", 0.903},
        Expected{"minimal3.10o", 3.01, false, 1, 8, 44, "2010-03-05 00:00:30.0000000",
                 "2010-03-05 00:00:30.0000000", "", "", "", 0.0},
        // A Galileo file without a time system is in Galileo time, which agrees with GPS time.
        Expected{"default_time_system3.10o", 3.01, false, 1, 8, 44, "2010-03-05 00:00:30.0000000",
                 "2010-03-05 00:00:30.0000000", "", "", "", 0.0},
        Expected{"blank3.10o", 3.01, false, 0, 0, 0, "", "", "", "", "", 0.0},
        Expected{"rinex_qc_repair_roundtrip-zero-interval-unknown.rnx", 4.0, false, 0, 0, 0, "", "",
                 "", "", "", 0.0},
        Expected{"KMS300DNK_R_20221591000_01H_30S_MO.crx", 4.0, true, 19, 919, 6694,
                 "2022-06-08 10:00:00.0000000", "2022-06-08 10:09:00.0000000", "KMS3",
                 "ASH701945E_M", "NONE", 0.0}));

struct Twins {
    const char* compact;
    const char* plain;
};

class CompactTwins : public ::testing::TestWithParam<Twins> {};

// Compact RINEX is another way to write the same numbers, so every one of them must agree, to the bit.
TEST_P(CompactTwins, AgreeValueByValue) {
    const FileBytes compactFile = ReadSpecimen(GetParam().compact);
    const FileBytes plainFile = ReadSpecimen(GetParam().plain);
    const Observations compact = ReadObservations(compactFile.bytes, compactFile.name);
    const Observations plain = ReadObservations(plainFile.bytes, plainFile.name);
    ASSERT_TRUE(compact.compact);
    ASSERT_FALSE(plain.compact);
    EXPECT_EQ(compact.station(), plain.station());
    ASSERT_EQ(compact.epochs.size(), plain.epochs.size());
    for (std::size_t e = 0; e < plain.epochs.size(); ++e) {
        const ObservationEpoch& a = compact.epochs[e];
        const ObservationEpoch& b = plain.epochs[e];
        EXPECT_EQ(a.time, b.time);
        EXPECT_TRUE(a.receiverClockOffset == b.receiverClockOffset ||
                    (std::isnan(a.receiverClockOffset) && std::isnan(b.receiverClockOffset)))
            << "epoch " << e;
        EXPECT_EQ(a.powerFailure, b.powerFailure);
        ASSERT_EQ(a.satelliteCount, b.satelliteCount) << "epoch " << e;
    }
    ASSERT_EQ(compact.satellites.size(), plain.satellites.size());
    for (std::size_t i = 0; i < plain.satellites.size(); ++i) {
        ASSERT_EQ(compact.satellites[i].satellite, plain.satellites[i].satellite) << "row " << i;
    }
    ASSERT_GT(plain.values.size(), 0U);
    ASSERT_EQ(compact.values.size(), plain.values.size());
    for (std::size_t i = 0; i < plain.values.size(); ++i) {
        const bool same = compact.values[i] == plain.values[i] ||
                          (std::isnan(compact.values[i]) && std::isnan(plain.values[i]));
        ASSERT_TRUE(same) << "value " << i << ": " << compact.values[i] << ' ' << plain.values[i];
    }
    EXPECT_EQ(compact.lossOfLock, plain.lossOfLock);
    EXPECT_EQ(compact.signalStrength, plain.signalStrength);
}

INSTANTIATE_TEST_SUITE_P(
    Files, CompactTwins,
    ::testing::Values(Twins{"KOSG0010.95D", "KOSG0010.95O"}, Twins{"VLNS0010.22D", "VLNS0010.22O"},
                      Twins{"aopr0010.17d", "aopr0010.17o"}, Twins{"delf0010.21d", "delf0010.21o"},
                      Twins{"wsra0010.21d", "wsra0010.21o"}, Twins{"zegv0010.21d", "zegv0010.21o"},
                      Twins{"algo0010_2015001_v1_trim.crx", "algo0010_2015001_v1_trim.rnx"},
                      Twins{"ESBC00DNK_R_20201770000_01D_30S_MO_trim.crx",
                            "ESBC00DNK_R_20201770000_01D_30S_MO_trim.rnx"}));

Observations Read(const char* name) {
    const FileBytes file = ReadSpecimen(name);
    return ReadObservations(file.bytes, file.name);
}

TEST(ObservationSpecimens, HeaderOfVersion2) {
    const Observations data = Read("wsra0010.21o");
    const StationHeader& station = data.station();
    EXPECT_EQ(station.markerNumber, "13506M005");
    EXPECT_EQ(station.observer, "H. VAN DER MAREL");
    EXPECT_EQ(station.agency, "AGRS.NL (KAD,MD,TUD)");
    EXPECT_EQ(station.receiverSerial, "5302K41643");
    EXPECT_EQ(station.receiverType, "TRIMBLE NETR9");
    EXPECT_EQ(station.receiverVersion, "5.45");
    EXPECT_EQ(station.antennaSerial, "273");
    ASSERT_TRUE(station.approximatePosition.has_value());
    EXPECT_EQ(*station.approximatePosition,
              (std::array<double, 3>{3828736.1370, 443304.7380, 5064884.5080}));
    EXPECT_EQ(station.leapSeconds, 18);
    EXPECT_FALSE(station.interval.has_value());
    ASSERT_TRUE(station.firstEpoch.has_value());
    EXPECT_EQ(FormatTime(*station.firstEpoch, 0), "2021-01-01 00:00:00");
}

TEST(ObservationSpecimens, HeaderOfVersion3) {
    const Observations data = Read("LARM0630.22O");
    const StationHeader& station = data.station();
    EXPECT_EQ(station.observer, "Dr. Christos Pikrida");
    EXPECT_EQ(station.agency, "Department of Geodesy and Surveying");
    EXPECT_EQ(station.interval, 30.0);
    EXPECT_EQ(station.timeSystem, TimeSystem::kGps);
    ASSERT_EQ(station.glonassChannels.size(), 24U);
    EXPECT_EQ(station.glonassChannels[1], (std::pair<int, int>{2, -4}));
    EXPECT_EQ(station.glonassChannels[16], (std::pair<int, int>{17, 4}));
    // Sixteen types of GPS on two lines, twelve of GLONASS.
    EXPECT_EQ(data.signalTables[0][0].size(), 16U);
    EXPECT_EQ(data.signalTables[0][0].back().fileName, "S5Q");
    EXPECT_EQ(data.signalTables[0][1].size(), 12U);
}

TEST(ObservationSpecimens, ShiftedColumnsOfAHeaderAreReadByWords) {
    const StationHeader station = Read("demo.10o").station();
    ASSERT_TRUE(station.approximatePosition.has_value());
    EXPECT_EQ(*station.approximatePosition,
              (std::array<double, 3>{4789028.4701, 176610.0133, 4195017.0310}));
    EXPECT_TRUE(station.clockOffsetApplied);
    const auto channels = Read("demo3.10o").station().glonassChannels;
    EXPECT_EQ(channels, (std::vector<std::pair<int, int>>{{11, -5}, {19, 3}, {23, -6}}));
}

TEST(ObservationSpecimens, ValuesOfVersion2) {
    const Observations data = Read("ac660270.18o.Z");
    EXPECT_EQ(ValueOf(data, 0, Gps(30), "L1C"), 108545202.739);
    EXPECT_EQ(FlagsOf(data, 0, Gps(30), "L1C"), 18);
    EXPECT_EQ(ValueOf(data, 0, Gps(30), "L2W"), 84580700.796);
    EXPECT_EQ(FlagsOf(data, 0, Gps(30), "L2W"), 57);
    EXPECT_EQ(ValueOf(data, 0, Gps(30), "C1C"), 20655465.500);
    EXPECT_EQ(ValueOf(data, 0, Gps(30), "C2W"), 20655471.500);
    EXPECT_TRUE(std::isnan(ValueOf(data, 0, Gps(30), "C1W")));
    EXPECT_EQ(ValueOf(data, 0, Gps(30), "S2W"), 44.7);
    EXPECT_EQ(ValueOf(data, 0, Glonass(23), "C1P"), 23153965.582);
    // The 16th satellite is named on the second line of the list.
    EXPECT_FALSE(std::isnan(ValueOf(data, 0, Gps(20), "C1C")));
}

TEST(ObservationSpecimens, TwentyTypesOnFourLines) {
    const Observations data = Read("ab430140.18o.zip");
    EXPECT_EQ(ValueOf(data, 0, Gps(23), "S2W"), 32.25);
    EXPECT_EQ(ValueOf(data, 0, Galileo(11), "L7X"), 111042667.091);
    EXPECT_EQ(ValueOf(data, 0, Galileo(11), "S8X"), 40.75);
    EXPECT_EQ(ValueOf(data, 0, Gps(30), "L5X"), 85442126.205);
    EXPECT_EQ(ValueOf(data, 0, Gps(30), "S5X"), 52.0);
}

TEST(ObservationSpecimens, ABareVersion2AndBlankSystemLetters) {
    const Observations data = Read("KOSG0010.95D");
    EXPECT_EQ(ValueOf(data, 0, Gps(6), "L1C"), 21700656.314);
    EXPECT_EQ(FlagsOf(data, 0, Gps(6), "L1C"), 47);
    EXPECT_TRUE(std::isnan(ValueOf(data, 0, Gps(6), "C1W")));  // written as 0.000
    EXPECT_EQ(ValueOf(data, 0, Gps(6), "C2W"), 24479973.678);
    EXPECT_EQ(ValueOf(data, 2, Gps(1), "C1C"), 24983347.061);
}

TEST(ObservationSpecimens, ReceiverClockOffsets) {
    const Observations data = Read("rinex2onesat.10o");
    EXPECT_EQ(data.epochs[0].receiverClockOffset, -0.12345);
    EXPECT_EQ(Read("demo3.10o").epochs[1].receiverClockOffset, -0.123456789012);
    EXPECT_EQ(Read("VLNS0010.22D").epochs[0].receiverClockOffset, 0.0);
    EXPECT_TRUE(std::isnan(Read("LARM0630.22O").epochs[0].receiverClockOffset));
}

// Event 2 before the first epoch, event 3 (a new site occupation) before the second.
TEST(ObservationSpecimens, AnAntennaOnItsWayUntilTheOccupationBegins) {
    const Observations data = Read("14601736.18o");
    ASSERT_EQ(data.epochs.size(), 3U);
    EXPECT_TRUE(data.epochs[0].moving);
    EXPECT_FALSE(data.epochs[1].moving);
    EXPECT_FALSE(data.epochs[2].moving);
    EXPECT_EQ(ValueOf(data, 0, Galileo(7), "C1X"), 25808828.891);
    EXPECT_EQ(ValueOf(data, 0, Gps(3), "C2X"), 22719529.445);
    EXPECT_EQ(ValueOf(data, 0, Gps(3), "L2W"), 93032650.953);  // the file has P2, though not of G03
}

TEST(ObservationSpecimens, Version302CallsB1IBandOne) {
    const Observations data = Read("ABMF00GLP_R_20181330000_01D_30S_MO.zip");
    EXPECT_EQ(ToString(data.signalTables[0][3][0].code), "C2I");
    EXPECT_EQ(data.signalTables[0][3][0].fileName, "C1I");
    EXPECT_EQ(ValueOf(data, 0, Gps(6), "L5Q"), 86492157.045);
    EXPECT_EQ(FlagsOf(data, 0, Gps(6), "L5Q"), 18);
    // G17 has code without phase.
    EXPECT_EQ(ValueOf(data, 0, Gps(17), "C2W"), 21648195.753);
    EXPECT_TRUE(std::isnan(ValueOf(data, 0, Gps(17), "L2W")));
    ASSERT_EQ(data.epochs[1].satelliteCount, 1U);
    EXPECT_EQ(ValueOf(data, 1, {GnssSystem::kSbas, 38}, "C1C"), 38189868.976);
}

// Decoded by hand from the differences, with an independent script.
TEST(ObservationSpecimens, CompactFilesWithoutATwin) {
    const Observations kms = Read("KMS300DNK_R_20221591000_01H_30S_MO.crx");
    EXPECT_EQ(ValueOf(kms, 0, Gps(16), "C1C"), 21283970.456);
    EXPECT_EQ(ValueOf(kms, 9, Gps(23), "L5Q"), 94910211.292);
    EXPECT_EQ(ValueOf(kms, 18, Gps(23), "L5Q"), 94187522.494);
    EXPECT_EQ(ValueOf(kms, 18, Glonass(10), "L1P"), 130323318.576);
    EXPECT_EQ(ValueOf(kms, 9, Galileo(3), "C7Q"), 29145872.632);
    EXPECT_TRUE(std::isnan(ValueOf(kms, 9, Galileo(3), "C1C")));
    const Observations p433 = Read("P43300USA_R_20190012056_17M_15S_MO.crx");
    EXPECT_EQ(ValueOf(p433, 69, Galileo(3), "S8Q"), 56.0);
    EXPECT_EQ(ValueOf(p433, 69, Glonass(10), "L2C"), 86019399.093);
    EXPECT_EQ(ValueOf(p433, 69, Gps(16), "L2W"), 90056594.432);
    EXPECT_EQ(ValueOf(p433, 0, Gps(23), "C1W"), 21583177.431);
}

}  // namespace
}  // namespace vornel::io
