#include <cmath>
#include <vector>

#include "exports/text.h"
#include "exports/writers.h"

namespace vornel::exports {

// G2 holds the variances of x, y and z, G3 the covariances of xy, zx and zy. Coordinates to start from
// stand as a comment, because programs differ in how they read them.
ExportedFile WriteStarNet(const ExportSet& set) {
    CheckSet(set);
    ExportedFile file;
    FittedNames fitted = FitNames(StationNames(set), {"STAR*NET", 15, false, "_.", false});
    file.warnings = std::move(fitted.warnings);
    for (const std::string& line : Provenance(set)) {
        file.bytes += "# " + line + "\n";
    }
    file.bytes += "# Stations: latitude, longitude (degrees), ellipsoidal height (m)\n";
    for (std::size_t s = 0; s < set.stations.size(); ++s) {
        const session::Geodetic place = session::ToGeodetic(set.stations[s].position);
        file.bytes += "# PH " + fitted.names[s] + " " + Fixed(place.latitude * 180.0 / M_PI, 10) +
                      " " + Fixed(place.longitude * 180.0 / M_PI, 10) + " " +
                      Fixed(place.height, 5);
        file.bytes +=
            (set.stations[s].isHeld ? " ! ! !  '" : "  '") + CleanText(set.stations[s].name) + "\n";
    }
    file.bytes += ".GPS WEIGHT COVARIANCE\n";
    for (std::size_t v = 0; v < set.vectors.size(); ++v) {
        const ExportVector& vector = set.vectors[v];
        const std::string mark = vector.isUsed ? "" : "# not used: ";
        const Matrix3& c = vector.covariance;
        const auto three = [&](const char* word, double a, double b, double d) {
            return mark + word + " " + Scientific(a, 14) + " " + Scientific(b, 14) + " " +
                   Scientific(d, 14) + "\n";
        };
        file.bytes += mark + "G0 'V" + std::to_string(v + 1) + " " + IsoTime(vector.start, 0, ' ') +
                      " to " + IsoTime(vector.end, 0, ' ') + " GPS time " + CleanText(vector.kind) +
                      " " + CleanText(vector.id) + "\n";
        file.bytes += mark + "G1 " + fitted.names[vector.from] + "-" + fitted.names[vector.to] +
                      " " + Fixed(vector.vector[0], 6) + " " + Fixed(vector.vector[1], 6) + " " +
                      Fixed(vector.vector[2], 6) + "\n";
        file.bytes += three("G2", c[0], c[4], c[8]);
        file.bytes += three("G3", c[1], c[2], c[5]);
    }
    return file;
}

}  // namespace vornel::exports
