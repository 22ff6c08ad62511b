// The coder of G.722.1 at 7 kHz in floating point, written plainly: every step by its definition, with the standard's
// codes.
#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <vector>

// Type IV cosine transform by a complex Fourier transform of half the length.
class FloatDct {
  public:
    explicit FloatDct(std::size_t length);
    // 2 / length times the sum of products with cosines, square root of it; its own inverse.
    std::vector<float> transform(const std::vector<float>& x) const;

  private:
    using Complex = std::complex<float>;
    void fourier(const Complex* in, Complex* out, std::size_t length, std::size_t stride) const;

    std::size_t length_;
    std::vector<Complex> twiddles_, roots_;
};

constexpr int kFloatFrame = 320;

class FloatG7221Encoder {
  public:
    explicit FloatG7221Encoder(int frameBits) : dct_(kFloatFrame), frameBits_(frameBits) {}
    std::vector<std::uint8_t> encode(const std::int16_t* samples);

  private:
    FloatDct dct_;
    int frameBits_;
    std::array<float, kFloatFrame> last_{};
};

class FloatG7221Decoder {
  public:
    explicit FloatG7221Decoder(int frameBits) : dct_(kFloatFrame), frameBits_(frameBits) {}
    void decode(const std::uint8_t* frame, std::int16_t* samples);

  private:
    FloatDct dct_;
    int frameBits_;
    std::array<float, kFloatFrame / 2> window_{};
    std::uint32_t random_ = 1;
};
