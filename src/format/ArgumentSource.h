#pragma once

#include "base/ArgumentCursor.h"

#include <TqOsBase/format/Directive.h>
#include <TqOsBase/format/FormatUtil.h>

#include <cstdarg>
#include <cstdint>

namespace tq::detail {

/// The array of collected arguments of one call, from the heap.
class ParameterArray {
public:
    ParameterArray() = default;
    ParameterArray(const ParameterArray&) = delete;
    ParameterArray& operator=(const ParameterArray&) = delete;
    ~ParameterArray() {
        if (m_data != nullptr)
            release();
    }

    /// Makes room for `count` parameters (above 0); false when the heap has none.
    bool allocate(int count);
    FormatParameters* data() { return m_data; }
    /// The parameter of this number, counted from 1, or one that is unused when there is none.
    const FormatParameters& at(int number) const;

private:
    void release();

    FormatParameters* m_data = nullptr;
    int m_count = 0;
};

/// Where a call takes its arguments from: in a format with positions the collected parameter of a number, else the next
/// argument. A parameter that was collected as another kind counts as 0, null or 0.0; integers may differ in size.
class ArgumentSource {
public:
    explicit ArgumentSource(va_list args) : m_cursor(args) {}

    /// Collects the parameters when the format has positions. False when there is no memory for them.
    bool collect(const wchar_t* format, va_list args) {
        // A dollar sign is what makes a position; most formats are short and have none. Few characters are as low.
        for (const wchar_t* p = format;; ++p) {
            if (static_cast<std::uint32_t>(*p) > std::uint32_t{L'$'}) [[likely]]
                continue;
            if (*p == L'\0')
                return true;
            if (*p == L'$')
                return collectPositions(format, args);
        }
    }

    bool positional() const { return m_positional; }
    std::int32_t asInt(int number) {
        return m_positional ? static_cast<std::int32_t>(collectedInteger(number)) : m_cursor.nextInt();
    }
    std::uint32_t asUnsigned(int number) {
        return m_positional ? static_cast<std::uint32_t>(collectedInteger(number)) : m_cursor.nextUnsigned();
    }
    std::int64_t asInt64(int number) { return m_positional ? collectedInteger(number) : m_cursor.nextInt64(); }
    double asDouble(int number) { return m_positional ? collectedDouble(number) : m_cursor.nextDouble(); }
    const wchar_t* asString(int number) { return m_positional ? collectedString(number) : m_cursor.nextString(); }

private:
    std::int64_t collectedInteger(int number) const;
    double collectedDouble(int number) const;
    const wchar_t* collectedString(int number) const;
    bool collectPositions(const wchar_t* format, va_list args);

    detail::ArgumentCursor m_cursor;
    ParameterArray m_parameters;
    bool m_positional = false;
};

} // namespace tq::detail

/// A width or precision, taken from its argument where it is not in the format.
inline int getIntFromFormatStrOrValist(const tq::detail::CountField& field, tq::detail::ArgumentSource& arguments) {
    return field.isArgument ? arguments.asInt(field.value) : field.value;
}
