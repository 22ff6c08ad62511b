#include "voice/float_g7221.h"

#include <algorithm>
#include <cmath>

#include "g7221/region_power_tables.h"
#include "g7221/vector_code_tables.h"

namespace {

constexpr float kPi = 3.14159265358979F;
constexpr int kRegions = 14, kRegion = 20, kControls = 16;
constexpr float kScale = 22.627F;  // of coefficients against those of the standard

struct Choice {
    std::array<int, kRegions> category;
    std::array<int, kControls - 1> balance;
};

class BitWriter {
  public:
    explicit BitWriter(int bits) : bytes_(std::size_t(bits / 8), 0xFF), bits_(bits) {}
    void put(unsigned value, int count) {
        for (int i = count - 1; i >= 0 && at_ < bits_; i--, at_++)
            if ((value >> i & 1) == 0) bytes_[std::size_t(at_ / 8)] &= std::uint8_t(~(0x80 >> at_ % 8));
    }
    std::vector<std::uint8_t> bytes() { return bytes_; }

  private:
    std::vector<std::uint8_t> bytes_;
    int bits_, at_ = 0;
};

class BitReader {
  public:
    BitReader(const std::uint8_t* bytes, int bits) : bytes_(bytes), bits_(bits) {}
    int left() const { return bits_ - at_; }
    bool ranOut() const { return ranOut_; }
    int bit() {
        ranOut_ = ranOut_ || at_ >= bits_;
        if (ranOut_) return 1;
        const int bit = bytes_[at_ / 8] >> (7 - at_ % 8) & 1;
        at_++;
        return bit;
    }
    int number(int count) {
        int x = 0;
        for (int i = 0; i < count; i++) x = 2 * x + bit();
        return x;
    }
    template <class Tree>
    int symbol(const Tree& tree) {
        int node = 0;
        do node = tree[node][bit()];
        while (node > 0);
        return -node;
    }

  private:
    const std::uint8_t* bytes_;
    int bits_, at_ = 0;
    bool ranOut_ = false;
};

float windowAt(std::size_t i) { return std::sin(kPi * (float(i) + 0.5F) / (2 * kFloatFrame)); }

const std::array<float, kFloatFrame>& window() {
    static const auto made = [] {
        std::array<float, kFloatFrame> w{};
        for (std::size_t i = 0; i < w.size(); i++) w[i] = windowAt(i);
        return w;
    }();
    return made;
}

float deviationOf(int index) { return std::pow(2.0F, float(index) / 2); }

Choice categorize(const std::array<int, kRegions>& index, int bits) {
    if (bits > kFloatFrame) bits = kFloatFrame + (bits - kFloatFrame) * 5 / 8;
    int offset = -32;
    const auto categoryAt = [&](int region, int with) {
        return std::clamp((with - index[std::size_t(region)]) >> 1, 0, 7);
    };
    for (int step = 32; step > 0; step /= 2) {
        int expected = 0;
        for (int r = 0; r < kRegions; r++) expected += vsp::expected_bits_table[categoryAt(r, offset + step)];
        if (expected >= bits - 32) offset += step;
    }
    std::array<int, kRegions> finer{}, coarser{};
    int finerBits = 0;
    for (int r = 0; r < kRegions; r++) {
        finer[std::size_t(r)] = coarser[std::size_t(r)] = categoryAt(r, offset);
        finerBits += vsp::expected_bits_table[finer[std::size_t(r)]];
    }
    int coarserBits = finerBits, first = kControls, end = kControls;
    std::array<int, 2 * kControls> list{};
    for (int i = 0; i < kControls - 1; i++) {
        std::size_t chosen = 0;
        if (finerBits + coarserBits <= 2 * bits) {
            int least = 99;
            for (std::size_t r = 0; r < kRegions; r++) {
                const int urgency = offset - index[r] - 2 * finer[r];
                if (finer[r] > 0 && urgency < least) least = urgency, chosen = r;
            }
            finerBits -= vsp::expected_bits_table[finer[chosen]--];
            finerBits += vsp::expected_bits_table[finer[chosen]];
            list[std::size_t(--first)] = int(chosen);
        } else {
            int most = -99;
            for (std::size_t r = kRegions; r-- > 0;) {
                const int urgency = offset - index[r] - 2 * coarser[r];
                if (coarser[r] < 7 && urgency > most) most = urgency, chosen = r;
            }
            coarserBits -= vsp::expected_bits_table[coarser[chosen]++];
            coarserBits += vsp::expected_bits_table[coarser[chosen]];
            list[std::size_t(end++)] = int(chosen);
        }
    }
    Choice choice{finer, {}};
    std::copy_n(list.begin() + first, choice.balance.size(), choice.balance.begin());
    return choice;
}

struct Vectors {
    std::array<int, 10> symbols{};
    std::array<int, kRegion> levels{};
    int bits = 0;
};

Vectors quantize(const float* coefs, int category, int index) {
    Vectors made;
    if (category >= 7) return made;
    const vsp::VectorShape& shape = vsp::kVectorShapes[category];
    const float step = vsp::step_size_inverse_table[category] / 8192.0F / deviationOf(index);
    const float deadZone = vsp::int_dead_zone[category] / 8192.0F;
    for (std::size_t i = 0; i < kRegion; i++)
        made.levels[i] = std::min(shape.levels - 1, int(std::fabs(coefs[i]) * step + deadZone));
    for (int v = 0; v < shape.vectors; v++) {
        int symbol = 0;
        for (int i = 0; i < shape.dimension; i++)
            symbol = symbol * shape.levels + made.levels[std::size_t(v * shape.dimension + i)];
        made.symbols[std::size_t(v)] = symbol + shape.firstSymbol;
        made.bits += vsp::vectorCodes.written[symbol + shape.firstSymbol].bits;
    }
    return made;
}

}  // namespace

