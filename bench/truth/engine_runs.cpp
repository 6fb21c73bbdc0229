#include "engine_runs.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "../measure.h"
#include "engine/status.h"
#include "row.h"
#include "session/fault.h"
#include "session/session.h"
#include "solve/checked_run.h"
#include "solve/feed.h"
#include "solve/outcome.h"
#include "solve/preparation.h"
#include "solve/residual_statistics.h"

namespace vornel::truth {
namespace {

using engine::Solution;
using session::Geodetic;
using session::Session;
using solve::kUnknown;
using solve::ResidualStatistics;
using solve::SkyOfSession;
using solve::StatisticsOf;

constexpr double kDegree = M_PI / 180.0;
constexpr int kWideLane = 5;
constexpr double kSkyStep = 300.0;      // s
constexpr unsigned kLongestRuns = 300;  // s for all runs of one engine

// What is common to all rows of a session.
struct Context {
    const Scene& scene;
    const Session& prepared;
    Geodetic base;  // where north, east and up are taken
};

double Millimetres(double metres) {
    return 1000.0 * metres;
}

// ---- columns ------------------------------------------------------------------------------------

void PutSession(Row& row, const Context& c) {
    const Scene& scene = c.scene;
    const Session& s = c.prepared;
    const KnownVector& known = scene.known;
    const auto place = [](const Vector3& xyz) {
        return session::Length(xyz) > 0.0 ? session::ToGeodetic(xyz) : Geodetic{};
    };
    const Vector3 base = known.base.value_or(s.base.position);
    const Geodetic here = c.base, there = place(session::Plus(base, known.vector));
    const bool any = !s.pairs.empty();
    const io::GpsTime first = any ? s.FirstTime() : io::GpsTime{};
    const double span = any ? io::SecondsBetween(first, s.LastTime()) : kUnknown;
    const auto off = [](const std::optional<Vector3>& from, const Vector3& to) {
        return from ? session::Length(session::Minus(*from, to)) : kUnknown;
    };
    const auto code = [](const session::Station& station) {
        return station.codeFix ? std::optional(station.codeFix->position) : std::nullopt;
    };
    const Vector3 rover = session::Plus(base, known.vector);

    row.Text("source", scene.source);
    row.Text("set", scene.set);
    row.Text("cut", scene.cut);
    row.Text("block", scene.block);
    row.Text("start", any ? io::FormatTime(first, 0) : std::string());
    row.Real("solar_hour",
             any ? std::fmod(std::fmod(first.seconds + span / 2.0, 86400.0) / 3600.0 +
                                 here.longitude / kDegree / 15.0 + 24.0,
                             24.0)
                 : kUnknown,
             4);
    row.Real("duration", scene.duration);
    row.Real("span", span);
    row.Real("interval", s.interval);
    row.Real("length", session::Length(known.vector), 8);
    row.Real("dh", there.height - here.height);
    row.Real("h_base", here.height);
    row.Real("h_rover", there.height);
    row.Real("lat", here.latitude / kDegree);
    row.Real("lon", here.longitude / kDegree);
    row.Real("truth_sh", Millimetres(known.sigmaHorizontal));
    row.Real("truth_su", Millimetres(known.sigmaUp));
    row.Text("systems", scene.systems);
    row.Whole("freqs", scene.frequencies);
    row.Text("orbits", NameOf(scene.orbits));
    row.Whole("swapped", scene.swapped ? 1 : 0);
    row.Real("moved", scene.headerOffset);
    row.Whole("coefficients", s.ionosphere ? 1 : 0);
    const auto& a = s.base.antenna;
    const auto& b = s.rover.antenna;
    row.Text("antennas", s.antennasApplied                          ? "applied"
                         : a.type.empty() || a.type == "Unknown"    ? "unknown"
                         : a.type == b.type && a.radome == b.radome ? "same"
                                                                    : "differ");
    row.Whole("pairs", static_cast<long long>(s.pairs.size()));
    row.Real("header_base", off(s.base.header.approximatePosition, base));
    row.Real("header_rover", off(s.rover.header.approximatePosition, rover));
    row.Real("code_base", off(code(s.base), base));
    row.Real("code_rover", off(code(s.rover), rover));
    row.Real("code_spread_base", s.base.codeFix ? s.base.codeFix->spread : kUnknown);
    row.Real("code_spread_rover", s.rover.codeFix ? s.rover.codeFix->spread : kUnknown);
    row.Real("header_code_base", s.base.offFromCode.value_or(kUnknown));
    row.Real("header_code_rover", s.rover.offFromCode.value_or(kUnknown));
}

void PutError(Row& row, const Context& c, const std::string& prefix, const Solution* solution) {
    Vector3 error = {kUnknown, kUnknown, kUnknown};
    if (solution != nullptr && solution->mode != 0) {
        error = session::ToNeu(c.base, session::Minus(solution->vector, c.scene.known.vector));
    }
    row.Real((prefix + "_n").c_str(), Millimetres(error[0]), 6);
    row.Real((prefix + "_e").c_str(), Millimetres(error[1]), 6);
    row.Real((prefix + "_u").c_str(), Millimetres(error[2]), 6);
}

// One solution: error, formal deviations and quality.
void PutSolution(Row& row, const Context& c, const std::string& prefix, const Solution* s) {
    const auto name = [&](const char* end) { return prefix + end; };
    const bool filed = s != nullptr && s->mode != 0;
    const auto sigma = [&](std::size_t i) {
        return filed ? Millimetres(std::sqrt(std::max(0.0, s->covarianceNeu[4 * i]))) : kUnknown;
    };
    row.Whole(name("_mode").c_str(), filed ? s->mode : 0);
    PutError(row, c, prefix, s);
    row.Real(name("_sn").c_str(), sigma(0), 4);
    row.Real(name("_se").c_str(), sigma(1), 4);
    row.Real(name("_su").c_str(), sigma(2), 4);
    row.Real(name("_rms").c_str(), filed ? Millimetres(s->rms) : kUnknown, 4);
    row.Real(name("_vf").c_str(), filed ? s->varianceFactor : kUnknown, 4);
    row.Whole(name("_dof").c_str(), filed ? s->dof : 0);
    row.Whole(name("_amb").c_str(), filed ? static_cast<long long>(s->ambiguities.size()) : 0);
}

std::set<engine::Satellite> SatellitesOf(const Solution& solution) {
    std::set<engine::Satellite> satellites;
    for (const engine::ResidualSeries& series : solution.residuals) {
        if (!series.points.empty()) {
            satellites.insert({static_cast<engine::System>(series.system), series.prn});
        }
    }
    return satellites;
}

// "G5R4E6": of each system how many.
std::string CountBySystem(const std::set<engine::Satellite>& satellites) {
    std::map<engine::System, int> counts;
    for (const engine::Satellite& satellite : satellites) {
        ++counts[satellite.system];
    }
    std::string text;
    for (const auto& [system, count] : counts) {
        text += engine::LetterOf(system) + std::to_string(count);
    }
    return text;
}

// The ends of the engine's periods, as indices of epochs: a period closes once it is long enough and
// has enough epochs; a short tail joins the last one.
std::vector<int> PeriodEnds(const std::vector<io::GpsTime>& times, double length, int minEpochs) {
    std::vector<int> ends;
    std::size_t begin = 0;
    int count = 0;
    for (std::size_t i = 0; i < times.size(); ++i) {
        ++count;
        if (io::SecondsBetween(times[begin], times[i]) >= length && count >= minEpochs) {
            ends.push_back(static_cast<int>(i));
            begin = i + 1;
            count = 0;
        }
    }
    if (count > 0) {
        if (!ends.empty() && count < 5 * minEpochs) {
            ends.back() = static_cast<int>(times.size()) - 1;
        } else {
            ends.push_back(static_cast<int>(times.size()) - 1);
        }
    }
    return ends;
}

int PeriodsWithIntegers(const Solution& solution, const std::vector<int>& ends) {
    std::set<std::ptrdiff_t> periods;
    for (const engine::Ambiguity& ambiguity : solution.ambiguities) {
        periods.insert(std::lower_bound(ends.begin(), ends.end(), ambiguity.lastEpoch) -
                       ends.begin());
    }
    return static_cast<int>(periods.size());
}

void PutStatistics(Row& row, const ResidualStatistics& r) {
    row.Whole("res_count", static_cast<long long>(r.residuals));
    row.Real("res_rms", r.rms, 4);
    row.Real("res_r1", r.nextEpoch, 4);
    row.Real("res_r60", r.atLag[0], 4);
    row.Real("res_r300", r.atLag[1], 4);
    row.Real("res_r900", r.atLag[2], 4);
    row.Real("res_r1800", r.atLag[3], 4);
    row.Real("res_tau", r.correlationTime, 4);
    row.Real("res_el0", r.rmsByElevation[0], 4);
    row.Real("res_el20", r.rmsByElevation[1], 4);
    row.Real("res_el30", r.rmsByElevation[2], 4);
    row.Real("res_el45", r.rmsByElevation[3], 4);
    row.Real("res_el60", r.rmsByElevation[4], 4);
    row.Real("res_mean", r.worstMean, 4);
    row.Real("res_mean_sigmas", r.worstMeanSigmas, 4);
    row.Text("res_mean_sat", r.worstSatellite);
    row.Real("res_rejected", r.rejectedShare, 4);
}

// What one engine was handed.
struct Fed {
    solve::FeedSummary summary;
    SkyOfSession sky;
    int group = 0;
    double seconds = 0.0;  // processor time

