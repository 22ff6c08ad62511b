/* Where there is speech in 16-bit PCM, mono, 8000 Hz, from standard input: a line for each stretch.
 *
 *     sox call.wav -t s16 -r 8000 -c 1 - | speech_detector
 */
#include <stdio.h>
#include <stdlib.h>
#include <vspsvoice.h>

/* Goes through the decisions about frames of 20 ms; returns whether the last one is speech. */
static int print(const VspvSpeechDecision* decisions, Vsp32s count, Vsp32s frame, int talking) {
    Vsp32s i;

    for (i = 0; i < count; i++) {
        if (decisions[i].speech && !talking) printf("%8.2f s", 0.02 * (frame + i));
        if (!decisions[i].speech && talking) printf(" to %8.2f s\n", 0.02 * (frame + i));
        talking = decisions[i].speech;
    }
    return talking;
}

int main(void) {
    Vsp16s samples[1000]; /* any number will do */
    VspvSpeechDecision decisions[(1000 + vspvSpeechFrame - 1) / vspvSpeechFrame];
    Vsp32s size = 0, count, frame = 0;
    VspvSpeechDetector* detector;
    size_t length;
    int talking = 0;

    vspvSpeechDetectorGetSize(1, &size);
    detector = malloc((size_t)size);
    if (detector == NULL) return EXIT_FAILURE;
    vspvSpeechDetectorInit(detector, 1);
    while ((length = fread(samples, sizeof *samples, 1000, stdin)) > 0) {
        vspvSpeechDetectorProcess(detector, samples, (Vsp32s)length, decisions, &count);
        talking = print(decisions, count, frame, talking);
        frame += count;
    }
    vspvSpeechDetectorFinish(detector, decisions, &count);
    talking = print(decisions, count, frame, talking);
    if (talking) printf(" to the end\n");
    free(detector);
    return fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
