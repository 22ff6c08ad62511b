// The coder one sample after the other as the blocks of G.726 read, with the state variables under their names.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdlib>

#include "vspsc/types.h"

namespace vsp::plain {

struct G726Rate {
    int bits, thresholds[16], dqln[16], w[16], f[16];
};
inline constexpr G726Rate kG726Rates[4] = {
    {2, {261}, {116, 365}, {-22, 439}, {0, 7}},
    {3, {8, 218, 331}, {-2048, 135, 273, 373}, {-4, 30, 137, 582}, {0, 1, 2, 7}},
    {4,
     {-124, 80, 178, 246, 300, 349, 400},
     {-2048, 4, 135, 213, 273, 323, 373, 425},
     {-12, 18, 41, 64, 112, 198, 355, 1122},
     {0, 0, 0, 1, 1, 1, 3, 7}},
    {5,
     {-122, -16, 68, 139, 198, 250, 298, 339, 378, 413, 445, 475, 502, 528, 553},
     {-2048, -66, 28, 104, 169, 224, 274, 318, 358, 395, 429, 459, 488, 514, 539, 566},
     {14, 14, 24, 39, 40, 41, 58, 100, 141, 179, 219, 280, 358, 440, 529, 696},
     {0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 2, 3, 4, 5, 6, 6}},
};
inline const G726Rate& g726Rate(int rate) { return kG726Rates[rate == 17 ? 0 : rate - 21]; }

inline int bitLength(int x) { return int(std::bit_width(unsigned(x))); }

// G.711. The values are 14-bit ones.
inline int expandALaw(int octet) {
    octet ^= 0x55;
    const int chord = (octet >> 4) & 7, m = octet & 15, v = chord == 0 ? 2 * m + 1 : (2 * m + 33) << (chord - 1);
    return octet & 128 ? 2 * v : -2 * v;
}
inline int expandMuLaw(int octet) {
    const int m = ~octet & 15, v = ((2 * m + 33) << (~octet >> 4 & 7)) - 33;
    return octet & 128 ? v : -v;
}

class G726 {
  public:
    explicit G726(int rate) : r_(&g726Rate(rate)) {}
    void setRate(int rate) { r_ = &g726Rate(rate); }

    int encode(int sl) {
        predict();
        const int code = quantise(sl - se_);
        adapt(code);
        return code;
    }
    int decode(int code) {
        predict();
        adapt(code & ((1 << r_->bits) - 1));
        return 4 * std::clamp(sr_, -8192, 8191);
    }
    int decodePcm(int code, int law) {
        decode(code);
        return synchronised(code & ((1 << r_->bits) - 1), law);
    }

  private:
    static int floatOf(int magnitude, int negative) {
        const int e = bitLength(magnitude);
        return negative << 10 | e << 6 | (magnitude == 0 ? 32 : (magnitude << 6) >> e);
    }
    static int fmult(int c, int f) {
        const int m = c >= 0 ? c >> 2 : -(c >> 2) & 8191, e = bitLength(m), n = m == 0 ? 32 : (m << 6) >> e;
        const int E = ((f >> 6) & 15) + e, M = ((f & 63) * n + 48) >> 4;
        const int w = E <= 26 ? (M << 7) >> (26 - E) : ((M << 7) << (E - 26)) & 32767;
        return (c < 0) != (f >> 10 != 0) ? -w : w;
    }

    void predict() {
        int sum = 0;
        for (int i = 0; i < 6; i++) sum += fmult(b_[i], dqFloat_[i]);
        sez_ = Vsp16s(sum) >> 1;
        se_ = Vsp16s(Vsp16s(sum) + fmult(a_[1], srFloat_[1]) + fmult(a_[0], srFloat_[0])) >> 1;
        const int al = ap_ >= 256 ? 64 : ap_ >> 2, u = yu_ - (yl_ >> 6), product = (std::abs(u) * al) >> 6;
        y_ = (yl_ >> 6) + (u < 0 ? -product : product);
    }

    int quantise(int d) const {
        const int k = std::abs(d) & 32767, e = k < 2 ? 0 : bitLength(k) - 1, dl = (e << 7) + (((k << 7) >> e) & 127);
        const int dln = dl - (y_ >> 2), levels = 1 << (r_->bits - 1);
        int magnitude = 0;
        while (magnitude < levels - 1 && dln >= r_->thresholds[magnitude]) magnitude++;
        return d < 0 || (magnitude == 0 && r_->bits > 2) ? 2 * levels - 1 - magnitude : magnitude;
    }

