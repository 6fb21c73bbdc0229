// GLONASS orbits: a broadcast state vector, integrated by Runge-Kutta steps of order four.
//
// GLONASS ICD 5.1, A.3.1.2: equations of motion in the earth-fixed rotating frame with the earth's
// oblateness; the accelerations of sun and moon are broadcast and held constant.
#include "orbit/glonass_orbit.h"

#include <array>
#include <cmath>

namespace vornel {

namespace {

constexpr double kEarthRateSquared = 5.3174941173225e-09;  // (7.292115e-05 rad/s)^2
constexpr double kTwiceEarthRate = 0.0001458423;           // rad/s
constexpr double kGm = 398600.44;                          // km^3/s^2
constexpr double kOblateness = 26332775766.45831;          // 3/2 J2 GM a^2, km^5/s^2
constexpr double kStep = 30.0;                             // s
constexpr double kMaxOrbitAge = 14400.0;                   // s
constexpr double kSelectionBound = 1e10;                   // s
constexpr double kDay = 86400.0;                           // s
constexpr double kHalfDay = 43200.0;                       // s
constexpr double kMinRadius = 15000000.0;                  // m
constexpr double kMaxRadius = 40000000.0;                  // m
constexpr int kNoChannel = -99;

// x, y, z in km, vx, vy, vz in km/s.
using State = std::array<double, 6>;

// Seconds from the record's time of day to a time in the record's time scale, within half a day.
double SinceTimeOfDay(const GlonassEphemeris& record, const Epoch& time) {
    const double difference = time.second + time.fraction - record.tbSeconds;
    if (difference < -kHalfDay) {
        return difference + kDay;
    }
    if (difference > kHalfDay) {
        return difference - kDay;
    }
    return difference;
}

// Seconds from the record's reference time to a GPS time, as the selection compares them.
double SelectionDifference(const GlonassEphemeris& record, const Epoch& time) {
    return record.refEpoch.IsZero() ? SinceTimeOfDay(record, time - record.leapSeconds)
                                    : time - record.refEpoch - record.leapSeconds;
}

// The same for the integration: the leap seconds leave the time first.
double SinceReference(const GlonassEphemeris& record, const Epoch& time) {
    const Epoch recordTime = time - record.leapSeconds;
    return record.refEpoch.IsZero() ? SinceTimeOfDay(record, recordTime)
                                    : recordTime - record.refEpoch;
}

// The record of the slot closest in time, the earliest stored of equals; nullptr when none is near enough.
const GlonassEphemeris* Select(const std::vector<GlonassEphemeris>& records, const Epoch& time,
                               int slot) {
    const GlonassEphemeris* best = nullptr;
    double bestDifference = kSelectionBound;
    for (const GlonassEphemeris& record : records) {
        if (record.slot != slot) {
            continue;
        }
        const double difference = std::fabs(SelectionDifference(record, time));
        if (difference < bestDifference) {
            bestDifference = difference;
            best = &record;
        }
    }
    return bestDifference > kMaxOrbitAge ? nullptr : best;
}

State Derivative(const State& state, const GlonassEphemeris& record) {
    const auto& [x, y, z, vx, vy, vz] = state;
    const double rSquared = x * x + y * y + z * z;
    const double r = std::sqrt(rSquared);
    const double rCubed = r * r * r;
    const double oblateness = kOblateness / (r * r * r * r * r);
    const double zTerm = 5.0 * (z * z) / (r * r);
    return {
        vx,
        vy,
        vz,
        kEarthRateSquared * x - (x * kGm / rCubed + oblateness * x * (1.0 - zTerm)) +
            kTwiceEarthRate * vy + record.ax,
        kEarthRateSquared * y - (y * kGm / rCubed + oblateness * y * (1.0 - zTerm)) -
            kTwiceEarthRate * vx + record.ay,
        -(z * kGm / rCubed + oblateness * z * (3.0 - zTerm)) + record.az,
    };
}

// h times the derivative at state + weight * increment.
State Increment(const State& state, const State& increment, double weight, double h,
                const GlonassEphemeris& record) {
    State at = state;
    for (std::size_t i = 0; i < at.size(); ++i) {
        at[i] += weight * increment[i];
    }
    State k = Derivative(at, record);
    for (double& value : k) {
        value *= h;
    }
    return k;
}

State RungeKuttaStep(const State& state, double h, const GlonassEphemeris& record) {
    const State k1 = Increment(state, State{}, 0.0, h, record);
    const State k2 = Increment(state, k1, 0.5, h, record);
    const State k3 = Increment(state, k2, 0.5, h, record);
    const State k4 = Increment(state, k3, 1.0, h, record);
    State next = state;
    for (std::size_t i = 0; i < next.size(); ++i) {
        next[i] += (k1[i] + 2.0 * k2[i] + 2.0 * k3[i] + k4[i]) / 6.0;
    }
    return next;
}

// Full steps toward dt and a last one for what remains, of length 0 when nothing does.
State Integrate(const GlonassEphemeris& record, double dt) {
    const double step = dt < 0.0 ? -kStep : kStep;
    const int stepCount = static_cast<int>(dt / step) + 1;
    State state = {record.x, record.y, record.z, record.vx, record.vy, record.vz};
    for (int i = 0; i < stepCount; ++i) {
        const double rest = dt - i * step;
        const double h = std::fabs(rest) < std::fabs(step) ? rest : step;
        state = RungeKuttaStep(state, h, record);
    }
    return state;
}

// A stored record with a date is matched by the date, one without by its time of day.
bool IsSameReference(const GlonassEphemeris& stored, const GlonassEphemeris& record) {
    if (stored.slot != record.slot) {
        return false;
    }
    return stored.refEpoch.IsZero() ? stored.tbSeconds == record.tbSeconds
                                    : stored.refEpoch == record.refEpoch;
}

}  // namespace

void GlonassStore::AddGlonassEphemeris(const GlonassEphemeris& record) {
    for (GlonassEphemeris& stored : records_) {
        if (IsSameReference(stored, record)) {
            stored = record;
            return;
        }
    }
    records_.push_back(record);
}

const GlonassEphemeris* GlonassStore::FirstOfSlot(int slot) const {
    for (const GlonassEphemeris& record : records_) {
        if (record.slot == slot) {
            return &record;
        }
    }
    return nullptr;
}

GlonassStore& GlonassEphemerides() {
    static GlonassStore store;
    return store;
}

bool GetGlonassPosition(Epoch time, int slot, XYZPosition& position, double& clock, int& channel) {
    position = XYZPosition();
    clock = 0.0;
    channel = kNoChannel;
    const GlonassEphemeris* record = Select(GlonassEphemerides().records(), time, slot);
    if (record == nullptr) {
        return false;
    }
    const double dt = SinceReference(*record, time);
    clock = record->clockDrift * dt + record->clockBias;
    channel = record->channel;
    const State state = Integrate(*record, dt);
    position = XYZPosition(state[0] * 1000.0, state[1] * 1000.0, state[2] * 1000.0);
    const double radius = Distance(position, XYZPosition());
    return radius > kMinRadius && radius < kMaxRadius;
}

int GlonassChannelOfSlot(int slot) {
    constexpr int kSlotCount = 24;
    constexpr int kChannels[kSlotCount] = {1,  -4, 5, 6,  1,  -4, 5, 6, -2, -7, 0, -1,
                                           -2, -7, 0, -1, -6, -3, 3, 2, 4,  -3, 3, 2};
    return slot >= 1 && slot <= kSlotCount ? kChannels[slot - 1] : 0;
}

}  // namespace vornel
