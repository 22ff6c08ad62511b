// Samples to the frames of a codec and back.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "audio/audio.h"
#include "vspsvoice.h"

class StreamEncoder {
  public:
    StreamEncoder(const VspvCodec& codec, int bitRate);

    // One frame; a shorter one is completed with silence.
    std::string_view encode(Samples frame);

  private:
    VspvEncoder* encoder() { return reinterpret_cast<VspvEncoder*>(memory_.data()); }

    const VspvCodec& codec_;
    std::vector<Vsp64s> memory_;
    std::vector<Vsp8u> bytes_;
};

class StreamDecoder {
  public:
    StreamDecoder(const VspvCodec& codec, int bitRate);

    // One frame, or none if it is lost. False if it is not one of the codec.
    bool decode(const std::string& bytes, bool lost, Samples& frame);

  private:
    VspvDecoder* decoder() { return reinterpret_cast<VspvDecoder*>(memory_.data()); }

    const VspvCodec& codec_;
    int bitRate_;
    std::vector<Vsp64s> memory_;
};
