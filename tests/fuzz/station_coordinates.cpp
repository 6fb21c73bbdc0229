// The reader of SINEX: a file gives solutions of finite coordinates at times of the calendar, or an
// InputError.
#include "io/station_coordinates.h"

#include <cmath>
#include <string_view>

#include "require.h"

namespace {

using namespace vornel;

void CheckCoordinates(const io::StationCoordinates& file) {
    FUZZ_REQUIRE(!file.solutions.empty());
    FUZZ_REQUIRE(file.notes.size() <= io::kMaximumNotes);
    for (const io::SiteSolution& solution : file.solutions) {
        FUZZ_REQUIRE(io::IsInCalendar(solution.reference));
        FUZZ_REQUIRE(!solution.from || io::IsInCalendar(*solution.from));
        FUZZ_REQUIRE(!solution.until || io::IsInCalendar(*solution.until));
        for (std::size_t i = 0; i < 3; ++i) {
            FUZZ_REQUIRE(std::isfinite(solution.position[i]) &&
                         std::isfinite(solution.positionSigma[i]) &&
                         std::isfinite(solution.velocitySigma[i]));
            FUZZ_REQUIRE(!solution.velocity || std::isfinite((*solution.velocity)[i]));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        CheckCoordinates(io::ReadStationCoordinates(bytes, "input"));
    } catch (const io::InputError&) {
    }
    return 0;
}
