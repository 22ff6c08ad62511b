// The recorded calls in tests/gsmamr/data.
#pragma once

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "support/test_data.h"
#include "vspsc/types.h"

namespace vsp::test {

class Record {
  public:
    explicit Record(const char* bytes) : bytes_(bytes) {}

    template <class T>
    T at(std::size_t offset) const {
        T x;
        std::memcpy(&x, bytes_ + offset, sizeof x);
        return x;
    }
    std::vector<Vsp16s> samples(std::size_t offset, std::size_t n) const {
        std::vector<Vsp16s> x(n);
        std::memcpy(x.data(), bytes_ + offset, n * sizeof(Vsp16s));
        return x;
    }

  private:
    const char* bytes_;
};

// A header of 32 bytes (characters VADV, u16 version 1, u16 kind, u32 number of records, u32 bytes in each), then the
// records.
class RecordedCalls {
  public:
    RecordedCalls(const std::string& name, int kind, std::size_t size) : size_(size), bytes_(testData("gsmamr/" + name)) {
        if (bytes_.size() <= kHeader || bytes_.compare(0, 4, "VADV") != 0) throw std::runtime_error(name + ": no vectors");
        const Record header(bytes_.data());
        if (header.at<Vsp16u>(4) != 1 || header.at<Vsp16u>(6) != kind || header.at<Vsp32u>(12) != size ||
            bytes_.size() != kHeader + count() * size)
            throw std::runtime_error(name + ": another layout, or truncated");
    }
    std::size_t count() const { return Record(bytes_.data()).at<Vsp32u>(8); }
    Record operator[](std::size_t i) const { return Record(bytes_.data() + kHeader + i * size_); }

  private:
    static constexpr std::size_t kHeader = 32;
    std::size_t size_;
    std::string bytes_;
};

}  // namespace vsp::test