    void adapt(int code) {
        const int top = 1 << (r_->bits - 1), negative = code & top ? 1 : 0;
        const int index = negative ? 2 * top - 1 - code : code;
        const int z = (r_->dqln[index] + (y_ >> 2)) & 4095;
        const int magnitude = z & 2048 ? 0 : ((z % 128 + 128) << 7) >> (14 - (z >> 7)),
                  dq = negative ? -magnitude : magnitude;
        const int i = yl_ >> 15, t1 = ((yl_ >> 10) % 32 + 32) << i, t2 = i > 9 ? 31744 : t1;
        const bool transition = td_ && magnitude > (t2 + (t2 >> 1)) >> 1;

        dms_ = (dms_ + (((r_->f[index] << 9) - dms_) >> 5)) & 4095;
        dml_ = (dml_ + (((r_->f[index] << 11) - dml_) >> 7)) & 16383;
        yu_ = std::clamp(y_ + ((32 * r_->w[index] - y_) >> 5), 544, 5120);
        yl_ = yl_ + yu_ + (-yl_ >> 6);

        const Vsp16s g = Vsp16s(dq + sez_);
        const bool pk0 = g < 0, sigpk = g == 0;
        sr_ = Vsp16s(dq + se_);

        const int fa = 4 * std::clamp(a_[0], -8191, 8191), ga = pk0 == pk_[1] ? 16384 : -16384;
        a_[1] = std::clamp(a_[1] + (sigpk ? 0 : (ga + (pk0 == pk_[0] ? -fa : fa)) >> 7) - (a_[1] >> 7), -12288, 12288);
        const int limit = 15360 - a_[1];
        a_[0] = std::clamp(a_[0] + (sigpk ? 0 : pk0 == pk_[0] ? 192 : -192) - (a_[0] >> 8), -limit, limit);
        const bool tone = a_[1] < -11776;
        const bool slow = y_ >= 1536 && std::abs(4 * dms_ - dml_) < dml_ >> 3 && !tone;
        ap_ = (ap_ + (((slow ? 0 : 512) - ap_) >> 4)) & 1023;
        for (int k = 0; k < 6; k++) {
            const int step = magnitude == 0 ? 0 : negative == dqFloat_[k] >> 10 ? 128 : -128;
            b_[k] = Vsp16s(b_[k] + step - (b_[k] >> (r_->bits == 5 ? 9 : 8)));
        }
        td_ = tone;
        if (transition) {
            std::fill(a_, a_ + 2, 0);
            std::fill(b_, b_ + 6, 0);
            td_ = false;
            ap_ = 256;
        }
        std::copy_backward(dqFloat_, dqFloat_ + 5, dqFloat_ + 6);
        dqFloat_[0] = floatOf(magnitude, negative);
        srFloat_[1] = srFloat_[0];
        srFloat_[0] = floatOf(std::abs(sr_) & 32767, sr_ < 0);
        pk_[1] = pk_[0];
        pk_[0] = pk0;
    }

    // The octet next to sr, or one level beside it where a second coding of it would not give the code again.
    int synchronised(int code, int law) const {
        int chord, m;
        if (law == 0) {
            const int mag = sr_ == -32768 ? 0 : std::min(sr_ >= 0 ? sr_ >> 1 : ((-sr_ + 1) >> 1) - 1, 4095);
            chord = std::max(0, bitLength(mag) - 5);
            m = (mag >> std::max(chord, 1)) & 15;
        } else {
            const int v = std::min(std::abs(sr_) & 32767, 8158) + 33;
            chord = bitLength(v) - 6;
            m = (v >> (chord + 1)) & 15;
        }
        int level = sr_ >= 0 ? 16 * chord + m : -1 - (16 * chord + m);  // the negative zero is -1
        const auto octet = [&] { return (level >= 0 ? 128 + level : -1 - level) ^ (law == 0 ? 0x55 : 0x7F); };
        const int top = 1 << (r_->bits - 1);
        const int again = quantise((law == 0 ? expandALaw(octet()) : expandMuLaw(octet())) - se_) ^ top, rank = code ^ top;
        if (again > rank) level = law == 1 && level == 0 ? -2 : level - 1;
        if (again < rank) level++;
        level = std::clamp(level, -128, 127);
        return octet();
    }

    const G726Rate* r_;
    int a_[2] = {}, b_[6] = {}, dqFloat_[6] = {32, 32, 32, 32, 32, 32}, srFloat_[2] = {32, 32};
    int yu_ = 544, yl_ = 34816, dms_ = 0, dml_ = 0, ap_ = 0;
    bool td_ = false, pk_[2] = {};
    int sez_ = 0, se_ = 0, y_ = 0, sr_ = 0;
};

}  // namespace vsp::plain
