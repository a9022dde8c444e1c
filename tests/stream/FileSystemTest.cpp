#include "stream/StreamTest.h"

#include <sys/socket.h>
#include <sys/un.h>

namespace {

using namespace streamtest;
using FS = TqFileSystem;

constexpr std::uint64_t kNoSize = ~std::uint64_t{0};

void makeSocket(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    EXPECT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
}

TEST(FileSystem, EveryKindOfPath) {
    const TempFolder folder;
    writeFile(folder.path("file"), bytesOf("12345"));
    writeFile(folder.path("\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"), bytesOf("123"));
    ::mkfifo(folder.path("pipe").c_str(), 0666);
    makeSocket(folder.path("socket"));
    ::symlink("missing", folder.path("link").c_str());
    using Row = std::tuple<std::wstring, bool, bool, bool>; // existing by the one bit of the mode that is tested
    const Row rows[] = {{folder.wide(L"file"), true, true, true},
                        {folder.wide(L"\u00E9\u4E2D\U0001F600"), true, true, true},
                        {std::wstring(3000, L'/') + folder.wide(L"file"), true, true, true},
                        {folder.wide(L""), true, false, false},
                        {folder.wide(L"pipe"), true, true, true},
                        {folder.wide(L"socket"), true, false, true}, // its code has that bit too
                        {folder.wide(L"link"), false, false, false},
                        {folder.wide(L"file/none"), false, false, false},
                        {folder.wide(L"file") + static_cast<wchar_t>(0x110000), false, false, false},
                        {L"", false, false, false}};
    for (const char* locale : {"C", reference::kUtf8Locale})
        for (const auto& [name, isThere, isExisting, isAccessible] : rows) {
            SCOPED_TRACE(testing::Message() << locale << name);
            const wchar_t* path = name.c_str();
            struct stat info = {};
            std::setlocale(LC_ALL, locale);
            EXPECT_EQ(FS::accessFile(path, TqIO::kAccessReadWrite), isAccessible);
            EXPECT_EQ(FS::accessFile(path, TqIO::kAccessNone), isAccessible);
            EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), locale);
            EXPECT_EQ(FS::waccess(path, F_OK), isThere ? 0 : -1);
            EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), reference::kUtf8Characters);
            EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), locale);
            std::setlocale(LC_ALL, locale);
            EXPECT_EQ(FS::wstat(path, &info), isThere ? 0 : -1);
            EXPECT_EQ(FS::getFileSize(path), isThere ? static_cast<std::uint64_t>(info.st_size) : kNoSize);
            EXPECT_EQ(FS::isFileExisting(path), isExisting);
        }
    EXPECT_TRUE(FS::waccess(nullptr, 0) == -1 && errno == EINVAL);
    EXPECT_FALSE(FS::isFileExisting(nullptr) || FS::accessFile(nullptr, TqIO::kAccessNone));
    EXPECT_EQ(FS::getFileSize(static_cast<const wchar_t*>(nullptr)), kNoSize);
    std::setlocale(LC_ALL, "C");
}

TEST(FileSystem, BuffersByAccess) {
    const TempFolder folder;
    writeFile(folder.path("file"), bytesOf("1"));
    for (const TqIO::AccessMode access : {TqIO::kAccessRead, TqIO::kAccessWrite, TqIO::kAccessReadWrite}) {
        const auto create = [&](const wchar_t* path) {
            return BufPtr(FS::createFileBuf(path, access, TqIO::kShareDenyNone, TqIO::kOpenExisting));
        };
        const BufPtr buffer = create(folder.wide(L"file").c_str());
        const bool isInput = access == TqIO::kAccessRead;
        EXPECT_EQ(dynamic_cast<TqFileIStreamBuf*>(buffer.get()) != nullptr, isInput);
        EXPECT_EQ(dynamic_cast<TqFileOStreamBuf*>(buffer.get()) != nullptr, !isInput);
        EXPECT_TRUE(buffer->length() == 1 && buffer->shareMode() == TqIO::kShareDenyNone);
        EXPECT_EQ(create(folder.wide(L"missing").c_str()), nullptr);
        EXPECT_EQ(thrownBy([&] { create(L""); }) + thrownBy([&] { create(nullptr); }), L"status 365status 365");
        // What opening throws is no status: the buffer comes back, without a file.
        EXPECT_EQ(create(folder.wide(L"").c_str())->fileName(), nullptr);
    }
}

