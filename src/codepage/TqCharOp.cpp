#include "base/CharacterClass.h"

#include <TqOsBase/codepage/NlsFunctions.h>
#include <TqOsBase/codepage/TqCharOp.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <cwchar>

// The platform's class bits are the type 1 flags, so that they can be stored as they come.
static_assert(kC1Upper == tq::detail::kUpper && kC1Lower == tq::detail::kLower);
static_assert(kC1Digit == tq::detail::kDigit && kC1Space == tq::detail::kSpace);
static_assert(kC1Punct == tq::detail::kPunct && kC1Cntrl == tq::detail::kControl);
static_assert(kC1Blank == tq::detail::kBlank && kC1XDigit == tq::detail::kHexDigit);
static_assert(kC1Alpha == tq::detail::kAlpha);

int TqCharOp::tqMultiByteToWideChar(unsigned int codePage, unsigned int flags, const char* src, int srcCount,
                                    wchar_t* dst, int dstCount) {
    return MultiByteToWideChar(codePage, flags, src, srcCount, dst, dstCount);
}

int TqCharOp::WideCharToMultiByteCIF(unsigned int, unsigned int, const wchar_t* src, int, char* dst, int dstCount,
                                     unsigned int) {
    if (dstCount < 0)
        return 0;
    const auto room = static_cast<std::size_t>(dstCount);
    if (dst != nullptr)
        std::memset(dst, 0, room);
    if (src == nullptr)
        return 0;
    return static_cast<int>(std::wcstombs(dst, src, room) + 1);
}

bool TqCharOp::GetStringType(unsigned int infoType, const wchar_t* src, int count, unsigned short* types) {
    if (src == nullptr || types == nullptr || (infoType & kCharType1) == 0 || count < -1)
        return false;
    const std::size_t length = count == -1 ? std::wcslen(src) : static_cast<std::size_t>(count);
    for (std::size_t i = 0; i < length; ++i)
        types[i] = tq::detail::characterClasses(src[i]);
    return length > 0;
}
