// The full-band filters as they are defined, tap by tap. Arguments are taken as valid.
#pragma once

#include "vspsc/types.h"

namespace vsp::plain {

inline Vsp16s clamp16(Vsp64s x) { return Vsp16s(x > 32767 ? 32767 : x < -32768 ? -32768 : x); }
inline Vsp32s clamp32(Vsp64s x) { return Vsp32s(x > 0x7FFFFFFF ? 0x7FFFFFFF : x < -0x80000000LL ? -0x80000000LL : x); }
inline Vsp32s wrap32(Vsp64s x) { return Vsp32s(Vsp32u(x)); }

inline Vsp32s echoTerm(Vsp16s ref, Vsp16s tap) { return (ref * tap + 0x4000) >> 15; }

inline void fir(const Vsp16s* ref, const Vsp16s* near, Vsp16s* dst, Vsp32s len, const Vsp16s* taps, Vsp32s numTaps) {
    for (Vsp32s n = 0; n < len; n++) {
        Vsp32s y = 0;
        for (Vsp32s k = 0; k < numTaps; k++) y = clamp32(Vsp64s(y) + echoTerm(ref[n - k], taps[k]));
        dst[n] = clamp16(wrap32(Vsp64s(near[n]) - y));
    }
}

inline void fir(const Vsp32f* ref, const Vsp32f* near, Vsp32f* dst, Vsp32s len, const Vsp32f* taps, Vsp32s numTaps) {
    for (Vsp32s n = 0; n < len; n++) {
        Vsp32f y = 0;
        for (Vsp32s k = 0; k < numTaps; k++) y += ref[n - k] * taps[k];
        dst[n] = near[n] - y;
    }
}

inline void nlms(const Vsp16s* ref, const Vsp16s* near, const Vsp32s* step, Vsp16s* dst, Vsp32s len, Vsp16s* taps,
                 Vsp32s numTaps, Vsp16s* scaledErr) {
    Vsp32s w = *scaledErr;
    for (Vsp32s n = 0; n < len; n++) {
        Vsp32s y = 0;
        for (Vsp32s k = 0; k < numTaps; k++) {
            const Vsp32s update = wrap32(Vsp64s(ref[n - k - 1]) * w + 4096) >> 13;
            taps[k] = clamp16(taps[k] + update);
            y = clamp32(Vsp64s(y) + echoTerm(ref[n - k], taps[k]));
        }
        dst[n] = clamp16(wrap32(Vsp64s(near[n]) - y));
        w = wrap32(Vsp64s(dst[n]) * step[n] + 1024) >> 11;
    }
    *scaledErr = clamp16(w);
}

inline void nlms(const Vsp32f* ref, const Vsp32f* near, const Vsp32f* step, Vsp32f* dst, Vsp32s len, Vsp32f* taps,
                 Vsp32s numTaps, Vsp32f* scaledErr) {
    Vsp32f w = *scaledErr;
    for (Vsp32s n = 0; n < len; n++) {
        Vsp32f y = 0;
        for (Vsp32s k = 0; k < numTaps; k++) {
            taps[k] += w * ref[n - k - 1];
            y += ref[n - k] * taps[k];
        }
        dst[n] = near[n] - y;
        w = dst[n] * step[n];
    }
    *scaledErr = w;
}

}  // namespace vsp::plain
