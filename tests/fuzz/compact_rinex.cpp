// The reader of Compact RINEX 1 and 3: a file gives observations whose parts fit together, or an
// InputError.
#include <string_view>

#include "io/observation_reader.h"
#include "observation_checks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vornel;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        fuzz::CheckObservations(io::ReadCompactRinex(bytes, "input"));
        io::ObservationSelection selection;
        selection.types = "CL";
        selection.systems[0] = false;
        fuzz::CheckObservations(io::ReadCompactRinex(bytes, "input", selection));
    } catch (const io::InputError&) {
    }
    return 0;
}
