// Samples to the frames of a codec and back.
#pragma once

#include <vector>

#include "audio/audio.h"
#include "codec/coded_file.h"

class StreamEncoder {
  public:
    StreamEncoder(const VspvCodec& codec, int bitRate);

    // False if the codec has no such mode of discontinuous transmission.
    bool setDTX(int mode);

    // One frame; a shorter one is completed with silence. The reference holds until the next call.
    const CodedFrame& encode(Samples samples);

  private:
    VspvEncoder* encoder() { return reinterpret_cast<VspvEncoder*>(memory_.data()); }

    const VspvCodec& codec_;
    std::vector<Vsp64s> memory_;
    CodedFrame frame_;
};

class StreamDecoder {
  public:
    explicit StreamDecoder(const VspvCodec& codec);

    // One frame, of which frame.samples count. False if it is not one of the codec.
    bool decode(const CodedFrame& frame, Samples& samples);

  private:
    VspvDecoder* decoder() { return reinterpret_cast<VspvDecoder*>(memory_.data()); }

    const VspvCodec& codec_;
    std::vector<Vsp64s> memory_;
};
