#include "console/progress.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>

namespace {
constexpr std::chrono::milliseconds kPatience{700}, kInterval{100};
std::atomic<bool> g_anyLives = false;
}  // namespace

Progress::Progress(std::string what, std::size_t total)
    : what_(std::move(what)),
      total_(total),
      next_(Clock::now() + kPatience),
      shows_(isatty(STDERR_FILENO) != 0 && !g_anyLives.exchange(true)) {}

Progress::~Progress() {
    hide();
    if (shows_) g_anyLives = false;
}

void Progress::advance(std::size_t amount) {
    done_ += amount;
    if (!shows_ || total_ == 0 || Clock::now() < next_) return;
    next_ = Clock::now() + kInterval;
    shown_ = true;
    const double part = std::min(1.0, static_cast<double>(done_) / static_cast<double>(total_));
    std::fprintf(stderr, "\r\033[Kvsps: %s %.0f %%", what_.c_str(), 100 * part);
}

void Progress::hide() {
    if (shown_) std::fputs("\r\033[K", stderr);
    shown_ = false;
}
