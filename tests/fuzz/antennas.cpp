// The reader of ANTEX: a file gives calibrations with finite offsets, or an InputError; and what is
// looked up in it is found or not.
#include "io/antennas.h"

#include <cmath>
#include <string_view>

#include "require.h"

namespace {

using namespace vornel;

void CheckAntennas(const io::AntennaFile& file) {
    FUZZ_REQUIRE(file.notes.size() <= io::kMaximumNotes);
    for (const io::AntennaCalibration& antenna : file.antennas) {
        for (const io::PhaseCentreOffset& offset : antenna.offsets) {
            FUZZ_REQUIRE(std::isfinite(offset.north) && std::isfinite(offset.east) &&
                         std::isfinite(offset.up));
        }
        const io::GpsTime time = antenna.validFrom.value_or(io::GpsTime{2000, 0.0});
        const io::AntennaCalibration* found =
            io::FindReceiverAntenna(file, antenna.type, antenna.radome, antenna.serial, time);
        FUZZ_REQUIRE(found == nullptr || !found->satellite);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        CheckAntennas(io::ReadAntennas(bytes, "input"));
    } catch (const io::InputError&) {
    }
    return 0;
}
