/* Brings speech to an even level: 16-bit PCM, 8 kHz, mono, from standard input to standard output.
 *
 *     sox in.wav -t s16 -r 8000 -c 1 - | level_control | sox -t s16 -r 8000 -c 1 - out.wav
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vspsc.h>

enum { kBlock = 160 }; /* 20 ms; any multiple of 8 gives the same samples */

static int fail(const char* reason) {
    fprintf(stderr, "level_control: %s\n", reason);
    return EXIT_FAILURE;
}

int main(void) {
    VspALCState_G169_16s* state = NULL;
    Vsp16s samples[kBlock];
    Vsp32s stateSize = 0;
    size_t count = 0;

    vspsALCGetStateSize_G169_16s(&stateSize);
    state = malloc((size_t)stateSize);
    if (state == NULL) return fail("out of memory");
    vspsALCInit_G169_16s(state);
    vspsALCSetLevel_G169_16s(state, 20.0f, 1.0f); /* speech to -20 dB, peaks to -1 dB of full scale */
    vspsALCSetGain_G169_16s(state, 12.0f);        /* amplify by 12 dB at most */

    while ((count = fread(samples, sizeof samples[0], kBlock, stdin)) > 0) {
        memset(samples + count, 0, (kBlock - count) * sizeof samples[0]); /* the last block may be short */
        vspsALC_G169_16s(samples, samples, kBlock, state);
        if (fwrite(samples, sizeof samples[0], count, stdout) != count) break;
    }
    free(state);
    if (ferror(stdin)) return fail("cannot read");
    if (fflush(stdout) != 0 || ferror(stdout)) return fail("cannot write");
    return EXIT_SUCCESS;
}
