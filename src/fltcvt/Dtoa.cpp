#include "fltcvt/DigitAllocator.h"
#include "fltcvt/DigitRequest.h"
#include "fltcvt/FastDigits.h"
#include "fltcvt/Ieee754.h"

namespace {

using tq::detail::DigitLayout;
using tq::detail::DigitRequest;
using tq::detail::kPointOfNoNumber;

// The modes that ask for the digits to a place and no shorter ones.
constexpr int kToPlace = 3;
constexpr int kToPlaceToo = 7;

static_assert(tq::detail::kMaxFastDigits < tq::detail::kSmallStringRoom);

char* finish(char* text, int count, char** rve) {
    text[count] = '\0';
    if (rve != nullptr)
        *rve = text + count;
    return text;
}

char* smallText(const char* text, int length, char** rve) {
    char* const copy = tq::detail::takeString(0);
    std::memcpy(copy, text, static_cast<std::size_t>(length));
    return finish(copy, length, rve);
}

// Infinity, NaN and zero.
char* specialText(double d, int* decpt, char** rve) {
    if (d == 0) {
        *decpt = 1;
        return smallText("0", 1, rve);
    }
    *decpt = kPointOfNoNumber;
    return d == d ? smallText("Infinity", 8, rve) : smallText("NaN", 3, rve);
}

// Where they are many, or the calling thread has no block at hand.
[[gnu::noinline]] char* manyDigits(double v, DigitRequest request, int* decpt, char** rve) {
    char digits[tq::detail::kDigitRoom];
    const DigitLayout layout = tq::detail::writeManyDigits(v, request, digits);
    *decpt = layout.point;
    char* const text = TqGdImpl::rv_alloc(layout.count);
    std::memcpy(text, digits, static_cast<std::size_t>(layout.count));
    return finish(text, layout.count, rve);
}

// The block leaves the free list only when its digits are known. So the slower way needs it no more (the digits have
// overwritten its link, which is restored before), and its call is a tail call.
[[gnu::always_inline]] inline char* fewDigits(double v, DigitRequest request, int* decpt, char** rve) {
    Bigint* const block = tq::detail::blockAtHand(0);
    if (block == nullptr) [[unlikely]]
        return manyDigits(v, request, decpt, rve);
    Bigint* const next = block->next;
    char* const text = tq::detail::stringIn(block);
    DigitLayout layout;
    if (!tq::detail::tryFastDigits(v, request, text, layout)) [[unlikely]] {
        block->next = next;
        return manyDigits(v, request, decpt, rve);
    }
    __fcvtAlloc.m_freeLists[0] = next;
    tq::detail::markString(block, 0);
    *decpt = layout.point;
    return finish(text, layout.count, rve);
}

// Apart from the other modes: inlined beside them it would save more registers.
[[gnu::noinline]] char* digitsToPlace(double v, int places, int* decpt, char** rve) {
    return fewDigits(v, DigitRequest::ofMode(kToPlace, places), decpt, rve);
}

} // namespace

char* TqGdImpl::dtoa(double d, int mode, int ndigits, int* decpt, int* sign, char** rve) {
    const std::uint64_t bits = tq::detail::bitsOf(d);
    *sign = static_cast<int>(bits >> 63);
    if (!tq::detail::isFinite(d) || bits << 1 == 0) [[unlikely]]
        return specialText(d, decpt, rve);
    const double v = std::bit_cast<double>(bits & ~tq::detail::kSignBit);
    if (mode == kToPlace || mode == kToPlaceToo)
        return digitsToPlace(v, ndigits, decpt, rve);
    return fewDigits(v, DigitRequest::ofMode(mode, ndigits), decpt, rve);
}
