#include "reference/GuardedBuffer.h"

#include <TqOsBase/stream/PathFunctions.h>
#include <TqOsBase/stream/TqPathMaker.h>

#include <cwchar>
#include <gtest/gtest.h>
#include <string>

namespace {

const std::wstring kUntouched = L"#";

struct Parts {
    std::wstring drive, dir, fname, ext;
    bool operator==(const Parts&) const = default;
};

void PrintTo(const Parts& parts, std::ostream* out) {
    for (const std::wstring& part : {parts.drive, parts.dir, parts.fname, parts.ext})
        *out << "[" << std::string(part.begin(), part.end()) << "]";
}

TEST(Wsplitpath, SplitsAtTheLastSlashAndTheLastFullStop) {
    const std::pair<const wchar_t*, Parts> rows[] = {
        {L"dir/file.tar.gz", {L"", L"dir/", L"file.tar", L"gz"}},
        {L"name", {L"", L"", L"name", L""}},
        {L"name.", {L"", L"", L"name", L""}},
        {L".name", {L"", L"", L"", L"name"}},
        {L"/a.b/", {L"", L"/a.b/", L"", L""}},
        {L"/a.b/c", {L"", L"/a.b/", L"c", L""}},
        {L"C:\\a\\b.c", {L"", L"", L"C:\\a\\b", L"c"}},
        {L"/", {L"", L"/", L"", L""}},
        {L"", {}},
        {nullptr, {}},
    };
    for (const auto& [path, expected] : rows) {
        wchar_t out[4][32] = {L"#", L"#", L"#", L"#"};
        _wsplitpath(path, out[0], out[1], out[2], out[3]);
        EXPECT_EQ((Parts{out[0], out[1], out[2], out[3]}), expected) << path;
        _wsplitpath(path, nullptr, nullptr, nullptr, nullptr);
    }
    wchar_t made[] = L"#";
    _wmakepath(made, L"a", L"b", L"c", L"d");
    EXPECT_EQ(made, kUntouched);
}

// All four outputs with `size` places each, the last of which borders on a guard.
struct Outputs {
    explicit Outputs(std::size_t places) : size(places) {
        for (std::size_t i = 0; i < 4; ++i) {
            text[i] = room[i].last(places);
            if (places > 0)
                std::wmemcpy(text[i], L"#", std::min<std::size_t>(places, 2));
        }
    }
    int split(const wchar_t* path) {
        return _wsplitpath_s(path, text[0], size, text[1], size, text[2], size, text[3], size);
    }
    Parts parts() const { return {text[0], text[1], text[2], text[3]}; }

    reference::GuardedBuffer<wchar_t> room[4] = {
        reference::GuardedBuffer<wchar_t>(1024), reference::GuardedBuffer<wchar_t>(1024),
        reference::GuardedBuffer<wchar_t>(1024), reference::GuardedBuffer<wchar_t>(1024)};
    wchar_t* text[4] = {};
    std::size_t size;
};

struct SplitRow {
    std::wstring path;
    int result;
    Parts parts; // "#" where nothing is written
};

const std::wstring kLong(1000, L'x');

const SplitRow kSplitRows[] = {
    {L"/data/me/docs/plan.v2.txt", 0, {L"data", L"/me/docs", L"plan", L".v2.txt"}},
    {L"data//me///plan.txt/", 0, {L"data", L"/me", L"plan", L".txt"}},
    {L"/a/one.x/b/two.y.z/c", 0, {L"a", L"/b/c", L"two", L".y.z"}},
    {L"/a.b/c.d", 0, {L"a.b", L"", L"c", L".d"}},
    {L"/a/.hidden", 0, {L"a", L"", L"", L".hidden"}},
    {L"/a/b.", 0, {L"a", L"", L"b", L"."}},
    {L"/a/" + kLong + L"/f.e", 0, {L"a", L"/" + kLong, L"f", L".e"}},
    {L"/onlydir/sub", 1, {L"onlydir", L"/sub", L"#", L"#"}},
    {L"file.txt", 1, {L"file.txt", L"", L"#", L"#"}},
    {std::wstring(1023, L'd'), 1, {std::wstring(1023, L'd'), L"", L"#", L"#"}},
    {std::wstring(1020, L'd') + L"/.e", 0, {std::wstring(1020, L'd'), L"", L"", L".e"}},
    {std::wstring(1021, L'd') + L"/.e", 1, {L"#", L"#", L"#", L"#"}},
    {std::wstring(5000, L'/'), 1, {L"#", L"#", L"#", L"#"}},
};

TEST(WsplitpathS, SplitsIntoComponentsAndCutsToFit) {
    reference::GuardedBuffer<wchar_t> source(8192);
    for (const SplitRow& row : kSplitRows) {
        const wchar_t* path = source.place(row.path.c_str(), row.path.size() + 1);
        Outputs whole(1024);
        EXPECT_EQ(whole.split(path), row.result) << row.path.substr(0, 40);
        EXPECT_EQ(whole.parts(), row.parts) << row.path.substr(0, 40);
        for (std::size_t size = 2; size <= 12; ++size) {
            Outputs cut(size);
            EXPECT_EQ(cut.split(path), row.result);
            const auto prefix = [&](const std::wstring& part) { return part.substr(0, size - 1); };
            EXPECT_EQ(cut.parts(), (Parts{prefix(row.parts.drive), prefix(row.parts.dir), prefix(row.parts.fname),
                                          prefix(row.parts.ext)}))
                << row.path.substr(0, 40) << " " << size;
        }
        EXPECT_EQ(Outputs(0).split(path), row.result) << "nothing to write to is no failure";
    }
    EXPECT_EQ(Outputs(8).split(nullptr), 1);
}

TEST(WsplitpathS, APartWithPlacesButNoBufferFailsWhereItIsMet) {
    const Parts written[] = {
        {L"#", L"#", L"#", L"#"}, {L"a", L"#", L"#", L".d"}, {L"a", L"/b", L"#", L".d"}, {L"a", L"#", L"#", L"#"}};
    for (std::size_t missing = 0; missing < 4; ++missing) {
        wchar_t out[4][8] = {L"#", L"#", L"#", L"#"};
        wchar_t* to[4] = {out[0], out[1], out[2], out[3]};
        to[missing] = nullptr;
        EXPECT_EQ(_wsplitpath_s(L"/a/b/c.d", to[0], 8, to[1], 8, to[2], 8, to[3], 8), 1);
        EXPECT_EQ((Parts{out[0], out[1], out[2], out[3]}), written[missing]) << missing;
        std::size_t sizes[4] = {8, 8, 8, 8};
        sizes[missing] = 0;
        EXPECT_EQ(_wsplitpath_s(L"/a/b/c.d", to[0], sizes[0], to[1], sizes[1], to[2], sizes[2], to[3], sizes[3]), 0)
            << "left out";
    }
    wchar_t same[16] = L"/a/b/c.d";
    EXPECT_EQ(_wsplitpath_s(same, same, 16, same, 16, same, 16, nullptr, 0), 0) << "an output may overlap the path";
    EXPECT_STREQ(same, L"c");
}

TEST(WsplitpathS, SaysWhenThereIsNoComponent) {
    for (const wchar_t* path : {L"", L"/", L"///"}) {
        testing::internal::CaptureStdout();
        Outputs out(8);
        EXPECT_EQ(out.split(path), 1);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "failed!\n");
        EXPECT_EQ(out.parts(), (Parts{L"#", L"#", L"#", L"#"}));
    }
    testing::internal::CaptureStdout();
    wchar_t out[1024] = L"#";
    EXPECT_FALSE(TqPathMaker::splitPath(L"", out, 8, out, 8, out, 8, out, 8));
    EXPECT_FALSE(TqPathMaker::getFileName(L"", out, nullptr));
    EXPECT_FALSE(TqPathMaker::getFullFileName(L"", out));
    EXPECT_EQ(TqPathMaker::getDriverName(out, L"/"), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "failed!\n") << "the last one alone";
}

