// Work in a process of its own.
//
// The engine keeps orbits and ionosphere coefficients as long as its process lives, cannot be
// interrupted, and there is one of it a process. So each solve runs it in a child: forked, not
// started anew, so that it sees everything the caller has read; what comes back is bytes.
#pragma once

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>

namespace vornel::process {

// The work was told to stop.
class Cancelled : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The child ended without an answer: a signal, a sanitizer, too long a time. The text says which, and
// what the child wrote to its error stream at last.
class ChildDied : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// An exception in the child, by its text.
class ChildException : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Told in the parent while the child works: `total` 0 when it is not known.
using Progress = std::function<void(const std::string& what, std::size_t done, std::size_t total)>;

struct ChildOptions {
    Progress progress;                // may be empty
    std::function<bool()> cancelled;  // asked some twenty times a second; may be empty
    double timeLimit = 0.0;           // s; 0: none
    std::function<void()> started;    // called in the parent once the child runs; may be empty
};

struct ChildAnswer {
    std::string bytes;        // what the work returned
    std::string errorStream;  // what the child wrote to its standard error, at most the last 16 MiB
};

// Calls `work(progress)` in a child and returns its answer. Nothing that the work changes in memory
// is seen by the parent. The child's standard error is kept apart. It dies with the thread that
// started it. Safe to call from several threads at once.
// Throws Cancelled, ChildDied, ChildException, std::bad_alloc when the child ran out of memory, and
// std::system_error when no child could be made.
ChildAnswer RunInChild(const std::function<std::string(const Progress&)>& work,
                       const ChildOptions& options = {});

}  // namespace vornel::process
