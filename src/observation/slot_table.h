// Values by satellite: Width doubles for each of the 135 satellite numbers, of which only those
// that were written take room. All others read as zeros. Copies share their values until one of
// them is written, like matrices do.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <type_traits>
#include <vector>

#include "foundation/satellite.h"

namespace vornel {

template <int Width>
class SlotTable {
    static constexpr bool kSingle = Width == 1;

  public:
    // The values of one satellite: a number, or Width of them.
    using Row = std::conditional_t<kSingle, double, double[Width]>;

    // The values of satellite number s + 1. Writing access gives the satellite a place.
    const Row& operator[](int s) const { return storage_ ? storage_->RowOf(s).row : kZeros.row; }
    Row& operator[](int s) { return OwnStorage().NewRowOf(s).row; }

    // Room for that many satellites.
    void Reserve(std::size_t satellites) {
        if (storage_) {
            OwnStorage().rows.reserve(satellites + 1);
        } else {
            storage_ = std::make_shared<Storage>(satellites);
        }
    }

    // Back to zeros for all. A table that shares its values with none keeps its room.
    void Clear() {
        if (storage_ && storage_.use_count() == 1) {
            storage_->Clear();
        } else {
            storage_.reset();
        }
    }

  private:
    struct Values {
        Row row = {};
    };
    inline static const Values kZeros{};

    struct Storage {
        std::uint8_t place[kSatelliteCount] = {};  // row of each satellite; 0: the row of zeros
        std::vector<Values> rows;

        explicit Storage(std::size_t satellites) {
            rows.reserve(satellites + 1);
            rows.emplace_back();
        }
        void Clear() {
            std::fill(std::begin(place), std::end(place), std::uint8_t{0});
            rows.resize(1);
        }
        const Values& RowOf(int s) const { return rows[place[s]]; }
        Values& NewRowOf(int s) {
            if (place[s] == 0) {
                place[s] = static_cast<std::uint8_t>(rows.size());
                rows.emplace_back();
            }
            return rows[place[s]];
        }
    };

    Storage& OwnStorage() {
        if (!storage_) {
            storage_ = std::make_shared<Storage>(0);
        } else if (storage_.use_count() > 1) {
            storage_ = std::make_shared<Storage>(*storage_);
        }
        return *storage_;
    }

    std::shared_ptr<Storage> storage_;
};

}  // namespace vornel
