/**
 * @file
 * What the codec g728 has besides other codecs: a post-filter that may be left out.
 */
#ifndef VSPSVOICE_G728_H
#define VSPSVOICE_G728_H

#include "vspsvoice/codec.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Switches the post-filter of a decoder from the next frame on, as for a signal that is coded again. A decoder begins with
 * it. Lost frames are concealed either way.
 *
 * @param[in,out] pDecoder  initialised decoder of g728
 * @param[in]     on        1 on, 0 off
 * @retval vspStsNullPtrErr  pDecoder is null
 * @retval vspStsBadArgErr   the decoder is one of another codec
 * @retval vspStsRangeErr    on is neither 0 nor 1
 */
VspStatus vspvG728SetPostFilter(VspvDecoder* pDecoder, Vsp32s on);

#ifdef __cplusplus
}
#endif

#endif
