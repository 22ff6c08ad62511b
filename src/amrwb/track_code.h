// The code of the pulses of a track (3GPP TS 26.190, 5.8): pulses are split by halves of the track, then by halves of
// these, so that the order of pulses costs no bits. A pulse is its place 0 .. 15, with kNegative added for its sign; a
// section of 2^N places has the pulses whose place is taken modulo its size.
#pragma once

#include "core/inline.h"

namespace vsp {

constexpr int kNegative = 16;

// --- Encoding: the pulses in the order in which they were found -------------------------------------------------------

VSP_INLINE constexpr int placeIn(int pulse, int n) { return pulse & ((1 << n) - 1); }

template <int N>
VSP_INLINE constexpr int encode1(int p) {
    return placeIn(p, N) + ((p & kNegative) != 0 ? 1 << N : 0);
}

// In 2N+1 bits: the order of the places tells whether the signs are equal.
template <int N>
VSP_INLINE constexpr int encode2(int p, int q) {
    const int a = placeIn(p, N), b = placeIn(q, N);
    const bool equalSigns = ((p ^ q) & kNegative) == 0;
    const bool qFirst = (a <= b) != equalSigns;  // the larger place if they differ
    const int first = qFirst ? q : p, second = qFirst ? p : q;
    return (placeIn(first, N) << N) + placeIn(second, N) + ((first & kNegative) != 0 ? 1 << 2 * N : 0);
}

// Two of the first three pulses are in the same half: with the rest of them in `rest`.
template <int N, class Rest>
VSP_INLINE constexpr int encodePairInHalf(const int* p, Rest rest) {
    constexpr int kHalf = 1 << (N - 1);
    const auto together = [&](int i, int j) { return ((p[i] ^ p[j]) & kHalf) == 0; };
    const int i = together(0, 1) || together(0, 2) ? 0 : 1, j = together(0, 1) ? 1 : 2, other = 3 - i - j;
    return encode2<N - 1>(p[i], p[j]) + ((p[i] & kHalf) << N) + (rest(p[other]) << 2 * N);
}

template <int N>
VSP_INLINE constexpr int encode3(const int* p) {
    return encodePairInHalf<N>(p, [](int other) { return encode1<N>(other); });
}

// Of one half: 4N+1 bits.
template <int N>
VSP_INLINE constexpr int encode4InHalf(const int* p) {
    return encodePairInHalf<N>(p, [&](int other) { return encode2<N>(other, p[3]); });
}

// The pulses of both halves of a section, in their order.
struct Halves {
    int lower[6], upper[6], lowers, uppers;

