#include "exports/writers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

#include "exports/sample_set.h"

namespace vornel::exports {
namespace {

using nlohmann::json;
using test::ReadBack;
using test::SampleSet;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

// What marker fields hold when nobody looks: markup, quotes, hyphens, line ends, bytes that are no
// UTF-8, other scripts, and more of it than any format takes.
std::vector<std::string> HostileNames() {
    return {"A&B <c> \"d\" 'e' ]]>-->",
            "Stra\xC3\x9F"
            "e 12-b, \xE6\xB8\xAF\n\x01x",
            "\xFF\xFE broken \xC3", std::string(300, 'x')};
}

ExportSet HostileSet() {
    ExportSet set = SampleSet();
    for (std::size_t s = 0; s < set.stations.size(); ++s) {
        set.stations[s].name = HostileNames()[s];
    }
    set.title = HostileNames()[0];
    set.frame = "ITRF<2014> & more";
    set.sigmaNote = "a--b -- c-->";
    set.inputs[0].name = HostileNames()[1];
    set.vectors[0].id = HostileNames()[0];
    set.vectors[1].session = HostileNames()[1];
    set.vectors[2].id = HostileNames()[2];
    set.stations[1].equipment.antenna = HostileNames()[0];
    return set;
}

// The vectors of a file against those of the set, in the order in which they stand in both. `names`
// of the stations in the file.
void ExpectVectors(const json& read, const ExportSet& set, const std::vector<std::string>& names,
                   bool withUnused, double partOfCovariance) {
    std::vector<const ExportVector*> expected;
    for (const ExportVector& vector : set.vectors) {
        if (vector.isUsed || withUnused) {
            expected.push_back(&vector);
        }
    }
    ASSERT_EQ(read["vectors"].size(), expected.size());
    const std::size_t upper[] = {0, 1, 2, 4, 5, 8};
    for (std::size_t v = 0; v < expected.size(); ++v) {
        const json& found = read["vectors"][v];
        EXPECT_EQ(found["from"], names[expected[v]->from]);
        EXPECT_EQ(found["to"], names[expected[v]->to]);
        const Matrix3& covariance = expected[v]->covariance;
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(found["xyz"][i].get<double>(), expected[v]->vector[i], 1e-6);
        }
        const double size = covariance[0] + covariance[4] + covariance[8];
        for (std::size_t i = 0; i < 6; ++i) {
            EXPECT_NEAR(found["cov"][i].get<double>(), covariance[upper[i]],
                        partOfCovariance * size);
        }
    }
}

void ExpectPositions(const json& read, const ExportSet& set, double tolerance) {
    ASSERT_EQ(read["stations"].size(), set.stations.size());
    for (std::size_t s = 0; s < set.stations.size(); ++s) {
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(read["stations"][s]["xyz"][i].get<double>(), set.stations[s].position[i],
                        tolerance);
        }
    }
}

std::vector<std::string> NamesIn(const json& read) {
    std::vector<std::string> names;
    for (const json& station : read["stations"]) {
        names.push_back(station["name"]);
    }
    return names;
}

std::string MessageOf(const ExportSet& set, Format format) {
    try {
        WriteExport(set, format);
    } catch (const ExportError& error) {
        return error.what();
    }
    return "";
}

// --- each format comes back

TEST(Exports, GamaLocalComesBack) {
    const ExportSet set = SampleSet();
    const ExportedFile file = WriteGamaLocal(set);
    const json read = ReadBack("gama", file.bytes);
    ExpectPositions(read, set, 1e-5);
    ExpectVectors(read, set, {"WTZR", "TOW2", "SUVA", "SAMO"}, false, 1e-12);
    EXPECT_EQ(read["stations"][0]["held"], true);
    EXPECT_EQ(read["stations"][1]["held"], false);
    EXPECT_THAT(file.warnings, ElementsAre(HasSubstr("session1:4 is not used and left out")));
    const std::string text = read["text"];
    EXPECT_THAT(text, HasSubstr("Left out, because the adjustment did: vector session1:4"));
    EXPECT_THAT(file.bytes, HasSubstr("adj=\"xyz\""));

    ExportSet free = set;
    free.stations[0].isHeld = false;
    EXPECT_THAT(WriteGamaLocal(free).bytes, HasSubstr("adj=\"XYZ\""));
    EXPECT_EQ(ReadBack("gama", WriteGamaLocal(free).bytes)["stations"][0]["held"], false);
}

