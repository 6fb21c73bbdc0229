// Sequences of calls of the 47 exports in their documented order, with any values inside the ranges
// of VornelBlCore.h: none may crash, read or write beyond an array, or take longer than the time
// that an input is given.
//
// An input is a list of changes to a session that solves, then of calls. What it does not change
// stays as it is, so that most inputs reach the solution.
#include <algorithm>
#include <optional>

#include "byte_source.h"
#include "contract.h"
#include "made_up_session.h"
#include "require.h"

namespace vornel::fuzz {
namespace {

using namespace contract;
using engine::Config;
using engine::Glonass;
using engine::Kepler;
using engine::ReceiverEpoch;
using engine::System;

constexpr double kAnything = std::numeric_limits<double>::max();
const double kAboveOutlier = std::nextafter(kOutlierAbove, 10.0);
constexpr double kAboveZero = std::numeric_limits<double>::denorm_min();

template <typename Record>
struct RealField {
    double Record::*field;
    double low, high;
};

const RealField<engine::Config> kConfigReals[] = {
    {&engine::Config::elevationMask, 0.0, kMostMask},
    {&engine::Config::samplingInterval, kAboveZero, kAnything},
    {&engine::Config::shortBaselineLimit, -kAnything, kAnything},
    {&engine::Config::maxFixBaseline, -kAnything, kAnything},
    {&engine::Config::outlierFactor, kAboveOutlier, kAnything},
    {&engine::Config::slipTestCap, -kAnything, kAnything},
    {&engine::Config::ratioThreshold, -kAnything, kAnything},
    {&engine::Config::reservedLimitA, -kAnything, kAnything},
    {&engine::Config::reservedLimitB, -kAnything, kAnything},
    {&engine::Config::codeStd, -kAnything, kAnything},
    {&engine::Config::phaseStd, -kAnything, kAnything},
    {&engine::Config::periodLength, -kAnything, kAnything},
    {&engine::Config::pressure, -kAnything, kAnything},
    {&engine::Config::temperature, -kAnything, kAnything},
    {&engine::Config::humidity, -kAnything, kAnything},
};

int engine::Config::*const kConfigInts[] = {
    &engine::Config::slvmode,      &engine::Config::ephemerisSource, &engine::Config::tropoModel,
    &engine::Config::reservedMode, &engine::Config::galFreq1,        &engine::Config::galFreq2};

const RealField<engine::Kepler> kKeplerReals[] = {
    {&engine::Kepler::af0, -kMostClock, kMostClock},
    {&engine::Kepler::af1, -kMostClockDrift, kMostClockDrift},
    {&engine::Kepler::af2, -kMostClockAging, kMostClockAging},
    {&engine::Kepler::sqrtA, kLeastSqrtA, kMostSqrtA},
    {&engine::Kepler::e, 0.0, kMostEccentricity},
    {&engine::Kepler::i0, -kMostAngle, kMostAngle},
    {&engine::Kepler::omega0, -kMostAngle, kMostAngle},
    {&engine::Kepler::omega, -kMostAngle, kMostAngle},
    {&engine::Kepler::m0, -kMostAngle, kMostAngle},
    {&engine::Kepler::cuc, -kMostAngle, kMostAngle},
    {&engine::Kepler::cus, -kMostAngle, kMostAngle},
    {&engine::Kepler::cic, -kMostAngle, kMostAngle},
    {&engine::Kepler::cis, -kMostAngle, kMostAngle},
    {&engine::Kepler::deltaN, -kMostRate, kMostRate},
    {&engine::Kepler::omegaDot, -kMostRate, kMostRate},
    {&engine::Kepler::idot, -kMostRate, kMostRate},
    {&engine::Kepler::crc, -kAnything, kAnything},
    {&engine::Kepler::crs, -kAnything, kAnything},
    {&engine::Kepler::iodc, -kAnything, kAnything},
    {&engine::Kepler::transmitTime, -kAnything, kAnything},
    {&engine::Kepler::accuracy, -kAnything, kAnything},
    {&engine::Kepler::tgd, -kAnything, kAnything},
    {&engine::Kepler::tgd2, -kAnything, kAnything},
};

int engine::Kepler::*const kKeplerInts[] = {&engine::Kepler::iode, &engine::Kepler::l2Codes,
                                            &engine::Kepler::health, &engine::Kepler::l2PFlag,
                                            &engine::Kepler::fitInterval};

// Most changes are small, so that they meet the limits of the engine's own decisions.
double Changed(ByteSource& bytes, double value, double low, double high) {
    double changed = 0.0;
    switch (bytes.Byte() % 4) {
        case 0:
            changed = value * (1.0 + 1e-9 * bytes.Int(-1000000, 1000000));
            break;
        case 1:
            changed = value + bytes.Within(-10.0, 10.0);
            break;
        default:
            return bytes.Within(std::max(low, -1e300), std::min(high, 1e300));
    }
    return changed >= low && changed <= high ? changed : value;
}

// A week and seconds: near those given, or any.
void ChangeTime(ByteSource& bytes, int& week, double& seconds) {
    switch (bytes.Byte() % 3) {
        case 0:
            seconds += bytes.Int(-20000, 20000);
            break;
        case 1:
            seconds += bytes.Within(-1.0, 1.0);
            break;
        default:
            week = bytes.Int(0, kMostWeek);
            seconds = bytes.Within(0.0, std::nextafter(kWeekSeconds, 0.0));
    }
    if (!IsTime(week, seconds)) {
        week = 2200;
        seconds = 0.0;
    }
}

struct Exclusions {
    std::vector<engine::Satellite> pairs;  // system and number may be none of the engine's
    std::vector<engine::Satellite> added;
};

class Calls {
  public:
    explicit Calls(ByteSource& bytes) : bytes_(bytes), session_(MadeUpSession()) {}