TEST(FileSystem, WhatIsNotProvidedDoesNothing) {
    const TempFolder folder;
    folder.write("file", "12345");
    const std::wstring path = folder.wide(L"file"), other = folder.wide(L"other");
    for (const auto function : {FS::isDirectory, FS::createFile, FS::deleteFile, FS::createDirectory,
                                FS::deleteDirectory, FS::setCurrentDirectory})
        EXPECT_FALSE(function(path.c_str()) || function(other.c_str()) || function(folder.wide(L"").c_str()));
    for (const auto function : {FS::getCreationTime, FS::getAccessingTime, FS::getModificationTime,
                                FS::getDiskAvailableSpace, FS::getDiskFreeSpace, FS::getDiskTotalSpace})
        EXPECT_EQ(function(path.c_str()), 0U);
    wchar_t out[] = L"#";
    for (const auto function : {FS::getCurrentDirectory, FS::getOSDirectory, FS::getSystemDirectory,
                                FS::getTempDirectory, FS::getRunDirectory})
        EXPECT_TRUE(!function(out) && out[0] == L'#');
    EXPECT_FALSE(FS::renameFile(path.c_str(), other.c_str()) || FS::getFileSize(static_cast<void*>(out)) != 0);
    EXPECT_TRUE(readFile(folder.path("file")).size() == 5 && !std::filesystem::exists(folder.path("other")));
}

// What paths are split into, whatever their slashes and full stops, is for fuzz/PathSplitFuzz.cpp.

// Drive, directory, file name, extension.
using Parts = std::vector<std::wstring>;
using Room = reference::GuardedBuffer<wchar_t>;

const std::wstring kLong(1000, L'x');

TEST(Paths, SplitAtTheLastSlashAndTheLastFullStop) {
    for (const auto& [path, expected] :
         {std::pair(L"C:\\dir/file.tar.gz", Parts{L"", L"C:\\dir/", L"file.tar", L"gz"}), {nullptr, Parts(4)}}) {
        wchar_t out[4][32] = {L"#", L"#", L"#", L"#"};
        _wsplitpath(path, out[0], out[1], out[2], out[3]);
        EXPECT_EQ(Parts(out, out + 4), expected) << path;
        _wsplitpath(path, nullptr, nullptr, nullptr, nullptr);
    }
    wchar_t made[] = L"#";
    _wmakepath(made, L"a", L"b", L"c", L"d");
    EXPECT_STREQ(made, L"#");
}

TEST(Paths, SplitIntoComponentsThatAreCutToFit) {
    using Row = std::tuple<std::wstring, int, Parts>; // parts: "#" where nothing is written
    const Row rows[] = {{L"data//me///plan.v2.txt/", 0, {L"data", L"/me", L"plan", L".v2.txt"}},
                        {L"/a/one.x/b/two.y.z/c", 0, {L"a", L"/b/c", L"two", L".y.z"}},
                        {L"/a/" + kLong + L"/f.", 0, {L"a", L"/" + kLong, L"f", L"."}},
                        {std::wstring(1023, L'd'), 1, {std::wstring(1023, L'd'), L"", L"#", L"#"}},
                        {std::wstring(1021, L'd') + L"/.e", 1, {L"#", L"#", L"#", L"#"}}};
    Room rooms[4] = {Room(1024), Room(1024), Room(1024), Room(1024)};
    for (const auto& [path, result, parts] : rows)
        for (const std::size_t size : {0U, 2U, 3U, 5U, 64U, 1024U}) {
            wchar_t* out[4];
            for (std::size_t i = 0; i < 4; ++i)
                out[i] = std::wcsncpy(rooms[i].last(size), L"#", size);
            EXPECT_EQ(_wsplitpath_s(path.c_str(), out[0], size, out[1], size, out[2], size, out[3], size), result);
            for (std::size_t i = 0; i < 4 && size > 0; ++i)
                EXPECT_EQ(out[i], parts[i].substr(0, size - 1)) << path.substr(0, 40) << " " << i;
        }
    EXPECT_EQ(_wsplitpath_s(nullptr, nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0), 1);
    wchar_t same[16] = L"/a/b/c.d";
    EXPECT_EQ(_wsplitpath_s(same, same, 16, same, 16, same, 16, nullptr, 0), 0) << "an output may overlap the path";
    EXPECT_STREQ(same, L"c");
    // A part with places but no buffer fails where it is met.
    const Parts written[] = {
        {L"#", L"#", L"#", L"#"}, {L"a", L"#", L"#", L".d"}, {L"a", L"/b", L"#", L".d"}, {L"a", L"#", L"#", L"#"}};
    for (std::size_t missing = 0; missing < 4; ++missing) {
        wchar_t out[4][8] = {L"#", L"#", L"#", L"#"};
        wchar_t* to[4] = {out[0], out[1], out[2], out[3]};
        to[missing] = nullptr;
        EXPECT_EQ(_wsplitpath_s(L"/a/b/c.d", to[0], 8, to[1], 8, to[2], 8, to[3], 8), 1);
        EXPECT_EQ(Parts(out, out + 4), written[missing]) << missing;
    }
}

