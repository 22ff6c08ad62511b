/**
 * @file
 * Frames of the codec amr in the forms in which they are stored and sent: RFC 4867 storage and RTP payloads, and the
 * interface formats of 3GPP TS 26.101.
 *
 * The octets of a frame are those that vspvEncode makes and vspvDecode takes. Of a frame whose quality is not good these
 * forms tell only that: it comes back as bad. Onset and lost frames
 * are sent as frames without data and have no octets.
 */
#ifndef VSPSVOICE_AMR_H
#define VSPSVOICE_AMR_H

#include "vspsvoice/codec.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Forms of a single frame. */
enum {
    vspvAMRStorage =
        0,          /**< RFC 4867 5.3: an octet with type and quality, the frame; what .amr files have behind "#!AMR\n" */
    vspvAMRIF1 = 1, /**< TS 26.101 4: type, quality, mode indication and request, CRC of the class A bits, the frame */
    vspvAMRIF2 = 2  /**< TS 26.101 Annex A: type in the lowest bits of the first octet; tells nothing of the quality */
};

/** Octets of the longest frame in any of the forms. */
enum { vspvAMRMaxFormBytes = 33 };

/**
 * Puts a frame into one of the forms.
 *
 * @param[in]  pBytes       pFrame->numBytes octets; may be null if there are none
 * @param[in]  pFrame       type, quality, rate and number of octets
 * @param[in]  form         vspvAMRStorage ...
 * @param[in]  modeRequest  vspvAMRIF1: the bit rate that is asked for from the other end, 0 for that of the frame; others:
 * not used
 * @param[out] pDst         room for vspvAMRMaxFormBytes octets
 * @param[out] pDstBytes    number of octets
 * @retval vspStsNullPtrErr  pFrame, pDst or pDstBytes is null, or pBytes is and there are octets
 * @retval vspStsRangeErr    the codec has no such type, quality or rate, there is no such form, or no such mode to ask for
 * @retval vspStsSizeErr     numBytes is not the length of such a frame
 */
VspStatus vspvAMRPackFrame(const Vsp8u* pBytes, const VspvFrame* pFrame, Vsp32s form, Vsp32s modeRequest, Vsp8u* pDst,
                           Vsp32s* pDstBytes);

/**
 * Takes a frame out of one of the forms.
 *
 * @param[in]  pSrc         octets, of which the frame is the beginning
 * @param[in]  srcBytes     number of octets
 * @param[in]  form         vspvAMRStorage ...
 * @param[out] pBytes       room for the codec's longest frame
 * @param[out] pFrame       type, quality, rate and number of octets; a CRC that does not fit makes the quality bad
 * @param[out] pUsed        number of octets of the form
 * @retval vspStsNullPtrErr    pSrc, pBytes, pFrame or pUsed is null
 * @retval vspStsRangeErr      there is no such form
 * @retval vspStsSizeErr       srcBytes < 1, or the frame is cut off
 * @retval vspStsCodeRangeErr  a frame type that the codec does not have
 */
VspStatus vspvAMRUnpackFrame(const Vsp8u* pSrc, Vsp32s srcBytes, Vsp32s form, Vsp8u* pBytes, VspvFrame* pFrame,
                             Vsp32s* pUsed);

/**
 * Makes an RTP payload (RFC 4867 4.3 and 4.4), without interleaving, CRCs and robust sorting.
 *
 * @param[in]  pBytes         octets of all frames behind each other
 * @param[in]  pFrames        numFrames frames: type, quality, rate and number of octets of each
 * @param[in]  numFrames      number of frames, 1 or more
 * @param[in]  octetAligned   0 for bandwidth-efficient, otherwise octet-aligned
 * @param[in]  modeRequest    the bit rate that is asked for from the other end, 0 for no request
 * @param[out] pPayload       room for 1 + 32 * numFrames octets
 * @param[out] pPayloadBytes  number of octets
 * @retval vspStsNullPtrErr  pFrames, pPayload or pPayloadBytes is null, or pBytes is and there are octets
 * @retval vspStsSizeErr     numFrames < 1 or above 1000, or a numBytes is not the length of such a frame
 * @retval vspStsRangeErr    the codec has no such type, quality or rate, or no such mode to ask for
 */
VspStatus vspvAMRPackPayload(const Vsp8u* pBytes, const VspvFrame* pFrames, Vsp32s numFrames, Vsp32s octetAligned,
                             Vsp32s modeRequest, Vsp8u* pPayload, Vsp32s* pPayloadBytes);

/**
 * Takes the frames out of an RTP payload.
 *
 * @param[in]  pPayload      octets
 * @param[in]  payloadBytes  number of octets
 * @param[in]  octetAligned  as in vspvAMRPackPayload
 * @param[in]  maxFrames     number of frames that there is room for
 * @param[out] pModeRequest  the bit rate that is asked for, or 0
 * @param[out] pBytes        room for maxFrames of the codec's longest frames; octets of all frames behind each other
 * @param[out] pFrames       room for maxFrames frames
 * @param[out] pNumFrames    number of frames
 * @retval vspStsNullPtrErr    pPayload, pModeRequest, pBytes, pFrames or pNumFrames is null
 * @retval vspStsSizeErr       payloadBytes < 1, maxFrames < 1, the payload is cut off, or it has more than maxFrames frames
 * @retval vspStsCodeRangeErr  a frame type or a mode that the codec does not have
 */
VspStatus vspvAMRUnpackPayload(const Vsp8u* pPayload, Vsp32s payloadBytes, Vsp32s octetAligned, Vsp32s maxFrames,
                               Vsp32s* pModeRequest, Vsp8u* pBytes, VspvFrame* pFrames, Vsp32s* pNumFrames);

#ifdef __cplusplus
}
#endif

#endif
