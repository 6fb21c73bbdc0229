#include "scene.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <set>
#include <utility>

#include "session/ephemerides.h"
#include "session/epochs.h"
#include "session/session.h"
#include "session/text.h"
#include "solve/preparation.h"

namespace vornel::truth {
namespace {

using session::Format;

constexpr const char* kLetters = "GREC";

char FirstBandOf(io::GnssSystem system) {
    return engine::SystemOf(system) == engine::System::kBds ? '2' : '1';
}

// The letter of a system that the engine has, else 0.
char LetterOfFormat(io::GnssSystem system) {
    const auto own = engine::SystemOf(system);
    return own ? engine::LetterOf(*own) : '\0';
}

// What the engine counts as a record's reach, and what makes a choice among messages, with room.
constexpr double kReach = 8.0 * 3600.0;  // s

bool Serves(const io::GpsTime& reference, const io::GpsTime& start, const io::GpsTime& end) {
    return io::SecondsBetween(reference, start) <= kReach &&
           io::SecondsBetween(end, reference) <= kReach;
}

std::string Intersection(const std::string& one, const std::string& other) {
    std::string both;
    for (const char* letter = kLetters; *letter != '\0'; ++letter) {
        if (one.find(*letter) != std::string::npos && other.find(*letter) != std::string::npos) {
            both += *letter;
        }
    }
    return both;
}

void MoveHeader(io::Observations& observations, const Vector3& direction, double metres) {
    for (io::StationHeader& header : observations.stations) {
        if (header.approximatePosition) {
            for (std::size_t i = 0; i < 3; ++i) {
                (*header.approximatePosition)[i] += metres * direction[i];
            }
        }
    }
}

}  // namespace

LoadedSet Load(const DataSet& set, const std::string& dataFolder) {
    const auto below = [&](const std::vector<std::string>& names) {
        std::vector<std::string> paths;
        for (const std::string& name : names) {
            paths.push_back(dataFolder + "/" + name);
        }
        return paths;
    };
    session::InputPaths paths;
    paths.base = below(set.base);
    paths.rover = below(set.rover);
    paths.others = below(set.others);
    const auto orbits = below(set.orbits);
    paths.others.insert(paths.others.end(), orbits.begin(), orbits.end());

    LoadedSet loaded;
    loaded.description = set;
    loaded.inputs = session::ReadInputs(paths, solve::SelectionFor({}));
    session::DropUntimed(loaded.inputs.base);
    session::DropUntimed(loaded.inputs.rover);
    const auto& base = loaded.inputs.base.epochs;
    const auto& rover = loaded.inputs.rover.epochs;
    if (base.empty() || rover.empty()) {
        throw PlanError(set.name + ": a station without epochs");
    }
    loaded.first = std::max(base.front().time, rover.front().time);
    loaded.first.seconds = std::round(loaded.first.seconds);
    loaded.last = std::min(base.back().time, rover.back().time);
    loaded.interval = session::IntervalOf(
        loaded.inputs.rover, session::PairEpochs(loaded.inputs.rover, loaded.inputs.base).pairs);
    return loaded;
}

std::string SystemsOf(const session::Inputs& inputs) {
    std::array<std::string, 2> seen;
    const std::array<const io::Observations*, 2> stations = {&inputs.base, &inputs.rover};
    for (std::size_t i = 0; i < 2; ++i) {
        for (const io::SatelliteRow& row : stations[i]->satellites) {
            const char letter = LetterOfFormat(row.satellite.system);
            if (letter != '\0' && seen[i].find(letter) == std::string::npos) {
                seen[i] += letter;
            }
        }
    }
    return Intersection(seen[0], seen[1]);
}

std::vector<Cut> AllCuts(const std::vector<CutRule>& rules, const std::vector<LoadedSet>& sets) {
    constexpr double kMayMiss = 0.02;
    std::vector<std::string> systemsOfSets;
    for (const LoadedSet& set : sets) {
        systemsOfSets.push_back(SystemsOf(set.inputs));
    }
    std::vector<Cut> cuts;
    std::set<std::string> given;
    const auto add = [&](const Cut& cut) {
        const std::string key = Format(
            "%zu %.0f %.0f %s %d %d %d %.3f", cut.set, cut.start, cut.duration, cut.systems.c_str(),
            cut.frequencies, static_cast<int>(cut.orbits), cut.swapped ? 1 : 0, cut.headerOffset);
        if (given.insert(key).second) {
            cuts.push_back(cut);
        }
    };
    // The combinations of one rule for one set and duration at one start.
    const auto addAt = [&](const CutRule& rule, Cut cut) {
        const bool haveOrbits = !sets[cut.set].description.orbits.empty();
        for (const std::string& asked : rule.systems) {
            cut.systems = Intersection(asked, systemsOfSets[cut.set]);
            for (const int frequencies : rule.frequencies) {
                cut.frequencies = frequencies;
                for (const OrbitChoice orbits : rule.orbits) {
                    cut.orbits = orbits;
                    if (cut.systems.empty() || (orbits != OrbitChoice::kBroadcast && !haveOrbits)) {
                        continue;
                    }
                    for (const bool swapped : rule.swapped) {
                        cut.swapped = swapped;
                        for (const double offset : rule.headerOffsets) {
                            cut.headerOffset = offset;
                            add(cut);
                        }
                    }
                }
            }
        }
    };
    for (const CutRule& rule : rules) {
        for (std::size_t s = 0; s < sets.size(); ++s) {
            if (!rule.sets.empty() && std::find(rule.sets.begin(), rule.sets.end(),
                                                sets[s].description.name) == rule.sets.end()) {
                continue;
            }
            const double held = io::SecondsBetween(sets[s].first, sets[s].last) + sets[s].interval;
            for (const double duration : rule.durations) {
                const double step = rule.step > 0.0 ? rule.step : duration;
                for (double start = 0.0; start + duration * (1.0 - kMayMiss) <= held;
                     start += step) {
                    Cut cut;
                    cut.set = s;
                    cut.start = start;
                    cut.duration = duration;
                    addAt(rule, cut);
                }
            }
        }
    }
    return cuts;
}

io::Observations CutObservations(const io::Observations& whole, const io::GpsTime& start,
                                 const io::GpsTime& end, const std::string& systems,
                                 int frequencies) {
    constexpr double kEarly = 0.1;  // s
    io::Observations part;
    part.file = whole.file;
    part.version = whole.version;
    part.compact = whole.compact;
    part.stations = whole.stations;
    part.signalTables = whole.signalTables;
    if (frequencies == 1) {
        for (io::SignalTable& table : part.signalTables) {
            for (std::size_t s = 0; s < io::kSystemCount; ++s) {
                for (io::Signal& signal : table[s]) {
                    if (signal.code.band != FirstBandOf(static_cast<io::GnssSystem>(s))) {
                        signal.code.type = ' ';
                    }
                }
            }
        }
    }
    for (const io::ObservationEpoch& epoch : whole.epochs) {
        if (io::SecondsBetween(epoch.time, start) > kEarly ||
            io::SecondsBetween(epoch.time, end) <= kEarly) {
            continue;
        }
        io::ObservationEpoch copy = epoch;
        copy.firstSatellite = static_cast<std::uint32_t>(part.satellites.size());
        copy.satelliteCount = 0;
        for (const io::SatelliteRow& row : whole.SatellitesOf(epoch)) {
            const char letter = LetterOfFormat(row.satellite.system);
            if (letter == '\0' || systems.find(letter) == std::string::npos) {
                continue;
            }
            io::SatelliteRow taken = row;
            taken.firstValue = static_cast<std::uint32_t>(part.values.size());
            const std::size_t columns = whole.SignalsOf(row).size();
            const auto copyInto = [&](auto& to, const auto& from) {
                const auto first = from.begin() + static_cast<std::ptrdiff_t>(row.firstValue);
                to.insert(to.end(), first, first + static_cast<std::ptrdiff_t>(columns));
            };
            copyInto(part.values, whole.values);
            copyInto(part.lossOfLock, whole.lossOfLock);
            copyInto(part.signalStrength, whole.signalStrength);
            part.satellites.push_back(taken);
            ++copy.satelliteCount;
        }
        part.epochs.push_back(copy);
    }
    return part;
}

io::Navigation CutNavigation(const io::Navigation& whole, const io::GpsTime& start,
                             const io::GpsTime& end) {
    io::Navigation part;
    part.file = whole.file;
    part.version = whole.version;
    part.ionosphere = whole.ionosphere;
    part.leapSeconds = whole.leapSeconds;
    for (const io::KeplerRecord& record : whole.kepler) {
        if (Serves({record.toeWeek, record.toeSeconds}, start, end)) {
            part.kepler.push_back(record);
        }
    }
    for (const io::GlonassRecord& record : whole.glonass) {
        if (Serves({record.referenceWeek, record.referenceSeconds}, start, end)) {
            part.glonass.push_back(record);
        }
    }
    return part;
}

io::PreciseOrbits CutOrbits(const io::PreciseOrbits& whole, const io::GpsTime& start,
                            const io::GpsTime& end) {
    constexpr double kMargin = 3.0 * 3600.0;  // s
    const auto lower =
        std::lower_bound(whole.epochs.begin(), whole.epochs.end(), io::Shifted(start, -kMargin));
    const auto upper =
        std::upper_bound(whole.epochs.begin(), whole.epochs.end(), io::Shifted(end, kMargin));
    const auto first = static_cast<std::uint32_t>(lower - whole.epochs.begin());
    const auto beyond = static_cast<std::uint32_t>(upper - whole.epochs.begin());
    io::PreciseOrbits part = whole;
    part.epochs.assign(lower, upper);
    for (io::OrbitSeries& series : part.satellites) {
        std::erase_if(series.points, [&](const io::OrbitPoint& point) {
            return point.epoch < first || point.epoch >= beyond;
        });
        for (io::OrbitPoint& point : series.points) {
            point.epoch -= first;
        }
    }
    return part;
}

Vector3 DirectionOf(const std::string& text) {
    std::seed_seq seed(text.begin(), text.end());
    std::mt19937 generator(seed);
    // Not std::normal_distribution, whose values differ between libraries.
    const auto uniform = [&generator] {
        return (static_cast<double>(generator()) + 0.5) / 4294967296.0;
    };
    const double up = 2.0 * uniform() - 1.0;
    const double angle = 2.0 * M_PI * uniform();
    const double across = std::sqrt(1.0 - up * up);
    return {across * std::cos(angle), across * std::sin(angle), up};
}

Scene MakeScene(const LoadedSet& set, const Cut& cut) {
    const io::GpsTime start = io::Shifted(set.first, cut.start);
    const io::GpsTime end = io::Shifted(start, cut.duration);
    Scene scene;
    scene.source = "real";
    scene.set = set.description.name;
    scene.block = Format("%s:%.0f:%.0f", scene.set.c_str(), cut.duration,
                         std::floor(cut.start / cut.duration));
    scene.cut = Format("%s:%.0f+%.0f:%s%d:%s", scene.set.c_str(), cut.start, cut.duration,
                       cut.systems.c_str(), cut.frequencies, NameOf(cut.orbits)) +
                (cut.swapped ? ":swapped" : "") +
                (cut.headerOffset > 0.0 ? Format(":moved%g", cut.headerOffset) : "");
    scene.duration = cut.duration;
    scene.systems = cut.systems;
    scene.frequencies = cut.frequencies;
    scene.orbits = cut.orbits;
    scene.swapped = cut.swapped;
    scene.headerOffset = cut.headerOffset;

    const session::Inputs& whole = set.inputs;
    session::Inputs& inputs = scene.inputs;
    inputs.base = CutObservations(whole.base, start, end, cut.systems, cut.frequencies);
    inputs.rover = CutObservations(whole.rover, start, end, cut.systems, cut.frequencies);
    inputs.antennas = whole.antennas;
    if (cut.orbits != OrbitChoice::kSp3Alone) {
        for (const io::Navigation& file : whole.navigation) {
            inputs.navigation.push_back(CutNavigation(file, start, end));
        }
    }
    if (cut.orbits != OrbitChoice::kBroadcast) {
        for (const io::PreciseOrbits& file : whole.orbits) {
            inputs.orbits.push_back(CutOrbits(file, start, end));
        }
    }
    scene.known = set.description.known;
    if (cut.swapped) {
        std::swap(inputs.base, inputs.rover);
        if (scene.known.base) {
            scene.known.base = session::Plus(*scene.known.base, scene.known.vector);
        }
        scene.known.vector = session::Minus({}, scene.known.vector);
    }
    if (cut.headerOffset > 0.0) {
        MoveHeader(inputs.base, DirectionOf(scene.cut + " base"), cut.headerOffset);
        MoveHeader(inputs.rover, DirectionOf(scene.cut + " rover"), cut.headerOffset);
    }
    return scene;
}

}  // namespace vornel::truth
