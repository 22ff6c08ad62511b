// Sound files, pipes and standard input, read block by block as 16-bit samples: everything that libsndfile reads.
//
//     AudioReader in({o.file, o.rawRate});
//     if (o.channel != 0) in.select(o.channel);
//     for (Block block; in.read(kBlockLength, block);) ...
//     printNotes(in.notes());
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "audio/audio.h"

struct AudioSource {
    std::string file;  // "-" is standard input
    // Hz; 0 if there is a header. Headerless audio has one channel, in the encoding that the name says (.al .alaw .ul
    // .ulaw, else 16-bit little-endian).
    int rawRate = 0;
};

// Whatever prevents reading is a FileError.
class AudioReader {
  public:
    explicit AudioReader(const AudioSource& source);
    ~AudioReader();
    AudioReader(AudioReader&&) noexcept;

    const std::string& name() const;  // for messages and reports
    int fileRate() const;             // Hz
    int rate() const;                 // Hz, after conversion
    std::size_t channels() const;

    // Before the first block: the only channel that is wanted, counted from 1; the rate to convert to, otherwise kRate.
    void select(int channel);
    void convertTo(int rate);

    // The next samples of every channel: so many, or fewer at the end. False when there are none left. A recording without
    // any samples is an error. Samples beyond full scale are clipped.
    bool read(std::size_t samples, Block& block);

    std::uint64_t length() const;    // samples of each channel so far
    std::uint64_t expected() const;  // as the header says, after conversion; 0 if it does not know
    double seconds() const { return static_cast<double>(length()) / rate(); }

    // What the user should know, a line each: resampling, clipping, an end before that which the header announces.
    // Complete at the end.
    std::vector<std::string> notes() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};
