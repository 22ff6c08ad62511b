// RFC 3551 4.5.8: a signature of 4 bits, then the 76 parameters, highest bits first.
#include "codec/gsmfr/frame.h"

#include "codec/bit_packing.h"

namespace vspv::gsmfr {

static constexpr Vsp32u kSignature = 0xD;
static constexpr Vsp32s kLarBits[8] = {6, 6, 5, 5, 4, 4, 3, 3};
static constexpr Vsp32s kLagBits = 7, kGainBits = 2, kGridBits = 2, kMaxBits = 6, kPulseBits = 3;

void pack(const Frame& frame, Vsp8u* bytes) {
    BitWriter writer(bytes, BitOrder::highestFirst);
    writer.put(kSignature, 4);
    for (Vsp32s i = 0; i < 8; i++) writer.put(Vsp32u(frame.lar[i]), kLarBits[i]);
    for (const SubFrame& s : frame.subFrames) {
        writer.put(Vsp32u(s.lag), kLagBits);
        writer.put(Vsp32u(s.gain), kGainBits);
        writer.put(Vsp32u(s.grid), kGridBits);
        writer.put(Vsp32u(s.max), kMaxBits);
        for (const Vsp16s pulse : s.pulses) writer.put(Vsp32u(pulse), kPulseBits);
    }
}

void unpack(const Vsp8u* bytes, Frame& frame) {
    BitReader reader(bytes, BitOrder::highestFirst);
    reader.take(4);
    for (Vsp32s i = 0; i < 8; i++) frame.lar[i] = Vsp16s(reader.take(kLarBits[i]));
    for (SubFrame& s : frame.subFrames) {
        s.lag = Vsp16s(reader.take(kLagBits));
        s.gain = Vsp16s(reader.take(kGainBits));
        s.grid = Vsp16s(reader.take(kGridBits));
        s.max = Vsp16s(reader.take(kMaxBits));
        for (Vsp16s& pulse : s.pulses) pulse = Vsp16s(reader.take(kPulseBits));
    }
}

bool hasSignature(const Vsp8u* bytes) { return bytes[0] >> 4 == kSignature; }

}  // namespace vspv::gsmfr
