#include "io/file_bytes.h"

#include <archive.h>
#include <archive_entry.h>
#include <sys/stat.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <system_error>
#include <utility>

#include "io/input_error.h"

namespace vornel::io {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kBlock = std::size_t{1} << 16;  // bytes read from a packed file at once
constexpr std::uint64_t kUsualExpansion = 4;  // text of the formats shrinks to about a quarter

// ---- what a packing is told by ------------------------------------------------------------------

enum class Packing { kGzip, kCompress, kBzip2, kXz, kZstd, kZip, kTar };

struct PackingMark {
    Packing packing;
    const char* name;
    std::size_t at;
    std::string_view bytes;
};

// The bytes that tell each packing, as its own format document names them.
constexpr std::array<PackingMark, 8> kMarks = {{{Packing::kGzip, "gzip", 0, "\x1f\x8b"sv},
                                                {Packing::kCompress, "compress", 0, "\x1f\x9d"sv},
                                                {Packing::kBzip2, "bzip2", 0, "BZh"sv},
                                                {Packing::kXz, "xz", 0,
                                                 "\xfd"
                                                 "7zXZ\0"sv},
                                                {Packing::kZstd, "zstd", 0, "\x28\xb5\x2f\xfd"sv},
                                                {Packing::kZip, "zip", 0, "PK\x03\x04"sv},
                                                {Packing::kZip, "zip", 0, "PK\x05\x06"sv},
                                                {Packing::kTar, "tar", 257, "ustar"sv}}};
constexpr std::size_t kMarkedHead = 512;  // bytes that are looked at

// The first header of a tar file older than its mark: the octal sum of its bytes, with blanks for the
// sum itself, stands in columns 149 to 156.
bool IsOldTar(std::string_view head) {
    constexpr std::size_t kSumAt = 148, kSumWidth = 8;
    if (head.size() < kMarkedHead || head.front() == '\0') {
        return false;
    }
    unsigned sum = 0, told = 0;
    for (std::size_t i = 0; i < head.size(); ++i) {
        const bool ofSum = i >= kSumAt && i < kSumAt + kSumWidth;
        sum += ofSum ? static_cast<unsigned char>(' ') : static_cast<unsigned char>(head[i]);
    }
    for (const char c : head.substr(kSumAt, kSumWidth)) {
        if (c >= '0' && c <= '7') {
            told = told * 8 + static_cast<unsigned>(c - '0');
        } else if (c != ' ' && c != '\0') {
            return false;
        }
    }
    return sum == told;
}

const PackingMark* FindMark(std::string_view head) {
    const auto* mark = std::find_if(kMarks.begin(), kMarks.end(), [&](const PackingMark& m) {
        return head.size() >= m.at && head.substr(m.at, m.bytes.size()) == m.bytes;
    });
    if (mark == kMarks.end()) {
        return IsOldTar(head) ? &kMarks.back() : nullptr;
    }
    return mark;
}

bool IsArchive(Packing packing) {
    return packing == Packing::kZip || packing == Packing::kTar;
}

[[noreturn]] void RefusePacked(const char* packing, const std::string& name,
                               const std::string& detail, bool cutOff) {
    throw SourceError(cutOff ? InputFault::kTruncated : InputFault::kDamagedPacking, name, 0,
                      std::string("the ") + packing + " data " +
                          (cutOff ? "end too early: " : "cannot be unpacked: ") + detail,
                      "fetch the file again");
}

// ---- sources -----------------------------------------------------------------------------------

class MemorySource final : public ByteSource {
  public:
    explicit MemorySource(std::string_view bytes) : bytes_(bytes) {}

    std::size_t Read(char* to, std::size_t room) override {
        const std::string_view portion = bytes_.substr(at_, room);
        std::copy(portion.begin(), portion.end(), to);
        at_ += portion.size();
        return portion.size();
    }
    std::optional<std::int64_t> Seek(std::int64_t offset, SeekFrom from) override {
        const auto size = static_cast<std::int64_t>(bytes_.size());
        const std::int64_t origin = from == SeekFrom::kStart ? 0
                                    : from == SeekFrom::kEnd ? size
                                                             : static_cast<std::int64_t>(at_);
        at_ = static_cast<std::size_t>(std::clamp<std::int64_t>(origin + offset, 0, size));
        return static_cast<std::int64_t>(at_);
    }
    std::uint64_t SizeHint() const override { return bytes_.size(); }

