// The reader of RINEX observations, all versions: a file gives observations whose parts fit
// together, or an InputError.
#include "io/observation_reader.h"

#include <string_view>

#include "observation_checks.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vornel;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        const io::Observations all = io::ReadRinexObservations(bytes, "input");
        fuzz::CheckObservations(all);
        // As the session asks for it, thinned.
        io::ObservationSelection selection;
        selection.types = "CL";
        selection.interval = 30.0;
        const io::Observations some = io::ReadRinexObservations(bytes, "input", selection);
        fuzz::CheckObservations(some);
        FUZZ_REQUIRE(some.epochs.size() <= all.epochs.size());
        fuzz::CheckObservations(io::JoinObservations({all, some}));
    } catch (const io::InputError&) {
    }
    return 0;
}
