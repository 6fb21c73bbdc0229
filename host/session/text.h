// Small makers of text that notes, reports and messages share.
#pragma once

#include <cstddef>
#include <string>

namespace vornel::session {

// printf into a string; cut at 511 characters.
std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));

// "1 epoch", "2 epochs".
std::string Plural(std::size_t count, const char* noun);

// What `name` makes of each entry, with blanks between.
template <typename List, typename Name>
std::string Joined(const List& list, Name name) {
    std::string text;
    for (const auto& entry : list) {
        if (!text.empty()) {
            text += ' ';
        }
        text += name(entry);
    }
    return text;
}

// The last part of a path.
std::string FileName(const std::string& path);

}  // namespace vornel::session
