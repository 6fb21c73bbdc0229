// The phase combination of each solve model, and what follows from it.
//
// A combination is a phi1 + b phi2 of the two phases in cycles. With frequencies f1, f2 its
// wavelength is c / (a f1 + b f2), and the ionosphere advances it, in metres, by g times the delay
// on GPS L1. In model 6, the ionosphere-free combination with held wide lanes Nw = N1 - N2, the
// ambiguity splits as a N1 + b N2 = k N + w Nw, so that N is an integer.
#pragma once

#include "difference/single_difference.h"

namespace vornel {

// The frequency blocks of a solve model: model 3 has two, any other the first alone.
inline constexpr int kFirstBlock = 0;
inline constexpr int kSecondBlock = 1;
inline int BlockCount(int mode) {
    return mode == VORNEL_MODEL_BOTH ? 2 : 1;
}

struct LaneCombination : PhaseCombination {
    double narrowLane;  // k
    double wideLane;    // w
};

// The combination of a solve model's block for a satellite with these carriers.
LaneCombination CombinationOf(int mode, int block, int system, const Carriers& carriers);

// Standard deviation of a double difference of the model, metres, from the phase noise in cycles of
// GPS L1.
double DoubleDifferenceSigma(int mode, double phaseStd);

}  // namespace vornel
