#pragma once

#include <TqOsBase/containers/TqVector.h>
#include <TqOsBase/format/Directive.h>
#include <TqOsBase/format/FormatUtil.h>
#include <TqOsBase/format/InputWithFormat.h>
#include <TqOsBase/format/OutputWithFormat.h>
#include <TqOsBase/format/ScanDirective.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#if __cplusplus < 202002L
#error "TqOsBase/format/Checked.h needs C++20"
#endif

/// \file
/// The formatted output and input of OutputWithFormat() and InputWithFormat() with formats that the compiler checks
/// against their arguments, by the engine's own grammar, positions and `*` included. A call that does not fit is not
/// compiled; the diagnostic calls the argument and the fault by name, such as `argument<2>::f_needs_a_double()`. What
/// is compiled is the call of the engine with the same arguments, so it takes as long. C++20.

namespace tq {

/// What diagnostics are made of: `argument<n>` is the n-th argument after the format, `argument<0>` the format itself.
/// Declared only: a format with a fault calls one of these while it is compiled, which no compiler accepts.
namespace format_fault {

/// One argument, or the format.
template <int kNumber>
struct argument {
    /// Too few arguments.
    static void is_missing_too_few_arguments();
    /// Too many arguments.
    static void is_not_used_too_many_arguments();
    /// %d, %i, %u, %o, %x and %b need 32 bits.
    static void d_needs_32_bits_use_D_for_64();
    /// %D, %I, %U, %O, %X and %B need 64 bits.
    static void D_needs_64_bits();
    /// %f, %e, %g and %q need a double.
    static void f_needs_a_double();
    /// %c needs a character or a number of 32 bits.
    static void c_needs_a_character();
    /// %s needs wide text; use c_str().
    static void s_needs_wide_text_use_c_str();
    /// %p needs a pointer or a number of 32 bits.
    static void p_needs_a_pointer();
    /// * needs an int.
    static void star_needs_an_int();
    /// The letter of a directive is none of the engine's.
    static void letter_is_unknown();
    /// The format ends within a directive.
    static void ends_within_a_directive();
    /// %q without a length limit: write %.20q.
    static void q_without_a_length_limit();
    /// %q without a digit or * after it.
    static void q_without_a_mode();
    /// One directive has a position, so all must, each * included.
    static void position_is_missing();
    /// %hd needs a pointer to 16 bits.
    static void h_d_needs_a_pointer_to_16_bits();
    /// %d and %n need a pointer to 32 bits.
    static void d_needs_a_pointer_to_32_bits();
    /// %ld, %D, %O, %X and %B need a pointer to 64 bits.
    static void l_d_needs_a_pointer_to_64_bits();
    /// %f needs a pointer to float; use %lf for double.
    static void f_needs_a_pointer_to_float();
    /// %lf, %E, %F and %G need a pointer to double.
    static void l_f_needs_a_pointer_to_double();
    /// %s and %c need a wide buffer.
    static void s_needs_a_wide_buffer();
    /// %s without a width: write %63s for 64 characters.
    static void s_without_a_width();
    /// %s needs one character more than its width.
    static void buffer_is_shorter_than_the_width();
};

} // namespace format_fault

namespace detail {

enum class FormatFault : std::uint8_t {
    kNone,
    kTooFew,
    kTooMany,
    kNotInt32,
    kNotInt64,
    kNotDouble,
    kNotCharacter,
    kNotWideText,
    kNotPointer,
    kStarNotInt,
    kUnknownLetter,
    kUnfinished,
    kNoLengthLimit,
    kNoMode,
    kNoPosition,
    kNotInt16Target,
    kNotInt32Target,
    kNotInt64Target,
    kNotFloatTarget,
    kNotDoubleTarget,
    kNotTextTarget,
    kNoWidth,
    kShortBuffer
};

struct FoundFault {
    FormatFault fault;
    int argument; ///< Counted from 1; 0 for the format itself.
};

/// Does what the fault is: no constant expression, but for kNone.
template <int kNumber>
constexpr void report(FormatFault fault) {
    using Argument = format_fault::argument<kNumber>;
    switch (fault) {
    case FormatFault::kNone:
        return;
    case FormatFault::kTooFew:
        return Argument::is_missing_too_few_arguments();
    case FormatFault::kTooMany:
        return Argument::is_not_used_too_many_arguments();
    case FormatFault::kNotInt32:
        return Argument::d_needs_32_bits_use_D_for_64();
    case FormatFault::kNotInt64:
        return Argument::D_needs_64_bits();
    case FormatFault::kNotDouble:
        return Argument::f_needs_a_double();
    case FormatFault::kNotCharacter:
        return Argument::c_needs_a_character();
    case FormatFault::kNotWideText:
        return Argument::s_needs_wide_text_use_c_str();
    case FormatFault::kNotPointer:
        return Argument::p_needs_a_pointer();
    case FormatFault::kStarNotInt:
        return Argument::star_needs_an_int();
    case FormatFault::kUnknownLetter:
        return Argument::letter_is_unknown();
    case FormatFault::kUnfinished:
        return Argument::ends_within_a_directive();
    case FormatFault::kNoLengthLimit:
        return Argument::q_without_a_length_limit();
    case FormatFault::kNoMode:
        return Argument::q_without_a_mode();
    case FormatFault::kNoPosition:
        return Argument::position_is_missing();
    case FormatFault::kNotInt16Target:
        return Argument::h_d_needs_a_pointer_to_16_bits();
    case FormatFault::kNotInt32Target:
        return Argument::d_needs_a_pointer_to_32_bits();
    case FormatFault::kNotInt64Target:
        return Argument::l_d_needs_a_pointer_to_64_bits();
    case FormatFault::kNotFloatTarget:
        return Argument::f_needs_a_pointer_to_float();
    case FormatFault::kNotDoubleTarget:
        return Argument::l_f_needs_a_pointer_to_double();
    case FormatFault::kNotTextTarget:
        return Argument::s_needs_a_wide_buffer();
    case FormatFault::kNoWidth:
        return Argument::s_without_a_width();
    case FormatFault::kShortBuffer:
        return Argument::buffer_is_shorter_than_the_width();
    }
}

template <int... kNumbers>
constexpr void reportFor(FoundFault found, std::integer_sequence<int, kNumbers...>) {
    ((found.argument == kNumbers ? report<kNumbers>(found.fault) : void()), ...);
}

/// The kinds of arguments that output tells apart.
enum class ArgumentKind : std::uint8_t { kInt32, kInt64, kDouble, kWideText, kPointer, kOther };

template <class T>
inline constexpr bool kIsWideText =
    std::is_same_v<T, wchar_t*> || std::is_same_v<T, const wchar_t*> || std::is_same_v<T, std::nullptr_t> ||
    std::is_base_of_v<std::wstring, T> || std::is_same_v<T, TqVector<wchar_t>>;

template <class Argument>
constexpr ArgumentKind kindOfArgument() {
    using T = std::decay_t<Argument>;
    constexpr bool isNumber = std::is_integral_v<T> || (std::is_enum_v<T> && std::is_convertible_v<T, long long>);
    if constexpr (std::is_same_v<T, double> || std::is_same_v<T, float>)
        return ArgumentKind::kDouble;
    else if constexpr (isNumber && sizeof(T) <= sizeof(std::int32_t))
        return ArgumentKind::kInt32;
    else if constexpr (isNumber && sizeof(T) == sizeof(std::int64_t))
        return ArgumentKind::kInt64;
    else if constexpr (kIsWideText<T>)
        return ArgumentKind::kWideText;
    else
        return std::is_pointer_v<T> ? ArgumentKind::kPointer : ArgumentKind::kOther;
}

/// Compares one format with the kinds of its arguments.
template <std::size_t kCount>
class OutputCheck {
public:
    constexpr explicit OutputCheck(const ArgumentKind (&kinds)[kCount + 1]) : m_kinds(kinds) {}

