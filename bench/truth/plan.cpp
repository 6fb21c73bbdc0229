#include "plan.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

namespace vornel::truth {
namespace {

using Json = nlohmann::json;

// An object of the plan that complains about fields that nobody asked for.
class Fields {
  public:
    Fields(const Json& json, std::string where) : json_(json), where_(std::move(where)) {
        if (!json.is_object()) {
            throw PlanError(where_ + ": an object is needed");
        }
    }

    template <typename Value>
    Value Need(const char* name) {
        if (!json_.contains(name)) {
            throw PlanError(where_ + ": " + name + " is missing");
        }
        return Get<Value>(name);
    }

    template <typename Value>
    void Take(const char* name, Value& value) {
        if (json_.contains(name)) {
            value = Get<Value>(name);
        }
        seen_.insert(name);
    }

    template <typename Value>
    void Take(const char* name, std::optional<Value>& value) {
        if (json_.contains(name)) {
            value = Get<Value>(name);
        }
        seen_.insert(name);
    }

    void Done() const {
        for (const auto& [name, value] : json_.items()) {
            if (!seen_.contains(name)) {
                throw PlanError(where_ + ": unknown field " + name);
            }
        }
    }

  private:
    template <typename Value>
    Value Get(const char* name) {
        seen_.insert(name);
        try {
            return json_.at(name).get<Value>();
        } catch (const Json::exception& error) {
            throw PlanError(where_ + ": " + name + ": " + error.what());
        }
    }

