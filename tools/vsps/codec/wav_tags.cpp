#include "codec/wav_tags.h"

namespace {

// libsndfile's G.721 (tag 0x0040) is missing: what it codes another G.726 decoder does not follow for long.
constexpr WavTag kTags[] = {
    {0x0006, 8, 1, 1, "pcma", "A-law"},         {0x0007, 8, 1, 1, "pcmu", "mu-law"},
    {0x0031, 0, 65, 320, "gsm", "GSM 6.10"},    {0x0045, 2, 1, 4, "aal2-g726-16", "G.726"},
    {0x0045, 3, 3, 8, "aal2-g726-24", "G.726"}, {0x0045, 4, 1, 2, "aal2-g726-32", "G.726"},
    {0x0045, 5, 5, 8, "aal2-g726-40", "G.726"}, {0x028F, 4, 1, 2, "g722", "G.722"},
};

}  // namespace

const WavTag* wavTag(std::uint32_t tag, std::uint32_t bits) {
    const WavTag* found = nullptr;
    for (const WavTag& t : kTags)
        if (t.tag == tag && (found == nullptr || t.bits == bits)) found = &t;
    return found;
}

const WavTag* wavTagOf(const std::string& codec) {
    for (const WavTag& t : kTags)
        if (codec == t.codec) return &t;
    return nullptr;
}

std::string codecsWithTags() {
    std::string all;
    for (const WavTag& t : kTags) all += (all.empty() ? "" : " ") + std::string(t.codec);
    return all;
}
