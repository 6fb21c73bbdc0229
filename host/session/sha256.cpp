#include "session/sha256.h"

#include <nettle/sha2.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <vector>

namespace vornel::session {

std::string FileSha256(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return {};
    }
    sha256_ctx context;
    sha256_init(&context);
    std::vector<char> buffer(std::size_t{1} << 16);
    while (file.read(buffer.data(), static_cast<std::streamsize>(buffer.size())) ||
           file.gcount() > 0) {
        sha256_update(&context, static_cast<std::size_t>(file.gcount()),
                      reinterpret_cast<const std::uint8_t*>(buffer.data()));
    }
    if (file.bad()) {
        return {};
    }
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&context, digest.size(), digest.data());
    std::string hex;
    for (const std::uint8_t byte : digest) {
        char text[3];
        std::snprintf(text, sizeof text, "%02x", byte);
        hex += text;
    }
    return hex;
}

}  // namespace vornel::session
