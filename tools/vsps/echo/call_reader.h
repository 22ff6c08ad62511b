// Both ends of a recorded call.
#pragma once

#include <optional>
#include <string>

#include "audio/input_options.h"

struct CallFiles {
    std::string far, near;  // a recording of each,
    std::string both;       // or one with two channels: far end, near end
    bool swap = false;      // near end, far end
    InputSettings input;    // of far and near
};

// Reads far end and near end in step, from two recordings or the two channels of one, at 16000 Hz if the near end has at
// least that rate, else at 8000 Hz.
class CallReader {
  public:
    explicit CallReader(const CallFiles& files);

    // The next samples of both ends, of one length, which is that of the near end: a far end that ends early is silent from
    // there on, one that ends late is left out from there on. False at the end.
    bool read(std::size_t samples, Samples& far, Samples& near);

    const std::string& nearName() const { return near_.name(); }
    int nearFileRate() const { return near_.fileRate(); }
    int rate() const { return near_.rate(); }
    std::uint64_t length() const { return near_.length(); }
    std::uint64_t expected() const { return near_.expected(); }
    // Complete at the end.
    std::vector<std::string> notes() const;

  private:
    std::string compareLengths() const;

    AudioReader near_;                // or both ends
    std::optional<AudioReader> far_;  // of two recordings
    bool swap_ = false, farIsLonger_ = false;
    Block farBlock_, nearBlock_;
};
