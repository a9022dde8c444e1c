#pragma once

#include <clocale>
#include <locale.h>

namespace macho {

/// In the locales "C" and "POSIX" of macOS every byte is the character of its value: true while such a one is current.
bool areBytesCharacters();

/// The locale that a function with a locale argument is to use; null means "C" there.
locale_t localeFromProgram(locale_t locale);

/// Makes a locale the current one of this thread while it lives.
class LocaleScope {
public:
    explicit LocaleScope(locale_t locale) : m_before(::uselocale(localeFromProgram(locale))) {}
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;
    ~LocaleScope() { ::uselocale(m_before); }

private:
    locale_t m_before;
};

} // namespace macho
