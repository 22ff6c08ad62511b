#include "support/guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <map>
#include <mutex>
#include <new>

namespace vsp::test {

namespace {

// Mappings are kept for the next buffer of the same size: tests make many thousand buffers.
std::mutex mutex;
std::multimap<std::size_t, std::byte*>& unused() {
    static auto* const mappings = new std::multimap<std::size_t, std::byte*>;
    return *mappings;
}

std::byte* mapPages(std::size_t size, std::size_t page) {
    void* all = mmap(nullptr, size + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (all == MAP_FAILED) throw std::bad_alloc();
    std::byte* begin = static_cast<std::byte*>(all) + page;
    if (mprotect(begin, size, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
    return begin;
}

}  // namespace

GuardedPages::GuardedPages(std::size_t bytes) {
    const std::size_t page = std::size_t(sysconf(_SC_PAGESIZE));
    size_ = (bytes + page - 1) / page * page;
    const std::lock_guard lock(mutex);
    if (const auto found = unused().find(size_); found != unused().end()) {
        begin_ = found->second;
        unused().erase(found);
    } else {
        begin_ = mapPages(size_, page);
    }
}

GuardedPages::~GuardedPages() {
    const std::lock_guard lock(mutex);
    unused().emplace(size_, begin_);
}

}  // namespace vsp::test
