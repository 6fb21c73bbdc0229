#include "app/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <map>

#include "app/help_text.h"
#include "app/toml_config.h"

namespace vornel::app {
namespace {

using Words = std::vector<std::string>;

// The words each setting's option was given, by the setting's name.
struct SettingWords {
    std::map<std::string, Words> words;
    std::map<std::string, bool> switches;
};

// Short names that people will try first.
const std::map<std::string, std::string>& Aliases() {
    static const std::map<std::string, std::string> aliases = {
        {"elevation-mask", "mask"}, {"solve-mode", "mode"}, {"ephemeris-source", "ephemeris"}};
    return aliases;
}

void AddSettings(CLI::App& command, SettingWords& given) {
    for (const session::SettingSpec& spec : session::AllSettings()) {
        std::string names = std::string("--") + spec.name;
        const auto alias = Aliases().find(spec.name);
        if (alias != Aliases().end()) {
            names += ",--" + alias->second;
        }
        if (spec.words == 0) {
            command.add_flag(names, given.switches[spec.name]);
            continue;
        }
        CLI::Option* option = command.add_option(names, given.words[spec.name]);
        if (spec.repeatable) {
            option->allow_extra_args(false);
        } else {
            option->expected(spec.words);
        }
    }
}

// Options override what a file set.
void ApplyOptions(const SettingWords& given, session::ConfiguredSettings& settings) {
    for (const session::SettingSpec& spec : session::AllSettings()) {
        try {
            if (spec.words == 0) {
                if (given.switches.at(spec.name)) {
                    spec.set(settings.values, {});
                    settings.origins[spec.name] = {"option", ""};
                }
                continue;
            }
            const Words& words = given.words.at(spec.name);
            if (words.empty()) {
                continue;
            }
            if (spec.repeatable) {
                for (const std::string& word : words) {
                    spec.set(settings.values, std::span(&word, 1));
                }
            } else {
                spec.set(settings.values, words);
            }
            settings.origins[spec.name] = {"option", ""};
        } catch (const session::SettingError& error) {
            throw UsageError(std::string("--") + spec.name + ": " + error.what());
        }
    }
}

// Values that are right each by itself and wrong together.
void RequireSense(const session::Settings& settings) {
    if (settings.galFreq2 &&
        *settings.galFreq2 == settings.galFreq1.value_or(VORNEL_DEFAULT_GAL_FREQ1)) {
        throw UsageError("--gal-freq1 and --gal-freq2 name the same signal");
    }
    if (settings.start && settings.end && *settings.end < *settings.start) {
        throw UsageError("--end lies before --start");
    }
}

struct FileWords {
    session::InputPaths paths;
    std::string config;
};

void AddFiles(CLI::App& command, FileWords& files) {
    command.add_option("--base", files.paths.base)->allow_extra_args(false);
    command.add_option("--rover", files.paths.rover)->allow_extra_args(false);
    command.add_option("files", files.paths.others);
    command.add_option("--config", files.config);
}

session::ConfiguredSettings Configured(const FileWords& files, const SettingWords& given) {
    session::ConfiguredSettings settings;
    if (!files.config.empty()) {
        ReadTomlConfig(files.config, settings);
    }
    ApplyOptions(given, settings);
    RequireSense(settings.values);
    return settings;
}

void RequireStations(const session::InputPaths& paths) {
    if (paths.base.empty() || paths.rover.empty()) {
        throw UsageError(std::string("the observation file of the ") +
                         (paths.base.empty() ? "base" : "rover") + " is missing: give --" +
                         (paths.base.empty() ? "base" : "rover") + " FILE");
    }
}

// One line for what the parser says, with a suggestion where an option is not known.
std::string Explained(const CLI::ParseError& error, const std::string& command,
                      const Words& arguments) {
    std::string text = error.what();
    std::replace(text.begin(), text.end(), '\n', ' ');
    if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
        for (const std::string& word : arguments) {
            const std::string name = word.substr(0, word.find('='));
            const bool unknown = text.find(name) != std::string::npos;
            if (word.rfind("--", 0) == 0 && unknown &&
                session::FindSetting(name.substr(2)) == nullptr) {
                return "unknown option " + name + "; did you mean --" +
                       session::NearestSettingName(name.substr(2)) + "? See `vornel " + command +
                       " --help`";
            }
        }
    }
    return text + "; see `vornel " + (command.empty() ? "" : command + " ") + "--help`";
}

bool Contains(const Words& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// CLI11 wants the words in reverse.
void Parse(CLI::App& command, const std::string& name, const Words& words) {
    Words reversed(words.rbegin(), words.rend());
    try {
        command.parse(reversed);
    } catch (const CLI::ParseError& error) {
        throw UsageError(Explained(error, name, words));
    }
}

// The engine cuts a longer path off, and would write to another file. A keyword of two characters
// becomes four at most.
std::string TracePathFault(const std::string& path) {
    constexpr std::size_t kLongest = 1023;
    const auto keywords = static_cast<std::size_t>(std::count(path.begin(), path.end(), '%'));
    return path.size() + 2 * keywords > kLongest ? "a path of more than 1023 characters" : "";
}

Arguments ParseSolve(const Words& words) {
    CLI::App command;
    command.set_help_flag();
    SolveArguments solve;
    FileWords files;
    SettingWords given;
    AddFiles(command, files);
    AddSettings(command, given);
    command.add_option("--json", solve.json);
    command.add_option("--csv", solve.csv);
    command.add_option("--report", solve.report);
    CLI::Option* trace = command.add_option("--trace", solve.trace)->check(TracePathFault);
    command.add_option("--trace-level", solve.traceLevel)->needs(trace)->check(CLI::Range(0, 5));
    command.add_flag("--verbose,-v", solve.verbose);
    command.add_flag("!--no-checks", solve.checks);
    Parse(command, "solve", words);
    RequireStations(files.paths);
    solve.settings = Configured(files, given);
    solve.paths = std::move(files.paths);
    return solve;
}

Arguments ParseInfo(const Words& words) {
    CLI::App command;
    command.set_help_flag();
    InfoArguments info;
    command.add_option("files", info.files);
    Parse(command, "info", words);
    if (info.files.empty()) {
        throw UsageError("no file is given; see `vornel info --help`");
    }
    return info;
}

Arguments ParseConfig(const Words& words) {
    CLI::App command;
    command.set_help_flag();
    FileWords files;
    SettingWords given;
    AddFiles(command, files);
    AddSettings(command, given);
    Parse(command, "config", words);
    const bool any =
        !files.paths.base.empty() || !files.paths.rover.empty() || !files.paths.others.empty();
    if (any) {
        RequireStations(files.paths);
    }
    ConfigArguments config;
    config.settings = Configured(files, given);
    config.paths = std::move(files.paths);
    return config;
}

}  // namespace

Arguments ParseCommandLine(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        throw UsageError("no command is given: solve, info or config; see `vornel --help`");
    }
    const std::string& name = arguments.front();
    const Words words(arguments.begin() + 1, arguments.end());
    if (name == "--version") {
        return TextArguments{"vornel " VORNEL_VERSION "\n"};
    }
    if (name == "--help" || name == "-h" || name == "help") {
        return TextArguments{GeneralHelp()};
    }
    const bool known = name == "solve" || name == "info" || name == "config";
    if (!known) {
        throw UsageError("'" + name +
                         "' is no command; there are solve, info and config; see `vornel --help`");
    }
    if (Contains(words, "--help-all")) {
        return TextArguments{CommandHelp(name, true)};
    }
    if (Contains(words, "--help") || Contains(words, "-h")) {
        return TextArguments{CommandHelp(name, false)};
    }
    if (name == "solve") {
        return ParseSolve(words);
    }
    return name == "info" ? ParseInfo(words) : ParseConfig(words);
}

}  // namespace vornel::app
