// Bad input, one by one: each text here is whole but for one thing, and must be refused with the kind
// of fault, the line and the reason told in the table.
#include <gtest/gtest.h>

#include <functional>

#include "io/antennas.h"
#include "io/file_kind.h"
#include "io/navigation.h"
#include "io/observation_reader.h"
#include "io/precise_orbits.h"
#include "io/station_coordinates.h"
#include "specimens.h"

namespace vornel::io {
namespace {

// Reads bytes of any kind by their content, as the host does.
void ReadAny(const std::string& bytes, const std::string& name) {
    switch (RecogniseFile(bytes, name)) {
        case FileKind::kObservation:
        case FileKind::kCompactObservation:
            ReadObservations(bytes, name);
            break;
        case FileKind::kNavigation:
            ReadNavigation(bytes, name);
            break;
        case FileKind::kPreciseOrbit:
            ReadPreciseOrbits(bytes, name);
            break;
        case FileKind::kAntenna:
            ReadAntennas(bytes, name);
            break;
        case FileKind::kStationCoordinates:
            ReadStationCoordinates(bytes, name);
            break;
    }
}

void ExpectRefusal(const std::function<void()>& read, InputFault fault, std::size_t line,
                   const std::string& reason) {
    try {
        read();
        FAIL() << "was read";
    } catch (const InputError& error) {
        EXPECT_STREQ(FaultName(error.fault()), FaultName(fault)) << error.what();
        EXPECT_EQ(error.line(), line) << error.what();
        EXPECT_EQ(error.reason(), reason);
    }
}

std::string Line(std::string text, const std::string& label) {
    text.resize(60, ' ');
    return text + label + '\n';
}

// The texts that are damaged below. Line numbers of their records stand beside them.
std::string Rinex2() {
    return Line("     2.11           OBSERVATION DATA    M (MIXED)", "RINEX VERSION / TYPE") +  // 1
           Line("  4027893.7500   307045.6000  4919475.1000", "APPROX POSITION XYZ") +          // 2
           Line("        0.0500        0.0000        0.0000", "ANTENNA: DELTA H/E/N") +         // 3
           Line("     3    C1    L1    L2", "# / TYPES OF OBSERV") +                            // 4
           Line("    30.000", "INTERVAL") +                                                     // 5
           Line("  2020     6    25     0     0    0.0000000     GPS", "TIME OF FIRST OBS") +   // 6
           Line("", "END OF HEADER") +                                                          // 7
           " 20  6 25  0  0  0.0000000  0  2G01R02\n"                                           // 8
           "  20000000.123   105100000.45617  81900000.45617\n"                                 // 9
           "  21000000.123   112100000.45617  87190000.45617\n"   // 10
           " 20  6 25  0  0 30.0000000  0  1G01\n"                // 11
           "  20000001.123   105100001.45617  81900001.45617\n";  // 12
}

std::string Rinex3() {
    return Line("     3.04           OBSERVATION DATA    M", "RINEX VERSION / TYPE") +         // 1
           Line("G    2 C1C L1C", "SYS / # / OBS TYPES") +                                     // 2
           Line("R    2 C1C L1C", "SYS / # / OBS TYPES") +                                     // 3
           Line("  1 R02 -4", "GLONASS SLOT / FRQ #") +                                        // 4
           Line("  2020     6    25     0     0    0.0000000     GPS", "TIME OF FIRST OBS") +  // 5
           Line("", "END OF HEADER") +                                                         // 6
           "> 2020 06 25 00 00 00.0000000  0  2\n"                                             // 7
           "G01  20000000.123   105100000.45617\n"                                             // 8
           "R02  21000000.123   112100000.45617\n"                                             // 9
           "> 2020 06 25 00 00 30.0000000  0  1\n"                                             // 10
           "G01  20000001.123   105100001.45617\n";                                            // 11
}

std::string Compact3() {
    return Line("3.0                 COMPACT RINEX FORMAT", "CRINEX VERS   / TYPE") +   // 1
           Line("RNX2CRX", "CRINEX PROG / DATE") +                                      // 2
           Line("     3.04           OBSERVATION DATA    M", "RINEX VERSION / TYPE") +  // 3
           Line("G    2 C1C L1C", "SYS / # / OBS TYPES") +                              // 4
           Line("", "END OF HEADER") +                                                  // 5
           "> 2020 06 25 00 00 00.0000000  0  1      G01\n"                             // 6
           "\n"                                                                         // 7
           "3&20000000123 3&105100000456   17\n"                                        // 8
           "                   3             \n"                                        // 9
           "\n"                                                                         // 10
           "1000 1000\n";                                                               // 11
}

const char kEphemeris[] =
    "G01 2020 06 25 02 00 00 2.357442863286e-04-9.890754881781e-12 0.000000000000e+00\n"
    "     1.700000000000e+02 9.481250000000e+01 4.504830501415e-09-3.018200547505e+00\n"
    "     4.941597580910e-06 1.796920900233e-03 1.812353730202e-06 5.153606090546e+03\n"
    "     3.528000000000e+05-1.676380634308e-08 1.006189478276e+00 1.676380634308e-08\n"
    "     9.570913801148e-01 3.425937500000e+02 2.057624824219e-01-8.280702067336e-09\n"
    "     2.317953694933e-10 1.000000000000e+00 2.111000000000e+03 0.000000000000e+00\n"
    "     2.800000000000e+00 0.000000000000e+00-8.847564458847e-09 4.260000000000e+02\n"
    "     3.456180000000e+05 4.000000000000e+00 0.000000000000e+00 0.000000000000e+00\n";

std::string Navigation3() {
    return Line("     3.04           N: GNSS NAV DATA    G", "RINEX VERSION / TYPE") +          // 1
           Line("GPSA   7.4506E-09 -1.4901E-08 -5.9605E-08  1.1921E-07", "IONOSPHERIC CORR") +  // 2
           Line("", "END OF HEADER") + kEphemeris;  // 3, 4 to 11
}

std::string Navigation4() {
    return Line("     4.00           N: GNSS NAV DATA    M", "RINEX VERSION / TYPE") +
           Line("", "END OF HEADER") + "> EPH G01 LNAV\n" + kEphemeris;  // 3, 4 to 11
}

std::string Orbits() {
    return "#dP2020  6 25  0  0  0.00000000       2 d+D   IGb14 FIT AIUB\n"  // 1
           "## 2111 345600.00000000   300.00000000 59025 0.0000000000000\n"  // 2
           "+    1   G01  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0  0\n"  // 3
           "%c M  cc GPS ccc cccc cccc cccc cccc ccccc ccccc ccccc ccccc\n"  // 4
           "*  2020  6 25  0  0  0.00000000\n"                               // 5
           "PG01 -10814.532184  19731.805028 -14065.684957     15.944433\n"  // 6
           "*  2020  6 25  0  5  0.00000000\n"                               // 7
           "PG01 -10714.532184  19631.805028 -14165.684957     15.944434\n"  // 8
           "EOF\n";                                                          // 9
}

std::string Antennas() {
    return Line("     1.4            M", "ANTEX VERSION / SYST") +              // 1
           Line("A", "PCV TYPE / REFANT") +                                     // 2
           Line("", "END OF HEADER") +                                          // 3
           Line("", "START OF ANTENNA") +                                       // 4
           Line("LEIAR20         LEIM", "TYPE / SERIAL NO") +                   // 5
           Line("  2010     1     1     0     0    0.0000000", "VALID FROM") +  // 6
           Line("   G01", "START OF FREQUENCY") +                               // 7
           Line("      0.70      0.39    117.01", "NORTH / EAST / UP") +        // 8
           Line("   G01", "END OF FREQUENCY") +                                 // 9
           Line("", "END OF ANTENNA");                                          // 10
}

struct Damage {
    const char* name;
    std::string (*text)();
    const char* from;  // the first occurrence is replaced; "" appends
    const char* to;
    InputFault fault;
    std::size_t line;
    const char* reason;
};

std::string Damaged(const Damage& damage) {
    std::string text = damage.text();
    const std::string from = damage.from;
    if (from.empty()) {
        return text + damage.to;
    }
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), damage.to);
}

