// Tabulated orbits and clocks: stores by component, Lagrange interpolation over 11 entries.
#include "orbit/precise_ephemeris.h"

#include <algorithm>
#include <cstddef>

#include "VornelBlCore.h"

namespace vornel {

namespace {

constexpr int kPointsBefore = VORNEL_PRECISE_BEFORE;  // on either side of the one in the middle
constexpr int kPoints = 2 * kPointsBefore + 1;
static_assert(kPoints == VORNEL_PRECISE_BEFORE + VORNEL_PRECISE_AFTER);

double DayCount(const Epoch& time) {
    int week = 0;
    double seconds = 0.0;
    time.ToWeekSeconds(week, seconds);
    return week * 7 + seconds / 3600.0 / 24.0;
}

bool InterpolateComponent(int component, int satNumber, const Epoch& time, double& out) {
    const OneSatSP3ValList* list = PreciseStore(component).Find(satNumber);
    return list != nullptr && InterpolateOne(*list, time, out);
}

}  // namespace

const OneSatSP3ValList* SP3ValList::Find(int satNumber) const {
    for (const OneSatSP3ValList& list : satellites) {
        if (list.satNumber == satNumber) {
            return &list;
        }
    }
    return nullptr;
}

SP3ValList& PreciseStore(int component) {
    static SP3ValList stores[VORNEL_PRECISE_CLOCK + 1];
    return stores[component];
}

void AddValue(SP3ValList& store, int satNumber, const Epoch& epoch, double value) {
    auto list = std::find_if(store.satellites.begin(), store.satellites.end(),
                             [satNumber](const OneSatSP3ValList& candidate) {
                                 return candidate.satNumber == satNumber;
                             });
    if (list == store.satellites.end()) {
        list = store.satellites.insert(list, OneSatSP3ValList());
        list->satNumber = satNumber;
    }
    auto& values = list->values;
    // An epoch behind all others, the usual case, has no equal.
    const bool continues = list->IsAscending() && (values.empty() || values.back().first < epoch);
    if (!continues) {
        std::erase_if(values, [&epoch](const auto& entry) { return entry.first == epoch; });
    }
    values.emplace_back(epoch, value);
    list->ascending = continues ? values.size() : 0;
}

bool InterpolateOne(const OneSatSP3ValList& list, const Epoch& time, double& out) {
    const auto& values = list.values;
    const auto isLater = [](const Epoch& moment, const auto& entry) {
        return moment < entry.first;
    };
    const auto after = list.IsAscending()
                           ? std::upper_bound(values.begin(), values.end(), time, isLater)
                           : std::find_if(values.begin(), values.end(),
                                          [&](const auto& entry) { return isLater(time, entry); });
    if (after == values.end()) {
        return false;
    }
    if (after - values.begin() < kPointsBefore || values.end() - after < kPointsBefore + 1) {
        return false;
    }
    double days[kPoints];
    double points[kPoints];
    for (int k = 0; k < kPoints; ++k) {
        const auto& [epoch, value] = *(after + (k - kPointsBefore));
        if (value == VORNEL_MISSING_PRECISE_VALUE) {
            return false;
        }
        days[k] = DayCount(epoch);
        points[k] = value;
    }
    out = Lagrange(kPoints, days, points, DayCount(time));
    return true;
}

double Lagrange(int n, const double* x, const double* y, double t) {
    if (n < 1) {
        return 0.0;
    }
    if (n == 1) {
        return y[0];
    }
    if (n == 2) {
        return ((t - x[1]) * y[0] - (t - x[0]) * y[1]) / (x[0] - x[1]);
    }
    int middle = 0;
    while (middle < n && x[middle] < t) {
        ++middle;
    }
    const int first = std::max(middle - kPointsBefore, 0);
    const int last = std::min(middle + kPointsBefore, n - 1);
    double sum = 0.0;
    for (int j = first; j <= last; ++j) {
        double product = 1.0;
        for (int m = first; m <= last; ++m) {
            if (m != j) {
                product *= (t - x[m]) / (x[j] - x[m]);
            }
        }
        sum += y[j] * product;
    }
    return sum;
}

bool GetPrecisePosition(Epoch time, int satNumber, XYZPosition& position, double& clock) {
    position = XYZPosition();
    clock = 0.0;
    return InterpolateComponent(VORNEL_PRECISE_X, satNumber, time, position.X) &&
           InterpolateComponent(VORNEL_PRECISE_Y, satNumber, time, position.Y) &&
           InterpolateComponent(VORNEL_PRECISE_Z, satNumber, time, position.Z) &&
           InterpolateComponent(VORNEL_PRECISE_CLOCK, satNumber, time, clock);
}

}  // namespace vornel
