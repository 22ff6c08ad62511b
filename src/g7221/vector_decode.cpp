// Coefficients from their codes, and noise for those that have none.
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "g7221/bit_reader.h"
#include "g7221/exports.h"
#include "g7221/vector_code_tables.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

// The noise generator: its bits are signs.
class Noise {
  public:
    explicit Noise(Vsp16s* seed) : seed_(seed) {}

    Vsp16u draw() {
        Vsp16s w = Vsp16s(seed_[0] + seed_[3]);
        if (w < 0) w = Vsp16s(w + 1);
        seed_[3] = seed_[2], seed_[2] = seed_[1], seed_[1] = seed_[0], seed_[0] = w;
        return Vsp16u(w);
    }

  private:
    Vsp16s* seed_;
};

struct Position {
    int at, left;
};

// The vectors of a region. False where the bits run out; what is in dst is then of no use.
template <int dimension>
VSP_INLINE bool readVectors(const BitReader& reader, const VectorDecoder& decoder, const VectorCodes::Digits* digits,
                            const Vsp16s (&values)[16], Position& position, Vsp16s* dst) {
    for (int v = 0; v < kRegion / dimension; v++, dst += dimension) {
        const Vsp64u bits = reader.peek(position.at);
        const DecodedSymbol next = decodeSymbol(decoder, Vsp32u(bits >> 32));
        if (next.bits > position.left) {
            position.at += position.left;
            position.left = 0;
            return false;
        }
        position.at += next.bits;
        position.left -= next.bits;
        const VectorCodes::Digits& symbol = digits[next.symbol];
        if (symbol.signs > position.left) return false;
        position.at += symbol.signs;
        position.left -= symbol.signs;
        Vsp64u signs = bits << next.bits;
        for (int i = 0; i < dimension; i++) {
            const Vsp16s value = values[symbol.digit[i]];
            const int negative = int(signs >> 63) - 1;  // -1 for a sign bit that is 0
            dst[i] = Vsp16s((value ^ negative) - negative);
            signs <<= value != 0;  // the value of a small level may be 0, and has no sign then
        }
    }
    return true;
}

VSP_INLINE bool readRegion(const BitReader& reader, int category, Vsp16s deviation, Position& position, Vsp16s* dst) {
    Vsp16s values[16];
    for (int i = 0; i < 16; i++) values[i] = Vsp16s((deviation * mlt_quant_centroid[category][i]) >> 12);
    const VectorDecoder& decoder = vectorDecoders[category];
    const VectorShape& shape = kVectorShapes[category];
    const VectorCodes::Digits* digits = vectorCodes.digits + shape.firstSymbol;
    switch (shape.dimension) {
        case 2: return readVectors<2>(reader, decoder, digits, values, position, dst);
        case 4: return readVectors<4>(reader, decoder, digits, values, position, dst);
        default: return readVectors<5>(reader, decoder, digits, values, position, dst);
    }
}

// Plus or minus the noise's amplitude in place of zeros, which in category 7 are all.
VSP_INLINE void fill(int category, Vsp16s deviation, Noise& noise, Vsp16s* region) {
    const Vsp16s amplitude = Mul_16s(deviation, category == 5 ? 5793 : category == 6 ? 8192 : 23170);
    for (int half = 0; half < kRegion; half += kRegion / 2) {
        Vsp32u signs = noise.draw();
        for (int i = half; i < half + kRegion / 2; i++) {
            const bool empty = category == 7 || region[i] == 0;
            const Vsp16s value = (signs & 1) != 0 ? amplitude : Negate_16s(amplitude);
            region[i] = empty ? value : region[i];
            signs >>= empty;
        }
    }
}

}  // namespace

VspStatus vspsVectorDecode_G722_16s(const Vsp16s* pSrc, Vsp32s bits, const Vsp16s* pDeviation, Vsp32s regions, Vsp32s* pPos,
                                    Vsp32s* pLeft, Vsp16s* pCategory, Vsp16s* pSeed, Vsp16s* pDst) {
    if (anyNull(pSrc, pDeviation, pPos, pLeft, pCategory, pSeed, pDst)) return vspStsNullPtrErr;
    if (!isFrame(bits) || !hasRegions(regions)) return vspStsSizeErr;
    if (*pPos < 0 || *pLeft < 0 || *pPos > bits - *pLeft) return vspStsSizeErr;
    const BitReader reader(pSrc, bits);
    Position position = {*pPos, *pLeft};
    Noise noise(pSeed);
    bool ranOut = false;
    for (int r = 0; r < regions; r++) {
        Vsp16s* region = pDst + kRegion * r;
        if (ranOut) pCategory[r] = kCategories - 1;
        int category = pCategory[r];
        if (category >= 0 && category < kCodedCategories) {
            ranOut = !readRegion(reader, category, pDeviation[r], position, region);
            if (ranOut) category = kCategories - 1;
        } else {
            for (int i = 0; i < kRegion; i++) region[i] = 0;
        }
        if (category >= 5 && category < kCategories) fill(category, pDeviation[r], noise, region);
    }
    *pPos = position.at;
    *pLeft = position.left - ranOut;
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