TEST(Paths, WithoutAComponentOneFunctionSaysSo) {
    wchar_t out[1024] = L"#";
    testing::internal::CaptureStdout();
    for (const wchar_t* path : {L"", L"/", L"///"})
        EXPECT_EQ(_wsplitpath_s(path, out, 8, out, 8, out, 8, out, 8), 1);
    EXPECT_FALSE(TqPathMaker::splitPath(L"", out, 8, out, 8, out, 8, out, 8));
    EXPECT_TRUE(testing::internal::GetCapturedStdout() == "failed!\nfailed!\nfailed!\n" && out == std::wstring(L"#"));
}

TEST(Paths, OnePartAtATime) {
    const std::wstring longDir = L"/" + std::wstring(300, L'd');
    const std::wstring name(600, L'n');
    const struct {
        std::wstring path, drive, dir, ext, fileName, fullName;
    } rows[] = {{L"/a/b/c.txt", L"a", L"/b", L".txt", L"c", L"c.txt"},
                {L"/onlydir/sub", L"onlydir", L"/sub", L"", L"", L""}, // written, yet a failure
                {L"/" + kLong + L"/c.d", std::wstring(63, L'x'), L"", L".d", L"c", L"c.d"},
                {L"/a" + longDir + L"/" + name + L".longest", L"a", longDir.substr(0, 259), L".longes", name,
                 name + L".longest"}};
    Room room(1024);
    for (const auto& row : rows) {
        const bool isSplit = !row.fileName.empty();
        const auto expectPart = [&](int (*get)(wchar_t*, const wchar_t*), std::size_t size, const std::wstring& part) {
            wchar_t* out = room.last(size);
            EXPECT_EQ(get(out, row.path.c_str()), isSplit ? static_cast<int>(part.size()) : 0);
            EXPECT_EQ(out, part) << row.path.substr(0, 40);
            EXPECT_TRUE(get(out, nullptr) + get(nullptr, row.path.c_str()) == 0 && out == std::wstring(L""));
        };
        expectPart(TqPathMaker::getDriverName, 64, row.drive);
        expectPart(TqPathMaker::getParentDir, 260, row.dir);
        expectPart(TqPathMaker::getExtFileName, 8, row.ext);
        wchar_t* out = room.last(1024);
        EXPECT_TRUE(TqPathMaker::getFileName(row.path.c_str(), out, nullptr) == isSplit && out == row.fileName);
        EXPECT_TRUE(TqPathMaker::getFullFileName(row.path.c_str(), out) == isSplit && out == row.fullName);
    }
    EXPECT_FALSE(TqPathMaker::getFullFileName(nullptr, room.last(1)) ||
                 TqPathMaker::getFileName(L"/a/b.c", nullptr, nullptr));
    EXPECT_EQ(TqPathMaker::getAbsolutePath(nullptr, 1024, L"a"), 1);
    for (const wchar_t* path : {L"", L"C:/a/b", L"a:b", L"/a\\b/", L"a.b c'(&)", L"\u4E2D"})
        EXPECT_TRUE(TqPathMaker::isValidPath(path)) << path;
    for (const wchar_t* path : {L"ab:c", L":", L"a::", L"//server/x", L"\\\\server", L"a/\\b", L"a//", L"a\"", L"*",
                                L"<", L"a>b", L"?", L"a|b", static_cast<const wchar_t*>(nullptr)})
        EXPECT_FALSE(TqPathMaker::isValidPath(path)) << path;
}

} // namespace