    const Json& json_;
    std::string where_;
    std::set<std::string> seen_;
};

KnownVector ParseKnown(const Json& json, const std::string& where) {
    Fields fields(json, where + ".known");
    KnownVector known;
    std::optional<Vector3> rover, vector;
    fields.Take("base", known.base);
    fields.Take("rover", rover);
    fields.Take("vector", vector);
    known.sigmaHorizontal = fields.Need<double>("sigmaHorizontal");
    known.sigmaUp = fields.Need<double>("sigmaUp");
    fields.Done();
    if (known.base && rover && !vector) {
        known.vector = session::Minus(*rover, *known.base);
    } else if (vector && !rover) {
        known.vector = *vector;
    } else {
        throw PlanError(where + ".known: give base and rover, or the vector");
    }
    return known;
}

DataSet ParseSet(const Json& json) {
    Fields fields(json, "sets");
    DataSet set;
    set.name = fields.Need<std::string>("name");
    set.base = fields.Need<std::vector<std::string>>("base");
    set.rover = fields.Need<std::vector<std::string>>("rover");
    fields.Take("others", set.others);
    fields.Take("orbits", set.orbits);
    set.known = ParseKnown(fields.Need<Json>("known"), set.name);
    std::string remark;
    fields.Take("remark", remark);
    fields.Done();
    return set;
}

CutRule ParseRule(const Json& json) {
    Fields fields(json, "cuts");
    CutRule rule;
    fields.Take("sets", rule.sets);
    rule.durations = fields.Need<std::vector<double>>("durations");
    fields.Take("step", rule.step);
    fields.Take("systems", rule.systems);
    fields.Take("frequencies", rule.frequencies);
    std::vector<std::string> orbits;
    fields.Take("orbits", orbits);
    if (!orbits.empty()) {
        rule.orbits.clear();
        for (const std::string& name : orbits) {
            rule.orbits.push_back(OrbitChoiceOf(name));
        }
    }
    fields.Take("swapped", rule.swapped);
    fields.Take("headerOffsets", rule.headerOffsets);
    fields.Done();
    for (const double duration : rule.durations) {
        if (!(duration > 0.0)) {
            throw PlanError("cuts: durations are above 0");
        }
    }
    return rule;
}

template <typename Value>
Value ByName(const std::vector<std::pair<const char*, Value>>& names, const std::string& name) {
    for (const auto& [known, value] : names) {
        if (name == known) {
            return value;
        }
    }
    throw PlanError("kinds: nothing is called " + name);
}

Kind ParseKind(const Json& json) {
    using rough::Environment;
    using rough::Equipment;
    Fields fields(json, "kinds");
    Kind kind;
    rough::Kind& bounds = kind.bounds;
    bounds.name = fields.Need<std::string>("name");
    fields.Take("length", bounds.length);
    fields.Take("latitude", bounds.latitude);
    fields.Take("longitude", bounds.longitude);
    fields.Take("height", bounds.height);
    fields.Take("heightDifference", bounds.heightDifference);
    fields.Take("steepest", bounds.steepest);
    fields.Take("years", bounds.years);
    fields.Take("solar", bounds.solar);
    fields.Take("durations", bounds.durations);
    fields.Take("interval", bounds.interval);
    fields.Take("systems", bounds.systems);
    fields.Take("frequencies", bounds.frequencies);
    fields.Take("headerSigma", bounds.headerSigma);
    std::string rover = "geodetic";
    fields.Take("rover", rover);
    bounds.rover = ByName<Equipment>({{"geodetic", Equipment::kGeodetic},
                                      {"low-cost", Equipment::kLowCost},
                                      {"low-cost-dual", Equipment::kLowCostDual}},
                                     rover);
    fields.Take("baseLikeRover", bounds.baseLikeRover);
    std::vector<std::string> around;
    fields.Take("around", around);
    if (!around.empty()) {
        bounds.around.clear();
    }
    for (const std::string& name : around) {
        bounds.around.push_back(ByName<Environment>({{"pillar", Environment::kPillar},
                                                     {"roof", Environment::kRoof},
                                                     {"field", Environment::kField},
                                                     {"yard", Environment::kYard},
                                                     {"street", Environment::kStreet},
                                                     {"canopy", Environment::kCanopy}},
                                                    name));
    }
    std::string orbits = NameOf(kind.orbits);
    fields.Take("orbits", orbits);
    kind.orbits = OrbitChoiceOf(orbits);
    if (kind.orbits != OrbitChoice::kBroadcast) {
        bounds.preciseInterval = 300.0;
        fields.Take("preciseInterval", bounds.preciseInterval);
    }
    fields.Done();
    if (bounds.durations.empty() || bounds.systems.empty() || !(bounds.length[0] > 0.0) ||
        bounds.length[1] < bounds.length[0]) {
        throw PlanError("kinds: " + bounds.name + ": durations, systems and lengths are needed");
    }
    return kind;
}

RunSpec ParseRun(const Json& json) {
    Fields fields(json, "runs");
    RunSpec run;
    run.label = fields.Need<std::string>("label");
    fields.Take("leastLength", run.leastLength);
    fields.Take("mostLength", run.mostLength);
    fields.Take("model", run.model);
    fields.Take("ratioThreshold", run.ratioThreshold);
    fields.Take("periodLength", run.periodLength);
    fields.Take("outlierFactor", run.outlierFactor);
    fields.Take("slipTestCap", run.slipTestCap);
    fields.Take("phaseStd", run.phaseStd);
    fields.Take("minEpochs", run.minEpochs);
    fields.Take("maxFixBaseline", run.maxFixBaseline);
    fields.Take("systems", run.systems);
    fields.Take("without", run.without);
    fields.Take("keep", run.keep);
    fields.Take("answer", run.answer);
    fields.Take("everyNth", run.everyNth);
    fields.Take("nthRest", run.nthRest);
    fields.Take("mask", run.mask);
    fields.Take("tropoModel", run.tropoModel);
    fields.Take("interval", run.interval);
    fields.Take("ionosphere", run.ionosphere);
    fields.Take("antennas", run.antennas);
    fields.Take("basePosition", run.basePosition);
    fields.Take("roverOffset", run.roverOffset);
    fields.Done();
    for (const auto& [from, to] : run.keep) {
        if (!(0.0 <= from && from < to && to <= 1.0)) {
            throw PlanError("runs: " + run.label + ": keep holds shares from 0 to 1, ascending");
        }
    }
    return run;
}

template <typename Value>
std::string Text(const std::optional<Value>& value) {
    std::ostringstream text;
    if (value) {
        text << *value;
    }
    return text.str();
}

}  // namespace

OrbitChoice OrbitChoiceOf(const std::string& name) {
    for (const OrbitChoice choice :
         {OrbitChoice::kBroadcast, OrbitChoice::kPrecise, OrbitChoice::kSp3Alone}) {
        if (name == NameOf(choice)) {
            return choice;
        }
    }
    throw PlanError("orbits: '" + name + "' is none of broadcast, precise, sp3");
}

const char* NameOf(OrbitChoice choice) {
    switch (choice) {
        case OrbitChoice::kBroadcast:
            return "broadcast";
        case OrbitChoice::kPrecise:
            return "precise";
        case OrbitChoice::kSp3Alone:
            return "sp3";
    }
    return "broadcast";
}

std::string RunSpec::FeedKey() const {
    std::ostringstream key;
    key << Text(mask) << '|' << Text(tropoModel) << '|' << Text(interval) << '|' << ionosphere
        << '|' << Text(antennas) << '|' << basePosition << '|' << roverOffset << '|' << answer;
    return key.str();
}

Plan ParsePlan(const std::string& text) {
    Json json;
    try {
        json = Json::parse(text, nullptr, true, true);
    } catch (const Json::exception& error) {
        throw PlanError(error.what());
    }
    Fields fields(json, "plan");
    Plan plan;
    Json none = Json::array();
    Json sets = none, cuts = none, kinds = none, runs = none;
    fields.Take("sets", sets);
    fields.Take("cuts", cuts);
    fields.Take("kinds", kinds);
    fields.Take("runs", runs);
    fields.Done();
    for (const Json& set : sets) {
        plan.sets.push_back(ParseSet(set));
    }
    for (const Json& rule : cuts) {
        plan.cuts.push_back(ParseRule(rule));
    }
    for (const Json& kind : kinds) {
        plan.kinds.push_back(ParseKind(kind));
    }
    for (const Json& run : runs) {
        plan.runs.push_back(ParseRun(run));
    }
    return plan;
}

std::string ReadText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file) {
        throw PlanError(path + ": cannot be read");
    }
    return text.str();
}

}  // namespace vornel::truth
