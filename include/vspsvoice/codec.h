/**
 * @file
 * Speech codecs behind one interface: frames of samples to frames of octets and back.
 *
 * A codec is a constant record, found by its name or its number. An encoder makes one frame of octets from one frame of
 * samples, a decoder the reverse; what a frame is, besides its octets, is told by a VspvFrame, which the encoder fills in
 * and the decoder reads. An application that receives packets passes on what it knows of each frame: one that did not
 * arrive is a frame of the quality vspvQualityLost and is concealed.
 */
#ifndef VSPSVOICE_CODEC_H
#define VSPSVOICE_CODEC_H

#include "vspsc/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What a codec can do besides coding: bits of VspvCodec's capabilities. */
enum {
    vspvCodecRates = 1,   /**< it has several bit rates, and each frame may have another */
    vspvCodecDTX = 2,     /**< it has silence descriptors and frames without data */
    vspvCodecConceals = 4 /**< its decoder conceals lost frames */
};

/** A codec, constant data. */
typedef struct {
    const char* name;        /**< for example "g726-32": mostly the RTP encoding name in lower case */
    const char* description; /**< one line for people */
    const char* standard;    /**< where the coding and the order of its bits are given */
    Vsp32s samplingRate;     /**< Hz */
    Vsp32s frameSamples;     /**< samples of a frame */
    Vsp32s maxFrameBytes;    /**< octets of the longest frame */
    Vsp32s numBitRates;      /**< number of bit rates */
    const Vsp32s* pBitRates; /**< bit/s; the first one is what an encoder begins with */
    const char* rtpName;     /**< RTP encoding name, or null where none is registered */
    Vsp32s rtpClockRate;     /**< RTP clock rate, which is not always the sampling rate */
    Vsp32s rtpPayloadType;   /**< static RTP payload type, or -1 */
    Vsp32u capabilities;     /**< vspvCodecRates, vspvCodecDTX, vspvCodecConceals */
} VspvCodec;

/** What a frame contains. All but speech occur with codecs that have vspvCodecDTX only. */
enum {
    vspvFrameSpeech = 0,    /**< speech */
    vspvFrameSIDFirst = 1,  /**< the first silence descriptor of a pause */
    vspvFrameSIDUpdate = 2, /**< a later silence descriptor */
    vspvFrameNoData = 3,    /**< nothing: the encoder sends no octets */
    vspvFrameOnset = 4      /**< amr: a receiver knows that speech begins, but has no octets of it */
};

/** How a frame has arrived. */
enum {
    vspvQualityGood = 0,     /**< as it was sent */
    vspvQualityDegraded = 1, /**< some bits may be wrong; the frame is decoded */
    vspvQualityBad = 2,      /**< it has arrived with errors; a decoder that cannot use any of it conceals it */
    vspvQualityLost = 3      /**< it has not arrived; concealed */
};

/** What is to be known about a frame besides its octets. */
typedef struct {
    Vsp32s type;     /**< vspvFrameSpeech ... */
    Vsp32s quality;  /**< vspvQualityGood ...; an encoder says good */
    Vsp32s bitRate;  /**< bit/s, one of the codec's */
    Vsp32s numBytes; /**< number of octets */
} VspvFrame;

/** Object of an encoder; the memory must be aligned to 8 bytes. */
typedef struct VspvEncoder VspvEncoder;

/** Object of a decoder; the memory must be aligned to 8 bytes. */
typedef struct VspvDecoder VspvDecoder;

/**
 * Number of codecs.
 *
 * @return the number
 */
Vsp32s vspvCodecCount(void);

/**
 * A codec by its number.
 *
 * @param[in] index  0 .. vspvCodecCount() - 1
 * @return the codec, or null for any other index
 */
const VspvCodec* vspvCodec(Vsp32s index);

/**
 * A codec by its name.
 *
 * @param[in] pName  name of the codec or RTP encoding name, in letters of either case
 * @return the codec, or null if there is none or pName is null
 */
const VspvCodec* vspvFindCodec(const char* pName);

/**
 * Octets of a frame of speech.
 *
 * @param[in]  pCodec   a codec, as vspvCodec or vspvFindCodec returns it
 * @param[in]  bitRate  bit/s, one of the codec's
 * @param[out] pBytes   number of octets
 * @retval vspStsNullPtrErr  pCodec or pBytes is null
 * @retval vspStsBadArgErr   pCodec is not such a pointer
 * @retval vspStsRangeErr    the codec does not have this rate
 */
VspStatus vspvSpeechBytes(const VspvCodec* pCodec, Vsp32s bitRate, Vsp32s* pBytes);

