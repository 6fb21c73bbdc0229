// Values by satellite: Width doubles for each of the 135 satellite numbers, of which only those that were written take
// room. All others read as zeros. Copies share their values until one of them is written, like matrices do.
#pragma once

#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

#include "foundation/satellite.h"

namespace vornel {

template <int Width>
class SlotTable {
    static constexpr bool kSingle = Width == 1;

  public:
    using ConstRow = std::conditional_t<kSingle, double, const double*>;
    using Row = std::conditional_t<kSingle, double&, double*>;

    // The values of satellite number s + 1. Writing access gives the satellite a place.
    ConstRow operator[](int s) const {
        const double* row = storage_ ? storage_->RowOf(s) : kZeros;
        if constexpr (kSingle) {
            return *row;
        } else {
            return row;
        }
    }
    Row operator[](int s) {
        double* row = OwnStorage().NewRowOf(s);
        if constexpr (kSingle) {
            return *row;
        } else {
            return row;
        }
    }

    // Room for that many satellites.
    void Reserve(std::size_t satellites) { OwnStorage().values.reserve((satellites + 1) * Width); }

  private:
    static constexpr double kZeros[Width] = {};

    struct Storage {
        std::uint8_t place[kSatelliteCount] = {};  // row of each satellite; 0: the row of zeros
        std::vector<double> values = std::vector<double>(Width, 0.0);

        const double* RowOf(int s) const { return values.data() + std::size_t{place[s]} * Width; }
        double* NewRowOf(int s) {
            if (place[s] == 0) {
                place[s] = static_cast<std::uint8_t>(values.size() / Width);
                values.resize(values.size() + Width, 0.0);
            }
            return values.data() + std::size_t{place[s]} * Width;
        }
    };

    Storage& OwnStorage() {
        if (!storage_) {
            storage_ = std::make_shared<Storage>();
        } else if (storage_.use_count() > 1) {
            storage_ = std::make_shared<Storage>(*storage_);
        }
        return *storage_;
    }

    std::shared_ptr<Storage> storage_;
};

}  // namespace vornel
