#include "base/StandardStreams.h"

#include <TqOsBase/stream/PathFunctions.h>

#include <algorithm>
#include <cassert>
#include <cwchar>
#include <string_view>
#include <wchar.h> // wcsnlen is POSIX's

namespace {

constexpr std::size_t kPathCapacity = 1024; // characters, with the terminator

// Where one part of the path goes, and how many characters there are; null with 0 for nowhere.
struct Output {
    wchar_t* text;
    std::size_t size;

    // Writes as much of the part as fits, and a terminator. False when there are places but nowhere to put them.
    bool write(std::wstring_view part) const {
        if (text == nullptr)
            return size == 0;
        if (size > 0)
            text[part.copy(text, size - 1)] = L'\0';
        return true;
    }
};

void writeWhole(wchar_t* out, std::wstring_view part) {
    if (out != nullptr)
        out[part.copy(out, part.size())] = L'\0';
}

// Takes the first component off `rest`; empty when there is none.
std::wstring_view takeComponent(std::wstring_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(L'/'), rest.size()));
    const std::wstring_view component = rest.substr(0, rest.find(L'/'));
    rest.remove_prefix(component.size());
    return component;
}

// True when all parts were there and could be written.
bool split(std::wstring_view path, const Output& drive, const Output& dir, const Output& fname, const Output& ext) {
    const std::wstring_view first = takeComponent(path);
    if (first.empty()) {
        tq::detail::printNarrow("failed!\n");
        return false;
    }
    if (!drive.write(first))
        return false;

    wchar_t directory[kPathCapacity]; // each component with a slash before it, so never longer than the path
    std::size_t directoryLength = 0;
    bool hasFileName = false;
    std::wstring_view fileName;
    for (auto component = takeComponent(path); !component.empty(); component = takeComponent(path)) {
        const std::size_t stop = component.find(L'.');
        if (stop == std::wstring_view::npos) {
            assert(directoryLength + 1 + component.size() < kPathCapacity);
            directory[directoryLength++] = L'/';
            directoryLength += component.copy(directory + directoryLength, component.size());
        } else {
            if (!ext.write(component.substr(stop)))
                return false;
            fileName = component.substr(0, stop);
            hasFileName = true;
        }
    }
    return dir.write({directory, directoryLength}) && hasFileName && fname.write(fileName);
}

} // namespace

void _wsplitpath(const wchar_t* path, wchar_t* drive, wchar_t* dir, wchar_t* fname, wchar_t* ext) {
    for (wchar_t* out : {drive, dir, fname, ext})
        writeWhole(out, {});
    if (path == nullptr)
        return;
    std::wstring_view rest = path;
    const std::size_t directoryLength = rest.rfind(L'/') + 1; // npos + 1 is 0
    writeWhole(dir, rest.substr(0, directoryLength));
    rest.remove_prefix(directoryLength);
    const std::size_t stop = rest.rfind(L'.');
    writeWhole(fname, rest.substr(0, stop));
    if (stop != std::wstring_view::npos)
        writeWhole(ext, rest.substr(stop + 1));
}

int _wsplitpath_s(const wchar_t* path, wchar_t* drive, std::size_t driveSize, wchar_t* dir, std::size_t dirSize,
                  wchar_t* fname, std::size_t fnameSize, wchar_t* ext, std::size_t extSize) {
    if (path == nullptr)
        return 1;
    const std::size_t length = ::wcsnlen(path, kPathCapacity);
    if (length == kPathCapacity)
        return 1;
    wchar_t copy[kPathCapacity]; // an output may overlap the path
    std::wmemcpy(copy, path, length);
    return split({copy, length}, {drive, driveSize}, {dir, dirSize}, {fname, fnameSize}, {ext, extSize}) ? 0 : 1;
}

void _wmakepath(wchar_t*, const wchar_t*, const wchar_t*, const wchar_t*, const wchar_t*) {}
