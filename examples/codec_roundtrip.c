/* What speech sounds like behind a codec and a network that loses every tenth frame: 16-bit PCM, mono, at the codec's
 * sampling rate, from standard input to standard output.
 *
 *     sox in.wav -t s16 -r 8000 -c 1 - | codec_roundtrip g726-32 | sox -t s16 -r 8000 -c 1 - out.wav
 */
#include <stdio.h>
#include <stdlib.h>
#include <vspsvoice.h>

/* Returns whether all could be written. */
static int run(const VspvCodec* codec, VspvEncoder* encoder, VspvDecoder* decoder, Vsp16s* samples, Vsp8u* bytes) {
    const size_t length = (size_t)codec->frameSamples;
    Vsp32s frames = 0, lost = 0, octets = 0;

    vspvEncoderInit(encoder, codec);
    vspvDecoderInit(decoder, codec);
    for (; fread(samples, sizeof *samples, length, stdin) == length; frames++) {
        VspvFrame frame;
        vspvEncode(encoder, samples, bytes, &frame);
        octets += frame.numBytes;
        if (frames % 10 == 9) {
            frame.quality = vspvQualityLost;
            lost++;
        }
        vspvDecode(decoder, bytes, &frame, samples);
        if (fwrite(samples, sizeof *samples, length, stdout) != length) return 0;
    }
    fprintf(stderr, "%s: %d frames, %d octets, %d lost\n", codec->rtpName, frames, octets, lost);
    return fflush(stdout) == 0;
}

int main(int argc, char** argv) {
    const VspvCodec* codec = vspvFindCodec(argc > 1 ? argv[1] : "");
    Vsp32s encoderSize = 0, decoderSize = 0, i;
    void *encoder, *decoder, *samples, *bytes;
    int good;

    if (codec == NULL) {
        fprintf(stderr, "usage: codec_roundtrip CODEC, one of\n");
        for (i = 0; i < vspvCodecCount(); i++)
            fprintf(stderr, "  %-14s%s\n", vspvCodec(i)->name, vspvCodec(i)->description);
        return EXIT_FAILURE;
    }
    vspvEncoderGetSize(codec, &encoderSize);
    vspvDecoderGetSize(codec, &decoderSize);
    encoder = malloc((size_t)encoderSize);
    decoder = malloc((size_t)decoderSize);
    samples = malloc((size_t)codec->frameSamples * sizeof(Vsp16s));
    bytes = malloc((size_t)codec->maxFrameBytes);
    good = encoder && decoder && samples && bytes && run(codec, encoder, decoder, samples, bytes);
    free(encoder);
    free(decoder);
    free(samples);
    free(bytes);
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
