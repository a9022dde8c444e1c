#include "Check.h"

#include <TqOsBase/stream/PathFunctions.h>
#include <TqOsBase/stream/TqPathMaker.h>

#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <string>
#include <vector>

namespace {

constexpr wchar_t kUntouched = L'#';

// An output of exactly `size` characters, so that the sanitizers see one too many.
class Output {
public:
    explicit Output(std::size_t size) : m_text(size, kUntouched) {}

    wchar_t* data() { return m_text.empty() ? nullptr : m_text.data(); }
    std::size_t size() const { return m_text.size(); }
    bool isUntouched() const { return m_text.empty() || m_text[0] == kUntouched; }
    std::wstring text() const {
        const std::size_t length = m_text.empty() ? 0 : ::wcsnlen(m_text.data(), m_text.size());
        fuzz::check(m_text.empty() || isUntouched() || length < m_text.size(), "an output is terminated");
        return isUntouched() ? std::wstring() : m_text.substr(0, length);
    }

private:
    std::wstring m_text;
};

struct Parts {
    explicit Parts(std::size_t size) : drive(size), dir(size), fname(size), ext(size) {}
    Output drive, dir, fname, ext;
};

// Slashes, full stops and two letters: a splitter sees no other differences. These four bytes stand for themselves.
std::wstring pathOf(const std::uint8_t* data, std::size_t size) {
    std::wstring path;
    for (std::size_t i = 0; i < size; ++i)
        path += L"da./"[data[i] % 4];
    return path;
}

void checkPlainSplit(const std::wstring& path) {
    Parts parts(path.size() + 1);
    _wsplitpath(path.c_str(), parts.drive.data(), parts.dir.data(), parts.fname.data(), parts.ext.data());
    const std::wstring stem = parts.dir.text() + parts.fname.text();
    const bool hasStop = stem.size() < path.size();
    fuzz::check(stem + (hasStop ? L"." : L"") + parts.ext.text() == path, "the parts make the path again");
    fuzz::check(parts.drive.text().empty(), "there is no drive");
    fuzz::check((parts.fname.text() + parts.ext.text()).find(L'/') == std::wstring::npos, "slashes are the folder's");
    fuzz::check(parts.ext.text().find(L'.') == std::wstring::npos, "the last full stop separates");
}

int split(const std::wstring& path, Parts& parts) {
    return _wsplitpath_s(path.c_str(), parts.drive.data(), parts.drive.size(), parts.dir.data(), parts.dir.size(),
                         parts.fname.data(), parts.fname.size(), parts.ext.data(), parts.ext.size());
}

// The path with single slashes, in front too, and of its dotted components after the first only the last.
std::wstring joinedAgain(const std::wstring& path) {
    std::wstring folders;
    std::wstring fileName;
    bool isFirst = true;
    for (std::size_t at = path.find_first_not_of(L'/'); at < path.size(); at = path.find_first_not_of(L'/', at)) {
        const std::wstring component = path.substr(at, path.find(L'/', at) - at);
        at += component.size();
        if (!isFirst && component.find(L'.') != std::wstring::npos)
            fileName = component;
        else
            folders += L"/" + component;
        isFirst = false;
    }
    return folders + L"|" + fileName;
}

void checkBoundedSplit(const std::wstring& path, std::size_t cutSize) {
    Parts whole(1024);
    const int result = split(path, whole);
    Parts cut(cutSize);
    fuzz::check(split(path, cut) == result, "sizes do not decide");
    const auto isPrefix = [&](const Output& part, const Output& of) {
        return part.size() == 0 || part.text() == of.text().substr(0, part.size() - 1);
    };
    fuzz::check(isPrefix(cut.drive, whole.drive) && isPrefix(cut.dir, whole.dir) && isPrefix(cut.fname, whole.fname) &&
                    isPrefix(cut.ext, whole.ext),
                "what is cut is the beginning");
    if (path.size() >= 1024) {
        fuzz::check(result == 1 && whole.drive.isUntouched(), "too long a path is refused");
        return;
    }
    const std::wstring expected = joinedAgain(path);
    const bool hasFileName = expected.back() != L'|';
    fuzz::check(result == (hasFileName ? 0 : 1), "it fails without a file name");
    if (!whole.drive.isUntouched())
        fuzz::check(L"/" + whole.drive.text() + whole.dir.text() + L"|" + whole.fname.text() + whole.ext.text() ==
                        expected,
                    "the parts make the path again");
    else
        fuzz::check(expected == L"|", "nothing is written without a component");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    // The first byte: the size of cut outputs, and every sixteenth time a path around the limit.
    const std::wstring path = std::wstring(data[0] % 16 == 0 ? 1016 : 0, L'a') + pathOf(data + 1, size - 1);
    checkPlainSplit(path);
    if (path.find_first_not_of(L'/') != std::wstring::npos || path.size() >= 1024)
        checkBoundedSplit(path, data[0] % 32);
    bool hasPair = false;
    for (std::size_t i = 1; i < path.size(); ++i)
        hasPair = hasPair || (path[i] == L'/' && path[i - 1] == L'/');
    fuzz::check(TqPathMaker::isValidPath(path.c_str()) == !hasPair, "only doubled slashes are wrong here");
    return 0;
}
