#include <vector>

#include "exports/text.h"
#include "exports/writers.h"
#include "exports/xml.h"

namespace vornel::exports {
namespace {

void AddStation(pugi::xml_node root, const ExportStation& station, const std::string& name) {
    pugi::xml_node node = root.append_child("DnaStation");
    AddText(node, "Name", name);
    AddText(node, "Constraints", station.isHeld ? "CCC" : "FFF");
    AddText(node, "Type", "XYZ");
    pugi::xml_node place = node.append_child("StationCoord");
    AddText(place, "Name", name);
    AddText(place, "XAxis", Fixed(station.position[0], 5));
    AddText(place, "YAxis", Fixed(station.position[1], 5));
    AddText(place, "Height", Fixed(station.position[2], 5));
    AddText(node, "Description", CleanText(station.name));
}

// Despite their names, Sigma** are variances and covariances.
void AddVector(pugi::xml_node root, const ExportSet& set, const ExportVector& vector,
               const std::vector<std::string>& names) {
    const io::GpsTime middle =
        io::Shifted(vector.start, 0.5 * io::SecondsBetween(vector.start, vector.end));
    pugi::xml_node node = root.append_child("DnaMeasurement");
    AddText(node, "Type", "G");
    AddText(node, "Ignore", vector.isUsed ? "" : "*");
    AddText(node, "ReferenceFrame", CleanText(set.frame));
    AddText(node, "Epoch", DayMonthYear(middle));
    AddText(node, "First", names[vector.from]);
    AddText(node, "Second", names[vector.to]);
    for (const char* scale : {"Vscale", "Pscale", "Lscale", "Hscale"}) {
        AddText(node, scale, "1");
    }
    pugi::xml_node line = node.append_child("GPSBaseline");
    AddText(line, "X", Fixed(vector.vector[0], 6));
    AddText(line, "Y", Fixed(vector.vector[1], 6));
    AddText(line, "Z", Fixed(vector.vector[2], 6));
    const Matrix3& c = vector.covariance;
    AddText(line, "SigmaXX", Scientific(c[0], 14));
    AddText(line, "SigmaXY", Scientific(c[1], 14));
    AddText(line, "SigmaXZ", Scientific(c[2], 14));
    AddText(line, "SigmaYY", Scientific(c[4], 14));
    AddText(line, "SigmaYZ", Scientific(c[5], 14));
    AddText(line, "SigmaZZ", Scientific(c[8], 14));
    AddText(node, "Source", CleanText(vector.id));
}

}  // namespace

ExportedFile WriteDynaMl(const ExportSet& set) {
    CheckSet(set);
    ExportedFile file;
    FittedNames fitted = FitNames(StationNames(set), {"DynaML", 20, false, nullptr, false});
    file.warnings = std::move(fitted.warnings);
    pugi::xml_document document = NewDocument();
    for (const std::string& line : Provenance(set)) {
        AddComment(document, line);
    }
    pugi::xml_node root = document.append_child("DnaXmlFormat");
    AddAttribute(root, "type", "Combined File");
    AddAttribute(root, "referenceframe", CleanText(set.frame));
    AddAttribute(root, "epoch", DayMonthYear(set.epoch));
    for (std::size_t s = 0; s < set.stations.size(); ++s) {
        AddStation(root, set.stations[s], fitted.names[s]);
    }
    for (const ExportVector& vector : set.vectors) {
        AddVector(root, set, vector, fitted.names);
    }
    file.bytes = XmlBytes(document);
    return file;
}

}  // namespace vornel::exports
