#include <algorithm>
#include <vector>

#include "exports/text.h"
#include "exports/writers.h"
#include "exports/xml.h"

namespace vornel::exports {
namespace {

// The six different entries of a covariance, upper triangle by rows, in mm^2.
std::string SquareMillimetres(const Matrix3& covariance) {
    std::string text;
    for (const std::size_t i : {0U, 1U, 2U, 4U, 5U, 8U}) {
        text += i == 0 ? "" : i == 4 || i == 8 ? "\n" : " ";
        text += Scientific(covariance[i] * 1e6, 14);
    }
    return text;
}

}  // namespace

// Vectors are linear in the coordinates, so that the program's x, y and z take those of the ECEF frame
// as they are. A consistent pair of axes and angles keeps it from mirroring y.
ExportedFile WriteGamaLocal(const ExportSet& set) {
    CheckSet(set);
    ExportedFile file;
    FittedNames fitted = FitNames(StationNames(set), {"gama-local", 200, false, nullptr, false});
    file.warnings = std::move(fitted.warnings);

    pugi::xml_document document = NewDocument();
    pugi::xml_node root = document.append_child("gama-local");
    AddAttribute(root, "xmlns", "http://www.gnu.org/software/gama/gama-local");
    pugi::xml_node network = root.append_child("network");
    AddAttribute(network, "axes-xy", "ne");
    AddAttribute(network, "angles", "left-handed");
    std::vector<std::string> lines = Provenance(set);
    for (const ExportVector& vector : set.vectors) {
        if (!vector.isUsed) {
            lines.push_back("Left out, because the adjustment did: vector " + CleanText(vector.id) +
                            " from " + fitted.names[vector.from] + " to " +
                            fitted.names[vector.to]);
            file.warnings.push_back("gama-local: vector " + CleanText(vector.id) +
                                    " is not used and left out");
        }
    }
    std::string description;
    for (const std::string& line : lines) {
        description += "\n" + line;
    }
    AddText(network, "description", description + "\n");

    // A priori weights that are true covariances: the standard deviations come out unscaled.
    pugi::xml_node parameters = network.append_child("parameters");
    AddAttribute(parameters, "sigma-apr", "1");
    AddAttribute(parameters, "conf-pr", "0.95");
    AddAttribute(parameters, "tol-abs", "1000");
    AddAttribute(parameters, "sigma-act", "apriori");

    const bool isHeld = std::any_of(set.stations.begin(), set.stations.end(),
                                    [](const ExportStation& s) { return s.isHeld; });
    pugi::xml_node body = network.append_child("points-observations");
    for (std::size_t s = 0; s < set.stations.size(); ++s) {
        const ExportStation& station = set.stations[s];
        pugi::xml_node point = body.append_child("point");
        AddAttribute(point, "id", fitted.names[s]);
        AddAttribute(point, "x", Fixed(station.position[0], 5));
        AddAttribute(point, "y", Fixed(station.position[1], 5));
        AddAttribute(point, "z", Fixed(station.position[2], 5));
        // Capitals: the coordinates take part in the inner constraints of a free network.
        AddAttribute(point, station.isHeld ? "fix" : "adj", isHeld ? "xyz" : "XYZ");
    }
    for (const ExportVector& vector : set.vectors) {
        if (!vector.isUsed) {
            continue;
        }
        pugi::xml_node group = body.append_child("vectors");
        pugi::xml_node vec = group.append_child("vec");
        AddAttribute(vec, "from", fitted.names[vector.from]);
        AddAttribute(vec, "to", fitted.names[vector.to]);
        AddAttribute(vec, "dx", Fixed(vector.vector[0], 6));
        AddAttribute(vec, "dy", Fixed(vector.vector[1], 6));
        AddAttribute(vec, "dz", Fixed(vector.vector[2], 6));
        pugi::xml_node matrix = AddText(group, "cov-mat", SquareMillimetres(vector.covariance));
        AddAttribute(matrix, "dim", "3");
        AddAttribute(matrix, "band", "2");
    }
    file.bytes = XmlBytes(document);
    return file;
}

}  // namespace vornel::exports
