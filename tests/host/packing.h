// Packs bytes as the usual programs do, for tests of what unpacks them.
#pragma once

#include <archive.h>
#include <archive_entry.h>
#include <gtest/gtest.h>

#include <string>

namespace vornel::test {

// The bytes packed in memory by a writer of the archive library that `choose` has set up.
inline std::string Pack(const std::string& bytes, void (*choose)(archive*)) {
    std::string packed(bytes.size() + bytes.size() / 100 + 10000, '\0');
    std::size_t used = 0;
    archive* writer = archive_write_new();
    choose(writer);
    archive_write_set_bytes_in_last_block(writer, 1);
    archive_write_open_memory(writer, packed.data(), packed.size(), &used);
    archive_entry* entry = archive_entry_new();
    archive_entry_set_pathname(entry, "member");
    archive_entry_set_filetype(entry, AE_IFREG);
    archive_entry_set_perm(entry, 0644);
    archive_entry_set_size(entry, static_cast<la_int64_t>(bytes.size()));
    archive_write_header(writer, entry);
    EXPECT_EQ(archive_write_data(writer, bytes.data(), bytes.size()),
              static_cast<la_ssize_t>(bytes.size()));
    archive_entry_free(entry);
    archive_write_close(writer);
    archive_write_free(writer);
    packed.resize(used);
    return packed;
}

inline std::string Gzip(const std::string& bytes) {
    return Pack(bytes, [](archive* writer) {
        archive_write_add_filter_gzip(writer);
        archive_write_set_format_raw(writer);
    });
}

inline std::string Bzip2(const std::string& bytes) {
    return Pack(bytes, [](archive* writer) {
        archive_write_add_filter_bzip2(writer);
        archive_write_set_format_raw(writer);
    });
}

inline std::string Xz(const std::string& bytes) {
    return Pack(bytes, [](archive* writer) {
        archive_write_add_filter_xz(writer);
        archive_write_set_format_raw(writer);
    });
}

inline std::string Zstd(const std::string& bytes) {
    return Pack(bytes, [](archive* writer) {
        archive_write_add_filter_zstd(writer);
        archive_write_set_format_raw(writer);
    });
}

inline std::string Zip(const std::string& bytes) {
    return Pack(bytes, [](archive* writer) { archive_write_set_format_zip(writer); });
}

inline std::string Tar(const std::string& bytes) {
    return Pack(bytes, [](archive* writer) { archive_write_set_format_ustar(writer); });
}

}  // namespace vornel::test