TEST(Exports, DynaMlComesBack) {
    const ExportSet set = SampleSet();
    const ExportedFile file = WriteDynaMl(set);
    const json read = ReadBack("dynaml", file.bytes);
    ExpectPositions(read, set, 1e-5);
    ExpectVectors(read, set, {"WTZR", "TOW2", "SUVA", "SAMO"}, true, 1e-12);
    EXPECT_THAT(file.warnings, IsEmpty());
    EXPECT_EQ(read["vectors"][4]["ignored"], true);
    EXPECT_EQ(read["vectors"][3]["ignored"], false);
    EXPECT_EQ(read["vectors"][0]["epoch"], "25.06.2020");
    EXPECT_EQ(read["frame"], "ITRF2014");
    EXPECT_EQ(read["stations"][0]["held"], true);
}

TEST(Exports, GvxComesBack) {
    const ExportSet set = SampleSet();
    const ExportedFile file = WriteGvx(set);
    const json read = ReadBack("gvx", file.bytes);
    ExpectPositions(read, set, 1e-5);
    ExpectVectors(read, set, {"WTZR", "TOW2", "SUVA", "SAMO"}, false, 1e-7);
    EXPECT_EQ(read["reference_system"], "153");
    EXPECT_THAT(file.warnings, ElementsAre(HasSubstr("session1:4 is not used and left out")));
    // 18 leap seconds behind GPS time.
    EXPECT_EQ(read["vectors"][0]["start"], "2020-06-24T23:59:42.00");
    EXPECT_NEAR(read["stations"][0]["geodetic"][0].get<double>(), 49.144, 1e-9);
    EXPECT_NEAR(read["stations"][3]["geodetic"][1].get<double>(), -171.7384, 1e-9);
    EXPECT_NEAR(read["stations"][0]["geodetic"][2].get<double>(), 666.0319, 1e-4);
    // Day 177 of a leap year.
    EXPECT_NEAR(read["stations"][0]["epoch"].get<double>(),
                2020.0 + (176.0 + 1785.0 / 86400) / 366.0, 1e-4);
}

TEST(Exports, GvxAsksForTheNumberOfItsFrame) {
    ExportSet set = SampleSet();
    set.referenceSystem.reset();
    EXPECT_THAT(MessageOf(set, Format::kGvx), HasSubstr("datum number"));
    EXPECT_EQ(MessageOf(set, Format::kDynaMl), "");
}

TEST(Exports, SinexComesBackWithTheWholeCovariance) {
    const ExportSet set = SampleSet();
    const ExportedFile file = WriteSinex(set);
    const json read = ReadBack("sinex", file.bytes);
    ExpectPositions(read, set, 1e-7);
    EXPECT_EQ(NamesIn(read), (std::vector<std::string>{"WTZR", "TOW2", "SUVA", "SAMO"}));
    for (std::size_t i = 0; i < 12; ++i) {
        for (std::size_t j = 0; j <= i; ++j) {
            const double tight = i % 3 == j % 3 ? 1e-12 : 0.0;
            EXPECT_NEAR(read["matrix"][i][j].get<double>(),
                        set.positionCovariance[i / 3 * 4 + j / 3][3 * (i % 3) + j % 3] + tight,
                        1e-19);
        }
    }
    EXPECT_EQ(read["stations"][0]["held"], true);
    EXPECT_EQ(read["stations"][2]["held"], false);
    EXPECT_THAT(file.bytes, HasSubstr("%=SNX 2.02 SUR 20:183:45005 SUR 20:177:00000 20:177:03570 P "
                                      "00012 0 S\n"));
    EXPECT_THAT(file.bytes,
                HasSubstr(" WTZR  A --------- P WTZR                    12 52 44.4  49  8 "
                          "38.4   666.0\n"));
    EXPECT_THAT(file.bytes,
                HasSubstr(" SUVA  A --------- P SUVA                   178 25 32.2 -18  8 "
                          "56.0    81.1\n"));
    EXPECT_THAT(file.bytes,
                HasSubstr(" SAMO  A --------- P SAMO                   188 15 41.8 -13 50 "
                          "57.5    76.9\n"));
    EXPECT_THAT(file.bytes, HasSubstr("+SOLUTION/APRIORI\n"));
    EXPECT_THAT(file.bytes,
                HasSubstr(" WTZR  A ---- P 20:177:00000 20:177:03570 LEIAR25.R3      LEIT "
                          "09300\n"));

    ExportSet free = set;
    free.stations[0].isHeld = false;
    free.constraint = Constraint::kLoose;
    free.positionCovariance[0] = free.positionCovariance[5];
    const ExportedFile loose = WriteSinex(free);
    EXPECT_THAT(loose.bytes, HasSubstr(" 00012 2 S\n"));
    EXPECT_THAT(loose.bytes, Not(HasSubstr("APRIORI")));
    EXPECT_NEAR(ReadBack("sinex", loose.bytes)["matrix"][4][3].get<double>(),
                free.positionCovariance[5][3], 1e-19);
}

