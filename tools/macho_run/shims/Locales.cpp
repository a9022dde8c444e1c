// Locales by macOS's names, and its tables of character classes.

#include "shims/Locales.h"

#include "shims/Imports.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <langinfo.h>
#include <string>

namespace macho {

namespace {

// macOS's categories from 1 on, in its order; 0 is all of them.
constexpr int kCategories[] = {LC_ALL, LC_COLLATE, LC_CTYPE, LC_MONETARY, LC_NUMERIC, LC_TIME, LC_MESSAGES};
constexpr int kCategoryCount = 7;
constexpr int kAll = 0;
constexpr int kCharacters = 2;

std::array<std::string, kCategoryCount> g_names{"", "C", "C", "C", "C", "C", "C"};

bool endsWith(const std::string& text, const char* end) {
    const std::size_t length = std::strlen(end);
    return text.size() >= length && text.compare(text.size() - length, length, end) == 0;
}

// The locale here for a name there; empty for a name that macOS does not have. Every language's UTF-8 locale is
// installed there; where it is not here, its characters are those of C.UTF-8.
std::string nameHere(const std::string& name, int category) {
    if (name == "C" || name == "POSIX")
        return "C";
    if (name == "UTF-8")
        return category == kCharacters ? "C.UTF-8" : "";
    if (name.empty() || name == "C.UTF-8")
        return "";
    if (endsWith(name, ".UTF-8")) {
        const locale_t installed = ::newlocale(LC_ALL_MASK, name.c_str(), nullptr);
        if (installed == nullptr)
            return "C.UTF-8";
        ::freelocale(installed);
    }
    return name;
}

std::string nameOfEnvironment(int category) {
    constexpr const char* kVariables[] = {"",           "LC_COLLATE", "LC_CTYPE",   "LC_MONETARY",
                                          "LC_NUMERIC", "LC_TIME",    "LC_MESSAGES"};
    for (const char* variable : {"LC_ALL", kVariables[category], "LANG"}) {
        const char* const value = std::getenv(variable);
        if (value != nullptr && *value != '\0')
            return value;
    }
    return "C";
}

bool setOne(int category, std::string name) {
    if (name.empty())
        name = nameOfEnvironment(category);
    const std::string here = nameHere(name, category);
    if (here.empty() || std::setlocale(kCategories[category], here.c_str()) == nullptr)
        return false;
    g_names[static_cast<std::size_t>(category)] = name;
    return true;
}

// One name, or those of all categories with slashes between.
bool setAll(const std::string& names) {
    std::size_t start = 0;
    for (int category = 1; category < kCategoryCount; ++category) {
        const std::size_t end = names.find('/', start);
        if (!setOne(category, names.substr(start, end - start)))
            return false;
        start = end == std::string::npos ? start : end + 1;
    }
    return true;
}

const char* setLocale(int category, const char* name) {
    static std::string result;
    if (category < 0 || category >= kCategoryCount)
        return nullptr;
    if (name != nullptr) {
        const auto before = g_names;
        if (!(category == kAll ? setAll(name) : setOne(category, name))) {
            for (int each = 1; each < kCategoryCount; ++each)
                setOne(each, before[static_cast<std::size_t>(each)]);
            return nullptr;
        }
    }
    if (category != kAll)
        return g_names[static_cast<std::size_t>(category)].c_str();
    result = g_names[1];
    bool isSame = true;
    for (int each = 2; each < kCategoryCount; ++each) {
        isSame = isSame && g_names[static_cast<std::size_t>(each)] == g_names[1];
        result += "/" + g_names[static_cast<std::size_t>(each)];
    }
    if (isSame)
        result = g_names[1];
    return result.c_str();
}

locale_t makeLocale(int mask, const char* name, locale_t base) {
    constexpr int kMasks[] = {LC_COLLATE_MASK,  LC_CTYPE_MASK,   LC_MESSAGES_MASK,
                              LC_MONETARY_MASK, LC_NUMERIC_MASK, LC_TIME_MASK};
    constexpr int kAllMask = 0x3F, kCharactersMask = 2;
    int here = 0;
    for (int bit = 0; bit < 6; ++bit)
        here |= (mask & (1 << bit)) != 0 ? kMasks[bit] : 0;
    const std::string nameWanted = name == nullptr || *name == '\0' ? nameOfEnvironment(kCharacters) : name;
    const std::string nameFound = nameHere(nameWanted, mask == kCharactersMask ? kCharacters : kAll);
    return nameFound.empty() ? nullptr : ::newlocale(mask == kAllMask ? LC_ALL_MASK : here, nameFound.c_str(), base);
}

// The classes of a character, as bits.
struct ClassBit {
    std::uint32_t bit;
    int (*belongs)(wint_t);
};
constexpr ClassBit kClassBits[] = {
    {0x00000100, std::iswalpha},  {0x00000200, std::iswcntrl}, {0x00000400, std::iswdigit}, {0x00000800, std::iswgraph},
    {0x00001000, std::iswlower},  {0x00002000, std::iswpunct}, {0x00004000, std::iswspace}, {0x00008000, std::iswupper},
    {0x00010000, std::iswxdigit}, {0x00020000, std::iswblank}, {0x00040000, std::iswprint},
};

std::uint32_t classesOf(int character) {
    std::uint32_t classes = 0;
    for (const ClassBit& entry : kClassBits)
        classes |= entry.belongs(static_cast<wint_t>(character)) != 0 ? entry.bit : 0;
    return classes;
}

// The table of the "C" locale, which programs read directly.
struct RuneLocale {
    char magic[8];
    char encoding[32];
    void* read;
    void* write;
    std::int32_t invalid;
    std::uint32_t classes[256];
    std::int32_t lower[256];
    std::int32_t upper[256];
    char ranges[256];

