// Unpacking in memory (gzip, compress, bzip2, xz, zip, one in another): members, or an InputError,
// within the limits on size and depth.
#include <string>

#include "io/file_bytes.h"
#include "io/file_kind.h"
#include "io/input_error.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vornel;
    try {
        const auto files =
            io::Unpack(std::string_view(reinterpret_cast<const char*>(data), size), "input");
        FUZZ_REQUIRE(!files.empty() && files.size() <= io::kMaximumArchiveMembers);
        for (const io::FileBytes& file : files) {
            FUZZ_REQUIRE(!file.bytes.empty());
            FUZZ_REQUIRE(file.packedSize == size);
            io::RecogniseFile(file.bytes, file.name);
        }
    } catch (const io::InputError&) {
    }
    return 0;
}
