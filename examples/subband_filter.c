/* An echo canceller from the functions of vspsc.h alone: filter banks, adaptive filters in their bands, and what is needed
 * around them. 16-bit PCM, 8 kHz, mono. echo_canceller.c calls a complete one instead.
 *
 *     subband_filter far.raw near.raw out.raw
 *
 * The smallest canceller that works: no protection against double talk but a careful step. Without an echo the line stays
 * as it is. The output lags by 104 samples, the delay of the filter bank, which reconstructs signals to about 20 dB: more
 * of an echo is not removed.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vspsc.h>

enum { kOrder = 5, kFrame = 24, kWindow = 128, kBands = 17, kTaps = 43 }; /* 129 ms of echo path */
enum { kDelay = kWindow - kFrame };                                       /* of analysis and synthesis */
enum { kProof = 30 };                                                     /* frames */

/* The filter bank of one signal, with the window that the library has for this shape. */
typedef struct {
    VspSubbandProcessState_32f* state;
    Vsp8u* work;
} Bank;

static int openBank(Bank* bank) {
    Vsp32s stateSize, initSize, workSize;
    Vsp8u* init;
    if (vspsSubbandProcessGetSize_32f(kOrder, kWindow, &stateSize, &initSize, &workSize) != vspStsNoErr) return 0;
    bank->state = malloc((size_t)stateSize);
    bank->work = malloc((size_t)workSize);
    init = malloc((size_t)initSize + 1);
    if (bank->state == NULL || bank->work == NULL || init == NULL) return 0;
    vspsSubbandProcessInit_32f(bank->state, kOrder, kFrame, kWindow, NULL, init);
    free(init);
    return 1;
}

static void closeBank(Bank* bank) {
    free(bank->state);
    free(bank->work);
}

/* The adaptive filters: rows of bands, newest first, and rows of coefficients. */
static Vsp32fc farRows[kTaps][kBands], coefRows[kTaps][kBands];
static Vsp32fc *far[kTaps], *coef[kTaps];

static Vsp32f power(Vsp32fc z) { return z.re * z.re + z.im * z.im; }

static Vsp64f limit(Vsp64f x, Vsp64f least, Vsp64f most) { return x < least ? least : x > most ? most : x; }

/* Estimates the echo in the bands of a near-end frame and adapts the filters by what it leaves of them. */
static void estimate(Vsp32fc* bands, Vsp32fc* echo) {
    static Vsp32f noise[kBands];
    Vsp64f step[kBands];
    int k, t;
    vspsFIRSubband_EC_32fc((const Vsp32fc* const*)far, (const Vsp32fc* const*)coef, echo, kTaps, kBands);
    for (k = 0; k < kBands; k++) {
        Vsp32f energy = 0;
        bands[k].re -= echo[k].re;
        bands[k].im -= echo[k].im;
        for (t = 0; t < kTaps; t++) energy += power(far[t][k]);
        /* Normalised, and slower the more is left: it may be near-end speech. */
        noise[k] += 0.1f * (power(bands[k]) - noise[k]);
        step[k] = 0.2 / (energy + 10 * noise[k] + 1e4);
    }
    vspsFIRSubbandCoeffUpdate_EC_32fc_I(step, (const Vsp32fc* const*)far, bands, coef, kTaps, kBands);
}

/* Takes the echo out of a near-end frame; the result replaces the echo. Where there is none the filters estimate one all
 * the same, from noise. So nothing is subtracted until that is proven to remove power: by its share of each frame's power,
 * added up. And no sample gets larger, so no line gets louder. */
static void subtract(const Vsp32f* near, Vsp32f* echo) {
    static Vsp64f proof;
    Vsp64f before = 0, after = 0, share;
    int n;
    for (n = 0; n < kFrame; n++) {
        const Vsp64f left = (Vsp64f)near[n] - echo[n];
        before += (Vsp64f)near[n] * near[n];
        after += left * left;
    }
    proof = limit(proof + (before - after) / (before + after + 1), 0, 3 * kProof);
    share = limit(proof / kProof - 1, 0, 1);
    for (n = 0; n < kFrame; n++) {
        const Vsp64f most = near[n] < 0 ? -near[n] : near[n];
        echo[n] = (Vsp32f)limit(near[n] - share * echo[n], -most, most);
    }
}

/* One frame; 0 at the end of the input. A last frame that is not whole is filled up with zeros. */
static size_t readFrame(FILE* file, Vsp32f* frame) {
    Vsp16s samples[kFrame];
    const size_t count = fread(samples, sizeof samples[0], kFrame, file);
    size_t i;
    for (i = 0; i < kFrame; i++) frame[i] = i < count ? samples[i] : 0.0f;
    return count;
}

static size_t writeFrame(FILE* file, const Vsp32f* frame, size_t count) {
    Vsp16s samples[kFrame];
    size_t i;
    for (i = 0; i < count; i++) samples[i] = (Vsp16s)(frame[i] > 32767 ? 32767 : frame[i] < -32768 ? -32768 : frame[i]);
    return fwrite(samples, sizeof samples[0], count, file);
}

static int run(FILE* farFile, FILE* nearFile, FILE* outFile) {
    Bank farBank = {0}, nearBank = {0}, outBank = {0};
    Vsp32f frame[kFrame], near[kDelay + kFrame] = {0}; /* near: its newest frame comes last */
    Vsp32fc bands[kBands], echo[kBands], *oldest;
    size_t count;
    int t, ok = openBank(&farBank) && openBank(&nearBank) && openBank(&outBank);

    for (t = 0; t < kTaps; t++) {
        far[t] = farRows[t];
        coef[t] = coefRows[t];
    }
    while (ok) {
        oldest = far[kTaps - 1]; /* becomes the newest */
        for (t = kTaps - 1; t > 0; t--) far[t] = far[t - 1];
        far[0] = oldest;
        readFrame(farFile, frame);
        vspsSubbandAnalysis_32f32fc(frame, far[0], farBank.state, farBank.work);
        memmove(near, near + kFrame, kDelay * sizeof near[0]);
        count = readFrame(nearFile, near + kDelay);
        vspsSubbandAnalysis_32f32fc(near + kDelay, bands, nearBank.state, nearBank.work);
        if (count == 0) break;
        estimate(bands, echo);
        vspsSubbandSynthesis_32fc32f(echo, frame, outBank.state, outBank.work);
        subtract(near, frame);
        ok = writeFrame(outFile, frame, count) == count;
    }
    closeBank(&farBank);
    closeBank(&nearBank);
    closeBank(&outBank);
    return ok && !ferror(farFile) && !ferror(nearFile) && fflush(outFile) == 0;
}

int main(int argc, char** argv) {
    static const char* const mode[] = {"rb", "rb", "wb"};
    FILE* file[3];
    int i;
    if (argc != 4) {
        fprintf(stderr, "usage: subband_filter FAR NEAR OUT\n");
        return EXIT_FAILURE;
    }
    for (i = 0; i < 3; i++) {
        file[i] = fopen(argv[i + 1], mode[i]);
        if (file[i] == NULL) {
            perror(argv[i + 1]);
            return EXIT_FAILURE;
        }
    }
    if (!run(file[0], file[1], file[2])) {
        fprintf(stderr, "subband_filter: cannot allocate, read or write\n");
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
