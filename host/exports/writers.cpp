#include "exports/writers.h"

#include <array>

namespace vornel::exports {
namespace {

struct Entry {
    const char* name;
    const char* extension;
    ExportedFile (*write)(const ExportSet&);
};

// In the order of the formats' values.
constexpr std::array<Entry, 8> kEntries{{{"gvx", ".gvx", WriteGvx},
                                         {"dynaml", ".xml", WriteDynaMl},
                                         {"gama", ".gkf", WriteGamaLocal},
                                         {"sinex", ".snx", WriteSinex},
                                         {"starnet", ".gps", WriteStarNet},
                                         {"geojson", ".geojson", WriteGeoJson},
                                         {"kml", ".kml", WriteKml},
                                         {"csv", ".csv", WriteCsv}}};

const Entry& EntryOf(Format format) {
    return kEntries[static_cast<std::size_t>(format)];
}

}  // namespace

const char* FormatName(Format format) {
    return EntryOf(format).name;
}

const char* FileExtension(Format format) {
    return EntryOf(format).extension;
}

std::optional<Format> FormatOfName(std::string_view name) {
    for (const Format format : kAllFormats) {
        if (name == FormatName(format)) {
            return format;
        }
    }
    return std::nullopt;
}

ExportedFile WriteExport(const ExportSet& set, Format format) {
    return EntryOf(format).write(set);
}

}  // namespace vornel::exports