    void Play() {
        if (bytes_.Byte() % 8 == 1) {
            DiposeProcess();  // without a process it does nothing
        }
        while (!bytes_.Empty() && ChangeOne()) {
        }
        KeepOrder();
        HandOver();
        Run();
        while (!bytes_.Empty()) {
            CallOne();
        }
        AskEverything();
        DiposeProcess();
    }

  private:
    template <typename T>
    T& OneOf(std::vector<T>& list) {
        return list[bytes_.Index(list.size())];
    }

    // One change of what is handed over; false when the changes end.
    bool ChangeOne() {
        switch (bytes_.Byte() % 16) {
            case 0:
                return false;
            case 1:
            case 2:
                ChangeConfig();
                return true;
            case 3:
                ChangeStations();
                return true;
            case 4:
            case 5:
                ChangeKepler();
                return true;
            case 6:
                ChangeGlonass();
                return true;
            case 7:
                ChangePrecise();
                return true;
            case 8:
                ionosphere_ = true;
                (bytes_.Flag() ? alpha_ : beta_)[bytes_.Index(4)] =
                    bytes_.Flag() ? bytes_.AnyFinite() : bytes_.Within(-1e6, 1e6);
                return true;
            case 9:
                MoveSession();
                return true;
            case 10:
                ChangeEpochTime();
                return true;
            case 11:
                Interrupt();
                return true;
            case 12:
                Slip();
                return true;
            default:
                ChangeObservation();
                return true;
        }
    }

    void ChangeConfig() {
        engine::Config& c = session_.config;
        const std::size_t which = bytes_.Index(32);
        if (which < std::size(kConfigReals)) {
            const auto& [field, low, high] = kConfigReals[which];
            c.*field = Changed(bytes_, c.*field, low, high);
        } else if (which < 21) {
            c.*kConfigInts[which - 15] = bytes_.Flag() ? bytes_.AnyInt() : bytes_.Int(0, 7);
        } else if (which < 25) {
            c.systems[which - 21] = bytes_.Int(0, 1);
        } else if (which == 25) {
            c.minEpochs =
                bytes_.Flag() ? bytes_.Int(1, 30) : bytes_.Int(1, std::numeric_limits<int>::max());
        } else if (which == 26) {
            ChangeTime(bytes_, c.sessionStartWeek, c.sessionStartSeconds);
        } else if (which == 27) {
            ChangeTime(bytes_, c.sessionEndWeek, c.sessionEndSeconds);
        } else if (which == 28) {
            configured_ = !configured_;
        } else {
            c.slvmode = bytes_.Int(0, 6);
        }
    }

