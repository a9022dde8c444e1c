#include <TqOsBase/codepage/TqCharMapper.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

// As long as the partial sums stay within 2^53 a double holds them exactly, and an integer sum is the same number; with
// products of 32 bits that is certain for this many of them.
constexpr std::int64_t kExactTerms = std::int64_t{1} << 22;

template <class Unit>
std::int64_t weighted(const unsigned char* data, std::int64_t i) {
    Unit unit;
    std::memcpy(&unit, data + static_cast<std::size_t>(i) * sizeof unit, sizeof unit);
    const auto product = static_cast<std::uint32_t>(i + 1) * static_cast<std::uint32_t>(unit);
    return static_cast<std::int32_t>(product);
}

template <class Unit>
double checkSum(const void* data, int count) {
    if (data == nullptr)
        return 0.0;
    const auto* bytes = static_cast<const unsigned char*>(data);
    const std::int64_t exactEnd = std::min<std::int64_t>(count, kExactTerms);
    std::int64_t exact = 0;
    std::int64_t i = 0;
    for (; i < exactEnd; ++i)
        exact += weighted<Unit>(bytes, i);
    auto sum = static_cast<double>(exact);
    for (; i < count; ++i)
        sum += static_cast<double>(weighted<Unit>(bytes, i));
    return sum;
}

} // namespace

double TqCharMapper::getCheckSumUnicode(const void* data, int count) {
    return checkSum<std::int32_t>(data, count);
}

double TqCharMapper::getCheckSumAnsi(const void* data, int count) {
    return checkSum<std::int8_t>(data, count);
}
