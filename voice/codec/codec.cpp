// The interface of the codecs: the list of them, the checks, and the call of a family's function.
#include "codec/codec.h"

namespace vspv {

static constexpr const Codec* kCodecs[] = {
    &kPcma,        &kPcmu,        &kG722,        &kGsm,         &kG726_16, &kG726_24, &kG726_32, &kG726_40,
    &kAal2G726_16, &kAal2G726_24, &kAal2G726_32, &kAal2G726_40, &kG729,    &kG729A,   &kG729D,   &kG729E,
    &kG729I,       &kAmr,         &kAmrWb,       &kG7221,       &kG7221C,  &kG728,    &kG723,
};
static constexpr Vsp32s kCodecCount = sizeof kCodecs / sizeof kCodecs[0];

// What lies at the beginning of an object; behind it is the family's part.
struct alignas(8) EncoderHead {
    const Codec* codec;
    Vsp32s bitRate;
};
struct alignas(8) DecoderHead {
    const Codec* codec;
};

static EncoderHead* headOf(VspvEncoder* encoder) { return reinterpret_cast<EncoderHead*>(encoder); }
static DecoderHead* headOf(VspvDecoder* decoder) { return reinterpret_cast<DecoderHead*>(decoder); }

template <class Head>
static void* behind(Head* head) {
    return head + 1;
}

// Of an object, in multiples of its alignment.
static Vsp32s sizeWith(unsigned long head, Vsp32s rest) { return (Vsp32s(head) + rest + 7) & ~7; }

static const Codec* listed(const VspvCodec* record) {
    for (const Codec* codec : kCodecs)
        if (&codec->record == record) return codec;
    return nullptr;
}

static char lower(char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; }

static bool sameName(const char* a, const char* b) {
    while (*a != 0 && lower(*a) == lower(*b)) a++, b++;
    return lower(*a) == lower(*b);
}

bool hasRate(const VspvCodec& codec, Vsp32s bitRate) {
    for (Vsp32s i = 0; i < codec.numBitRates; i++)
        if (codec.pBitRates[i] == bitRate) return true;
    return false;
}

void* partOf(VspvEncoder* encoder, const Codec& codec) {
    return headOf(encoder)->codec == &codec ? behind(headOf(encoder)) : nullptr;
}

void* partOf(VspvDecoder* decoder, const Codec& codec) {
    return headOf(decoder)->codec == &codec ? behind(headOf(decoder)) : nullptr;
}

VspStatus checkSpeech(const Codec& codec, const Vsp8u*, const VspvFrame& frame) {
    if (frame.type != vspvFrameSpeech || !hasRate(codec.record, frame.bitRate)) return vspStsRangeErr;
    return frame.numBytes == codec.record.maxFrameBytes ? vspStsNoErr : vspStsSizeErr;
}

}  // namespace vspv

using namespace vspv;

Vsp32s vspvCodecCount(void) { return kCodecCount; }

const VspvCodec* vspvCodec(Vsp32s index) { return index >= 0 && index < kCodecCount ? &kCodecs[index]->record : nullptr; }

const VspvCodec* vspvFindCodec(const char* pName) {
    if (pName == nullptr) return nullptr;
    for (const Codec* codec : kCodecs)
        if (sameName(codec->record.name, pName)) return &codec->record;
    for (const Codec* codec : kCodecs)
        if (codec->record.rtpName != nullptr && sameName(codec->record.rtpName, pName)) return &codec->record;
    return nullptr;
}

VspStatus vspvSpeechBytes(const VspvCodec* pCodec, Vsp32s bitRate, Vsp32s* pBytes) {
    if (pCodec == nullptr || pBytes == nullptr) return vspStsNullPtrErr;
    const Codec* codec = listed(pCodec);
    if (codec == nullptr) return vspStsBadArgErr;
    if (!hasRate(*pCodec, bitRate)) return vspStsRangeErr;
    const Vsp32s bits = Vsp32s(Vsp64s(bitRate) * pCodec->frameSamples / pCodec->samplingRate);
    const bool oneLength = codec->family->check == checkSpeech;
    *pBytes = oneLength ? pCodec->maxFrameBytes : (bits + 7) / 8;
    return vspStsNoErr;
}

