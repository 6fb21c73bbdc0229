#include "tracking.h"

#include <algorithm>
#include <cmath>

#include "multipath.h"

namespace vornel::rough {
namespace {

constexpr double kReferenceStrength = 45.0;  // dB-Hz, of the noise figures

// Noise grows with the root of the noise density over the carrier (code and phase tracking loops in
// thermal noise; Langley 1997, GPS World 8(6)).
double NoiseFactor(double strength) {
    return std::pow(10.0, (kReferenceStrength - strength) / 20.0);
}

bool IsSecond(const Tracking& signal) {
    const char first = signal.system == io::GnssSystem::kBeiDou ? '2' : '1';
    return signal.band != first;
}

bool IsCodeless(const Tracking& signal) {
    return signal.system == io::GnssSystem::kGps && signal.attribute == 'W';
}

}  // namespace

Canopy::Canopy(std::uint64_t seed, std::size_t site, const Surroundings& around, double scale)
    : loss_(scale * around.canopyLoss), scatter_(scale * around.canopyScatter) {
    Random random(seed, "canopy", site);
    constexpr int kWaves = 10;
    for (int i = 0; i < kWaves && loss_ > 0.0; ++i) {
        Vector3 k = {random.Normal(), random.Normal(), random.Normal()};
        waves_.push_back(
            {Scaled(Unit(k), random.LogUniform(6.0, 40.0)), random.Uniform(0.0, 2.0 * kPi)});
    }
}

double Canopy::LossAt(const Vector3& direction) const {
    if (loss_ == 0.0) {
        return 0.0;
    }
    double sum = 0.0;
    for (const Wave& wave : waves_) {
        sum += std::cos(Dot(wave.k, direction) + wave.phase);
    }
    const double pattern = sum * std::sqrt(2.0 / static_cast<double>(waves_.size()));
    // The way through the crowns, at most three times that of the zenith.
    const double way = 1.0 / std::max(0.33, direction[2]);
    return std::max(0.0, loss_ * way * (1.0 + 0.6 * pattern));
}

double Canopy::ScatterAt(const Vector3& direction) const {
    return scatter_ * std::sqrt(1.0 / std::max(0.33, direction[2]));
}

Tracker::Tracker(const Scenario& scenario, std::size_t occupation, std::size_t satellites)
    : receiver_(scenario.occupations[occupation].receiver),
      around_(scenario.sites[scenario.occupations[occupation].site].around),
      effects_(scenario.effects),
      interval_(scenario.interval),
      start_(scenario.occupations[occupation].start),
      canopy_(scenario.seed, scenario.occupations[occupation].site, around_,
              scenario.effects.canopy),
      channels_(satellites * receiver_.signals.size()),
      noise_(scenario.seed, "receiver noise", occupation),
      events_(scenario.seed, "receiver events", occupation) {
    const Occupation& place = scenario.occupations[occupation];
    const double rate = effects_.gaps * receiver_.gapRate / 3600.0;
    for (double t = place.start; rate > 0.0;) {
        t += events_.Exponential(1.0 / rate);
        if (t > place.start + place.duration) {
            break;
        }
        const double end = t + events_.Exponential(receiver_.gapLength);
        gaps_.emplace_back(t, end);
        t = end;
    }
}

bool Tracker::MissesEpoch(double sinceStart) {
    const bool inGap = std::any_of(gaps_.begin(), gaps_.end(), [&](const auto& gap) {
        return sinceStart >= gap.first && sinceStart < gap.second;
    });
    return events_.Chance(effects_.gaps * receiver_.missedEpochs) || inGap;
}

double Tracker::StrengthOf(std::size_t signal, const Arrival& arrival) const {
    const Tracking& tracking = receiver_.signals[signal];
    const double low = 1.0 - std::sin(arrival.elevation);
    double loss = receiver_.strengthDrop * low * std::sqrt(low) - arrival.multipathStrength +
                  canopy_.LossAt(arrival.direction);
    double extra = 0.0;
    if (IsSecond(tracking)) {
        extra += receiver_.secondLoss;
    }
    if (IsCodeless(tracking)) {
        extra += receiver_.codelessLoss + 0.6 * std::max(0.0, loss);
    }
    loss += 6.0 * arrival.scintillation;
    return receiver_.strengthAtZenith - loss - extra;
}

void Tracker::Acquire(Channel& channel) {
    channel.ambiguity = events_.Integer(-20000, 20000);
    channel.reportSlip = channel.used && events_.Chance(receiver_.slipsReported);
    channel.locked = true;
    channel.used = true;
    channel.inBurst = false;
    channel.codeError = noise_.Normal();
    channel.unsettled = effects_.slips * receiver_.settling * events_.Normal();
    if (effects_.slips > 0.0 && receiver_.halfCycles > 0.0 &&
        events_.Chance(receiver_.halfCycles)) {
        channel.ambiguity += 0.5;
    }
}

void Tracker::Slip(Channel& channel) {
    const std::size_t size = events_.Choose({0.6, 0.3, 0.1});
    constexpr std::array<int, 3> kMost = {3, 100, 100000};
    double cycles = 0.0;
    while (cycles == 0.0) {
        cycles = events_.Integer(-kMost[size], kMost[size]);
    }
    if (events_.Chance(receiver_.halfCycles)) {
        cycles *= 0.5;
    }
    channel.ambiguity += cycles;
    channel.reportSlip = channel.reportSlip || events_.Chance(receiver_.slipsReported);
    channel.inBurst = events_.Chance(receiver_.burst);
    channel.unsettled = receiver_.settling * events_.Normal();
}

// One value in a hundred is five times as far off as the others: tails as those of real residuals.
double Tracker::HeavyNormal() {
    constexpr double kShare = 0.01, kFactor = 5.0;
    return (noise_.Chance(kShare) ? kFactor : 1.0) * noise_.Normal();
}

Reception Tracker::Receive(std::size_t satellite, std::size_t signal, double wavelength,
                           const Arrival& arrival, double sinceStart) {
    Channel& channel = channels_[satellite * receiver_.signals.size() + signal];
    Reception result;
    const bool ideal = effects_.tracking == 0.0;
    result.strength = StrengthOf(signal, arrival);
    const double memory = std::exp(-interval_ / 20.0);  // of leaves that move
    if (canopy_.exists()) {
        channel.flutter =
            memory * channel.flutter + std::sqrt(1.0 - memory * memory) * noise_.Normal();
        result.strength += around_.canopyFlutter * channel.flutter;
    }
    const bool inView = ideal || (arrival.elevation > receiver_.elevationCutoff &&
                                  arrival.elevation > HorizonAt(around_, arrival.azimuth));
    const double dropouts = effects_.slips * receiver_.dropouts * interval_ / 3600.0;
    if (channel.locked && dropouts > 0.0 && events_.Chance(dropouts)) {
        channel.locked = false;
        channel.clearSince = sinceStart;
        channel.delay = events_.Exponential(30.0);
        return result;
    }
    const double needed = channel.locked ? receiver_.loss : receiver_.acquisition;
    const bool clear = inView && (ideal || result.strength >= needed);
    if (!clear) {
        channel.locked = false;
        channel.clearSince = -1.0;
        return result;
    }
    if (channel.clearSince < 0.0) {
        channel.clearSince = sinceStart;
        // A receiver has been running for a while when its file begins.
        const bool atOnce = ideal || sinceStart == start_;
        channel.delay = atOnce ? 0.0 : events_.Exponential(receiver_.acquisitionDelay);
    }
    if (!channel.locked) {
        if (sinceStart - channel.clearSince < channel.delay) {
            return result;
        }
        Acquire(channel);
    } else {
        const double weakness = (kReferenceStrength - result.strength) / 12.0;
        const double rate = effects_.slips * receiver_.slipRate * std::pow(10.0, weakness);
        const double probability =
            channel.inBurst && effects_.slips > 0.0
                ? 0.4
                : 1.0 - std::exp(-rate * (sinceStart - channel.lastSeen) / 3600.0);
        if (events_.Chance(probability)) {
            Slip(channel);
        } else {
            channel.inBurst = false;
        }
    }
    channel.lastSeen = sinceStart;

    const double factor = NoiseFactor(result.strength);
    const double kept =
        receiver_.smoothing > 0.0 ? std::exp(-interval_ / receiver_.smoothing) : 0.0;
    channel.codeError = kept * channel.codeError + std::sqrt(1.0 - kept * kept) * HeavyNormal();
    result.code = true;
    result.phase = ideal || result.strength >= receiver_.loss + receiver_.phaseMargin;
    result.codeError = effects_.codeNoise * receiver_.codeNoise * factor * channel.codeError;
    // Weak phases are followed with the help of the strong ones, and less noisy for it.
    const double phaseFactor = std::pow(factor, 0.7);
    result.phaseError = effects_.phaseNoise * receiver_.phaseNoise * phaseFactor * HeavyNormal();
    if (canopy_.exists()) {
        result.phaseError += canopy_.ScatterAt(arrival.direction) * channel.flutter;
    }
    if (arrival.scintillation > 0.0) {
        // Up to 0.3 rad rms of phase in a disturbed night.
        result.phaseError +=
            0.3 * arrival.scintillation * wavelength / (2.0 * kPi) * noise_.Normal();
    }
    result.ambiguity = channel.ambiguity + channel.unsettled;
    constexpr double kSettlingTime = 20.0;  // s
    channel.unsettled *= std::exp(-interval_ / kSettlingTime);
    if (channel.reportSlip && result.phase) {
        result.lossOfLock = 1;
        channel.reportSlip = false;
    }
    return result;
}

}  // namespace vornel::rough
