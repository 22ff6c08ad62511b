#include "g728/scalar_g728.h"

#include "arithmetic/standard_ops.h"
#include "g728/tables.h"

namespace bench::BENCH_G728 {

using namespace vsp;

#if defined(BENCH_G728_CHECKED)
extern bool overflow;
bool overflow = false;
#endif

namespace {

#if defined(BENCH_G728_CHECKED)
class Sum {
  public:
    Sum(Vsp64s x) : x_(x) {}
    operator Vsp64s() const { return x_; }
    Sum& operator+=(Vsp64s x) { return *this = checked(x_ + x); }
    Sum& operator-=(Vsp64s x) { return *this = checked(x_ - x); }

  private:
    Vsp64s x_;

    static Vsp64s checked(Vsp64s x) {
        if (x != Vsp32s(x)) overflow = true;
        return x;
    }
};
#else
using Sum = Vsp64s;
#endif

Vsp16s rounded(Vsp64s x) {
    const Vsp64s high = x >> 16;
    return Vsp16s(high + ((x >> 15 & 1) != 0 && high != 32767 ? 1 : 0));
}
Vsp16s sat16(Vsp64s x) { return sat_16s(Cnvrt_64s32s(x)); }
Vsp64s right(Vsp64s x, int n) { return n > 62 ? x >> 62 : x >> n; }
Vsp64s shifted(Vsp64s x, int n) { return n < 0 ? right(x, -n) : Vsp64s(Vsp64u(x) << n); }
Vsp32s clipped(Vsp64s x, int n) { return n <= 0 ? Vsp32s(right(x, -n)) : shl_32s(Cnvrt_64s32s(x), n); }

int norm(Vsp64s x, int bits) {
    const Vsp64s magnitude = x < 0 ? ~x : x;
    return magnitude == 0 ? bits - 1 : bits - 65 + __builtin_clzll(Vsp64u(magnitude));
}

int normalise(Vsp16s* x, int len, int bits) {
    int low = 0, high = 0;
    for (int i = 0; i < len; i++) {
        if (x[i] < low) low = x[i];
        if (x[i] > high) high = x[i];
    }
    const int n = norm(low < -high ? low : high, bits);
    for (int i = 0; i < len; i++) x[i] = Vsp16s(shifted(x[i], n));
    return n;
}

Gain divide(Gain num, Gain den) {
    int n = num.mantissa < 0 ? -num.mantissa : num.mantissa, scale = num.scale - den.scale + 14, r = 0;
    const int d = den.mantissa < 0 ? -den.mantissa : den.mantissa;
    if (n < d) n *= 2, scale++;
    for (int i = 0; i < 15; i++) {
        r *= 2;
        if (n > d) r++, n -= d;
        n *= 2;
    }
    if (n > d) r++;
    if (num.mantissa == 0) r = 0;
    return {sat16((num.mantissa < 0) != (den.mantissa < 0) ? -r : r), scale};
}

Gain normalised(Vsp64s x) {
    const int n = norm(x, 32);
    return {rounded(shifted(x, n)), n};
}

Vsp16s quotient(Vsp64s num, Vsp16s den) {
    Vsp32s q = 0;
    for (int i = 0; i < 16; i++) {
        q *= 2, num *= 2;
        if (num >= den) num -= den, q++;
    }
    return rounded(Vsp64s(q) << 15);
}

bool expand(const Vsp16s* a, const Vsp16s* powers, int order, int halvings, Vsp16s* dst) {
    for (int i = 0; i < order; i++) {
        const Vsp64s x = Vsp64s(a[i] * powers[i]) << (1 + halvings);
        if (x != Vsp32s(x)) return false;
    }
    for (int i = 0; i < order; i++) dst[i] = rounded(Vsp64s(a[i] * powers[i]) << (1 + halvings));
    return true;
}

void append(Vsp16s* x, int len, const Vsp16s* newest, int count) {
    for (int i = 0; i < len - count; i++) x[i] = x[i + count];
    for (int i = 0; i < count; i++) x[len - count + i] = newest[i];
}

void excitation(int index, Gain gain, Vector& e) {
    static constexpr int kShift[] = {3, 3, 2, 1};
    const int g = index & 3;
    const Vsp32s product = gain.mantissa * kTwiceGain[g];
    const Vsp16s mantissa = rounded(Vsp64s((index & 4) != 0 ? -product : product) << kShift[g]);
    for (int n = 0; n < kVector; n++) e.x[n] = kShapes[n][index >> 3];
    const int shift = normalise(e.x, kVector, 16);
    for (int n = 0; n < kVector; n++) e.x[n] = rounded(mantissa * e.x[n]);
    e.scale = gain.scale + 13 + kShift[g] - 16 + 11 + shift - 16;
}

Vsp16s converted(Vsp16s x, int scale, int to) { return rounded(clipped(x, 16 + to - scale)); }

}  // namespace

HybridWindow::HybridWindow(int o, int n, int b, int a, const Vsp16s* w)
    : order(o), nonRecursive(n), block(b), attenuation(a), window(w) {
    for (int& s : scales) s = 16;
}

bool HybridWindow::correlateSamples(const Vsp16s* src, Vsp16s* r) {
    append(samples, length(), src, block);
    Vsp16s weighted[105];
    for (int i = 0; i < length(); i++) weighted[i] = samples[i];
    const int shift = normalise(weighted, length(), 15);
    for (int i = 0; i < length(); i++) weighted[i] = rounded(shifted(samples[i] * window[length() - 1 - i], shift));
    return correlate(weighted, shift, r);
}

bool HybridWindow::correlateVectors(const Vector* src, Vsp16s* r) {
    for (int v = 0; v < 21 - kCycle; v++) scales[v] = scales[v + kCycle];
    for (int v = 0; v < kCycle; v++) {
        append(samples, length(), src[v].x, kVector);
        scales[21 - kCycle + v] = src[v].scale;
    }
    int least = scales[0];
    for (int v = 1; v < 21; v++)
        if (scales[v] < least) least = scales[v];
    Vsp16s weighted[105];
    for (int i = 0; i < length(); i++) {
        const int shift = scales[i / kVector] - least - 1;
        weighted[i] = rounded(shifted(samples[i] * window[length() - 1 - i], -shift));
    }
    return correlate(weighted, least, r);
}

bool HybridWindow::correlate(const Vsp16s* weighted, int level, Vsp16s* r) {
    const Vsp16s *const recent = weighted + order, *const newest = recent + block;
    const Vsp64s factor = 65536 - (1 << (16 - attenuation));
    int past = 1, present = 1, shift = 0, shiftOfAll = 0, pastOfAll = 1, presentOfAll = 1;
    if (scale > 2 * level) {
        past += scale - 2 * level;
        scale = 2 * level;
    } else {
        present += 2 * level - scale;
    }
    Vsp32s last = 0;
    for (int lag = 0; lag <= order; lag++) {
        Sum e = 0, n = 0;
        for (int i = 0; i < block; i++) e += recent[i] * recent[i - lag];
        for (int i = 0; i < nonRecursive; i++) n += newest[i] * newest[i - lag];
        Vsp64s a = right(recursive[lag] * factor, past) + right(e, present);
        if (lag == 0) {
            shift = norm(a, 32);
            scale += shift - 1;
            if (scale > 2 * level)
                pastOfAll += scale - 2 * level;
            else
                presentOfAll += 2 * level - scale;
        }
        recursive[lag] = rounded(clipped(a, shift));
        a = right(recursive[lag] * 65536LL, pastOfAll) + right(n, presentOfAll);
        if (lag == 0) {
            a += a >> 8;
            shiftOfAll = norm(a, 32);
        }
        last = clipped(a, shiftOfAll);
        r[lag] = rounded(last);
    }
    if (block == 20 && order == kOrder && scale > 41) scale = 41;
    return last != 0;
}

bool Recursion::run(const Vsp16s* r, int from, int to) {
    if (from == 0) {
        if (r[0] <= 0) return false;
        const Vsp16s q = quotient(r[1] < 0 ? -r[1] : r[1], r[0]);
        reflection = a[0] = Vsp16s(r[1] > 0 ? -q : q);
        alpha = rounded((r[0] << 16) + 2LL * a[0] * r[1]);
        halvings = 0;
        from = 1;
    }
    for (int i = from; i < to; i++) {
        Sum s = 0;
        for (int j = 0; j < i; j++) s += r[j + 1] * a[i - 1 - j];
        const Vsp64s sum = r[i + 1] * 65536LL + (s << (1 + halvings));
        if (sum != Vsp32s(sum)) return false;
        const Vsp32s h = rounded(sum);
        const Vsp32s magnitude = h < 0 ? -h : h;
        if (magnitude >= alpha) return false;
        Vsp32s q = 0, num = magnitude;
        for (int n = 0; n < 16; n++) {
            q *= 2, num *= 2;
            if (num >= alpha) num -= alpha, q++;
        }
        const Vsp64s k = (h > 0 ? -2 : 2) * rounded(Vsp64s(q) << 15);
        const Vsp64s energy = alpha * 65536LL + k * h;
        if (energy <= 0) return false;
        alpha = rounded(energy);
        for (int j = 0; j <= i - 1 - j; j++) {
            Vsp16s &f = a[j], &g = a[i - 1 - j];
            Vsp64s x = f * 65536LL + k * g, y = g * 65536LL + k * f;
            if (x != Vsp32s(x) || y != Vsp32s(y)) {
                if (++halvings > 2) return false;
                for (int m = 0; m < i; m++) a[m] >>= 1;
                x = f * 65536LL + k * g, y = g * 65536LL + k * f;
            }
            f = rounded(x);
            g = rounded(y);
        }
        const Vsp16s newest = rounded((Vsp64s(q) << 15) >> halvings);
        a[i] = Vsp16s(h > 0 ? -newest : newest);
    }
    return true;
}

Adaptation::Adaptation() : window(50, 35, 20, 2, kSynthesisWindow), gainWindow(10, 20, 4, 2, kLogGainWindow) {}

void Adaptation::analyse(const Vector* cycle) { valid = window.correlateVectors(cycle, r) && recursion.run(r, 0, kOrder); }

void Adaptation::complete() {
    valid = valid && recursion.run(r, kOrder, kSynthesisOrder) &&
            expand(recursion.a, kExpandSynthesis, kSynthesisOrder, recursion.halvings, next);
    Vsp16s ofGains[kOrder + 1] = {};
    Recursion gain;
    if (gainWindow.correlateSamples(gains + kOrder - kCycle, ofGains) && gain.run(ofGains, 0, kOrder))
        expand(gain.a, kExpandLogGain, kOrder, gain.halvings, gainFilter);
}

void Adaptation::use() {
    if (!valid) return;
    for (int i = 0; i < kSynthesisOrder; i++) lpc[i] = next[i];
}

Vsp16s Adaptation::predict(Gain& gain) const {
    Sum sum = 0;
    for (int i = 0; i < kOrder; i++) sum -= gainFilter[i] * gains[kOrder - 1 - i];
    int d = Cnvrt_64s32s(sum) >> 14;
    if (d > 14336) d = 14336;
    if (d < -16384) d = -16384;
    const int x = d + 16384, y = 10 * x + rounded(2 * 20649 * x), exponent = y >> 15, f = y & 0x7FFF;
    Vsp16s v = rounded(2 * 323 * f + (1874 << 16));
    v = rounded(2LL * v * f + (7866 << 16));
    v = rounded(2LL * v * f + (22702 << 16));
    gain = {rounded(Vsp64s(v) * f + (16384 << 16)), 14 - exponent};
    return Vsp16s(d);
}

void Adaptation::update(Vsp16s predicted, int index) {
    const int sum = ((predicted << 7) + (kGainDB[index & 7] << 5) + (kShapeDB[index >> 3] << 5)) >> 7;
    const Vsp16s gain = Vsp16s(sum < -16384 ? -16384 : sum);
    append(gains, kOrder, &gain, 1);
}

SynthesisMemory::SynthesisMemory() {
    for (Vector& v : past) v = {{}, 16};
    pending = {{}, 16};
}

// The response to the past alone.
void SynthesisMemory::ring(const Vsp16s* lpc) {
    int least = past[0].scale;
    for (const Vector& v : past)
        if (v.scale < least) least = v.scale;
    for (int n = 0; n < kVector; n++) {
        Sum t = 0;
        for (int k = 0; k < n; k++) t -= lpc[k] * pending.x[n - 1 - k];
        int k = n;
        for (int v = 0; v < 10; v++) {
            Sum part = 0;
            for (int m = kVector - 1; m >= 0 && k < kSynthesisOrder; m--) part -= lpc[k++] * past[v].x[m];
            const int shift = past[v].scale - least;
            if (v < 9 || shift < 30) t += right(part, shift > 30 ? 62 : shift);
        }
        pending.x[n] = sat16(t >> 14);
    }
    pending.scale = least + normalise(pending.x, kVector, 15);
}

// The response to an excitation alone, and with what is pending: the newest vector.
const Vector& SynthesisMemory::excite(const Vsp16s* lpc, const Vector& excitation, Vector& response) {
    Vector e = excitation;
    for (int n = 0; n < kVector;) {
        Sum t = 16384 * e.x[n];
        for (int k = 0; k < n; k++) t -= lpc[k] * response.x[n - 1 - k];
        if (t >= -(1 << 28) && t < 1 << 28) {
            response.x[n++] = Vsp16s(t >> 14);
            continue;
        }
        for (Vsp16s& x : e.x) x >>= 1;
        e.scale--;
        n = 0;
    }
    response.scale = e.scale;

    const int least = e.scale < pending.scale ? e.scale : pending.scale;
    const Vsp64s most = least < 0 ? right(4095, -least) : 4095 << (least < 4 ? least : 4);
    Vector sum;
    for (int n = 0; n < kVector; n++) {
        Vsp64s x = right(pending.x[n], pending.scale - least) + right(response.x[n], e.scale - least);
        if (most <= 32767)
            x = x > most ? most : x < -most ? -most : x;
        else
            x = sat16(x);
        sum.x[n] = Vsp16s(x);
    }
    sum.scale = least + normalise(sum.x, kVector, 14);
    for (int v = 9; v > 0; v--) past[v] = past[v - 1];
    past[0] = sum;
    return past[0];
}

HybridWindow Encoder::weightingWindow() { return {10, 30, 20, 1, kWeightingWindow}; }

// Five samples through the weighting filter; past input and output, the oldest first.
void Encoder::weigh(const Vsp16s* x, Vsp16s* past, Vsp16s* y) const {
    Vsp16s in[kOrder + kVector];
    for (int i = 0; i < kOrder; i++) in[i] = past[i];
    for (int i = 0; i < kVector; i++) in[kOrder + i] = x[i];
    for (int n = 0; n < kVector; n++) {
        Sum t = 16384 * x[n];
        for (int i = 0; i < kOrder; i++) t += zero_[i] * in[kOrder + n - 1 - i];
        for (int i = 0; i < kOrder; i++) t -= pole_[i] * y[n - 1 - i];
        y[n] = sat16(t >> 14);
    }
    append(past, kOrder, x, kVector);
}

void Encoder::respond() {
    const Vsp16s* const lpc = adaptation_.lpc;
    Vsp16s p[kVector] = {8192};
    for (int n = 1; n < kVector; n++) {
        Sum t = 0;
        for (int k = 0; k < n; k++) t -= lpc[k] * p[n - 1 - k];
        Sum u = t;
        for (int k = 0; k < n; k++) u += Vsp64s(zero_[k]) * p[n - 1 - k] - pole_[k] * response_[n - 1 - k];
        p[n] = sat16(t >> 14);
        response_[n] = sat16(u >> 14);
    }
    for (int i = 0; i < 128; i++) {
        Sum energy = 0;
        for (int n = 0; n < kVector; n++) {
            Sum sum = 0;
            for (int k = 0; k <= n; k++) sum += kShapes[k][i] * response_[n - k];
            const Vsp32s u = sat16(sum >> 14);
            energy += u * u;
        }
        energies_[i] = sat16(energy >> 15);
    }
}

void Encoder::adaptWeighting() {
    Vsp16s r[kOrder + 1], zero[kOrder], pole[kOrder];
    Recursion recursion;
    if (!window_.correlateSamples(recent_, r) || !recursion.run(r, 0, kOrder)) return;
    if (!expand(recursion.a, kExpandWeightingPole, kOrder, recursion.halvings, pole)) return;
    if (!expand(recursion.a, kExpandWeightingZero, kOrder, recursion.halvings, zero)) return;
    for (int i = 0; i < kOrder; i++) zero_[i] = zero[i], pole_[i] = pole[i];
}

int Encoder::search(const Vsp16s* target, int scale) const {
    Vsp16s c[kVector];
    for (int j = 0; j < kVector; j++) {
        Sum sum = 0;
        for (int n = j; n < kVector; n++) sum += response_[n - j] * target[n];
        c[j] = sat16(right(Cnvrt_64s32s(sum), scale + 6));
    }
    Vsp32s least = kMax32;
    int best = 0;
    for (int i = 0; i < 128; i++) {
        Sum sum = 0;
        for (int n = 0; n < kVector; n++) sum += kShapes[n][i] * c[n];
        const bool negative = sum <= 0;
        if (negative) sum = -sum;
        const Vsp64s energy = energies_[i];
        const int g = sum <= 5808 * energy ? 0 : sum <= 10164 * energy ? 1 : sum <= 17787 * energy ? 2 : 3;
        const Vsp32s correlation = sat16(sum >> 14),
                     distance = kSquaredGain[g] * energies_[i] - kTwiceGain[g] * correlation;
        if (distance < least) {
            least = distance;
            best = 8 * i + g + (negative ? 4 : 0);
        }
    }
    return best;
}

Vsp16s Encoder::encodeVector(const Vsp16s* samples, Vector& coded) {
    Vsp16s x[kVector];
    for (int n = 0; n < kVector; n++) x[n] = Vsp16s(samples[n] >> 1);
    append(recent_, kFrame, x, kVector);
    Gain gain;
    const Vsp16s predicted = adaptation_.predict(gain);

    // What both filters give without an excitation.
    memory_.ring(adaptation_.lpc);
    const auto place = [](const Vector& v, Vsp16s* dst) {
        for (int n = 0; n < kVector; n++) dst[n] = sat16(clipped(v.x[n], 2 - v.scale));
    };
    Vsp16s before[kOrder], ringing[kVector], zeroInput[kOrder + kVector], weighted[kOrder + kVector];
    place(memory_.past[1], before);
    place(memory_.past[0], before + kVector);
    place(memory_.pending, ringing);
    for (int i = 0; i < kOrder; i++) zeroInput[i] = coded_[i], weighted[i] = weighted_[i];
    weigh(ringing, before, zeroInput + kOrder);
    weigh(x, input_, weighted + kOrder);
    append(coded_, kOrder, zeroInput + kOrder, kVector);
    append(weighted_, kOrder, weighted + kOrder, kVector);

    const Gain inverse = divide({16384, 14}, gain);
    Vsp16s target[kVector];
    for (int n = 0; n < kVector; n++)
        target[n] = sat16((inverse.mantissa * Sub_16s(weighted[kOrder + n], zeroInput[kOrder + n])) >> 15);
    const int scale = 2 + inverse.scale - 15 + normalise(target, kVector, 16);
    const int index = search(target, scale);

    Vector e, z;
    excitation(index, gain, e);
    coded = memory_.excite(adaptation_.lpc, e, z);
    Vsp16s w[kVector];
    for (int n = 0; n < kVector; n++) {
        Sum t = 16384 * z.x[n];
        for (int k = 0; k < n; k++) t += zero_[k] * z.x[n - 1 - k];
        for (int k = 0; k < n; k++) t -= pole_[k] * w[n - 1 - k];
        w[n] = sat16(t >> 14);
        coded_[kVector + n] = Add_16s(coded_[kVector + n], sat16(clipped(w[n], 2 - z.scale)));
    }
    adaptation_.update(predicted, index);
    return Vsp16s(index);
}

void Encoder::encode(const Vsp16s* samples, Vsp16s* indices) {
    if (!started_) respond();
    started_ = true;
    Vector cycle[kCycle];
    for (int n = 0; n < kCycle; n++) {
        indices[n] = encodeVector(samples + kVector * n, cycle[n]);
        if (n == 0) adaptation_.complete();
        if (n == 1) {
            adaptation_.use();
            adaptWeighting();
            respond();
        }
    }
    adaptation_.analyse(cycle);
}

void Decoder::decode(const Vsp16s* indices, Vsp16s* samples) {
    Vector cycle[kCycle];
    for (int n = 0; n < kCycle; n++) {
        Gain gain;
        Vector e, response;
        const Vsp16s predicted = adaptation_.predict(gain);
        excitation(indices[n], gain, e);
        memory_.ring(adaptation_.lpc);
        cycle[n] = memory_.excite(adaptation_.lpc, e, response);
        adaptation_.update(predicted, indices[n]);
        postFilter(cycle[n], n == 2, samples + kVector * n);
        if (n == 0) adaptation_.complete();
        if (n == 1) adaptation_.use();
    }
    adaptation_.analyse(cycle);
    if (!adaptation_.valid) return;
    const Recursion& recursion = adaptation_.recursion;
    Vsp16s pole[kOrder];
    if (expand(recursion.a, kExpandPostFilterPole, kOrder, recursion.halvings, pole)) {
        for (int i = 0; i < kOrder; i++) pole_[i] = pole[i];
        expand(recursion.a, kExpandPostFilterZero, kOrder, recursion.halvings, zero_);
        tilt_ = rounded(4915 * recursion.reflection);
    }
    for (int i = 0; i < kOrder; i++) inverse_[i] = rounded(Vsp64s(recursion.a[i]) << (14 + recursion.halvings));
}

// The lag of the largest sum of products, the smallest of several.
static int strongest(const Vsp16s* x, int len, int from, int to, Vsp32s* most) {
    int best = from;
    for (int lag = from; lag <= to; lag++) {
        Sum sum = 0;
        for (int i = 0; i < len; i++) sum += x[i] * x[i - lag];
        const Vsp32s clipped = Cnvrt_64s32s(sum);
        if (lag == from || clipped > *most) *most = clipped, best = lag;
    }
    return best;
}

// Block 82
void Decoder::followPitch() {
    constexpr int kLength = 240, kWindow = 100;
    Vsp16s newest[kVector];
    for (int n = 0; n < kFrame; n++) {
        const Vsp16s* const x = residual_ + kLength - kFrame + n;
        Sum t = (18721LL * (x[0] + x[-3]) - 3668LL * (x[-1] + x[-2])) >> 6;
        t -= -19172LL * lowPass_[2] + 16481LL * lowPass_[1] - 5031LL * lowPass_[0];
        const Vsp16s y = rounded(Cnvrt_64s32s(8 * t));
        append(lowPass_, 3, &y, 1);
        if (n % 4 == 3) newest[n / 4] = y;
    }
    append(decimated_, 60, newest, kVector);

    Vsp32s c1 = 0, c2 = 0;
    const int coarse = 4 * strongest(decimated_ + 35, 25, 5, 35, &c1);
    const auto from = [](int lag) { return lag > 20 ? lag : 20; };
    const auto to = [](int lag) { return lag < 140 ? lag : 140; };
    const Vsp16s* const x = residual_ + kLength - kWindow;
    const int pitch = strongest(x, kWindow, from(coarse - 3), to(coarse + 3), &c1), old = pitch_;
    pitch_ = pitch;
    if (old + 6 >= pitch) return;
    const int near = strongest(x, kWindow, from(old - 6), old + 6, &c2);
    Sum sum1 = 0, sum2 = 0;
    for (int i = 0; i < kWindow; i++) sum1 += x[i - pitch] * x[i - pitch];
    for (int i = 0; i < kWindow; i++) sum2 += x[i - near] * x[i - near];
    const Vsp32s e1 = Cnvrt_64s32s(sum1), e2 = Cnvrt_64s32s(sum2);
    c1 = c1 < 0 ? 0 : c1 > e1 ? e1 : c1;
    c2 = c2 < 0 ? 0 : c2 > e2 ? e2 : c2;
    const int shift = norm(e1 > e2 ? e1 : e2, 32);
    const auto high = [shift](Vsp32s v) { return Vsp64s(v) * (1LL << shift) >> 16; };
    if (high(c2) * high(e1) > (high(c1) * high(e2) >> 16) * 26214) pitch_ = near;
}

// Blocks 83 and 84
void Decoder::adaptLongTerm() {
    const Vsp16s* const x = past_ + 140;
    Sum a = 0, c = 0;
    for (int i = 0; i < 100; i++) a += x[i - pitch_] * x[i - pitch_];
    for (int i = 0; i < 100; i++) c += x[i] * x[i - pitch_];
    int tap = 0;
    if (a > 0 && c > 0) {
        const Gain ratio = divide(normalised(c), normalised(a));
        tap = c >= a ? 16384 : int(right(ratio.mantissa, ratio.scale - 14));
    }
    const int product = tap < 9830 ? 0 : 9830 * tap;
    const Gain gain = divide({16384, 14}, {Vsp16s((product >> 16) + 16384), 14});
    direct_ = Vsp16s(gain.mantissa >> (gain.scale - 14));
    delayed_ = Vsp16s((gain.mantissa * (product >> 14)) >> gain.scale);
}

void Decoder::postFilter(const Vector& speech, bool withPitch, Vsp16s* samples) {
    Vsp16s x[kVector], residual[kVector];
    for (int n = 0; n < kVector; n++) {
        x[n] = converted(speech.x[n], speech.scale, 2);
        Sum sum = 8192 * x[n];
        for (int i = 0; i < kOrder; i++) sum += inverse_[i] * speech_[kOrder - 1 - i];
        residual[n] = rounded(Cnvrt_64s32s(4 * sum));
        append(speech_, kOrder, x + n, 1);
    }
    append(residual_, 240, residual, kVector);
    if (withPitch) {
        followPitch();
        adaptLongTerm();
    }
    Vsp16s out[kVector];
    Sum before = 0, after = 0;
    for (int n = 0; n < kVector; n++) {
        const Vsp64s longTerm = Vsp64s(direct_) * x[n] + delayed_ * past_[240 + n - pitch_];
        Sum sum = longTerm;
        for (int i = 0; i < kOrder; i++) sum += zero_[i] * longTerm_[kOrder - 1 - i];
        for (int i = 0; i < kOrder; i++) sum -= pole_[i] * shortTerm_[kOrder - 1 - i];
        out[n] = sat16((sum + tilt_ * shortTerm_[kOrder - 1]) >> 14);
        const Vsp16s f = rounded(Cnvrt_64s32s(4 * longTerm)), y = sat16(sum >> 14);
        append(longTerm_, kOrder, &f, 1);
        append(shortTerm_, kOrder, &y, 1);
        before += x[n] < 0 ? -x[n] : x[n];
        after += out[n] < 0 ? -out[n] : out[n];
    }
    Gain ratio{16384, 14};
    if (after > 4) ratio = divide(normalised(before), normalised(after));
    const Vsp64s target = clipped(20972LL * ratio.mantissa, 14 - 7 - ratio.scale);
    for (int n = 0; n < kVector; n++) {
        gain_ = rounded(Cnvrt_64s32s(4 * (target + 16220LL * gain_)));
        samples[n] = converted(rounded(Cnvrt_64s32s(4LL * gain_ * out[n])), 2, 3);
    }
    for (int n = 0; n < kVector; n++) x[n] = Vsp16s(x[n] >> 2);
    append(past_, 240, x, kVector);
}

}  // namespace bench::BENCH_G728