TEST(Exports, SinexNeedsCovariances) {
    ExportSet set = SampleSet();
    set.positionCovariance[5] = {};
    EXPECT_THAT(MessageOf(set, Format::kSinex), HasSubstr("station TOW2 has no covariance"));
    set.positionCovariance.clear();
    EXPECT_THAT(MessageOf(set, Format::kSinex), HasSubstr("there are none"));
}

TEST(Exports, StarNetComesBack) {
    const ExportSet set = SampleSet();
    const ExportedFile file = WriteStarNet(set);
    const json read = ReadBack("starnet", file.bytes);
    ExpectVectors(read, set, {"WTZR", "TOW2", "SUVA", "SAMO"}, false, 1e-12);
    EXPECT_THAT(file.bytes, HasSubstr("# not used: G1 SAMO-WTZR "));
    EXPECT_THAT(file.bytes, HasSubstr("# PH WTZR 49.1440000000 12.8790000000 666.03190 ! ! !"));
}

TEST(Exports, CsvComesBack) {
    const ExportSet set = SampleSet();
    const ExportedFile file = WriteCsv(set);
    const json read = ReadBack("csv", file.bytes);
    ExpectVectors(read, set, {"WTZR", "TOW2", "SUVA", "SAMO"}, true, 1e-12);
    const json& first = read["vectors"][0];
    EXPECT_EQ(first["start"], "2020-06-25T00:00:00");
    EXPECT_EQ(first["end"], "2020-06-25T00:59:30");
    EXPECT_EQ(first["ratio"], "7.60");
    EXPECT_EQ(first["sigma_scale"], "2.5000");
    EXPECT_EQ(first["residual_e"], "-0.00200");
    EXPECT_EQ(first["w"], "3.250");
    EXPECT_EQ(first["used"], "1");
    EXPECT_EQ(read["vectors"][4]["used"], "0");
    EXPECT_EQ(first["frame"], "ITRF2014");
    EXPECT_EQ(first["sigma_kind"], "calibrated");
    EXPECT_EQ(first["inputs_sha256"], std::string(64, 'a') + ";" + std::string(64, 'b'));
    EXPECT_EQ(read["vectors"][1]["inputs_sha256"], std::string(64, 'b'));
    ExportSet bare = set;
    bare.vectors[0].residualNeu.reset();
    bare.vectors[0].ratio.reset();
    EXPECT_EQ(ReadBack("csv", WriteCsv(bare).bytes)["vectors"][0]["residual_n"], "");
}

// --- maps

// Longitude, latitude and height of the features that GDAL finds, in their order.
std::vector<std::vector<Vector3>> ReadMap(const std::string& name, const std::string& bytes) {
    const test::TemporaryFolder folder;
    const std::string path = folder.Write(name, bytes);
    std::vector<std::vector<Vector3>> features;
    // A KML file has a layer for each folder.
    const std::string layers = name == "map.kml" ? "Stations Vectors" : "map";
    for (const std::string layer : {"Stations", "Vectors", "map"}) {
        if (layers.find(layer) == std::string::npos) {
            continue;
        }
        const test::CommandAnswer answer =
            test::RunShell("ogr2ogr -f CSV /vsistdout/ " + path + " -lco GEOMETRY=AS_WKT " + layer);
        EXPECT_EQ(answer.code, 0) << answer.out;
        for (std::size_t at = 0; (at = answer.out.find(" Z ", at)) != std::string::npos;) {
            at += 3;
            const std::size_t end = answer.out.find('"', at);
            std::string text = answer.out.substr(at, end - at);
            std::vector<Vector3> points;
            for (char& c : text) {
                c = c == '(' || c == ')' || c == ',' ? ' ' : c;
            }
            std::istringstream numbers(text);
            Vector3 point{};
            while (numbers >> point[0] >> point[1] >> point[2]) {
                points.push_back(point);
            }
            features.push_back(points);
        }
    }
    return features;
}