VspStatus vspvEncoderGetSize(const VspvCodec* pCodec, Vsp32s* pSize) {
    if (pCodec == nullptr || pSize == nullptr) return vspStsNullPtrErr;
    const Codec* codec = listed(pCodec);
    if (codec == nullptr) return vspStsBadArgErr;
    *pSize = sizeWith(sizeof(EncoderHead), codec->family->encoderBytes());
    return vspStsNoErr;
}

VspStatus vspvEncoderInit(VspvEncoder* pEncoder, const VspvCodec* pCodec) {
    if (pEncoder == nullptr || pCodec == nullptr) return vspStsNullPtrErr;
    const Codec* codec = listed(pCodec);
    if (codec == nullptr) return vspStsBadArgErr;
    EncoderHead* head = headOf(pEncoder);
    *head = {codec, pCodec->pBitRates[0]};
    codec->family->initEncoder(behind(head), *codec);
    return vspStsNoErr;
}

VspStatus vspvEncoderSetRate(VspvEncoder* pEncoder, Vsp32s bitRate) {
    if (pEncoder == nullptr) return vspStsNullPtrErr;
    EncoderHead* head = headOf(pEncoder);
    if (!hasRate(head->codec->record, bitRate)) return vspStsRangeErr;
    head->bitRate = bitRate;
    return vspStsNoErr;
}

VspStatus vspvEncoderSetDTX(VspvEncoder* pEncoder, Vsp32s mode) {
    if (pEncoder == nullptr) return vspStsNullPtrErr;
    EncoderHead* head = headOf(pEncoder);
    const Codec& codec = *head->codec;
    if (codec.family->setDTX == nullptr) return mode == 0 ? vspStsNoErr : vspStsRangeErr;
    return codec.family->setDTX(behind(head), codec, mode) ? vspStsNoErr : vspStsRangeErr;
}

VspStatus vspvEncode(VspvEncoder* pEncoder, const Vsp16s* pSamples, Vsp8u* pBytes, VspvFrame* pFrame) {
    if (pEncoder == nullptr || pSamples == nullptr || pBytes == nullptr || pFrame == nullptr) return vspStsNullPtrErr;
    EncoderHead* head = headOf(pEncoder);
    const Codec& codec = *head->codec;
    VspvFrame frame = {vspvFrameSpeech, vspvQualityGood, head->bitRate, codec.record.maxFrameBytes};
    codec.family->encode(behind(head), codec, pSamples, pBytes, frame);
    *pFrame = frame;
    return vspStsNoErr;
}

VspStatus vspvDecoderGetSize(const VspvCodec* pCodec, Vsp32s* pSize) {
    if (pCodec == nullptr || pSize == nullptr) return vspStsNullPtrErr;
    const Codec* codec = listed(pCodec);
    if (codec == nullptr) return vspStsBadArgErr;
    *pSize = sizeWith(sizeof(DecoderHead), codec->family->decoderBytes());
    return vspStsNoErr;
}

VspStatus vspvDecoderInit(VspvDecoder* pDecoder, const VspvCodec* pCodec) {
    if (pDecoder == nullptr || pCodec == nullptr) return vspStsNullPtrErr;
    const Codec* codec = listed(pCodec);
    if (codec == nullptr) return vspStsBadArgErr;
    DecoderHead* head = headOf(pDecoder);
    head->codec = codec;
    codec->family->initDecoder(behind(head), *codec);
    return vspStsNoErr;
}

VspStatus vspvDecode(VspvDecoder* pDecoder, const Vsp8u* pBytes, const VspvFrame* pFrame, Vsp16s* pSamples) {
    if (pDecoder == nullptr || pFrame == nullptr || pSamples == nullptr) return vspStsNullPtrErr;
    const VspvFrame frame = *pFrame;
    const bool noOctets = frame.quality == vspvQualityLost || frame.type == vspvFrameNoData || frame.type == vspvFrameOnset;
    if (pBytes == nullptr && !noOctets) return vspStsNullPtrErr;
    if (frame.quality < vspvQualityGood || frame.quality > vspvQualityLost) return vspStsRangeErr;
    const Codec& codec = *headOf(pDecoder)->codec;
    void* decoder = behind(headOf(pDecoder));
    if (frame.quality != vspvQualityLost) {
        const VspStatus status = codec.family->check(codec, pBytes, frame);
        if (status != vspStsNoErr) return status;
    }
    const auto make = frame.quality >= vspvQualityBad ? codec.family->conceal : codec.family->decode;
    make(decoder, codec, pBytes, frame, pSamples);
    return vspStsNoErr;
}
