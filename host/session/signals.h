// Which tracking codes of two receivers are used: one for each system and frequency and receiver,
// the same for the whole session, so that no satellite changes its signal on the way.
//
// The frequencies are those of the engine: GPS L1 and L2, GLONASS G1 and G2, BeiDou B1I (1561.098
// MHz, band 2 of RINEX 3) and 1207.14 MHz (band 7), Galileo by two configured signals. A tracking
// code is usable at a receiver where code and phase of it were observed together. Rules:
//   1. Codes that both receivers have come first. Of these, a code counts whose satellite-epochs
//      (of the receiver that has fewer) reach half of those of the fullest one, and of those that
//      count the first in the order of preference is taken.
//   2. Without a common code, each receiver takes its own by the same rule; both are named.
// The order of preference: GPS 1 "CWPYLSXMND", GPS 2 "WPYXLSCMND", GLONASS "CP", BeiDou 2 and 7
// "IQXDPZ", Galileo 1 and 6 "CXBAZ", Galileo 5, 7, 8 "QXI".
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "engine/satellites.h"
#include "io/observations.h"

namespace vornel::session {

inline constexpr std::size_t kFrequencies = 2;

// One signal of one receiver.
struct TrackedSignal {
    char band = ' ';
    char attribute = ' ';
    std::string codeName;   // as the file calls it: "C1C", "P2"
    std::string phaseName;  // "L1C", "L2"
    std::size_t count = 0;  // satellite-epochs with code and phase, in the whole file

    std::string Tracking() const { return std::string{band, attribute}; }  // "1C"
};

struct SignalPair {
    std::optional<TrackedSignal> rover;
    std::optional<TrackedSignal> base;

    bool Usable() const { return rover && base; }
    bool SameTracking() const {
        return Usable() && rover->band == base->band && rover->attribute == base->attribute;
    }
};

// [system index][0 first, 1 second frequency]
using SignalChoice = std::array<std::array<SignalPair, kFrequencies>, engine::kSystemCount>;

// Galileo signals by the engine's numbers, VornelGalileoSignal.
struct GalileoSignals {
    int first = VORNEL_DEFAULT_GAL_FREQ1;
    int second = VORNEL_DEFAULT_GAL_FREQ2;
};

// "E1", "E5a", "E5b", "E5", "E6".
const char* GalileoSignalName(int number);

SignalChoice ChooseSignals(const io::Observations& rover, const io::Observations& base,
                           GalileoSignals galileo);

// The first of E5a, E5b, E5, E6, E1 (other than `first`) that both receivers observed; if none, the
// first of these.
int SecondGalileoSignal(const io::Observations& rover, const io::Observations& base, int first);

// The values of the chosen signals of one satellite at one epoch; 0.0 where absent or out of the
// engine's bounds (code 1e6 to 1e9 m, phase finite and below 1e12 cycles).
struct SignalValues {
    engine::Satellite satellite;
    std::array<double, kFrequencies> code{};   // m
    std::array<double, kFrequencies> phase{};  // cycles
};

// Counts of what a receiver's values lost on the way.
struct ValueLosses {
    std::size_t outOfBounds = 0;  // single values
    std::size_t noFirstCode = 0;  // satellites of an epoch
};

// Looks up the chosen signals of one receiver. Made once per receiver, used for every epoch.
class SignalReader {
  public:
    SignalReader(const io::Observations& observations, const SignalChoice& choice, bool rover);

    // Satellites of the epoch that the engine can take, in ascending order, each once. A
    // satellite without code on its first signal is left out: the engine takes the time of
    // transmission from that code. Losses are added up.
    std::vector<SignalValues> Read(const io::ObservationEpoch& epoch, ValueLosses& losses) const;

  private:
    struct Columns {
        std::optional<std::size_t> code;
        std::optional<std::size_t> phase;
    };
    const io::Observations& observations_;
    // [signal table][system index][frequency]
    std::vector<std::array<std::array<Columns, kFrequencies>, engine::kSystemCount>> columns_;
};

}  // namespace vornel::session
