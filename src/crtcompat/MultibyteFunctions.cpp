#include "base/CharacterClass.h"
#include "crtcompat/Placeholder.h"

#include <TqOsBase/crtcompat/MultibyteFunctions.h>

#include <climits>
#include <cstring>
#include <strings.h>

using tq::detail::endProcess;

namespace {

const char* chars(const unsigned char* text) {
    return reinterpret_cast<const char*>(text);
}

} // namespace

int _ismbblead(int) {
    return 0;
}

int _ismbbtrail(int) {
    return 0;
}

int _ismbcspace(unsigned int c) {
    return tq::detail::isSpace(static_cast<wchar_t>(c)) ? 1 : 0;
}

unsigned char* _mbsinc(const unsigned char* p) {
    return const_cast<unsigned char*>(p + 1);
}

unsigned char* _mbsninc(const unsigned char* p, std::size_t n) {
    return const_cast<unsigned char*>(p + n);
}

int _mbscmp(const unsigned char* a, const unsigned char* b) {
    return a != nullptr && b != nullptr ? std::strcmp(chars(a), chars(b)) : INT_MAX;
}

int _mbsicmp(const unsigned char* a, const unsigned char* b) {
    return a != nullptr && b != nullptr ? ::strcasecmp(chars(a), chars(b)) : INT_MAX;
}

unsigned char* _mbsstr(const unsigned char* a, const unsigned char* b) {
    if (a == nullptr || b == nullptr)
        return nullptr;
    return reinterpret_cast<unsigned char*>(const_cast<char*>(std::strstr(chars(a), chars(b))));
}

std::size_t _mbslen(const unsigned char* s) {
    return s != nullptr ? std::strlen(chars(s)) : 0;
}

unsigned char* _mbsdec(const unsigned char*, const unsigned char*) {
    endProcess("_mbsdec");
}

int _ismbclower(unsigned int) {
    endProcess("_ismbclower");
}

int _ismbcupper(unsigned int) {
    endProcess("_ismbcupper");
}

int _ismbcdigit(unsigned int) {
    endProcess("_ismbcdigit");
}

unsigned int _mbctolower(unsigned int) {
    endProcess("_mbctolower");
}

unsigned int _mbctoupper(unsigned int) {
    endProcess("_mbctoupper");
}

unsigned char* _mbslwr(unsigned char*) {
    endProcess("_mbslwr");
}

unsigned char* _mbsupr(unsigned char*) {
    endProcess("_mbsupr");
}

unsigned char* _mbsrev(unsigned char*) {
    endProcess("_mbsrev");
}

int _mbsncmp(const unsigned char*, const unsigned char*, std::size_t) {
    endProcess("_mbsncmp");
}

int _mbsnicmp(const unsigned char*, const unsigned char*, std::size_t) {
    endProcess("_mbsnicmp");
}

int _mbscoll(const unsigned char*, const unsigned char*) {
    endProcess("_mbscoll");
}

int _mbsncoll(const unsigned char*, const unsigned char*, std::size_t) {
    endProcess("_mbsncoll");
}

int _mbsicoll(const unsigned char*, const unsigned char*) {
    endProcess("_mbsicoll");
}

int _mbsnicoll(const unsigned char*, const unsigned char*, std::size_t) {
    endProcess("_mbsnicoll");
}

std::size_t _mbsspn(const unsigned char*, const unsigned char*) {
    endProcess("_mbsspn");
}

std::size_t _mbscspn(const unsigned char*, const unsigned char*) {
    endProcess("_mbscspn");
}
