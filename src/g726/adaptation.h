// What encoder and decoder do alike with each sample: predict it, then adapt to its code. The names in capitals are those
// of the blocks of G.726.
#pragma once

#include "g726/tables.h"
#include "g726/zero_predictor.h"

namespace vsp::VSP_LEVEL {

VSP_INLINE int bitLength(int x) { return x == 0 ? 0 : 32 - __builtin_clz(Vsp32u(x)); }
VSP_INLINE int clamp(int x, int low, int high) { return x < low ? low : x > high ? high : x; }
VSP_INLINE int magnitudeOf(int x) { return x < 0 ? -x : x; }

// A reconstructed sample and its floating-point form.
struct FloatSample {
    int value, exponent, mantissa;
};

VSP_INLINE FloatSample floatOf(int value) {  // FLOATB
    const int magnitude = magnitudeOf(value) & 32767, e = bitLength(magnitude);
    return {value, e, magnitude == 0 ? 32 : (magnitude << 6) >> e};
}

// FMULT for a coefficient of the pole predictor.
VSP_INLINE int product(int a, FloatSample x) {
    const int m = magnitudeOf(a >> 2), e = bitLength(m), mantissa = m == 0 ? 32 : (m << 6) >> e;
    const Vsp64s rounded = (x.mantissa * mantissa + 48) >> 4;
    const int magnitude = int((rounded << (x.exponent + e)) >> 19) & 32767, sign = (x.value ^ a) >> 31;
    return (magnitude ^ sign) - sign;
}

// The signal estimates and the scale factor of a sample.
struct Prediction {
    int sez, se, y;  // y Q9
};

// The state in registers.
struct Coder {
    ZeroPredictor zeros;
    FloatSample sr1, sr2;
    int a1, a2, yl, yu, dms, dml, ap, td, pk1, pk2;  // pk is 0 or -1
};

VSP_INLINE Coder load(const G726State& s) {
    Coder c;
    c.zeros.load(s);
    c.sr1 = floatOf(s.sr[0]);
    c.sr2 = floatOf(s.sr[1]);
    c.a1 = s.a[0];
    c.a2 = s.a[1];
    c.yl = s.yl;
    c.yu = s.yu;
    c.dms = s.dms;
    c.dml = s.dml;
    c.ap = s.ap;
    c.td = s.td;
    c.pk1 = -s.pk[0];
    c.pk2 = -s.pk[1];
    return c;
}

VSP_INLINE void store(const Coder& c, G726State& s) {
    c.zeros.store(s);
    s.sr[0] = Vsp16s(c.sr1.value);
    s.sr[1] = Vsp16s(c.sr2.value);
    s.a[0] = Vsp16s(c.a1);
    s.a[1] = Vsp16s(c.a2);
    s.yl = c.yl;
    s.yu = Vsp16s(c.yu);
    s.dms = Vsp16s(c.dms);
    s.dml = Vsp16s(c.dml);
    s.ap = Vsp16s(c.ap);
    s.td = Vsp8u(c.td);
    s.pk[0] = Vsp8u(-c.pk1);
    s.pk[1] = Vsp8u(-c.pk2);
}

VSP_INLINE Prediction predict(const Coder& c) {
    const int sezi = c.zeros.prediction();
    const int sei = sezi + product(c.a2, c.sr2) + product(c.a1, c.sr1);
    const int al = c.ap >= 256 ? 64 : c.ap >> 2;                 // LIMA
    const int y = (c.yl >> 6) + (c.yu - (c.yl >> 6)) * al / 64;  // MIX, truncated towards zero
    return {Vsp16s(sezi) >> 1, Vsp16s(sei) >> 1, y};
}

// The base-2 logarithm of a magnitude, Q7 (LOG).
VSP_INLINE int logOf(int magnitude) {
    const int k = magnitude < 1 ? 1 : magnitude, e = 31 - __builtin_clz(Vsp32u(k));
    return (e << 7) + ((k << 7) >> e) - 128;
}

// The code of a difference from a prediction; with codes of more than two bits the lowest level has the negative one alone.
template <int kBits>
VSP_INLINE int codeOf(int difference, int y) {
    constexpr int kAllOnes = (1 << kBits) - 1;
    const int log = logOf(magnitudeOf(difference) & 32767) - (y >> 2);
    const int code = g726Quantisers[kBits - 2].magnitude[log - kG726LowestLog] ^ (difference < 0 ? kAllOnes : 0);
    return kBits > 2 && code == 0 ? kAllOnes : code;
}

// Adapts to the code of the sample and returns the reconstructed sample.
template <int kBits>
VSP_INLINE int adapt(Coder& c, const Prediction& p, int code) {
    constexpr int kAllOnes = (1 << kBits) - 1;
    const int negative = -(code >> (kBits - 1));  // 0 or -1
    const G726Level& level = g726Quantisers[kBits - 2].levels[code ^ (negative & kAllOnes)];

    // The quantised difference (ANTILOG) and its floating-point form (FLOATA).
    const int log = level.logMagnitude + (p.y >> 2), exponent = log >> 7;
    const int magnitude = log < 0 ? 0 : (((log & 127) + 128) << (exponent & 31)) >> 7;
    const int dq = (magnitude ^ negative) - negative;
    const int dqFloat = magnitude == 0 ? kG726Zero : 48 << 16 | (exponent + 1) << 8 | (magnitude << 6) >> (exponent + 1);

    bool transition = false;  // TRANS
    if (c.td != 0) {
        const int i = c.yl >> 15, t = i > 9 ? 31744 : (((c.yl >> 10) & 31) + 32) << i;
        transition = magnitude > (t + (t >> 1)) >> 1;
    }

    c.dms = (c.dms + (((level.speed << 9) - c.dms) >> 5)) & 4095;
    c.dml = (c.dml + (((level.speed << 11) - c.dml) >> 7)) & 16383;
    c.yu = clamp(p.y + (((level.scale << 5) - p.y) >> 5), 544, 5120);
    c.yl = c.yl + c.yu + (-c.yl >> 6);

    const int sum = Vsp16s(dq + p.sez), pk0 = sum >> 31, moving = sum == 0 ? 0 : -1;
    const int against = pk0 ^ c.pk1;  // -1 where the sign has changed
    const int a1 = clamp(c.a1, -8191, 8191) * 4, towards = (a1 ^ ~against) - ~against;
    const int a2Step = ((pk0 == c.pk2 ? 16384 : -16384) + towards) >> 7;
    c.a2 = clamp(c.a2 + (a2Step & moving) - (c.a2 >> 7), -12288, 12288);
    const int limit = 15360 - c.a2;
    c.a1 = clamp(c.a1 + ((against == 0 ? 192 : -192) & moving) - (c.a1 >> 8), -limit, limit);

    const int tone = c.a2 < -11776 ? 1 : 0;
    const bool steady = p.y >= 1536 && magnitudeOf(4 * c.dms - c.dml) < c.dml >> 3 && tone == 0;
    c.ap = (c.ap + (((steady ? 0 : 512) - c.ap) >> 4)) & 1023;
    c.td = tone;
    const int step = magnitude == 0 ? 0 : 128;
    c.zeros.adapt<kBits == 5 ? 9 : 8>((step ^ negative) - negative);
    if (transition) {
        c.zeros.clear();
        c.a1 = c.a2 = c.td = 0;
        c.ap = 256;
    }

    c.zeros.shiftIn(dqFloat | (negative << 31));
    c.sr2 = c.sr1;
    c.sr1 = floatOf(Vsp16s(dq + p.se));
    c.pk2 = c.pk1;
    c.pk1 = pk0;
    return c.sr1.value;
}

}  // namespace vsp::VSP_LEVEL
