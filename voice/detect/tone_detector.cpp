// The detector of answer tones: phase reversals from the library's detector, beginning and end from the power at 2100 Hz.
#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/tone.h"
#pragma GCC visibility pop

#include <new>

#include "detect/reversal_detector.h"
#include "detect/tone_extent.h"

namespace vspv {

static constexpr VspvToneEvent kNothing{vspvToneNothing, 0, 0, 0, 0, 0};

// In front of the state of the detector of reversals.
class alignas(8) ToneDetector {
  public:
    ToneDetector(Vsp32s rate, bool fixedPoint)
        : millisecond_(rate / 1000), reversal_(rate, fixedPoint, this + 1), extent_(rate) {}

    Vsp32s process(const Vsp16s* src, Vsp32s len, VspvToneEvent* event) {
        *event = takePending();
        Vsp32s used = 0;
        while (event->type == vspvToneNothing && used < len) {
            const Vsp32s missing = millisecond_ - filled_, count = missing < len - used ? missing : len - used;
            for (Vsp32s i = 0; i < count; i++) block_[filled_ + i] = src[used + i];
            filled_ += count;
            used += count;
            position_ += count;
            if (filled_ == millisecond_) *event = hearMillisecond();
        }
        return used;
    }

    VspvToneEvent finish() {
        const VspvToneEvent event = takePending();
        if (event.type != vspvToneNothing) return event;
        const Vsp32s rest = filled_;
        filled_ = 0;
        if (rest > 0 && reversal_.detect(block_, rest, this + 1)) return addReversal();
        ToneStretch stretch;
        return extent_.finish(&stretch) ? end(stretch) : kNothing;
    }

  private:
    VspvToneEvent takePending() {
        const VspvToneEvent event = pending_;
        pending_ = kNothing;
        return event;
    }

    VspvToneEvent hearMillisecond() {
        filled_ = 0;
        const bool reversed = reversal_.detect(block_, millisecond_, this + 1);
        ToneStretch stretch;
        const VspvToneEvent ended = extent_.process(block_, millisecond_, &stretch) ? end(stretch) : kNothing;
        if (!reversed) return ended;
        const VspvToneEvent reversal = addReversal();
        if (ended.type == vspvToneNothing) return reversal;
        pending_ = reversal;
        return ended;
    }

    VspvToneEvent addReversal() {
        if (reversals_ == 0) extent_.claim();
        reversals_++;
        return {vspvToneReversal, reversals_, position_, 0, 0, 0};
    }

    // Without a reversal it is no answer tone.
    VspvToneEvent end(const ToneStretch& s) {
        if (reversals_ == 0) return kNothing;
        const Vsp64s start = s.first * extent_.blockLength(), stop = s.last * extent_.blockLength();
        const Vsp64f samples = stop > start ? Vsp64f(stop - start) : 1;
        const VspvToneEvent event{vspvToneEnd, reversals_, position_, start, stop, s.energy / samples};
        reversals_ = 0;
        return event;
    }

    Vsp32s millisecond_, filled_ = 0;  // samples of a millisecond, and those of the current one
    Vsp16s block_[16];
    ReversalDetector reversal_;
    ToneExtent extent_;
    Vsp64s position_ = 0;   // samples
    Vsp32s reversals_ = 0;  // in the current stretch of tone
    VspvToneEvent pending_ = kNothing;
};

static VspStatus checkKind(Vsp32s rate, Vsp32s arithmetic) {
    if (rate != 8000 && rate != 16000) return vspStsRangeErr;
    if (arithmetic != vspvToneFloat && arithmetic != vspvToneFixed) return vspStsBadArgErr;
    return vspStsNoErr;
}

static ToneDetector& own(VspvToneDetector* detector) { return *reinterpret_cast<ToneDetector*>(detector); }

}  // namespace vspv

using namespace vspv;

VspStatus vspvToneDetectorGetSize(Vsp32s rate, Vsp32s arithmetic, Vsp32s* pSize) {
    if (pSize == nullptr) return vspStsNullPtrErr;
    const VspStatus status = checkKind(rate, arithmetic);
    if (status != vspStsNoErr) return status;
    *pSize = (Vsp32s(sizeof(ToneDetector)) + ReversalDetector::stateBytes(rate, arithmetic == vspvToneFixed) + 7) & ~7;
    return vspStsNoErr;
}

VspStatus vspvToneDetectorInit(VspvToneDetector* pDetector, Vsp32s rate, Vsp32s arithmetic) {
    if (pDetector == nullptr) return vspStsNullPtrErr;
    const VspStatus status = checkKind(rate, arithmetic);
    if (status != vspStsNoErr) return status;
    new (pDetector) ToneDetector(rate, arithmetic == vspvToneFixed);
    return vspStsNoErr;
}

VspStatus vspvToneDetectorProcess(VspvToneDetector* pDetector, const Vsp16s* pSrc, Vsp32s len, Vsp32s* pUsed,
                                  VspvToneEvent* pEvent) {
    if (pDetector == nullptr || pSrc == nullptr || pUsed == nullptr || pEvent == nullptr) return vspStsNullPtrErr;
    if (len < 1) return vspStsSizeErr;
    *pUsed = own(pDetector).process(pSrc, len, pEvent);
    return vspStsNoErr;
}

VspStatus vspvToneDetectorFinish(VspvToneDetector* pDetector, VspvToneEvent* pEvent) {
    if (pDetector == nullptr || pEvent == nullptr) return vspStsNullPtrErr;
    *pEvent = own(pDetector).finish();
    return vspStsNoErr;
}
