// What a receiver makes of the signals that reach it: strength, lock, slips, noise.
#pragma once

#include <optional>
#include <vector>

#include "constellation.h"
#include "random.h"
#include "scenario.h"

namespace vornel::rough {

// One signal at one epoch as it arrives.
struct Arrival {
    double azimuth = 0.0, elevation = 0.0;  // rad
    Vector3 direction{};                    // unit vector, north, east, up
    double multipathStrength = 0.0;         // dB
    double scintillation = 0.0;             // 0 to 1 and more
};

// What the receiver has of it.
struct Reception {
    bool code = false;
    bool phase = false;
    double strength = 0.0;        // dB-Hz
    double codeError = 0.0;       // m
    double phaseError = 0.0;      // m
    double ambiguity = 0.0;       // cycles, with slips
    std::uint8_t lossOfLock = 0;  // indicator of the format
};

// The leaves above a site: they weaken and scatter signals, by direction as they stand, and from
// moment to moment as they move. Mean losses of 4 to 15 dB with a spread of some dB are measured in
// single trees and forests on 1.5 GHz (Goldhirsh and Vogel 1998, Handbook of propagation effects).
class Canopy {
  public:
    Canopy(std::uint64_t seed, std::size_t site, const Surroundings& around, double scale);

    bool exists() const { return loss_ > 0.0; }
    double LossAt(const Vector3& direction) const;     // dB
    double ScatterAt(const Vector3& direction) const;  // m, rms of the phase

  private:
    struct Wave {
        Vector3 k{};
        double phase = 0.0;
    };
    double loss_, scatter_;
    std::vector<Wave> waves_;
};

// Follows all signals of one receiver on one occupation. Epochs are asked for in ascending order,
// every signal of a satellite at each of them.
class Tracker {
  public:
    Tracker(const Scenario& scenario, std::size_t occupation, std::size_t satellites);

    // Whether the receiver gives nothing at an epoch (s since the start of the scenario).
    bool MissesEpoch(double sinceStart);

    // `signal` counts the receiver's signals.
    Reception Receive(std::size_t satellite, std::size_t signal, double wavelength,
                      const Arrival& arrival, double sinceStart);

  private:
    struct Channel {
        bool used = false;
        bool locked = false;
        bool reportSlip = false;
        bool inBurst = false;
        double clearSince = -1.0;  // s; negative while the signal is not to be had
        double delay = 0.0;        // s from then to the first code
        double lastSeen = 0.0;     // s
        double ambiguity = 0.0;    // cycles
        double unsettled = 0.0;    // cycles, of the phase after a new lock
        double codeError = 0.0;    // m, smoothed part
        double flutter = 0.0;      // of leaves, standard normal with memory
    };

    double StrengthOf(std::size_t signal, const Arrival& arrival) const;
    double HeavyNormal();
    void Acquire(Channel& channel);
    void Slip(Channel& channel);

    const Receiver& receiver_;
    const Surroundings& around_;
    Effects effects_;
    double interval_;
    double start_;  // s, of the occupation
    Canopy canopy_;
    std::vector<Channel> channels_;
    std::vector<std::pair<double, double>> gaps_;  // s, from and to
    Random noise_, events_;
};

}  // namespace vornel::rough
