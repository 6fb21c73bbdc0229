#include "report/json_report.h"

#include <cmath>

#include "engine/status.h"
#include "report/exit_codes.h"
#include "report/phrases.h"

namespace vornel::report {
namespace {

using Json = nlohmann::ordered_json;
using engine::System;
using solve::SolveResult;

// Not-a-number and infinities have no place in JSON: null.
Json Number(double value) {
    return std::isfinite(value) ? Json(value) : Json(nullptr);
}

template <std::size_t N>
Json Numbers(const std::array<double, N>& values) {
    Json list = Json::array();
    for (const double value : values) {
        list.push_back(Number(value));
    }
    return list;
}

Json Matrix(const std::array<double, 9>& m) {
    Json rows = Json::array();
    for (std::size_t i = 0; i < 3; ++i) {
        rows.push_back(Json::array({Number(m[3 * i]), Number(m[3 * i + 1]), Number(m[3 * i + 2])}));
    }
    return rows;
}

Json Time(int week, double seconds) {
    return {{"week", week},
            {"seconds", Number(seconds)},
            {"gps_time", io::FormatTime({week, seconds}, 3)}};
}

Json Time(const io::GpsTime& time) {
    return Time(time.week, time.seconds);
}

Json AmbiguityJson(const engine::Ambiguity& a, bool isFloat, bool twoBlocks) {
    Json json = {{"satellite", engine::SatelliteName(a.system, a.prn)},
                 {"first_epoch", a.firstEpoch},
                 {"last_epoch", a.lastEpoch},
                 {"first_time", Time(a.firstWeek, a.firstSeconds)},
                 {"last_time", Time(a.lastWeek, a.lastSeconds)},
                 {"value", Number(a.value1)},
                 {"rms_m", Number(a.rms1)},
                 {"rows", a.rows1},
                 {"rejected", a.rejected1}};
    if (isFloat) {
        json["variance_cycles2"] = Number(a.variance);
    }
    if (twoBlocks) {
        json["second"] = {{"value", Number(a.value2)},
                          {"rms_m", Number(a.rms2)},
                          {"rows", a.rows2},
                          {"rejected", a.rejected2}};
    }
    return json;
}

Json ResidualsJson(const engine::ResidualSeries& series) {
    Json weeks = Json::array(), seconds = Json::array(), values = Json::array();
    for (const engine::ResidualPoint& point : series.points) {
        weeks.push_back(point.week);
        seconds.push_back(Number(point.seconds));
        values.push_back(point.millimetres);
    }
    return {{"satellite", engine::SatelliteName(series.system, series.prn)},
            {"block", series.kind},
            {"weeks", weeks},
            {"seconds", seconds},
            {"millimetres", values}};
}

enum class SolutionKind { kTripleDifference, kFloat, kFixed };

Json SolutionJson(const engine::Solution& s, SolutionKind kind, const session::Station& base) {
    if (s.mode == 0) {
        return nullptr;
    }
    const session::Geodetic place = session::ToGeodetic(base.position);
    Json json = {{"mode", s.mode},
                 {"vector_xyz_m", Numbers(s.vector)},
                 {"vector_neu_m", Numbers(session::ToNeu(place, s.vector))},
                 {"length_m", Number(s.length)},
                 {"horizontal_distance_m", Number(s.horizontalDistance)},
                 {"height_difference_m", Number(s.heightDifference)},
                 {"dof", s.dof},
                 {"variance_factor", Number(s.varianceFactor)},
                 {"covariance_xyz_m2", Matrix(s.covarianceXyz)},
                 {"covariance_neu_m2", Matrix(s.covarianceNeu)},
                 {"sigma3_m", Number(s.sigma3)},
                 {"sigma_length_m", Number(s.sigmaLength)},
                 {"relative_accuracy_ppm", Number(s.relativeAccuracy)},
                 {"rms_m", Number(s.rms)},
                 {"rover_xyz_m", Numbers(session::Plus(base.position, s.vector))}};
    if (kind == SolutionKind::kTripleDifference) {
        return json;
    }
    json["model"] = engine::SolveModelName(s.mode);
    if (kind == SolutionKind::kFixed) {
        json["ratio"] = Number(s.ratio);
    }
    json["ambiguities"] = Json::array();
    for (const engine::Ambiguity& a : s.ambiguities) {
        json["ambiguities"].push_back(
            AmbiguityJson(a, kind == SolutionKind::kFloat, s.mode == VORNEL_MODEL_BOTH));
    }
    json["residuals"] = Json::array();
    for (const engine::ResidualSeries& series : s.residuals) {
        json["residuals"].push_back(ResidualsJson(series));
    }
    return json;
}

Json StatusJson(int status) {
    const engine::StatusEntry& entry = engine::DescribeStatus(status);
    return {{"number", status}, {"stage", entry.stage}, {"text", entry.text}};
}

Json RunJson(const solve::RunRecord& run) {
    Json json = {{"name", run.spec.name},
                 {"why", run.spec.why},
                 {"status", StatusJson(run.status)},
                 {"solve_model", run.solveModel},
                 {"completed", run.completed},
                 {"acceptance", solve::AcceptanceName(run.acceptance)},
                 {"ratio", Number(run.ratio)},
                 {"integers", run.integers}};
    if (run.relation) {
        const bool compared = run.relation != solve::Relation::kNoIntegers;
        json["relation"] = solve::NameOf(*run.relation);
        json["horizontal_m"] = compared ? Number(run.horizontal) : Json(nullptr);
        json["up_m"] = compared ? Number(run.up) : Json(nullptr);
    }
    return json;
}

// The runs behind the answer, and what keeps it from being trusted.
Json TrustJson(const SolveResult& result) {
    Json tried = Json::array(), checks = Json::array(), doubts = Json::array();
    for (const solve::RunRecord& run : result.tried) {
        tried.push_back(RunJson(run));
    }
    for (const solve::RunRecord& run : result.checks) {
        checks.push_back(RunJson(run));
    }
    for (const solve::Doubt& doubt : result.doubts) {
        doubts.push_back({{"text", doubt.text}, {"advice", doubt.advice}});
    }
    return {{"answer", result.spec.name},
            {"answer_kind", solve::NameOf(result.kind)},
            {"runs", tried},
            {"checks", checks},
            {"doubts", doubts}};
}

Json OutcomeJson(const SolveResult& result) {
    const solve::RunOutcome& o = result.outcome;
    Json chain = Json::array();
    for (const int status : o.chain) {
        chain.push_back(StatusJson(status));
    }
    return {{"grade", solve::NameOf(result.grade)},
            {"acceptance", solve::AcceptanceName(o.acceptance)},
            {"reason", VerdictReason(result)},
            {"exit_code", static_cast<int>(CodeOf(result.grade, o.results.status))},
            {"status", StatusJson(o.results.status)},
            {"status_chain", chain},
            {"completed", o.completed},
            {"solve_mode", result.session.config.slvmode},
            {"solve_model", o.results.solveModel},
            {"solve_model_name", engine::SolveModelName(o.results.solveModel)},
            {"ratio_threshold", Number(result.session.config.ratioThreshold)}};
}

Json AntennaJson(const session::Station& station, bool applied) {
    const session::AntennaChoice& a = station.antenna;
    Json json = {{"type", a.type},
                 {"radome", a.radome},
                 {"serial", station.header.antennaSerial},
                 {"height_m", Number(station.antennaHeight)},
                 {"height_from", station.heightFromOption ? "option" : "header"},
                 {"north_m", Number(station.header.antennaNorth)},
                 {"east_m", Number(station.header.antennaEast)},
                 {"calibration", nullptr}};
    if (a.found) {
        json["calibration"] = {{"applied", applied},
                               {"file", a.file},
                               {"radome", a.usedRadome},
                               {"serial", a.serial},
                               {"method", a.method},
                               {"relative", a.relative},
                               {"l1_neu_m", Numbers(a.offset1)},
                               {"l2_neu_m", Numbers(a.offset2)}};
    }
    return json;
}

Json StationJson(const session::Station& station, bool antennasApplied) {
    Json json = {{"name", station.name},
                 {"number", station.header.markerNumber},
                 {"receiver", station.header.receiverType},
                 {"receiver_serial", station.header.receiverSerial},
                 {"firmware", station.header.receiverVersion},
                 {"position_xyz_m", Numbers(station.position)},
                 {"position_from", session::PositionSourceName(station.positionSource)},
                 {"header_position_xyz_m", nullptr},
                 {"code_position_xyz_m", nullptr},
                 {"off_from_code_m", nullptr},
                 {"epochs", station.epochs},
                 {"first_epoch", Time(station.firstEpoch)},
                 {"last_epoch", Time(station.lastEpoch)},
                 {"antenna", AntennaJson(station, antennasApplied)}};
    if (station.header.approximatePosition) {
        json["header_position_xyz_m"] = Numbers(*station.header.approximatePosition);
    }
    if (station.codeFix) {
        json["code_position_xyz_m"] = Numbers(station.codeFix->position);
        json["code_position_spread_m"] = Number(station.codeFix->spread);
    }
    if (station.offFromCode) {
        json["off_from_code_m"] = Number(*station.offFromCode);
    }
    return json;
}

Json SignalJson(const session::SignalPair& pair, bool rover) {
    const auto& signal = rover ? pair.rover : pair.base;
    if (!pair.Usable()) {
        return nullptr;
    }
    return {{"tracking", signal->Tracking()},
            {"code", signal->codeName},
            {"phase", signal->phaseName},
            {"satellite_epochs", signal->count}};
}

Json SystemsJson(const SolveResult& result) {
    Json list = Json::array();
    const engine::Solution* best = result.outcome.Best();
    for (const engine::System system : engine::kSystems) {
        const std::size_t i = engine::IndexOf(system);
        const auto& pairs = result.session.signals[i];
        Json satellites = Json::array();
        for (const auto& [satellite, epochs] : result.fed.common) {
            if (satellite.system == system) {
                satellites.push_back(
                    {{"satellite", engine::ToString(satellite)}, {"epochs", epochs.size()}});
            }
        }
        list.push_back({{"system", engine::NameOf(system)},
                        {"enabled", result.session.settings.values.systems[i]},
                        {"epochs", result.fed.systems[i].epochs},
                        {"satellites", satellites},
                        {"satellites_with_residuals",
                         best == nullptr ? std::size_t{0} : SatellitesWithResiduals(*best, system)},
                        {"signals",
                         {{"base", {SignalJson(pairs[0], false), SignalJson(pairs[1], false)}},
                          {"rover", {SignalJson(pairs[0], true), SignalJson(pairs[1], true)}}}}});
    }
    return list;
}

Json SessionJson(const SolveResult& result) {
    const session::Session& s = result.session;
    return {{"first_epoch", Time(s.FirstTime())},
            {"last_epoch", Time(s.LastTime())},
            {"interval_s", Number(s.interval)},
            {"epochs", result.fed.epochs},
            {"base_epochs_without_partner", s.pairing.baseOnly},
            {"rover_epochs_without_partner", s.pairing.roverOnly},
            {"epochs_lost_at_orbit_table_ends", s.lostAtTableEnds},
            {"epochs_left_out",
             {{"moving", s.pairing.moving},
              {"out_of_order", s.pairing.outOfOrder},
              {"same_second", s.pairing.sameSecond},
              {"across_weeks", s.pairing.acrossWeeks}}}};
}

Json OrbitsJson(const session::Session& s) {
    Json taken = Json::object();
    for (const engine::System system : engine::kSystems) {
        taken[engine::NameOf(system)] = s.ephemerides.taken[engine::IndexOf(system)];
    }
    Json json = {{"source", s.precise ? "precise" : "broadcast"},
                 {"broadcast",
                  {{"records_read", s.ephemerides.recordsRead},
                   {"records_taken", taken},
                   {"records_dropped", s.ephemerides.dropped}}},
                 {"precise", nullptr}};
    if (s.precise) {
        json["precise"] = {{"satellites", s.orbits.satellites.size()},
                           {"epochs", s.orbits.times.size()},
                           {"first_epoch", Time(s.orbits.times.front())},
                           {"last_epoch", Time(s.orbits.times.back())},
                           {"frames", s.orbits.frames}};
    }
    return json;
}

Json IonosphereJson(const session::Session& s) {
    if (!s.ionosphere) {
        return {{"coefficients", nullptr},
                {"reason", s.settings.values.noIonosphere ? "switched off" : "none in the files"}};
    }
    return {{"coefficients",
             {{"alpha", Numbers(s.ionosphere->alpha)}, {"beta", Numbers(s.ionosphere->beta)}}},
            {"file", s.ionosphere->file},
            {"line", s.ionosphere->line}};
}

Json LeftOutJson(const SolveResult& result) {
    const session::SatellitesLeftOut& out = result.session.leftOut;
    const auto names = [](const auto& satellites) {
        Json list = Json::array();
        for (const engine::Satellite& satellite : satellites) {
            list.push_back(engine::ToString(satellite));
        }
        return list;
    };
    Json channels = Json::object();
    for (const auto& [satellite, reason] : out.unknownChannel) {
        channels[engine::ToString(satellite)] = reason;
    }
    Json excluded = Json::array();
    for (const session::Exclusion& exclusion : result.session.settings.values.exclusions) {
        excluded.push_back(exclusion.text);
    }
    const auto losses = [](const session::ValueLosses& lost) {
        return Json{{"values_out_of_bounds", lost.outOfBounds},
                    {"satellite_epochs_without_first_code", lost.noFirstCode}};
    };
    return {{"unnumbered", out.unnumbered},
            {"without_orbit", names(out.withoutOrbit)},
            {"unknown_channel", channels},
            {"no_slot", names(result.fed.noSlot)},
            {"excluded", excluded},
            {"base", losses(result.fed.baseLosses)},
            {"rover", losses(result.fed.roverLosses)}};
}

Json SettingsJson(const session::ConfiguredSettings& settings) {
    Json list = Json::array();
    for (const session::SettingSpec& spec : session::AllSettings()) {
        const std::string value = spec.toml(settings.values);
        const auto origin = settings.origins.find(spec.name);
        Json entry = {{"name", spec.name}, {"toml", nullptr}, {"origin", "default"}};
        if (*spec.engineField != '\0') {
            entry["engine_field"] = spec.engineField;
        }
        if (!value.empty()) {
            entry["toml"] = value;
        }
        if (origin != settings.origins.end()) {
            entry["origin"] = origin->second.kind;
            if (!origin->second.detail.empty()) {
                entry["detail"] = origin->second.detail;
            }
        }
        list.push_back(entry);
    }
    return list;
}

Json EngineConfigJson(const engine::Config& c) {
    return {{"slvmode", c.slvmode},
            {"elevationMask", Number(c.elevationMask)},
            {"samplingInterval", Number(c.samplingInterval)},
            {"minEpochs", c.minEpochs},
            {"shortBaselineLimit", Number(c.shortBaselineLimit)},
            {"maxFixBaseline", Number(c.maxFixBaseline)},
            {"ephemerisSource", c.ephemerisSource},
            {"systems", c.systems},
            {"outlierFactor", Number(c.outlierFactor)},
            {"slipTestCap", Number(c.slipTestCap)},
            {"ratioThreshold", Number(c.ratioThreshold)},
            {"phaseStd", Number(c.phaseStd)},
            {"periodLength", Number(c.periodLength)},
            {"tropoModel", c.tropoModel},
            {"pressure", Number(c.pressure)},
            {"temperature", Number(c.temperature)},
            {"humidity", Number(c.humidity)},
            {"galFreq1", c.galFreq1},
            {"galFreq2", c.galFreq2}};
}

Json FilesJson(const std::vector<session::InputFile>& files) {
    Json list = Json::array();
    for (const session::InputFile& file : files) {
        list.push_back({{"path", file.path},
                        {"member", file.name == file.path ? Json(nullptr) : Json(file.name)},
                        {"role", session::RoleName(file.role)},
                        {"kind", io::KindName(file.kind)},
                        {"packing", file.packing},
                        {"size", file.size},
                        {"sha256", file.sha256}});
    }
    return list;
}

Json FileNotesJson(const session::Inputs& inputs) {
    Json list = Json::array();
    for (const session::FileNote& note : session::NotesOfReaders(inputs)) {
        list.push_back({{"file", note.file}, {"line", note.line}, {"text", note.text}});
    }
    return list;
}

Json SolutionsJson(const SolveResult& result) {
    const engine::Results& r = result.outcome.results;
    const session::Station& base = result.session.base;
    Json floats = Json::array(), fixeds = Json::array();
    for (const engine::Solution& s : r.floats) {
        floats.push_back(SolutionJson(s, SolutionKind::kFloat, base));
    }
    for (const engine::Solution& s : r.fixeds) {
        fixeds.push_back(SolutionJson(s, SolutionKind::kFixed, base));
    }
    return {{"triple_difference",
             SolutionJson(r.tripleDifference, SolutionKind::kTripleDifference, base)},
            {"float", floats},
            {"fixed", fixeds}};
}

// The accepted solution in short; the long form stands among the solutions.
Json BestJson(const SolveResult& result) {
    const engine::Solution* best = result.outcome.Best();
    if (best == nullptr) {
        return nullptr;
    }
    Json json = SolutionJson(*best, SolutionKind::kTripleDifference, result.session.base);
    json["kind"] = solve::AcceptanceName(result.outcome.acceptance);
    return json;
}

}  // namespace

nlohmann::ordered_json JsonReport(const SolveResult& result) {
    const session::Session& s = result.session;
    return {{"schema", kJsonSchema},
            {"program", {{"name", "vornel"}, {"version", result.version}}},
            {"command_line", result.commandLine},
            {"started_utc", result.startedUtc},
            {"seconds", {{"all", result.secondsInAll}, {"engine", result.outcome.seconds}}},
            {"outcome", OutcomeJson(result)},
            {"trust", TrustJson(result)},
            {"solution", BestJson(result)},
            {"base", StationJson(s.base, s.antennasApplied)},
            {"rover", StationJson(s.rover, s.antennasApplied)},
            {"session", SessionJson(result)},
            {"systems", SystemsJson(result)},
            {"orbits", OrbitsJson(s)},
            {"ionosphere", IonosphereJson(s)},
            {"left_out", LeftOutJson(result)},
            {"notes", NotesOfRun(result)},
            {"warnings", AllWarnings(result)},
            {"settings", SettingsJson(s.settings)},
            {"engine_config", EngineConfigJson(s.config)},
            {"inputs", FilesJson(s.inputs.files)},
            {"file_notes", FileNotesJson(s.inputs)},
            {"solutions", SolutionsJson(result)},
            {"engine_lines", result.engineLines}};
}

std::string JsonText(const nlohmann::ordered_json& json) {
    // Names in files may be in any encoding.
    return json.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace vornel::report
