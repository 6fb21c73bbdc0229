#include "process/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <optional>
#include <system_error>

#ifdef VORNEL_COVERAGE
extern "C" void __gcov_dump(void);
#endif

namespace vornel::process {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kPollMilliseconds = 50;
constexpr std::size_t kMostErrorText = 16U << 20U;
constexpr std::size_t kErrorTextInMessage = 2000;

// A message from the child: its kind, the number of bytes, the bytes.
enum class Kind : std::uint8_t { kProgress = 'P', kAnswer = 'A', kException = 'E', kMemory = 'M' };

struct Head {
    Kind kind = Kind::kProgress;
    std::uint64_t size = 0;
};

class Descriptor {
  public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { Close(); }
    int get() const { return number_; }
    void Close() {
        if (number_ >= 0) {
            ::close(number_);
            number_ = -1;
        }
    }

  private:
    int number_;
};

[[noreturn]] void ThrowSystem(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

// ---- in the child: no exception leaves these ----------------------------------------------------

bool WriteAll(int descriptor, const void* bytes, std::size_t size) {
    const char* at = static_cast<const char*>(bytes);
    while (size > 0) {
        const ssize_t wrote = ::write(descriptor, at, size);
        if (wrote < 0 && errno == EINTR) {
            continue;
        }
        if (wrote <= 0) {
            return false;
        }
        at += wrote;
        size -= static_cast<std::size_t>(wrote);
    }
    return true;
}

bool Send(int descriptor, Kind kind, const std::string& bytes) {
    Head head;
    std::memset(static_cast<void*>(&head), 0, sizeof head);
    head.kind = kind;
    head.size = bytes.size();
    return WriteAll(descriptor, &head, sizeof head) &&
           WriteAll(descriptor, bytes.data(), bytes.size());
}

// Sends at most twenty messages a second, or one when the subject changes.
class ProgressSender {
  public:
    explicit ProgressSender(int descriptor) : descriptor_(descriptor) {}
    void operator()(const std::string& what, std::size_t done, std::size_t total) {
        const Clock::time_point now = Clock::now();
        if (what == last_ && now - sent_ < std::chrono::milliseconds(kPollMilliseconds)) {
            return;
        }
        last_ = what;
        sent_ = now;
        Send(descriptor_, Kind::kProgress,
             std::to_string(done) + " " + std::to_string(total) + " " + what);
    }

  private:
    int descriptor_;
    std::string last_;
    Clock::time_point sent_{};
};

// A handler of the parent's has no business in the child; what is ignored stays ignored.
void DefaultHandlers() {
    for (const int number :
         {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGCHLD, SIGUSR1, SIGUSR2, SIGALRM}) {
        struct sigaction action {};
        if (::sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            ::signal(number, SIG_DFL);
        }
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void BeChild(const std::function<std::string(const Progress&)>& work, pid_t parent,
                          int answers, int errors) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        ::_exit(1);  // it died before that was in force
    }
    DefaultHandlers();
    ::dup2(errors, STDERR_FILENO);
    int code = 1;
    try {
        ProgressSender sender(answers);
        const std::string bytes = work([&sender](const std::string& what, std::size_t done,
                                                 std::size_t total) { sender(what, done, total); });
        code = Send(answers, Kind::kAnswer, bytes) ? 0 : 1;
    } catch (const std::bad_alloc&) {
        code = Send(answers, Kind::kMemory, {}) ? 0 : 1;
    } catch (const std::exception& error) {
        code = Send(answers, Kind::kException, error.what()) ? 0 : 1;
    } catch (...) {
        code = Send(answers, Kind::kException, "an exception of no known type") ? 0 : 1;
    }
    std::fflush(stderr);
#ifdef VORNEL_COVERAGE
    __gcov_dump();
#endif
    ::_exit(code);
}

// ---- in the parent ------------------------------------------------------------------------------

// Takes the messages out of what was read from the pipe.
class Inbox {
  public:
    explicit Inbox(const Progress& progress) : progress_(progress) {}

    void Take(const char* bytes, std::size_t size) {
        buffer_.append(bytes, size);
        std::size_t at = 0;
        Head head;
        while (buffer_.size() - at >= sizeof head) {
            std::memcpy(static_cast<void*>(&head), buffer_.data() + at, sizeof head);
            if (buffer_.size() - at - sizeof head < head.size) {
                break;
            }
            Deliver(head.kind, buffer_.substr(at + sizeof head, head.size));
            at += sizeof head + head.size;
        }
        buffer_.erase(0, at);
    }

    bool HasEnd() const { return end_.has_value(); }
    Kind End() const { return *end_; }
    std::string& Bytes() { return bytes_; }

  private:
    void Deliver(Kind kind, std::string bytes) {
        if (kind != Kind::kProgress) {
            end_ = kind;
            bytes_ = std::move(bytes);
            return;
        }
        std::size_t afterDone = 0, afterTotal = 0;
        const std::size_t done = std::stoull(bytes, &afterDone);
        const std::size_t total = std::stoull(bytes.substr(afterDone), &afterTotal);
        if (progress_) {
            progress_(bytes.substr(afterDone + afterTotal + 1), done, total);
        }
    }

    const Progress& progress_;
    std::string buffer_;
    std::optional<Kind> end_;
    std::string bytes_;
};

// The child, killed and taken leave of whatever happens.
class Child {
  public:
    explicit Child(pid_t pid) : pid_(pid) {}
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        if (!ended_) {
            ::kill(pid_, SIGKILL);
            Wait();
        }
    }
    // How it ended; nothing when somebody else took leave of it, as where SIGCHLD is ignored.
    std::optional<int> Wait() {
        ended_ = true;
        int status = 0;
        pid_t got = 0;
        do {
            got = ::waitpid(pid_, &status, 0);
        } while (got < 0 && errno == EINTR);
        return got == pid_ ? std::optional(status) : std::nullopt;
    }

  private:
    pid_t pid_;
    bool ended_ = false;
};

std::string ReadErrors(int descriptor) {
    const off_t size = ::lseek(descriptor, 0, SEEK_END);
    if (size <= 0) {
        return {};
    }
    const std::size_t length = std::min(static_cast<std::size_t>(size), kMostErrorText);
    std::string text(length, '\0');
    const ssize_t got = ::pread(descriptor, text.data(), length, size - static_cast<off_t>(length));
    text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return text;
}

std::string HowItDied(const std::optional<int>& status, const std::string& errors) {
    std::string text = "the engine's process ended without an answer";
    if (status && WIFSIGNALED(*status)) {
        const char* name = ::sigdescr_np(WTERMSIG(*status));
        text += " by signal " + std::to_string(WTERMSIG(*status)) +
                (name != nullptr ? std::string(" (") + name + ")" : std::string());
    } else if (status && WIFEXITED(*status)) {
        text += " with exit code " + std::to_string(WEXITSTATUS(*status));
    }
    if (!errors.empty()) {
        const std::size_t from =
            errors.size() > kErrorTextInMessage ? errors.size() - kErrorTextInMessage : 0;
        text += "; its last words: " + errors.substr(from);
    }
    return text;
}

// Waits for the child's words until it ends; throws Cancelled and ChildDied.
void Listen(int answers, const ChildOptions& options, Inbox& inbox) {
    const Clock::time_point begin = Clock::now();
    char buffer[1 << 16];
    while (true) {
        if (options.cancelled && options.cancelled()) {
            throw Cancelled("the solve was cancelled");
        }
        if (options.timeLimit > 0.0 &&
            std::chrono::duration<double>(Clock::now() - begin).count() > options.timeLimit) {
            throw ChildDied("the engine's process took longer than the time limit");
        }
        pollfd wait{answers, POLLIN, 0};
        const int ready = ::poll(&wait, 1, kPollMilliseconds);
        if (ready == 0 || (ready < 0 && errno == EINTR)) {
            continue;
        }
        const ssize_t got = ::read(answers, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            return;
        }
        inbox.Take(buffer, static_cast<std::size_t>(got));
    }
}

}  // namespace

