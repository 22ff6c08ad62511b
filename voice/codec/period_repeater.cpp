#include "codec/period_repeater.h"

#include <string.h>

#include "vspsc/g729.h"

namespace vspv {

static constexpr Vsp32s kFullLevel = 80, kFade = 400;  // 10 ms as loud as before, then 50 ms down to silence
static constexpr Vsp32s kCrossFade = 40;               // 5 ms
static constexpr Vsp32s kShortestPeriod = 40;          // shorter ones are taken several times: they buzz

static Vsp16s faded(Vsp16s sample, Vsp32s age) {
    if (age <= kFullLevel) return sample;
    return age >= kFullLevel + kFade ? Vsp16s(0) : Vsp16s(sample * (kFullLevel + kFade - age) / kFade);
}

static Vsp16s mixed(Vsp16s from, Vsp16s to, Vsp32s step, Vsp32s steps) {
    return Vsp16s((from * (steps - step) + to * step) / steps);
}

void PeriodRepeater::reset() { *this = {}; }

void PeriodRepeater::findPeriod() {
    Vsp16s lag = 0;
    vspsOpenLoopPitchSearch_G729A_16s(history_ + kHistory - 80, &lag);
    period_ = lag;
    while (period_ < kShortestPeriod) period_ += lag;
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

void PeriodRepeater::keep(const Vsp16s* samples, Vsp32s length) {
    memmove(history_, history_ + length, sizeof(Vsp16s) * size_t(kHistory - length));
    memcpy(history_ + kHistory - length, samples, sizeof(Vsp16s) * size_t(length));
}

void PeriodRepeater::conceal(Vsp16s* frame, Vsp32s length) {
    if (concealed_ == 0) findPeriod();
    Vsp16s signal[kHistory + kMaxFrame];
    memcpy(signal, history_, sizeof history_);
    repeat(signal, length);
    for (Vsp32s i = 0; i < length; i++) frame[i] = faded(signal[kHistory + i], concealed_ + i);
    keep(signal + kHistory, length);
    if (concealed_ < kFullLevel + kFade) concealed_ += length;
}

void PeriodRepeater::decoded(Vsp16s* frame, Vsp32s length) {
    if (concealed_ > 0) {
        Vsp16s signal[kHistory + kCrossFade];
        memcpy(signal, history_, sizeof history_);
        repeat(signal, kCrossFade);
        for (Vsp32s i = 0; i < kCrossFade; i++)
            frame[i] = mixed(faded(signal[kHistory + i], concealed_ + i), frame[i], i, kCrossFade);
        concealed_ = 0;
    }
    keep(frame, length);
}

}  // namespace vspv
