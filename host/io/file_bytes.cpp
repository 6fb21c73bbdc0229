#include "io/file_bytes.h"

#include <archive.h>
#include <archive_entry.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <system_error>

#include "io/input_error.h"

namespace vornel::io {
namespace {

using namespace std::string_view_literals;

enum class Packing { kPlain, kGzip, kCompress, kBzip2, kXz, kZip };

struct PackingMark {
    Packing packing;
    const char* name;
    std::string_view firstBytes;
};

// The first bytes of each packing, as its own format document tells them.
constexpr std::array<PackingMark, 6> kMarks = {{{Packing::kGzip, "gzip", "\x1f\x8b"sv},
                                                {Packing::kCompress, "compress", "\x1f\x9d"sv},
                                                {Packing::kBzip2, "bzip2", "BZh"sv},
                                                {Packing::kXz, "xz",
                                                 "\xfd"
                                                 "7zXZ\0"sv},
                                                {Packing::kZip, "zip", "PK\x03\x04"sv},
                                                {Packing::kZip, "zip", "PK\x05\x06"sv}}};

const PackingMark* FindMark(std::string_view bytes) {
    const auto* mark = std::find_if(kMarks.begin(), kMarks.end(), [&](const PackingMark& m) {
        return bytes.substr(0, m.firstBytes.size()) == m.firstBytes;
    });
    return mark == kMarks.end() ? nullptr : mark;
}

struct CloseArchive {
    void operator()(archive* reader) const { archive_read_free(reader); }
};
using ArchiveReader = std::unique_ptr<archive, CloseArchive>;

// A reader for one packing alone, so that nothing but what was recognised is ever tried.
ArchiveReader OpenArchive(Packing packing, std::string_view packed) {
    ArchiveReader reader(archive_read_new());
    switch (packing) {
        case Packing::kCompress:
            archive_read_support_filter_compress(reader.get());
            break;
        case Packing::kBzip2:
            archive_read_support_filter_bzip2(reader.get());
            break;
        case Packing::kXz:
            archive_read_support_filter_xz(reader.get());
            break;
        case Packing::kGzip:
        case Packing::kZip:
        case Packing::kPlain:
            break;
    }
    if (packing == Packing::kZip) {
        archive_read_support_format_zip(reader.get());
    } else {
        archive_read_support_format_raw(reader.get());
        archive_read_support_format_empty(reader.get());
    }
    // The data outlive the reader; libarchive takes them without const but only reads.
    archive_read_open_memory(reader.get(), packed.data(), packed.size());
    return reader;
}

// What has been unpacked so far of one file, against the limits.
class Budget {
  public:
    explicit Budget(std::uint64_t packedSize) : packedSize_(packedSize) {}

    void Spend(std::uint64_t bytes, const std::string& name) {
        constexpr std::uint64_t kAlwaysAllowed = 64ULL << 20;
        spent_ += bytes;
        const bool tooLarge = spent_ > kMaximumUnpackedBytes;
        const bool bomb = spent_ > kAlwaysAllowed && spent_ / kMaximumExpansion > packedSize_;
        if (tooLarge || bomb) {
            throw InputError(InputFault::kTooLarge, name, 0,
                             "it unpacks to more than " + std::to_string(spent_ >> 20) +
                                 " MB, which is beyond the limit",
                             "unpack it yourself and give the plain file");
        }
    }