TEST(PathMaker, OnePartAtATime) {
    struct Row {
        std::wstring path, drive, dir, ext, fileName, fullName;
        bool isSplit;
    };
    const std::wstring longDir = L"/" + std::wstring(300, L'd');
    const Row rows[] = {
        {L"/a/b/c.txt", L"a", L"/b", L".txt", L"c", L"c.txt", true},
        {L"/a/b/c.d.e", L"a", L"/b", L".d.e", L"c", L"c.d.e", true},
        {L"/onlydir/sub", L"onlydir", L"/sub", L"", L"", L"", false},
        {L"/" + kLong + L"/c.d", std::wstring(63, L'x'), L"", L".d", L"c", L"c.d", true},
        {L"/a" + longDir + L"/c.longest", L"a", longDir.substr(0, 259), L".longes", L"c", L"c.longest", true},
    };
    for (const Row& row : rows) {
        reference::GuardedBuffer<wchar_t> room(1024);
        const auto part = [&](int (*get)(wchar_t*, const wchar_t*), std::size_t size, const std::wstring& expected) {
            wchar_t* out = room.last(size);
            EXPECT_EQ(get(out, row.path.c_str()), row.isSplit ? static_cast<int>(expected.size()) : 0);
            EXPECT_EQ(out, expected) << row.path.substr(0, 40);
            EXPECT_EQ(get(out, nullptr), 0);
            EXPECT_STREQ(out, L"");
            EXPECT_EQ(get(nullptr, row.path.c_str()), 0);
        };
        part(TqPathMaker::getDriverName, 64, row.drive);
        part(TqPathMaker::getParentDir, 260, row.dir);
        part(TqPathMaker::getExtFileName, 8, row.ext);
        wchar_t* out = room.last(1024);
        EXPECT_EQ(TqPathMaker::getFileName(row.path.c_str(), out, nullptr), row.isSplit);
        EXPECT_EQ(out, row.fileName);
        EXPECT_EQ(TqPathMaker::getFullFileName(row.path.c_str(), out), row.isSplit);
        EXPECT_EQ(out, row.fullName);
    }
    wchar_t longest[1024];
    EXPECT_TRUE(TqPathMaker::getFullFileName((L"a/" + std::wstring(510, L'n') + L"." + std::wstring(510, L'e')).c_str(),
                                             longest));
    EXPECT_EQ(std::wcslen(longest), 1021U);
    EXPECT_FALSE(TqPathMaker::getFullFileName(nullptr, longest));
    EXPECT_STREQ(longest, L"");
    EXPECT_FALSE(TqPathMaker::getFileName(L"/a/b.c", nullptr, nullptr));
    EXPECT_EQ(TqPathMaker::getAbsolutePath(longest, 1024, L"a"), 1);
    EXPECT_STREQ(longest, L"");
}

TEST(PathMaker, ValidPaths) {
    for (const wchar_t* path : {L"", L"a", L"C:/a/b", L"a:b", L"/a\\b/", L"a.b c'(&)", L"\u4E2D"})
        EXPECT_TRUE(TqPathMaker::isValidPath(path)) << path;
    for (const wchar_t* path : {L"ab:c", L":", L"a::", L"//server/x", L"\\\\server", L"a/\\b", L"a//", L"a\"", L"*",
                                L"<", L"a>b", L"?", L"a|b"})
        EXPECT_FALSE(TqPathMaker::isValidPath(path)) << path;
    EXPECT_FALSE(TqPathMaker::isValidPath(nullptr));
}

} // namespace
