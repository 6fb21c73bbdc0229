// The reader of RINEX navigation, all versions: a file gives records of real satellites, or an
// InputError. Their values may be anything finite; what the engine can take of them is decided
// later.
#include <cmath>
#include <string_view>

#include "io/navigation.h"
#include "require.h"

namespace {

using namespace vornel;

void CheckNavigation(const io::Navigation& navigation) {
    FUZZ_REQUIRE(navigation.notes.size() <= io::kMaximumNotes);
    FUZZ_REQUIRE(navigation.dropped.size() <= io::kMaximumNotes);
    FUZZ_REQUIRE(navigation.dropped.size() <= navigation.droppedCount);
    for (const io::KeplerRecord& record : navigation.kepler) {
        FUZZ_REQUIRE(record.satellite.number >= 1 && record.satellite.number <= 99);
        for (const double value :
             {record.tocSeconds,   record.af0,      record.af1,    record.af2,   record.sqrtA,
              record.eccentricity, record.i0,       record.omega0, record.omega, record.m0,
              record.deltaN,       record.omegaDot, record.idot,   record.crc,   record.crs,
              record.cuc,          record.cus,      record.cic,    record.cis,   record.toeSeconds,
              record.aDot,         record.deltaNDot}) {
            FUZZ_REQUIRE(std::isfinite(value));
        }
    }
    for (const io::GlonassRecord& record : navigation.glonass) {
        FUZZ_REQUIRE(record.slot >= 1 && record.slot <= 99);
        for (std::size_t i = 0; i < 3; ++i) {
            FUZZ_REQUIRE(std::isfinite(record.position[i]) && std::isfinite(record.velocity[i]) &&
                         std::isfinite(record.acceleration[i]));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        CheckNavigation(io::ReadNavigation(bytes, "input"));
    } catch (const io::InputError&) {
    }
    return 0;
}
