// Work spread over processes, its results taken in order.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace vornel::truth {

// Calls `make(i)` for i from 0 to count - 1 in `processes` forked processes, each taking the next
// one when it is free, and hands the texts to `take` in the order of i, in this process. What a
// process changes is lost with it. An exception in `make`, or the death of a process, ends the whole
// with std::runtime_error, once the others are done.
void InProcesses(std::size_t count, int processes,
                 const std::function<std::string(std::size_t)>& make,
                 const std::function<void(std::size_t, const std::string&)>& take);

}  // namespace vornel::truth
