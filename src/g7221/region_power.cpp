// The region powers: their indices in steps of 3 dB, coded by differences.
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "g7221/bit_reader.h"
#include "g7221/exports.h"
#include "g7221/region_power_tables.h"
#include "vector/map.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kIndexOffset = 24;
constexpr int kLeastFirst = -6, kLeast = -15, kMost = 24;

// The sum of the squares of a region, saturated.
VSP_INLINE Vsp32s energyOf(const Vsp16s* region) {
    const auto squares = [](S16_128 x) { return addHalves(S64_128{dot2(x, x).v}); };
    const S16_128 last{_mm_loadl_epi64(reinterpret_cast<const __m128i*>(region + 16))};
    return Cnvrt_64s32s(sum(add(add(squares(S16_128::load(region)), squares(S16_128::load(region + 8))), squares(last))));
}

// 2 * log2 of the deviation, rounded in steps of 3 dB: a power from 2^15 up to 2^15.8 is 0.
VSP_INLINE int powerOf(Vsp32s energy) {
    if (energy == 0) return -16;
    const int p = 16 - __builtin_clz(Vsp32u(energy));
    const Vsp32s normalised = p > 0 ? energy >> p : energy << -p;
    return p + (normalised >> 1 >= 28963);
}

}  // namespace

VspStatus vspsRegionPower_G722_16s(const Vsp16s* pCoef, Vsp32s magShift, Vsp32s regions, Vsp16s* pIndex, Vsp16s* pLength,
                                   Vsp16u* pCode, Vsp16s* pBits) {
    if (anyNull(pCoef, pIndex, pLength, pCode, pBits)) return vspStsNullPtrErr;
    if (!hasRegions(regions)) return vspStsSizeErr;
    const int offset = 35 - kIndexOffset - 2 * clip(magShift, -100, 100);
    int index[kMaxRegions];
    for (int r = 0; r < regions; r++) index[r] = powerOf(energyOf(pCoef + kRegion * r)) + offset;
    for (int r = regions - 2; r >= 0; r--) index[r] = index[r] > index[r + 1] - 11 ? index[r] : index[r + 1] - 11;
    int last = clip(index[0], kLeastFirst, kMost);
    pIndex[0] = Vsp16s(last);
    pLength[0] = 5;
    pCode[0] = Vsp16u(last + 7);
    int bits = 5;
    for (int r = 1; r < regions; r++) {
        const int difference = clip(clip(index[r], kLeast, kMost) - last, -12, kPowerSteps - 13) + 12;
        last += difference - 12;
        pIndex[r] = Vsp16s(last);
        pLength[r] = differential_region_power_bits[r][difference];
        pCode[r] = differential_region_power_codes[r][difference];
        bits += pLength[r];
    }
    *pBits = Vsp16s(bits);
    return vspStsNoErr;
}

VspStatus vspsRegionPowerAdjust_G722_16s_I(Vsp32s magShift, Vsp32s regions, Vsp16s* pCoef, Vsp16s* pIndex) {
    if (anyNull(pCoef, pIndex)) return vspStsNullPtrErr;
    if (!hasRegions(regions)) return vspStsSizeErr;
    const int offset = kIndexOffset + 2 * clip(magShift, -0x8000, 0x7FFF);
    for (int r = 0; r < regions; r++) {
        const int index = sat_16s(pIndex[r] + offset), shift = (index - 39) >> 1;
        pIndex[r] = Vsp16s(shift > 0 ? index - 2 * shift : index);
        Vsp16s* region = pCoef + kRegion * r;
        if (shift > 0)
            map(
                kRegion, [=](auto x) { return shr(x, shift < 15 ? shift : 15); }, region, region);
    }
    return vspStsNoErr;
}

VspStatus vspsRegionPowerDecode_G722_16s(const Vsp16s* pSrc, Vsp32s bits, Vsp32s regions, Vsp16s* pIndex,
                                         Vsp16s* pDeviation, Vsp16s* pMagShift, Vsp32s* pPos) {
    if (anyNull(pSrc, pIndex, pDeviation, pMagShift, pPos)) return vspStsNullPtrErr;
    if (!isFrame(bits) || !hasRegions(regions)) return vspStsSizeErr;
    const BitReader reader(pSrc, bits);
    int index = int(reader.peek(0) >> 59) - 7, position = 5;
    pIndex[0] = Vsp16s(index);
    for (int r = 1; r < regions; r++) {
        const auto next = decodeSymbol(regionPowerDecoder[r], Vsp32u(reader.peek(position) >> 32));
        position = clip(position + next.bits, 0, bits);  // the powers of a corrupt frame may be longer than it
        index += next.symbol - 12;
        pIndex[r] = Vsp16s(index);
    }
    *pPos = position;

    // The left shift that the transform of such powers bears.
    const auto deviationOf = [](int at) { return int_region_standard_deviation_table[clip(at, 0, kDeviations - 1)]; };
    int largest = 0, total = 0, shift = 9;
    for (int r = 0; r < regions; r++) {
        const int at = pIndex[r] + kIndexOffset;
        largest = at > largest ? at : largest;
        total = sat_16s(total + deviationOf(at));
    }
    for (; shift >= 0 && (total >= 8 || largest > 28); shift--) total >>= 1, largest -= 2;
    *pMagShift = Vsp16s(shift);
    for (int r = 0; r < regions; r++) pDeviation[r] = deviationOf(pIndex[r] + kIndexOffset + 2 * shift);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
