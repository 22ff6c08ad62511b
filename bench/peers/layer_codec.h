// Encoders and decoders of the voice layer, in memory of their own.
#pragma once

#include <cstdlib>
#include <vector>

#include "vspsvoice.h"

inline void require(bool fact) {
    if (!fact) std::abort();
}

template <class Object, VspStatus (*getSize)(const VspvCodec*, Vsp32s*), VspStatus (*init)(Object*, const VspvCodec*)>
class LayerObject {
  public:
    explicit LayerObject(const char* name) {
        const VspvCodec* const codec = vspvFindCodec(name);
        Vsp32s size = 0;
        require(getSize(codec, &size) == vspStsNoErr);
        memory_.resize(std::size_t(size) / sizeof(Vsp64s));
        require(init(get(), codec) == vspStsNoErr);
    }
    Object* get() { return reinterpret_cast<Object*>(memory_.data()); }

  private:
    std::vector<Vsp64s> memory_;
};
using LayerEncoder = LayerObject<VspvEncoder, vspvEncoderGetSize, vspvEncoderInit>;
using LayerDecoder = LayerObject<VspvDecoder, vspvDecoderGetSize, vspvDecoderInit>;
