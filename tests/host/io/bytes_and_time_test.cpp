// Unpacking, recognition of kinds, fields, time and codes: the ground of the readers.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>

#include "io/file_kind.h"
#include "io/observation_codes.h"
#include "io/observation_reader.h"
#include "io/text_fields.h"
#include "packing.h"
#include "specimens.h"

namespace vornel::io {
namespace {

using test::Gzip;
using test::Tar;
using test::Zip;
using test::Zstd;

InputFault FaultOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const InputError& error) {
        EXPECT_FALSE(error.reason().empty());
        return error.fault();
    }
    ADD_FAILURE() << "nothing was refused";
    return InputFault::kMissingFile;
}

// A packed specimen without its last bytes, or with a byte changed.
std::string Packed(const std::string& name) {
    std::ifstream stream(SpecimenPath(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(FileBytes, PackingsAreToldByContent) {
    const auto packingOf = [](const std::string& name) { return ReadSpecimen(name).packing; };
    EXPECT_EQ(packingOf("minimal2.10o"), "plain");
    EXPECT_EQ(packingOf("brdc2420.18n.gz"), "gzip");
    EXPECT_EQ(packingOf("ac660270.18o.Z"), "compress");
    EXPECT_EQ(packingOf("P43300USA_R_20190012056_17M_15S_MO.crx.bz2"), "bzip2");
    EXPECT_EQ(packingOf("ab430140.18o.zip"), "zip");
    EXPECT_EQ(Unpack(Zstd("hello\n"), "x").at(0).packing, "zstd");
    EXPECT_EQ(Unpack(Zstd("hello\n"), "x").at(0).bytes, "hello\n");
    const auto xz =
        ReadFile(std::string(VORNEL_TEST_DATA) + "/baselines/ebre-bell/brdc0300.02n.xz");
    EXPECT_EQ(xz.at(0).packing, "xz");
    EXPECT_EQ(xz.at(0).bytes.substr(0, 21), "     2              N");
}

TEST(FileBytes, ThePackedAndThePlainAreTheSameBytes) {
    EXPECT_EQ(ReadSpecimen("P43300USA_R_20190012056_17M_15S_MO.crx").bytes,
              ReadSpecimen("P43300USA_R_20190012056_17M_15S_MO.crx.bz2").bytes);
}

TEST(FileBytes, AMemberOfAnArchiveIsNamed) {
    const FileBytes file = ReadSpecimen("ab430140.18o.zip");
    EXPECT_EQ(file.name, file.path + "(ab430140.18o)");
    EXPECT_EQ(file.packedSize, 12701U);
    EXPECT_EQ(file.bytes.size(), 38521U);
}

TEST(FileBytes, TruncatedAndDamagedPackings) {
    const std::string gzip = Packed("brdc2420.18n.gz");
    EXPECT_EQ(FaultOf([&] { Unpack(gzip.substr(0, gzip.size() / 2), "x"); }),
              InputFault::kTruncated);
    const std::string bzip2 = Packed("P43300USA_R_20190012056_17M_15S_MO.crx.bz2");
    EXPECT_EQ(FaultOf([&] { Unpack(bzip2.substr(0, bzip2.size() / 2), "x"); }),
              InputFault::kTruncated);
    std::string damaged = bzip2;
    damaged[damaged.size() / 2] = static_cast<char>(damaged[damaged.size() / 2] ^ 0x55);
    EXPECT_EQ(FaultOf([&] { Unpack(damaged, "x"); }), InputFault::kDamagedPacking);
    std::string zip = Packed("ab430140.18o.zip");
    zip[zip.size() / 2] = static_cast<char>(zip[zip.size() / 2] ^ 0x55);
    const InputFault zipFault = FaultOf([&] { Unpack(zip, "x"); });
    EXPECT_TRUE(zipFault == InputFault::kDamagedPacking || zipFault == InputFault::kTruncated);
}

// Each packing, cut at any place, says that it is cut and not something else. A tar file may lack the
// blocks of zeros behind its last member.
TEST(FileBytes, ACutPackingSaysThatItIsCut) {
    const std::string text = ReadSpecimen("ab430140.18o.zip").bytes;
    const std::pair<const char*, std::string> packings[] = {
        {"gzip", Gzip(text)},       {"bzip2", test::Bzip2(text)}, {"xz", test::Xz(text)},
        {"zstd", Zstd(text)},       {"zip", Zip(text)},           {"gzip", Gzip(Tar(text))},
        {"tar", Tar(text)},         {"zip", Zip(Gzip(text))},     {"gzip", Gzip(Zip(text))},
        {"xz", test::Xz(Tar(text))}};
    for (const auto& [name, packed] : packings) {
        const std::size_t whole = std::string(name) == "tar" ? 512 + text.size() : packed.size();
        for (std::size_t i = 1; i <= 20; ++i) {
            const std::size_t size = 600 + (whole - 601) * i / 20;
            try {
                Unpack(packed.substr(0, size), "x");
                ADD_FAILURE() << name << " of " << size << " bytes was read";
            } catch (const InputError& error) {
                EXPECT_EQ(error.fault(), InputFault::kTruncated) << name << ": " << error.what();
                EXPECT_EQ(
                    error.reason().rfind("the " + std::string(name) + " data end too early", 0), 0U)
                    << error.reason();
            }
        }
    }
}

// Wherever a byte is changed: bzip2, xz and zip hold their data to a checksum, and so does gzip.
TEST(FileBytes, AChangedByteOfGzipDataIsFound) {
    const std::string gzip = Packed("brdc2420.18n.gz");
    const std::string plain = Unpack(gzip, "x").at(0).bytes;
    constexpr std::size_t kHeader = 10, kFlags = 3;
    constexpr unsigned char kHasName = 8;
    const std::size_t data =
        (gzip[kFlags] & kHasName) != 0 ? gzip.find('\0', kHeader) + 1 : kHeader;
    for (std::size_t at = data; at < gzip.size(); at += at + 20 < gzip.size() ? 97 : 1) {
        std::string damaged = gzip;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
        const InputFault fault = FaultOf([&] { Unpack(damaged, "x"); });
        EXPECT_TRUE(fault == InputFault::kDamagedPacking || fault == InputFault::kTruncated) << at;
    }
    for (std::size_t missing = 1; missing <= 9; ++missing) {
        EXPECT_EQ(FaultOf([&] { Unpack(gzip.substr(0, gzip.size() - missing), "x"); }),
                  InputFault::kTruncated);
    }
    EXPECT_EQ(Unpack(gzip + std::string(300, '\0'), "x").at(0).bytes, plain) << "padding of a tape";
    EXPECT_EQ(FaultOf([&] { Unpack(gzip + "rubbish", "x"); }), InputFault::kDamagedPacking);
}

// Files put one behind the other unpack to what they hold, one behind the other.
TEST(FileBytes, MembersOfAGzipFileAreJoined) {
    const std::string gzip = Packed("brdc2420.18n.gz");
    const std::string plain = Unpack(gzip, "x").at(0).bytes;
    EXPECT_EQ(Unpack(gzip + gzip, "x").at(0).bytes, plain + plain);
    EXPECT_EQ(FaultOf([&] { Unpack(gzip + gzip.substr(0, 200), "x"); }), InputFault::kTruncated);
}

TEST(FileBytes, MissingEmptyAndNoFiles) {
    EXPECT_EQ(FaultOf([] { ReadFile("no-such-file.rnx"); }), InputFault::kMissingFile);
    EXPECT_EQ(FaultOf([] { ReadFile(VORNEL_TEST_DATA); }), InputFault::kUnreadable);
    EXPECT_EQ(FaultOf([] { ReadFile("/dev/zero"); }), InputFault::kUnreadable);
    EXPECT_EQ(FaultOf([] { ReadSpecimen("blank.sp3"); }), InputFault::kEmpty);
    const std::string emptyZip("PK\x05\x06\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 22);
    EXPECT_EQ(FaultOf([&] { Unpack(emptyZip, "x"); }), InputFault::kEmpty);
}

// Zeros shrink a thousandfold, and what is left shrinks again: 200 MB in less than a kilobyte.
TEST(FileBytes, ABombIsRefusedBeforeItFillsTheMemory) {
    const std::string bomb = Gzip(Gzip(std::string(200'000'000, '\0')));
    ASSERT_LT(bomb.size(), 10000U);
    EXPECT_EQ(FaultOf([&] { Unpack(bomb, "x"); }), InputFault::kTooLarge);
}

// What a file unpacks to counts together with the files before it.
TEST(FileBytes, ALimitHoldsForAllFilesOfARun) {
    const std::string packed = Gzip(std::string(600'000, 'x')),
                      archive = Zip(Gzip(std::string(600'000, 'x')));
    const auto readTwice = [](const std::string& first, const std::string& second,
                              std::uint64_t most) {
        UnpackingLimit limit(most);
        const TakeMember leave = [](FileMember&) {};  // what is left unread counts, too
        UnpackMembers(first, "first", limit, leave);
        UnpackMembers(second, "second", limit, leave);
    };
    for (const std::string& second : {packed, archive}) {
        EXPECT_NO_THROW(readTwice(packed, second, 1'200'000));
        try {
            readTwice(packed, second, 1'199'999);
            ADD_FAILURE() << "was read";
        } catch (const InputError& error) {
            EXPECT_EQ(error.fault(), InputFault::kTooLarge);
            EXPECT_EQ(error.file().rfind("second", 0), 0U);
            EXPECT_EQ(error.reason(),
                      "the files unpack to more than 1 MB in all, which is the limit of a run");
        }
    }
    EXPECT_NO_THROW(readTwice(std::string(9'000'000, 'x'), std::string(9'000'000, 'x'), 9'000'000))
        << "plain files do not unpack";
    EXPECT_EQ(FaultOf([&] {
                  UnpackingLimit limit(8'999'999);
                  UnpackMembers(std::string(9'000'000, 'x'), "x", limit, [](FileMember& member) {
                      LineCursor text(member.bytes, member.name);
                      while (text.Next()) {
                      }
                  });
              }),
              InputFault::kTooLarge);
}

// Blank lines behind whole observations, 400 MB of them: none is kept, so none takes memory.
TEST(FileBytes, MemoryFollowsWhatIsKept) {
    const std::string text = ReadSpecimen("minimal3.10o").bytes;
    std::string packed = Gzip(text);
    const std::string blank = Gzip(std::string(40'000'000, '\n'));
    for (int i = 0; i < 10; ++i) {
        packed += blank;
    }
    const auto peakKilobytes = [] {
        std::ifstream status("/proc/self/status");
        for (std::string line; std::getline(status, line);) {
            if (line.rfind("VmHWM:", 0) == 0) {
                return std::stol(line.substr(6));
            }
        }
        return 0L;
    };
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak counts from here
    const long before = peakKilobytes();
    UnpackingLimit limit;
    std::size_t epochs = 0;
    UnpackMembers(packed, "blank", limit, [&](FileMember& member) {
        LineCursor lines(member.bytes, member.name);
        epochs = ReadObservations(lines).epochs.size();
    });
    EXPECT_EQ(epochs, 1U);
    EXPECT_LT(peakKilobytes() - before, 50'000);
}

// Bytes that were damaged may leave a text that a reader refuses; the damage is the true reason.
TEST(FileBytes, DamageOfThePackingGoesBeforeWhatCameOfIt) {
    std::string packed = Packed("brdc2420.18n.gz");
    packed.back() = static_cast<char>(packed.back() ^ 1);
    UnpackingLimit limit;
    try {
        UnpackMembers(packed, "x", limit, [](FileMember&) {
            throw InputError(InputFault::kMalformed, "x", 1, "a line that cannot be");
        });
        FAIL() << "was read";
    } catch (const InputError& error) {
        EXPECT_EQ(error.fault(), InputFault::kDamagedPacking);
    }
}

TEST(FileBytes, TarFilesOfOldAndNewKinds) {
    const std::string text = "hello\n";
    EXPECT_EQ(Unpack(Tar(text), "x").at(0).packing, "tar");
    EXPECT_EQ(Unpack(Tar(text), "x").at(0).name, "x(member)");
    EXPECT_EQ(Unpack(Gzip(Tar(text)), "x").at(0).bytes, text);
    EXPECT_EQ(Unpack(Gzip(Tar(text)), "x").at(0).packing, "gzip");
    // Without the mark, as before 1988: the sum of the header's bytes is less by those of the mark.
    std::string old = Tar(text);
    const std::string mark = old.substr(257, 8);
    unsigned sum = 0;
    for (const char c : mark) {
        sum += static_cast<unsigned char>(c);
    }
    old.replace(257, 8, 8, '\0');
    const unsigned told = static_cast<unsigned>(std::stoul(old.substr(148, 6), nullptr, 8));
    char digits[8];
    std::snprintf(digits, sizeof digits, "%06o", told - sum);
    old.replace(148, 6, digits, 6);
    EXPECT_EQ(Unpack(old, "x").at(0).bytes, text);
    old[0] = 'n';
    EXPECT_EQ(Unpack(old, "x").at(0).packing, "plain") << "the sum is wrong";
}

TEST(FileBytes, ArchivesWithinArchivesAreReadToTheLimit) {
    const std::string text = "hello\n";
    EXPECT_EQ(Unpack(Zip(Gzip(text)), "x").at(0).name, "x(member)");
    EXPECT_EQ(Unpack(Zip(Zip(Zip(text))), "x").at(0).bytes, text);
    EXPECT_EQ(FaultOf([&] { Unpack(Zip(Zip(Zip(Zip(text)))), "x"); }), InputFault::kTooLarge);
}

TEST(FileBytes, NothingPackedIsEmpty) {
    EXPECT_EQ(FaultOf([] { Unpack(Gzip(""), "x"); }), InputFault::kEmpty);
}

TEST(FileBytes, InputsAreNotWrittenTo) {
    const std::string path = SpecimenPath("ac660270.18o.Z");
    const auto before = std::filesystem::last_write_time(path);
    const auto folder = std::filesystem::path(path).parent_path();
    const auto count = [&] {
        return std::distance(std::filesystem::directory_iterator(folder), {});
    };
    const auto files = count();
    ReadFile(path);
    EXPECT_EQ(std::filesystem::last_write_time(path), before);
    EXPECT_EQ(count(), files);
}

TEST(FileKind, IsToldByTheFirstLine) {
    const auto kindOf = [](const std::string& name) {
        const FileBytes file = ReadSpecimen(name);
        return RecogniseFile(file.bytes, file.name);
    };
    EXPECT_EQ(kindOf("KOSG0010.95O"), FileKind::kObservation);
    EXPECT_EQ(kindOf("LARM0630.22O"), FileKind::kObservation);
    EXPECT_EQ(kindOf("KMS300DNK_R_20221591000_01H_30S_MO.crx"), FileKind::kCompactObservation);
    EXPECT_EQ(kindOf("aopr0010.17d"), FileKind::kCompactObservation);
    EXPECT_EQ(kindOf("14601736.18n"), FileKind::kNavigation);
    EXPECT_EQ(kindOf("amel0010.21g"), FileKind::kNavigation);
    EXPECT_EQ(kindOf("valid-v4-cnav.rnx"), FileKind::kNavigation);
    EXPECT_EQ(kindOf("Sta21114.sp3.gz"), FileKind::kPreciseOrbit);
    EXPECT_EQ(kindOf("sio06492.sp3"), FileKind::kPreciseOrbit);
    EXPECT_EQ(kindOf("../baselines/ciboure-pasaia/antennas.atx"), FileKind::kAntenna);
}

TEST(FileKind, EverythingElseIsRefusedWithWhatItLooksLike) {
    const auto reasonOf = [](const std::string& bytes) {
        try {
            RecogniseFile(bytes, "x");
        } catch (const InputError& error) {
            EXPECT_EQ(error.fault(), InputFault::kWrongKind);
            return error.reason();
        }
        return std::string("known");
    };
    EXPECT_EQ(reasonOf("<!DOCTYPE html>\n<html>"), "it looks like a web page");
    EXPECT_EQ(reasonOf(std::string("\xb5\x62\x02\x15\0\0\0\1\2\3\4", 11)), "it is a binary file");
    EXPECT_EQ(reasonOf("hello\n"), "the first line is of no format that is read: 'hello'");
    EXPECT_EQ(reasonOf("\x1a"), "there is nothing in it");
    EXPECT_THROW(RecogniseFile("", "x"), InputError);
}

TEST(FileKind, ReadersRefuseOtherKinds) {
    const FileBytes file = ReadSpecimen("14601736.18n");
    EXPECT_EQ(FaultOf([&] { ReadObservations(file.bytes, "x"); }), InputFault::kWrongKind);
}

TEST(TextFields, Numbers) {
    EXPECT_EQ(ParseReal(" 1.5 "), 1.5);
    EXPECT_EQ(ParseReal("-.5D-01"), -0.05);
    EXPECT_EQ(ParseReal("1.5d3"), 1500.0);
    EXPECT_EQ(ParseReal("+2.E+01"), 20.0);
    EXPECT_EQ(ParseReal("1e-999"), 0.0);
    for (const char* text : {"", "   ", "nan", "NaN", "inf", "-inf", "1e999", "1 2", "1.2.3",
                             "0x1p3", "1,5", "--1", "+-1", ".", "-", "e5", "1e"}) {
        EXPECT_FALSE(ParseReal(text).has_value()) << text;
    }
    EXPECT_EQ(ParseInteger("  -7 "), -7);
    EXPECT_EQ(ParseInteger("+5"), 5);
    for (const char* text : {"", " ", "1.0", "1 2", "99999999999", "+", "+-5", "a"}) {
        EXPECT_FALSE(ParseInteger(text).has_value()) << text;
    }
}

TEST(TextFields, Satellites) {
    EXPECT_EQ(ParseSatellite("G 5", GnssSystem::kGps), Gps(5));
    EXPECT_EQ(ParseSatellite(" 05", GnssSystem::kGlonass), Glonass(5));
    EXPECT_EQ(ParseSatellite("C60", GnssSystem::kGps), BeiDou(60));
    for (const char* text : {"", "G1", "G00", "G0x", "X01", "g01", "G  "}) {
        EXPECT_FALSE(ParseSatellite(text, GnssSystem::kGps).has_value()) << text;
    }
}

TEST(TextFields, LinesAreCountedFromOne) {
    const std::string name = "x";
    LineCursor cursor("one\r\n\ntwo\n\x1a", name);
    ASSERT_TRUE(cursor.Next());
    EXPECT_EQ(cursor.line(), "one");
    ASSERT_TRUE(cursor.Next());
    EXPECT_EQ(cursor.line(), "");
    ASSERT_TRUE(cursor.Next());
    EXPECT_EQ(cursor.line(), "two");
    EXPECT_EQ(cursor.number(), 3U);
    EXPECT_TRUE(cursor.terminated());
    EXPECT_FALSE(cursor.Next());
}

// Known instants: week 2111 began on 2020-06-21; GPS time began on 1980-01-06; week 1024 on
// 1999-08-22 and week 2048 on 2019-04-07, the dates of the rollovers.
TEST(GnssTime, CalendarAndWeeks) {
    EXPECT_EQ(FromCalendar({1980, 1, 6, 0, 0, 0.0}), (GpsTime{0, 0.0}));
    EXPECT_EQ(FromCalendar({1999, 8, 22, 0, 0, 0.0}), (GpsTime{1024, 0.0}));
    EXPECT_EQ(FromCalendar({2019, 4, 7, 0, 0, 0.0}), (GpsTime{2048, 0.0}));
    EXPECT_EQ(FromCalendar({2020, 6, 25, 0, 59, 30.0}), (GpsTime{2111, 349170.0}));
    EXPECT_EQ(FromCalendar({2000, 2, 29, 12, 0, 0.0}), (GpsTime{1051, 216000.0}));
    EXPECT_EQ(FromCalendar({2016, 12, 31, 23, 59, 60.0}), FromCalendar({2017, 1, 1, 0, 0, 0.0}));
    for (const CalendarTime& never :
         {CalendarTime{1980, 1, 5, 23, 59, 59.0}, CalendarTime{2001, 2, 29, 0, 0, 0.0},
          CalendarTime{2100, 1, 1, 0, 0, 0.0}, CalendarTime{2020, 0, 1, 0, 0, 0.0},
          CalendarTime{2020, 1, 0, 0, 0, 0.0}, CalendarTime{2020, 1, 1, 24, 0, 0.0},
          CalendarTime{2020, 1, 1, 0, 60, 0.0}, CalendarTime{2020, 1, 1, 0, 0, 61.0},
          CalendarTime{2020, 1, 1, 0, 0, -1.0}, CalendarTime{2020, 1, 1, 0, 0, std::nan("")}}) {
        EXPECT_FALSE(FromCalendar(never).has_value());
    }
}

TEST(GnssTime, EveryDayGoesThereAndBack) {
    for (int day = 0; day < 43000; ++day) {
        const GpsTime time{day / 7, (day % 7) * 86400.0 + 3661.5};
        const CalendarTime calendar = ToCalendar(time);
        ASSERT_EQ(FromCalendar(calendar), time) << day;
    }
}

TEST(GnssTime, Texts) {
    EXPECT_EQ(FormatTime({2111, 349170.0}), "2020-06-25 00:59:30.000");
    EXPECT_EQ(FormatTime({2111, 345659.9996}, 3), "2020-06-25 00:01:00.000");
    EXPECT_EQ(FormatTime({2111, 345659.9994}, 3), "2020-06-25 00:00:59.999");
    EXPECT_EQ(FormatTime({2111, 604799.9}, 0), "2020-06-28 00:00:00");
    EXPECT_EQ(FormatTime({2111, 345629.9890123}, 7), "2020-06-25 00:00:29.9890123");
}

TEST(GnssTime, ShiftsCrossWeeks) {
    EXPECT_EQ(Shifted({2111, 604799.0}, 2.0), (GpsTime{2112, 1.0}));
    EXPECT_EQ(Shifted({2111, 1.0}, -2.0), (GpsTime{2110, 604799.0}));
    EXPECT_EQ(Shifted({2111, 0.0}, -1e-30), (GpsTime{2111, 0.0}));
    EXPECT_EQ(SecondsBetween({2110, 604799.0}, {2112, 1.0}), 604802.0);
}

// Bulletin C of the IERS: 13 s from 1999, 14 s from 2006, 18 s from 2017-01-01 0 h UTC.
TEST(GnssTime, LeapSeconds) {
    const auto at = [](int year, int month, int day, double second = 0.0) {
        return *FromCalendar({year, month, day, 0, 0, second});
    };
    EXPECT_EQ(LeapSecondsAtUtc(at(1980, 1, 6)), 0);
    EXPECT_EQ(LeapSecondsAtUtc(at(1981, 7, 1)), 1);
    EXPECT_EQ(LeapSecondsAtUtc(at(2002, 1, 30)), 13);
    EXPECT_EQ(LeapSecondsAtUtc(at(2005, 12, 31)), 13);
    EXPECT_EQ(LeapSecondsAtUtc(at(2006, 1, 1)), 14);
    EXPECT_EQ(LeapSecondsAtUtc(at(2026, 4, 30)), 18);
    EXPECT_EQ(LeapSecondsAtUtc(Shifted(at(2017, 1, 1), -1.0)), 17);
    EXPECT_EQ(LeapSecondsAtUtc(at(2017, 1, 1)), 18);
    EXPECT_EQ(LeapSecondsAtGps(at(2017, 1, 1, 17.0)), 17);
    EXPECT_EQ(LeapSecondsAtGps(at(2017, 1, 1, 18.0)), 18);
}

TEST(ObservationCodes, Version2FollowsTheCodesOfTheFile) {
    const auto code = [](const char* type, GnssSystem system, std::vector<std::string> types) {
        const auto found = CodeOfRinex2(type, system, types);
        return found ? ToString(*found) : std::string("none");
    };
    const auto gps = GnssSystem::kGps;
    const auto glonass = GnssSystem::kGlonass;
    EXPECT_EQ(code("C1", gps, {"C1", "P2"}), "C1C");
    EXPECT_EQ(code("P1", gps, {"P1", "P2"}), "C1W");
    EXPECT_EQ(code("P2", gps, {"P1", "P2"}), "C2W");
    EXPECT_EQ(code("C2", gps, {"C2"}), "C2X");
    EXPECT_EQ(code("L1", gps, {"C1", "P1"}), "L1C");
    EXPECT_EQ(code("L1", gps, {"P1"}), "L1W");
    EXPECT_EQ(code("L2", gps, {"C1", "C2", "P2"}), "L2W");
    EXPECT_EQ(code("L2", gps, {"C1", "C2"}), "L2X");
    EXPECT_EQ(code("L2", gps, {"L1", "L2"}), "L2W");
    EXPECT_EQ(code("L5", gps, {"C5"}), "L5X");
    EXPECT_EQ(code("L1", glonass, {"C1", "P1"}), "L1C");
    EXPECT_EQ(code("L2", glonass, {"P2"}), "L2P");
    EXPECT_EQ(code("L2", glonass, {"C2"}), "L2C");
    EXPECT_EQ(code("P1", glonass, {"P1"}), "C1P");
    EXPECT_EQ(code("S7", GnssSystem::kGalileo, {}), "S7X");
    EXPECT_EQ(code("C1", GnssSystem::kBeiDou, {}), "C2I");
    EXPECT_EQ(code("L2", GnssSystem::kBeiDou, {}), "L2I");
    EXPECT_EQ(code("L7", GnssSystem::kBeiDou, {}), "L7I");
    EXPECT_EQ(code("LA", gps, {}), "L1C");
    EXPECT_EQ(code("CC", gps, {}), "C2X");
    EXPECT_EQ(code("CD", glonass, {}), "C2C");
    EXPECT_EQ(code("T1", gps, {}), "none");
    EXPECT_EQ(code("L9", gps, {}), "none");
    EXPECT_EQ(code("L", gps, {}), "none");
}

TEST(ObservationCodes, Version3NamesB1IOneWay) {
    const auto code = [](const char* type, double version) {
        const auto found = CodeOfRinex3(type, GnssSystem::kBeiDou, version);
        return found ? ToString(*found) : std::string("none");
    };
    EXPECT_EQ(code("C1I", 3.02), "C2I");
    EXPECT_EQ(code("L1X", 3.02), "L2X");
    EXPECT_EQ(code("L1X", 3.04), "L1X");  // B1C
    EXPECT_EQ(code("C1I", 3.04), "C2I");
    EXPECT_EQ(code("C1P", 4.00), "C1P");
    EXPECT_EQ(code("C2I", 3.04), "C2I");
    EXPECT_EQ(code("c2i", 3.04), "none");
    EXPECT_EQ(code("C2", 3.04), "none");
}

}  // namespace
}  // namespace vornel::io
