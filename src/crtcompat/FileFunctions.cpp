#include "crtcompat/SystemName.h"

#include <TqOsBase/crtcompat/FileFunctions.h>
#include <TqOsBase/stream/TqFileSystem.h>

#include <cerrno>
#include <string>

using tq::detail::systemName;

std::FILE* _wfopen(const wchar_t* name, const wchar_t* mode) {
    std::string narrowName;
    std::string narrowMode;
    int error = systemName(name, narrowName);
    if (error == 0)
        error = systemName(mode, narrowMode);
    if (error != 0) {
        errno = error;
        return nullptr;
    }
    return std::fopen(narrowName.c_str(), narrowMode.c_str());
}

int _wfopen_s(std::FILE** out, const wchar_t* name, const wchar_t* mode) {
    if (out == nullptr)
        return EINVAL;
    *out = _wfopen(name, mode);
    return errno;
}

int _wrename(const wchar_t* oldName, const wchar_t* newName) {
    std::string narrowOld;
    std::string narrowNew;
    int error = systemName(oldName, narrowOld);
    if (error == 0)
        error = systemName(newName, narrowNew);
    if (error != 0) {
        errno = error;
        return -1;
    }
    return std::rename(narrowOld.c_str(), narrowNew.c_str());
}

int _waccess(const wchar_t* name, int mode) {
    return TqFileSystem::waccess(name, mode);
}

wchar_t* _wgetcwd(wchar_t*, int) {
    return nullptr;
}
