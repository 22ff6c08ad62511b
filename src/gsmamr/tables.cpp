#include "gsmamr/tables.h"

#include "arithmetic/log_tables.h"

namespace vsp {

constexpr Vsp16s TableDFTch[kVad2Channels] = {
    16384, 16384, 16384, 16384, 16384, 16384, 10923, 10923, 10923, 8192, 8192, 6554, 5461, 4681, 4681, 4096,
};

static consteval bool channelsMatch() {
    int bin = 2;
    for (int ch = 0; ch < kVad2Channels; ch++) {
        const int bins = Table16Ch[ch][1] + 1 - Table16Ch[ch][0];
        if (Table16Ch[ch][0] != bin || TableDFTch[ch] != (32768 + bins / 2) / bins) return false;
        bin += bins;
    }
    return bin == 64;
}
static_assert(channelsMatch());

constexpr Vsp16s tableStateChangeShiftR[2] = {-5, 5};
constexpr Vsp16s tableEnrgNormShift[2] = {10, 5};
constexpr Vsp16s tableMinChanEnrg[2] = {32, 1};
constexpr Vsp16s tableIneNoise[2] = {8192, 256};
constexpr Vsp16s tableFbits[2] = {9, 4};
constexpr Vsp16s tableNoiseFloorChan[2] = {512, 16};

constexpr Vsp16s TablePeakSNR[kVad2SnrIndices] = {
    34, 34, 34, 34, 34, 34, 34, 34, 34, 34, 34, 40, 51, 71, 100, 139, 191, 257, 337, 432,
};
constexpr Vsp16s TableBurstcount[kVad2SnrIndices] = {
    8, 8, 8, 8, 8, 8, 8, 8, 7, 6, 5, 4, 4, 4, 4, 4, 4, 4, 4, 4,
};
constexpr Vsp16s TableHangover[kVad2SnrIndices] = {
    30, 30, 30, 30, 30, 30, 28, 26, 24, 22, 20, 18, 16, 14, 12, 10, 8, 8, 8, 8,
};

constexpr Vsp16s TableVoiceMetric[90] = {
    2,  2,  2,  2,  2,  2,  2,  2,  2,  2,  2,  3,  3,  3,  3,  3,  4,  4,  4,  5,  5,  5,  6,  6,  7,  7,  7,  8,  8,  9,
    9,  10, 10, 11, 12, 12, 13, 13, 14, 15, 15, 16, 17, 17, 18, 19, 20, 20, 21, 22, 23, 24, 24, 25, 26, 27, 28, 28, 29, 30,
    31, 32, 33, 34, 35, 36, 37, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 50, 50, 50, 50, 50, 50, 50, 50, 50,
};

// Higher ratios give higher thresholds and metrics and shorter bursts and hangovers.
static consteval bool ratiosMatch() {
    for (int i = 1; i < kVad2SnrIndices; i++)
        if (TablePeakSNR[i] < TablePeakSNR[i - 1] || TableBurstcount[i] > TableBurstcount[i - 1] ||
            TableHangover[i] > TableHangover[i - 1])
            return false;
    for (int i = 1; i < 90; i++)
        if (const int step = TableVoiceMetric[i] - TableVoiceMetric[i - 1]; step < 0 || step > 1) return false;
    return true;
}
static_assert(ratiosMatch());

static consteval NeighbourPairs pairsOf(const Vsp16s (&table)[33]) {
    NeighbourPairs pairs{};
    for (int i = 0; i < 32; i++) pairs.words[i] = table[i] + (table[i + 1] - table[i]) * 65536;
    return pairs;
}
constexpr NeighbourPairs log2Pairs = pairsOf(Log2Table), powPairs = pairsOf(tabpow);

static constexpr Vsp16sc phs_tbl[64] = {
    {32767, 0},       {32729, -1608},   {32610, -3212},   {32413, -4808},   {32138, -6393},   {31786, -7962},
    {31357, -9512},   {30853, -11039},  {30274, -12540},  {29622, -14010},  {28899, -15447},  {28106, -16846},
    {27246, -18205},  {26320, -19520},  {25330, -20788},  {24279, -22006},  {23170, -23170},  {22006, -24279},
    {20788, -25330},  {19520, -26320},  {18205, -27246},  {16846, -28106},  {15447, -28899},  {14010, -29622},
    {12540, -30274},  {11039, -30853},  {9512, -31357},   {7962, -31786},   {6393, -32138},   {4808, -32413},
    {3212, -32610},   {1608, -32729},   {0, -32768},      {-1608, -32729},  {-3212, -32610},  {-4808, -32413},
    {-6393, -32138},  {-7962, -31786},  {-9512, -31357},  {-11039, -30853}, {-12540, -30274}, {-14010, -29622},
    {-15447, -28899}, {-16846, -28106}, {-18205, -27246}, {-19520, -26320}, {-20788, -25330}, {-22006, -24279},
    {-23170, -23170}, {-24279, -22006}, {-25330, -20788}, {-26320, -19520}, {-27246, -18205}, {-28106, -16846},
    {-28899, -15447}, {-29622, -14010}, {-30274, -12540}, {-30853, -11039}, {-31357, -9512},  {-31786, -7962},
    {-32138, -6393},  {-32413, -4808},  {-32610, -3212},  {-32729, -1608},
};

// A quarter turn further the parts change places; only exp(0) is cut to 32767.
static consteval bool factorsTurn() {
    for (int k = 0; k < 32; k++) {
        const Vsp16sc turned = phs_tbl[k + 32];
        if (turned.re != phs_tbl[k].im || turned.im != (k == 0 ? -32768 : -phs_tbl[k].re)) return false;
    }
    return true;
}
static_assert(factorsTurn());

static consteval FftTwiddles twiddles(int first, int step) {
    FftTwiddles f{};
    for (int i = 0; i < 8; i++) {
        const Vsp16sc w = phs_tbl[first + i * step];
        f.negRe[i][0] = Vsp16s(-w.re);
        f.negRe[i][1] = f.im[i][0] = w.im;
        f.im[i][1] = w.re;
    }
    return f;
}

constexpr FftTwiddles fftTwiddles[7] = {
    twiddles(0, 8),                                                     // groups of 16
    twiddles(0, 4), twiddles(32, 4),                                    // of 32
    twiddles(0, 2), twiddles(16, 2), twiddles(32, 2), twiddles(48, 2),  // of 64
};
constexpr FftTwiddles fftEighths[2] = {twiddles(16, 0), twiddles(48, 0)};

static consteval FftSplitFactors splitFactors(int first) {
    FftSplitFactors f{};
    for (int i = 0; i < 8; i++) {
        const Vsp16sc w = phs_tbl[first + i];
        f.reSum[i][0] = f.mirrorReSum[i][0] = f.imDiff[i][1] = f.mirrorImDiff[i][1] = -32768;
        f.reSum[i][1] = f.imDiff[i][0] = Vsp16s(-w.re);
        f.mirrorReSum[i][1] = f.mirrorImDiff[i][0] = w.re;
        f.reDiff[i][0] = Vsp16s(-w.im);
        f.mirrorReDiff[i][0] = f.imSum[i][1] = w.im;
    }
    return f;
}

constexpr FftSplitFactors fftSplitFactors[4] = {splitFactors(0), splitFactors(8), splitFactors(16), splitFactors(24)};

}  // namespace vsp
