// What a WAV file can hold besides PCM, by the format tag in its header.
#pragma once

#include <cstdint>
#include <string>

struct WavTag {
    std::uint32_t tag, bits;  // bits a sample; 0 if a block is not of whole ones
    std::uint32_t blockOctets, blockSamples;
    const char *codec, *description;
};

// Null if there is none.
const WavTag* wavTag(std::uint32_t tag, std::uint32_t bits);
const WavTag* wavTagOf(const std::string& codec);

std::string codecsWithTags();
