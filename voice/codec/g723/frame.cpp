#include "codec/g723/frame.h"

#include "codec/bit_packing.h"

namespace vspv::g723 {

namespace {

constexpr Vsp32s kShortestLag = 18, kLagCodes = 124, kLongLag = 58, kGains = 24, kTrain = 2048;

// Both take a field by its place, so that the order of a frame is written down once.
class Writer {
  public:
    explicit Writer(Vsp8u* bytes) : writer_(bytes, BitOrder::lowestFirst) {}
    void operator()(const Vsp32u& field, Vsp32s bits) {
        writer_.put(field & ((1u << low(bits)) - 1), low(bits));
        if (bits > 8) writer_.put(field >> 8 & ((1u << (bits - 8)) - 1), bits - 8);
    }
    static Vsp32s low(Vsp32s bits) { return bits < 8 ? bits : 8; }

  private:
    BitWriter writer_;
};

class Reader {
  public:
    explicit Reader(const Vsp8u* bytes) : reader_(bytes, BitOrder::lowestFirst) {}
    void operator()(Vsp32u& field, Vsp32s bits) {
        field = reader_.take(Writer::low(bits));
        if (bits > 8) field |= reader_.take(bits - 8) << 8;
    }

  private:
    BitReader reader_;
};

// A frame as its fields lie there.
struct Fields {
    Vsp32u kind, lsf[3], lag[2], offset[2], gains[kSubframes], grid[kSubframes], spare, highPositions, position[kSubframes],
        signs[kSubframes];
};

template <class Bits, class AnyFields>
void walk(Bits& bits, Rate rate, AnyFields& f) {
    static constexpr Vsp32s kLowPositions[kSubframes] = {16, 14, 16, 14}, kPulses[kSubframes] = {6, 5, 6, 5};
    bits(f.kind, 2);
    for (Vsp32s i = 2; i >= 0; i--) bits(f.lsf[i], 8);
    for (Vsp32s i = 0; i < 2; i++) {
        bits(f.lag[i], 7);
        bits(f.offset[i], 2);
    }
    for (auto& gains : f.gains) bits(gains, 12);
    for (auto& grid : f.grid) bits(grid, 1);
    if (rate == k6k3) {
        bits(f.spare, 1);
        bits(f.highPositions, 13);
    }
    for (Vsp32s i = 0; i < kSubframes; i++) bits(f.position[i], rate == k6k3 ? kLowPositions[i] : 12);
    for (Vsp32s i = 0; i < kSubframes; i++) bits(f.signs[i], rate == k6k3 ? kPulses[i] : 4);
}

// At 6.3 kbit/s the highest parts of the four positions are the digits of one number.
constexpr Vsp32u kWeights[kSubframes] = {810, 90, 9, 1};
constexpr Vsp32s kHighAt[kSubframes] = {16, 14, 16, 14};

template <class Bits, class AnyIndex>
void walkSilence(Bits& bits, AnyIndex& kind, AnyIndex* index) {
    bits(kind, 2);
    for (Vsp32s i = 2; i >= 0; i--) bits(index[i], 8);
    bits(index[3], 6);
}

}  // namespace

void pack(const Frame& frame, Vsp8u* bytes) {
    Fields f{};
    f.kind = frame.rate == k6k3 ? kKind6k3 : kKind5k3;
    for (Vsp32s i = 0; i < 3; i++) f.lsf[i] = Vsp32u(frame.lsf[i]);
    for (Vsp32s i = 0; i < 2; i++) {
        f.lag[i] = Vsp32u(frame.lag[i] - kShortestLag);
        f.offset[i] = Vsp32u(frame.subframes[2 * i + 1].offset);
    }
    for (Vsp32s i = 0; i < kSubframes; i++) {
        const Subframe& s = frame.subframes[i];
        f.gains[i] = Vsp32u(s.adaptive * kGains + s.fixed[0] + s.fixed[2] * kTrain);
        f.grid[i] = Vsp32u(s.fixed[1]);
        f.position[i] = Vsp32u(s.position);
        f.highPositions += (f.position[i] >> kHighAt[i]) * kWeights[i];
        f.signs[i] = Vsp32u(s.fixed[3]);
    }
    Writer writer(bytes);
    walk(writer, frame.rate, f);
}

bool unpack(const Vsp8u* bytes, Frame& frame) {
    frame = {};
    frame.rate = kindOf(bytes) == kKind6k3 ? k6k3 : k5k3;
    Fields f{};
    Reader reader(bytes);
    walk(reader, frame.rate, f);
    for (Vsp32s i = 0; i < 3; i++) frame.lsf[i] = Vsp16s(f.lsf[i]);
    for (Vsp32s i = 0; i < 2; i++) {
        if (f.lag[i] >= kLagCodes) return false;
        frame.lag[i] = Vsp16s(f.lag[i] + kShortestLag);
    }
    for (Vsp32s i = 0; i < kSubframes; i++) {
        Subframe& s = frame.subframes[i];
        const bool withTrain = frame.rate == k6k3 && frame.lag[i / 2] < kLongLag;
        const Vsp32u gains = withTrain ? f.gains[i] % kTrain : f.gains[i];
        if (gains / kGains >= (withTrain ? 85 : 170)) return false;
        s.offset = Vsp16s(i % 2 == 0 ? 1 : f.offset[i / 2]);
        s.adaptive = Vsp16s(gains / kGains);
        s.fixed[0] = Vsp16s(gains % kGains);
        s.fixed[1] = Vsp16s(f.grid[i]);
        s.fixed[2] = Vsp16s(withTrain ? f.gains[i] / kTrain : 0);
        s.fixed[3] = Vsp16s(f.signs[i]);
        s.position = Vsp32s(f.position[i]);
        if (frame.rate != k6k3) continue;
        s.position += Vsp32s(f.highPositions / kWeights[i]) << kHighAt[i];
        f.highPositions %= kWeights[i];
    }
    return true;
}

void packSilence(const Vsp16s* index, Vsp8u* bytes) {
    const Vsp32u fields[4] = {Vsp32u(index[0]), Vsp32u(index[1]), Vsp32u(index[2]), Vsp32u(index[3])}, kind = kKindSilence;
    Writer writer(bytes);
    walkSilence(writer, kind, fields);
}

void unpackSilence(const Vsp8u* bytes, Vsp16s* index) {
    Vsp32u fields[4], kind;
    Reader reader(bytes);
    walkSilence(reader, kind, fields);
    for (Vsp32s i = 0; i < 4; i++) index[i] = Vsp16s(fields[i]);
}

}  // namespace vspv::g723
