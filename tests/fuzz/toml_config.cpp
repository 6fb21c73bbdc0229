// The TOML configuration: a text gives settings, or a ConfigError; and settings that were read print
// as a configuration that reads back as the same.
#include "app/toml_config.h"

#include <string>

#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vornel;
    const std::string text(reinterpret_cast<const char*>(data), size);
    session::ConfiguredSettings settings;
    try {
        app::TakeToml(text, "input", settings);
    } catch (const app::ConfigError&) {
        return 0;
    }
    session::ConfiguredSettings again;
    app::TakeToml(app::PrintToml(settings), "printed", again);
    for (const session::SettingSpec& spec : session::AllSettings()) {
        FUZZ_REQUIRE(spec.toml(settings.values) == spec.toml(again.values));
    }
    return 0;
}
