#include "codec/g729/frame.h"

#include "codec/bit_packing.h"
#include "vspsc/g729.h"

namespace vspv::g729 {

namespace {

// Both take a code by its place, so that the order of a frame is written down once.
class Writer {
  public:
    explicit Writer(Vsp8u* bytes) : writer_(bytes, BitOrder::highestFirst) {}
    void operator()(const Vsp16s& code, Vsp32s bits) {
        const Vsp32u value = Vsp32u(code) & ((1u << bits) - 1);
        if (bits > 8) writer_.put(value >> 8, bits - 8);
        writer_.put(bits > 8 ? value & 0xFF : value, bits > 8 ? 8 : bits);
    }

  private:
    BitWriter writer_;
};

class Reader {
    using Bits = unsigned long long;

  public:
    Reader(const Vsp8u* bytes, Vsp32s count) {
        for (Vsp32s i = 0; i < count; i++) {
            Bits& half = i < 8 ? next_ : following_;
            half |= Bits(bytes[i]) << (56 - 8 * (i & 7));
        }
    }
    void operator()(Vsp16s& code, Vsp32s bits) {
        code = Vsp16s(next_ >> (64 - bits));
        next_ = next_ << bits | following_ >> (64 - bits);
        following_ <<= bits;
    }

  private:
    Bits next_ = 0, following_ = 0;  // the first bit is the highest
};

// Bits of the codes of a subframe: the two delays, the parts of the fixed codebook's code, the gains.
struct Layout {
    Vsp32s delay[2], parity, numPulses, pulses[5], gain;
};
constexpr Layout k6k4Layout = {{8, 4}, 0, 2, {9, 2}, 6}, k8kLayout = {{8, 5}, 1, 2, {13, 4}, 7},
                 kForwardLayout = {{8, 5}, 1, 5, {7, 7, 7, 7, 7}, 7},
                 kBackwardLayout = {{8, 5}, 1, 5, {13, 10, 7, 7, 7}, 7};

template <class Bits, class AnyFrame>
void walk(Bits& bits, AnyFrame& f) {
    if (f.rate == k11k8) {
        bits(f.mode, 1);
        bits(f.modeAgain, 1);
    }
    const bool backward = f.rate == k11k8 && f.mode == 1;
    const Layout& layout = f.rate == k6k4  ? k6k4Layout
                           : f.rate == k8k ? k8kLayout
                           : backward      ? kBackwardLayout
                                           : kForwardLayout;
    if (!backward) {
        bits(f.lsp[0], 8);
        bits(f.lsp[1], 10);
    }
    for (Vsp32s i = 0; i < 2; i++) {
        bits(f.subframes[i].delay, layout.delay[i]);
        if (i == 0 && layout.parity > 0) bits(f.parity, layout.parity);
        for (Vsp32s k = 0; k < layout.numPulses; k++) bits(f.subframes[i].pulses[k], layout.pulses[k]);
        bits(f.subframes[i].gain, layout.gain);
    }
    static const Vsp16s kZero = 0;
    if constexpr (requires { bits(kZero, 2); })
        if (f.rate == k11k8) bits(kZero, 2);
}

template <class Bits, class Index>
void walkSilence(Bits& bits, Index* index) {
    bits(index[0], 1);
    bits(index[1], 5);
    bits(index[2], 4);
    bits(index[3], 5);
}

}  // namespace

void pack(const Frame& frame, Vsp8u* bytes) {
    Writer writer(bytes);
    walk(writer, frame);
}

void unpack(const Vsp8u* bytes, Rate rate, Frame& frame) {
    frame = {};
    frame.rate = rate;
    Reader reader(bytes, bytesOf(rate));
    walk(reader, frame);
}

void packSilence(const Vsp16s* index, Vsp8u* bytes) {
    Writer writer(bytes);
    walkSilence(writer, index);
    writer(0, 1);
}

void unpackSilence(const Vsp8u* bytes, Vsp16s* index) {
    Reader reader(bytes, kSilenceBytes);
    walkSilence(reader, index);
}

Vsp16s parityOf(Vsp16s delay, Rate rate) {
    Vsp16s parity = 0;
    vspsDelayParity_G729_16s(delay, &parity);
    return rate == k11k8 ? Vsp16s(parity ^ (delay >> 1 & 1)) : parity;
}

}  // namespace vspv::g729