    void ChangeStations() {
        engine::Station& station = bytes_.Flag() ? session_.rover : session_.base;
        switch (bytes_.Byte() % 6) {
            case 0:
                station.height = Changed(bytes_, station.height, -kAnything, kAnything);
                break;
            case 1:
                (bytes_.Flag() ? station.offset1 : station.offset2)[bytes_.Index(3)] =
                    bytes_.AnyFinite();
                break;
            case 2:
                stationsGiven_ = !stationsGiven_;
                break;
            case 3:
                session_.rover.xyz = session_.base.xyz;
                break;
            default:
                ChangePosition(station.xyz);
        }
    }

    void ChangePosition(std::array<double, 3>& xyz) {
        std::array<double, 3> changed = xyz;
        double& coordinate = changed[bytes_.Index(3)];
        coordinate = Changed(bytes_, coordinate, -kMostStation, kMostStation);
        const double radius = std::hypot(changed[0], changed[1], changed[2]);
        if (radius >= kLeastStation && radius <= kMostStation) {
            xyz = changed;
        }
    }

    void ChangeKepler() {
        engine::Kepler& record = OneOf(session_.kepler);
        const std::size_t which = bytes_.Index(40);
        if (which < std::size(kKeplerReals)) {
            const auto& [field, low, high] = kKeplerReals[which];
            record.*field = Changed(bytes_, record.*field, low, high);
        } else if (which < 28) {
            record.*kKeplerInts[which - 23] = bytes_.AnyInt();
        } else if (which < 31) {
            ChangeTime(bytes_, record.toeWeek, record.toe);
        } else if (which < 34) {
            ChangeTime(bytes_, record.tocWeek, record.tocSeconds);
        } else if (which < 36) {
            const engine::Kepler copy = record;
            session_.kepler.push_back(copy);
        } else if (which < 38) {
            session_.kepler.erase(
                session_.kepler.begin() +
                static_cast<std::ptrdiff_t>(bytes_.Index(session_.kepler.size())));
            if (session_.kepler.empty()) {
                session_.kepler = MadeUpSession().kepler;
            }
        } else {
            record.satId = bytes_.Int(1, SatellitesOf(static_cast<int>(record.system)));
        }
    }

    void ChangeGlonass() {
        engine::Glonass& record = OneOf(session_.glonass);
        switch (bytes_.Byte() % 12) {
            case 0:
                record.clockBias = Changed(bytes_, record.clockBias, -kMostClock, kMostClock);
                break;
            case 1:
                record.clockDrift =
                    Changed(bytes_, record.clockDrift, -kMostClockDrift, kMostClockDrift);
                break;
            case 2:
                ChangeGlonassPosition(record);
                break;
            case 3: {
                double& value = record.velocity[bytes_.Index(3)];
                value = Changed(bytes_, value, -kAnything, kAnything);
                break;
            }
            case 4: {
                double& value = record.acceleration[bytes_.Index(3)];
                value = Changed(bytes_, value, -kAnything, kAnything);
                break;
            }
            case 5:
                record.channel = bytes_.Int(kLeastChannel, kMostChannel);
                break;
            case 6:
                record.leapSeconds = bytes_.Int(0, kMostLeapSeconds);
                break;
            case 7:
                record.health = bytes_.AnyInt();
                record.age = bytes_.AnyInt();
                break;
            case 8:  // "no date"
                record.week = 1042;
                record.seconds = 518400.0;
                record.tbSeconds = Changed(bytes_, record.tbSeconds, -kAnything, kAnything);
                break;
            case 9:
                record.slot = bytes_.Int(1, 32);
                break;
            case 10: {
                const engine::Glonass copy = record;
                session_.glonass.push_back(copy);
                break;
            }
            default:
                ChangeTime(bytes_, record.week, record.seconds);
        }
    }

    void ChangeGlonassPosition(engine::Glonass& record) {
        std::array<double, 3> changed = record.position;
        double& coordinate = changed[bytes_.Index(3)];
        coordinate = Changed(bytes_, coordinate, -kMostGlonassRadius, kMostGlonassRadius);
        const double radius = std::hypot(changed[0], changed[1], changed[2]);
        if (radius >= kLeastGlonassRadius && radius <= kMostGlonassRadius) {
            record.position = changed;
        }
    }