/**
 * Size of an encoder.
 *
 * @param[in]  pCodec  a codec, as vspvCodec or vspvFindCodec returns it
 * @param[out] pSize   bytes that the caller must provide
 * @retval vspStsNullPtrErr  pCodec or pSize is null
 * @retval vspStsBadArgErr   pCodec is not such a pointer
 */
VspStatus vspvEncoderGetSize(const VspvCodec* pCodec, Vsp32s* pSize);

/**
 * Formats or resets an encoder, which begins with the codec's first bit rate.
 *
 * @param[out] pEncoder  memory of the size that vspvEncoderGetSize gives
 * @param[in]  pCodec    a codec, as vspvCodec or vspvFindCodec returns it
 * @retval vspStsNullPtrErr  pEncoder or pCodec is null
 * @retval vspStsBadArgErr   pCodec is not such a pointer
 */
VspStatus vspvEncoderInit(VspvEncoder* pEncoder, const VspvCodec* pCodec);

/**
 * Changes the bit rate from the next frame on.
 *
 * @param[in,out] pEncoder  initialised encoder
 * @param[in]     bitRate   bit/s, one of the codec's
 * @retval vspStsNullPtrErr  pEncoder is null
 * @retval vspStsRangeErr    the codec does not have this rate
 */
VspStatus vspvEncoderSetRate(VspvEncoder* pEncoder, Vsp32s bitRate);

/**
 * Switches discontinuous transmission from the next frame on: in pauses the encoder sends silence descriptors and frames
 * without data. An encoder begins without it.
 *
 * @param[in,out] pEncoder  initialised encoder
 * @param[in]     mode      0 off, 1 on; amr: 1 or 2, the option of the voice activity detector
 * @retval vspStsNullPtrErr  pEncoder is null
 * @retval vspStsRangeErr    no such mode; without vspvCodecDTX there is mode 0 only
 */
VspStatus vspvEncoderSetDTX(VspvEncoder* pEncoder, Vsp32s mode);

/**
 * Encodes a frame.
 *
 * @param[in,out] pEncoder  initialised encoder
 * @param[in]     pSamples  frameSamples samples
 * @param[out]    pBytes    room for maxFrameBytes octets, of which numBytes are written
 * @param[out]    pFrame    type, rate and number of octets; good quality
 * @retval vspStsNullPtrErr  pEncoder, pSamples, pBytes or pFrame is null
 */
VspStatus vspvEncode(VspvEncoder* pEncoder, const Vsp16s* pSamples, Vsp8u* pBytes, VspvFrame* pFrame);

/**
 * Size of a decoder.
 *
 * @param[in]  pCodec  a codec, as vspvCodec or vspvFindCodec returns it
 * @param[out] pSize   bytes that the caller must provide
 * @retval vspStsNullPtrErr  pCodec or pSize is null
 * @retval vspStsBadArgErr   pCodec is not such a pointer
 */
VspStatus vspvDecoderGetSize(const VspvCodec* pCodec, Vsp32s* pSize);

/**
 * Formats or resets a decoder.
 *
 * @param[out] pDecoder  memory of the size that vspvDecoderGetSize gives
 * @param[in]  pCodec    a codec, as vspvCodec or vspvFindCodec returns it
 * @retval vspStsNullPtrErr  pDecoder or pCodec is null
 * @retval vspStsBadArgErr   pCodec is not such a pointer
 */
VspStatus vspvDecoderInit(VspvDecoder* pDecoder, const VspvCodec* pCodec);

/**
 * Decodes a frame, or conceals one.
 *
 * Any content of the octets is decoded, but for what a codec can tell to be no frame of its own. Of a lost frame nothing
 * but the quality counts.
 *
 * @param[in,out] pDecoder  initialised decoder
 * @param[in]     pBytes    numBytes octets; may be null if the frame is lost or has none
 * @param[in]     pFrame    type, quality, rate and number of octets
 * @param[out]    pSamples  frameSamples samples
 * @retval vspStsNullPtrErr    pDecoder, pFrame or pSamples is null, or pBytes is and the frame should have octets
 * @retval vspStsRangeErr      type, quality or rate is none that the codec has
 * @retval vspStsSizeErr       numBytes is not the length of such a frame
 * @retval vspStsCodeRangeErr  a good or degraded frame whose octets are not of this codec (gsm: the signature is missing)
 */
VspStatus vspvDecode(VspvDecoder* pDecoder, const Vsp8u* pBytes, const VspvFrame* pFrame, Vsp16s* pSamples);

#ifdef __cplusplus
}
#endif

#endif