  private:
    std::uint64_t packedSize_;
    std::uint64_t spent_ = 0;
};

[[noreturn]] void RefusePacked(const PackingMark& mark, const std::string& name,
                               const std::string& detail, bool cutOff) {
    throw InputError(cutOff ? InputFault::kTruncated : InputFault::kDamagedPacking, name, 0,
                     std::string("the ") + mark.name + " data " +
                         (cutOff ? "end too early: " : "cannot be unpacked: ") + detail,
                     "fetch the file again");
}

[[noreturn]] void RefusePacked(archive* reader, const PackingMark& mark, const std::string& name) {
    const char* text = archive_error_string(reader);
    const std::string detail = text != nullptr ? text : "unknown error";
    RefusePacked(mark, name, detail,
                 detail.find("runcated") != std::string::npos ||
                     detail.find("nexpected end") != std::string::npos);
}

struct EndInflate {
    void operator()(z_stream* stream) const { inflateEnd(stream); }
};

// gzip is read by zlib itself, which holds every member to its checksum and length; the filter of
// libarchive passes over both. Nothing but zeros may stand behind the last member.
std::string ReadGzip(std::string_view packed, const PackingMark& mark, const std::string& name,
                     Budget& budget) {
    constexpr int kGzipWithLargestWindow = 16 + MAX_WBITS;
    constexpr std::size_t kPortion = 1UL << 30;  // zlib counts its input in 32 bits
    z_stream stream{};
    if (inflateInit2(&stream, kGzipWithLargestWindow) != Z_OK) {
        throw std::bad_alloc();
    }
    const std::unique_ptr<z_stream, EndInflate> end(&stream);
    std::string bytes;
    std::array<Bytef, 1 << 16> block;
    bool atEndOfMember = true;
    while (!atEndOfMember || packed.find_first_not_of('\0') != std::string_view::npos) {
        const std::string_view portion = packed.substr(0, kPortion);
        // zlib takes its input without const but only reads.
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(portion.data()));
        stream.avail_in = static_cast<uInt>(portion.size());
        stream.next_out = block.data();
        stream.avail_out = static_cast<uInt>(block.size());
        const int status = inflate(&stream, Z_NO_FLUSH);
        const std::size_t count = block.size() - stream.avail_out;
        budget.Spend(count, name);
        bytes.append(reinterpret_cast<const char*>(block.data()), count);
        packed.remove_prefix(portion.size() - stream.avail_in);
        atEndOfMember = status == Z_STREAM_END;
        if (atEndOfMember) {
            inflateReset(&stream);
        } else if (status != Z_OK) {
            const bool noMoreInput = status == Z_BUF_ERROR;
            RefusePacked(mark, name,
                         noMoreInput             ? "the last member is not whole"
                         : stream.msg != nullptr ? stream.msg
                                                 : zError(status),
                         noMoreInput);
        }
    }
    return bytes;
}

std::string ReadEntry(archive* reader, const PackingMark& mark, const std::string& name,
                      Budget& budget) {
    std::string bytes;
    std::array<char, 1 << 16> block;
    for (;;) {
        const la_ssize_t count = archive_read_data(reader, block.data(), block.size());
        if (count < 0) {
            RefusePacked(reader, mark, name);
        }
        if (count == 0) {
            return bytes;
        }
        budget.Spend(static_cast<std::uint64_t>(count), name);
        bytes.append(block.data(), static_cast<std::size_t>(count));
    }
}

// Directories, and the companions that some systems put beside the real members.
bool IsRealMember(archive_entry* entry) {
    const char* path = archive_entry_pathname(entry);
    const std::string_view name = path != nullptr ? path : "";
    const bool companion =
        name.substr(0, 9) == "__MACOSX/" || name.find(".DS_Store") != std::string_view::npos;
    return archive_entry_filetype(entry) == AE_IFREG && !companion;
}

void UnpackInto(std::string bytes, const std::string& name, int depth, Budget& budget,
                std::vector<FileBytes>& out);

void UnpackLayer(const std::string& packed, const PackingMark& mark, const std::string& name,
                 int depth, Budget& budget, std::vector<FileBytes>& out) {
    if (mark.packing == Packing::kGzip) {
        UnpackInto(ReadGzip(packed, mark, name, budget), name, depth + 1, budget, out);
        return;
    }
    const ArchiveReader reader = OpenArchive(mark.packing, packed);
    for (;;) {
        archive_entry* entry = nullptr;
        const int status = archive_read_next_header(reader.get(), &entry);
        if (status == ARCHIVE_EOF) {
            return;
        }
        if (status < ARCHIVE_WARN) {
            RefusePacked(reader.get(), mark, name);
        }
        if (mark.packing == Packing::kZip && !IsRealMember(entry)) {
            continue;
        }
        std::string member = name;
        if (mark.packing == Packing::kZip) {
            const char* path = archive_entry_pathname(entry);
            member += '(' + std::string(path != nullptr ? path : "?") + ')';
        }
        UnpackInto(ReadEntry(reader.get(), mark, member, budget), member, depth + 1, budget, out);
    }
}

void UnpackInto(std::string bytes, const std::string& name, int depth, Budget& budget,
                std::vector<FileBytes>& out) {
    const PackingMark* mark = FindMark(bytes);
    if (mark == nullptr) {
        if (bytes.empty()) {
            throw InputError(InputFault::kEmpty, name, 0, "the file is empty",
                             "fetch or export the file again");
        }
        if (out.size() >= kMaximumArchiveMembers) {
            throw InputError(InputFault::kTooLarge, name, 0, "the archive has too many members",
                             "unpack it and give the files wanted");
        }
        out.push_back({name, {}, {}, 0, std::move(bytes)});
        return;
    }
    if (depth >= kMaximumPackingDepth) {
        throw InputError(InputFault::kTooLarge, name, 0, "it is packed within itself too often",
                         "unpack it yourself and give the plain file");
    }
    UnpackLayer(bytes, *mark, name, depth, budget, out);
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

void RequireRegularFile(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        throw InputError(InputFault::kMissingFile, path, 0, "there is no such file",
                         "check the path");
    }
    if (error || status.type() != std::filesystem::file_type::regular) {
        const bool folder = status.type() == std::filesystem::file_type::directory;
        throw InputError(InputFault::kUnreadable, path, 0,
                         folder  ? "it is a folder"
                         : error ? "it cannot be read: " + error.message()
                                 : "it is no regular file",
                         folder ? "give the files in it" : "give a regular file");
    }
}

std::string ReadAll(const std::string& path) {
    RequireRegularFile(path);
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (!error && size > kMaximumUnpackedBytes) {
        throw InputError(InputFault::kTooLarge, path, 0,
                         "it has more than " + std::to_string(kMaximumUnpackedBytes >> 20) + " MB",
                         "cut it into pieces");
    }
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        throw InputError(InputFault::kUnreadable, path, 0,
                         std::string("it cannot be opened: ") + std::strerror(errno),
                         "check the permissions");
    }
    std::string bytes(error ? 0 : static_cast<std::size_t>(size), '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    if (std::ferror(file.get()) != 0) {
        throw InputError(InputFault::kUnreadable, path, 0, "reading it failed",
                         "check the disk or the network");
    }
    return bytes;
}

}  // namespace

std::vector<FileBytes> Unpack(std::string bytes, const std::string& name) {
    const PackingMark* mark = FindMark(bytes);
    const std::string packing = mark != nullptr ? mark->name : "plain";
    const std::uint64_t packedSize = bytes.size();
    Budget budget(packedSize);
    std::vector<FileBytes> files;
    UnpackInto(std::move(bytes), name, 0, budget, files);
    if (files.empty()) {
        throw InputError(InputFault::kEmpty, name, 0, "the archive has no files in it",
                         "fetch or export the file again");
    }
    for (FileBytes& file : files) {
        file.path = name;
        file.packing = packing;
        file.packedSize = packedSize;
    }
    return files;
}

std::vector<FileBytes> ReadFile(const std::string& path) {
    return Unpack(ReadAll(path), path);
}

}  // namespace vornel::io
