#pragma once

/// \file
/// The string that the collections store.

#include <TqOsBase/Export.h>

#include <cstddef>
#include <string>
#include <utility>

/// The string class that the list, array and maps of strings store: the standard string, which in addition can be made
/// from a null pointer. Only CStdStr<wchar_t> is used. Comparison is the standard string's: exact.
template <class T>
class TQ_SHOWN CStdStr : public std::basic_string<T> {
    using Base = std::basic_string<T>;

public:
    using Base::Base;
    CStdStr() = default;
    /// Null gives the empty string.
    CStdStr(const T* text) : Base(text != nullptr ? text : kNoText) {}
    /// The empty string.
    CStdStr(std::nullptr_t) {}
    /// Copies or takes over a standard string.
    CStdStr(const Base& text) : Base(text) {}
    CStdStr(Base&& text) noexcept : Base(std::move(text)) {}

    /// Null empties the string; `text` may be part of it.
    CStdStr& operator=(const T* text) {
        if (text != nullptr)
            this->assign(text);
        else
            this->clear();
        return *this;
    }

private:
    static constexpr T kNoText[1] = {};
};