    RuneLocale() : RuneLocale(LocaleScope(nullptr)) {}

private:
    explicit RuneLocale(const LocaleScope&)
        : magic{}, encoding{}, read(nullptr), write(nullptr), invalid(0), classes{}, lower{}, upper{}, ranges{} {
        for (int c = 0; c < 256; ++c) {
            classes[c] = c < 128 ? classesOf(c) : 0;
            lower[c] = c < 128 ? static_cast<std::int32_t>(std::towlower(static_cast<wint_t>(c))) : c;
            upper[c] = c < 128 ? static_cast<std::int32_t>(std::towupper(static_cast<wint_t>(c))) : c;
        }
    }
};

int isInClass(int character, unsigned long mask) {
    return static_cast<int>(classesOf(character) & mask);
}
int isInClassOf(int character, unsigned long mask, locale_t locale) {
    const LocaleScope scope(locale);
    return isInClass(character, mask);
}
int toLower(int character) {
    return static_cast<int>(std::towlower(static_cast<wint_t>(character)));
}
int toUpper(int character) {
    return static_cast<int>(std::towupper(static_cast<wint_t>(character)));
}
int toLowerIn(int character, locale_t locale) {
    const LocaleScope scope(locale);
    return toLower(character);
}
int toUpperIn(int character, locale_t locale) {
    const LocaleScope scope(locale);
    return toUpper(character);
}

int longestCharacter() {
    return static_cast<int>(MB_CUR_MAX);
}
int longestCharacterOf(locale_t locale) {
    const LocaleScope scope(locale);
    return longestCharacter();
}

struct NumberFormat {
    char* texts[10];
    char numbers[14];
};

NumberFormat* numberFormatOf(locale_t locale) {
    thread_local NumberFormat format;
    const LocaleScope scope(locale);
    const lconv& c = *std::localeconv();
    format = {{c.decimal_point, c.thousands_sep, c.grouping, c.int_curr_symbol, c.currency_symbol, c.mon_decimal_point,
               c.mon_thousands_sep, c.mon_grouping, c.positive_sign, c.negative_sign},
              {c.int_frac_digits, c.frac_digits, c.p_cs_precedes, c.p_sep_by_space, c.n_cs_precedes, c.n_sep_by_space,
               c.p_sign_posn, c.n_sign_posn, c.int_p_cs_precedes, c.int_n_cs_precedes, c.int_p_sep_by_space,
               c.int_n_sep_by_space, c.int_p_sign_posn, c.int_n_sign_posn}};
    return &format;
}

} // namespace

bool areBytesCharacters() {
    return std::strcmp(::nl_langinfo(CODESET), "ANSI_X3.4-1968") == 0;
}

locale_t localeFromProgram(locale_t locale) {
    static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return locale != nullptr ? locale : plain;
}

void addLocaleShims(ImportTable& table) {
    static RuneLocale defaultRunes;
    table.add("__DefaultRuneLocale", &defaultRunes);
    table.add("_setlocale", setLocale);
    table.add("_newlocale", makeLocale);
    table.add("_localeconv_l", numberFormatOf);
    table.add("___maskrune", isInClass);
    table.add("___maskrune_l", isInClassOf);
    table.add("___tolower", toLower);
    table.add("___toupper", toUpper);
    table.add("____tolower_l", toLowerIn);
    table.add("____toupper_l", toUpperIn);
    table.add("___mb_cur_max", longestCharacter);
    table.add("____mb_cur_max", longestCharacter);
    table.add("____mb_cur_max_l", longestCharacterOf);
}

} // namespace macho
