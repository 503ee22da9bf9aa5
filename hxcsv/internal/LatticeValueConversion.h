#pragma once
// Conversions of parsed numbers into the lattice's value types. Values are
// not clamped: out-of-range values wrap, keeping their low bits. Everything
// here is defined behaviour for every double, NaN and infinities included.
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace hxcsv {

// Truncates toward zero. A double whose truncation does not fit in 32 bits,
// and NaN, give the most negative 32-bit integer (what the hardware's
// conversion gives, without relying on it).
inline std::int32_t truncateToInt32(double v)
{
    if (!(v > -2147483649.0 && v < 2147483648.0))
        return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(v);
}

// The low 8 or 16 bits of the truncated value.
inline std::uint8_t wrapToByte(double v)
{
    return static_cast<std::uint8_t>(static_cast<std::uint32_t>(truncateToInt32(v)));
}

inline std::uint16_t wrapToUShort(double v)
{
    return static_cast<std::uint16_t>(static_cast<std::uint32_t>(truncateToInt32(v)));
}

inline std::int16_t wrapToShort(double v)
{
    const std::uint16_t bits = wrapToUShort(v);
    return bits < 0x8000u ? static_cast<std::int16_t>(bits) : static_cast<std::int16_t>(bits - 0x10000);
}

// Round to nearest single precision; a double beyond float's range becomes
// infinity or FLT_MAX as IEEE rounding would, without a cast out of range.
inline float roundToFloat(double v)
{
    if (std::isfinite(v) && std::fabs(v) > FLT_MAX) {
        // Halfway between FLT_MAX and the next power of two rounds up.
        const double overflowAt = 0x1.ffffffp127;
        const float magnitude = std::fabs(v) >= overflowAt ? std::numeric_limits<float>::infinity() : FLT_MAX;
        return v < 0 ? -magnitude : magnitude;
    }
    return static_cast<float>(v);
}

// The conversion into each value type, for code written once for all six.
template <class T>
T convertTo(double v)
{
    if constexpr (std::is_same_v<T, std::uint8_t>)
        return wrapToByte(v);
    else if constexpr (std::is_same_v<T, std::int16_t>)
        return wrapToShort(v);
    else if constexpr (std::is_same_v<T, std::uint16_t>)
        return wrapToUShort(v);
    else if constexpr (std::is_same_v<T, std::int32_t>)
        return truncateToInt32(v);
    else if constexpr (std::is_same_v<T, float>)
        return roundToFloat(v);
    else
        return v;
}

} // namespace hxcsv
