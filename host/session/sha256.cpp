#include "session/sha256.h"

#include <openssl/evp.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

namespace vornel::session {
namespace {

struct FreeContext {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

void Require(bool done) {
    if (!done) {
        throw std::runtime_error("SHA-256 is not available");
    }
}

}  // namespace

std::string FileSha256(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return {};
    }
    const std::unique_ptr<EVP_MD_CTX, FreeContext> context(EVP_MD_CTX_new());
    Require(context && EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) == 1);
    std::vector<char> buffer(std::size_t{1} << 16);
    while (file.read(buffer.data(), static_cast<std::streamsize>(buffer.size())) ||
           file.gcount() > 0) {
        Require(EVP_DigestUpdate(context.get(), buffer.data(),
                                 static_cast<std::size_t>(file.gcount())) == 1);
    }
    if (file.bad()) {
        return {};
    }
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    Require(EVP_DigestFinal_ex(context.get(), digest.data(), &size) == 1);
    std::string hex;
    for (unsigned int i = 0; i < size; ++i) {
        char text[3];
        std::snprintf(text, sizeof text, "%02x", digest[i]);
        hex += text;
    }
    return hex;
}

}  // namespace vornel::session
