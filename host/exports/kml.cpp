#include <cmath>
#include <utility>
#include <vector>

#include "exports/text.h"
#include "exports/writers.h"
#include "exports/xml.h"

namespace vornel::exports {
namespace {

std::string Coordinates(const ExportStation& station) {
    const session::Geodetic place = session::ToGeodetic(station.position);
    return Fixed(place.longitude * 180.0 / M_PI, 10) + "," +
           Fixed(place.latitude * 180.0 / M_PI, 10) + "," + Fixed(place.height, 5);
}

void AddData(pugi::xml_node parent, const char* name, const std::string& value) {
    pugi::xml_node data = parent.append_child("Data");
    AddAttribute(data, "name", name);
    AddText(data, "value", value);
}

std::string Numbers(const double* first, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += i > 0 ? " " : "";
        text += Scientific(first[i], 9);
    }
    return text;
}

// Colours are written alpha, blue, green, red.
void AddStyles(pugi::xml_node document) {
    const auto line = [&](const char* id, const char* colour, const char* width) {
        pugi::xml_node style = document.append_child("Style");
        AddAttribute(style, "id", id);
        pugi::xml_node drawn = style.append_child("LineStyle");
        AddText(drawn, "color", colour);
        AddText(drawn, "width", width);
    };
    line("fixed", "ff2e7d32", "2");
    line("other", "ff00a5ff", "2");
    line("unused", "ff3030d0", "1");
    for (const auto& [id, scale] : {std::pair{"station", "0.8"}, std::pair{"held", "1.2"}}) {
        pugi::xml_node style = document.append_child("Style");
        AddAttribute(style, "id", id);
        AddText(style.append_child("IconStyle"), "scale", scale);
    }
}

void AddStation(pugi::xml_node folder, const ExportStation& station, const std::string& name) {
    pugi::xml_node mark = folder.append_child("Placemark");
    AddText(mark, "name", name);
    AddText(mark, "styleUrl", station.isHeld ? "#held" : "#station");
    pugi::xml_node data = mark.append_child("ExtendedData");
    AddData(data, "ecef_m",
            Fixed(station.position[0], 5) + " " + Fixed(station.position[1], 5) + " " +
                Fixed(station.position[2], 5));
    AddData(data, "held", station.isHeld ? "1" : "0");
    pugi::xml_node point = mark.append_child("Point");
    AddText(point, "altitudeMode", "clampToGround");
    AddText(point, "coordinates", Coordinates(station));
}

void AddVector(pugi::xml_node folder, const ExportSet& set, const ExportVector& vector,
               const std::vector<std::string>& names) {
    pugi::xml_node mark = folder.append_child("Placemark");
    AddText(mark, "name", names[vector.from] + " to " + names[vector.to]);
    const char* style = !vector.isUsed ? "#unused" : vector.kind == "fixed" ? "#fixed" : "#other";
    AddText(mark, "styleUrl", style);
    pugi::xml_node data = mark.append_child("ExtendedData");
    AddData(data, "id", CleanText(vector.id));
    AddData(data, "session", CleanText(vector.session));
    AddData(data, "start_gps_time", IsoTime(vector.start, 0));
    AddData(data, "end_gps_time", IsoTime(vector.end, 0));
    AddData(data, "vector_m",
            Fixed(vector.vector[0], 6) + " " + Fixed(vector.vector[1], 6) + " " +
                Fixed(vector.vector[2], 6));
    AddData(data, "covariance_m2", Numbers(vector.covariance.data(), 9));
    AddData(data, "kind", CleanText(vector.kind));
    AddData(data, "grade", CleanText(vector.grade));
    AddData(data, "used", vector.isUsed ? "1" : "0");
    AddData(data, "bad_loops",
            std::to_string(vector.badLoops) + " of " + std::to_string(vector.loops));
    if (vector.residualNeu) {
        AddData(data, "residual_neu_m", Numbers(vector.residualNeu->data(), 3));
    }
    pugi::xml_node line = mark.append_child("LineString");
    AddText(line, "tessellate", "1");
    AddText(line, "altitudeMode", "clampToGround");
    AddText(line, "coordinates",
            Coordinates(set.stations[vector.from]) + " " + Coordinates(set.stations[vector.to]));
}

}  // namespace

ExportedFile WriteKml(const ExportSet& set) {
    CheckSet(set);
    FittedNames fitted = FitNames(StationNames(set), AnyName("KML"));
    ExportedFile file;
    file.warnings = std::move(fitted.warnings);
    pugi::xml_document tree = NewDocument();
    pugi::xml_node root = tree.append_child("kml");
    AddAttribute(root, "xmlns", "http://www.opengis.net/kml/2.2");
    pugi::xml_node document = root.append_child("Document");
    AddText(document, "name", set.title.empty() ? "GNSS network" : CleanText(set.title));
    std::string description = "Heights are ellipsoidal, in the frame named, not transformed";
    for (const std::string& line : Provenance(set)) {
        description += "\n" + line;
    }
    AddText(document, "description", description);
    AddStyles(document);
    pugi::xml_node stations = document.append_child("Folder");
    AddText(stations, "name", "Stations");
    for (std::size_t s = 0; s < set.stations.size(); ++s) {
        AddStation(stations, set.stations[s], fitted.names[s]);
    }
    pugi::xml_node vectors = document.append_child("Folder");
    AddText(vectors, "name", "Vectors");
    for (const ExportVector& vector : set.vectors) {
        AddVector(vectors, set, vector, fitted.names);
    }
    file.bytes = XmlBytes(tree);
    return file;
}

}  // namespace vornel::exports