    void ChangePrecise() {
        session_.config.ephemerisSource = 1;
        PreciseTable& table = OneOf(session_.precise);
        if (table.values.empty()) {
            return;
        }
        const std::size_t i = bytes_.Index(table.values.size());
        switch (bytes_.Byte() % 6) {
            case 0:
                table.values[i] = kMissing;
                break;
            case 1:
                table.component = bytes_.AnyInt();
                break;
            case 2:
                table.satellite = {static_cast<engine::System>(bytes_.Int(0, 9)), bytes_.AnyInt()};
                break;
            case 3:
                table.weeks.resize(i);
                table.seconds.resize(i);
                table.values.resize(i);
                break;
            default: {
                const double bound = table.component == 3 ? kMostClock : kMostOrbitRadius;
                table.values[i] = Changed(bytes_, table.values[i], -bound, bound);
            }
        }
    }

    // The whole session by weeks, or to another time of the week: orbits, tables and epochs alike,
    // or the epochs alone.
    void MoveSession() {
        const int weeks = bytes_.Int(-2200, 4060);
        const double seconds = bytes_.Flag() ? bytes_.Int(-131400, 470000) : 0.0;
        const bool orbitsToo = bytes_.Byte() % 4 != 0;
        const auto move = [&](int& week, double& of) {
            week = std::clamp(week + weeks, 0, kMostWeek);
            of = std::clamp(of + seconds, 0.0, std::nextafter(kWeekSeconds, 0.0));
        };
        for (EpochOfTwo& epoch : session_.epochs) {
            move(epoch.rover.week, epoch.rover.seconds);
            move(epoch.base.week, epoch.base.seconds);
        }
        if (!orbitsToo) {
            return;
        }
        for (engine::Kepler& record : session_.kepler) {
            move(record.toeWeek, record.toe);
            move(record.tocWeek, record.tocSeconds);
        }
        for (engine::Glonass& record : session_.glonass) {
            move(record.week, record.seconds);
        }
    }

    void ChangeEpochTime() {
        const std::size_t first = bytes_.Index(session_.epochs.size());
        const bool all = bytes_.Flag();
        const double seconds =
            bytes_.Flag() ? bytes_.Int(-100, 20000) : bytes_.Within(-kPairing, kPairing);
        const int receivers = bytes_.Int(1, 3);
        for (std::size_t e = first; e < (all ? session_.epochs.size() : first + 1); ++e) {
            if ((receivers & 1) != 0) {
                session_.epochs[e].rover.seconds += seconds;
            }
            if ((receivers & 2) != 0) {
                session_.epochs[e].base.seconds += seconds;
            }
        }
    }

    engine::ReceiverEpoch& Receiver(std::size_t e, bool rover) {
        return rover ? session_.epochs[e].rover : session_.epochs[e].base;
    }

    // A slot loses values, or the satellite, from an epoch to another.
    void Interrupt() {
        const std::size_t first = bytes_.Index(session_.epochs.size());
        const std::size_t last =
            std::min(session_.epochs.size(), first + 1 + bytes_.Index(session_.epochs.size()));
        const bool rover = bytes_.Flag();
        const std::size_t slot = bytes_.Index(20);
        const std::size_t what = bytes_.Index(6);
        for (std::size_t e = first; e < last; ++e) {
            engine::ReceiverEpoch& epoch = Receiver(e, rover);
            if (what == 0) {
                epoch.satellites[slot] = 0;
            }
            for (auto* values : {&epoch.code1, &epoch.code2, &epoch.phase1, &epoch.phase2}) {
                if (what == 1 || values == Arrays(epoch)[what % 4]) {
                    (*values)[slot] = 0.0;
                }
            }
        }
    }

    static std::array<std::array<double, 64>*, 4> Arrays(engine::ReceiverEpoch& epoch) {
        return {&epoch.code1, &epoch.code2, &epoch.phase1, &epoch.phase2};
    }

