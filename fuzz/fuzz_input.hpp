#pragma once
// Shared helpers of the fuzz targets: a reader that turns the fuzzer's bytes
// into values front to back (so that seed files can be written by hand), a
// check that aborts with a message, and helpers for comparing results bit for
// bit across the two complex layouts.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

// Little-endian values taken from the front of the input; once the bytes run
// out every value reads as zero.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    template <typename T>
    T take()
    {
        static_assert(std::is_trivially_copyable_v<T>);
        unsigned char bytes[sizeof(T)] = {};
        const std::size_t n = sizeof(T) < size_ - offset_ ? sizeof(T) : size_ - offset_;
        std::memcpy(bytes, data_ + offset_, n);
        offset_ += n;
        T value;
        std::memcpy(&value, bytes, sizeof(T));
        return value;
    }

    // A value in [0, count).
    unsigned below(unsigned count) { return take<std::uint8_t>() % count; }

    // A float with its NaNs made the one quiet NaN, so that no input can carry
    // the payload that marks unwritten output (see kUnwritten).
    float any_float()
    {
        const float v = take<float>();
        return std::isnan(v) ? std::numeric_limits<float>::quiet_NaN() : v;
    }

    std::vector<float> floats(std::size_t count)
    {
        std::vector<float> values(count);
        for (float& v : values) {
            v = any_float();
        }
        return values;
    }

private:
    const std::uint8_t* data_;
    std::size_t size_;
    std::size_t offset_ = 0;
};

// Aborts the run (a finding for libFuzzer) when a documented property fails.
inline void require(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "property violated: %s\n", what);
        std::abort();
    }
}

inline std::uint32_t bits_of(float v)
{
    std::uint32_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    return bits;
}

// A NaN payload that no computation on the canonicalised inputs produces:
// a buffer element still holding it was never written.
inline float unwritten_marker()
{
    const std::uint32_t bits = 0x7fc0dead;
    float v;
    std::memcpy(&v, &bits, sizeof v);
    return v;
}

inline bool is_unwritten(float v) { return bits_of(v) == 0x7fc0dead; }

inline bool same_bits(const std::vector<float>& a, const std::vector<float>& b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0);
}

// Complex samples as separate planes, and the same values as interleaved pairs.
struct TwoLayouts {
    std::vector<float> re, im, pairs;

    TwoLayouts(std::vector<float> real, std::vector<float> imag) : re(std::move(real)), im(std::move(imag))
    {
        // Exactly the pairs, so that ASan sees any access past them; without
        // samples one pair of storage lets the view point at `pairs + 1`.
        pairs.resize(re.empty() ? 2 : 2 * re.size());
        for (std::size_t i = 0; i < re.size(); ++i) {
            pairs[2 * i] = re[i];
            pairs[2 * i + 1] = im[i];
        }
    }

    std::vector<float> pairs_real() const { return every_other(0); }
    std::vector<float> pairs_imag() const { return every_other(1); }

private:
    std::vector<float> every_other(std::size_t first) const
    {
        std::vector<float> values(re.size());
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = pairs[2 * i + first];
        }
        return values;
    }
};
