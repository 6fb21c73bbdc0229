#include "app/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace vornel::app {
namespace {

// The path of the unfinished file, where a signal handler can read it. Empty: there is none.
std::array<char, 4096> g_unfinished{};
volatile std::sig_atomic_t g_hasUnfinished = 0;

constexpr std::array<int, 3> kInterrupts = {SIGINT, SIGTERM, SIGHUP};

void RemoveUnfinished(int signal) {
    if (g_hasUnfinished != 0) {
        ::unlink(g_unfinished.data());
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

[[noreturn]] void Fail(const std::string& path, int error) {
    throw OutputError(path + ": cannot be written: " + std::strerror(error));
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : target_(path), name_(path + ".XXXXXX") {
    if (name_.size() >= g_unfinished.size()) {
        Fail(path, ENAMETOOLONG);
    }
    // No interrupt between making the file and noting its name.
    sigset_t interrupts, before;
    sigemptyset(&interrupts);
    for (const int signal : kInterrupts) {
        sigaddset(&interrupts, signal);
    }
    ::sigprocmask(SIG_BLOCK, &interrupts, &before);
    descriptor_ = ::mkstemp(name_.data());
    const int error = errno;
    if (descriptor_ >= 0) {
        std::memcpy(g_unfinished.data(), name_.c_str(), name_.size() + 1);
        g_hasUnfinished = 1;
    }
    ::sigprocmask(SIG_SETMASK, &before, nullptr);
    if (descriptor_ < 0) {
        Fail(path, error);
    }
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
    if (!finished_) {
        ::unlink(name_.c_str());
    }
    g_hasUnfinished = 0;
}

void OutputFile::Write(std::string_view content) {
    while (!content.empty()) {
        const ssize_t written = ::write(descriptor_, content.data(), content.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            Fail(target_, errno);
        }
        content.remove_prefix(static_cast<std::size_t>(written));
    }
}

void OutputFile::Finish() {
    // As if created by open(): mkstemp keeps others out.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(descriptor_, 0666 & ~mask);
    const int closed = ::close(descriptor_);
    descriptor_ = -1;
    if (closed != 0 || std::rename(name_.c_str(), target_.c_str()) != 0) {
        Fail(target_, errno);
    }
    finished_ = true;
}

void WriteWhole(const std::string& path, std::string_view content) {
    RequireWritable(path);
    OutputFile file(path);
    file.Write(content);
    file.Finish();
}

void RequireWritable(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        Fail(path, EISDIR);
    }
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    const std::string folder = parent.empty() ? "." : parent.string();
    if (::access(folder.c_str(), W_OK | X_OK) != 0) {
        Fail(path, errno);
    }
}

void InstallInterruptHandlers() {
    for (const int signal : kInterrupts) {
        std::signal(signal, RemoveUnfinished);
    }
}

}  // namespace vornel::app
