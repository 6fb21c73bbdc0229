// The host's whole way: files of two stations, of orbits and antennas, and settings, are read, made
// into a session, handed over, solved, and told of. Every call on the way is held to the public
// header.
//
// An input is the files one behind the other, each after a line "=====X": b a file of the base, r of
// the rover, s settings, any other letter what the content tells.
#include <string>
#include <string_view>
#include <vector>

#include "app/toml_config.h"
#include "checking_engine.h"
#include "io/observation_reader.h"
#include "made_up_session.h"
#include "report/csv_report.h"
#include "report/html_report.h"
#include "report/json_report.h"
#include "report/text_report.h"
#include "require.h"
#include "session/fault.h"
#include "solve/preparation.h"
#include "solve/solve_result.h"

namespace vornel::fuzz {
namespace {

constexpr std::string_view kMark = "=====";
constexpr std::size_t kMostEpochs = 64;  // so that an input costs little time

struct Part {
    char role = ' ';
    std::string_view text;
};

std::vector<Part> PartsOf(std::string_view bytes) {
    std::vector<Part> parts;
    std::size_t at = bytes.find(kMark);
    while (at != std::string_view::npos) {
        const std::size_t line = bytes.find('\n', at);
        if (line == std::string_view::npos) {
            break;
        }
        const std::size_t role = at + kMark.size();
        at = bytes.find(kMark, line);
        parts.push_back({bytes[role], bytes.substr(line + 1, at - (line + 1))});
    }
    return parts;
}

struct Files {
    session::Inputs inputs;
    session::ConfiguredSettings settings;
    bool bothStations = false;
};

void ReadShared(std::string_view text, session::Inputs& inputs) {
    switch (io::RecogniseFile(text, "file")) {
        case io::FileKind::kNavigation:
            inputs.navigation.push_back(io::ReadNavigation(text, "navigation"));
            break;
        case io::FileKind::kPreciseOrbit:
            inputs.orbits.push_back(io::ReadPreciseOrbits(text, "orbits"));
            break;
        case io::FileKind::kAntenna:
            inputs.antennas.push_back(io::ReadAntennas(text, "antennas"));
            break;
        case io::FileKind::kStationCoordinates:
            inputs.coordinates.push_back(io::ReadStationCoordinates(text, "coordinates"));
            break;
        case io::FileKind::kObservation:
        case io::FileKind::kCompactObservation:
            break;
    }
}

Files ReadParts(const std::vector<Part>& parts) {
    Files files;
    for (const Part& part : parts) {
        if (part.role == 's') {
            app::TakeToml(std::string(part.text), "settings", files.settings);
        }
    }
    const auto selection = solve::SelectionFor(files.settings.values);
    std::vector<io::Observations> base, rover;
    for (const Part& part : parts) {
        if (part.role == 'b') {
            base.push_back(io::ReadObservations(part.text, "base", selection));
        } else if (part.role == 'r') {
            rover.push_back(io::ReadObservations(part.text, "rover", selection));
        } else if (part.role != 's') {
            ReadShared(part.text, files.inputs);
        }
    }
    if (!base.empty() && !rover.empty()) {
        files.inputs.base = io::JoinObservations(std::move(base));
        files.inputs.rover = io::JoinObservations(std::move(rover));
        files.bothStations = files.inputs.base.epochs.size() <= kMostEpochs &&
                             files.inputs.rover.epochs.size() <= kMostEpochs;
    }
    return files;
}

void Solve(Files files) {
    solve::SolveResult result;
    result.session = solve::PrepareSession(std::move(files.inputs), std::move(files.settings));
    engine::Engine engine(CheckingEngine(true));
    result.fed = solve::Feed(result.session, engine, {});
    FUZZ_REQUIRE(result.fed.epochs == CallsSoFar().epochs);
    result.outcome = solve::Run(result.session, engine);
    FUZZ_REQUIRE((result.outcome.Best() == nullptr) ==
                 (result.outcome.acceptance == solve::Acceptance::kNone));
    FUZZ_REQUIRE(!report::TextReport(result).empty());
    FUZZ_REQUIRE(!report::CsvReport(result).empty());
    FUZZ_REQUIRE(!report::JsonText(report::JsonReport(result)).empty());
    FUZZ_REQUIRE(report::HtmlReport(result).size() <= report::kPageLimit);
}

}  // namespace
}  // namespace vornel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vornel;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    fuzz::ForgetEverything();
    try {
        fuzz::Files files = fuzz::ReadParts(fuzz::PartsOf(bytes));
        if (files.bothStations) {
            fuzz::Solve(std::move(files));
        }
    } catch (const io::InputError&) {
    } catch (const app::ConfigError&) {
    } catch (const session::SessionFault&) {
    }
    fuzz::ForgetEverything();
    return 0;
}
