/**
 * @file
 * What the codec g723 has besides other codecs: frames that tell themselves what they are, and filters that may be left
 * out.
 *
 * A frame without data has no octets for vspvEncode. Where a stream keeps the time by the octet 3 in the place of such a
 * frame, as the Recommendation's does, vspvDecode takes this octet as well.
 */
#ifndef VSPSVOICE_G723_H
#define VSPSVOICE_G723_H

#include "vspsvoice/codec.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * What a frame is, by the two lowest bits of its first octet: speech at 6.3 (24 octets) or 5.3 kbit/s (20), a silence
 * descriptor (4), which is told as an update, or no data (1).
 *
 * @param[in]  firstOctet  first octet
 * @param[out] pFrame      type, rate and number of octets; good quality
 * @retval vspStsNullPtrErr  pFrame is null
 */
VspStatus vspvG723Frame(Vsp8u firstOctet, VspvFrame* pFrame);

/**
 * Switches the high-pass filter of an encoder's input from the next frame on. An encoder begins with it.
 *
 * @param[in,out] pEncoder  initialised encoder of g723
 * @param[in]     on        1 on, 0 off
 * @retval vspStsNullPtrErr  pEncoder is null
 * @retval vspStsBadArgErr   the encoder is one of another codec
 * @retval vspStsRangeErr    on is neither 0 nor 1
 */
VspStatus vspvG723SetHighPass(VspvEncoder* pEncoder, Vsp32s on);

/**
 * Switches the pitch and the formant post-filter of a decoder from the next frame on. A decoder begins with them.
 *
 * @param[in,out] pDecoder  initialised decoder of g723
 * @param[in]     on        1 on, 0 off
 * @retval vspStsNullPtrErr  pDecoder is null
 * @retval vspStsBadArgErr   the decoder is one of another codec
 * @retval vspStsRangeErr    on is neither 0 nor 1
 */
VspStatus vspvG723SetPostFilter(VspvDecoder* pDecoder, Vsp32s on);

#ifdef __cplusplus
}
#endif

#endif
