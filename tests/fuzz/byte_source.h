// Numbers out of the bytes of a fuzzing input: what stands at the front is taken first, and an
// input that has ended gives zeros, so that every input means something.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace vornel::fuzz {

class ByteSource {
  public:
    ByteSource(const std::uint8_t* data, std::size_t size) : next_(data), left_(size) {}

    bool Empty() const { return left_ == 0; }

    std::uint8_t Byte() {
        if (left_ == 0) {
            return 0;
        }
        --left_;
        return *next_++;
    }

    bool Flag() { return (Byte() & 1U) != 0; }

    // 0 to count - 1, of at most 65536; one byte where that is enough.
    std::size_t Index(std::size_t count) {
        std::size_t value = Byte();
        if (count > 256) {
            value = value * 256 + Byte();
        }
        return value % count;
    }

    int Int(int low, int high) {
        const auto span = static_cast<std::uint64_t>(static_cast<std::int64_t>(high) - low) + 1U;
        const std::uint64_t raw = span <= 256 ? Byte() : Raw32();
        return static_cast<int>(low + static_cast<std::int64_t>(raw % span));
    }

    // Small ones, the ends of the range, and any other.
    int AnyInt() {
        const std::uint8_t kind = Byte();
        switch (kind % 4) {
            case 0:
                return static_cast<int>(kind / 4) - 8;
            case 1:
                return kind < 128 ? std::numeric_limits<int>::min()
                                  : std::numeric_limits<int>::max();
            default:
                return static_cast<int>(Raw32());
        }
    }

    // Every double there is, those that go wrong most often more than others.
    double AnyDouble() {
        using Limits = std::numeric_limits<double>;
        switch (Byte() % 16) {
            case 0:
                return 0.0;
            case 1:
                return -0.0;
            case 2:
                return Limits::quiet_NaN();
            case 3:
                return Limits::infinity();
            case 4:
                return -Limits::infinity();
            case 5:
                return Limits::max();
            case 6:
                return Limits::lowest();
            case 7:
                return Limits::denorm_min();
            case 8:
                return static_cast<double>(Int(-1000, 1000));
            case 9:
                return static_cast<double>(AnyInt());
            case 10:
            case 11:
                return (Flag() ? -1.0 : 1.0) * std::pow(10.0, Int(-30, 30));
            default:
                return RawDouble();
        }
    }

    double AnyFinite() {
        const double value = AnyDouble();
        return std::isfinite(value) ? value : 0.0;
    }

    // From low to high, both included: the ends and their neighbours, evenly, or of any size.
    double Within(double low, double high) {
        switch (Byte() % 8) {
            case 0:
                return low;
            case 1:
                return high;
            case 2:
                return std::nextafter(low, high);
            case 3:
                return std::nextafter(high, low);
            case 4:
                return low <= 0.0 && high >= 0.0 ? 0.0 : low;
            case 5: {
                // Every order of magnitude alike.
                const double value = (Flag() ? -1.0 : 1.0) * std::pow(10.0, Int(-30, 30));
                return value >= low && value <= high ? value : high;
            }
            default: {
                const double share = static_cast<double>(Raw32()) / 4294967295.0;
                const double value = low + (high - low) * share;
                return value < low ? low : (value > high ? high : value);
            }
        }
    }

    std::uint32_t Raw32() {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            value = value << 8U | Byte();
        }
        return value;
    }

    double RawDouble() {
        const std::uint64_t bits = static_cast<std::uint64_t>(Raw32()) << 32U | Raw32();
        double value = 0.0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

  private:
    const std::uint8_t* next_;
    std::size_t left_;
};

}  // namespace vornel::fuzz
