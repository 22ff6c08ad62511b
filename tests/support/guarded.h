// Buffers next to an unmapped page, so that touching one element too many faults.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <span>
#include <type_traits>
#include <vector>

namespace vsp::test {

// Where the unmapped page lies.
enum class Guard { end, begin };

// Mapped bytes with an unmapped page at either side.
class GuardedPages {
  public:
    explicit GuardedPages(std::size_t bytes);
    ~GuardedPages();
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;

    std::byte* begin() const { return begin_; }
    std::byte* end() const { return begin_ + size_; }

  private:
    std::byte* begin_;
    std::size_t size_;
};

// An array of n elements that ends (or begins) at an unmapped page. With a gap it lies that many elements away from the
// page, which changes its alignment. The bytes between, and those at the other side, must stay what they were: changed()
// tells, and so does the destructor by ending the program.
template <class T>
class Guarded {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    using value_type = std::remove_const_t<T>;

    explicit Guarded(std::size_t n, Guard guard = Guard::end, std::size_t gap = 0)
        : size_(n), pages_((n + gap) * sizeof(T) + kMargin) {
        const std::size_t away = gap * sizeof(T), bytes = n * sizeof(T);
        std::byte* start = guard == Guard::end ? pages_.end() - away - bytes : pages_.begin() + away;
        data_ = reinterpret_cast<value_type*>(start);
        before_ = {std::max(pages_.begin(), start - kMargin), start};
        after_ = {start + bytes, std::min(pages_.end(), start + bytes + kMargin)};
        std::fill(before_.begin(), before_.end(), kFill);
        std::fill(after_.begin(), after_.end(), kFill);
        std::memset(static_cast<void*>(data_), int(kFill), bytes);
    }

    explicit Guarded(const std::vector<value_type>& values, Guard guard = Guard::end, std::size_t gap = 0)
        : Guarded(values.size(), guard, gap) {
        std::copy(values.begin(), values.end(), data_);
    }

    ~Guarded() {
        if (changedOutside()) std::abort();
    }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    T* data() { return data_; }
    const T* data() const { return data_; }
    std::size_t size() const { return size_; }
    value_type& operator[](std::size_t i) { return data_[i]; }
    const value_type& operator[](std::size_t i) const { return data_[i]; }
    value_type* begin() { return data_; }
    value_type* end() { return data_ + size_; }
    const value_type* begin() const { return data_; }
    const value_type* end() const { return data_ + size_; }
    std::vector<value_type> values() const { return {begin(), end()}; }

    bool changedOutside() const {
        const auto changed = [](std::byte b) { return b != kFill; };
        return std::any_of(before_.begin(), before_.end(), changed) || std::any_of(after_.begin(), after_.end(), changed);
    }

  private:
    static constexpr std::size_t kMargin = 128;
    static constexpr std::byte kFill{0xA5};

    std::size_t size_;
    GuardedPages pages_;
    value_type* data_;
    std::span<std::byte> before_, after_;
};

}  // namespace vsp::test
