// Objects of the voice layer.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "vspsvoice.h"

inline void checkVoice(VspStatus status) {
    if (status != vspStsNoErr) throw std::logic_error("voice layer: status " + std::to_string(status));
}

// The memory of an object, of the size that a query tells for some arguments.
template <class Object>
class VoiceObject {
  public:
    template <class GetSize, class... Arguments>
    explicit VoiceObject(GetSize getSize, Arguments... arguments) {
        Vsp32s bytes = 0;
        checkVoice(getSize(arguments..., &bytes));
        memory_.resize((std::size_t(bytes) + sizeof(Vsp64s) - 1) / sizeof(Vsp64s));
    }

    Object* get() { return reinterpret_cast<Object*>(memory_.data()); }

  private:
    std::vector<Vsp64s> memory_;
};
