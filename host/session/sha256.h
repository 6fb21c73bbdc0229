// SHA-256 (FIPS 180-4) of input files, so that a report names exactly what it was made from.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace vornel::session {

class Sha256 {
  public:
    void Add(std::string_view bytes);
    // 64 hexadecimal digits. Ends the sum: nothing may be added afterwards.
    std::string Hex();

  private:
    void Block(const unsigned char* block);

    std::array<std::uint32_t, 8> state_ = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                           0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<unsigned char, 64> pending_{};
    std::size_t pendingSize_ = 0;
    std::uint64_t length_ = 0;
};

// Of a file as it lies on disk; empty when it cannot be read.
std::string FileSha256(const std::string& path);

}  // namespace vornel::session
