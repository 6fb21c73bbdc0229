#include "workers.h"

#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <map>
#include <new>
#include <stdexcept>
#include <vector>

namespace vornel::truth {
namespace {

using Counter = std::atomic<std::size_t>;

// Before each text stand its number and its length.
struct Heading {
    std::uint64_t index;
    std::uint64_t length;
};

// A counter that forked processes share.
class SharedCounter {
  public:
    SharedCounter() {
        void* place = ::mmap(nullptr, sizeof(Counter), PROT_READ | PROT_WRITE,
                             MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (place == MAP_FAILED) {
            throw std::runtime_error("no shared memory");
        }
        counter_ = new (place) Counter(0);
    }
    SharedCounter(const SharedCounter&) = delete;
    SharedCounter& operator=(const SharedCounter&) = delete;
    ~SharedCounter() { ::munmap(counter_, sizeof(Counter)); }
    std::size_t Next() { return counter_->fetch_add(1); }

  private:
    Counter* counter_;
};

void WriteOrEnd(int descriptor, const void* data, std::size_t length) {
    const char* at = static_cast<const char*>(data);
    while (length > 0) {
        const ssize_t wrote = ::write(descriptor, at, length);
        if (wrote <= 0) {
            ::_exit(1);
        }
        at += wrote;
        length -= static_cast<std::size_t>(wrote);
    }
}

[[noreturn]] void Work(int descriptor, std::size_t count, SharedCounter& counter,
                       const std::function<std::string(std::size_t)>& make) {
    try {
        for (std::size_t i = counter.Next(); i < count; i = counter.Next()) {
            const std::string text = make(i);
            const Heading heading{i, text.size()};
            WriteOrEnd(descriptor, &heading, sizeof heading);
            WriteOrEnd(descriptor, text.data(), text.size());
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        ::_exit(1);
    }
    ::_exit(0);
}

// Texts that come in any order, given on in order.
class InOrder {
  public:
    explicit InOrder(const std::function<void(std::size_t, const std::string&)>& take)
        : take_(take) {}

    // Takes whole texts out of the front of what a process has written.
    void Split(std::string& written) {
        std::size_t at = 0;
        Heading heading{};
        while (written.size() - at >= sizeof heading) {
            std::memcpy(&heading, written.data() + at, sizeof heading);
            const std::size_t whole = sizeof heading + heading.length;
            if (written.size() - at < whole) {
                break;
            }
            waiting_[heading.index] = written.substr(at + sizeof heading, heading.length);
            at += whole;
        }
        written.erase(0, at);
        for (auto first = waiting_.begin(); first != waiting_.end() && first->first == next_;
             first = waiting_.erase(first), ++next_) {
            take_(first->first, first->second);
        }
    }
    std::size_t Given() const { return next_; }

  private:
    const std::function<void(std::size_t, const std::string&)>& take_;
    std::map<std::size_t, std::string> waiting_;
    std::size_t next_ = 0;
};

}  // namespace

void InProcesses(std::size_t count, int processes,
                 const std::function<std::string(std::size_t)>& make,
                 const std::function<void(std::size_t, const std::string&)>& take) {
    SharedCounter counter;
    std::vector<pollfd> pipes;
    std::vector<pid_t> children;
    std::vector<std::string> written(static_cast<std::size_t>(processes));
    for (int i = 0; i < processes; ++i) {
        int ends[2];
        if (::pipe(ends) != 0) {
            throw std::runtime_error("no pipe");
        }
        const pid_t child = ::fork();
        if (child < 0) {
            throw std::runtime_error("no process");
        }
        if (child == 0) {
            ::close(ends[0]);
            for (const pollfd& other : pipes) {
                ::close(other.fd);
            }
            Work(ends[1], count, counter, make);
        }
        ::close(ends[1]);
        children.push_back(child);
        pipes.push_back({ends[0], POLLIN, 0});
    }
    InOrder inOrder(take);
    std::size_t open = pipes.size();
    while (open > 0) {
        ::poll(pipes.data(), pipes.size(), -1);
        for (std::size_t i = 0; i < pipes.size(); ++i) {
            if (pipes[i].fd < 0 || pipes[i].revents == 0) {
                continue;
            }
            char buffer[1 << 16];
            const ssize_t got = ::read(pipes[i].fd, buffer, sizeof buffer);
            if (got <= 0) {
                ::close(pipes[i].fd);
                pipes[i].fd = -1;
                --open;
                continue;
            }
            written[i].append(buffer, static_cast<std::size_t>(got));
            inOrder.Split(written[i]);
        }
    }
    for (const pid_t child : children) {
        ::waitpid(child, nullptr, 0);
    }
    if (inOrder.Given() != count) {
        throw std::runtime_error("a process ended before its work was done");
    }
}

}  // namespace vornel::truth
