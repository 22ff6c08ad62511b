// Sound files that grow block by block.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "audio/audio.h"
#include "console/output_file.h"

// Writes any format of outputFormat. A file gets its final name in commit(), see OutputFile. On standard output, a device
// or a pipe WAV and headerless audio appear as they come: a WAV header there cannot know the length and has about the
// largest one, as other programs write and read it; if standard output is a file, it gets the length in commit(). Other
// formats go there in commit() as a whole.
class AudioWriter {
  public:
    AudioWriter(const std::string& file, int format, int rate, int channels);
    ~AudioWriter();

    void write(const Block& block);      // so many channels, of one length
    void write(const Samples& samples);  // of the only channel
    void commit();

    std::uint64_t length() const { return length_; }  // samples of each channel so far

  private:
    struct Target;
    void writeFrames(const std::int16_t* interleaved, std::size_t frames);
    void completeHeader();
    std::uint64_t bytes() const { return length_ * std::uint64_t(channels_) * sizeof(std::int16_t); }
    [[noreturn]] void fail() const;

    std::string file_;
    int format_, rate_, channels_;
    std::uint64_t length_ = 0;
    OutputFile out_;
    std::int64_t headerAt_ = -1;  // of a header without the length, where the stream can go back to it
    std::unique_ptr<Target> target_;
    Samples interleaved_;
};
