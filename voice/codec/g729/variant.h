// What tells the codecs of the family apart.
#pragma once

#include "codec/codec.h"
#include "codec/g729/frame.h"

namespace vspv::g729 {

struct Variant {
    bool fast;        // Annex A
    bool dispersion;  // Annex D: 6.4 kbit/s
    bool backward;    // Annex E: 11.8 kbit/s
    bool silence;     // Annex B
    bool combined;    // Annex I: an erased frame has the form of the last one, a detector of music
};

inline const Variant& variantOf(const Codec& codec) { return *static_cast<const Variant*>(codec.settings); }

inline Rate rateOf(Vsp32s bitRate) { return bitRate == 6400 ? k6k4 : bitRate == 8000 ? k8k : k11k8; }

}  // namespace vspv::g729
