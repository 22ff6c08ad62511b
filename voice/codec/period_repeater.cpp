#include "codec/period_repeater.h"

#include <math.h>
#include <string.h>

namespace vspv {

static constexpr Vsp32s kFullLevel = 80, kFade = 400;  // 10 ms without fading, then 50 ms down to silence
static constexpr Vsp32s kSettling = 16;                // samples until the repetition has its level
static constexpr Vsp32s kCrossFade = 16;               // 2 ms
static constexpr Vsp32s kShortestPeriod = 20;
static constexpr Vsp32s kCompared = 60;       // samples, 7.5 ms: a longer stretch would tell less of where the signal goes
static constexpr Vsp32f kLowestLevel = 0.3f;  // of what has no period

static Vsp16s mixed(Vsp16s from, Vsp16s to, Vsp32s step, Vsp32s steps) {
    return Vsp16s((from * (steps - step) + to * step) / steps);
}

static Vsp64s product(const Vsp16s* a, const Vsp16s* b) {
    Vsp64s sum = 0;
    for (Vsp32s i = 0; i < kCompared; i++) sum += Vsp64s(a[i]) * b[i];
    return sum;
}

void PeriodRepeater::reset() { *this = {}; }

// The lag at which the normalised correlation of the last samples is highest.
void PeriodRepeater::findPeriod() {
    const Vsp16s* last = history_ + kHistory - kCompared;
    const Vsp64s energy = product(last, last);
    double best = 0;
    period_ = kLongestPeriod;
    for (Vsp32s lag = kShortestPeriod; lag <= kLongestPeriod; lag++) {
        const Vsp64s correlation = product(last, last - lag);
        if (correlation <= 0) continue;
        const double normalised = double(correlation) / sqrt(double(energy) * double(product(last - lag, last - lag)));
        if (normalised > best) {
            best = normalised;
            period_ = lag;
        }
    }
    level_ = kLowestLevel + (1 - kLowestLevel) * Vsp32f(best < 1 ? best : 1);
    seam_ = history_[kHistory - 1] - history_[kHistory - 1 - period_];
}

// Goes on behind the kHistory samples of signal. The last quarter of the first period becomes what was before the period,
// so that the repetitions join.
void PeriodRepeater::repeat(Vsp16s* signal, Vsp32s length) const {
    const Vsp32s join = period_ / 4;
    Vsp16s* next = signal + kHistory;
    for (Vsp32s i = 0; i < length; i++, next++) {
        const Vsp32s step = concealed_ + i - (period_ - join);
        *next = next[-period_];
        if (step >= 0 && step < join) *next = mixed(*next, next[-2 * period_], step + 1, join);
    }
}

// So many samples after the last decoded one: it begins where that one was.
Vsp16s PeriodRepeater::heard(Vsp16s repeated, Vsp32s age) const {
    if (age >= kFullLevel + kFade) return 0;
    Vsp32f level = age < kSettling ? 1 + (level_ - 1) * Vsp32f(age) / kSettling : level_;
    if (age > kFullLevel) level *= Vsp32f(kFullLevel + kFade - age) / kFade;
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): no age is negative
    const Vsp32s bend = age < kSettling ? seam_ / (2 << age) : 0;
    const Vsp32f sample = level * Vsp32f(repeated + bend);
    return sample > 32767 ? Vsp16s(32767) : sample < -32768 ? Vsp16s(-32768) : Vsp16s(sample);
}

void PeriodRepeater::keep(const Vsp16s* samples, Vsp32s length) {
    memmove(history_, history_ + length, sizeof(Vsp16s) * size_t(kHistory - length));
    memcpy(history_ + kHistory - length, samples, sizeof(Vsp16s) * size_t(length));
}

void PeriodRepeater::conceal(Vsp16s* frame, Vsp32s length) {
    if (concealed_ == 0) findPeriod();
    Vsp16s signal[kHistory + kMaxFrame];
    memcpy(signal, history_, sizeof history_);
    repeat(signal, length);
    for (Vsp32s i = 0; i < length; i++) frame[i] = heard(signal[kHistory + i], concealed_ + i);
    keep(signal + kHistory, length);
    if (concealed_ < kFullLevel + kFade) concealed_ += length;
}

void PeriodRepeater::decoded(Vsp16s* frame, Vsp32s length) {
    if (concealed_ > 0) {
        Vsp16s signal[kHistory + kCrossFade];
        memcpy(signal, history_, sizeof history_);
        repeat(signal, kCrossFade);
        for (Vsp32s i = 0; i < kCrossFade; i++)
            frame[i] = mixed(heard(signal[kHistory + i], concealed_ + i), frame[i], i, kCrossFade);
        concealed_ = 0;
    }
    keep(frame, length);
}

}  // namespace vspv