    /// The first fault.
    constexpr FoundFault check(const wchar_t* format) {
        const FormatPositions positions = positionsIn(format);
        m_isPositional = positions.any;
        for (const wchar_t* p = format; *p != L'\0' && m_found.fault == FormatFault::kNone;) {
            if (*p++ == L'%')
                checkDirective(p);
        }
        for (std::size_t i = 0; i < kCount && m_found.fault == FormatFault::kNone; ++i) {
            if (!m_isUsed[i])
                m_found = {FormatFault::kTooMany, static_cast<int>(i) + 1};
        }
        // "*2" has no position in the engine's eyes when it comes last: nothing would be collected.
        if (m_isPositional && m_found.fault == FormatFault::kNone && positions.count != static_cast<int>(kCount))
            m_found = {FormatFault::kNoPosition, 0};
        return m_found;
    }

private:
    constexpr void checkDirective(const wchar_t*& p) {
        const wchar_t* const start = p;
        const Directive directive = parseDirective(p, m_isPositional);
        if (directive.letter == L'\0')
            return fail(FormatFault::kUnfinished);
        QModeField mode{QModeField::kNone, 0};
        if (isUnitLetter(directive.letter))
            mode = readQMode(p, m_isPositional);
        if (m_isPositional && directive.kind->parameter != kParameterUnused && !hasAllPositions(start, p))
            return fail(FormatFault::kNoPosition);
        if (directive.width.isArgument)
            take(directive.width.value, FormatFault::kStarNotInt);
        if (directive.precision.isArgument)
            take(directive.precision.value, FormatFault::kStarNotInt);
        if (isUnitLetter(directive.letter)) {
            if ((directive.flags & kHasPrecision) == 0)
                return fail(FormatFault::kNoLengthLimit);
            if (mode.kind == QModeField::kNone)
                return fail(FormatFault::kNoMode);
            if (mode.kind == QModeField::kArgument)
                take(mode.value, FormatFault::kStarNotInt);
        }
        takeValue(directive);
    }

