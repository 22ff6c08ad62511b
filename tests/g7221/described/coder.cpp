// The coder between the transforms: any coefficients, powers, categories and frames. Every error of a number is -6, but for
// the selectors of vspsHuffmanEncode_G722_16s32u.
#include "support/described.h"

namespace vsp::test {

static Argument frameBits() {
    std::vector<Vsp64s> all;
    for (Vsp64s bits = 320; bits <= 960; bits += 16) all.push_back(bits);
    return oneOf(all, vspStsSizeErr);
}

static const Argument kBits = frameBits(), kRegions = oneOf({14, 28}, vspStsSizeErr);

static Argument controlOf(std::size_t regions) {
    return limited(vspStsSizeErr, [=](const Values& v) { return Limits{0, v.at(regions) == 14 ? 15 : 31}; });
}

static Count balancesOf(std::size_t regions) {
    return Count([=](const Values& v) { return v.at(regions) == 14 ? 15 : 31; });
}

static Count wordsOf(std::size_t bits) {
    return Count([=](const Values& v) { return v.at(bits) / 16; });
}

// The position and what is left: their sum is checked, too.
static const Argument kHalfOfBits = io(1)
                                        .holding(vspStsSizeErr,
                                                 [](const Values& v, int) {
                                                     return Limits{0, v[1] / 2};
                                                 })
                                        .perhapsRead();
static const Argument kPosition = limited(vspStsSizeErr, [](const Values& v) { return Limits{0, v[1]}; });
static const Argument kLeft = limited(vspStsSizeErr, [](const Values& v) { return Limits{-1, v[1] - v[3]}; });

static Count each(int perRegion, int regions) { return perRegion * argument(regions); }

static const Described functions(
    "g7221",
    {
        VSPSC_FUNCTION(vspsRegionPower_G722_16s, in(each(20, 2)), value(), kRegions, out(each(1, 2)), out(each(1, 2)),
                       out(each(1, 2)), out(1))
            .recorded({item(0), item(1), item(2), result(3), result(4), result(5), result(6)}, 7),
        VSPSC_FUNCTION(vspsRegionPowerAdjust_G722_16s_I, value(), kRegions, io(each(20, 1)), io(each(1, 1)))
            .recorded({item(0), item(1), item(2).to(4), item(3).to(5)}, 6),
        VSPSC_FUNCTION(vspsRegionPowerDecode_G722_16s, in(wordsOf(1)), kBits, kRegions, out(each(1, 2)), out(each(1, 2)),
                       out(1), out(1))
            .recorded({item(0), item(1), item(2), result(3), result(4), result(5), result(6)}, 7),
        VSPSC_FUNCTION(vspsCategorize_G722_16s, in(each(1, 3)), value(), controlOf(3), kRegions, out(each(1, 3)),
                       out(balancesOf(3)))
            .recorded({item(0), item(1), item(2), item(3), result(4), result(5)}, 6),
        VSPSC_FUNCTION(vspsHuffmanEncode_G722_16s32u, scale(0, 6), scale(0, 63), in(20), out(6), out(1))
            .recorded({item(0), item(1), item(2), result(3), result(4)}, 5),
        VSPSC_FUNCTION(vspsVectorQuantize_G722_16s32u, in(each(20, 3)), in(each(1, 3)), value(), kRegions,
                       in(balancesOf(3)), io(each(1, 3)), out(1), out(each(1, 3)), out(each(4, 3)))
            .recorded({item(0), item(1), item(2), item(3), item(4), item(5).to(6), result(7), result(8), result(9)}, 10),
        VSPSC_FUNCTION(vspsPackFrame_G722_32u16s, in(each(1, 6)), in(each(1, 6)), controlOf(6), in(each(1, 6)),
                       in(each(4, 6)), kBits, kRegions, out(wordsOf(5)))
            .recorded({item(0), item(1), item(2), item(3), item(4), item(5), item(6), result(7)}, 8),
        VSPSC_FUNCTION(vspsVectorDecode_G722_16s, in(wordsOf(1)), kBits, in(each(1, 3)), kRegions, kHalfOfBits, kHalfOfBits,
                       io(each(1, 3)), io(4), out(each(20, 3)))
            .recorded({item(0), item(1), item(2), item(3), item(4).to(8), item(5).to(9), item(6).to(10), item(7).to(11),
                       result(12)},
                      13),
        VSPSC_FUNCTION(vspsFrameCheck_G722_16s, in(wordsOf(1)), kBits, in(each(1, 6)), kPosition, kLeft, controlOf(6),
                       kRegions, out(1))
            .recorded({item(0), item(1), item(2), item(3), item(4), item(5), item(6), result(7)}, 8),
        VSPSC_FUNCTION(vspsConcealCoefs_G722_16s_I, value(), kRegions,
                       io([](const Values& v) { return v[1] == 14 ? 320 : 640; }), io(each(20, 1)), io(1), io(1))
            .recorded({item(0), item(1), item(2).to(6), item(3).to(7), item(4).to(8), item(5).to(9)}, 10),
    });

}  // namespace vsp::test
