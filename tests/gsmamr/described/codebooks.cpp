// The adaptive and the algebraic codebooks, their gains, and the LSP quantiser.
#include "support/described.h"

namespace vsp::test {

namespace {

const std::vector<Vsp64s> kRates{0, 1, 3, 6, 7, 8, 11, 12}, kRatesAndSid{0, 1, 3, 6, 7, 8, 11, 12, 25};

Argument mode() { return oneOf(kRates); }
Argument modeOrSid() { return oneOf(kRatesAndSid); }
Argument subframe() { return range(0, 3); }
Argument lag() { return range(17, 144); }

bool isDelta(Vsp64s rate, Vsp64s number) { return number == 1 || number == 3 || (number == 2 && rate <= 1); }

Limits ofBits(int bits) { return {0, (1 << bits) - 1}; }

// Indices of an array, each with its bits by the bit rate at a place of the argument list.
using BitsByRate = std::vector<int> (*)(Vsp64s rate);
Argument indices(BitsByRate bits, int ratePosition) {
    return in([=](const Values& v) { return Vsp64s(bits(v[std::size_t(ratePosition)]).size()); })
        .holding(vspStsRangeErr, [=](const Values& v, int i) {
            const auto all = bits(v[std::size_t(ratePosition)]);
            return std::size_t(i) < all.size() ? ofBits(all[std::size_t(i)]) : Limits{};
        });
}

std::vector<int> lsfBits(Vsp64s rate) {
    if (rate == 12) return {7, 8, 9, 8, 6};
    if (rate == 25) return {3, 8, 9, 9};
    if (rate <= 1) return {8, 8, 7};
    return {rate == 8 ? 9 : 8, 9, 9};
}

std::vector<int> pulseBits(Vsp64s rate) {
    switch (rate) {
        case 0:
        case 1: return {7, 2};
        case 3: return {9, 2};
        case 6: return {11, 3};
        case 7:
        case 8: return {13, 4};
        case 11: return {1, 1, 1, 1, 10, 10, 7};
        case 12: return {4, 4, 4, 4, 4, 3, 3, 3, 3, 3};
        default: return {};
    }
}

int gainBits(Vsp64s rate) { return rate == 0 ? 8 : rate <= 3 ? 6 : rate == 8 || rate == 12 ? 5 : 7; }

int delayBits(Vsp64s rate, Vsp64s number) {
    if (!isDelta(rate, number)) return rate == 12 ? 9 : 8;
    return rate <= 6 ? 4 : rate == 8 || rate == 12 ? 6 : 5;
}

// Elements by the bit rate at a place of the argument list.
template <class F>
Count byRate(int position, F count) {
    return Count([=](const Values& v) { return Vsp64s(count(v[std::size_t(position)])); });
}
Count lspsOf(int position) {
    return byRate(position, [](Vsp64s rate) { return rate == 12 ? 20 : 10; });
}

Argument openLag() {
    return limited(vspStsRangeErr, [](const Values& v) {
        return isDelta(v[3], v[4]) ? Limits{} : Limits{v[3] == 12 ? 18 : 20, 143};
    });
}
Argument lagBefore() {
    return io(1).holding(vspStsRangeErr, [](const Values& v, int) {
        return isDelta(v[3], v[4]) ? Limits{17, 144} : Limits{};
    });
}

Argument delay() {
    return in(2).holding(vspStsRangeErr, [](const Values& v, int i) {
        const Vsp64s outermost = v[1] == 12 ? 3 : 1;
        return i == 0 ? Limits{17, 144} : Limits{-outermost, outermost};
    });
}

const Described functions(
    "gsmamr",
    {
        VSPSC_FUNCTION(vspsLSPQuant_GSMAMR_16s, in(lspsOf(1)), modeOrSid(), io(10), out(lspsOf(1)),
                       out(byRate(1, [](Vsp64s rate) { return lsfBits(rate).size(); }))),
        VSPSC_FUNCTION(vspsLSFDecode_GSMAMR_16s, indices(lsfBits, 1), modeOrSid(), io(10), io(10), out(lspsOf(1))),
        VSPSC_FUNCTION(vspsLSFDecodeErased_GSMAMR_16s, mode(), io(10), io(10), out(lspsOf(0))),

        VSPSC_FUNCTION(vspsAdaptiveCodebookSearch_GSMAMR_16s, in(40), in(40), in(40).after(154), mode(), subframe(),
                       openLag(), lagBefore(), out(2), out(1)),
        VSPSC_FUNCTION(vspsDecodeAdaptiveVector_GSMAMR_16s_I, delay(), mode(), io(40).after(154)),
        VSPSC_FUNCTION(vspsAdaptiveCodebookGain_GSMAMR_16s, in(40), in(40), mode(), out(1), out(4)),
        VSPSC_FUNCTION(vspsPitchGainLimit_GSMAMR_16s, in(7), mode(), value(), io(1), out(1)),
        VSPSC_FUNCTION(vspsPitchGainQuant_GSMAMR_16s, value(), io(1), out(1)),
        VSPSC_FUNCTION(vspsAdaptiveCodebookContribution_GSMAMR_16s, value(), in(40), in(40), out(40).mayBe(2)),
        VSPSC_FUNCTION(vspsWeightedErrorUpdate_GSMAMR_16s, in(40), in(40), in(40), in(40), in(40), in(2), mode(), out(10),
                       out(10)),
        VSPSC_FUNCTION(vspsDelayDecode_GSMAMR_16s, mode(), subframe(),
                       limited(vspStsRangeErr, [](const Values& v) { return ofBits(delayBits(v[0], v[1])); }), value(),
                       value(), value(), io(1).holding(vspStsRangeErr, 17, 144), io(1), out(2)),

        VSPSC_FUNCTION(vspsAlgebraicCodebookSearch_GSMAMR_16s, in(40), in(40).when(3, {11, 12}), in(40), modeOrSid(),
                       subframe(), lag(), value(), out(40), out(40),
                       out(byRate(3, [](Vsp64s rate) { return pulseBits(rate).size(); })).unless(3, {25})),
        VSPSC_FUNCTION(vspsAlgebraicCodebookDecode_GSMAMR_16s, indices(pulseBits, 1).unless(1, {25}), modeOrSid(),
                       subframe(), lag(), value(), out(40)),

        VSPSC_FUNCTION(vspsGainQuant_GSMAMR_16s, in(40).when(8, {8}), in(40).when(8, {8}), in(40), in(40).unless(8, {12}),
                       in(40).when(8, {0, 8, 12}), in(40).unless(8, {12}), in(40), in(4).unless(8, {12}), mode(),
                       subframe(), range(6556, 32767), io(8), io(30).when(8, {0, 8}), io(2),
                       out(2).when([](const Values& v) { return v[8] == 0 && v[9] % 2 == 1; }),
                       out(byRate(8, [](Vsp64s rate) { return rate == 8 ? 2 : 1; })).when([](const Values& v) {
                           return v[8] != 0 || v[9] % 2 == 1;
                       })),
        VSPSC_FUNCTION(vspsPitchGainDecode_GSMAMR_16s, oneOf({8, 12}), range(0, 15), out(1)),
        VSPSC_FUNCTION(vspsGainDecode_GSMAMR_16s, in(40), mode(), subframe(),
                       limited(vspStsRangeErr, [](const Values& v) { return ofBits(gainBits(v[1])); }), io(8), io(2)),
    });

}  // namespace

}  // namespace vsp::test