    double MeanSatellites() const {
        double sum = 0.0;
        for (const auto& [satellite, epochs] : summary.common) {
            sum += static_cast<double>(epochs.size());
        }
        return summary.epochs == 0 ? kUnknown : sum / static_cast<double>(summary.epochs);
    }
    double ShareAbove(double elevation) const {
        double above = 0.0, all = 0.0;
        for (const auto& [satellite, points] : sky.tracks) {
            for (const solve::SkyPoint& point : points) {
                above += point.elevation >= elevation ? 1.0 : 0.0;
                all += 1.0;
            }
        }
        return all == 0.0 ? kUnknown : above / all;
    }
};

struct Ran {
    solve::RunOutcome outcome;
    double seconds = 0.0;  // processor time
    // Of an answer: how it was come by. Its outcome is the one above.
    std::optional<solve::CheckedOutcome> answer;
};

const Solution* LastOrNull(const std::vector<Solution>& list) {
    return list.empty() ? nullptr : &list.back();
}

const Solution* OfMode(const std::vector<Solution>& list, int mode) {
    const auto found = std::find_if(list.begin(), list.end(),
                                    [mode](const Solution& s) { return s.mode == mode; });
    return found == list.end() ? nullptr : &*found;
}

void PutAnswer(Row& row, const Ran& ran) {
    const solve::CheckedOutcome* a = ran.answer ? &*ran.answer : nullptr;
    const auto count = [&](solve::Relation relation) {
        long long n = 0;
        for (const solve::RunRecord& check : a->checks) {
            n += check.relation == relation ? 1 : 0;
        }
        return n;
    };
    std::string checks, doubts;
    double apart = kUnknown, apartUp = kUnknown;
    if (a != nullptr) {
        for (const solve::RunRecord& check : a->checks) {
            checks += (checks.empty() ? "" : "|") + check.spec.name + "=" +
                      solve::NameOf(*check.relation) + "=" +
                      session::Format("%.1f", Millimetres(check.horizontal)) + "=" +
                      session::Format("%.1f", Millimetres(check.up)) + "=" +
                      session::Format("%.2f", check.ratio);
            if (check.acceptance == solve::Acceptance::kFixed) {
                apart = std::fmax(apart, Millimetres(check.horizontal));
                apartUp = std::fmax(apartUp, Millimetres(check.up));
            }
        }
        for (const solve::Doubt& doubt : a->doubts) {
            doubts += (doubts.empty() ? "" : "|") + doubt.text;
        }
    }
    row.Text("grade", a != nullptr ? solve::NameOf(a->grade) : "");
    row.Text("kind", a != nullptr ? solve::NameOf(a->kind) : "");
    row.Text("answer_run", a != nullptr ? a->spec.name : "");
    row.Whole("tried", a != nullptr ? static_cast<long long>(a->tried.size()) : 0);
    row.Whole("agree", a != nullptr ? count(solve::Relation::kAgrees) : 0);
    row.Whole("contradict", a != nullptr ? count(solve::Relation::kContradicts) : 0);
    row.Text("checks", checks);
    row.Real("apart", apart);
    row.Real("apart_up", apartUp);
    row.Text("doubts", doubts);
}

// All columns of one run. `with` is the session as this run saw it.
Row MakeRow(const Context& c, const std::string& label, const std::string& fault,
            const Session& with, const Fed& fed, const Ran& ran) {
    const solve::RunOutcome& outcome = ran.outcome;
    const engine::Results& results = outcome.results;
    const Solution* answer = outcome.Best();
    const Solution* fixed = LastOrNull(results.fixeds);
    const Solution* wideLane = OfMode(results.fixeds, kWideLane);
    const std::vector<int> ends =
        PeriodEnds(fed.summary.times, with.config.periodLength, with.config.minEpochs);
    const auto satellites =
        answer != nullptr ? SatellitesOf(*answer) : std::set<engine::Satellite>{};
    const double mask = with.config.elevationMask;

    Row row;
    PutSession(row, c);
    row.Text("run", label);
    row.Text("fault", fault);
    row.Whole("group", fed.group);
    row.Real("feed_cpu", fed.seconds, 4);
    row.Real("run_cpu", ran.seconds, 4);
    row.Whole("epochs", static_cast<long long>(fed.summary.epochs));
    row.Real("sats", fed.MeanSatellites(), 4);
    row.Real("sats_up", fed.MeanSatellites() * fed.ShareAbove(mask), 4);
    row.Whole("periods", static_cast<long long>(ends.size()));
    row.Whole("completed", outcome.completed ? 1 : 0);
    row.Whole("status", results.status);
    row.Whole("model", results.solveModel);
    row.Text("acceptance", fault.empty() ? solve::AcceptanceName(outcome.acceptance) : "");
    row.Real("threshold", with.config.ratioThreshold);
    row.Real("ratio", fixed != nullptr ? fixed->ratio : kUnknown, 4);
    row.Real("ratio_wl", wideLane != nullptr ? wideLane->ratio : kUnknown, 4);
    row.Whole("integers", fixed != nullptr ? static_cast<long long>(fixed->ambiguities.size()) : 0);
    row.Whole("integers_wl",
              wideLane != nullptr ? static_cast<long long>(wideLane->ambiguities.size()) : 0);
    row.Whole("periods_fixed", fixed != nullptr ? PeriodsWithIntegers(*fixed, ends) : 0);
    row.Text("sats_used", CountBySystem(satellites));
    row.Whole("sats_n", static_cast<long long>(satellites.size()));
    PutError(row, c, "e", answer);
    PutError(row, c, "td", &results.tripleDifference);
    PutSolution(row, c, "fl", LastOrNull(results.floats));
    PutSolution(row, c, "fx", fixed);
    PutError(row, c, "wl", wideLane);
    PutStatistics(row, answer != nullptr
                           ? StatisticsOf(*answer, with.config.samplingInterval, fed.sky)
                           : ResidualStatistics{});
    PutAnswer(row, ran);
    return row;
}

// ---- runs ---------------------------------------------------------------------------------------

std::string SystemsLeft(const Scene& scene, const RunSpec& run) {
    std::string left;
    for (const char letter : scene.systems) {
        if ((run.systems.empty() || run.systems.find(letter) != std::string::npos) &&
            run.without.find(letter) == std::string::npos) {
            left += letter;
        }
    }
    return left;
}

bool SecondFrequency(const Session& session) {
    return std::any_of(session.signals.begin(), session.signals.end(),
                       [](const auto& pairs) { return pairs[1].Usable(); });
}

// Whether a run tells anything that the plain one does not.
bool MakesSense(const RunSpec& run, const Scene& scene, const Session& session) {
    const bool asksSystems = !run.systems.empty() || !run.without.empty();
    const std::string left = SystemsLeft(scene, run);
    const double length = session::Length(scene.known.vector);
    if (length < run.leastLength || length >= run.mostLength) {
        return false;
    }
    if (asksSystems && (left.empty() || left == scene.systems)) {
        return false;
    }
    if (run.model && !SecondFrequency(session)) {
        return false;
    }
    if (run.ionosphere == "none" && !session.ionosphere) {
        return false;
    }
    if (run.antennas && !session.antennasApplied) {
        return false;
    }
    if (run.basePosition == "truth" && !scene.known.base) {
        return false;
    }
    if (run.basePosition == "code" && !session.base.codeFix) {
        return false;
    }
    if (run.interval) {
        const double times = *run.interval / session.interval;
        return times > 1.5 && std::abs(times - std::round(times)) < 1e-6;
    }
    return true;
}

// What has to stand before the epochs are handed over.
void PrepareFeed(Session& session, const RunSpec& run, const Scene& scene) {
    if (run.mask) {
        session.config.elevationMask = *run.mask * kDegree;
    }
    if (run.tropoModel) {
        session.config.tropoModel = *run.tropoModel;
    }
    if (run.ionosphere == "none") {
        session.ionosphere.reset();
    } else if (run.ionosphere == "zeros") {
        session.ionosphere.emplace();
    }
    if (run.antennas && !*run.antennas) {
        session.antennasApplied = false;
    }
    if (run.basePosition == "truth") {
        session.base.position = *scene.known.base;
    } else if (run.basePosition == "code") {
        session.base.position = session.base.codeFix->position;
    }
    if (run.roverOffset > 0.0) {
        const Vector3 direction = DirectionOf(scene.cut + " approximate");
        for (std::size_t i = 0; i < 3; ++i) {
            session.rover.position[i] += run.roverOffset * direction[i];
        }
    }
    if (run.interval) {
        std::erase_if(session.pairs, [&](const session::EpochPair& pair) {
            const double seconds = std::round(session.inputs.rover.epochs[pair.rover].time.seconds);
            return std::fmod(seconds, *run.interval) > 0.5;
        });
        session.interval = *run.interval;
        session.config.samplingInterval = *run.interval;
    }
}

engine::Config ConfigOf(const Session& session, const RunSpec& run, const Scene& scene) {
    engine::Config config = session.config;
    config.slvmode = run.model.value_or(config.slvmode);
    config.ratioThreshold = run.ratioThreshold.value_or(config.ratioThreshold);
    config.periodLength = run.periodLength.value_or(config.periodLength);
    config.outlierFactor = run.outlierFactor.value_or(config.outlierFactor);
    config.slipTestCap = run.slipTestCap.value_or(config.slipTestCap);
    config.phaseStd = run.phaseStd.value_or(config.phaseStd);
    config.minEpochs = run.minEpochs.value_or(config.minEpochs);
    config.maxFixBaseline = run.maxFixBaseline.value_or(config.maxFixBaseline);
    const std::string left = SystemsLeft(scene, run);
    for (const engine::System system : engine::kSystems) {
        if (left.find(engine::LetterOf(system)) == std::string::npos) {
            config.systems[engine::IndexOf(system)] = 0;
        }
    }
    return config;
}

// The stretches of time outside the shares that are kept.
std::vector<engine::Span> SpansLeftOut(const std::vector<std::pair<double, double>>& keep,
                                       const std::vector<io::GpsTime>& times) {
    std::vector<engine::Span> spans;
    const auto count = static_cast<double>(times.size());
    std::size_t begin = times.size();  // of the stretch that is open
    for (std::size_t i = 0; i <= times.size(); ++i) {
        const double share = static_cast<double>(i) / count;
        const bool kept =
            i == times.size() || std::any_of(keep.begin(), keep.end(), [&](const auto& part) {
                return part.first <= share && share < part.second;
            });
        if (!kept && begin == times.size()) {
            begin = i;
        } else if (kept && begin < times.size()) {
            const io::GpsTime &from = times[begin], &to = times[i - 1];
            spans.push_back({from.week, from.seconds, to.week, to.seconds});
            begin = times.size();
        }
    }
    return spans;
}

// Replaces what the engine leaves out.
void LeaveOut(engine::Engine& engine, const Session& session, const RunSpec& run,
              const solve::FeedSummary& fed) {
    ::CleanSatTrackList();
    std::set<engine::Satellite> whole;
    for (const auto& [satellite, reason] : session.leftOut.unknownChannel) {
        whole.insert(satellite);
    }
    const auto spans =
        run.keep.empty() ? std::vector<engine::Span>{} : SpansLeftOut(run.keep, fed.times);
    for (const auto& [satellite, epochs] : fed.common) {
        if (run.everyNth > 0 && satellite.prn % run.everyNth == run.nthRest) {
            whole.insert(satellite);
        }
        engine.ExcludeSpans(satellite, spans);
    }
    engine.ExcludeSatellites({whole.begin(), whole.end()});
}

// Hands the epochs over once, makes all runs of a group and tells each row.
template <typename Tell>
void RunGroup(const Context& c, const std::vector<const RunSpec*>& group, int number, Tell tell) {
    Session session = c.prepared;
    PrepareFeed(session, *group.front(), c.scene);
    if (session.pairs.empty()) {
        return;
    }
    engine::Engine engine;
    Fed fed;
    fed.group = number;
    if (!group.front()->answer.empty()) {
        const double from = bench::ProcessorSeconds();
        Ran ran;
        ran.answer = solve::RunChecked(session, engine, {}, group.front()->answer == "checked");
        ran.seconds = bench::ProcessorSeconds() - from;
        ran.outcome = ran.answer->outcome;
        fed.summary = ran.answer->fed;
        fed.sky = {solve::SkyTracks(session, fed.summary, kSkyStep), fed.summary.times};
        tell(MakeRow(c, group.front()->label, "", session, fed, ran).Values() + "\n");
        return;
    }
    const double start = bench::ProcessorSeconds();
    fed.summary = solve::Feed(session, engine, {});
    fed.seconds = bench::ProcessorSeconds() - start;
    fed.sky = {solve::SkyTracks(session, fed.summary, kSkyStep), fed.summary.times};
    const engine::Config plain = session.config;
    std::optional<int> plainModel;
    for (const RunSpec* run : group) {
        if (run->model && run->model == plainModel && run->keep.empty() && run->everyNth == 0 &&
            run->systems.empty() && run->without.empty() && !run->ratioThreshold) {
            continue;  // the model that the plain run took
        }
        session.config = plain;
        session.config = ConfigOf(session, *run, c.scene);
        engine.Configure(session.config);
        LeaveOut(engine, session, *run, fed.summary);
        Ran ran;
        const double before = bench::ProcessorSeconds();
        ran.outcome = solve::Run(session, engine);
        ran.seconds = bench::ProcessorSeconds() - before;
        if (!run->model && !plainModel) {
            plainModel = ran.outcome.results.solveModel;
        }
        tell(MakeRow(c, run->label, "", session, fed, ran).Values() + "\n");
    }
}

void WriteAll(int descriptor, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t wrote = ::write(descriptor, text.data() + done, text.size() - done);
        if (wrote <= 0) {
            ::_exit(1);
        }
        done += static_cast<std::size_t>(wrote);
    }
}

std::string ReadAll(int descriptor) {
    std::string text;
    char buffer[1 << 16];
    ssize_t got = 0;
    while ((got = ::read(descriptor, buffer, sizeof buffer)) > 0) {
        text.append(buffer, static_cast<std::size_t>(got));
    }
    return text;
}

std::string FaultRow(const Context& c, const std::string& label, const std::string& fault) {
    return MakeRow(c, label, fault, c.prepared, {}, {}).Values() + "\n";
}

// The rows of a group, made in a process of its own.
std::string InOwnProcess(const Context& c, const std::vector<const RunSpec*>& group, int number) {
    int ends[2];
    if (::pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = ::fork();
    if (child < 0) {
        throw std::runtime_error("no process");
    }
    if (child == 0) {
        ::close(ends[0]);
        ::alarm(kLongestRuns);
        const int nowhere = ::open("/dev/null", O_WRONLY);
        ::dup2(nowhere, STDERR_FILENO);
        int code = 0;
        try {
            RunGroup(c, group, number, [&](const std::string& row) { WriteAll(ends[1], row); });
        } catch (const std::exception&) {
            code = 1;
        }
        ::_exit(code);
    }
    ::close(ends[1]);
    std::string rows = ReadAll(ends[0]);
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        rows.resize(rows.rfind('\n') == std::string::npos ? 0 : rows.rfind('\n') + 1);
        rows += FaultRow(c, "died", "group " + std::to_string(number));
    }
    return rows;
}

}  // namespace