FloatDct::FloatDct(std::size_t length) : length_(length) {
    for (std::size_t i = 0; i < length / 2; i++) {
        twiddles_.push_back(std::polar(1.0F, -kPi * (float(i) + 0.25F) / float(length)));
        roots_.push_back(std::polar(1.0F, -4 * kPi * float(i) / float(length)));
    }
}

// By the smallest factor of the length.
void FloatDct::fourier(const Complex* in, Complex* out, std::size_t length, std::size_t stride) const {
    if (length == 1) {
        *out = *in;
        return;
    }
    const std::size_t radix = length % 2 == 0 ? 2 : 5, part = length / radix;
    for (std::size_t r = 0; r < radix; r++) fourier(in + r * stride, out + r * part, part, stride * radix);
    for (std::size_t k = 0; k < part; k++) {
        std::array<Complex, 5> x{};
        for (std::size_t r = 0; r < radix; r++) x[r] = out[r * part + k] * roots_[r * k * stride];
        if (radix == 2) {
            out[k] = x[0] + x[1];
            out[part + k] = x[0] - x[1];
            continue;
        }
        for (std::size_t q = 0; q < radix; q++) {
            Complex sum = x[0];
            for (std::size_t r = 1; r < radix; r++) sum += x[r] * roots_[r * q % radix * part * stride];
            out[q * part + k] = sum;
        }
    }
}

std::vector<float> FloatDct::transform(const std::vector<float>& x) const {
    const std::size_t half = length_ / 2;
    std::vector<Complex> folded(half), spectrum(half);
    for (std::size_t n = 0; n < half; n++) folded[n] = Complex(x[2 * n], x[length_ - 1 - 2 * n]) * twiddles_[n];
    fourier(folded.data(), spectrum.data(), half, 1);
    std::vector<float> result(length_);
    const float scale = std::sqrt(2.0F / float(length_));
    for (std::size_t k = 0; k < half; k++) {
        const Complex y = spectrum[k] * twiddles_[k] * scale;
        result[2 * k] = y.real();
        result[length_ - 1 - 2 * k] = -y.imag();
    }
    return result;
}

