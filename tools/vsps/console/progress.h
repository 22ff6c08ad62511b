// A progress line for long work.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

// Shows "vsps: WHAT 42 %" on stderr if that is a terminal and the work takes more than a moment; removes it at the end.
// While one lives, on whatever thread, those made later show nothing.
class Progress {
  public:
    Progress(std::string what, std::size_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void advance(std::size_t amount);
    void hide();  // until it advances again

  private:
    using Clock = std::chrono::steady_clock;
    std::string what_;
    std::size_t done_ = 0, total_;
    Clock::time_point next_;
    bool shows_, shown_ = false;
};