std::string RowHeader() {
    const Scene scene;
    const Session none;
    return MakeRow({scene, none, {}}, "", "", none, {}, {}).Names();
}

std::string RunScene(const Scene& scene, const std::vector<RunSpec>& runs) {
    const auto placeOf = [&](const Session& session) {
        const Vector3 base = scene.known.base.value_or(session.base.position);
        return session::Length(base) > 0.0 ? session::ToGeodetic(base) : Geodetic{};
    };
    Session session;
    try {
        session::ConfiguredSettings settings;
        settings.values = scene.settings;
        if (scene.orbits == OrbitChoice::kBroadcast) {
            settings.values.ephemerisSource = session::EphemerisChoice::kBroadcast;
        }
        session = solve::PrepareSession(scene.inputs, std::move(settings));
    } catch (const session::SessionFault& fault) {
        const Session none;
        return FaultRow({scene, none, placeOf(none)}, "refused", fault.what());
    }
    const Context context{scene, session, placeOf(session)};

    std::vector<std::pair<std::string, std::vector<const RunSpec*>>> groups;
    for (const RunSpec& run : runs) {
        if (!MakesSense(run, scene, session)) {
            continue;
        }
        const std::string key = run.FeedKey();
        auto group = std::find_if(groups.begin(), groups.end(),
                                  [&](const auto& known) { return known.first == key; });
        if (group == groups.end()) {
            groups.push_back({key, {}});
            group = groups.end() - 1;
        }
        group->second.push_back(&run);
    }
    std::string rows;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        rows += InOwnProcess(context, groups[i].second, static_cast<int>(i));
    }
    return rows;
}

}  // namespace vornel::truth
