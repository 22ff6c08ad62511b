// Numbers in the headers of WAV files.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

constexpr std::uint32_t kUnknownWavLength = 0x7ffff000;  // octets, in the header of a file on a pipe

inline void put(std::string& bytes, std::uint32_t value, int size) {
    for (int i = 0; i < size; i++) bytes += static_cast<char>(value >> 8 * i);
}

// Of the octets from a place on; 0 beyond the end.
inline std::uint32_t numberAt(std::string_view bytes, std::size_t at, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size && at + i < bytes.size(); i++)
        value |= std::uint32_t(static_cast<unsigned char>(bytes[at + i])) << 8 * i;
    return value;
}