    constexpr void takeValue(const Directive& directive) {
        switch (directive.kind->parameter) {
        case kParameterInt:
        case kParameterUnsigned:
            return take(directive.position,
                        directive.letter == L'p' ? FormatFault::kNotPointer : FormatFault::kNotInt32);
        case kParameterInt64:
            return take(directive.position, FormatFault::kNotInt64);
        case kParameterDouble:
            return take(directive.position, FormatFault::kNotDouble);
        case kParameterCharacter:
            return take(directive.position, FormatFault::kNotCharacter);
        case kParameterString:
            return take(directive.position, FormatFault::kNotWideText);
        default:
            if (directive.letter != L'%')
                fail(FormatFault::kUnknownLetter);
        }
    }

    // Whether the directive begins with "n$" and every `*` in it has a number after it.
    static constexpr bool hasAllPositions(const wchar_t* p, const wchar_t* end) {
        const wchar_t* first = p;
        readPosition(first);
        if (first == p)
            return false;
        for (; p != end; ++p) {
            if (*p == L'*' && !isDecimalDigit(p[1]))
                return false;
        }
        return true;
    }

    static constexpr bool fits(ArgumentKind kind, FormatFault otherwise) {
        switch (otherwise) {
        case FormatFault::kNotInt64:
            return kind == ArgumentKind::kInt64;
        case FormatFault::kNotDouble:
            return kind == ArgumentKind::kDouble;
        case FormatFault::kNotWideText:
            return kind == ArgumentKind::kWideText;
        case FormatFault::kNotPointer:
            return kind == ArgumentKind::kInt32 || kind == ArgumentKind::kPointer || kind == ArgumentKind::kWideText;
        default:
            return kind == ArgumentKind::kInt32;
        }
    }

