#include <TqOsBase/stream/PathFunctions.h>
#include <TqOsBase/stream/TqPathMaker.h>

#include <cwchar>
#include <string_view>

namespace {

constexpr std::size_t kDriveSize = 64;
constexpr std::size_t kDirectorySize = 260;
constexpr std::size_t kExtensionSize = 8;
constexpr std::size_t kFileNameSize = 1024;
constexpr std::size_t kColonIndex = 1;

bool isSeparator(wchar_t c) {
    return c == L'/' || c == L'\\';
}

// Empties `out`. False when there is no path to split, or nowhere to put a part of it.
bool canSplit(wchar_t* out, const wchar_t* path) {
    if (out != nullptr)
        *out = L'\0';
    return out != nullptr && path != nullptr;
}

int lengthOf(const wchar_t* text) {
    return static_cast<int>(std::wcslen(text));
}

} // namespace

bool TqPathMaker::isValidPath(const wchar_t* path) {
    if (path == nullptr)
        return false;
    const std::wstring_view text = path;
    if (text.find_first_of(L"\"*<>?|") != std::wstring_view::npos)
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L':' && i != kColonIndex)
            return false;
        if (i > 0 && isSeparator(text[i]) && isSeparator(text[i - 1]))
            return false;
    }
    return true;
}

int TqPathMaker::getAbsolutePath(wchar_t*, unsigned, const wchar_t*) {
    return 1;
}

int TqPathMaker::getDriverName(wchar_t* out, const wchar_t* path) {
    if (!canSplit(out, path) || _wsplitpath_s(path, out, kDriveSize, nullptr, 0, nullptr, 0, nullptr, 0) != 0)
        return 0;
    return lengthOf(out);
}

int TqPathMaker::getParentDir(wchar_t* out, const wchar_t* path) {
    if (!canSplit(out, path) || _wsplitpath_s(path, nullptr, 0, out, kDirectorySize, nullptr, 0, nullptr, 0) != 0)
        return 0;
    return lengthOf(out);
}

int TqPathMaker::getExtFileName(wchar_t* out, const wchar_t* path) {
    if (!canSplit(out, path) || _wsplitpath_s(path, nullptr, 0, nullptr, 0, nullptr, 0, out, kExtensionSize) != 0)
        return 0;
    return lengthOf(out);
}

bool TqPathMaker::getFileName(const wchar_t* path, wchar_t* out, const wchar_t**) {
    return canSplit(out, path) && splitPath(path, nullptr, 0, nullptr, 0, out, kFileNameSize, nullptr, 0);
}

bool TqPathMaker::getFullFileName(const wchar_t* path, wchar_t* out) {
    wchar_t extension[kFileNameSize] = L"";
    if (!canSplit(out, path) || !splitPath(path, nullptr, 0, nullptr, 0, out, kFileNameSize, extension, kFileNameSize))
        return false;
    std::wcsncat(out, extension, kFileNameSize); // both come from one path, shorter than that
    return true;
}

bool TqPathMaker::splitPath(const wchar_t* path, wchar_t* drive, std::size_t driveSize, wchar_t* dir,
                            std::size_t dirSize, wchar_t* fname, std::size_t fnameSize, wchar_t* ext,
                            std::size_t extSize) {
    if (path == nullptr || *path == L'\0')
        return false;
    return _wsplitpath_s(path, drive, driveSize, dir, dirSize, fname, fnameSize, ext, extSize) == 0;
}
