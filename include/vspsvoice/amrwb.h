/**
 * @file
 * Frames of the codec amrwb in the forms in which they are stored and sent: RFC 4867 storage and RTP payloads.
 *
 * The octets of a frame are those that vspvEncode makes and vspvDecode takes. Of a frame whose quality is not good these
 * forms tell only that: it comes back as bad. A lost frame is sent as such, has no octets, and comes back as lost.
 */
#ifndef VSPSVOICE_AMRWB_H
#define VSPSVOICE_AMRWB_H

#include "vspsvoice/codec.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Octets of the longest frame as it is stored. */
enum { vspvAMRWBMaxStoredBytes = 61 };

/**
 * Puts a frame into the form in which .awb files have it behind "#!AMR-WB\n" (RFC 4867 5.3): an octet with type and
 * quality, the frame.
 *
 * @param[in]  pBytes     pFrame->numBytes octets; may be null if there are none
 * @param[in]  pFrame     type, quality, rate and number of octets
 * @param[out] pDst       room for vspvAMRWBMaxStoredBytes octets
 * @param[out] pDstBytes  number of octets
 * @retval vspStsNullPtrErr  pFrame, pDst or pDstBytes is null, or pBytes is and there are octets
 * @retval vspStsRangeErr    the codec has no such type, quality or rate
 * @retval vspStsSizeErr     numBytes is not the length of such a frame
 */
VspStatus vspvAMRWBPackFrame(const Vsp8u* pBytes, const VspvFrame* pFrame, Vsp8u* pDst, Vsp32s* pDstBytes);

/**
 * Takes a frame out of the form in which it is stored.
 *
 * @param[in]  pSrc      octets, of which the frame is the beginning
 * @param[in]  srcBytes  number of octets
 * @param[out] pBytes    room for the codec's longest frame
 * @param[out] pFrame    type, quality, rate and number of octets
 * @param[out] pUsed     number of octets of the stored form
 * @retval vspStsNullPtrErr    pSrc, pBytes, pFrame or pUsed is null
 * @retval vspStsSizeErr       srcBytes < 1, or the frame is cut off
 * @retval vspStsCodeRangeErr  a frame type that the codec does not have
 */
VspStatus vspvAMRWBUnpackFrame(const Vsp8u* pSrc, Vsp32s srcBytes, Vsp8u* pBytes, VspvFrame* pFrame, Vsp32s* pUsed);

/**
 * Makes an RTP payload (RFC 4867 4.3 and 4.4), without interleaving, CRCs and robust sorting.
 *
 * @param[in]  pBytes         octets of all frames behind each other
 * @param[in]  pFrames        numFrames frames: type, quality, rate and number of octets of each
 * @param[in]  numFrames      number of frames, 1 or more
 * @param[in]  octetAligned   0 for bandwidth-efficient, otherwise octet-aligned
 * @param[in]  modeRequest    the bit rate that is asked for from the other end, 0 for no request
 * @param[out] pPayload       room for 1 + 61 * numFrames octets
 * @param[out] pPayloadBytes  number of octets
 * @retval vspStsNullPtrErr  pFrames, pPayload or pPayloadBytes is null, or pBytes is and there are octets
 * @retval vspStsSizeErr     numFrames < 1 or above 1000, or a numBytes is not the length of such a frame
 * @retval vspStsRangeErr    the codec has no such type, quality or rate, or no such mode to ask for
 */
VspStatus vspvAMRWBPackPayload(const Vsp8u* pBytes, const VspvFrame* pFrames, Vsp32s numFrames, Vsp32s octetAligned,
                               Vsp32s modeRequest, Vsp8u* pPayload, Vsp32s* pPayloadBytes);

/**
 * Takes the frames out of an RTP payload.
 *
 * @param[in]  pPayload      octets
 * @param[in]  payloadBytes  number of octets
 * @param[in]  octetAligned  as in vspvAMRWBPackPayload
 * @param[in]  maxFrames     number of frames that there is room for
 * @param[out] pModeRequest  the bit rate that is asked for, or 0
 * @param[out] pBytes        room for maxFrames of the codec's longest frames; octets of all frames behind each other
 * @param[out] pFrames       room for maxFrames frames
 * @param[out] pNumFrames    number of frames
 * @retval vspStsNullPtrErr    pPayload, pModeRequest, pBytes, pFrames or pNumFrames is null
 * @retval vspStsSizeErr       payloadBytes < 1, maxFrames < 1, the payload is cut off, or it has more than maxFrames frames
 * @retval vspStsCodeRangeErr  a frame type or a mode that the codec does not have
 */
VspStatus vspvAMRWBUnpackPayload(const Vsp8u* pPayload, Vsp32s payloadBytes, Vsp32s octetAligned, Vsp32s maxFrames,
                                 Vsp32s* pModeRequest, Vsp8u* pBytes, VspvFrame* pFrames, Vsp32s* pNumFrames);

#ifdef __cplusplus
}
#endif

#endif
