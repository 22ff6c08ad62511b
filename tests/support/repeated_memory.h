// Arrays larger than the memory there is: the same pages over and over.
#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>

namespace vsp::test {

class RepeatedPages {
  public:
    explicit RepeatedPages(std::size_t bytes);
    ~RepeatedPages();
    RepeatedPages(const RepeatedPages&) = delete;
    RepeatedPages& operator=(const RepeatedPages&) = delete;

    static constexpr std::size_t kPeriod = 1 << 20;
    std::byte* begin() const { return begin_; }
    std::byte* end() const { return begin_ + size_; }

  private:
    std::byte* begin_;
    std::size_t size_;
};

// n elements of one value, behind and before unmapped memory. What is written shows once in every kPeriod bytes.
template <class T>
class Repeated {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    Repeated(std::size_t n, T value) : pages_(n * sizeof(T)), data_(reinterpret_cast<T*>(pages_.end()) - n) {
        std::fill_n(reinterpret_cast<T*>(pages_.begin()), RepeatedPages::kPeriod / sizeof(T), value);
    }
    T* data() { return data_; }
    T& operator[](std::size_t i) { return data_[i]; }

  private:
    RepeatedPages pages_;
    T* data_;
};

}  // namespace vsp::test