    [[gnu::always_inline]] constexpr Halves(const int* p, int count, int half) : lower{}, upper{}, lowers(0), uppers(0) {
        // Without branches, which nothing could predict.
        for (int i = 0; i < count; i++) {
            const bool isUpper = (p[i] & half) != 0;
            lower[lowers] = upper[uppers] = p[i];
            lowers += !isUpper;
            uppers += isUpper;
        }
    }
};

template <int N>
VSP_INLINE constexpr int encode4(const int* p) {
    const Halves h(p, 4, 1 << (N - 1));
    constexpr int M = N - 1;
    int code = 0;
    switch (h.lowers) {
        case 0: code = (1 << (4 * N - 3)) + encode4InHalf<M>(h.upper); break;
        case 1: code = (encode1<M>(h.lower[0]) << (3 * M + 1)) + encode3<M>(h.upper); break;
        case 2: code = (encode2<M>(h.lower[0], h.lower[1]) << (2 * M + 1)) + encode2<M>(h.upper[0], h.upper[1]); break;
        case 3: code = (encode3<M>(h.lower) << N) + encode1<M>(h.upper[0]); break;
        default: code = encode4InHalf<M>(h.lower);
    }
    return code + ((h.lowers & 3) << (4 * N - 2));
}

template <int N>
VSP_INLINE constexpr int encode5(const int* p) {
    const Halves h(p, 5, 1 << (N - 1));
    const bool upper = h.lowers < 3;  // the half with most of them
    const int *most = upper ? h.upper : h.lower, *rest = upper ? h.lower : h.upper;
    const int more = (upper ? h.uppers : h.lowers) - 3;
    // What is left: the fourth and fifth of that half before those of the other one, which are upper ones the other way
    // round.
    const int left[2] = {more > 0 ? most[3] : rest[0], more > 1 ? most[4] : rest[more > 0 ? 0 : 1]};
    return (upper ? 1 << (5 * N - 1) : 0) + (encode3<N - 1>(most) << (2 * N + 1)) + encode2<N>(left[0], left[1]);
}

template <int N>
VSP_INLINE constexpr int encode6(const int* p) {
    const Halves h(p, 6, 1 << (N - 1));
    constexpr int M = N - 1;
    const bool upper = h.lowers < 3;
    const int *most = upper ? h.upper : h.lower, *rest = upper ? h.lower : h.upper;
    const int count = upper ? h.uppers : h.lowers;
    int code = 0;
    switch (count) {
        case 6: code = (encode5<M>(most) << N) + encode1<M>(most[5]); break;
        case 5: code = (encode5<M>(most) << N) + encode1<M>(rest[0]); break;
        case 4: code = (encode4<M>(most) << (2 * M + 1)) + encode2<M>(rest[0], rest[1]); break;
        default: code = (encode3<M>(h.lower) << (3 * M + 1)) + encode3<M>(h.upper);
    }
    return code + (upper ? 1 << (6 * N - 5) : 0) + ((6 - count) << (6 * N - 4));
}

VSP_INLINE int encodeTrack(const int* pulses, int count) {
    constexpr int N = 4;
    switch (count) {
        case 1: return encode1<N>(pulses[0]);
        case 2: return encode2<N>(pulses[0], pulses[1]);
        case 3: return encode3<N>(pulses);
        case 4: return encode4<N>(pulses);
        case 5: return encode5<N>(pulses);
        default: return encode6<N>(pulses);
    }
}

// --- Decoding: calls pulse(place, negative) for each, with `offset` added to the place ---------------------------------

template <int N, class Pulse>
VSP_INLINE constexpr void decode1(int code, int offset, Pulse pulse) {
    pulse(offset + placeIn(code, N), (code >> N & 1) != 0);
}

template <int N, class Pulse>
VSP_INLINE constexpr void decode2(int code, int offset, Pulse pulse) {
    const int first = placeIn(code >> N, N), second = placeIn(code, N);
    const bool negative = (code >> 2 * N & 1) != 0;
    pulse(offset + first, negative);
    pulse(offset + second, second < first ? !negative : negative);
}

template <int N, class Pulse>
VSP_INLINE constexpr void decodePairInHalf(int code, int offset, Pulse pulse) {
    decode2<N - 1>(code, offset + ((code >> (2 * N - 1) & 1) << (N - 1)), pulse);
}

template <int N, class Pulse>
VSP_INLINE constexpr void decode3(int code, int offset, Pulse pulse) {
    decodePairInHalf<N>(code, offset, pulse);
    decode1<N>(code >> 2 * N, offset, pulse);
}

template <int N, class Pulse>
VSP_INLINE constexpr void decode4InHalf(int code, int offset, Pulse pulse) {
    decodePairInHalf<N>(code, offset, pulse);
    decode2<N>(code >> 2 * N, offset, pulse);
}

template <int N, class Pulse>
VSP_INLINE constexpr void decode4(int code, int offset, Pulse pulse) {
    constexpr int M = N - 1, kUpper = 1 << M;
    switch (code >> (4 * N - 2) & 3) {
        case 0: decode4InHalf<M>(code, offset + ((code >> (4 * N - 3) & 1) << M), pulse); break;
        case 1:
            decode1<M>(code >> (3 * M + 1), offset, pulse);
            decode3<M>(code, offset + kUpper, pulse);
            break;
        case 2:
            decode2<M>(code >> (2 * M + 1), offset, pulse);
            decode2<M>(code, offset + kUpper, pulse);
            break;
        default: decode3<M>(code >> N, offset, pulse); decode1<M>(code, offset + kUpper, pulse);
    }
}

template <int N, class Pulse>
VSP_INLINE constexpr void decode5(int code, int offset, Pulse pulse) {
    decode3<N - 1>(code >> (2 * N + 1), offset + ((code >> (5 * N - 1) & 1) << (N - 1)), pulse);
    decode2<N>(code, offset, pulse);
}

template <int N, class Pulse>
VSP_INLINE constexpr void decode6(int code, int offset, Pulse pulse) {
    constexpr int M = N - 1, kUpper = 1 << M;
    const bool upper = (code >> (6 * N - 5) & 1) != 0;
    const int most = offset + (upper ? kUpper : 0), rest = offset + (upper ? 0 : kUpper);
    switch (code >> (6 * N - 4) & 3) {
        case 0:
            decode5<M>(code >> N, most, pulse);
            decode1<M>(code, most, pulse);
            break;
        case 1:
            decode5<M>(code >> N, most, pulse);
            decode1<M>(code, rest, pulse);
            break;
        case 2:
            decode4<M>(code >> (2 * M + 1), most, pulse);
            decode2<M>(code, rest, pulse);
            break;
        default: decode3<M>(code >> (3 * M + 1), offset, pulse); decode3<M>(code, offset + kUpper, pulse);
    }
}

template <class Pulse>
VSP_INLINE void decodeTrack(int code, int count, Pulse pulse) {
    constexpr int N = 4;
    switch (count) {
        case 1: decode1<N>(code, 0, pulse); break;
        case 2: decode2<N>(code, 0, pulse); break;
        case 3: decode3<N>(code, 0, pulse); break;
        case 4: decode4<N>(code, 0, pulse); break;
        case 5: decode5<N>(code, 0, pulse); break;
        default: decode6<N>(code, 0, pulse);
    }
}

}  // namespace vsp