  private:
    std::string_view bytes_;
    std::size_t at_ = 0;
};

class FileSource final : public ByteSource {
  public:
    explicit FileSource(const std::string& path) : path_(path) {
        RequireRegularFile();
        file_.reset(std::fopen(path.c_str(), "rb"));
        if (!file_) {
            throw InputError(InputFault::kUnreadable, path, 0,
                             std::string("it cannot be opened: ") + std::strerror(errno),
                             "check the permissions");
        }
        std::setvbuf(file_.get(), nullptr, _IONBF, 0);  // all who read take large portions
        struct stat status {};
        if (::fstat(::fileno(file_.get()), &status) == 0) {
            size_ = static_cast<std::uint64_t>(status.st_size);
        }
    }

    std::size_t Read(char* to, std::size_t room) override {
        const std::size_t count = std::fread(to, 1, room, file_.get());
        if (count == 0 && std::ferror(file_.get()) != 0) {
            throw SourceError(InputFault::kUnreadable, path_, 0, "reading it failed",
                              "check the disk or the network");
        }
        return count;
    }
    std::optional<std::int64_t> Seek(std::int64_t offset, SeekFrom from) override {
        const int whence = from == SeekFrom::kStart ? SEEK_SET
                           : from == SeekFrom::kEnd ? SEEK_END
                                                    : SEEK_CUR;
        if (::fseeko(file_.get(), offset, whence) != 0) {
            return std::nullopt;
        }
        return ::ftello(file_.get());
    }
    std::uint64_t SizeHint() const override { return size_; }

  private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void RequireRegularFile() const {
        std::error_code error;
        const auto status = std::filesystem::status(path_, error);
        if (status.type() == std::filesystem::file_type::not_found) {
            throw InputError(InputFault::kMissingFile, path_, 0, "there is no such file",
                             "check the path");
        }
        if (error || status.type() != std::filesystem::file_type::regular) {
            const bool folder = status.type() == std::filesystem::file_type::directory;
            throw InputError(InputFault::kUnreadable, path_, 0,
                             folder  ? "it is a folder"
                             : error ? "it cannot be read: " + error.message()
                                     : "it is no regular file",
                             folder ? "give the files in it" : "give a regular file");
        }
    }

    std::string path_;
    std::unique_ptr<std::FILE, Close> file_;
    std::uint64_t size_ = 0;
};

// A source whose first bytes can be looked at before they are read. Counts what is read.
class HeadedSource final : public ByteSource {
  public:
    using Count = std::function<void(std::uint64_t bytes)>;

    explicit HeadedSource(ByteSource& source) : source_(source) {
        while (headSize_ < head_.size()) {
            const std::size_t count =
                source_.Read(head_.data() + headSize_, head_.size() - headSize_);
            if (count == 0) {
                break;
            }
            headSize_ += count;
        }
    }

    std::string_view Head() const { return {head_.data(), headSize_}; }

    void CountWith(Count count) { count_ = std::move(count); }

    std::size_t Read(char* to, std::size_t room) override {
        std::size_t count = 0;
        if (at_ < headSize_) {
            count = std::min(room, headSize_ - at_);
            std::memcpy(to, head_.data() + at_, count);
            at_ += count;
        } else {
            count = source_.Read(to, room);
        }
        if (count_ && count > 0) {
            count_(count);
        }
        return count;
    }
    std::optional<std::int64_t> Seek(std::int64_t offset, SeekFrom from) override {
        // The source stands behind the head, however much of it has been read.
        const std::int64_t ahead =
            from == SeekFrom::kCurrent ? static_cast<std::int64_t>(headSize_ - at_) : 0;
        const auto place = source_.Seek(offset - ahead, from);
        if (place) {
            at_ = headSize_;
        }
        return place;
    }
    std::uint64_t SizeHint() const override { return source_.SizeHint(); }

