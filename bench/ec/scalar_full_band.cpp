#include "ec/scalar_full_band.h"

#include <new>

#include "ec/full_band_definitions.h"
#include "ec/tone_detect_definitions.h"

namespace {

using namespace vsp;

template <class T>
VspStatus fir(const T* ref, const T* near, T* dst, Vsp32s len, const T* taps, Vsp32s numTaps) {
    plain::fir(ref, near, dst, len, taps, numTaps);
    return vspStsNoErr;
}

template <class T, class Step>
VspStatus nlms(const T* ref, const T* near, const Step* step, T* dst, Vsp32s len, T* taps, Vsp32s numTaps, T* scaledErr) {
    plain::nlms(ref, near, step, dst, len, taps, numTaps, scaledErr);
    return vspStsNoErr;
}

template <class Detector, class State>
VspStatus initTone(State* state, Vsp32s rate) {
    static_assert(sizeof(Detector) <= 72);
    new (state) Detector(rate);
    return vspStsNoErr;
}

template <class Detector, class T, class State>
VspStatus detectTone(const T* src, Vsp32s len, Vsp32s* flag, State* state) {
    Detector detector = *reinterpret_cast<Detector*>(state);
    bool found = false;
    for (int i = 0; i < len; i++) found |= detector.sample(src[i]);
    *reinterpret_cast<Detector*>(state) = detector;
    *flag = found;
    return vspStsNoErr;
}

}  // namespace

void bench::addScalarFullBand(vsp::Api& api) {
    api.vspsFIR_EC_16s = fir;
    api.vspsFIR_EC_32f = fir;
    api.vspsNLMS_EC_16s = nlms;
    api.vspsNLMS_EC_32f = nlms;
    api.vspsToneDetectInit_EC_16s = initTone<plain::ToneDetector_16s>;
    api.vspsToneDetectInit_EC_32f = initTone<plain::ToneDetector_32f>;
    api.vspsToneDetect_EC_16s = detectTone<plain::ToneDetector_16s>;
    api.vspsToneDetect_EC_32f = detectTone<plain::ToneDetector_32f>;
}