    void Slip() {
        const std::size_t first = bytes_.Index(session_.epochs.size());
        const bool rover = bytes_.Flag();
        const std::size_t slot = bytes_.Index(20);
        const bool second = bytes_.Flag();
        const double cycles =
            bytes_.Flag() ? bytes_.Int(-20, 20) : bytes_.Within(-kMostPhase / 2, kMostPhase / 2);
        for (std::size_t e = first; e < session_.epochs.size(); ++e) {
            engine::ReceiverEpoch& epoch = Receiver(e, rover);
            double& phase = (second ? epoch.phase2 : epoch.phase1)[slot];
            if (phase != 0.0 && IsWithin(phase + cycles, kMostPhase)) {
                phase += cycles;
            }
        }
    }

    void ChangeObservation() {
        engine::ReceiverEpoch& epoch =
            Receiver(bytes_.Index(session_.epochs.size()), bytes_.Flag());
        const std::size_t slot = bytes_.Index(64);
        const std::size_t which = bytes_.Index(5);
        if (which == 4) {
            epoch.satellites[slot] = bytes_.Flag() ? bytes_.AnyInt() : bytes_.Int(-1, 137);
            return;
        }
        double& value = (*Arrays(epoch)[which])[slot];
        value = which < 2 ? Changed(bytes_, value, kLeastCode, kMostCode)
                          : Changed(bytes_, value, -kMostPhase, kMostPhase);
    }

    // Epochs stay in time order, their tags in one week and at most 0.1 s apart.
    void KeepOrder() {
        int week = -1;
        double seconds = 0.0;
        std::erase_if(session_.epochs, [&](const EpochOfTwo& epoch) {
            const auto& [rover, base] = epoch;
            const bool fits = IsTime(rover.week, rover.seconds) &&
                              IsTime(base.week, base.seconds) && rover.week == base.week &&
                              std::fabs(rover.seconds - base.seconds) <= kPairing &&
                              (week < base.week || (week == base.week && seconds < base.seconds));
            if (fits) {
                week = base.week;
                seconds = base.seconds;
            }
            return !fits;
        });
    }

    void HandOver() {
        if (bytes_.Byte() % 16 == 1) {
            FUZZ_REQUIRE(CreateBLProcessWithTrace("/dev/null", bytes_.Int(0, 5)) == 1);
        } else {
            FUZZ_REQUIRE(CreateBLProcess() == 1);
        }
        if (configured_) {
            HandOverConfig();
        }
        if (stationsGiven_) {
            engine::Station r = session_.rover, b = session_.base;
            FUZZ_REQUIRE(InputAntCorrData(r.xyz.data(), r.offset1.data(), r.offset2.data(),
                                          r.height, b.xyz.data(), b.offset1.data(),
                                          b.offset2.data(), b.height) == 1);
        }
        if (ionosphere_) {
            FUZZ_REQUIRE(InputIonCorrData(alpha_, beta_) == 1);
        }
        HandOverOrbits();
        for (EpochOfTwo& e : session_.epochs) {
            FUZZ_REQUIRE(InputEpochObsData(e.rover.week, e.rover.seconds, e.rover.satellites.data(),
                                           e.rover.code1.data(), e.rover.code2.data(),
                                           e.rover.phase1.data(), e.rover.phase2.data(),
                                           e.base.week, e.base.seconds, e.base.satellites.data(),
                                           e.base.code1.data(), e.base.code2.data(),
                                           e.base.phase1.data(), e.base.phase2.data()) == 1);
        }
    }

    void HandOverConfig() {
        engine::Config c = session_.config;
        FUZZ_REQUIRE(InputSolveConfig(c.slvmode, c.elevationMask, c.samplingInterval, c.minEpochs,
                                      c.shortBaselineLimit, c.maxFixBaseline, c.ephemerisSource,
                                      c.systems.data(), c.outlierFactor, c.slipTestCap,
                                      c.ratioThreshold, c.reservedLimitA, c.reservedLimitB,
                                      c.codeStd, c.phaseStd, c.periodLength, c.tropoModel,
                                      c.pressure, c.temperature, c.humidity, c.reservedMode,
                                      c.sessionStartWeek, c.sessionStartSeconds, c.sessionEndWeek,
                                      c.sessionEndSeconds, c.galFreq1, c.galFreq2) == 1);
    }

