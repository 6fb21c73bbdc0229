// Exchange formats of vectors and networks.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exports/export_set.h"

namespace vornel::exports {

enum class Format { kGvx, kDynaMl, kGamaLocal, kSinex, kStarNet, kGeoJson, kKml, kCsv };

inline constexpr Format kAllFormats[] = {Format::kGvx,   Format::kDynaMl,  Format::kGamaLocal,
                                         Format::kSinex, Format::kStarNet, Format::kGeoJson,
                                         Format::kKml,   Format::kCsv};

// "gvx", "dynaml", "gama", "sinex", "starnet", "geojson", "kml", "csv".
const char* FormatName(Format format);
std::optional<Format> FormatOfName(std::string_view name);

// With the dot: ".gvx", ".xml", ".gkf", ".snx", ".gps", ".geojson", ".kml", ".csv".
const char* FileExtension(Format format);

struct ExportedFile {
    std::string bytes;  // the same for the same set, wherever it is written
    // What the format cannot hold as it is, one line each: names that were changed, vectors that were
    // left out.
    std::vector<std::string> warnings;
};

// Throws ExportError.
ExportedFile WriteExport(const ExportSet& set, Format format);

// Vectors as deltas with standard deviations and correlations (GVX 1.0 of the NGS). Needs
// ExportSet::referenceSystem. Vectors that are not used are left out.
ExportedFile WriteGvx(const ExportSet& set);

// DynaML 1.0.2: stations and vectors in one file; vectors that are not used are marked to be ignored.
ExportedFile WriteDynaMl(const ExportSet& set);

// Input of gama-local: ECEF coordinates and vectors, full covariances, a priori weights. Free network
// where no station is held. Vectors that are not used are left out.
ExportedFile WriteGamaLocal(const ExportSet& set);

// SINEX 2.02: positions with their whole covariance; no vectors. Needs ExportSet::positionCovariance.
ExportedFile WriteSinex(const ExportSet& set);

// GPS vectors in the manner of STAR*NET, with covariances; vectors that are not used stand as
// comments.
ExportedFile WriteStarNet(const ExportSet& set);

// RFC 7946: stations as points, vectors as lines; longitude, latitude and ellipsoidal height of the
// set's own frame on the ellipsoid of WGS 84.
ExportedFile WriteGeoJson(const ExportSet& set);

// KML 2.2: the same with styles. Heights are ellipsoidal while the format's count from the sea, so
// that features are clamped to the ground.
ExportedFile WriteKml(const ExportSet& set);

// RFC 4180: a line for each vector.
ExportedFile WriteCsv(const ExportSet& set);

}  // namespace vornel::exports
