// Any samples into any encoder, any octets, types, rates, qualities and losses into any decoder, with the same results at
// every level of the library. A decoder goes on on a copy of its memory every other frame; errors change nothing.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "chosen_level.h"
#include "vspsvoice.h"

namespace {

class Input {
  public:
    Input(const Vsp8u* data, std::size_t size) : at_(data), end_(data + size) {}
    bool empty() const { return at_ == end_; }
    Vsp8u take() { return empty() ? Vsp8u(0) : *at_++; }
    // What is left behind so many octets, and nothing more here.
    Input cut(std::size_t octets) {
        Input rest(at_ + std::min(octets, std::size_t(end_ - at_)), 0);
        rest.end_ = end_;
        end_ = rest.at_;
        return rest;
    }

  private:
    const Vsp8u *at_, *end_;
};

void check(bool good, const char* problem) {
    if (good) return;
    std::fprintf(stderr, "%s\n", problem);
    std::abort();
}

// Samples of a sign, three bits of exponent and four of mantissa each, over and over, for signals that noise does not lead
// to.
class Recording {
  public:
    explicit Recording(Input octets) : all_(octets), rest_(octets) {}
    bool empty() const { return all_.empty(); }
    Vsp16s next() {
        if (rest_.empty()) rest_ = all_;
        const int octet = rest_.take(), magnitude = (2 * (octet & 15) + 33) << (octet / 16 & 7);
        return Vsp16s(octet < 128 ? 4 * (magnitude - 33) : -4 * (magnitude - 33));
    }

  private:
    Input all_, rest_;
};

// What comes out: octets, statuses and samples.
struct Results {
    std::vector<Vsp8u> bytes;
    std::vector<Vsp32s> statuses;
    std::vector<Vsp16s> samples;

    bool operator==(const Results&) const = default;
};

Results code(Input in) {
    Results results;
    const VspvCodec* codec = vspvCodec(in.take() % vspvCodecCount());
    Vsp32s encoderBytes = 0, decoderBytes = 0;
    vspvEncoderGetSize(codec, &encoderBytes);
    vspvDecoderGetSize(codec, &decoderBytes);
    std::vector<Vsp64s> encoderMemory(std::size_t(encoderBytes) / 8), decoderMemory(std::size_t(decoderBytes) / 8);
    vspvEncoderInit(reinterpret_cast<VspvEncoder*>(encoderMemory.data()), codec);
    vspvDecoderInit(reinterpret_cast<VspvDecoder*>(decoderMemory.data()), codec);
    const int quiet = in.take() % 16;  // for pauses
    const Vsp8u settings = in.take();
    results.statuses.push_back(vspvEncoderSetDTX(reinterpret_cast<VspvEncoder*>(encoderMemory.data()), settings % 4));
    constexpr std::size_t kOctetsOfFrame = 5, kMostFrames = 120;
    const bool recorded = (settings & 0xF8) == 0xF0;
    Recording recording(recorded ? in.cut(kOctetsOfFrame * in.take()) : Input(nullptr, 0));

    for (std::size_t n = 0; n < kMostFrames && !in.empty(); n++) {
        const auto encoder = reinterpret_cast<VspvEncoder*>(encoderMemory.data());
        const Vsp8u choice = in.take(), change = in.take();
        std::vector<Vsp16s> samples(std::size_t(codec->frameSamples));
        std::vector<Vsp8u> bytes(std::size_t(codec->maxFrameBytes));
        const int shift = quiet + in.take() % (16 - quiet);
        Vsp32u noise = in.take();  // what comes of it would take too much input
        noise = noise * 256 + in.take();
        for (Vsp16s& s : samples)
            s = !recording.empty() ? recording.next()
                                   : Vsp16s(Vsp16s((noise = noise * 1664525u + 1013904223u) >> 16) >> shift);
        vspvEncoderSetRate(encoder, codec->pBitRates[change % codec->numBitRates]);
        VspvFrame frame{};
        check(vspvEncode(encoder, samples.data(), bytes.data(), &frame) == vspStsNoErr, "a frame is not coded");

        results.bytes.insert(results.bytes.end(), bytes.begin(), bytes.end());

        const int signature = bytes[0] & 0xF3;  // where a codec has one
        if (choice % 2 == 0)
            for (Vsp8u& b : bytes) b = Vsp8u((noise = noise * 1664525u + 1013904223u) >> 24);
        if (choice % 4 == 0) bytes[0] = Vsp8u((bytes[0] & 0x0C) | signature);
        if (choice / 2 % 4 == 0) frame.quality = change / 4 % 8 - 2;
        const bool any = choice / 8 % 4 == 0;  // of any type and rate, with the first length that the decoder takes
        if (choice / 64 == 0) frame.numBytes += change % 3 - 1;
        if (any) {
            frame = {change / 32 - 2, frame.quality, codec->pBitRates[change / 2 % codec->numBitRates], 0};
        }
        const std::vector<Vsp16s> samplesBefore = samples;
        std::vector<Vsp64s> before = decoderMemory;
        VspStatus status;
        do {
            status = vspvDecode(reinterpret_cast<VspvDecoder*>(decoderMemory.data()), bytes.data(), &frame, samples.data());
            if (status != vspStsNoErr)
                check(before == decoderMemory && samples == samplesBefore, "an error changed something");
        } while (any && status == vspStsSizeErr && frame.numBytes++ < codec->maxFrameBytes);
        if (status == vspStsNoErr && choice % 3 == 0) {
            std::vector<Vsp16s> again(samples.size());
            vspvDecode(reinterpret_cast<VspvDecoder*>(before.data()), bytes.data(), &frame, again.data());
            check(again == samples && before == decoderMemory, "a copy of a decoder decodes otherwise");
            decoderMemory = before;
        }
        results.statuses.push_back(status);
        results.samples.insert(results.samples.end(), samples.begin(), samples.end());
    }
    return results;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const Vsp8u* data, std::size_t size) {
    const std::vector<const vsp::Api*> levels = runnableLevels();
    const auto at = [&](const vsp::Api* level) {
        chooseLevel(*level);
        return code(Input(data, size));
    };
    const Results first = at(levels.front());
    for (std::size_t i = 1; i < levels.size(); i++) check(at(levels[i]) == first, "the levels differ");
    return 0;
}
