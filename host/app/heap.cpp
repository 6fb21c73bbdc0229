#include "app/heap.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace vornel::app {
namespace {

constexpr int kFirstGrowth = 64 << 20;  // bytes, address space alone until they are used
constexpr int kLaterGrowth = 1 << 20;   // bytes
constexpr int kNever = 1 << 30;         // bytes
constexpr int kMostOfHeap = 32 << 20;   // bytes of one piece; malloc takes no larger bound
constexpr std::uintptr_t kLargePage = 2 << 20;

std::uintptr_t EndOfHeap() {
    return reinterpret_cast<std::uintptr_t>(::sbrk(0));
}

}  // namespace

void PrepareHeap() {
    ::mallopt(M_TRIM_THRESHOLD, kNever);
    ::mallopt(M_MMAP_THRESHOLD, kMostOfHeap);
    const std::uintptr_t begin = EndOfHeap();
    ::mallopt(M_TOP_PAD, kFirstGrowth);
    // More than the first heap holds; volatile, or the compiler leaves the pair out. Where there is
    // no room for so much, the heap grows as it would have.
    void* volatile piece = std::malloc(kLargePage);
    std::free(piece);
    ::mallopt(M_TOP_PAD, kLaterGrowth);
    const std::uintptr_t firstPage = (begin + kLargePage - 1) / kLargePage * kLargePage;
    const std::uintptr_t end = EndOfHeap();
    if (firstPage < end) {
        // A system without large pages says so, and all stays as it was.
        ::madvise(reinterpret_cast<void*>(firstPage), end - firstPage, MADV_HUGEPAGE);
    }
}

}  // namespace vornel::app