  private:
    ByteSource& source_;
    std::array<char, kMarkedHead> head_;
    std::size_t headSize_ = 0;
    std::size_t at_ = 0;  // in the head
    Count count_;
};

// gzip is read by zlib itself, which holds every member to its checksum and length; the filter of
// libarchive passes over both. Nothing but zeros may stand behind the last member.
class GzipSource final : public ByteSource {
  public:
    GzipSource(ByteSource& packed, std::string name)
        : packed_(packed), name_(std::move(name)), block_(kBlock) {
        constexpr int kGzipWithLargestWindow = 16 + MAX_WBITS;
        if (inflateInit2(&stream_, kGzipWithLargestWindow) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~GzipSource() override { inflateEnd(&stream_); }

    std::size_t Read(char* to, std::size_t room) override {
        for (;;) {
            if (stream_.avail_in == 0 && !AtEndOfPacked()) {
                stream_.next_in = reinterpret_cast<Bytef*>(block_.data());
                stream_.avail_in = static_cast<uInt>(packed_.Read(block_.data(), block_.size()));
                packedEnded_ = stream_.avail_in == 0;
            }
            if (betweenMembers_ && !NextMember()) {
                if (packedEnded_) {
                    return 0;
                }
                continue;
            }
            const std::size_t count = Inflate(to, room);
            if (count > 0) {
                return count;
            }
        }
    }
    std::uint64_t SizeHint() const override { return kUsualExpansion * packed_.SizeHint(); }

  private:
    bool AtEndOfPacked() const { return packedEnded_; }

    // Goes to the next member, over zeros, if one begins in what is at hand.
    bool NextMember() {
        while (stream_.avail_in > 0 && *stream_.next_in == 0 && anyMember_) {
            ++stream_.next_in;
            --stream_.avail_in;
            onlyZeros_ = true;
        }
        if (stream_.avail_in == 0) {
            return false;
        }
        if (onlyZeros_) {
            RefusePacked("gzip", name_, "incorrect header check", false);
        }
        betweenMembers_ = false;
        anyMember_ = true;
        return true;
    }

    std::size_t Inflate(char* to, std::size_t room) {
        stream_.next_out = reinterpret_cast<Bytef*>(to);
        stream_.avail_out = static_cast<uInt>(std::min<std::size_t>(room, 1U << 30));
        const uInt before = stream_.avail_out;
        const int status = inflate(&stream_, Z_NO_FLUSH);
        if (status == Z_STREAM_END) {
            betweenMembers_ = true;
            inflateReset(&stream_);
        } else if (status == Z_BUF_ERROR && packedEnded_) {
            RefusePacked("gzip", name_, "the last member is not whole", true);
        } else if (status != Z_OK && status != Z_BUF_ERROR) {
            RefusePacked("gzip", name_, stream_.msg != nullptr ? stream_.msg : zError(status),
                         false);
        }
        return before - stream_.avail_out;
    }

    ByteSource& packed_;
    std::string name_;
    std::vector<char> block_;
    z_stream stream_{};
    bool packedEnded_ = false;
    bool betweenMembers_ = true;
    bool anyMember_ = false;
    bool onlyZeros_ = false;  // behind a member
};

// What libarchive asks for the bytes of a packed file. An exception may not pass through it: it is
// kept, and thrown when libarchive has come back with an error.
struct PackedBytes {
    explicit PackedBytes(ByteSource& packed) : source(packed), block(kBlock) {}

    static la_ssize_t Read(archive*, void* self, const void** portion) {
        auto& packed = *static_cast<PackedBytes*>(self);
        try {
            const std::size_t count = packed.source.Read(packed.block.data(), packed.block.size());
            packed.ended = packed.ended || count == 0;
            *portion = packed.block.data();
            return static_cast<la_ssize_t>(count);
        } catch (...) {
            packed.failure = std::current_exception();
            return ARCHIVE_FATAL;
        }
    }
    static la_int64_t Seek(archive*, void* self, la_int64_t offset, int whence) {
        auto& packed = *static_cast<PackedBytes*>(self);
        const SeekFrom from = whence == SEEK_SET   ? SeekFrom::kStart
                              : whence == SEEK_END ? SeekFrom::kEnd
                                                   : SeekFrom::kCurrent;
        packed.ended = false;
        const auto place = packed.source.Seek(offset, from);
        return place ? *place : ARCHIVE_FATAL;
    }

    ByteSource& source;
    std::vector<char> block;
    bool ended = false;
    std::exception_ptr failure;
};

// A packing that libarchive reads: one filter, or one kind of archive, and nothing else is tried.
class ArchiveReader {
  public:
    ArchiveReader(const PackingMark& mark, HeadedSource& packed, std::string name)
        : mark_(mark), packed_(packed), name_(std::move(name)), reader_(archive_read_new()) {
        archive* reader = reader_.get();
        if (reader == nullptr) {
            throw std::bad_alloc();
        }
        Choose(reader);
        archive_read_set_read_callback(reader, PackedBytes::Read);
        if (mark.packing == Packing::kZip && packed.Seek(0, SeekFrom::kStart)) {
            RequireDirectory(packed);
            archive_read_set_seek_callback(reader, PackedBytes::Seek);
        }
        archive_read_set_callback_data(reader, &packed_);
        if (archive_read_open1(reader) != ARCHIVE_OK) {
            Refuse();
        }
    }

    // The next member; null behind the last one.
    archive_entry* Next() {
        archive_entry* entry = nullptr;
        const int status = archive_read_next_header(reader_.get(), &entry);
        if (status == ARCHIVE_EOF) {
            return nullptr;
        }
        if (status < ARCHIVE_WARN) {
            Refuse();
        }
        return entry;
    }

    // The next bytes of the member; 0 at its end.
    std::size_t Read(char* to, std::size_t room) {
        const la_ssize_t count = archive_read_data(reader_.get(), to, room);
        if (count < 0) {
            Refuse();
        }
        return static_cast<std::size_t>(count);
    }

  private:
    struct Free {
        void operator()(archive* reader) const { archive_read_free(reader); }
    };

    void Choose(archive* reader) const {
        switch (mark_.packing) {
            case Packing::kCompress:
                archive_read_support_filter_compress(reader);
                break;
            case Packing::kBzip2:
                archive_read_support_filter_bzip2(reader);
                break;
            case Packing::kXz:
                archive_read_support_filter_xz(reader);
                break;
            case Packing::kZstd:
                archive_read_support_filter_zstd(reader);
                break;
            case Packing::kZip:
                archive_read_support_format_zip(reader);
                return;
            case Packing::kTar:
                archive_read_support_format_tar(reader);
                return;
            case Packing::kGzip:
                break;
        }
        archive_read_support_format_raw(reader);
        archive_read_support_format_empty(reader);
    }

    // A zip file ends with its directory; without it, members may be missing altogether.
    void RequireDirectory(HeadedSource& packed) const {
        constexpr std::size_t kEnd = 22;                   // the record that ends it
        constexpr std::size_t kLongestEnd = kEnd + 65535;  // with a comment
        const std::int64_t size = packed.Seek(0, SeekFrom::kEnd).value_or(0);
        packed.Seek(std::max<std::int64_t>(0, size - static_cast<std::int64_t>(kLongestEnd)),
                    SeekFrom::kStart);
        std::string end(kLongestEnd, '\0');
        std::size_t have = 0;
        while (have < end.size()) {
            const std::size_t count = packed.Read(end.data() + have, end.size() - have);
            if (count == 0) {
                break;
            }
            have += count;
        }
        end.resize(have);
        const std::size_t mark = end.rfind("PK\x05\x06"sv);
        if (mark == std::string::npos || mark + kEnd > end.size()) {
            RefusePacked(mark_.name, name_, "the directory at its end is missing", true);
        }
        packed.Seek(0, SeekFrom::kStart);
    }

    [[noreturn]] void Refuse() const {
        if (packed_.failure) {
            std::rethrow_exception(packed_.failure);
        }
        const char* text = archive_error_string(reader_.get());
        const std::string detail = text != nullptr ? text : "unknown error";
        const bool cutOff = packed_.ended || detail.find("runcated") != std::string::npos;
        RefusePacked(mark_.name, name_, cutOff ? "the last part is missing" : detail, cutOff);
    }

    const PackingMark& mark_;
    PackedBytes packed_;
    std::string name_;
    std::unique_ptr<archive, Free> reader_;
};

// The member that the reader is at.
class MemberSource final : public ByteSource {
  public:
    MemberSource(ArchiveReader& reader, std::uint64_t sizeHint)
        : reader_(reader), sizeHint_(sizeHint) {}

    std::size_t Read(char* to, std::size_t room) override { return ended_ ? 0 : ReadOn(to, room); }
    std::uint64_t SizeHint() const override { return sizeHint_; }

  private:
    std::size_t ReadOn(char* to, std::size_t room) {
        const std::size_t count = reader_.Read(to, room);
        ended_ = count == 0 && room > 0;
        return count;
    }

    ArchiveReader& reader_;
    std::uint64_t sizeHint_;
    bool ended_ = false;
};

// ---- the walk through the packings of a file -----------------------------------------------------

std::string PathOf(archive_entry* entry) {
    const char* path = archive_entry_pathname(entry);
    path = path != nullptr ? path : archive_entry_pathname_utf8(entry);
    return path != nullptr ? path : "?";
}

// Directories, links, and the companions that some systems put beside the real members.
bool IsRealMember(archive_entry* entry) {
    const std::string name = PathOf(entry);
    const std::string last = name.substr(name.rfind('/') + 1);
    const bool companion =
        name.rfind("__MACOSX/", 0) == 0 || last == ".DS_Store" || last.rfind("._", 0) == 0;
    return archive_entry_filetype(entry) == AE_IFREG && archive_entry_hardlink(entry) == nullptr &&
           !companion;
}

void ReadOver(ByteSource& source, std::uint64_t most) {
    std::vector<char> block(kBlock);
    std::uint64_t total = 0;
    while (total < most) {
        const std::size_t count = source.Read(block.data(), block.size());
        if (count == 0) {
            return;
        }
        total += count;
    }
}

class Walk {
  public:
    Walk(std::string path, std::uint64_t packedSize, UnpackingLimit& limit, const TakeMember& take)
        : path_(std::move(path)), packedSize_(packedSize), limit_(limit), take_(take) {}

    void Through(ByteSource& source) {
        Level(source, path_, 0);
        if (members_ == 0) {
            throw InputError(InputFault::kEmpty, path_, 0, "the archive has no files in it",
                             "fetch or export the file again");
        }
    }

  private:
    void Level(ByteSource& source, const std::string& name, int depth) {
        HeadedSource headed(source);
        const PackingMark* mark = FindMark(headed.Head());
        if (depth == 0) {
            packing_ = mark != nullptr ? mark->name : "plain";
        }
        if (mark == nullptr) {
            Take(headed, name, depth);
            return;
        }
        if (depth >= kMaximumPackingDepth) {
            throw InputError(InputFault::kTooLarge, name, 0, "it is packed within itself too often",
                             "unpack it yourself and give the plain file");
        }
        if (depth > 0) {
            headed.CountWith([this, &name](std::uint64_t bytes) {
                limit_.SpendOnLayer(bytes, name);
                RequireNoBomb(layerBytes_ += bytes, name);
            });
        }
        if (mark->packing == Packing::kGzip) {
            GzipSource unpacked(headed, name);
            Level(unpacked, name, depth + 1);
            ReadOver(unpacked, limit_.most());
            return;
        }
        ThroughArchive(*mark, headed, name, depth);
    }

    void ThroughArchive(const PackingMark& mark, HeadedSource& headed, const std::string& name,
                        int depth) {
        ArchiveReader reader(mark, headed, name);
        std::size_t entries = 0;
        while (archive_entry* entry = reader.Next()) {
            if (++entries > 10 * kMaximumArchiveMembers) {
                RefuseMembers(name);
            }
            if (!IsArchive(mark.packing)) {
                MemberSource unpacked(reader, kUsualExpansion * headed.SizeHint());
                Level(unpacked, name, depth + 1);
                ReadOver(unpacked, limit_.most());
            } else if (IsRealMember(entry)) {
                const auto size =
                    static_cast<std::uint64_t>(std::max<la_int64_t>(0, archive_entry_size(entry)));
                MemberSource unpacked(reader, std::min(size, kMaximumExpansion * packedSize_));
                Level(unpacked, name + '(' + PathOf(entry) + ')', depth + 1);
            }
        }
    }

    [[noreturn]] static void RefuseMembers(const std::string& name) {
        throw InputError(InputFault::kTooLarge, name, 0, "the archive has too many members",
                         "unpack it and give the files wanted");
    }

    void Take(HeadedSource& headed, const std::string& name, int depth) {
        if (++members_ > kMaximumArchiveMembers) {
            RefuseMembers(name);
        }
        headed.CountWith([this, &name, depth](std::uint64_t bytes) {
            memberBytes_ += bytes;
            if (depth == 0) {
                RequirePlainWithin(name);
            } else {
                limit_.SpendOnMember(bytes, name);
                RequireNoBomb(memberBytes_, name);
            }
        });
        FileMember member{name, path_, packing_, packedSize_, headed};
        try {
            take_(member);
        } catch (const SourceError&) {
            throw;
        } catch (const InputError&) {
            if (depth > 0) {
                LookForDamage(headed);
            }
            throw;
        }
        if (depth > 0) {
            ReadOver(headed, limit_.most());
        }
    }

    // Damage of the packing may be why a text cannot be read.
    static void LookForDamage(ByteSource& source) {
        constexpr std::uint64_t kMostLookedAt = 256ULL << 20;
        try {
            ReadOver(source, kMostLookedAt);
        } catch (const SourceError& error) {
            if (error.fault() != InputFault::kTooLarge) {
                throw;
            }
        }
    }

    void RequireNoBomb(std::uint64_t unpacked, const std::string& name) const {
        constexpr std::uint64_t kAlwaysAllowed = 64ULL << 20;
        if (unpacked > kAlwaysAllowed && unpacked / kMaximumExpansion > packedSize_) {
            throw SourceError(InputFault::kTooLarge, name, 0,
                              "it unpacks to more than " + std::to_string(unpacked >> 20) +
                                  " MB, " + std::to_string(kMaximumExpansion) +
                                  " times its size, as no file of the formats does",
                              "unpack it yourself and look into it");
        }
    }

    void RequirePlainWithin(const std::string& name) const {
        if (memberBytes_ > limit_.most()) {
            throw SourceError(InputFault::kTooLarge, name, 0,
                              "it has more than " + std::to_string(limit_.most() >> 20) + " MB",
                              "cut it into pieces, or raise --unpack-limit");
        }
    }

    std::string path_;
    std::uint64_t packedSize_;
    UnpackingLimit& limit_;
    const TakeMember& take_;
    std::string packing_;
    std::size_t members_ = 0;
    std::uint64_t memberBytes_ = 0;
    std::uint64_t layerBytes_ = 0;
};

TakeMember IntoMemory(std::vector<FileBytes>& files) {
    return [&files](FileMember& member) {
        FileBytes file{member.name, member.path, member.packing, member.packedSize, {}};
        std::vector<char> block(kBlock);
        while (const std::size_t count = member.bytes.Read(block.data(), block.size())) {
            file.bytes.append(block.data(), count);
        }
        if (file.bytes.empty()) {
            throw InputError(InputFault::kEmpty, member.name, 0, "the file is empty",
                             "fetch or export the file again");
        }
        files.push_back(std::move(file));
    };
}

}  // namespace

void UnpackingLimit::Spend(std::uint64_t& spent, std::uint64_t bytes,
                           const std::string& name) const {
    spent += bytes;
    if (spent > most_) {
        throw SourceError(InputFault::kTooLarge, name, 0,
                          "the files unpack to more than " + std::to_string(most_ >> 20) +
                              " MB in all, which is the limit of a run",
                          "raise --unpack-limit if they are what they should be");
    }
}

void ReadMembers(const std::string& path, UnpackingLimit& limit, const TakeMember& take) {
    FileSource file(path);
    Walk(path, file.SizeHint(), limit, take).Through(file);
}

void UnpackMembers(std::string_view bytes, const std::string& name, UnpackingLimit& limit,
                   const TakeMember& take) {
    MemorySource source(bytes);
    Walk(name, bytes.size(), limit, take).Through(source);
}

std::vector<FileBytes> ReadFile(const std::string& path) {
    UnpackingLimit limit;
    std::vector<FileBytes> files;
    ReadMembers(path, limit, IntoMemory(files));
    return files;
}

std::vector<FileBytes> Unpack(std::string_view bytes, const std::string& name) {
    UnpackingLimit limit;
    std::vector<FileBytes> files;
    UnpackMembers(bytes, name, limit, IntoMemory(files));
    return files;
}

}  // namespace vornel::io