    // Uses the argument of a position, or the next one, for what fails as `otherwise`.
    constexpr void take(int position, FormatFault otherwise) {
        const int number = m_isPositional ? position : ++m_last;
        if (m_found.fault != FormatFault::kNone)
            return;
        if (number < 1 || number > static_cast<int>(kCount)) {
            m_found = {FormatFault::kTooFew, static_cast<int>(kCount) + 1};
            return;
        }
        m_isUsed[number - 1] = true;
        if (!fits(m_kinds[number - 1], otherwise))
            m_found = {otherwise, number};
    }
    constexpr void fail(FormatFault fault) {
        if (m_found.fault == FormatFault::kNone)
            m_found = {fault, 0};
    }

    const ArgumentKind (&m_kinds)[kCount + 1];
    bool m_isUsed[kCount + 1] = {};
    bool m_isPositional = false;
    int m_last = 0;
    FoundFault m_found{FormatFault::kNone, 0};
};

template <class... Args>
constexpr FoundFault outputFault(const wchar_t* format) {
    constexpr ArgumentKind kKinds[] = {kindOfArgument<Args>()..., ArgumentKind::kOther};
    return OutputCheck<sizeof...(Args)>(kKinds).check(format);
}

/// What a scan may store through.
struct ScanTarget {
    enum Kind : std::uint8_t { kInt16, kInt32, kInt64, kFloat, kDouble, kText, kOther };
    Kind kind;
    std::size_t capacity; ///< Characters of an array; 0 where a pointer does not tell.
};

template <class Target>
constexpr ScanTarget scanTargetOf() {
    using Array = std::remove_reference_t<Target>;
    using T = std::remove_pointer_t<std::decay_t<Target>>;
    if constexpr (!std::is_pointer_v<std::decay_t<Target>> || std::is_const_v<T>)
        return {ScanTarget::kOther, 0};
    else if constexpr (std::is_same_v<T, wchar_t>)
        return {ScanTarget::kText, std::extent_v<Array>};
    else if constexpr (std::is_same_v<T, float>)
        return {ScanTarget::kFloat, 0};
    else if constexpr (std::is_same_v<T, double>)
        return {ScanTarget::kDouble, 0};
    else if constexpr (!std::is_integral_v<T> || std::is_same_v<T, char16_t> || std::is_same_v<T, char32_t>)
        return {ScanTarget::kOther, 0};
    else
        return {sizeof(T) == 2   ? ScanTarget::kInt16
                : sizeof(T) == 4 ? ScanTarget::kInt32
                : sizeof(T) == 8 ? ScanTarget::kInt64
                                 : ScanTarget::kOther,
                0};
}

constexpr FormatFault scanFault(const ScanDirective& directive, ScanTarget target) {
    const auto needs = [target](ScanTarget::Kind kind, FormatFault otherwise) {
        return target.kind == kind ? FormatFault::kNone : otherwise;
    };
    switch (directive.letter) {
    case L'd':
    case L'i':
    case L'u':
    case L'o':
    case L'x':
    case L'b':
        return directive.isLong    ? needs(ScanTarget::kInt64, FormatFault::kNotInt64Target)
               : directive.isShort ? needs(ScanTarget::kInt16, FormatFault::kNotInt16Target)
                                   : needs(ScanTarget::kInt32, FormatFault::kNotInt32Target);
    case L'n':
        return needs(ScanTarget::kInt32, FormatFault::kNotInt32Target);
    case L'D':
    case L'O':
    case L'X':
    case L'B':
        return needs(ScanTarget::kInt64, FormatFault::kNotInt64Target);
    case L'e':
    case L'f':
    case L'g':
        return directive.isLong ? needs(ScanTarget::kDouble, FormatFault::kNotDoubleTarget)
                                : needs(ScanTarget::kFloat, FormatFault::kNotFloatTarget);
    case L'E':
    case L'F':
    case L'G':
        return needs(ScanTarget::kDouble, FormatFault::kNotDoubleTarget);
    case L's':
    case L'c': {
        if (target.kind != ScanTarget::kText)
            return FormatFault::kNotTextTarget;
        const bool isRun = directive.letter == L's';
        if (isRun && !directive.widthGiven)
            return FormatFault::kNoWidth;
        const std::size_t stored = directive.widthGiven ? directive.width + (isRun ? 1U : 0U) : 1;
        return target.capacity == 0 || stored <= target.capacity ? FormatFault::kNone : FormatFault::kShortBuffer;
    }
    default:
        return directive.letter == L'\0' ? FormatFault::kUnfinished : FormatFault::kUnknownLetter;
    }
}

template <class... Targets>
constexpr FoundFault inputFault(const wchar_t* format) {
    constexpr ScanTarget kTargets[] = {scanTargetOf<Targets>()..., {ScanTarget::kOther, 0}};
    constexpr int kCount = sizeof...(Targets);
    int used = 0;
    for (const wchar_t* p = format; *p != L'\0';) {
        if (*p++ != L'%')
            continue;
        if (*p == L'%') {
            ++p;
            continue;
        }
        const ScanDirective directive = parseScanDirective(p);
        const bool isKnown = directive.letter != L'\0' && kindOf(directive.letter)->parameter != kParameterUnused;
        if (!directive.assign && (isKnown || directive.letter == L'n'))
            continue;
        FormatFault fault = scanFault(directive, kTargets[used]);
        if (fault == FormatFault::kUnfinished || fault == FormatFault::kUnknownLetter)
            return {fault, 0};
        if (used == kCount)
            return {FormatFault::kTooFew, kCount + 1};
        ++used;
        if (fault != FormatFault::kNone)
            return {fault, used};
    }
    return used < kCount ? FoundFault{FormatFault::kTooMany, used + 1} : FoundFault{FormatFault::kNone, 0};
}

/// An argument as the engine takes it.
template <class T>
class EngineArgument {
public:
    explicit constexpr EngineArgument(const T& value) : m_value(value) {}
    auto get() const {
        if constexpr (std::is_base_of_v<std::wstring, T>)
            return m_value.c_str();
        else if constexpr (std::is_same_v<T, std::nullptr_t>)
            return static_cast<const wchar_t*>(nullptr);
        else
            return static_cast<std::decay_t<const T>>(m_value);
    }

private:
    const T& m_value;
};

/// The text of a vector, which need not be terminated.
template <>
class EngineArgument<TqVector<wchar_t>> {
public:
    explicit EngineArgument(const TqVector<wchar_t>& text)
        : m_text(text.isEmpty() ? L"" : text.asArrayPtr(), static_cast<std::size_t>(text.logicalLength())) {}
    const wchar_t* get() const { return m_text.c_str(); }

private:
    std::wstring m_text;
};

inline int outputTo(wchar_t** out, int capacity, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const int written = OutputWithFormat(out, capacity, format, args);
    va_end(args);
    return written;
}

inline int inputFrom(const wchar_t* source, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const int assigned = InputWithFormat(false, source, format, args);
    va_end(args);
    return assigned;
}

} // namespace detail

/// Whether a format of OutputWithFormat() fits arguments of these types, for a check without a call:
/// `static_assert(tq::formatFits<int, double>(L"%d %f"))`.
template <class... Args>
consteval bool formatFits(const wchar_t* format) {
    return detail::outputFault<Args...>(format).fault == detail::FormatFault::kNone;
}

/// The same for a format of InputWithFormat(): `tq::scanFits<int*, wchar_t[64]>(L"%d %63s")`.
template <class... Targets>
consteval bool scanFits(const wchar_t* format) {
    return detail::inputFault<Targets...>(format).fault == detail::FormatFault::kNone;
}

/// A format of output that fits the arguments; made of a literal by the calls below.
template <class... Args>
struct CheckedFormat {
    /// Compiles for a format that fits.
    consteval CheckedFormat(const wchar_t* format) : text(format) {
        detail::reportFor(detail::outputFault<Args...>(format),
                          std::make_integer_sequence<int, static_cast<int>(sizeof...(Args)) + 2>());
    }