ChildAnswer RunInChild(const std::function<std::string(const Progress&)>& work,
                       const ChildOptions& options) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        ThrowSystem("no pipe to the engine's process");
    }
    Descriptor answers(ends[0]), toParent(ends[1]);
    const Descriptor errors(::memfd_create("vornel-errors", MFD_CLOEXEC));
    if (errors.get() < 0) {
        ThrowSystem("no memory for the engine's messages");
    }
    std::fflush(stderr);
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid < 0) {
        ThrowSystem("no process for the engine");
    }
    if (pid == 0) {
        answers.Close();
        BeChild(work, parent, toParent.get(), errors.get());
    }
    Child child(pid);
    toParent.Close();
    if (options.started) {
        options.started();
    }
    Inbox inbox(options.progress);
    Listen(answers.get(), options, inbox);
    const std::optional<int> status = child.Wait();
    std::string words = ReadErrors(errors.get());
    const bool endedWell = !status || (WIFEXITED(*status) && WEXITSTATUS(*status) == 0);
    if (!inbox.HasEnd() || !endedWell) {
        throw ChildDied(HowItDied(status, words));
    }
    if (inbox.End() == Kind::kMemory) {
        throw std::bad_alloc();
    }
    if (inbox.End() == Kind::kException) {
        throw ChildException(inbox.Bytes());
    }
    return {std::move(inbox.Bytes()), std::move(words)};
}

}  // namespace vornel::process
