// Signed counts as indices: of matrices (unsigned 32 bits) and of the library's containers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vornel {

inline std::uint32_t Index(int i) {
    return static_cast<std::uint32_t>(i);
}
inline std::size_t Slot(int i) {
    return static_cast<std::size_t>(i);
}

}  // namespace vornel