class MalformedInput : public ::testing::TestWithParam<Damage> {};

TEST_P(MalformedInput, IsRefusedWithItsReason) {
    const Damage& damage = GetParam();
    ASSERT_NO_THROW(ReadAny(damage.text(), "whole"));
    const std::string text = Damaged(damage);
    ExpectRefusal([&] { ReadAny(text, "bad"); }, damage.fault, damage.line, damage.reason);
}

std::string NameOf(const ::testing::TestParamInfo<Damage>& info) {
    return info.param.name;
}

using enum InputFault;

INSTANTIATE_TEST_SUITE_P(
    Headers, MalformedInput,
    ::testing::Values(
        Damage{"Version1", Rinex2, "2.11", "1.00", kUnsupportedVersion, 1,
               "RINEX version 1.00 is not read"},
        Damage{"Version220", Rinex2, "2.11", "2.20", kUnsupportedVersion, 1,
               "RINEX version 2.20 is not read"},
        Damage{"Version306", Rinex3, "3.04", "3.06", kUnsupportedVersion, 1,
               "RINEX version 3.06 is not read"},
        Damage{"Version5", Rinex3, "3.04", "5.00", kUnsupportedVersion, 1,
               "RINEX version 5.00 is not read"},
        Damage{"VersionNan", Rinex3, "3.04", " nan", kMalformed, 1,
               "the version 'nan' is not a number"},
        Damage{"Meteorology", Rinex3, "OBSERVATION DATA", "METEOROLOGICAL  ", kWrongKind, 1,
               "it is a RINEX meteorological file"},
        Damage{"Clocks", Rinex3, "OBSERVATION DATA", "CLOCK DATA      ", kWrongKind, 1,
               "it is a RINEX clock file"},
        Damage{"UnknownType", Rinex3, "OBSERVATION DATA", "XYZ             ", kWrongKind, 1,
               "it is a RINEX file of an unknown type 'XYZ'"},
        Damage{"UnknownSystemOfFile", Rinex3, "DATA    M", "DATA    X", kMalformed, 1,
               "unknown satellite system 'X' of the file"},
        Damage{"PositionNan", Rinex2, "  4027893.7500", "           nan", kMalformed, 2,
               "approximate position: 'nan' is not a number"},
        Damage{"HeightInfinite", Rinex2, "        0.0500", "           inf", kMalformed, 3,
               "antenna height and offsets: 'inf' is not a number"},
        Damage{"TooManyTypesListed", Rinex2, "     3    C1", "     2    C1", kMalformed, 4,
               "the header announces 2 observation types but lists 3"},
        Damage{"TooFewTypesListed", Rinex2, "     3    C1", "     4    C1", kMalformed, 7,
               "the header announces 4 observation types but lists only 3"},
        Damage{"NegativeTypes", Rinex2, "     3    C1", "    -3    C1", kMalformed, 4,
               "the number of observation types '-3' is none from 1 to 200"},
        Damage{"HugeNumberOfTypes", Rinex2, "     3    C1", "999999    C1", kMalformed, 4,
               "the number of observation types '999999' is none from 1 to 200"},
        Damage{"TypeOfWrongWidth", Rinex3, "G    2 C1C L1C", "G    2 C1  L1C", kMalformed, 2,
               "'C1' is no observation type"},
        Damage{"TypesOfUnknownSystem", Rinex3, "R    2", "Q    2", kMalformed, 3,
               "unknown satellite system 'Q' of observation types"},
        Damage{"TypesContinueNothing", Rinex3, "G    2", "     2", kMalformed, 2,
               "observation types continue that have not begun"},
        Damage{"TypesCutShort", Rinex3, "R    2 C1C L1C", "R    3 C1C L1C", kMalformed, 6,
               "the header announces 3 observation types but lists only 2"},
        Damage{"IntervalText", Rinex2, "    30.000", "    thirty", kMalformed, 5,
               "the interval 'thirty' is not a number"},
        Damage{"UnknownTimeSystem", Rinex2, "     GPS   ", "     XYZ   ", kMalformed, 6,
               "unknown time system 'XYZ'"},
        Damage{"FirstEpochText", Rinex2, "  2020     6", "  2020   six", kMalformed, 6,
               "no date and time in '2020   six    25     0     0    0.0000000'"},
        Damage{"ChannelOutOfRange", Rinex3, "R02 -4", "R02 77", kMalformed, 4,
               "no slot and channel of GLONASS in 'R02 77'"},
        Damage{"LineWithoutLabel", Rinex3, "END OF HEADER", "             ", kMalformed, 7,
               "a header line without a label in column 61"},
        Damage{"SecondFile", Rinex3, "",
               "     3.04           OBSERVATION DATA    M                "
               "   RINEX VERSION / TYPE\n",
               kMalformed, 12, "a second file begins within the file"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Epochs, MalformedInput,
    ::testing::Values(
        Damage{"MonthThirteen", Rinex3, "> 2020 06", "> 2020 13", kMalformed, 7,
               "the date and time '2020 13 25 00 00 00.0000000' does not exist"},
        Damage{"SecondNan", Rinex3, "00 30.0000000", "00        nan", kMalformed, 10,
               "no date and time of an epoch in '2020 06 25 00 00        nan'"},
        Damage{"EpochTooShort", Rinex3, "> 2020 06 25 00 00 30.0000000  0  1", "> 23 29",
               kMalformed, 10, "no date and time of an epoch in '23 29'"},
        Damage{"FlagSeven", Rinex3, "30.0000000  0  1", "30.0000000  7  1", kMalformed, 10,
               "the epoch flag '7' is none from 0 to 6"},
        Damage{"FlagLetter", Rinex2, "30.0000000  0  1", "30.0000000  x  1", kMalformed, 11,
               "the epoch flag 'x' is none from 0 to 6"},
        Damage{"NegativeCount", Rinex3, "30.0000000  0  1", "30.0000000  0 -1", kMalformed, 10,
               "the number of satellites '-1' is no count"},
        Damage{"BlankCount", Rinex3, "30.0000000  0  1", "30.0000000  0", kMalformed, 10,
               "the number of satellites '' is no count"},
        Damage{"TooManyAnnounced", Rinex3, "00.0000000  0  2", "00.0000000  0  3", kMalformed, 10,
               "the epoch of line 7 announces 3 satellites, but only 2 follow"},
        Damage{"TooFewAnnounced", Rinex3, "00.0000000  0  2", "00.0000000  0  1", kMalformed, 9,
               "an epoch record, which begins with '>', should stand here"},
        Damage{"HugeCount", Rinex3, "30.0000000  0  1", "30.0000000  0999", kTruncated, 11,
               "the file ends in the epoch of line 10: 1 of 999 satellites are there"},
        Damage{"HugeCountOfVersion2", Rinex2, "30.0000000  0  1G01", "30.0000000  0999G01",
               kMalformed, 11, "no satellite in '', number 2 of 999"},
        Damage{"MoreNamedThanAnnounced", Rinex2, "0  2G01R02", "0  1G01R02", kMalformed, 8,
               "the epoch announces 1 satellites but names more"},
        Damage{"UnknownSatelliteSystem", Rinex3, "R02  2", "X02  2", kMalformed, 9,
               "no satellite in 'X02', number 2 of 2"},
        Damage{"SatelliteZero", Rinex3, "R02  2", "R00  2", kMalformed, 9,
               "no satellite in 'R00', number 2 of 2"},
        Damage{"SatelliteOfVersion2", Rinex2, "G01R02", "G01R?2", kMalformed, 8,
               "no satellite in 'R?2', number 2 of 2"},
        Damage{"SystemWithoutTypes", Rinex3, "R02  2", "E02  2", kMalformed, 9,
               "satellite E02, but the header has no observation types of Galileo"},
        Damage{"EventLinesMissing", Rinex3, "30.0000000  0  1", "30.0000000  4  3", kTruncated, 11,
               "the file ends in the epoch of line 10: 1 of 3 event lines are there"},
        Damage{"EventRunsIntoAnEpoch", Rinex3, "00.0000000  0  2", "00.0000000  4  5", kMalformed,
               10, "the event of line 7 announces 5 lines, but only 2 follow"},
        Damage{"NegativeEventLines", Rinex3, "30.0000000  0  1", "30.0000000  4 -1", kMalformed, 10,
               "the number of event lines '-1' is no count"},
        Damage{"ClockOffsetText", Rinex3, "30.0000000  0  1",
               "30.0000000  0  1       0.12x456789012", kMalformed, 10,
               "the receiver clock offset '0.12x456789012' is not a number"},
        Damage{"ListContinuesNowhere", Rinex2, "0  2G01R02",
               "0 13G01G02G03G04G05G06G07G08G09G10G11G12", kMalformed, 9,
               "the list of satellites should continue here"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Observations, MalformedInput,
    ::testing::Values(Damage{"ValueNan", Rinex3, "  21000000.123", "           nan", kMalformed, 9,
                             "the observation 'nan' is not a number"},
                      Damage{"ValueInfinite", Rinex2, "  21000000.123", "     -infinity",
                             kMalformed, 10, "the observation '-infinity' is not a number"},
                      Damage{"ValueHuge", Rinex3, "  21000000.123", "         1e300", kMalformed, 9,
                             "the observation '1e300' is impossibly large"},
                      Damage{"ValueBeyondDouble", Rinex3, "  21000000.123", "         1e999",
                             kMalformed, 9, "the observation '1e999' is not a number"},
                      Damage{"ValueHexadecimal", Rinex3, "  21000000.123", "        0x1p10",
                             kMalformed, 9, "the observation '0x1p10' is not a number"},
                      Damage{"ValueWithABlank", Rinex3, "  21000000.123", "  210 0000.123",
                             kMalformed, 9, "the observation '210 0000.123' is not a number"},
                      Damage{"ValueAfterATab", Rinex3, "R02  21000000.123", "R02\t 21000000.123",
                             kMalformed, 9, "the observation '21000000.123' is not a number"},
                      Damage{"LossOfLockLetter", Rinex2, "87190000.45617", "87190000.456x7",
                             kMalformed, 10, "the loss of lock indicator 'x' is no digit"},
                      Damage{"StrengthLetter", Rinex3, "112100000.45617", "112100000.4561x",
                             kMalformed, 9, "the signal strength indicator 'x' is no digit"},
                      Damage{"MoreValuesThanTypes", Rinex3, "112100000.45617",
                             "112100000.45617  21000000.123", kMalformed, 9,
                             "more observations than the header has types"},
                      Damage{"MoreValuesThanTypesOfVersion2", Rinex2, "87190000.45617",
                             "87190000.45617  21000000.123", kMalformed, 10,
                             "more observations than the header has types"},
                      Damage{"ValueCutOffInMidFile", Rinex3, "112100000.45617", "112100",
                             kMalformed, 9, "the observation '112100' is cut off"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Compact, MalformedInput,
    ::testing::Values(Damage{"CompactVersion2", Compact3, "3.0 ", "2.0 ", kUnsupportedVersion, 1,
                             "Compact RINEX version '2.0' is not read"},
                      Damage{"CompactOfOtherVersion", Compact3, "3.0 ", "1.0 ", kMalformed, 5,
                             "Compact RINEX 1 holds RINEX 2, and Compact RINEX 3 later versions"},
                      Damage{"FirstEpochNotWhole", Compact3, "> 2020", "  2020", kMalformed, 6,
                             "the first epoch should begin with '>'"},
                      Damage{"DifferenceText", Compact3, "1000 1000", "1000 ten", kMalformed, 11,
                             "'ten' is not a number"},
                      Damage{"DifferenceOfNothing", Compact3, "3&105100000456", "105100000456",
                             kMalformed, 8,
                             "'105100000456' continues differences that have not begun"},
                      Damage{"DifferenceTooLarge", Compact3, "1000 1000", "1000 999999999999999999",
                             kMalformed, 11, "'999999999999999999' leads to an impossible value"},
                      Damage{"DifferenceTooLong", Compact3, "1000 1000", "1000 9999999999999999999",
                             kMalformed, 11, "'9999999999999999999' is not a number"},
                      Damage{"ClockText", Compact3, "G01\n\n3&", "G01\n3&x\n3&", kMalformed, 7,
                             "'3&x' is not a number"},
                      Damage{"CompactSatellite", Compact3, "G01\n\n", "G?1\n\n", kMalformed, 6,
                             "no satellite in 'G?1', number 1 of 1"},
                      Damage{"CompactFlags", Compact3, "   17", "   1x", kMalformed, 8,
                             "the flags '  1x' are no digits"},
                      Damage{"CompactTooManyFlags", Compact3, "   17", "   1789", kMalformed, 8,
                             "more flags than the header has types"},
                      Damage{"CompactHugeCount", Compact3, "0  1      G01", "0999      G01",
                             kMalformed, 6, "no satellite in '', number 2 of 999"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Navigation, MalformedInput,
    ::testing::Values(
        Damage{"NavigationVersion", Navigation3, "3.04", "3.10", kUnsupportedVersion, 1,
               "RINEX version 3.10 is not read"},
        Damage{"IonosphereNan", Navigation3, " -1.4901E-08", "         nan", kMalformed, 2,
               "the ionosphere coefficient 'nan' is not a number"},
        Damage{"OnlyRecordNan", Navigation3, " 2.357442863286e-04", "                nan",
               kMalformed, 4,
               "none of the 1 records can be read; the first: 'nan' is not a number"},
        Damage{"OnlyRecordNoDate", Navigation3, "2020 06 25 02", "2020 06 31 02", kMalformed, 4,
               "none of the 1 records can be read; the first: the date and time '2020 06 31 02 00 "
               "00' does not exist"},
        Damage{"OnlyRecordUnknownSatellite", Navigation3, "G01 2020", "?01 2020", kMalformed, 4,
               "none of the 1 records can be read; the first: no satellite in '?01'"},
        Damage{"OrbitWithoutRecord", Navigation3, "G01 2020", "    2020", kMalformed, 4,
               "a line of orbit numbers without the first line of its record"},
        Damage{"Record4WithoutMark", Navigation4, "> EPH", "  EPH", kMalformed, 3,
               "a record, which begins with '>', should stand here"},
        Damage{"Record4OfAnother", Navigation4, "> EPH G01", "> EPH G02", kMalformed, 4,
               "none of the 1 records can be read; the first: the record of G02 names G01"},
        Damage{"Record4Unknown", Navigation4, "> EPH", "> XYZ", kMalformed, 3,
               "none of the 1 records can be read; the first: unknown record '> XYZ G01 LNAV'"},
        Damage{"RecordTooLong", Navigation3, "", "     1.000000000000e+00\n", kMalformed, 12,
               "none of the 1 records can be read; the first: the record of G01 has more than 8 "
               "lines"},
        Damage{"HealthHuge", Navigation3, "0.000000000000e+00-8.8", "1.000000000000e+20-8.8",
               kMalformed, 10,
               "none of the 1 records can be read; the first: the health is out of range"},
        Damage{"ToeOutsideTheWeek", Navigation3, "3.528000000000e+05", "7.528000000000e+05",
               kMalformed, 7,
               "none of the 1 records can be read; the first: the orbit reference time is outside "
               "the week"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    OrbitsAndAntennas, MalformedInput,
    ::testing::Values(Damage{"OrbitVersion", Orbits, "#dP", "#eP", kUnsupportedVersion, 1,
                             "SP3 version 'e' is not read"},
                      Damage{"EpochCountText", Orbits, "       2 d+D", "     two d+D", kMalformed,
                             1, "the number of epochs 'two' is no count"},
                      Damage{"NegativeEpochs", Orbits, "       2 d+D", "      -2 d+D", kMalformed,
                             1, "the number of epochs '-2' is no count"},
                      Damage{"OrbitInterval", Orbits, "  300.00000000", "           nan",
                             kMalformed, 2, "the interval 'nan' is no number of seconds"},
                      Damage{"OrbitTimeSystem", Orbits, "cc GPS", "cc XXX", kMalformed, 4,
                             "unknown time system 'XXX'"},
                      Damage{"OrbitEpoch", Orbits, "*  2020  6 25  0  5", "*  2020  6 25  0 65",
                             kMalformed, 7,
                             "no date and time of an epoch in '*  2020  6 25  0 65  0.00000000'"},
                      Damage{"OrbitEpochsDescend", Orbits, "*  2020  6 25  0  5",
                             "*  2020  6 24  0  5", kMalformed, 7,
                             "the epoch 2020-06-24 00:05:00 does not come after the one before it"},
                      Damage{"PositionText", Orbits, " 19731.805028", " 19731.8x5028", kMalformed,
                             6, "the position '19731.8x5028' is not a number"},
                      Damage{"ClockNan", Orbits, "    15.944434", "          nan", kMalformed, 8,
                             "the clock 'nan' is not a number"},
                      Damage{"OrbitSatellite", Orbits, "PG01 -10714", "PG0x -10714", kMalformed, 8,
                             "no satellite in 'G0x'"},
                      Damage{"SatelliteTwice", Orbits, "*  2020  6 25  0  5  0.00000000\n", "",
                             kMalformed, 7, "satellite G01 stands twice in the epoch"},
                      Damage{"PositionBeforeEpoch", Orbits, "*  2020  6 25  0  0  0.00000000\n", "",
                             kMalformed, 5, "a position before the first epoch"},
                      Damage{"UnknownOrbitRecord", Orbits, "EOF", "   *", kMalformed, 9,
                             "no record of SP3 in '   *'"},
                      Damage{"AntennaVersion", Antennas, "1.4", "2.4", kUnsupportedVersion, 1,
                             "ANTEX version '2.4' is not read"},
                      Damage{"AntennaWithoutType", Antennas, "LEIAR20         LEIM",
                             "                    ", kMalformed, 5, "an antenna without a type"},
                      Damage{"AntennaDate", Antennas, "  2010     1", "  2010    13", kMalformed, 6,
                             "no date and time in '2010    13     1     0     0    0.0000000'"},
                      Damage{"AntennaFrequency", Antennas, "   G01", "   ?01", kMalformed, 7,
                             "no frequency in '?01'"},
                      Damage{"AntennaOffset", Antennas, "    117.01", "       nan", kMalformed, 8,
                             "the phase centre offset 'nan' is not a number"},
                      Damage{"AntennaEndsEarly", Antennas, "END OF FREQUENCY", "COMMENT         ",
                             kMalformed, 10, "an antenna ends before END OF FREQUENCY"},
                      Damage{"AntennaInAnother", Antennas, "END OF ANTENNA\n", "START OF ANTENNA\n",
                             kMalformed, 10, "an antenna begins before END OF ANTENNA"}),
    NameOf);

struct CutOff {
    const char* name;
    std::string (*text)();
    const char* at;  // the text is cut off after this
    std::size_t line;
    const char* reason;
};

class CutOffInput : public ::testing::TestWithParam<CutOff> {};

TEST_P(CutOffInput, IsRefusedAsTruncated) {
    const CutOff& cut = GetParam();
    std::string text = cut.text();
    const std::size_t at = text.rfind(cut.at);
    ASSERT_NE(at, std::string::npos);
    text.resize(at + std::string(cut.at).size());
    ExpectRefusal([&] { ReadAny(text, "cut"); }, kTruncated, cut.line, cut.reason);
}

INSTANTIATE_TEST_SUITE_P(
    Files, CutOffInput,
    ::testing::Values(
        CutOff{"InTheHeader", Rinex3, "SYS / # / OBS TYPES\n", 3,
               "the file ends before END OF HEADER"},
        CutOff{"InAHeaderLine", Rinex3, "GLONASS SL", 4, "the file ends before END OF HEADER"},
        CutOff{"BetweenSatellites", Rinex3,
               "00.0000000  0  2\nG01  20000000.123   105100000.45617\n", 8,
               "the file ends in the epoch of line 7: 1 of 2 satellites are there"},
        CutOff{"InAValue", Rinex3, "1051000", 11,
               "the file ends within a record: the observation '1051000' is cut off"},
        CutOff{"InAnEpochLine", Rinex3, "> 2020 06 25 00 00 3", 10,
               "the file ends within a record: the number of satellites '' is no count"},
        CutOff{"InTheListOfSatellites", Rinex2, " 0.0000000  0  2G01", 8,
               "the file ends within a record: no satellite in '', number 2 of 2"},
        CutOff{"AfterTheEpochLine", Rinex2, "30.0000000  0  1G01\n", 11,
               "the file ends in the epoch of line 11: 0 of 1 satellites are complete"},
        CutOff{"CompactWithoutClock", Compact3, "G01\n", 6,
               "the file ends in the epoch of line 6: no receiver clock line follows"},
        CutOff{"CompactWithoutRows", Compact3, "             \n\n", 10,
               "the file ends in the epoch of line 9: 0 of 1 satellites are there"},
        CutOff{"NavigationLines", Navigation3, "4.260000000000e+02\n", 10,
               "the file ends within a record: the record of G01 has 7 of 8 lines"},
        CutOff{"NavigationNumber", Navigation3, "     3.456180000", 11,
               "the file ends within the number '3.456180000'"},
        CutOff{"Navigation4Mark", Navigation4, "> EPH G01 LNAV\n", 3,
               "the file ends within a record: the record of G01 has 0 of 8 lines"},
        CutOff{"OrbitsWithoutEof", Orbits, "*  2020  6 25  0  5  0.00000000\n", 7,
               "the file ends without EOF after 2 of 2 epochs"},
        CutOff{"OrbitNumber", Orbits, "19631.8", 8,
               "the file ends within a record: the position '19631.8' is cut off"},
        CutOff{"AntennaWithoutEnd", Antennas, "NORTH / EAST / UP\n", 8,
               "the file ends within the antenna of line 4"},
        CutOff{"AntennaHeader", Antennas, "PCV TYPE / REFANT\n", 2,
               "the file ends before END OF HEADER"}),
    [](const auto& cut) { return std::string(cut.param.name); });

struct Refusal {
    const char* file;
    InputFault fault;
    std::size_t line;
    const char* reason;
};

class RefusedSpecimen : public ::testing::TestWithParam<Refusal> {};

TEST_P(RefusedSpecimen, HasItsReason) {
    const Refusal& refusal = GetParam();
    ExpectRefusal(
        [&] {
            const FileBytes file = ReadSpecimen(refusal.file);
            ReadAny(file.bytes, file.name);
        },
        refusal.fault, refusal.line, refusal.reason);
}

INSTANTIATE_TEST_SUITE_P(
    Files, RefusedSpecimen,
    ::testing::Values(
        Refusal{"badtime.10o", kMalformed, 3, "the seconds '0 .000000' are not a number"},
        Refusal{"blank.sp3", kEmpty, 0, "the file is empty"},
        Refusal{"blank1st.10o", kWrongKind, 1,
                "the first line is blank, not the RINEX VERSION / TYPE line"},
        Refusal{"blank3_1st.10o", kWrongKind, 1,
                "the first line is blank, not the RINEX VERSION / TYPE line"},
        Refusal{"wrong_obs2_count.10o", kMalformed, 2,
                "the header announces 6 observation types but lists 7"},
        Refusal{"junk_time_obs3.10o", kMalformed, 10, "no date and time of an epoch in '23 29'"},
        Refusal{"regression-crinex-v1-char-boundary.crx", kMalformed, 6,
                "no date and time of an epoch in ''"},
        Refusal{"regression-crinex-v3-char-boundary.crx", kMalformed, 6,
                "no satellite in ' G?', number 1 of 1"},
        Refusal{"regression-rinex-obs-char-boundary.rnx", kMalformed, 5,
                "the signal strength indicator '?' is no digit"},
        Refusal{"header.sp3", kTruncated, 4, "the file ends without EOF after 0 of 2 epochs"},
        Refusal{"truncated.sp3", kTruncated, 38, "the file ends without EOF after 2 of 2 epochs"},
        Refusal{"example1.sp3a.gz", kMalformed, 28, "no record of SP3 in '   *'"}));

TEST(MalformedInput, AMessageTellsFileLineReasonAndHint) {
    try {
        ReadAny(Damaged({"", Rinex2, "     3    C1", "     2    C1", kMalformed, 0, ""}), "my.20o");
        FAIL();
    } catch (const InputError& error) {
        EXPECT_STREQ(error.what(),
                     "my.20o:4: the header announces 2 observation types but lists 3 (correct the "
                     "number or the list)");
    }
}

TEST(MalformedInput, ATabIsNamedInTheHint) {
    try {
        ReadAny(Damaged({"", Rinex3, "R02  21000000.123", "R02\t 21000000.123", kMalformed, 0, ""}),
                "tab");
        FAIL();
    } catch (const InputError& error) {
        EXPECT_EQ(error.hint(), "the line has a tab, but the columns of the format are fixed");
    }
}

// Every byte of the good texts in turn is replaced by others, and every text is cut at every place:
// nothing but an InputError may come of it.
TEST(MalformedInput, NoByteMakesAReaderFailOtherwise) {
    std::size_t refused = 0;
    std::size_t read = 0;
    const auto attempt = [&](const std::string& text) {
        try {
            ReadAny(text, "fuzz");
            ++read;
        } catch (const InputError&) {
            ++refused;
        }
    };
    for (const auto whole :
         {Rinex2, Rinex3, Compact3, Navigation3, Navigation4, Orbits, Antennas}) {
        const std::string text = whole();
        for (std::size_t i = 0; i < text.size(); ++i) {
            for (const char c : {'\0', '\n', ' ', '-', '9', '&', '>', '\xff', 'n', '.'}) {
                std::string changed = text;
                changed[i] = c;
                attempt(changed);
            }
            attempt(text.substr(0, i));
            attempt(text.substr(i));
        }
    }
    EXPECT_GT(refused, 1000U);
    EXPECT_GT(read, 1000U);
}

}  // namespace
}  // namespace vornel::io
