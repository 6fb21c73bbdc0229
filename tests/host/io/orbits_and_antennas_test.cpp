// SP3 and ANTEX: specimens, and the rules of units, absence and time on small texts.
#include <gtest/gtest.h>

#include <cmath>

#include "io/antennas.h"
#include "io/precise_orbits.h"
#include "specimens.h"

namespace vornel::io {
namespace {

PreciseOrbits ReadOrbits(const std::string& name) {
    const FileBytes file = ReadSpecimen(name);
    return ReadPreciseOrbits(file.bytes, file.name);
}

const OrbitSeries& SeriesOf(const PreciseOrbits& orbits, SatelliteId satellite) {
    for (const OrbitSeries& series : orbits.satellites) {
        if (series.satellite == satellite) {
            return series;
        }
    }
    throw std::out_of_range(ToString(satellite));
}

TEST(PreciseOrbits, VersionD) {
    const PreciseOrbits orbits = ReadOrbits("Sta21114.sp3.gz");
    EXPECT_EQ(orbits.version, 'd');
    EXPECT_EQ(orbits.interval, 900.0);
    EXPECT_EQ(orbits.coordinateSystem, "IGS14");
    EXPECT_EQ(orbits.agency, "IAC");
    ASSERT_EQ(orbits.epochs.size(), 97U);
    EXPECT_EQ(orbits.satellites.size(), 121U);
    EXPECT_EQ(FormatTime(orbits.epochs.front(), 0), "2020-06-25 00:00:00");
    EXPECT_EQ(FormatTime(orbits.epochs.back(), 0), "2020-06-26 00:00:00");
    const OrbitPoint& first = SeriesOf(orbits, BeiDou(1)).points.at(0);
    EXPECT_NEAR(first.position[0], -34346145.771, 1e-6);
    EXPECT_NEAR(first.position[1], 24493239.073, 1e-6);
    EXPECT_NEAR(first.position[2], 626704.364, 1e-6);
    EXPECT_NEAR(first.clock, -387.166264e-6, 1e-18);
    const OrbitPoint& last = SeriesOf(orbits, Glonass(26)).points.back();
    EXPECT_EQ(last.epoch, 96U);
    EXPECT_NEAR(last.position[2], 21500325.395, 1e-6);
}

// Version letter and EOF are missing, but every announced epoch is there.
TEST(PreciseOrbits, AnOldFileWithoutVersionLetterAndEof) {
    const PreciseOrbits orbits = ReadOrbits("sio06492.sp3");
    EXPECT_EQ(orbits.version, 'a');
    EXPECT_EQ(orbits.epochs.size(), 148U);
    EXPECT_EQ(orbits.satellites.size(), 17U);
    EXPECT_EQ(FormatTime(orbits.epochs.front(), 0), "1992-06-15 08:37:29");
    const OrbitPoint& first = SeriesOf(orbits, Gps(2)).points.at(0);
    EXPECT_NEAR(first.position[0], -9453958.236, 1e-6);
    EXPECT_TRUE(std::isnan(first.clock));
    ASSERT_EQ(orbits.notes.size(), 2U);
    EXPECT_EQ(orbits.notes[0].text, "no version letter; read as version a");
    EXPECT_EQ(orbits.notes[1].text, "the EOF line is missing");
}

std::string OrbitText(const std::string& timeSystem, const std::string& records) {
    return "#cP2020  6 25  0  0  0.00000000       1 d+D   IGb14 FIT AIUB\n"
           "## 2111 345600.00000000   300.00000000 59025 0.0000000000000\n"
           "%c M  cc " +
           timeSystem +
           " ccc cccc cccc cccc cccc ccccc ccccc ccccc ccccc\n"
           "*  2020  6 25  0  0  0.00000000\n" +
           records + "EOF\n";
}

TEST(PreciseOrbits, MissingPositionsAndClocksAreAbsent) {
    const PreciseOrbits orbits = ReadPreciseOrbits(
        OrbitText("GPS",
                  "PG01      0.000000      0.000000      0.000000     15.944433\n"
                  "PG02 -10814.532184      0.000000 -14065.684957 999999.999999\n"
                  "PG03 -10814.532184  19731.805028 -14065.684957\n"
                  "VG03 -10814.532184  19731.805028 -14065.684957     15.944433\n"
                  "PL51 -10814.532184  19731.805028 -14065.684957     15.944433\n"),
        "made");
    ASSERT_EQ(orbits.satellites.size(), 3U);
    EXPECT_TRUE(std::isnan(orbits.satellites[0].points[0].position[0]));
    EXPECT_NEAR(orbits.satellites[0].points[0].clock, 15.944433e-6, 1e-18);
    EXPECT_EQ(orbits.satellites[1].points[0].position[1], 0.0);
    EXPECT_TRUE(std::isnan(orbits.satellites[1].points[0].clock));
    EXPECT_TRUE(std::isnan(orbits.satellites[2].points[0].clock));
}

TEST(PreciseOrbits, OtherTimeSystemsBecomeGpsTime) {
    const auto epochIn = [](const char* system) {
        const PreciseOrbits orbits = ReadPreciseOrbits(
            OrbitText(system, "PG01 -10814.532184  19731.805028 -14065.684957     15.944433\n"),
            "made");
        return FormatTime(orbits.epochs.at(0), 0);
    };
    EXPECT_EQ(epochIn("GPS"), "2020-06-25 00:00:00");
    EXPECT_EQ(epochIn("ccc"), "2020-06-25 00:00:00");
    EXPECT_EQ(epochIn("UTC"), "2020-06-25 00:00:18");
    EXPECT_EQ(epochIn("TAI"), "2020-06-24 23:59:41");
    EXPECT_EQ(epochIn("BDT"), "2020-06-25 00:00:14");
}

std::string Line(std::string text, const std::string& label) {
    text.resize(60, ' ');
    return text + label + '\n';
}

std::string Frequency(const std::string& code, const std::string& offsets) {
    return Line("   " + code, "START OF FREQUENCY") + Line(offsets, "NORTH / EAST / UP") +
           "   NOAZI    0.00   -0.23   -0.90   -1.93   -3.20   -4.60   -6.00   -7.20   -8.10\n" +
           Line("   " + code, "END OF FREQUENCY");
}

std::string Antenna(const std::string& type, const std::string& body) {
    return Line("", "START OF ANTENNA") + Line(type, "TYPE / SERIAL NO") +
           Line("ROBOT               Geo++ GmbH               2    12-JUL-06",
                "METH / BY / # / DATE") +
           body + Line("", "END OF ANTENNA");
}

std::string AntennaText() {
    return Line("     1.4            M", "ANTEX VERSION / SYST") + Line("A", "PCV TYPE / REFANT") +
           Line("", "END OF HEADER") +
           Antenna("BLOCK IIA           G01                 G032      1992-079A",
                   Line("  1992    11    22     0     0    0.0000000", "VALID FROM") +
                       Line("  2008    10    16    23    59   59.9999999", "VALID UNTIL") +
                       Frequency("G01", "    279.00      0.00   2289.00")) +
           Antenna("LEIAR20         LEIM",
                   Frequency("G01", "      0.70      0.39    117.01") +
                       Frequency("G02", "     -0.21     -0.13    118.48") +
                       Line("   G01", "START OF FREQ RMS") +
                       Line("      0.10      0.10      0.10", "NORTH / EAST / UP") +
                       Line("   G01", "END OF FREQ RMS")) +
           Antenna("LEIAR20         LEIM25299035",
                   Frequency("G01", "      1.00      2.00    120.00")) +
           Antenna("TRM55971.00", Frequency("G01", "      1.29     -0.19     66.73"));
}

TEST(Antennas, OffsetsInMetres) {
    const AntennaFile file = ReadAntennas(AntennaText(), "made");
    EXPECT_EQ(file.version, 1.4);
    EXPECT_FALSE(file.relative);
    ASSERT_EQ(file.antennas.size(), 4U);
    const AntennaCalibration& antenna = file.antennas[1];
    EXPECT_EQ(antenna.type, "LEIAR20");
    EXPECT_EQ(antenna.radome, "LEIM");
    EXPECT_EQ(antenna.method, "ROBOT");
    EXPECT_FALSE(antenna.satellite);
    // The section of standard deviations adds none.
    ASSERT_EQ(antenna.offsets.size(), 2U);
    const PhaseCentreOffset* offset = FindOffset(antenna, "G02");
    ASSERT_NE(offset, nullptr);
    EXPECT_NEAR(offset->north, -0.00021, 1e-12);
    EXPECT_NEAR(offset->east, -0.00013, 1e-12);
    EXPECT_NEAR(offset->up, 0.11848, 1e-12);
    EXPECT_EQ(FindOffset(antenna, "R01"), nullptr);
}

TEST(Antennas, SatellitesAndTheirValidity) {
    const AntennaCalibration satellite = ReadAntennas(AntennaText(), "made").antennas.at(0);
    EXPECT_TRUE(satellite.satellite);
    EXPECT_EQ(satellite.type, "BLOCK IIA");
    EXPECT_EQ(satellite.serial, "G01");
    EXPECT_EQ(FormatTime(satellite.validFrom.value(), 0), "1992-11-22 00:00:00");
    EXPECT_EQ(FormatTime(satellite.validUntil.value(), 7), "2008-10-16 23:59:59.9999999");
}

TEST(Antennas, TheSerialNumberGoesBeforeTheType) {
    const AntennaFile file = ReadAntennas(AntennaText(), "made");
    const GpsTime now{2111, 0.0};
    const auto* bySerial = FindReceiverAntenna(file, "LEIAR20", "LEIM", "25299035", now);
    ASSERT_NE(bySerial, nullptr);
    EXPECT_NEAR(FindOffset(*bySerial, "G01")->up, 0.120, 1e-12);
    const auto* byType = FindReceiverAntenna(file, "LEIAR20", "LEIM", "1", now);
    ASSERT_NE(byType, nullptr);
    EXPECT_NEAR(FindOffset(*byType, "G01")->up, 0.11701, 1e-12);
    EXPECT_EQ(FindReceiverAntenna(file, "LEIAR20", "NONE", "", now), nullptr);
    // A blank radome of the file and of the header is NONE.
    EXPECT_NE(FindReceiverAntenna(file, "TRM55971.00", "", "", now), nullptr);
    EXPECT_NE(FindReceiverAntenna(file, "TRM55971.00", "NONE", "", now), nullptr);
    EXPECT_EQ(FindReceiverAntenna(file, "BLOCK IIA", "", "G01", now), nullptr);
}

TEST(Antennas, ACalibrationHoldsInItsTime) {
    std::string text = AntennaText();
    const std::string type = Line("TRM55971.00", "TYPE / SERIAL NO");
    text.insert(text.find(type) + type.size(),
                Line("  2010     1     1     0     0    0.0000000", "VALID FROM"));
    const AntennaFile file = ReadAntennas(text, "made");
    const GpsTime start = FromCalendar({2010, 1, 1, 0, 0, 0.0}).value();
    EXPECT_NE(FindReceiverAntenna(file, "TRM55971.00", "NONE", "", start), nullptr);
    EXPECT_EQ(FindReceiverAntenna(file, "TRM55971.00", "NONE", "", Shifted(start, -1.0)), nullptr);
}

TEST(Antennas, DatesBeforeGpsTimeAreItsOrigin) {
    std::string text = AntennaText();
    text.replace(text.find("  1992    11    22"), 18, "  1978     2    22");
    const AntennaCalibration satellite = ReadAntennas(text, "made").antennas.at(0);
    EXPECT_EQ(satellite.validFrom.value(), (GpsTime{0, 0.0}));
}

TEST(Antennas, ARealExcerpt) {
    const FileBytes file =
        ReadFile(std::string(VORNEL_TEST_DATA) + "/baselines/ciboure-pasaia/antennas.atx").front();
    const AntennaFile antennas = ReadAntennas(file.bytes, file.name);
    const GpsTime now = FromCalendar({2026, 4, 30, 10, 0, 0.0}).value();
    const auto* antenna = FindReceiverAntenna(antennas, "LEIAR20", "LEIM", "", now);
    ASSERT_NE(antenna, nullptr);
    ASSERT_NE(FindOffset(*antenna, "G01"), nullptr);
}

}  // namespace
}  // namespace vornel::io
