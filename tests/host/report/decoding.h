// The data of a page read back, by the description of their encoding.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vornel::test {

inline std::vector<std::int64_t> Integers(const std::string& text) {
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::vector<std::int64_t> list;
    std::int64_t value = 0;
    int shift = 0;
    for (const char c : text) {
        const auto digit = static_cast<std::int64_t>(alphabet.find(c));
        value += (digit % 32) << shift;
        shift += 5;
        if (digit < 32) {
            list.push_back(value % 2 != 0 ? -(value / 2) : value / 2);
            value = 0;
            shift = 0;
        }
    }
    return list;
}

// Epochs from pairs of how many are left out and how many follow.
inline std::vector<std::uint32_t> Epochs(const std::string& text) {
    std::vector<std::uint32_t> epochs;
    const auto pairs = Integers(text);
    std::uint32_t next = 0;
    for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) {
        next += static_cast<std::uint32_t>(pairs[i]);
        for (std::int64_t k = 0; k < pairs[i + 1]; ++k) {
            epochs.push_back(next++);
        }
    }
    return epochs;
}

}  // namespace vornel::test
