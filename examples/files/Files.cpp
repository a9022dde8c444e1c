#include "files/Files.h"

#include <TqOsBase/stream/WideName.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace files {

namespace {

constexpr std::size_t kNotText = static_cast<std::size_t>(-1);

std::wstring inLocale(const std::string& argument) {
    const std::string_view locale = std::setlocale(LC_CTYPE, nullptr);
    std::wstring wide(argument.size(), L'\0');
    const std::size_t length = std::mbstowcs(wide.data(), argument.c_str(), wide.size());
    if (length == kNotText || locale == "C" || locale == "POSIX") // those know ASCII alone
        throw std::runtime_error(argument + " is neither UTF-8 nor in the encoding of the locale");
    wide.resize(length);
    return wide;
}

std::string systemReason(int error) {
    return std::generic_category().message(error);
}

} // namespace

bool Name::isSameFileAs(const Name& other) const {
    std::error_code ignored;
    return !isStandard() && !other.isStandard() && std::filesystem::equivalent(given, other.given, ignored);
}

std::vector<Name> namesOf(int argc, char** argv) {
    std::vector<Name> names;
    for (const char* const argument : std::vector<const char*>(argv, argv + argc))
        names.push_back({argument, {}});
    try {
        for (Name& name : names)
            name.wide = tq::wideName(name.given);
    } catch (const std::invalid_argument&) {
        std::setlocale(LC_CTYPE, "");
        for (Name& name : names)
            name.wide = inLocale(name.given);
    }
    return names;
}

Input::Input(const Name& name) : m_name(name.isStandard() ? "standard input" : name.given) {
    if (name.isStandard()) {
        m_stream.reset(createFileIOStreamBuf(stdin));
    } else {
        m_stream = tq::openInput(name.wide);
        m_isSized = m_stream->length() != 0 && m_stream->tell() == 0;
    }
    takeMark();
}

void Input::takeMark() {
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    m_ahead.resize(kUtf8Mark.size());
    m_ahead.resize(readOn(m_ahead.data(), m_ahead.size()));
    const std::string_view first = std::string_view(m_ahead).substr(0, 2);
    if (first == "\xFF\xFE" || first == "\xFE\xFF")
        throw std::runtime_error(m_name + " is UTF-16 text; convert it to UTF-8 first");
    if (m_ahead != kUtf8Mark)
        return;
    m_hadMark = true;
    m_ahead.clear();
    std::fprintf(stderr, "%s: skipped its UTF-8 byte order mark\n", m_name.c_str());
}

std::size_t Input::read(char* to, std::size_t n) {
    const std::size_t ahead = m_ahead.copy(to, n);
    m_ahead.erase(0, ahead);
    return ahead + readOn(to + ahead, n - ahead);
}

// A pipe has no length and no position, and devices have none to count by: the C stream below tells how many bytes
// came.
std::size_t Input::readOn(char* to, std::size_t n) {
    if (!m_isSized) {
        auto* const stream = static_cast<std::FILE*>(m_stream->fileHandle());
        const std::size_t count = std::fread(to, 1, n, stream);
        if (count < n && std::ferror(stream) != 0)
            throw std::runtime_error("cannot read " + m_name + ": " + systemReason(errno));
        return count;
    }
    const std::uint64_t left = m_stream->length() - m_stream->tell();
    const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, n));
    m_stream->readBytes(reinterpret_cast<unsigned char*>(to), count);
    return count;
}

Output::Output(const Name& name)
    : m_name(name.isStandard() ? "standard output" : name.given),
      m_stream(name.isStandard() ? tq::StreamPointer(createFileIOStreamBuf(stdout)) : tq::openOutput(name.wide)) {}

// A failure says the system's reason where there is one, else the library's.
template <class Action>
void Output::attempt(const Action& action) {
    errno = 0;
    try {
        action();
    } catch (...) {
        const std::string reason = errno != 0 ? systemReason(errno) : tq::currentErrorText();
        throw std::runtime_error("cannot write " + m_name + ": " + reason);
    }
}

void Output::write(std::string_view text) {
    attempt([&] {
        m_stream->writeBytes(reinterpret_cast<const unsigned char*>(text.data()),
                             static_cast<std::uint32_t>(text.size()));
    });
}

void Output::close() {
    attempt([&] { m_stream->close(); });
}

} // namespace files