    void HandOverOrbits() {
        engine::Engine engine;  // creates nothing, so that it disposes of nothing
        for (const engine::Kepler& record : session_.kepler) {
            engine.AddKepler(record);
        }
        for (const engine::Glonass& record : session_.glonass) {
            engine.AddGlonass(record);
        }
        for (const PreciseTable& table : session_.precise) {
            engine.AddPrecise(table.component, table.satellite, table.weeks, table.seconds,
                              table.values);
        }
    }

    void Run() {
        int status = -1;
        const int answer = StartProcess(&status);
        FUZZ_REQUIRE(answer == 0 || answer == 1);
        FUZZ_REQUIRE(status >= 10 && status <= 85);
        hasSolver_ = answer == 1 || status != 10;
    }

    // ---- after the run --------------------------------------------------------------------------

    void CallOne() {
        switch (bytes_.Byte() % 12) {
            case 0:
                MarkDeleted();
                break;
            case 1:
                AddOneDelSat(bytes_.AnyInt() % 10, bytes_.AnyInt());
                break;
            case 2:
                CleanSatTrackList();
                break;
            case 3:
            case 4:
                AddTrack();
                break;
            case 5:
                if (++runs_ < 3) {
                    Run();
                }
                break;
            case 6:
                AskEverything();
                break;
            default:
                Ask();
        }
    }

    void MarkDeleted() {
        const int count = bytes_.Int(-2, 12);
        std::vector<int> systems, prns;
        for (int i = 0; i < count; ++i) {
            systems.push_back(bytes_.Flag() ? 1 << bytes_.Int(0, 3) : bytes_.AnyInt());
            prns.push_back(bytes_.Flag() ? bytes_.Int(1, 36) : bytes_.AnyInt());
        }
        FUZZ_REQUIRE(MarkDelSatList(count, systems.data(), prns.data()) == 1);
    }

    void AddTrack() {
        const int count = bytes_.Int(-1, 4);
        const engine::ReceiverEpoch& around = MadeUpSession().epochs.front().base;
        std::vector<int> weeks;
        std::vector<double> seconds;
        // The span itself first, then the gaps.
        for (int i = 0; i < 2 * std::max(count, 0) + 2; ++i) {
            weeks.push_back(around.week);
            seconds.push_back(around.seconds);
            ChangeTime(bytes_, weeks.back(), seconds.back());
        }
        const std::size_t gaps = static_cast<std::size_t>(std::max(count, 0));
        std::vector<int> startWeeks(weeks.begin() + 2,
                                    weeks.begin() + 2 + static_cast<std::ptrdiff_t>(gaps));
        std::vector<int> endWeeks(weeks.end() - static_cast<std::ptrdiff_t>(gaps), weeks.end());
        std::vector<double> starts(seconds.begin() + 2,
                                   seconds.begin() + 2 + static_cast<std::ptrdiff_t>(gaps));
        std::vector<double> ends(seconds.end() - static_cast<std::ptrdiff_t>(gaps), seconds.end());
        const int system = bytes_.Byte() % 8 == 0 ? bytes_.AnyInt() : 1 << bytes_.Int(0, 3);
        FUZZ_REQUIRE(AddOneSatTrackInfo(bytes_.Int(-1, 3), system, bytes_.Int(-1, 37),
                                        bytes_.Int(0, 1), weeks[0], seconds[0], weeks[1],
                                        seconds[1], bytes_.AnyFinite(), count, startWeeks.data(),
                                        starts.data(), endWeeks.data(), ends.data()) == 1);
    }

    // Indices, models, satellites, kinds: most that exist, some that do not.
    int SomeIndex() { return bytes_.Byte() % 4 == 3 ? bytes_.AnyInt() : bytes_.Int(0, 2); }
    int SomeCount() { return bytes_.Byte() % 4 == 3 ? -bytes_.Int(1, 1000) : bytes_.Int(0, 80); }
    int SomeSystem() { return bytes_.Byte() % 4 == 3 ? bytes_.AnyInt() : 1 << bytes_.Int(0, 3); }
    int SomePrn() { return bytes_.Byte() % 4 == 3 ? bytes_.AnyInt() : bytes_.Int(1, 36); }
    int SomeKind() { return bytes_.Byte() % 4 == 3 ? bytes_.AnyInt() : bytes_.Int(0, 1); }

