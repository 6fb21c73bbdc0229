#include "session/text.h"

#include <cstdarg>
#include <cstdio>
#include <filesystem>

namespace vornel::session {

std::string Format(const char* format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

std::string Plural(std::size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string FileName(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

}  // namespace vornel::session
