// The codecs against those of spandsp and libgsm, both ways: their octets and samples are ours.
#include <gsm.h>
#include <spandsp.h>

#include "support/samples.h"
#include "support/speech.h"
#include "voice/coder.h"

namespace vsp::test {

namespace {

// Speech, then everything that 16 bits can hold; whole frames.
Samples signal() {
    Samples all = recordedSpeech();
    const Samples any = samples(16000);
    all.insert(all.end(), any.begin(), any.end());
    all.resize(all.size() / 320 * 320);
    return all;
}

}  // namespace

TEST(VoicePeers, G726InBothOrdersOfBits) {
    const Samples source = signal();
    for (const int rate : {16, 24, 32, 40})
        for (const bool aal2 : {false, true}) {
            const std::string name = (aal2 ? "aal2-g726-" : "g726-") + std::to_string(rate);
            SCOPED_TRACE(name);
            const int packing = aal2 ? G726_PACKING_LEFT : G726_PACKING_RIGHT;
            g726_state_t* state = g726_init(nullptr, rate * 1000, G726_ENCODING_LINEAR, packing);
            const Octets ours = Encoder(codecNamed(name.c_str()))(source);
            Octets theirs(ours.size());
            ASSERT_EQ(std::ssize(ours), g726_encode(state, theirs.data(), source.data(), int(source.size())));
            EXPECT_EQ(theirs, ours);
            g726_free(state);

            state = g726_init(nullptr, rate * 1000, G726_ENCODING_LINEAR, packing);
            Samples decoded(source.size());
            ASSERT_EQ(std::ssize(source), g726_decode(state, decoded.data(), ours.data(), int(ours.size())));
            const Samples heard = Decoder(codecNamed(name.c_str()))(ours);
            for (std::size_t i = 0; i < heard.size(); i++) {
                const bool limited = heard[i] == -32768 || heard[i] == 32764;  // to 14 bits, which spandsp does not do
                if (!limited) {
                    ASSERT_EQ(decoded[i], heard[i]) << "sample " << i;
                }
            }
            g726_free(state);
        }
}

// Of speech: at full scale spandsp does not limit the bands as the Recommendation does.
TEST(VoicePeers, G722) {
    Samples source = recordedSpeech();
    source.resize(source.size() / 320 * 320);
    const Octets ours = Encoder(codecNamed("g722"))(source);
    Octets theirs(ours.size());
    g722_encode_state_t* encoder = g722_encode_init(nullptr, 64000, 0);
    ASSERT_EQ(std::ssize(ours), g722_encode(encoder, theirs.data(), source.data(), int(source.size())));
    EXPECT_EQ(theirs, ours);
    g722_encode_free(encoder);

    g722_decode_state_t* decoder = g722_decode_init(nullptr, 64000, 0);
    Samples decoded(source.size());
    ASSERT_EQ(std::ssize(source), g722_decode(decoder, decoded.data(), ours.data(), int(ours.size())));
    EXPECT_EQ(decoded, Decoder(codecNamed("g722"))(ours));
    g722_decode_free(decoder);
}

TEST(VoicePeers, Gsm) {
    Samples source = signal();
    const Octets ours = Encoder(codecNamed("gsm"))(source);
    const Samples decoded = Decoder(codecNamed("gsm"))(ours);
    const gsm encoder = gsm_create(), decoder = gsm_create();
    for (std::size_t i = 0; i < source.size() / 160; i++) {
        Octets theirs(33), frame(&ours[33 * i], &ours[33 * i] + 33);
        gsm_encode(encoder, &source[160 * i], theirs.data());
        ASSERT_EQ(theirs, frame) << "frame " << i;
        Samples heard(160);
        ASSERT_EQ(0, gsm_decode(decoder, frame.data(), heard.data()));
        ASSERT_EQ(heard, Samples(&decoded[160 * i], &decoded[160 * i] + 160)) << "frame " << i;
    }
    gsm_destroy(encoder);
    gsm_destroy(decoder);
}

}  // namespace vsp::test
