// The bytes of files, unpacked while they are read: plain, gzip, .Z, bzip2, xz, zstd, zip and tar,
// told by content. Files are opened for reading only and nothing is ever written beside them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "io/byte_source.h"

namespace vornel::io {

// Limits against damaged or hostile files.
inline constexpr std::uint64_t kUsualUnpackedBytes = 4ULL << 30;
inline constexpr std::uint64_t kMaximumExpansion = 2000;  // unpacked over packed, above 64 MB
inline constexpr std::size_t kMaximumArchiveMembers = 1000;
inline constexpr int kMaximumPackingDepth =
    3;  // archives in archives; a .gz within a .zip is depth 2

// How many bytes a run may unpack: all members of all packed files together. A plain file may have
// as many by itself.
class UnpackingLimit {
  public:
    explicit UnpackingLimit(std::uint64_t bytes = kUsualUnpackedBytes) : most_(bytes) {}

    std::uint64_t most() const { return most_; }

    // Throws SourceError when it is exceeded.
    void SpendOnMember(std::uint64_t bytes, const std::string& name) {
        Spend(member_, bytes, name);
    }
    // What only holds a further packing counts by itself.
    void SpendOnLayer(std::uint64_t bytes, const std::string& name) { Spend(layer_, bytes, name); }

  private:
    void Spend(std::uint64_t& spent, std::uint64_t bytes, const std::string& name) const;

    std::uint64_t most_;
    std::uint64_t member_ = 0;
    std::uint64_t layer_ = 0;
};

// A plain file, or a regular member of an archive, to be read while it is handed over.
struct FileMember {
    std::string name;     // for messages: the path, and for an archive "path(member)"
    std::string path;     // the path as given
    std::string packing;  // "plain", "gzip", "compress", "bzip2", "xz", "zstd", "zip", "tar"; the
                          // outermost one
    std::uint64_t packedSize = 0;  // size of the file itself
    ByteSource& bytes;
};

using TakeMember = std::function<void(FileMember& member)>;

// Hands over the members of a file, one after the other: one, unless it is an archive of several.
// What `take` leaves unread is unpacked all the same, so that damage anywhere is found: then, and
// not what `take` made of damaged bytes, it is what is thrown. Throws InputError (missing,
// unreadable, no file in an archive) and SourceError (damaged packing, truncated, too large).
void ReadMembers(const std::string& path, UnpackingLimit& limit, const TakeMember& take);

// The same for bytes at hand; `name` is used in messages.
void UnpackMembers(std::string_view bytes, const std::string& name, UnpackingLimit& limit,
                   const TakeMember& take);

// A member with all its bytes, for files that are small.
struct FileBytes {
    std::string name;
    std::string path;
    std::string packing;
    std::uint64_t packedSize = 0;
    std::string bytes;
};

// All members in memory. An empty one is refused.
std::vector<FileBytes> ReadFile(const std::string& path);
std::vector<FileBytes> Unpack(std::string_view bytes, const std::string& name);

}  // namespace vornel::io
