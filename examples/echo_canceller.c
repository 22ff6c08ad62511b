/* Removes the echo of a far-end signal from a near-end signal: 16-bit PCM, 8 kHz, mono. The output is in time with the near
 * end.
 *
 *     echo_canceller far.raw near.raw out.raw
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vspsvoice.h>

enum { kBlock = 160 }; /* samples; any other length gives the same output */

/* Returns the number of samples. Behind the end there is silence. */
static Vsp32s readBlock(FILE* file, Vsp16s* block) {
    const size_t count = fread(block, sizeof *block, kBlock, file);
    memset(block + count, 0, (kBlock - count) * sizeof *block);
    return (Vsp32s)count;
}

static int run(VspvEchoCanceller* canceller, FILE* farFile, FILE* nearFile, FILE* outFile) {
    Vsp16s far[kBlock], near[kBlock], out[kBlock];
    Vsp32s early, late = 0, skipped, count; /* output that comes before the near end has begun, and that is still to come */
    VspvEchoStatus status;

    vspvEchoCancellerLatency(canceller, &early);
    do {
        readBlock(farFile, far);
        late += readBlock(nearFile, near);
        vspvEchoCancellerProcess_16s(canceller, far, near, out, kBlock);
        skipped = early < kBlock ? early : kBlock;
        early -= skipped;
        count = late < kBlock - skipped ? late : kBlock - skipped;
        late -= count;
        if (fwrite(out + skipped, sizeof *out, (size_t)count, outFile) != (size_t)count) return 0;
    } while (late > 0);
    vspvEchoCancellerStatus(canceller, &status);
    if (status.echoFound) fprintf(stderr, "echo found behind a delay of %.0f ms\n", status.bulkDelayMs);
    return !ferror(farFile) && !ferror(nearFile) && fflush(outFile) == 0;
}

int main(int argc, char** argv) {
    static const char* const mode[] = {"rb", "rb", "wb"};
    VspvEchoSettings settings;
    VspvEchoCanceller* canceller;
    FILE* file[3];
    Vsp32s size, i, good;

    if (argc != 4) {
        fprintf(stderr, "usage: echo_canceller FAR NEAR OUT\n");
        return EXIT_FAILURE;
    }
    for (i = 0; i < 3; i++)
        if ((file[i] = fopen(argv[i + 1], mode[i])) == NULL) {
            perror(argv[i + 1]);
            return EXIT_FAILURE;
        }
    vspvEchoCancellerDefaults(8000, &settings);
    vspvEchoCancellerGetSize(&settings, &size);
    canceller = malloc((size_t)size);
    good = canceller != NULL && vspvEchoCancellerInit(canceller, &settings) == vspStsNoErr &&
           run(canceller, file[0], file[1], file[2]);
    free(canceller);
    if (!good) fprintf(stderr, "echo_canceller: cannot allocate, read or write\n");
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
