// Frames as they are stored and as RTP carries them.
#include "codec/amrwb/frame.h"
#include "codec/rfc4867/payload.h"
#include "codec/rfc4867/storage.h"

#pragma GCC visibility push(default)  // of what the library exports
#include "vspsvoice/amrwb.h"
#pragma GCC visibility pop

using namespace vspv;
using namespace vspv::amrwb;

VspStatus vspvAMRWBPackFrame(const Vsp8u* pBytes, const VspvFrame* pFrame, Vsp8u* pDst, Vsp32s* pDstBytes) {
    if (pFrame == nullptr || pDst == nullptr || pDstBytes == nullptr) return vspStsNullPtrErr;
    if (pBytes == nullptr && typed(kFrameTypes, *pFrame).bits > 0) return vspStsNullPtrErr;
    const VspStatus status = checkSent(kFrameTypes, *pFrame);
    if (status != vspStsNoErr) return status;
    *pDstBytes = rfc4867::packStored(kFrameTypes, pBytes, *pFrame, pDst);
    return vspStsNoErr;
}

VspStatus vspvAMRWBUnpackFrame(const Vsp8u* pSrc, Vsp32s srcBytes, Vsp8u* pBytes, VspvFrame* pFrame, Vsp32s* pUsed) {
    if (pSrc == nullptr || pBytes == nullptr || pFrame == nullptr || pUsed == nullptr) return vspStsNullPtrErr;
    return rfc4867::unpackStored(kFrameTypes, pSrc, srcBytes, pBytes, pFrame, pUsed);
}

VspStatus vspvAMRWBPackPayload(const Vsp8u* pBytes, const VspvFrame* pFrames, Vsp32s numFrames, Vsp32s octetAligned,
                               Vsp32s modeRequest, Vsp8u* pPayload, Vsp32s* pPayloadBytes) {
    return rfc4867::packPayload(kFrameTypes, pBytes, pFrames, numFrames, octetAligned, modeRequest, pPayload,
                                pPayloadBytes);
}

VspStatus vspvAMRWBUnpackPayload(const Vsp8u* pPayload, Vsp32s payloadBytes, Vsp32s octetAligned, Vsp32s maxFrames,
                                 Vsp32s* pModeRequest, Vsp8u* pBytes, VspvFrame* pFrames, Vsp32s* pNumFrames) {
    return rfc4867::unpackPayload(kFrameTypes, pPayload, payloadBytes, octetAligned, maxFrames, pModeRequest, pBytes,
                                  pFrames, pNumFrames);
}
