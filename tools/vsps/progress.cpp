#include "progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace {
constexpr std::chrono::milliseconds kPatience{700}, kInterval{100};
}

Progress::Progress(std::string what, std::size_t total)
    : what_(std::move(what)), total_(total), next_(Clock::now() + kPatience), terminal_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::advance(std::size_t amount) {
    done_ += amount;
    if (!terminal_ || total_ == 0 || Clock::now() < next_) return;
    next_ = Clock::now() + kInterval;
    shown_ = true;
    const double part = std::min(1.0, static_cast<double>(done_) / static_cast<double>(total_));
    std::fprintf(stderr, "\r\033[Kvsps: %s %.0f %%", what_.c_str(), 100 * part);
}
