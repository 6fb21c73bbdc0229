// Conversion of doubles to ints that is defined for every value.
#pragma once

#include <limits>

namespace vornel {

// x cut toward zero; the smallest int when that does not fit, or x is not a number.
inline int TruncateToInt(double x) {
    if (x > -2147483649.0 && x < 2147483648.0) {
        return static_cast<int>(x);
    }
    return std::numeric_limits<int>::min();
}

}  // namespace vornel
