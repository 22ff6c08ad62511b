// RTP payloads of RFC 4867 4.3 and 4.4, without interleaving, CRCs and robust sorting. Arguments and statuses are those of
// the exported functions of each codec.
#pragma once

#include "codec/rfc4867/frame_type.h"

namespace vspv::rfc4867 {

VspStatus packPayload(const FrameTypes& types, const Vsp8u* bytes, const VspvFrame* frames, Vsp32s numFrames,
                      Vsp32s octetAligned, Vsp32s modeRequest, Vsp8u* payload, Vsp32s* payloadBytes);

VspStatus unpackPayload(const FrameTypes& types, const Vsp8u* payload, Vsp32s payloadBytes, Vsp32s octetAligned,
                        Vsp32s maxFrames, Vsp32s* modeRequest, Vsp8u* bytes, VspvFrame* frames, Vsp32s* numFrames);

}  // namespace vspv::rfc4867
