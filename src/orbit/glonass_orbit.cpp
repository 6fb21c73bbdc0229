// GLONASS orbits: a broadcast state vector, integrated by Runge-Kutta steps of order four.
//
// GLONASS ICD 5.1, A.3.1.2: equations of motion in the earth-fixed rotating frame with the earth's
// oblateness; the accelerations of sun and moon are broadcast and held constant.
#include "orbit/glonass_orbit.h"

#include <array>
#include <cmath>
#include <iterator>

#include "orbit/limits.h"

namespace vornel {

namespace {

constexpr double kEarthRateSquared = 5.3174941173225e-09;  // (7.292115e-05 rad/s)^2
constexpr double kTwiceEarthRate = 0.0001458423;           // rad/s
constexpr double kGm = 398600.44;                          // km^3/s^2
constexpr double kOblateness = 26332775766.45831;          // 3/2 J2 GM a^2, km^5/s^2
constexpr double kStep = 30.0;                             // s
constexpr double kSelectionBound = 1e10;                   // s
constexpr double kDay = 86400.0;                           // s
constexpr double kHalfDay = 43200.0;                       // s
constexpr int kNoChannel = -99;

using State = GlonassState;

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

// Full steps toward dt and a last one for what remains, of length 0 when nothing does. The states
// after full steps are the same for every dt: the chain keeps them.
State Integrate(const GlonassEphemeris& record, double dt, GlonassStateChain& chain) {
    const double step = dt < 0.0 ? -kStep : kStep;
    const int stepCount = static_cast<int>(dt / step) + 1;
    const auto rest = [=](int i) { return dt - i * step; };
    const auto isFull = [&](int i) { return !(std::fabs(rest(i)) < std::fabs(step)); };
    int fullSteps = stepCount;
    while (fullSteps > 0 && !isFull(fullSteps - 1)) {
        --fullSteps;
    }
    std::vector<State>& states = dt < 0.0 ? chain.backward : chain.forward;
    State state = {record.x, record.y, record.z, record.vx, record.vy, record.vz};
    for (int i = static_cast<int>(states.size()); i < fullSteps; ++i) {
        states.push_back(RungeKuttaStep(i == 0 ? state : states.back(), step, record));
    }
    if (fullSteps > 0) {
        state = states[static_cast<std::size_t>(fullSteps - 1)];
    }
    for (int i = fullSteps; i < stepCount; ++i) {
        state = RungeKuttaStep(state, rest(i), record);
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
    std::vector<Reference>& references = bySlot_[record.slot];
    Reference added{!record.refEpoch.IsZero(), record.refEpoch.TotalSeconds() + record.leapSeconds,
                    static_cast<int>(records_.size())};
    for (Reference& reference : references) {
        const auto position = static_cast<std::size_t>(reference.position);
        if (IsSameReference(records_[position], record)) {
            records_[position] = record;
            chains_[position] = GlonassStateChain();
            added.position = reference.position;
            reference = added;
            return;
        }
    }
    // The record first: without memory for any of these, no reference points behind the end.
    chains_.resize(records_.size() + 1);
    records_.push_back(record);
    references.push_back(added);
}

int GlonassStore::Select(const Epoch& time, int slot) const {
    const auto references = bySlot_.find(slot);
    if (references == bySlot_.end()) {
        return -1;
    }
    const double seconds = time.TotalSeconds();
    int best = -1;
    double bestDifference = kSelectionBound;
    for (const Reference& reference : references->second) {
        // What is clearly further away need not be compared exactly.
        if (reference.hasDate &&
            std::fabs(seconds - reference.seconds) > bestDifference + kRoughTimeError) {
            continue;
        }
        const GlonassEphemeris& record = records_[static_cast<std::size_t>(reference.position)];
        const double difference = std::fabs(SelectionDifference(record, time));
        if (difference < bestDifference) {
            bestDifference = difference;
            best = reference.position;
        }
    }
    return bestDifference > VORNEL_EPHEMERIS_REACH ? -1 : best;
}

const GlonassEphemeris* GlonassStore::FirstOfSlot(int slot) const {
    const auto references = bySlot_.find(slot);
    return references == bySlot_.end() || references->second.empty()
               ? nullptr
               : &records_[static_cast<std::size_t>(references->second.front().position)];
}

GlonassStore& GlonassEphemerides() {
    static GlonassStore store;
    return store;
}

bool GetGlonassPosition(Epoch time, int slot, XYZPosition& position, double& clock, int& channel) {
    position = XYZPosition();
    clock = 0.0;
    channel = kNoChannel;
    GlonassStore& store = GlonassEphemerides();
    const int selected = store.Select(time, slot);
    if (selected < 0) {
        return false;
    }
    const GlonassEphemeris& record = store.records()[static_cast<std::size_t>(selected)];
    const double dt = SinceReference(record, time);
    clock = record.clockDrift * dt + record.clockBias;
    channel = record.channel;
    const State state = Integrate(record, dt, store.ChainOf(selected));
    position = XYZPosition(state[0] * 1000.0, state[1] * 1000.0, state[2] * 1000.0);
    return HasOrbitRadius(position);
}

int GlonassChannelOfSlot(int slot) {
    constexpr int kChannels[] = VORNEL_CHANNELS_OF_SLOTS;
    static_assert(std::size(kChannels) == VORNEL_CHANNEL_SLOTS);
    return slot >= 1 && slot <= VORNEL_CHANNEL_SLOTS ? kChannels[slot - 1] : 0;
}

}  // namespace vornel