void ExpectPlace(const Vector3& read, const Vector3& position) {
    const Vector3 back = test::FromGeodetic(read[1], read[0], read[2]);
    EXPECT_LT(session::Length(session::Minus(back, position)), 1e-4);
}

TEST(Exports, MapsComeBackThroughGdal) {
    if (!test::IsInstalled("ogr2ogr")) {
        GTEST_SKIP() << "ogr2ogr (gdal-bin) is not installed: maps are not read by a consumer";
    }
    const ExportSet set = SampleSet();
    const auto geojson = ReadMap("map.geojson", WriteGeoJson(set).bytes);
    const auto kml = ReadMap("map.kml", WriteKml(set).bytes);
    for (const auto& features : {geojson, kml}) {
        ASSERT_EQ(features.size(), 10u);
        for (std::size_t s = 0; s < 4; ++s) {
            ASSERT_EQ(features[s].size(), 1u);
            ExpectPlace(features[s][0], set.stations[s].position);
        }
        for (std::size_t v = 0; v < 6; ++v) {
            ASSERT_GE(features[4 + v].size(), 2u);
            ExpectPlace(features[4 + v].front(), set.stations[set.vectors[v].from].position);
            ExpectPlace(features[4 + v].back(), set.stations[set.vectors[v].to].position);
        }
    }
    // From Samoa to Fiji over the meridian of 180 degrees, from Townsville to Samoa likewise.
    ASSERT_EQ(geojson[6].size(), 4u);
    EXPECT_EQ(geojson[6][1][0], -180.0);
    EXPECT_EQ(geojson[6][2][0], 180.0);
    EXPECT_EQ(geojson[6][1][1], geojson[6][2][1]);
    EXPECT_GT(geojson[6][1][1], -18.1489);
    EXPECT_LT(geojson[6][1][1], -13.8493);
    EXPECT_EQ(geojson[9].size(), 4u);
    EXPECT_EQ(geojson[7].size(), 2u);
    EXPECT_EQ(kml[6].size(), 2u);
}

TEST(Exports, MapsKeepHostileNames) {
    if (!test::IsInstalled("ogr2ogr")) {
        GTEST_SKIP() << "ogr2ogr (gdal-bin) is not installed: maps are not read by a consumer";
    }
    EXPECT_EQ(ReadMap("map.geojson", WriteGeoJson(HostileSet()).bytes).size(), 10u);
    EXPECT_EQ(ReadMap("map.kml", WriteKml(HostileSet()).bytes).size(), 10u);
}

TEST(Exports, GeoJsonTellsWhatItsCoordinatesAre) {
    const json map = json::parse(WriteGeoJson(SampleSet()).bytes);
    EXPECT_EQ(map["type"], "FeatureCollection");
    EXPECT_EQ(map["about"]["frame"], "ITRF2014");
    EXPECT_EQ(map["about"]["epoch_gps_time"], "2020-06-25T00:29:45");
    EXPECT_EQ(map["about"]["covariances"], "calibrated");
    EXPECT_EQ(map["about"]["inputs"][1]["sha256"], std::string(64, 'b'));
    const json& vector = map["features"][8]["properties"];
    EXPECT_EQ(vector["used"], false);
    EXPECT_EQ(vector["bad_loops"], 2);
    EXPECT_EQ(vector["kind"], "float");
    EXPECT_EQ(vector["covariance_m2"].size(), 9u);
    EXPECT_EQ(vector["covariance_m2"][1].get<double>(), SampleSet().vectors[4].covariance[1]);
    EXPECT_EQ(map["features"][0]["properties"]["held"], true);
    EXPECT_EQ(map["features"][0]["properties"]["vectors"], 2);  // the third is not used
}

// --- schemas

class Schema : public ::testing::TestWithParam<std::pair<Format, const char*>> {};

