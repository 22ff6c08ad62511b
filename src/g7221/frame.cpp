// Frames: their bits put together, and the check of what a decoder found in one.
#include "core/checks.h"
#include "g7221/bit_reader.h"
#include "g7221/exports.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kRegionBits = 128;  // that the words of a region have

// Writes words from the top; what is behind the frame is dropped.
class BitWriter {
  public:
    BitWriter(Vsp16s* words, int bits) : words_(words), end_(bits) {}

    // Up to 32 bits, right-justified.
    void put(Vsp32u value, int bits) {
        pending_ = pending_ << bits | (Vsp64u(value) & ((1ULL << bits) - 1));
        for (pendingBits_ += bits; pendingBits_ >= 16 && !full(); written_ += 16) {
            pendingBits_ -= 16;
            words_[written_ / 16] = Vsp16s(pending_ >> pendingBits_);
        }
        if (full()) pendingBits_ = 0;
    }

    void fillWithOnes() {
        while (!full()) put(0xFFFF, 16);
    }
    bool full() const { return written_ == end_; }

  private:
    Vsp16s* words_;
    int end_, written_ = 0, pendingBits_ = 0;
    Vsp64u pending_ = 0;
};

}  // namespace

VspStatus vspsPackFrame_G722_32u16s(const Vsp16s* pLength, const Vsp16u* pCode, Vsp32s control, const Vsp16s* pCount,
                                    const Vsp32u* pWords, Vsp32s bits, Vsp32s regions, Vsp16s* pDst) {
    if (anyNull(pLength, pCode, pCount, pWords, pDst)) return vspStsNullPtrErr;
    if (!isFrame(bits) || !hasRegions(regions)) return vspStsSizeErr;
    if (!isControl(control, regions)) return vspStsSizeErr;
    BitWriter frame(pDst, bits);
    for (int r = 0; r < regions; r++) frame.put(pCode[r], clip(pLength[r], 0, 16));
    frame.put(Vsp32u(control), controlBits(regions));
    for (int r = 0; r < regions && !frame.full(); r++) {
        const Vsp32u* words = pWords + kRegionBits / 32 * r;
        int left = clip(pCount[r], 0, kRegionBits);
        for (; left >= 32; left -= 32) frame.put(*words++, 32);
        if (left > 0) frame.put(*words >> (32 - left), left);
    }
    frame.fillWithOnes();
    return vspStsNoErr;
}

VspStatus vspsFrameCheck_G722_16s(const Vsp16s* pSrc, Vsp32s bits, const Vsp16s* pIndex, Vsp32s pos, Vsp32s left,
                                  Vsp32s control, Vsp32s regions, Vsp16s* pFlag) {
    if (anyNull(pSrc, pIndex, pFlag)) return vspStsNullPtrErr;
    if (!isFrame(bits) || !hasRegions(regions)) return vspStsSizeErr;
    if (pos < 0 || left < -1 || pos > bits - left) return vspStsSizeErr;
    if (!isControl(control, regions)) return vspStsSizeErr;
    int flag = 0;
    if (left > 0) {
        const BitReader reader(pSrc, bits);
        bool zero = false;
        for (int i = 0; i < left; i += 32) {
            const int count = left - i < 32 ? left - i : 32;
            zero |= ~reader.peek(pos + i) >> (64 - count) != 0;
        }
        flag = zero ? 1 : 0;
    } else if (left < 0 && control < controls(regions) - 1) {
        flag = 2;
    }
    bool outside = false;
    for (int r = 0; r < regions; r++) outside |= pIndex[r] + 7 > 31 || pIndex[r] + 15 < 0;
    *pFlag = Vsp16s(flag | (outside ? 4 : 0));
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
