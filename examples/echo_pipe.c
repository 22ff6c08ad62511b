/* Cancels echo in real time: reads blocks of 10 ms of both ends from standard input, 16-bit PCM at 8 kHz, far end and near
 * end in turn (left and right of a stereo signal), and writes the near end without its echo to standard output.
 *
 *     arecord -t raw -f S16_LE -r 8000 -c 2 | echo_pipe | aplay -t raw -f S16_LE -r 8000
 *
 * The latency is printed before the first block: what the canceller keeps back, and the block itself. */
#include <stdio.h>
#include <stdlib.h>
#include <vspsvoice.h>

enum { kRate = 8000, kBlock = kRate / 100 };

static void cancel(VspvEchoCanceller* canceller) {
    Vsp16s both[2 * kBlock], far[kBlock], near[kBlock], out[kBlock];
    size_t i, count;
    while ((count = fread(both, 2 * sizeof *both, kBlock, stdin)) > 0) {
        for (i = 0; i < count; i++) {
            far[i] = both[2 * i];
            near[i] = both[2 * i + 1];
        }
        vspvEchoCancellerProcess_16s(canceller, far, near, out, (Vsp32s)count);
        if (fwrite(out, sizeof *out, count, stdout) != count || fflush(stdout) != 0) return;
    }
}

int main(void) {
    VspvEchoSettings settings;
    VspvEchoCanceller* canceller;
    Vsp32s size, latency;

    vspvEchoCancellerDefaults(kRate, &settings);
    settings.suppression = 1;
    vspvEchoCancellerGetSize(&settings, &size);
    canceller = malloc((size_t)size);
    if (canceller == NULL || vspvEchoCancellerInit(canceller, &settings) != vspStsNoErr) return EXIT_FAILURE;
    vspvEchoCancellerLatency(canceller, &latency);
    fprintf(stderr, "latency %.1f ms: canceller %.1f ms, block %.1f ms\n", 1000.0 * (latency + kBlock) / kRate,
            1000.0 * latency / kRate, 1000.0 * kBlock / kRate);
    cancel(canceller);
    free(canceller);
    return ferror(stdin) || ferror(stdout) ? EXIT_FAILURE : EXIT_SUCCESS;
}