    // Arrays of exactly the size told.
    struct Arrays16 {
        explicit Arrays16(int count) {
            const auto size = static_cast<std::size_t>(std::max(count, 0));
            for (auto& list : ints) {
                list.resize(size);
            }
            for (auto& list : reals) {
                list.resize(size);
            }
        }
        std::vector<int> ints[10];
        std::vector<double> reals[6];
    };

    // `call` takes the 31 outputs of a solution.
    template <typename Call>
    static int AskBaseData(int mode, Call call) {
        double v[29] = {};
        int dof = 0;
        return call(&mode, v, v + 1, v + 2, v + 3, v + 4, v + 5, &dof, v + 6, v + 7, v + 8, v + 9,
                    v + 10, v + 11, v + 12, v + 13, v + 14, v + 15, v + 16, v + 17, v + 18, v + 19,
                    v + 20, v + 21, v + 22, v + 23, v + 24, v + 25, v + 26, v + 27, v + 28);
    }

    // `call` takes the 16 arrays of ambiguities.
    template <typename Call>
    static int AskAmbiguities(int count, Call call) {
        Arrays16 a(count);
        return call(a.ints[0].data(), a.ints[1].data(), a.ints[2].data(), a.ints[3].data(),
                    a.ints[4].data(), a.reals[0].data(), a.ints[5].data(), a.reals[1].data(),
                    a.reals[2].data(), a.reals[3].data(), a.ints[6].data(), a.ints[7].data(),
                    a.ints[8].data(), a.ints[9].data(), a.reals[4].data(), a.reals[5].data());
    }

    static void AskSummary() {
        int model = 0, code = 0;
        bool a = true, b = true, c = true;
        double v[10];
        GetSolveResultsBaseData(&model, &a, &b, &c, &code, nullptr, nullptr, v, v + 1, v + 2, v + 3,
                                v + 4, v + 5, v + 6, v + 7, v + 8, v + 9);
        FUZZ_REQUIRE(!a && !b && !c && code == 2 && v[9] == 0.0);
    }

    static void AskModes(int maxCount) {
        std::vector<int> modes(static_cast<std::size_t>(std::max(maxCount, 0)));
        GetFloatSolNumAndMode(maxCount, modes.data());
        GetFixedSolNumAndMode(maxCount, modes.data());
    }

    static void AskSatellites(int index, int maxCount) {
        const auto size = static_cast<std::size_t>(std::max(maxCount, 0));
        std::vector<int> systems(size), prns(size);
        for (const auto list :
             {&GetFloatSolSatList, &GetFixedSolSatList, &GetModeFixedSolSatList}) {
            const int written = list(index, maxCount, systems.data(), prns.data());
            FUZZ_REQUIRE(written >= 0 && written <= std::max(maxCount, 0));
        }
    }

    static void AskResiduals(int index, int system, int prn, int kind, int maxCount) {
        const auto size = static_cast<std::size_t>(std::max(maxCount, 0));
        std::vector<int> weeks(size), values(size);
        std::vector<double> seconds(size);
        for (const auto list : {&GetFloatSolResList, &GetFixedSolResList, &GetModeFloatSolResList,
                                &GetModeFixedSolResList}) {
            const int written = list(index, system, prn, kind, maxCount, weeks.data(),
                                     seconds.data(), values.data());
            FUZZ_REQUIRE(written >= 0 && written <= std::max(maxCount, 0));
        }
    }

    // A query may let an exception out.
    void Ask() {
        if (!hasSolver_) {
            return;
        }
        try {
            AskOne();
        } catch (const std::exception&) {
        }
    }

