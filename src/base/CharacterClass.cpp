#include "base/CharacterClass.h"

#include <array>
#include <cwctype>

namespace tq::detail {

namespace {

constexpr int kAsciiCount = 128;

constexpr bool isBetween(int c, int first, int last) {
    return c >= first && c <= last;
}

constexpr CharacterClasses asciiClasses(int c) {
    const bool upper = isBetween(c, 'A', 'Z');
    const bool lower = isBetween(c, 'a', 'z');
    const bool digit = isBetween(c, '0', '9');
    const bool hexLetter = isBetween(c, 'A', 'F') || isBetween(c, 'a', 'f');
    const bool graphic = isBetween(c, '!', '~');
    int classes = 0;
    classes |= upper ? kUpper | kAlpha : 0;
    classes |= lower ? kLower | kAlpha : 0;
    classes |= digit ? kDigit : 0;
    classes |= digit || hexLetter ? kHexDigit : 0;
    classes |= graphic && !upper && !lower && !digit ? kPunct : 0;
    classes |= c == ' ' || isBetween(c, '\t', '\r') ? kSpace : 0;
    classes |= c == ' ' || c == '\t' ? kBlank : 0;
    classes |= !graphic && c != ' ' ? kControl : 0;
    return static_cast<CharacterClasses>(classes);
}

constexpr auto kAsciiClasses = [] {
    std::array<CharacterClasses, kAsciiCount> table{};
    for (int c = 0; c < kAsciiCount; ++c)
        table[static_cast<std::size_t>(c)] = asciiClasses(c);
    return table;
}();

bool asciiHas(wchar_t c, CharacterClasses wanted) {
    return isAscii(c) && (kAsciiClasses[codeOf(c)] & wanted) != 0;
}

template <class Test>
bool has(wchar_t c, CharacterClasses wanted, Test test) {
    if (isAscii(c))
        return asciiHas(c, wanted);
    return signedCodeOf(c) > 0 && test(static_cast<std::wint_t>(c)) != 0;
}

} // namespace

bool isUpper(wchar_t c) noexcept {
    return has(c, kUpper, [](std::wint_t w) { return std::iswupper(w); });
}

bool isLower(wchar_t c) noexcept {
    return has(c, kLower, [](std::wint_t w) { return std::iswlower(w); });
}

bool isDigit(wchar_t c) noexcept {
    return asciiHas(c, kDigit);
}

bool isSpace(wchar_t c) noexcept {
    return has(c, kSpace, [](std::wint_t w) { return std::iswspace(w); });
}

bool isPunct(wchar_t c) noexcept {
    return has(c, kPunct, [](std::wint_t w) { return std::iswpunct(w); });
}

bool isControl(wchar_t c) noexcept {
    return has(c, kControl, [](std::wint_t w) { return std::iswcntrl(w); });
}

bool isBlank(wchar_t c) noexcept {
    return has(c, kBlank, [](std::wint_t w) { return std::iswblank(w); });
}

bool isHexDigit(wchar_t c) noexcept {
    return asciiHas(c, kHexDigit);
}

bool isAlpha(wchar_t c) noexcept {
    return has(c, kAlpha, [](std::wint_t w) { return std::iswalpha(w); });
}

CharacterClasses characterClasses(wchar_t c) noexcept {
    if (isAscii(c))
        return kAsciiClasses[codeOf(c)];
    int classes = 0;
    classes |= isUpper(c) ? kUpper : 0;
    classes |= isLower(c) ? kLower : 0;
    classes |= isSpace(c) ? kSpace : 0;
    classes |= isPunct(c) ? kPunct : 0;
    classes |= isControl(c) ? kControl : 0;
    classes |= isBlank(c) ? kBlank : 0;
    classes |= isAlpha(c) ? kAlpha : 0;
    return static_cast<CharacterClasses>(classes);
}

} // namespace tq::detail
