// Discontinuous transmission in the encoder (G.729 B.4.1 to B.4.4).
#include "arithmetic/standard_ops.h"
#include "core/checks.h"
#include "core/state_size.h"
#include "g729/comfort_noise.h"
#include "g729/constants.h"
#include "g729/exports.h"

namespace vsp::VSP_LEVEL {

namespace {

constexpr int kLags = kLspOrder + 1;
constexpr int kCurrent = 2, kSums = 3, kEnergies = 2;  // autocorrelations, sums of two of them, energies that are kept
constexpr int kShortestGap = 3;                        // frames between silence descriptors

// value * 2^-shift
struct Autocorrelation {
    Vsp16s values[kLags];
    Vsp16s shift;
};

struct State {
    Vsp16s lspSid[kLspOrder];
    Vsp16s pastCoeff[kLags];
    Vsp16s RCoeff[kLags];  // autocorrelation of the coefficients of the filter that was sent last
    Vsp16s sh_RCoeff;
    Vsp16s acf[kCurrent][kLags], sh_acf[kCurrent];  // of the last frames, the newest first
    Vsp16s sumAcf[kSums][kLags], sh_sumAcf[kSums];  // of the last pairs of frames
    Vsp16s ener[kEnergies], sh_ener[kEnergies];
    Vsp16s fr_cur;
    Vsp16s cur_gain, nb_ener, sid_gain, flag_chang, prev_energy, count_fr0;
};
static_assert(sizeof(State) == 208);

// Calc_sum_acf: in the format of the first value, normalised.
template <int n>
Autocorrelation sumOf(const Vsp16s (&values)[n][kLags], const Vsp16s (&shifts)[n]) {
    int shift = shifts[0];
    for (const int other : shifts) shift = other < shift ? other : shift;
    shift += 14;
    Vsp32s sums[kLags];
    for (int i = 0; i < kLags; i++) {
        sums[i] = 0;
        for (int j = 0; j < n; j++) sums[i] = Add_32s(sums[i], shl_32s(values[j][i], shift - shifts[j]));
    }
    const int norm = norm_32s(sums[0]);
    Autocorrelation sum{};
    for (int i = 0; i < kLags; i++) sum.values[i] = high_32s(shl_32s(sums[i], norm));
    sum.shift = sat_16s(shift + norm - 16);
    return sum;
}

void updateSums(State& s) {
    for (int i = kSums - 1; i > 0; i--) {
        for (int j = 0; j < kLags; j++) s.sumAcf[i][j] = s.sumAcf[i - 1][j];
        s.sh_sumAcf[i] = s.sh_sumAcf[i - 1];
    }
    const Autocorrelation sum = sumOf(s.acf, s.sh_acf);
    for (int j = 0; j < kLags; j++) s.sumAcf[0][j] = sum.values[j];
    s.sh_sumAcf[0] = sum.shift;
}

// The filter for an autocorrelation; its energy of the prediction error, which stays where the recursion fails. For no
// signal the filter passes everything and the energy is 0.
void predict(const Vsp16s* autocorr, Vsp16s* lpc, Vsp16s* error, Vsp16s* levMem) {
    if (autocorr[0] == 0) {
        for (int i = 0; i < kLags; i++) lpc[i] = i == 0 ? 4096 : 0;
        *error = 0;
        return;
    }
    Vsp32s wide[kLags];
    Vsp16s rc[kLspOrder];
    for (int i = 0; i < kLags; i++) wide[i] = autocorr[i] * 0x10000;
    vspsLevinsonDurbin_G729_32s16s(wide, lpc, rc, error, levMem);
}

// Calc_RCoeff
void correlateCoefficients(const Vsp16s* lpc, State& s) {
    const Vsp32s energy = dotSaturating(lpc, lpc, kLags);
    const int norm = norm_32s(energy);
    for (int i = 0; i < kLags; i++) s.RCoeff[i] = round_32s(shl_32s(dotSaturating(lpc, lpc + i, kLags - i), norm));
    s.sh_RCoeff = Vsp16s(norm);
}

// Cmp_filt: whether the filter that RCoeff stands for leaves much more energy of the signal than the error by the one made
// for it, more than by the fraction.
bool filtersDiffer(const State& s, const Vsp16s* autocorr, Vsp16s error, Vsp16s fraction) {
    int shift0 = 0, shift1 = 0;
    Vsp32s sum = 0;
    for (bool coefficients = true;; coefficients = !coefficients) {
        bool saturated = false;
        const auto product = [&](int i) {
            const Vsp64s exact = 2LL * (s.RCoeff[i] >> shift0) * (autocorr[i] >> shift1);
            saturated |= exact != Cnvrt_64s32s(exact);
            return Cnvrt_64s32s(exact);
        };
        sum = product(0) >> 1;
        for (int i = 1; i < kLags; i++) {
            const Vsp64s exact = Vsp64s(sum) + product(i);
            saturated |= exact != Cnvrt_64s32s(exact);
            sum = Cnvrt_64s32s(exact);
        }
        if (!saturated) break;
        (coefficients ? shift1 : shift0)++;
    }
    const Vsp32s threshold = shl_32s(error + mulRound_16s(error, fraction), s.sh_RCoeff + 9 - shift0 - shift1);
    return Sub_32s(sum, threshold) > 0;
}

using RootSearch = VspStatus (*)(const Vsp16s*, const Vsp16s*, Vsp16s*);

struct Buffers {
    Vsp16s *exc, *qLSP, *prevFreq, *seed, *levMem;
    Vsp32s* excErr;
    Vsp16s *lpc, *frameType, *index;
};

// The filter of a silence descriptor: the mean one of the last frames, unless the present one is another.
void sendDescriptor(State& s, const Vsp16s* autocorr, const Vsp16s* lpc, NoiseLevel level, RootSearch search,
                    const Buffers& b) {
    s.count_fr0 = 0;
    s.flag_chang = 0;
    Vsp16s error = 0, lsp[kLspOrder];
    predict(sumOf(s.sumAcf, s.sh_sumAcf).values, s.pastCoeff, &error, b.levMem);
    correlateCoefficients(s.pastCoeff, s);
    const Vsp16s* sent = s.pastCoeff;
    if (filtersDiffer(s, autocorr, s.ener[0], 3161)) {
        sent = lpc;
        correlateCoefficients(lpc, s);
    }
    search(sent, b.qLSP, lsp);
    ownQuantiseNoiseLSP(lsp, s.lspSid, b.prevFreq, b.index);
    s.prev_energy = level.decibels;
    b.index[3] = Vsp16s(level.index);
    s.sid_gain = tab_Sidgain[level.index];
}

VspStatus encode(Vsp16s pastVad, const Buffers& b, RootSearch search, void* pState) {
    if (pastVad != 0 && pastVad != 1) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    s.ener[1] = s.ener[0];
    s.sh_ener[1] = s.sh_ener[0];
    const Autocorrelation current = sumOf(s.acf, s.sh_acf);
    s.sh_ener[0] = current.shift;
    Vsp16s lpc[kLags];
    predict(current.values, lpc, &s.ener[0], b.levMem);

    const bool first = pastVad == 1;
    s.nb_ener = first || s.nb_ener < 1 ? Vsp16s(1) : Vsp16s(kEnergies);
    const NoiseLevel level = ownNoiseLevel(s.ener, s.sh_ener, s.nb_ener);
    bool send = first;
    if (!first) {
        if (filtersDiffer(s, current.values, s.ener[0], 4855)) s.flag_chang = 1;
        if (Abs_16s(Sub_16s(s.prev_energy, level.decibels)) > 2) s.flag_chang = 1;
        s.count_fr0 = Add_16s(s.count_fr0, 1);
        if (s.count_fr0 >= kShortestGap) {
            s.count_fr0 = kShortestGap;
            send = s.flag_chang != 0;
        }
    }
    if (send) sendDescriptor(s, current.values, lpc, level, search, b);
    *b.frameType = send ? 2 : 0;
    s.cur_gain = first ? s.sid_gain : ownSmoothedNoiseGain(s.cur_gain, s.sid_gain);
    ownNoiseExcitation(s.cur_gain, b.exc, b.seed, b.excErr, nullptr);
    ownNoiseFilters(b.qLSP, s.lspSid, b.lpc);
    if (s.fr_cur == 0) updateSums(s);
    return vspStsNoErr;
}

}  // namespace

VspStatus vspsDTXGetStateSize_G729B_16s(Vsp32s* pSize) { return fixedSize(pSize, sizeof(State)); }

VspStatus vspsDTXInit_G729B_16s(void* pState) {
    if (anyNull(pState)) return vspStsNullPtrErr;
    constexpr Vsp16s kNothing = 40;  // shift of what has not been yet
    State& s = *static_cast<State*>(pState);
    s = {};
    for (Vsp16s& shift : s.sh_acf) shift = kNothing;
    for (Vsp16s& shift : s.sh_sumAcf) shift = kNothing;
    for (Vsp16s& shift : s.sh_ener) shift = kNothing;
    return vspStsNoErr;
}

VspStatus vspsDTXUpdate_G729B_16s(const Vsp32s* pAutoCorr, Vsp16s expR0, Vsp16s vad, void* pState) {
    if (anyNull(pAutoCorr, pState)) return vspStsNullPtrErr;
    if (vad != 0 && vad != 1) return vspStsRangeErr;
    State& s = *static_cast<State*>(pState);
    for (int i = 0; i < kLags; i++) {
        s.acf[1][i] = s.acf[0][i];
        s.acf[0][i] = high_32s(pAutoCorr[i]);
    }
    s.sh_acf[1] = s.sh_acf[0];
    s.sh_acf[0] = Negate_16s(Add_16s(16, expR0));
    s.fr_cur = Add_16s(s.fr_cur, 1);
    if (s.fr_cur == kCurrent) {
        s.fr_cur = 0;
        if (vad == 1) updateSums(s);
    }
    return vspStsNoErr;
}

VspStatus vspsDTXEncode_G729B_16s(Vsp16s pastVad, Vsp16s* pExc, Vsp16s* pQLSP, Vsp16s* pPrevFreq, Vsp16s* pSeed,
                                  Vsp16s* pLevMem, Vsp32s* pExcErr, Vsp16s* pLPC, Vsp16s* pFrameType, Vsp16s* pIndex,
                                  void* pState) {
    if (anyNull(pExc, pQLSP, pPrevFreq, pSeed, pLevMem, pExcErr, pLPC, pFrameType, pIndex, pState)) return vspStsNullPtrErr;
    return encode(pastVad, {pExc, pQLSP, pPrevFreq, pSeed, pLevMem, pExcErr, pLPC, pFrameType, pIndex},
                  vspsLPCToLSP_G729_16s, pState);
}

VspStatus vspsDTXEncode_G729A_16s(Vsp16s pastVad, Vsp16s* pExc, Vsp16s* pQLSP, Vsp16s* pPrevFreq, Vsp16s* pSeed,
                                  Vsp16s* pLevMem, Vsp32s* pExcErr, Vsp16s* pLPC, Vsp16s* pFrameType, Vsp16s* pIndex,
                                  void* pState) {
    if (anyNull(pExc, pQLSP, pPrevFreq, pSeed, pLevMem, pExcErr, pLPC, pFrameType, pIndex, pState)) return vspStsNullPtrErr;
    return encode(pastVad, {pExc, pQLSP, pPrevFreq, pSeed, pLevMem, pExcErr, pLPC, pFrameType, pIndex},
                  vspsLPCToLSP_G729A_16s, pState);
}

}  // namespace vsp::VSP_LEVEL
