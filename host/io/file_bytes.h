// The bytes of a file, unpacked in memory: plain, gzip, .Z, bzip2, xz and zip, told by content.
// Files are opened for reading only and nothing is ever written beside them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vornel::io {

// Limits against damaged or hostile files. A day of 1 s data of all systems is about 2 GB plain.
inline constexpr std::uint64_t kMaximumUnpackedBytes = 4ULL
                                                       << 30;  // all members of a file together
inline constexpr std::uint64_t kMaximumExpansion = 2000;       // unpacked over packed, above 64 MB
inline constexpr std::size_t kMaximumArchiveMembers = 1000;
inline constexpr int kMaximumPackingDepth =
    3;  // archives in archives; a .gz within a .zip is depth 2

struct FileBytes {
    std::string name;     // for messages: the path, and for an archive "path(member)"
    std::string path;     // the path as given
    std::string packing;  // "plain", "gzip", "compress", "bzip2", "xz", "zip"; the outermost one
    std::uint64_t packedSize = 0;  // size of the file itself
    std::string bytes;
};

// All regular members of the file: one, unless it is an archive of several. Throws InputError
// (missing, unreadable, empty, damaged packing, truncated, too large).
std::vector<FileBytes> ReadFile(const std::string& path);

// The same for bytes at hand; `name` is used in messages.
std::vector<FileBytes> Unpack(std::string bytes, const std::string& name);

}  // namespace vornel::io
