// Single frames as RFC 4867 5.3 stores them: an octet with type and quality, the frame.
#pragma once

#include "codec/rfc4867/frame_type.h"

namespace vspv::rfc4867 {

// The octets written; of a frame that has been checked.
Vsp32s packStored(const FrameTypes& types, const Vsp8u* bytes, const VspvFrame& frame, Vsp8u* dst);

VspStatus unpackStored(const FrameTypes& types, const Vsp8u* src, Vsp32s srcBytes, Vsp8u* bytes, VspvFrame* frame,
                       Vsp32s* used);

}  // namespace vspv::rfc4867
