#include "app/help_text.h"

#include <algorithm>

#include "session/settings.h"

namespace vornel::app {
namespace {

constexpr const char* kFineTuning = "Fine tuning";

std::string OptionLine(const session::SettingSpec& spec) {
    constexpr std::size_t kColumn = 28;
    std::string line = std::string("  --") + spec.name + " " + spec.argument;
    line.resize(std::max(line.size() + 1, kColumn), ' ');
    return line + spec.help + "\n";
}

std::string SettingLines(bool all) {
    std::string text;
    std::string tuning;
    for (const session::SettingSpec& spec : session::AllSettings()) {
        const bool fine = std::string(spec.group) == kFineTuning;
        if (!fine) {
            text += OptionLine(spec);
        } else if (all) {
            tuning += OptionLine(spec);
        }
    }
    if (!all) {
        return text + "  --help-all                the options for fine tuning too\n";
    }
    return text + "\n" + kFineTuning + "\n" + tuning;
}

}  // namespace

std::string GeneralHelp() {
    return R"(vornel - the vector between two GNSS receivers that stood still

  vornel solve --base FILE --rover FILE FILE...   solve a baseline
  vornel info FILE...                             what is in a file
  vornel config [OPTIONS]                         print the settings as TOML
  vornel COMMAND --help                           more about a command
  vornel --version

Files are told by what they hold: RINEX observations (Compact RINEX too) and
navigation, SP3 orbits, ANTEX antennas, SINEX coordinates; plain or packed as
.gz, .Z, .bz2, .xz, .zst, .zip, .tar.

Examples
  vornel solve --base WTZR.rnx --rover WTZZ.rnx BRDC.rnx
  vornel solve --base a.22o.gz --rover b.22o.gz nav.22n.gz igs.atx --json o.json
  vornel info *.rnx

Exit codes: 0 fixed, 3 float, 4 to 7 no fixed or float solution, 2 usage, 20 and
above bad input.
)";
}

std::string CommandHelp(const std::string& command, bool all) {
    if (command == "info") {
        return R"(vornel info FILE...

What is in each file. Observations: station, receiver, antenna, times, interval,
systems, signals, gaps. Navigation and precise orbits: satellites and times
covered. Antenna files: what they calibrate.

Example
  vornel info WTZR00DEU_R_20201770000_01H_30S_MO.rnx
)";
    }
    if (command == "config") {
        return R"(vornel config [OPTIONS] [--base FILE --rover FILE FILE...]

Prints every setting as TOML, with where its value comes from: default, file,
option, or data, when files are given that settle it. The output can be given to
`vornel solve --config`. Options are those of `vornel solve`.

Example
  vornel config --elevation-mask 10 > my.toml
)";
    }
    return R"(vornel solve --base FILE --rover FILE FILE... [OPTIONS]

  --base FILE               observations of the base (again for more files)
  --rover FILE              observations of the rover (again for more files)
  FILE...                   navigation, precise orbits, antennas, further
                            observations of the two stations
  --config FILE             settings in TOML, named as the options
  --report FILE             a page of HTML to keep: drawings, charts, everything
  --json FILE, --csv FILE   all as JSON, residuals as CSV ("-": standard output)
  --trace FILE              the engine's trace; --trace-level N from 0 to 5 (4)
  --no-checks               make no check runs; the answer is doubtful at most
  --verbose                 also show what the engine says

)" + SettingLines(all) +
           R"(
Times are GPS time, as 2020-06-25T00:10:00 or WEEK:SECONDS. Example:
  vornel solve --base a.rnx --rover b.rnx nav.rnx --exclude G05 --json out.json
)";
}

}  // namespace vornel::app
