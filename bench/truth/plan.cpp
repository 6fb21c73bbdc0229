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

Kind ParseKind(const Json& json) {
    Fields fields(json, "kinds");
    Kind kind;
    kind.name = fields.Need<std::string>("name");
    fields.Take("length", kind.length);
    fields.Take("latitude", kind.latitude);
    fields.Take("heightDifference", kind.heightDifference);
    fields.Take("years", kind.years);
    fields.Take("durations", kind.durations);
    fields.Take("interval", kind.interval);
    fields.Take("systems", kind.systems);
    fields.Take("frequencies", kind.frequencies);
    std::string orbits = NameOf(kind.orbits);
    fields.Take("orbits", orbits);
    kind.orbits = OrbitChoiceOf(orbits);
    fields.Take("headerSigma", kind.headerSigma);
    fields.Done();
    if (kind.durations.empty() || kind.systems.empty() || !(kind.length[0] > 0.0) ||
        kind.length[1] < kind.length[0]) {
        throw PlanError("kinds: " + kind.name + ": durations, systems and lengths are needed");
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
        << '|' << Text(antennas) << '|' << basePosition << '|' << roverOffset
        << '|' << answer;
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