TEST_P(Schema, HoldsForTheFile) {
    const auto& [format, schema] = GetParam();
    const std::filesystem::path path =
        test::ProjectFolder().parent_path() / "shared/formats" / schema;
    if (!std::filesystem::exists(path)) {
        GTEST_SKIP() << "no schema at " << path.string() << ": the file is not validated";
    }
    if (!test::IsInstalled("xmllint")) {
        GTEST_SKIP() << "xmllint (libxml2-utils) is not installed: the file is not validated";
    }
    ExportSet free = SampleSet();
    free.stations[0].isHeld = false;
    for (const ExportSet& set : {SampleSet(), HostileSet(), free}) {
        const test::TemporaryFolder folder;
        const std::string file = folder.Write("file", WriteExport(set, format).bytes);
        const test::CommandAnswer answer =
            test::RunShell("xmllint --noout --schema '" + path.string() + "' " + file);
        EXPECT_EQ(answer.code, 0) << answer.out;
    }
}

INSTANTIATE_TEST_SUITE_P(Exports, Schema,
                         ::testing::Values(std::pair{Format::kGamaLocal, "gama-local.xsd"},
                                           std::pair{Format::kDynaMl, "DynaML.xsd"}),
                         [](const auto& test) { return FormatName(test.param.first); });

// --- names

TEST(Exports, HostileNamesComeBackAndAreToldOf) {
    const ExportSet set = HostileSet();
    const std::vector<std::string> clean{"A&B <c> \"d\" 'e' ]]>-->",
                                         "Stra\xC3\x9F"
                                         "e 12-b, \xE6\xB8\xAF  x",
                                         "\xEF\xBF\xBD\xEF\xBF\xBD broken \xEF\xBF\xBD",
                                         std::string(300, 'x')};

    const ExportedFile gvx = WriteGvx(set);
    const json points = ReadBack("gvx", gvx.bytes);
    EXPECT_EQ(NamesIn(points), clean);
    ExpectVectors(points, set, clean, false, 1e-7);
    EXPECT_THAT(gvx.warnings, SizeIs(3));  // two names with broken characters, one unused vector

    ExpectVectors(ReadBack("csv", WriteCsv(set).bytes), set, clean, true, 1e-12);

    const ExportedFile dynaml = WriteDynaMl(set);
    const json stations = ReadBack("dynaml", dynaml.bytes);
    EXPECT_THAT(dynaml.warnings, SizeIs(4));
    EXPECT_EQ(NamesIn(stations)[0], "A&B_<c>_\"d\"_'e'_]]>-");
    EXPECT_EQ(NamesIn(stations)[3], std::string(20, 'x'));
    EXPECT_EQ(stations["stations"][0]["description"], clean[0]);
    ExpectVectors(stations, set, NamesIn(stations), true, 1e-12);

    const json gama = ReadBack("gama", WriteGamaLocal(set).bytes);
    ExpectVectors(gama, set, NamesIn(gama), false, 1e-12);

    const ExportedFile starNet = WriteStarNet(set);
    const json vectors = ReadBack("starnet", starNet.bytes);
    ExpectVectors(vectors, set,
                  {"A_B__c___d___e_", "Stra_e_12_b____", "___broken__", "xxxxxxxxxxxxxxx"}, false,
                  1e-12);
    EXPECT_THAT(starNet.warnings, SizeIs(4));

    const ExportedFile sinex = WriteSinex(set);
    const json sites = ReadBack("sinex", sinex.bytes);
    EXPECT_EQ(sites["stations"][0]["code"], "ABCD");
    EXPECT_EQ(sites["stations"][1]["code"], "STRA");
    EXPECT_EQ(sites["stations"][3]["code"], "XXXX");
    EXPECT_THAT(sinex.warnings, Contains(HasSubstr("22 characters stand in SITE/ID")));
}

TEST(Exports, NamesThatBecomeTheSameAreTold) {
    ExportSet set = SampleSet();
    set.stations[0].name = "WTZR00DEU";
    set.stations[1].name = "WTZR10DEU";
    set.stations[2].name = "WTZR";
    set.stations[3].name = "WTZ1";
    const ExportedFile file = WriteSinex(set);
    const json read = ReadBack("sinex", file.bytes);
    EXPECT_EQ(read["stations"][2]["code"], "WTZR");  // those that fit keep their names
    EXPECT_EQ(read["stations"][3]["code"], "WTZ1");
    EXPECT_EQ(read["stations"][0]["code"], "WTZ2");
    EXPECT_EQ(read["stations"][1]["code"], "WTZ3");
    EXPECT_EQ(NamesIn(read)[0], "WTZR00DEU");
    EXPECT_THAT(file.warnings, ElementsAre("SINEX: station WTZR00DEU is called WTZ2",
                                           "SINEX: station WTZR10DEU is called WTZ3"));
    EXPECT_THAT(file.bytes, HasSubstr(" SINEX: station WTZR00DEU is called WTZ2\n"));
}

