#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "exports/text.h"
#include "exports/writers.h"
#include "exports/xml.h"

namespace vornel::exports {
namespace {

std::string OrUnknown(const std::string& text) {
    const std::string clean = CleanText(text);
    return clean.empty() ? "UNKNOWN" : clean;
}

// The format's times are those of UTC.
std::string UtcTime(const io::GpsTime& time) {
    return IsoTime(io::Shifted(time, -io::LeapSecondsAtGps(time)), 2);
}

std::string Numbered(const char* letter, std::size_t index) {
    return letter + std::to_string(index + 1);
}

void AddUnit(pugi::xml_node parent, const char* name, const char* unit, const char* digits) {
    pugi::xml_node node = parent.append_child(name);
    AddText(node, "NAME", unit);
    AddText(node, "SIGNIFICANT_DIGITS", digits);
    AddText(node, "CONVERSION_FACTOR", "1");
}

void AddHead(pugi::xml_node root, const ExportSet& set, const std::string& system) {
    const std::string created = IsoTime(set.createdUtc) + ".00";
    pugi::xml_node source = root.append_child("SOURCE_DATA");
    AddText(source, "NAME", OrUnknown(set.title));
    AddText(source, "CREATED_DATE", created);
    pugi::xml_node application = source.append_child("APPLICATION");
    AddText(application, "NAME", CleanText(set.software.name));
    AddText(application, "VERSION", CleanText(set.software.version));
    pugi::xml_node converted = source.append_child("CONVERTED_BY");
    AddText(converted, "SOFTWARE_NAME", CleanText(set.software.name));
    AddText(converted, "VERSION", CleanText(set.software.version));
    if (!set.software.url.empty()) {
        AddText(converted, "SOFTWARE_URL", CleanText(set.software.url));
    }
    AddText(converted, "CONVERTED_DATE", created);

    io::GpsTime start = set.epoch, end = set.epoch;
    for (const ExportVector& vector : set.vectors) {
        start = std::min(start, vector.start);
        end = std::max(end, vector.end);
    }
    pugi::xml_node project = root.append_child("PROJECT_INFORMATION");
    AddText(project, "TITLE", OrUnknown(set.title));
    if (!set.email.empty()) {
        AddText(project, "EMAIL_ADDRESS", CleanText(set.email));
    }
    AddText(project, "PARTY_CHIEF", OrUnknown(set.observer));
    AddText(project, "AGENCY", OrUnknown(set.agency));
    AddText(project, "START_DATE", UtcTime(start));
    AddText(project, "END_DATE", UtcTime(end));
    std::string remark;
    for (const std::string& line : Provenance(set)) {
        remark += (remark.empty() ? "" : "; ") + line;
    }
    AddText(project, "REMARK", remark + "; times of observation are UTC");

    pugi::xml_node reference = root.append_child("REFERENCE_SYSTEM");
    AddAttribute(reference, "ID", system);
    AddText(reference, "NAME", OrUnknown(set.frame));
    AddUnit(reference, "LINEAR_UNIT", "meter", "5");
    AddUnit(reference, "ANGULAR_UNIT", "degree", "10");
}

void AddEquipment(pugi::xml_node root, const StationEquipment& equipment, std::size_t s) {
    pugi::xml_node node = root.append_child("EQUIPMENT");
    AddAttribute(node, "ID", Numbered("E", s));
    pugi::xml_node receiver = node.append_child("RECEIVER");
    AddText(receiver, "TYPE", OrUnknown(equipment.receiver));
    AddText(receiver, "SERIAL_NUMBER", OrUnknown(equipment.receiverSerial));
    AddText(receiver, "FIRMWARE_VERSION", OrUnknown(equipment.firmware));
    pugi::xml_node antenna = node.append_child("ANTENNA");
    AddText(antenna, "TYPE", OrUnknown(equipment.antenna));
    AddText(antenna, "SERIAL_NUMBER", OrUnknown(equipment.antennaSerial));
}

void AddPoint(pugi::xml_node root, const ExportSet& set, std::size_t s, const std::string& name,
              const std::string& system) {
    const ExportStation& station = set.stations[s];
    pugi::xml_node node = root.append_child("POINT");
    AddAttribute(node, "ID", Numbered("P", s));
    AddText(node, "NAME", name);
    AddText(node, "EQUIPMENT_ID", Numbered("E", s));
    AddText(node, "ARP_HEIGHT", Fixed(station.equipment.antennaHeight, 4));
    AddText(node, "POINT_TYPE", "MARK");
    pugi::xml_node place = node.append_child("COORDINATES");
    AddText(place, "REFERENCE_SYSTEM_ID", system);
    AddText(place, "EPOCH", Fixed(DecimalYear(set.epoch), 4));
    const session::Geodetic geodetic = session::ToGeodetic(station.position);
    pugi::xml_node angles = place.append_child("GEODETIC_COORDINATES");
    AddText(angles, "LATITUDE", Fixed(geodetic.latitude * 180.0 / M_PI, 10));
    AddText(angles, "LONGITUDE", Fixed(geodetic.longitude * 180.0 / M_PI, 10));
    AddText(angles, "ELLIPSOIDAL_HEIGHT", Fixed(geodetic.height, 5));
    pugi::xml_node axes = place.append_child("GEOCENTRIC_COORDINATES");
    AddText(axes, "X", Fixed(station.position[0], 5));
    AddText(axes, "Y", Fixed(station.position[1], 5));
    AddText(axes, "Z", Fixed(station.position[2], 5));
}

void AddVector(pugi::xml_node root, const ExportSet& set, const ExportVector& vector,
               std::size_t number) {
    pugi::xml_node node = root.append_child("GNSS_VECTOR");
    AddAttribute(node, "ID", Numbered("V", number));
    AddText(node, "INITIAL_POINT_ID", Numbered("P", vector.from));
    AddText(node, "TERMINAL_POINT_ID", Numbered("P", vector.to));
    AddText(node, "SURVEY_SETUP_ID", "S1");
    pugi::xml_node time = node.append_child("OBSERVATION_TIME");
    AddText(time, "START", UtcTime(vector.start));
    AddText(time, "END", UtcTime(vector.end));
    pugi::xml_node quality = node.append_child("QUALITY_CONTROL");
    if (vector.epochs > 0) {
        AddText(quality, "EPOCHS_USED", std::to_string(vector.epochs));
    }
    if (vector.elevationMask) {
        AddText(quality.append_child("MASK"), "ELEVATION", Fixed(*vector.elevationMask, 1));
    }
    if (vector.rms) {
        AddText(quality, "RMS", Fixed(*vector.rms, 5));
    }
    pugi::xml_node orbit = quality.append_child("ORBIT");
    AddText(orbit, "TYPE", OrUnknown(set.orbitType));
    AddText(orbit, "SOURCE", OrUnknown(set.orbitSource));
    pugi::xml_node deltas = node.append_child("ECEF_DELTAS");
    AddText(deltas, "DX", Fixed(vector.vector[0], 6));
    AddText(deltas, "DY", Fixed(vector.vector[1], 6));
    AddText(deltas, "DZ", Fixed(vector.vector[2], 6));
    const Matrix3& c = vector.covariance;
    const double x = std::sqrt(c[0]), y = std::sqrt(c[4]), z = std::sqrt(c[8]);
    pugi::xml_node matrix = node.append_child("CORRELATION_MATRIX");
    AddText(matrix, "SDX", Fixed(x, 12));
    AddText(matrix, "SDY", Fixed(y, 12));
    AddText(matrix, "SDZ", Fixed(z, 12));
    AddText(matrix, "PXY", Fixed(c[1] / (x * y), 12));
    AddText(matrix, "PXZ", Fixed(c[2] / (x * z), 12));
    AddText(matrix, "PYZ", Fixed(c[5] / (y * z), 12));
}

}  // namespace

ExportedFile WriteGvx(const ExportSet& set) {
    CheckSet(set);
    if (!set.referenceSystem) {
        throw ExportError(
            "GVX names its frame by a datum number of the ISO Geodetic Registry "
            "(126 NAD 83(2011), 153 IGS14, 196 WGS 84(G1674)): none was given");
    }
    const std::string system = std::to_string(*set.referenceSystem);
    FittedNames fitted = FitNames(StationNames(set), AnyName("GVX"));
    ExportedFile file;
    file.warnings = std::move(fitted.warnings);
    pugi::xml_document document = NewDocument();
    pugi::xml_node root = document.append_child("GVX");
    AddAttribute(root, "VERSION", "1.0");
    AddHead(root, set, system);
    for (std::size_t s = 0; s < set.stations.size(); ++s) {
        AddEquipment(root, set.stations[s].equipment, s);
    }
    pugi::xml_node setup = root.append_child("SURVEY_SETUP");
    AddAttribute(setup, "ID", "S1");
    AddText(setup, "SOLUTION_TYPE", "POST-PROCESSED STATIC");
    AddText(setup, "OPERATOR", OrUnknown(set.observer));
    pugi::xml_node software = setup.append_child("PROCESSING_SOFTWARE");
    AddText(software, "NAME", CleanText(set.software.name));
    AddText(software, "VERSION", CleanText(set.software.version));
    for (std::size_t s = 0; s < set.stations.size(); ++s) {
        AddPoint(root, set, s, fitted.names[s], system);
    }
    for (std::size_t v = 0; v < set.vectors.size(); ++v) {
        if (set.vectors[v].isUsed) {
            AddVector(root, set, set.vectors[v], v);
        } else {
            file.warnings.push_back("GVX: vector " + CleanText(set.vectors[v].id) +
                                    " is not used and left out");
        }
    }
    file.bytes = XmlBytes(document);
    return file;
}

}  // namespace vornel::exports
