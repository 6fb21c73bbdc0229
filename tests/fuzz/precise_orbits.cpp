// The reader of SP3: a file gives orbits in ascending time, or an InputError.
#include "io/precise_orbits.h"

#include <cmath>
#include <string_view>

#include "require.h"

namespace {

using namespace vornel;

void CheckOrbits(const io::PreciseOrbits& orbits) {
    FUZZ_REQUIRE(orbits.notes.size() <= io::kMaximumNotes);
    for (std::size_t i = 1; i < orbits.epochs.size(); ++i) {
        FUZZ_REQUIRE(orbits.epochs[i - 1] < orbits.epochs[i]);
    }
    for (const io::OrbitSeries& series : orbits.satellites) {
        FUZZ_REQUIRE(series.satellite.number >= 1 && series.satellite.number <= 99);
        for (std::size_t i = 0; i < series.points.size(); ++i) {
            const io::OrbitPoint& point = series.points[i];
            FUZZ_REQUIRE(point.epoch < orbits.epochs.size());
            FUZZ_REQUIRE(i == 0 || series.points[i - 1].epoch < point.epoch);
            FUZZ_REQUIRE(!std::isinf(point.clock));
            for (const double coordinate : point.position) {
                FUZZ_REQUIRE(!std::isinf(coordinate));
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        CheckOrbits(io::ReadPreciseOrbits(bytes, "input"));
    } catch (const io::InputError&) {
    }
    return 0;
}
