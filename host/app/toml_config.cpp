#include "app/toml_config.h"

// The parser (toml++ 3.3) asserts what a malformed time or key does not hold, although the tests behind
// the assertions tell what is wrong; optimised by clang it even relies on them. No build does here.
#undef NDEBUG
#define TOML_ASSERT(condition) static_cast<void>(0)
#define TOML_EXCEPTIONS 1
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#endif
#include <toml++/toml.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#include <algorithm>
#include <charconv>
#include <sstream>
#include <string_view>
#include <vector>

#include "io/file_bytes.h"

namespace vornel::app {
namespace {

std::string Where(const std::string& path, const toml::source_region& source) {
    return path + ":" + std::to_string(source.begin.line) + ": ";
}

// A single TOML value as the word that the command line would have; empty for a table or an array.
std::string Word(const toml::node& node) {
    if (const auto* text = node.as_string()) {
        return text->get();
    }
    if (const auto* number = node.as_integer()) {
        return std::to_string(number->get());
    }
    if (const auto* number = node.as_floating_point()) {
        char text[64];
        const auto end = std::to_chars(text, text + sizeof text, number->get());
        return {text, end.ptr};
    }
    if (const auto* boolean = node.as_boolean()) {
        return boolean->get() ? "true" : "false";
    }
    std::ostringstream text;  // dates and times
    if (const auto* date = node.as_date_time()) {
        text << date->get();
    } else if (const auto* day = node.as_date()) {
        text << day->get();
    }
    return text.str();
}

// The words of a value, one list for each use of the option.
std::vector<std::vector<std::string>> Uses(const session::SettingSpec& spec,
                                           const toml::node& node) {
    std::vector<std::string> words;
    if (const auto* array = node.as_array()) {
        for (const toml::node& element : *array) {
            words.push_back(Word(element));
        }
    } else {
        words.push_back(Word(node));
    }
    if (!spec.repeatable) {
        return {words};
    }
    std::vector<std::vector<std::string>> uses;
    for (const std::string& word : words) {
        uses.push_back({word});
    }
    return uses;
}

// The text with a question mark for each byte beyond ASCII, which only comments have a use for. The
// parser's test for foreign white space (toml++ 3.3) has no answer for most letters of other
// scripts.
std::string InAscii(std::string text) {
    constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
    if (text.starts_with(kByteOrderMark)) {
        text.erase(0, kByteOrderMark.size());
    }
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c & 0x80) != 0; }, '?');
    return text;
}

void Take(const std::string& path, const std::string& key, const toml::node& node,
          session::ConfiguredSettings& settings) {
    const std::string where = Where(path, node.source());
    const session::SettingSpec* spec = session::FindSetting(key);
    if (spec == nullptr) {
        throw ConfigError(ExitCode::kConfigKey, where + "unknown key '" + key +
                                                    "'; did you mean '" +
                                                    session::NearestSettingName(key) + "'?");
    }
    try {
        const auto wanted = static_cast<std::size_t>(std::max(1, spec->words));
        for (const auto& words : Uses(*spec, node)) {
            if (words.size() != wanted) {
                throw session::SettingError("takes " + std::to_string(wanted) +
                                            (wanted == 1 ? " value" : " values"));
            }
            spec->set(settings.values, words);
        }
    } catch (const session::SettingError& error) {
        throw ConfigError(ExitCode::kConfigValue, where + key + ": " + error.what());
    }
    settings.origins[spec->name] = {"file", path + ":" + std::to_string(node.source().begin.line)};
}

}  // namespace

void ReadTomlConfig(const std::string& path, session::ConfiguredSettings& settings) {
    TakeToml(io::ReadFile(path).front().bytes, path, settings);
}

void TakeToml(const std::string& text, const std::string& path,
              session::ConfiguredSettings& settings) {
    toml::table table;
    try {
        table = toml::parse(InAscii(text), path);
    } catch (const toml::parse_error& error) {
        throw ConfigError(ExitCode::kConfigSyntax, Where(path, error.source()) + "not TOML: " +
                                                       std::string(error.description()));
    }
    for (const auto& [key, node] : table) {
        Take(path, std::string(key.str()), node, settings);
    }
}

std::string PrintToml(const session::ConfiguredSettings& settings) {
    std::string text;
    constexpr std::size_t kCommentColumn = 44;
    for (const session::SettingSpec& spec : session::AllSettings()) {
        const std::string value = spec.toml(settings.values);
        std::string line = value.empty() ? std::string("# ") + spec.name + " is not set"
                                         : std::string(spec.name) + " = " + value;
        std::string origin = "default";
        const auto found = settings.origins.find(spec.name);
        if (found != settings.origins.end()) {
            origin = found->second.kind;
            if (!found->second.detail.empty()) {
                origin += ": " + found->second.detail;
            }
        }
        line.resize(std::max(line.size() + 2, kCommentColumn), ' ');
        text += line + "# " + origin + "\n";
    }
    return text;
}

}  // namespace vornel::app