std::vector<std::uint8_t> FloatG7221Encoder::encode(const std::int16_t* samples) {
    constexpr std::size_t half = kFloatFrame / 2;
    const auto& w = window();
    std::vector<float> folded(kFloatFrame);
    for (std::size_t i = 0; i < half; i++) {
        folded[i] = w[half - 1 - i] * last_[half - 1 - i] + w[half + i] * last_[half + i];
        folded[half + i] = w[kFloatFrame - 1 - i] * samples[i] - w[i] * samples[kFloatFrame - 1 - i];
    }
    std::copy_n(samples, kFloatFrame, last_.begin());
    const std::vector<float> coefs = [&] {
        std::vector<float> y = dct_.transform(folded);
        for (float& c : y) c /= kScale;
        return y;
    }();

    std::array<int, kRegions> index{};
    for (std::size_t r = 0; r < kRegions; r++) {
        float energy = 0;
        for (std::size_t i = 0; i < kRegion; i++) energy += coefs[kRegion * r + i] * coefs[kRegion * r + i];
        index[r] = int(std::lround(std::log2(std::max(energy / kRegion, 1e-9F))));
    }
    for (std::size_t r = kRegions - 1; r-- > 0;) index[r] = std::max(index[r], index[r + 1] - 11);
    BitWriter frame(frameBits_);
    index[0] = std::clamp(index[0], -6, 24);
    frame.put(unsigned(index[0] + 7), 5);
    int bits = frameBits_ - 5 - 4;
    for (std::size_t r = 1; r < kRegions; r++) {
        const int difference = std::clamp(std::clamp(index[r], -15, 24) - index[r - 1], -12, 11) + 12;
        index[r] = index[r - 1] + difference - 12;
        const int length = vsp::differential_region_power_bits[r][difference];
        frame.put(vsp::differential_region_power_codes[r][difference], length);
        bits -= length;
    }

    Choice choice = categorize(index, bits);
    std::array<Vectors, kRegions> coded;
    int control = kControls / 2 - 1, total = 0;
    for (int i = 0; i < control; i++) choice.category[std::size_t(choice.balance[std::size_t(i)])]++;
    const auto code = [&](std::size_t r) {
        total -= coded[r].bits;
        coded[r] = quantize(&coefs[kRegion * r], choice.category[r], index[r]);
        total += coded[r].bits;
    };
    for (std::size_t r = 0; r < kRegions; r++) code(r);
    while (total < bits && control > 0) {
        const auto r = std::size_t(choice.balance[std::size_t(--control)]);
        choice.category[r]--;
        code(r);
    }
    while (total > bits && control < kControls - 1) {
        const auto r = std::size_t(choice.balance[std::size_t(control++)]);
        choice.category[r]++;
        code(r);
    }

    frame.put(unsigned(control), 4);
    for (std::size_t r = 0; r < kRegions; r++) {
        if (choice.category[r] >= 7) continue;
        const vsp::VectorShape& shape = vsp::kVectorShapes[choice.category[r]];
        for (int v = 0; v < shape.vectors; v++) {
            const auto& written = vsp::vectorCodes.written[coded[r].symbols[std::size_t(v)]];
            frame.put(written.code, written.length);
            for (int i = v * shape.dimension; i < (v + 1) * shape.dimension; i++)
                if (coded[r].levels[std::size_t(i)] != 0) frame.put(coefs[kRegion * r + std::size_t(i)] > 0, 1);
        }
    }
    return frame.bytes();
}

void FloatG7221Decoder::decode(const std::uint8_t* frame, std::int16_t* samples) {
    BitReader reader(frame, frameBits_);
    std::array<int, kRegions> index{};
    index[0] = reader.number(5) - 7;
    for (std::size_t r = 1; r < kRegions; r++)
        index[r] = index[r - 1] + reader.symbol(vsp::regionPowerDecoder[r].tree) - 12;
    const int control = reader.number(4);
    Choice choice = categorize(index, reader.left());
    for (int i = 0; i < control; i++) choice.category[std::size_t(choice.balance[std::size_t(i)])]++;

    std::vector<float> coefs(kFloatFrame);
    for (std::size_t r = 0; r < kRegions; r++) {
        const float deviation = deviationOf(index[r]);
        int category = choice.category[r];
        float* region = &coefs[kRegion * r];
        if (category < 7) {
            const vsp::VectorShape& shape = vsp::kVectorShapes[category];
            for (int v = 0; v < shape.vectors; v++) {
                const int symbol = reader.symbol(vsp::vectorDecoders[category].tree);
                const auto& digits = vsp::vectorCodes.digits[shape.firstSymbol + symbol];
                for (int i = 0; i < shape.dimension; i++) {
                    const float value = deviation * vsp::mlt_quant_centroid[category][digits.digit[i]] / 4096;
                    region[v * shape.dimension + i] = digits.digit[i] == 0 ? 0 : reader.bit() != 0 ? value : -value;
                }
            }
            if (reader.ranOut()) {
                category = 7;
                std::fill_n(region, kRegion, 0.0F);
                for (std::size_t k = r + 1; k < kRegions; k++) choice.category[k] = 7;
            }
        }
        if (category < 5) continue;
        const float noise = deviation * (category == 5 ? 0.176777F : category == 6 ? 0.25F : 0.707107F);
        for (int i = 0; i < kRegion; i++) {
            random_ = random_ * 1664525 + 1013904223;
            if (region[i] == 0) region[i] = random_ >> 31 != 0 ? noise : -noise;
        }
    }

    constexpr std::size_t half = kFloatFrame / 2;
    for (float& c : coefs) c *= kScale;
    const auto& w = window();
    const std::vector<float> y = dct_.transform(coefs);
    const auto put = [&](std::size_t i, float x) {
        samples[i] = std::int16_t(std::lround(std::clamp(x, -32768.0F, 32767.0F)));
    };
    for (std::size_t i = 0; i < half; i++) {
        put(i, w[i] * y[half - 1 - i] + w[kFloatFrame - 1 - i] * window_[i]);
        put(half + i, w[half + i] * y[i] - w[half - 1 - i] * window_[half - 1 - i]);
    }
    std::copy_n(y.begin() + half, half, window_.begin());
}
