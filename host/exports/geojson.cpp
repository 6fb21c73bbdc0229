#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "exports/text.h"
#include "exports/writers.h"

namespace vornel::exports {
namespace {

using Json = nlohmann::ordered_json;

struct Place {
    double longitude = 0.0;  // degrees
    double latitude = 0.0;   // degrees
    double height = 0.0;     // m
};

Place PlaceOf(const ExportStation& station) {
    const session::Geodetic place = session::ToGeodetic(station.position);
    return {place.longitude * 180.0 / M_PI, place.latitude * 180.0 / M_PI, place.height};
}

double Rounded(double value, double digits) {
    return std::round(value * digits) / digits;
}

// To 10 decimals of a degree and 5 of a metre: a hundredth of a millimetre.
Json Coordinates(const Place& place) {
    return {Rounded(place.longitude, 1e10), Rounded(place.latitude, 1e10),
            Rounded(place.height, 1e5)};
}

// A line that crosses the meridian of 180 degrees is cut there (RFC 7946, 3.1.9).
Json LineBetween(const Place& from, const Place& to) {
    if (std::abs(to.longitude - from.longitude) <= 180.0) {
        return {{"type", "LineString"}, {"coordinates", {Coordinates(from), Coordinates(to)}}};
    }
    const double side = from.longitude > 0.0 ? 180.0 : -180.0;
    const double reach = to.longitude + 2.0 * side - from.longitude;
    const double part = reach == 0.0 ? 0.5 : (side - from.longitude) / reach;
    const Place here{side, from.latitude + part * (to.latitude - from.latitude),
                     from.height + part * (to.height - from.height)};
    const Place there{-side, here.latitude, here.height};
    return {{"type", "MultiLineString"},
            {"coordinates",
             {{Coordinates(from), Coordinates(here)}, {Coordinates(there), Coordinates(to)}}}};
}

Json OrNull(const std::optional<double>& value) {
    return value ? Json(*value) : Json(nullptr);
}

Json Numbers(const double* first, std::size_t count) {
    Json list = Json::array();
    for (std::size_t i = 0; i < count; ++i) {
        list.push_back(first[i]);
    }
    return list;
}

Json StationFeature(const ExportSet& set, std::size_t s, const std::string& name) {
    const ExportStation& station = set.stations[s];
    std::size_t vectors = 0;
    for (const ExportVector& vector : set.vectors) {
        vectors += vector.isUsed && (vector.from == s || vector.to == s) ? 1 : 0;
    }
    Json properties = {{"feature", "station"},     {"name", name},
                       {"x", station.position[0]}, {"y", station.position[1]},
                       {"z", station.position[2]}, {"held", station.isHeld},
                       {"vectors", vectors}};
    if (!set.positionCovariance.empty()) {
        const Matrix3& c = set.positionCovariance[s * set.stations.size() + s];
        properties["covariance_m2"] = Numbers(c.data(), c.size());
    }
    return {{"type", "Feature"},
            {"geometry", {{"type", "Point"}, {"coordinates", Coordinates(PlaceOf(station))}}},
            {"properties", properties}};
}

Json VectorFeature(const ExportSet& set, const ExportVector& vector,
                   const std::vector<std::string>& names) {
    Json properties = {
        {"feature", "vector"},
        {"id", CleanText(vector.id)},
        {"from", names[vector.from]},
        {"to", names[vector.to]},
        {"session", CleanText(vector.session)},
        {"start_gps_time", IsoTime(vector.start, 0)},
        {"end_gps_time", IsoTime(vector.end, 0)},
        {"vector_m", Numbers(vector.vector.data(), 3)},
        {"covariance_m2", Numbers(vector.covariance.data(), 9)},
        {"kind", CleanText(vector.kind)},
        {"grade", CleanText(vector.grade)},
        {"ratio", OrNull(vector.ratio)},
        {"sigma_scale", vector.sigmaScale},
        {"residual_neu_m",
         vector.residualNeu ? Numbers(vector.residualNeu->data(), 3) : Json(nullptr)},
        {"statistic", OrNull(vector.statistic)},
        {"loops", vector.loops},
        {"bad_loops", vector.badLoops},
        {"used", vector.isUsed}};
    return {{"type", "Feature"},
            {"geometry",
             LineBetween(PlaceOf(set.stations[vector.from]), PlaceOf(set.stations[vector.to]))},
            {"properties", properties}};
}

}  // namespace

ExportedFile WriteGeoJson(const ExportSet& set) {
    CheckSet(set);
    FittedNames fitted = FitNames(StationNames(set), AnyName("GeoJSON"));
    ExportedFile file;
    file.warnings = std::move(fitted.warnings);
    Json inputs = Json::array();
    for (const InputFile& input : set.inputs) {
        inputs.push_back({{"name", CleanText(input.name)}, {"sha256", CleanText(input.sha256)}});
    }
    Json features = Json::array();
    for (std::size_t s = 0; s < set.stations.size(); ++s) {
        features.push_back(StationFeature(set, s, fitted.names[s]));
    }
    for (const ExportVector& vector : set.vectors) {
        features.push_back(VectorFeature(set, vector, fitted.names));
    }
    const Json document = {
        {"type", "FeatureCollection"},
        {"about",
         {{"title", CleanText(set.title)},
          {"software", CleanText(set.software.name + " " + set.software.version)},
          {"created_utc", IsoTime(set.createdUtc)},
          {"frame", CleanText(set.frame)},
          {"epoch_gps_time", IsoTime(set.epoch, 0)},
          {"coordinates",
           "longitude, latitude, ellipsoidal height in the frame named, not transformed"},
          {"vectors", "base to rover, mark to mark, earth-centred, earth-fixed"},
          {"covariances", SigmaKindName(set.sigmaKind)},
          {"covariances_note", CleanText(set.sigmaNote)},
          {"inputs", inputs}}},
        {"features", features}};
    file.bytes = document.dump(1) + "\n";
    return file;
}

}  // namespace vornel::exports
