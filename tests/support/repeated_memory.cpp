#include "support/repeated_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <new>

namespace vsp::test {

RepeatedPages::RepeatedPages(std::size_t bytes) : size_((bytes + kPeriod - 1) / kPeriod * kPeriod) {
    const std::size_t page = std::size_t(sysconf(_SC_PAGESIZE));
    void* all = mmap(nullptr, size_ + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    const int file = memfd_create("repeated", 0);
    if (all == MAP_FAILED || file < 0 || ftruncate(file, kPeriod) != 0) throw std::bad_alloc();
    begin_ = static_cast<std::byte*>(all) + page;
    for (std::byte* at = begin_; at < end(); at += kPeriod)  // populated: page faults would take longer than the tests
        if (mmap(at, kPeriod, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED | MAP_POPULATE, file, 0) == MAP_FAILED)
            throw std::bad_alloc();
    close(file);
}

RepeatedPages::~RepeatedPages() {
    const std::size_t page = std::size_t(sysconf(_SC_PAGESIZE));
    munmap(begin_ - page, size_ + 2 * page);
}

}  // namespace vsp::test