    const wchar_t* text; ///< The format.
};

/// A format of input that fits the targets.
template <class... Targets>
struct CheckedScan {
    /// Compiles for a format that fits.
    consteval CheckedScan(const wchar_t* format) : text(format) {
        detail::reportFor(detail::inputFault<Targets...>(format),
                          std::make_integer_sequence<int, static_cast<int>(sizeof...(Targets)) + 2>());
    }

    const wchar_t* text; ///< The format.
};

/// @{
/// OutputWithFormat() into a buffer of `capacity` characters, with its result. `%d`, `%u`, `%x` and their like take
/// numbers of up to 32 bits, signed or not, and enumerators of unscoped enumerations; `%D` and its like 64 bits; `%f`,
/// `%e`, `%g`, `%q` double or float; `%s` a terminated wide text, null, a std::wstring or a class derived from it such
/// as CStdStr, and TqVector<wchar_t>, whose text is copied and ends at its first 0; `%c` a character; `%p` a pointer.
/// Not compiled, although the engine takes them: letters that it does not know, `%q` without a precision (the text
/// would be cut to six characters) or without a Q mode word, arguments that no directive takes, and in a format with
/// positions a directive or `*` without one.
template <std::size_t kCapacity, class... Args>
int format(wchar_t (&buffer)[kCapacity], CheckedFormat<std::type_identity_t<Args>...> format, const Args&... args) {
    return FormatUtil::outputStringWithFormat(buffer, static_cast<int>(kCapacity), format.text,
                                              detail::EngineArgument<Args>(args).get()...);
}
template <class... Args>
int format(wchar_t* buffer, int capacity, CheckedFormat<std::type_identity_t<Args>...> format, const Args&... args) {
    return FormatUtil::outputStringWithFormat(buffer, capacity, format.text,
                                              detail::EngineArgument<Args>(args).get()...);
}
/// @}

/// The same as a string of its own. Throws std::length_error for a text of 1,048,576 characters or more and for what
/// the engine refuses at any length (an integer of more than 2,047 characters), std::bad_alloc without memory.
template <class... Args>
std::wstring formatted(CheckedFormat<std::type_identity_t<Args>...> format, const Args&... args) {
    constexpr int kFirstCapacity = 256;
    constexpr int kMostCapacity = 1 << 20;
    const auto written = [&](wchar_t* begin, int capacity, wchar_t*& end) {
        end = begin;
        const int count = detail::outputTo(&end, capacity, format.text, detail::EngineArgument<Args>(args).get()...);
        // What does not fit gives -1, or 0 with a part of the text.
        return count > 0 || (count == 0 && end == begin &&
                             std::char_traits<wchar_t>::length(format.text) < static_cast<std::size_t>(capacity));
    };
    wchar_t small[kFirstCapacity];
    wchar_t* end = nullptr;
    if (written(small, kFirstCapacity, end))
        return {small, end};
    std::wstring text;
    for (int capacity = 4 * kFirstCapacity; capacity <= kMostCapacity; capacity *= 4) {
        text.resize(static_cast<std::size_t>(capacity));
        if (written(text.data(), capacity, end)) {
            text.resize(static_cast<std::size_t>(end - text.data()));
            return text;
        }
    }
    throw std::length_error("tq::formatted: the text is too long");
}

/// InputWithFormat() of the terminated `source` (null is empty), with its result. `%d`, `%u` and their like store
/// through pointers to 32 bits, with `h` 16, with `l` and for `%D` and its like 64; `%f` through a pointer to float,
/// with `l` and for `%F` to double; `%n` through a pointer to int. `%s` needs a width and `%s` and `%c` a buffer of
/// wchar_t; where that is an array, its length is checked against the width and, for `%s`, the 0 after it. Not
/// compiled, although the engine takes them: letters that it does not know, and targets that no directive takes.
template <class... Targets>
int scan(const wchar_t* source, CheckedScan<std::type_identity_t<Targets>...> format, Targets&&... targets) {
    return detail::inputFrom(source, format.text, static_cast<std::decay_t<Targets>>(targets)...);
}

} // namespace tq
