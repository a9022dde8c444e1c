#pragma once

#include <TqOsBase/stream/OpenStream.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// What the examples need of files. Every failure is a std::exception whose text is one clear line.
namespace files {

/// A name as it was given, and as the library takes it. "-" is standard input or output.
struct Name {
    std::string given;
    std::wstring wide;

    bool isStandard() const { return given == "-"; }
    bool isSameFileAs(const Name& other) const;
};

/// The arguments of main() as names: UTF-8 if all of them are, whatever the locale. Else they are in the encoding of
/// the user's locale, which becomes the program's for characters, so that the library hands the system the same bytes.
std::vector<Name> namesOf(int argc, char** argv);

/// The bytes of a file, a pipe or standard input, which have no length before they have ended. A byte order mark of
/// UTF-8 is skipped, and said on standard error; text that begins with one of UTF-16 is refused.
class Input {
public:
    explicit Input(const Name& name);
    /// Reads up to `n` bytes; fewer at the end only.
    std::size_t read(char* to, std::size_t n);
    const std::string& name() const { return m_name; }
    bool hadMark() const { return m_hadMark; }

private:
    std::size_t readOn(char* to, std::size_t n);
    void takeMark();

    std::string m_name;
    tq::StreamPointer m_stream;
    bool m_isSized = false;
    bool m_hadMark = false;
    std::string m_ahead; // read already
};

/// A new or emptied file, or standard output.
class Output {
public:
    explicit Output(const Name& name);
    void write(std::string_view text);
    /// To be called at the end: what is written may be refused as late as this.
    void close();

private:
    template <class Action>
    void attempt(const Action& action);

    std::string m_name;
    tq::StreamPointer m_stream;
};

} // namespace files
