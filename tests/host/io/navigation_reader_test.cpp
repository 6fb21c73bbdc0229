// Navigation: what each specimen must give (records were counted in the texts), and numbers of some
// records of each message as they stand in the texts.
#include <gtest/gtest.h>

#include "io/navigation.h"
#include "specimens.h"

namespace vornel::io {
namespace {

Navigation Read(const std::string& name) {
    const FileBytes file = ReadSpecimen(name);
    return ReadNavigation(file.bytes, file.name);
}

struct Expected {
    const char* file;
    double version;
    std::size_t kepler;
    std::size_t glonass;
    std::size_t ionosphere;
    int leapSeconds;  // -1 when the header has none
    std::size_t dropped;
    std::map<std::string, std::size_t> leftAside;
};

class NavigationSpecimen : public ::testing::TestWithParam<Expected> {};

TEST_P(NavigationSpecimen, IsReadWhole) {
    const Expected& expected = GetParam();
    const Navigation data = Read(expected.file);
    EXPECT_NEAR(data.version, expected.version, 1e-9);
    EXPECT_EQ(data.kepler.size(), expected.kepler);
    EXPECT_EQ(data.glonass.size(), expected.glonass);
    EXPECT_EQ(data.ionosphere.size(), expected.ionosphere);
    EXPECT_EQ(data.leapSeconds.value_or(-1), expected.leapSeconds);
    EXPECT_EQ(data.droppedCount, expected.dropped);
    EXPECT_EQ(data.leftAside, expected.leftAside);
}

INSTANTIATE_TEST_SUITE_P(
    Files, NavigationSpecimen,
    ::testing::Values(Expected{"14601736.18n", 2.11, 7, 0, 1, 18, 0, {}},
                      Expected{"brdc2420.18n.gz", 2.11, 44, 0, 1, -1, 0, {}},
                      Expected{"demo.10n", 2.11, 2, 0, 1, 15, 0, {}},
                      Expected{"amel0010.21g", 2.11, 0, 6, 0, 18, 0, {}},
                      Expected{"dlf10010.21g", 2.11, 0, 7, 0, -1, 0, {}},
                      Expected{"p1462100.18g", 2.11, 0, 154, 0, -1, 0, {}},
                      Expected{"AMEL00NLD_R_20210010000_01D_MN.rnx", 3.04, 4, 2, 3, 18, 0, {}},
                      Expected{"BRDC00IGS_R_20201360000_01D_MN.rnx", 3.04, 4, 0, 2, 18, 0, {}},
                      Expected{"BRDM00DLR_R_20130010000_01D_MN.rnx", 3.02, 6, 4, 0, 16, 0, {}},
                      Expected{"demo_nav3.17n", 3.02, 4, 0, 1, 18, 0, {}},
                      // The third record has a blank within a number.
                      Expected{"galileo3.15n", 3.03, 2, 0, 1, 16, 1, {}},
                      Expected{"qzss_nav3.14n", 3.03, 1, 0, 0, 16, 0, {}},
                      Expected{"spare_filled_nav3.rnx", 3.03, 6, 1, 2, 18, 0, {}},
                      Expected{"KMS300DNK_R_20221591000_01H_MN.rnx.gz",
                               4.0,
                               175,
                               24,
                               3,
                               18,
                               0,
                               {{"SBAS", 158}, {"STO", 3}}},
                      Expected{"valid-v4-cnav.rnx", 4.02, 4, 0, 0, -1, 0, {}},
                      Expected{
                          "BRD400DLR_S_20261800000_01H_MN_trim.rnx", 4.02, 8, 0, 0, 18, 0, {}}));

TEST(Navigation, GpsOfVersion2) {
    const KeplerRecord record = Read("14601736.18n").kepler.at(0);
    EXPECT_EQ(record.satellite, Gps(30));
    EXPECT_EQ(record.message, NavigationMessage::kLnav);
    EXPECT_EQ(record.line, 9U);
    // 22 June 2018 is a Friday: 5 days and 8 h into week 2006.
    EXPECT_EQ(record.tocWeek, 2006);
    EXPECT_EQ(record.tocSeconds, 460800.0);
    EXPECT_EQ(record.af0, 0.595785677433e-04);
    EXPECT_EQ(record.af1, -0.454747350886e-11);
    EXPECT_EQ(record.af2, 0.0);
    EXPECT_EQ(record.iode, 34.0);
    EXPECT_EQ(record.crs, 84.59375);
    EXPECT_EQ(record.deltaN, 0.514878589617e-08);
    EXPECT_EQ(record.m0, 1.03134147416);
    EXPECT_EQ(record.cuc, 0.450387597084e-05);
    EXPECT_EQ(record.eccentricity, 0.350453378633e-02);
    EXPECT_EQ(record.cus, 0.590831041336e-05);
    EXPECT_EQ(record.sqrtA, 5153.72648239);
    EXPECT_EQ(record.toeWeek, 2006);
    EXPECT_EQ(record.toeSeconds, 460800.0);
    EXPECT_EQ(record.cic, 0.260770320892e-07);
    EXPECT_EQ(record.omega0, 0.0612411272131);
    EXPECT_EQ(record.cis, -0.707805156708e-07);
    EXPECT_EQ(record.i0, 0.944270389475);
    EXPECT_EQ(record.crc, 251.90625);
    EXPECT_EQ(record.omega, -3.05065239196);
    EXPECT_EQ(record.omegaDot, -0.851714048737e-08);
    EXPECT_EQ(record.idot, 0.503592405216e-10);
    EXPECT_EQ(record.codesOnL2, 1);
    EXPECT_EQ(record.l2PFlag, 0);
    EXPECT_EQ(record.accuracy, 2.4);
    EXPECT_EQ(record.health, 0);
    EXPECT_EQ(record.groupDelay1, 0.372529029846e-08);
    EXPECT_EQ(record.iodc, 34.0);
    EXPECT_EQ(record.transmitTime, 454116.0);
    EXPECT_EQ(record.fitInterval, 4.0);
    EXPECT_FALSE(record.hasRates);
}

TEST(Navigation, YearsOfTwoDigitsInTheLastCentury) {
    const KeplerRecord record = Read("demo.10n").kepler.at(0);
    EXPECT_EQ(record.satellite, Gps(6));
    EXPECT_EQ(FormatTime({record.tocWeek, record.tocSeconds}, 0), "1999-09-02 19:00:00");
    EXPECT_EQ(record.toeSeconds, 409904.0);
    EXPECT_EQ(record.af0, -0.839701388031e-03);
}

TEST(Navigation, GlonassOfVersion2) {
    const GlonassRecord record = Read("amel0010.21g").glonass.at(1);
    EXPECT_EQ(record.slot, 2);
    EXPECT_EQ(FormatTime({record.referenceWeek, record.referenceSeconds}, 0),
              "2021-01-01 11:45:00");
    EXPECT_EQ(record.leapSeconds, 18);
    EXPECT_EQ(record.clockBias, 4.610531032090e-04);
    EXPECT_EQ(record.clockDrift, 1.818989403550e-12);
    EXPECT_EQ(record.messageFrameTime, 42450.0);
    EXPECT_EQ(record.position,
              (std::array<double, 3>{-8955.041992190, -18348.75292970, 15366.20703130}));
    EXPECT_EQ(record.velocity,
              (std::array<double, 3>{1.436877250670, 1.530306816100, 2.664767265320}));
    EXPECT_EQ(record.acceleration, (std::array<double, 3>{-4.656612873080e-09, -9.313225746150e-10,
                                                          9.313225746150e-10}));
    EXPECT_EQ(record.health, 0);
    EXPECT_EQ(record.channel, -4);
    EXPECT_EQ(record.age, 0.0);
    EXPECT_EQ(record.line, 12U);
}

TEST(Navigation, BeiDouWeeksCountFromTheGpsOrigin) {
    const Navigation data = Read("AMEL00NLD_R_20210010000_01D_MN.rnx");
    const KeplerRecord& geostationary = data.kepler.at(0);
    EXPECT_EQ(geostationary.satellite, BeiDou(5));
    EXPECT_EQ(geostationary.message, NavigationMessage::kD2);
    // BDT week 782 of the text is week 2138; 1 January 2021 is a Friday.
    EXPECT_EQ(geostationary.tocWeek, 2138);
    EXPECT_EQ(geostationary.tocSeconds, 432000.0);
    EXPECT_EQ(geostationary.toeWeek, 2138);
    EXPECT_EQ(geostationary.groupDelay1, -0.599999994133e-09);
    EXPECT_EQ(geostationary.groupDelay2, -0.9e-08);
    const KeplerRecord& medium = data.kepler.at(1);
    EXPECT_EQ(medium.satellite, BeiDou(21));
    EXPECT_EQ(medium.message, NavigationMessage::kD1);
    EXPECT_EQ(medium.iodc, 1.0);
    EXPECT_EQ(medium.transmitTime, 450000.0);
}

TEST(Navigation, GalileoTellsTheMessageByItsDataSources) {
    const Navigation data = Read("BRDC00IGS_R_20201360000_01D_MN.rnx");
    const std::vector<std::pair<int, NavigationMessage>> expected = {
        {258, NavigationMessage::kFnav},
        {513, NavigationMessage::kInav},
        {516, NavigationMessage::kInav},
        {517, NavigationMessage::kInav}};
    ASSERT_EQ(data.kepler.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(data.kepler[i].dataSources, expected[i].first);
        EXPECT_EQ(data.kepler[i].message, expected[i].second);
    }
    EXPECT_EQ(data.kepler[1].groupDelay1, 4.540197551250e-08);
    EXPECT_EQ(data.kepler[1].groupDelay2, 5.098991096020e-08);
}

TEST(Navigation, IonosphereInTheOrderOfTheHeader) {
    const auto sets = Read("AMEL00NLD_R_20210010000_01D_MN.rnx").ionosphere;
    ASSERT_EQ(sets.size(), 3U);
    EXPECT_EQ(sets[0].system, GnssSystem::kGalileo);
    EXPECT_EQ(sets[0].model, IonosphereModel::kNequick);
    EXPECT_EQ(sets[0].alpha, (std::array<double, 4>{66.25, -0.1641, -0.002472, 0.0}));
    EXPECT_EQ(sets[1].system, GnssSystem::kGps);
    EXPECT_EQ(sets[1].model, IonosphereModel::kKlobuchar);
    EXPECT_TRUE(sets[1].hasAlpha && sets[1].hasBeta);
    EXPECT_EQ(sets[1].alpha, (std::array<double, 4>{7.451e-09, -1.49e-08, -5.96e-08, 1.192e-07}));
    EXPECT_EQ(sets[1].beta, (std::array<double, 4>{90110.0, -65540.0, -131100.0, 458800.0}));
    EXPECT_EQ(sets[2].system, GnssSystem::kQzss);
}

TEST(Navigation, IonosphereOfVersion2) {
    const auto sets = Read("14601736.18n").ionosphere;
    ASSERT_EQ(sets.size(), 1U);
    EXPECT_EQ(sets[0].alpha,
              (std::array<double, 4>{0.4657e-08, 0.1490e-07, -0.5960e-07, -0.1192e-06}));
    EXPECT_EQ(sets[0].beta, (std::array<double, 4>{81920.0, 98300.0, -65540.0, -524300.0}));
}

TEST(Navigation, IonosphereOfVersion4) {
    const auto sets = Read("KMS300DNK_R_20221591000_01H_MN.rnx.gz").ionosphere;
    ASSERT_EQ(sets.size(), 3U);
    for (const IonosphereSet& set : sets) {
        if (set.system == GnssSystem::kGps) {
            EXPECT_EQ(set.alpha, (std::array<double, 4>{1.024454832077e-08, 2.235174179077e-08,
                                                        -5.960464477539e-08, -1.192092895508e-07}));
            EXPECT_EQ(set.beta, (std::array<double, 4>{96256.0, 131072.0, -65536.0, -589824.0}));
            EXPECT_EQ(FormatTime(set.transmitTime.value(), 0), "2022-06-08 09:59:48");
        } else if (set.system == GnssSystem::kGalileo) {
            EXPECT_EQ(set.model, IonosphereModel::kNequick);
            EXPECT_EQ(set.alpha, (std::array<double, 4>{78.5, 0.5390625, 0.02713012695312, 0.0}));
        } else {
            EXPECT_EQ(set.system, GnssSystem::kBeiDou);
            EXPECT_EQ(set.alpha[3], 1.549720764160e-06);
            EXPECT_EQ(set.beta[0], 120832.0);
        }
    }
}

TEST(Navigation, MessagesOfVersion4AreCounted) {
    const Navigation data = Read("KMS300DNK_R_20221591000_01H_MN.rnx.gz");
    std::map<std::string, int> counts;
    for (const KeplerRecord& record : data.kepler) {
        ++counts[MessageName(record.message)];
    }
    EXPECT_EQ(counts, (std::map<std::string, int>{
                          {"LNAV", 31}, {"INAV", 55}, {"FNAV", 53}, {"D1", 33}, {"D2", 3}}));
}

TEST(Navigation, CnavOfGps) {
    const KeplerRecord record = Read("BRD400DLR_S_20261800000_01H_MN_trim.rnx").kepler.at(1);
    EXPECT_EQ(record.satellite, Gps(1));
    EXPECT_EQ(record.message, NavigationMessage::kCnav);
    EXPECT_TRUE(record.hasRates);
    EXPECT_EQ(record.aDot, 2.273559570312e-03);
    EXPECT_EQ(record.deltaNDot, -2.846972661500e-14);
    EXPECT_EQ(record.sqrtA, 5153.605301108);
    EXPECT_EQ(record.idot, 2.317953694933e-10);
    // Monday 29 June 2026, 01:30. The 603900 s of the fourth line are the time of prediction.
    EXPECT_EQ(record.tocSeconds, 91800.0);
    EXPECT_EQ(record.toeSeconds, 91800.0);
    EXPECT_EQ(record.toeWeek, record.tocWeek);
    EXPECT_EQ(record.health, 1);
    EXPECT_EQ(record.groupDelay1, -8.847564458847e-09);
    EXPECT_EQ(record.transmitTime, 86418.0);
}

TEST(Navigation, Cnv2OfBeiDou) {
    const KeplerRecord record = Read("BRD400DLR_S_20261800000_01H_MN_trim.rnx").kepler.at(7);
    EXPECT_EQ(record.satellite, BeiDou(19));
    EXPECT_EQ(record.message, NavigationMessage::kCnv2);
    EXPECT_EQ(record.aDot, -6.557941436768e-03);
    EXPECT_EQ(record.toeSeconds, 86400.0);
    EXPECT_EQ(record.tocSeconds, 86400.0);
    EXPECT_EQ(record.groupDelay1, 9.487848728895e-09);
    EXPECT_EQ(record.groupDelay2, 1.222360879183e-09);
    EXPECT_EQ(record.health, 0);
    EXPECT_EQ(record.iodc, 24.0);
    EXPECT_EQ(record.iode, 24.0);
    EXPECT_EQ(record.transmitTime, 86400.0);
}

TEST(Navigation, ADamagedRecordIsDroppedAndTheOthersStay) {
    const Navigation data = Read("galileo3.15n");
    ASSERT_EQ(data.dropped.size(), 1U);
    EXPECT_EQ(data.dropped[0].line, 29U);
    EXPECT_EQ(data.dropped[0].text, "'. 000000000000D+00' is not a number");
    EXPECT_EQ(data.kepler.size(), 2U);
}

std::string Line(std::string text, const std::string& label) {
    text.resize(60, ' ');
    return text + label + '\n';
}

// A GPS record with a given clock reference and seconds of the orbit reference.
std::string Record(const std::string& satelliteAndToc, const std::string& toe) {
    return satelliteAndToc + " 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n" +
           "     1.000000000000e+00 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n" +
           "     0.000000000000e+00 1.000000000000e-02 0.000000000000e+00 5.153000000000e+03\n" +
           "     " + toe + " 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n" +
           "     9.000000000000e-01 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n" +
           "     0.000000000000e+00 1.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n" +
           "     2.000000000000e+00 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n" +
           "     0.000000000000e+00\n";
}

Navigation ReadRecords(const std::string& records) {
    return ReadNavigation(
        Line("     3.04           N: GNSS NAV DATA    M", "RINEX VERSION / TYPE") +
            Line("", "END OF HEADER") + records,
        "made");
}

// Around the turn of the week the orbit reference belongs to the week nearer to the clock reference.
TEST(Navigation, TheWeekOfTheOrbitReference) {
    // Saturday 27 June 2020, 23:59:44 is second 604784 of week 2111.
    const KeplerRecord next =
        ReadRecords(Record("G01 2020 06 27 23 59 44", "0.000000000000e+00")).kepler.at(0);
    EXPECT_EQ(next.tocWeek, 2111);
    EXPECT_EQ(next.toeWeek, 2112);
    const KeplerRecord before =
        ReadRecords(Record("G01 2020 06 28 00 00 00", "6.047840000000e+05")).kepler.at(0);
    EXPECT_EQ(before.tocWeek, 2112);
    EXPECT_EQ(before.toeWeek, 2111);
    const KeplerRecord end =
        ReadRecords(Record("G01 2020 06 28 00 00 00", "6.048000000000e+05")).kepler.at(0);
    EXPECT_EQ(end.toeWeek, 2112);
    EXPECT_EQ(end.toeSeconds, 0.0);
}

TEST(Navigation, OtherSystemsAreCounted) {
    const std::string sbas =
        "S20 2020 06 27 00 00 00 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n"
        "     1.000000000000e+00\n     1.000000000000e+00\n     1.000000000000e+00\n";
    const Navigation data =
        ReadRecords(sbas + Record("I01 2020 06 27 00 00 00", "0.000000000000e+00") +
                    Record("J01 2020 06 27 00 00 00", "5.184000000000e+05") + sbas);
    EXPECT_EQ(data.leftAside, (std::map<std::string, std::size_t>{{"SBAS", 2}, {"NavIC", 1}}));
    ASSERT_EQ(data.kepler.size(), 1U);
    EXPECT_EQ(data.kepler[0].satellite.system, GnssSystem::kQzss);
}

TEST(Navigation, AShortRecordInMidFileIsDropped) {
    const std::string whole = Record("G01 2020 06 27 00 00 00", "5.184000000000e+05");
    const std::string lines5 =
        whole.substr(0, whole.find("     0.000000000000e+00 1.000000000000e+00"));
    const Navigation data = ReadRecords(lines5 + whole);
    EXPECT_EQ(data.kepler.size(), 1U);
    ASSERT_EQ(data.dropped.size(), 1U);
    EXPECT_EQ(data.dropped[0].line, 7U);
    EXPECT_EQ(data.dropped[0].text, "the record of G01 has 5 of 8 lines");
}

TEST(Navigation, GlonassOf305HasAFifthLine) {
    const std::string lines =
        "R01 2020 06 27 00 15 00 1.000000000000e-05 0.000000000000e+00 5.184000000000e+05\n"
        "     1.000000000000e+04 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n"
        "     1.500000000000e+04 0.000000000000e+00 0.000000000000e+00-7.000000000000e+00\n"
        "     1.800000000000e+04 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n";
    const std::string fifth = "     1.790000000000e+02 8.381903171539e-09 2.000000000000e+00\n";
    const std::string header =
        Line("     3.05           N: GNSS NAV DATA    M", "RINEX VERSION / TYPE") +
        Line("", "END OF HEADER");
    const Navigation data = ReadNavigation(header + lines + fifth + lines, "made");
    ASSERT_EQ(data.glonass.size(), 2U);
    EXPECT_EQ(data.glonass[0].channel, -7);
    EXPECT_EQ(data.glonass[1].position[2], 18000.0);
}

TEST(Navigation, AChannelThatCannotBeDropsTheRecord) {
    const std::string lines =
        "R01 2020 06 27 00 15 00 1.000000000000e-05 0.000000000000e+00 5.184000000000e+05\n"
        "     1.000000000000e+04 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n"
        "     1.500000000000e+04 0.000000000000e+00 0.000000000000e+00 1.400000000000e+01\n"
        "     1.800000000000e+04 0.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n";
    const Navigation data =
        ReadRecords(lines + Record("G01 2020 06 27 00 00 00", "5.184000000000e+05"));
    ASSERT_EQ(data.dropped.size(), 1U);
    EXPECT_EQ(data.dropped[0].text, "the frequency channel 14 is none from -7 to 13");
}

}  // namespace
}  // namespace vornel::io