TEST(Exports, AStationWithoutANameGetsOne) {
    ExportSet set = SampleSet();
    set.stations[1].name = "";
    set.stations[2].name = "---";
    for (const Format format : kAllFormats) {
        const ExportedFile file = WriteExport(set, format);
        EXPECT_THAT(file.warnings, Contains(HasSubstr("is called S1"))) << FormatName(format);
    }
    EXPECT_EQ(ReadBack("sinex", WriteSinex(set).bytes)["stations"][2]["code"], "S2  ");
}

// --- what every file says, and sets that no file can be made of

TEST(Exports, EveryFileSaysWhereItsNumbersComeFrom) {
    const ExportSet set = SampleSet();
    for (const Format format : kAllFormats) {
        const std::string bytes = WriteExport(set, format).bytes;
        EXPECT_THAT(bytes, HasSubstr("ITRF2014")) << FormatName(format);
        EXPECT_THAT(bytes, HasSubstr("calibrated")) << FormatName(format);
        EXPECT_THAT(bytes, HasSubstr(std::string(64, 'a'))) << FormatName(format);
        EXPECT_THAT(bytes, HasSubstr(std::string(64, 'b'))) << FormatName(format);
        if (format != Format::kCsv) {
            EXPECT_THAT(bytes, HasSubstr("times 2.5")) << FormatName(format);
            EXPECT_THAT(bytes, HasSubstr("mark to mark")) << FormatName(format);
        }
    }
}

TEST(Exports, TheSameSetGivesTheSameBytes) {
    std::set<std::string> all;
    for (const Format format : kAllFormats) {
        const std::string bytes = WriteExport(SampleSet(), format).bytes;
        EXPECT_EQ(bytes, WriteExport(SampleSet(), format).bytes);
        all.insert(bytes);
        EXPECT_EQ(FormatOfName(FormatName(format)), format);
        EXPECT_EQ(FileExtension(format)[0], '.');
    }
    EXPECT_THAT(all, SizeIs(8));
    EXPECT_FALSE(FormatOfName("shapefile"));
}

TEST(Exports, SetsThatDoNotFitTogetherAreRefused) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const auto refused = [](auto change, const char* why) {
        ExportSet set = SampleSet();
        change(set);
        for (const Format format : kAllFormats) {
            EXPECT_THAT(MessageOf(set, format), HasSubstr(why)) << FormatName(format);
        }
    };
    refused([](ExportSet& set) { set.vectors[2].to = 4; }, "does not join two stations");
    refused([](ExportSet& set) { set.vectors[2].to = set.vectors[2].from; }, "does not join two");
    refused([&](ExportSet& set) { set.vectors[0].vector[1] = kNaN; }, "is not finite");
    refused([&](ExportSet& set) { set.vectors[0].covariance[7] = kNaN; }, "is not finite");
    refused([](ExportSet& set) { set.vectors[1].covariance[4] = -1e-6; }, "not positive definite");
    refused([](ExportSet& set) { set.vectors[1].id = set.vectors[0].id; },
            "two vectors have the id");
    refused([](ExportSet& set) { set.stations[1].name = "WTZR"; }, "two stations are called WTZR");
    refused([](ExportSet& set) { set.stations[1].position = {}; }, "no position on the earth");
    refused([&](ExportSet& set) { set.vectors[3].ratio = kNaN; }, "quality figure");
    refused([](ExportSet& set) { set.vectors[3].end.week = 1000; }, "no time of observation");
    refused([](ExportSet& set) { set.vectors[3].inputs = {9}; }, "an input that is not in the set");
    refused([](ExportSet& set) { set.createdUtc.month = 13; }, "no time of creation");
    refused([](ExportSet& set) { set.epoch.week = -1; }, "positions have no epoch");
    refused([](ExportSet& set) { set.positionCovariance.pop_back(); }, "is not that of 4 stations");
    refused([&](ExportSet& set) { set.positionCovariance[3][3] = kNaN; }, "is not finite");
}

}  // namespace
}  // namespace vornel::exports
