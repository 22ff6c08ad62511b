// The denoiser of the voice layer on a channel of a recording.
#pragma once

#include <cstdint>
#include <span>

#include "audio/audio.h"
#include "audio/voice_object.h"

// The highest rate of the denoiser that a recording has the samples for, but at least the lowest.
int denoiserRate(int fileRate);

// The result is in step with the signal and as long: what the denoiser is late by is left out, and flushed at the end.
class NoiseRemoval {
  public:
    NoiseRemoval(int rate, int mode);
    NoiseRemoval(NoiseRemoval&&) = default;  // the denoiser's memory stays where it is

    // Appends what the next samples complete.
    void process(std::span<const std::int16_t> in, Samples& out);
    // The rest, when there are no more.
    void finish(Samples& out);

    int latency() const { return latency_; }  // samples
    // The part of the time with speech, 0 to 1; NaN for less than 10 ms.
    double speechShare() const { return double(speech_) / double(frames_); }
    // By how much the power where there is no speech became less, dB; not finite if there is nothing to tell by.
    double loweredBy() const;

  private:
    void run(std::span<const std::int16_t> in, Samples& out);
    void endFrame(Samples& out);
    bool hearSpeech();

    VoiceObject<VspvDenoiser> denoiser_;
    std::size_t frameLength_;  // 10 ms
    int latency_ = 0, skipped_ = 0;
    Samples original_;  // samples whose result is not yet in `out`
    Samples result_;    // of the frame that has begun
    Samples processed_;
    std::size_t filled_ = 0, sinceSpeech_ = 0;
    std::size_t speech_ = 0, frames_ = 0;
    bool ended_ = false;
    double inEnergy_ = 0, outEnergy_ = 0;  // where there is no speech
};
