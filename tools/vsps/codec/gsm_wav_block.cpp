#include "codec/gsm_wav_block.h"

#include <array>
#include <utility>

namespace {

constexpr int kFrames = 2, kParameters = 76, kSignature = 0xD, kSignatureBits = 4;

// Of a parameter: eight log-area ratios, then in each sub-frame lag, gain, grid, maximum and thirteen pulses.
int bitsOf(int parameter) {
    constexpr std::array<int, 8> ratios{6, 6, 5, 5, 4, 4, 3, 3};
    constexpr std::array<int, 17> subFrame{7, 2, 2, 6, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3};
    return parameter < 8 ? ratios[std::size_t(parameter)] : subFrame[std::size_t(parameter - 8) % 17];
}

// Octets as a row of bits, which begin with the highest of each, or with the lowest.
class Bits {
  public:
    Bits(std::string octets, bool highestFirst) : octets_(std::move(octets)), highestFirst_(highestFirst) {}

    int take(int bits) {
        int value = 0;
        for (int i = 0; i < bits; i++, at_++)
            value |= (octets_[at_ / 8] >> shift() & 1) << (highestFirst_ ? bits - 1 - i : i);
        return value;
    }
    void put(int value, int bits) {
        for (int i = 0; i < bits; i++, at_++) {
            const int bit = value >> (highestFirst_ ? bits - 1 - i : i) & 1;
            octets_[at_ / 8] = static_cast<char>(octets_[at_ / 8] | bit << shift());
        }
    }
    const std::string& octets() const { return octets_; }

  private:
    int shift() const { return int(highestFirst_ ? 7 - at_ % 8 : at_ % 8); }

    std::string octets_;
    bool highestFirst_;
    std::size_t at_ = 0;
};

}  // namespace

std::string gsmWavBlock(const std::string& twoFrames) {
    Bits from(twoFrames, true), to(std::string(kGsmWavBlockOctets, '\0'), false);
    for (int frame = 0; frame < kFrames; frame++) {
        from.take(kSignatureBits);
        for (int i = 0; i < kParameters; i++) to.put(from.take(bitsOf(i)), bitsOf(i));
    }
    return to.octets();
}

std::string framesOfGsmWavBlock(const std::string& block) {
    Bits from(block, false), to(std::string(kFrames * kGsmFrameOctets, '\0'), true);
    for (int frame = 0; frame < kFrames; frame++) {
        to.put(kSignature, kSignatureBits);
        for (int i = 0; i < kParameters; i++) to.put(from.take(bitsOf(i)), bitsOf(i));
    }
    return to.octets();
}
