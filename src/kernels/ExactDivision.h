#pragma once
// Exact truncating division by a divisor fixed for a whole pass, as a multiply
// and a shift: the divisions per pixel of the running means would otherwise
// cost more than the sums themselves.
#include <algorithm>
#include <cstdint>
#include <type_traits>

namespace vm::kernels {

// n / d for every n below 2^31 and every d from 1 to 2^31. With l = ceil(log2
// d) and m = floor(2^(31 + l) / d) + 1, (n m) >> (31 + l) is the quotient, and
// n m stays below 2^63.
class FastDivider {
  public:
    explicit FastDivider(uint32_t d) : d_(d) {
        int l = 0;
        while ((uint64_t{1} << l) < d)
            ++l;
        shift_ = 31 + l;
        m_ = (uint64_t{1} << shift_) / d + 1;
    }
    uint32_t operator()(uint32_t n) const { return static_cast<uint32_t>((n * m_) >> shift_); }
    uint32_t Divisor() const { return d_; }

  private:
    uint64_t m_ = 0;
    int shift_ = 0;
    uint32_t d_;
};

// Division of a running sum by a kernel's total weight: the multiply for
// 32-bit sums (non-negative), a plain division for the wide ones.
template <typename Acc> class SumDivider {
  public:
    explicit SumDivider(int64_t d) : fast_(static_cast<uint32_t>(std::min<int64_t>(d, 0x7FFFFFFF))), d_(d) {}
    int32_t operator()(Acc n) const {
        if constexpr (std::is_same_v<Acc, int32_t>)
            return static_cast<int32_t>(fast_(static_cast<uint32_t>(n)));
        else
            return static_cast<int32_t>(n / d_);
    }

  private:
    FastDivider fast_;
    int64_t d_;
};

// Whether running sums of bytes under a kernel of this total weight fit 32 bits.
constexpr bool FitsInt32(int64_t weight) {
    return weight <= INT32_MAX / 255;
}

} // namespace vm::kernels
