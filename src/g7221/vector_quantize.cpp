// Coefficients quantised and coded, and the categorisation that fills a frame.
#include "core/checks.h"
#include "g7221/exports.h"
#include "g7221/region_coder.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kHuffmanWords = 6, kRegionWords = 4;

}  // namespace

VspStatus vspsHuffmanEncode_G722_16s32u(Vsp32s category, Vsp32s index, const Vsp16s* pCoef, Vsp32u* pDst, Vsp16s* pBits) {
    if (anyNull(pCoef, pDst, pBits)) return vspStsNullPtrErr;
    if (category < 0 || category >= kCodedCategories) return vspStsScaleRangeErr;
    if (index < 0 || index >= kDeviations) return vspStsScaleRangeErr;
    CodedRegion coded;
    *pBits = Vsp16s(codeRegion(pCoef, category, index, coded));
    writeRegion(coded, category, pDst, kHuffmanWords);
    return vspStsNoErr;
}

VspStatus vspsVectorQuantize_G722_16s32u(const Vsp16s* pCoef, const Vsp16s* pIndex, Vsp32s bits, Vsp32s regions,
                                         const Vsp16s* pBalance, Vsp16s* pCategory, Vsp16s* pControl, Vsp16s* pCount,
                                         Vsp32u* pWords) {
    if (anyNull(pCoef, pIndex, pBalance, pCategory, pControl, pCount, pWords)) return vspStsNullPtrErr;
    if (!hasRegions(regions)) return vspStsSizeErr;
    const int most = controls(regions) - 1;
    CodedRegion coded[kMaxRegions];
    int count[kMaxRegions], category[kMaxRegions], total = 0;
    const auto isCoded = [&](int r) { return category[r] >= 0 && category[r] < kCodedCategories; };
    const auto code = [&](int r) {
        const int index = clip(pIndex[r], 0, kDeviations - 1);
        count[r] = isCoded(r) ? codeRegion(pCoef + kRegion * r, category[r], index, coded[r]) : 0;
        total += count[r];
    };
    const auto changeBy = [&](int change, int step) {
        const int r = clip(pBalance[step], 0, regions - 1);
        category[r] += change;
        total -= count[r];
        code(r);
    };

    int control = controls(regions) / 2 - 1;
    for (int r = 0; r < regions; r++) category[r] = pCategory[r];
    for (int i = 0; i < control; i++) category[clip(pBalance[i], 0, regions - 1)]++;
    for (int r = 0; r < regions; r++) code(r);
    while (total < bits && control > 0) changeBy(-1, --control);
    while (total > bits && control < most) changeBy(1, control++);

    for (int r = 0; r < regions; r++) {
        Vsp32u* words = pWords + kRegionWords * r;
        pCategory[r] = Vsp16s(category[r]);
        pCount[r] = Vsp16s(count[r]);
        if (isCoded(r))
            writeRegion(coded[r], category[r], words, kRegionWords);
        else
            for (int i = 0; i < kRegionWords; i++) words[i] = 0;
    }
    *pControl = Vsp16s(control);
    return vspStsNoErr;
}

}  // namespace vsp::VSP_LEVEL
