#include "crtcompat/SystemName.h"

#include <TqOsBase/porting/WindowsFiles.h>

#include <cerrno>
#include <string>
#include <unistd.h>

namespace {

int fail(int error) {
    errno = error;
    return -1;
}

// What the call of the system gives for the name, or -1 when it can have no such name. Where the system refuses with
// `theirs`, the namesakes' documentation has `documented`.
template <class Call>
int withName(const wchar_t* name, const Call& call, int theirs = 0, int documented = 0) {
    std::string converted;
    if (const int error = tq::detail::systemName(name, converted); error != 0)
        return fail(error);
    const int result = call(converted.c_str());
    if (result != 0 && errno == theirs)
        errno = documented;
    return result;
}

} // namespace

int tq::windows::fopen_s(std::FILE** out, const char* name, const char* mode) {
    if (out == nullptr || name == nullptr || mode == nullptr)
        return errno = EINVAL;
    *out = std::fopen(name, mode);
    return *out != nullptr ? 0 : errno;
}

int tq::windows::_fseeki64(std::FILE* stream, long long offset, int origin) {
    return stream == nullptr ? fail(EINVAL) : ::fseeko(stream, offset, origin);
}

long long tq::windows::_ftelli64(std::FILE* stream) {
    return stream == nullptr ? fail(EINVAL) : ::ftello(stream);
}

int tq::windows::_fileno(std::FILE* stream) {
    return stream == nullptr ? fail(EINVAL) : ::fileno(stream);
}

int tq::windows::_wunlink(const wchar_t* name) {
    // Linux says that it is a folder, macOS that it is not allowed.
    const auto remove = [](const char* path) {
        const int result = ::unlink(path);
        if (result != 0 && errno == EPERM)
            errno = EACCES;
        return result;
    };
    return withName(name, remove, EISDIR, EACCES);
}

int tq::windows::_wremove(const wchar_t* name) {
    return _wunlink(name);
}

int tq::windows::_wmkdir(const wchar_t* name) {
    constexpr mode_t kAllRights = 0777;
    return withName(name, [](const char* path) { return ::mkdir(path, kAllRights); });
}

int tq::windows::_wrmdir(const wchar_t* name) {
    return withName(name, ::rmdir, ENOTDIR, ENOTEMPTY);
}

int tq::windows::_wchdir(const wchar_t* name) {
    return withName(name, ::chdir, ENOTDIR, ENOENT);
}

int tq::windows::_wstat64(const wchar_t* name, struct _stat64* status) {
    if (status == nullptr)
        return fail(EINVAL);
    return withName(name, [&](const char* path) { return ::stat(path, status); });
}

int tq::windows::_waccess_s(const wchar_t* name, int mode) {
    constexpr int kReadAndWrite = R_OK | W_OK;
    if ((mode & ~kReadAndWrite) != 0)
        return errno = EINVAL;
    return withName(name, [&](const char* path) { return ::access(path, mode); }) == 0 ? 0 : errno;
}
