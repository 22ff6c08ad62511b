#include "codec/rfc4867/storage.h"

#include "codec/rfc4867/bit_string.h"

namespace vspv::rfc4867 {

Vsp32s packStored(const FrameTypes& types, const Vsp8u* bytes, const VspvFrame& frame, Vsp8u* dst) {
    const TypedFrame f = typed(types, frame);
    BitStringWriter writer(dst);
    writer.put(Vsp32u(f.type << 3 | f.good << 2), 8);
    writer.copy(bytes, f.bits);
    writer.align();
    return writer.octets();
}

VspStatus unpackStored(const FrameTypes& types, const Vsp8u* src, Vsp32s srcBytes, Vsp8u* bytes, VspvFrame* frame,
                       Vsp32s* used) {
    if (srcBytes < 1) return vspStsSizeErr;
    BitStringReader reader(src, srcBytes);
    const Vsp32u header = reader.take(8);
    const Vsp32s type = Vsp32s(header >> 3 & 15), bits = bitsOf(types, type);
    if (bits < 0) return vspStsCodeRangeErr;
    if (reader.bitsLeft() < bits) return vspStsSizeErr;
    reader.copy(bytes, bits);
    *frame = frameOf(types, type, (header >> 2 & 1) != 0, bytes);
    *used = reader.octets();
    return vspStsNoErr;
}

}  // namespace vspv::rfc4867
