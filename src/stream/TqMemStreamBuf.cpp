#include <TqOsBase/stream/TqMemStreamBuf.h>

#include <cstdint>

namespace {

// A place that no memory buffer reaches, so that moving there is refused.
constexpr std::uint64_t kBeyondAnyData = UINT64_MAX;

std::uint64_t sum(std::uint64_t a, std::uint64_t b) {
    return b > kBeyondAnyData - a ? kBeyondAnyData : a + b;
}

std::uint64_t difference(std::uint64_t a, std::uint64_t b) {
    return b > a ? kBeyondAnyData : a - b;
}

} // namespace

std::uint64_t TqMemStreamBuf::seek(std::uint64_t offset, TqIO::SeekType type) {
    switch (type) {
    case TqIO::kSeekStart:
        return moveTo(offset);
    case TqIO::kSeekForward:
        return moveTo(sum(tell(), offset));
    case TqIO::kSeekBackward:
        return moveTo(difference(tell(), offset));
    case TqIO::kSeekEnd:
        return moveTo(difference(length(), offset));
    }
    return tell();
}
