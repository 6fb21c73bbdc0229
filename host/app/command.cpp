#include "app/command.h"

#include <unistd.h>

#include <ctime>
#include <exception>
#include <ostream>

#include "app/command_line.h"
#include "app/info_report.h"
#include "app/output_file.h"
#include "app/progress_line.h"
#include "app/toml_config.h"
#include "report/csv_report.h"
#include "report/exit_codes.h"
#include "report/html_report.h"
#include "report/json_report.h"
#include "report/text_report.h"
#include "session/fault.h"
#include "solve/preparation.h"
#include "solve/solve.h"

namespace vornel::app {
namespace {

using report::CodeOf;
using solve::SolveResult;

constexpr const char* kStandardOutput = "-";

std::string UtcNow() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    ::gmtime_r(&now, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text;
}

std::string CommandLineText(const std::vector<std::string>& arguments) {
    std::string text = "vornel";
    for (const std::string& word : arguments) {
        const bool plain = !word.empty() && word.find_first_of(" '\"\\$*?") == std::string::npos;
        text += plain ? " " + word : " '" + word + "'";
    }
    return text;
}

void WriteOutput(const std::string& path, const std::string& content, std::ostream& out) {
    if (path == kStandardOutput) {
        out << content;
    } else if (!path.empty()) {
        WriteWhole(path, content);
    }
}

void RequireOutputs(const SolveArguments& arguments) {
    for (const std::string& path : {arguments.json, arguments.csv, arguments.report}) {
        if (!path.empty() && path != kStandardOutput) {
            RequireWritable(path);
        }
    }
}

int SolveCommand(SolveArguments arguments, const std::string& commandLine,
                 const Surroundings& around) {
    RequireOutputs(arguments);
    const std::string started = UtcNow();
    ProgressLine progress(STDERR_FILENO, around.errIsTerminal);
    solve::SolveRequest request;
    request.paths = std::move(arguments.paths);
    request.settings = std::move(arguments.settings);
    request.checks = arguments.checks;
    request.tracePath = arguments.trace;
    request.traceLevel = arguments.traceLevel;
    request.engine = around.engine;
    request.progress = [&progress](const std::string& what, std::size_t done, std::size_t total) {
        progress.Tell(what, done, total);
    };
    SolveResult result = solve::Solve(std::move(request));
    progress.Stop();
    result.version = VORNEL_VERSION;
    result.commandLine = commandLine;
    result.startedUtc = started;

    if (!arguments.json.empty()) {
        WriteOutput(arguments.json, report::JsonText(report::JsonReport(result)), around.out);
    }
    if (!arguments.csv.empty()) {
        WriteOutput(arguments.csv, report::CsvReport(result), around.out);
    }
    if (!arguments.report.empty()) {
        WriteOutput(arguments.report, report::HtmlReport(result), around.out);
    }
    if (arguments.json != kStandardOutput && arguments.csv != kStandardOutput &&
        arguments.report != kStandardOutput) {
        around.out << report::TextReport(result);
    }
    if (arguments.verbose) {
        around.err << result.engineLines;
    }
    return static_cast<int>(CodeOf(result.grade, result.outcome.results.status));
}

int ConfigCommand(ConfigArguments arguments, const Surroundings& around) {
    if (arguments.paths.base.empty()) {
        around.out << PrintToml(arguments.settings);
        return 0;
    }
    session::Inputs inputs =
        session::ReadInputs(arguments.paths, solve::SelectionFor(arguments.settings.values),
                            solve::UnpackLimitOf(arguments.settings.values));
    const session::Session prepared =
        solve::PrepareSession(std::move(inputs), std::move(arguments.settings));
    around.out << PrintToml(prepared.settings);
    return 0;
}

int Fail(const Surroundings& around, ExitCode code, const std::string& text,
         const std::string& hint = {}) {
    around.err << "vornel: " << text << (hint.empty() ? "" : "; " + hint) << "\n";
    return static_cast<int>(code);
}

// Tells of every file that can be read; the first that cannot be gives the exit code.
int InfoCommand(const InfoArguments& arguments, const Surroundings& around) {
    int code = 0;
    for (const std::string& file : arguments.files) {
        try {
            around.out << InfoReport(file);
        } catch (const io::InputError& error) {
            const int failed = Fail(around, CodeOf(error.fault()), error.what());
            code = code == 0 ? failed : code;
        }
    }
    return code;
}

int Dispatch(const std::vector<std::string>& words, const Surroundings& around) {
    Arguments arguments = ParseCommandLine(words);
    if (auto* solve = std::get_if<SolveArguments>(&arguments)) {
        return SolveCommand(std::move(*solve), CommandLineText(words), around);
    }
    if (auto* info = std::get_if<InfoArguments>(&arguments)) {
        return InfoCommand(*info, around);
    }
    if (auto* config = std::get_if<ConfigArguments>(&arguments)) {
        return ConfigCommand(std::move(*config), around);
    }
    around.out << std::get<TextArguments>(arguments).text;
    return 0;
}

}  // namespace

int RunCommand(const std::vector<std::string>& arguments, const Surroundings& around) {
    try {
        return Dispatch(arguments, around);
    } catch (const io::InputError& error) {
        return Fail(around, CodeOf(error.fault()), error.what());
    } catch (const session::SessionFault& error) {
        return Fail(around, CodeOf(error.fault()), error.what(), error.hint());
    } catch (const ConfigError& error) {
        return Fail(around, error.code(), error.what());
    } catch (const UsageError& error) {
        return Fail(around, ExitCode::kUsage, error.what());
    } catch (const OutputError& error) {
        return Fail(around, ExitCode::kOutput, error.what());
    } catch (const process::ChildDied& error) {
        return Fail(around, ExitCode::kInternal, error.what());
    } catch (const std::exception& error) {
        return Fail(around, ExitCode::kInternal, std::string("internal error: ") + error.what());
    }
}

}  // namespace vornel::app