    void AskOne() {
        switch (bytes_.Byte() % 8) {
            case 0:
                AskModes(SomeCount());
                break;
            case 1:
                AskSatellites(SomeIndex(), SomeCount());
                break;
            case 2:
                AskResiduals(SomeIndex(), SomeSystem(), SomePrn(), SomeKind(), SomeCount());
                break;
            case 3: {
                const int maxCount = SomeCount();
                std::vector<double> variances(static_cast<std::size_t>(std::max(maxCount, 0)));
                GetFloatAmbCov(SomeIndex(), maxCount, variances.data());
                break;
            }
            case 4: {
                const int maxCount = SomeCount(), index = SomeIndex();
                AskAmbiguities(maxCount, [&](auto... arrays) {
                    return GetFloatSolAmbListData(index, maxCount, arrays...);
                });
                break;
            }
            case 5: {
                const int maxCount = SomeCount(), index = SomeIndex();
                double ratio = 0.0;
                AskAmbiguities(maxCount, [&](auto... arrays) {
                    return GetFixedSolAmbListData(index, maxCount, &ratio, arrays...);
                });
                break;
            }
            case 6: {
                const int index = SomeIndex();
                AskBaseData(0, [&](auto... out) { return GetFloatSolBaseData(index, out...); });
                AskBaseData(0, [&](auto... out) { return GetFixedSolBaseData(index, out...); });
                break;
            }
            default: {
                const int mode = SomeIndex();
                AskBaseData(mode, [](auto... out) { return GetModeFloatSolBaseData(out...); });
                AskBaseData(mode, [](auto... out) { return GetModeFixedSolBaseData(out...); });
                GetModeFloatSolSatNum(mode);
                GetModeFixedSolSatNum(mode);
            }
        }
    }

    // All that there is, in arrays just large enough.
    void AskEverything() {
        if (!hasSolver_) {
            return;
        }
        AskSummary();
        try {
            AskBaseData(0, [](auto... out) { return GetTripDiffSol(out...); });
            const int floats = GetFloatSolNum(), fixeds = GetFixedSolNum();
            FUZZ_REQUIRE(floats >= 0 && floats <= 2 && fixeds >= 0 && fixeds <= 2);
            AskModes(std::max(floats, fixeds));
            for (int i = 0; i < std::max(floats, fixeds); ++i) {
                AskSolution(i);
            }
        } catch (const std::exception&) {
        }
    }

    static void AskSolution(int index) {
        AskBaseData(0, [&](auto... out) { return GetFloatSolBaseData(index, out...); });
        AskBaseData(0, [&](auto... out) { return GetFixedSolBaseData(index, out...); });
        const int ofFloat = GetFloatSolAmbNum(index), ofFixed = GetFixedSolAmbNum(index);
        const int listed = AskAmbiguities(ofFloat, [&](auto... arrays) {
            return GetFloatSolAmbListData(index, ofFloat, arrays...);
        });
        FUZZ_REQUIRE(listed == ofFloat);
        double ratio = 0.0;
        AskAmbiguities(ofFixed, [&](auto... arrays) {
            return GetFixedSolAmbListData(index, ofFixed, &ratio, arrays...);
        });
        const int satellites = std::max(GetFloatSolSatNum(index), GetFixedSolSatNum(index));
        AskSatellites(index, satellites);
        for (int system : {1, 2, 4, 8}) {
            for (int prn = 1; prn <= SatellitesOf(system); ++prn) {
                for (int kind = 0; kind < 2; ++kind) {
                    const int size =
                        std::max(std::max(GetFloatSolResListSize(index, system, prn, kind),
                                          GetFixedSolResListSize(index, system, prn, kind)),
                                 std::max(GetModeFloatSolResListSize(index, system, prn, kind),
                                          GetModeFixedSolResListSize(index, system, prn, kind)));
                    if (size > 0) {
                        AskResiduals(index, system, prn, kind, size);
                    }
                }
            }
        }
    }

    ByteSource& bytes_;
    EngineSession session_;
    bool configured_ = true;
    bool stationsGiven_ = true;
    bool ionosphere_ = false;
    double alpha_[4] = {1.2e-8, 0.0, -6e-8, 6e-8};
    double beta_[4] = {1e5, 0.0, -2e5, 6.5e4};
    bool hasSolver_ = false;
    int runs_ = 0;
};

}  // namespace
}  // namespace vornel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vornel::fuzz::ForgetEverything();
    vornel::fuzz::ByteSource bytes(data, size);
    vornel::fuzz::Calls(bytes).Play();
    vornel::fuzz::ForgetEverything();
    return 0;
}
