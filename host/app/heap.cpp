#include "app/heap.h"

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

namespace vornel::app {
namespace {

constexpr int kGrowth = 64 << 20;  // bytes, address space alone until they are used
constexpr int kNever = 1 << 30;    // bytes
constexpr std::uintptr_t kLargePage = 2 << 20;

std::uintptr_t EndOfHeap() {
    return reinterpret_cast<std::uintptr_t>(::sbrk(0));
}

}  // namespace

void PrepareHeap() {
    ::mallopt(M_TOP_PAD, kGrowth);
    ::mallopt(M_TRIM_THRESHOLD, kNever);
    ::mallopt(M_MMAP_THRESHOLD, kNever);
    const std::uintptr_t begin = EndOfHeap();
    // More than the first heap holds; volatile, or the compiler leaves the pair out.
    void* volatile piece = std::malloc(kLargePage);
    std::free(piece);
    const std::uintptr_t firstPage = (begin + kLargePage - 1) / kLargePage * kLargePage;
    const std::uintptr_t end = EndOfHeap();
    if (firstPage < end) {
        // A system without large pages says so, and all stays as it was.
        ::madvise(reinterpret_cast<void*>(firstPage), end - firstPage, MADV_HUGEPAGE);
    }
}

}  // namespace vornel::app
