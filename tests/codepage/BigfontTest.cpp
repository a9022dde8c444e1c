#include <TqOsBase/codepage/Bigfont.h>
#include <TqOsBase/codepage/TqCharMapper.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {

// The user's definitions are one map for the process: every test uses font names of its own.

class IniFile {
public:
    explicit IniFile(const std::string& content, const std::string& name = "BIGFONT.INI") {
        std::string pattern = (std::filesystem::temp_directory_path() / "tqbigfontXXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            std::abort();
        m_folder = pattern;
        m_path = m_folder / name;
        write(content);
    }
    IniFile(const IniFile&) = delete;
    IniFile& operator=(const IniFile&) = delete;
    ~IniFile() { std::filesystem::remove_all(m_folder); }

    void write(const std::string& content) const { std::ofstream(m_path, std::ios::binary) << content; }
    std::wstring path() const { return m_path.wstring(); }
    std::wstring folder() const { return m_folder.wstring(); }

private:
    std::filesystem::path m_folder;
    std::filesystem::path m_path;
};

int indexOf(const wchar_t* name) {
    return TqCharMapper::getCpIndexByBigFont(name, nullptr);
}

class Reader : public CReadUserDefBigfontIni {
public:
    void ReadIni(const wchar_t* path, std::map<std::wstring, int>& map) override {
        ++reads;
        ReadBigfontIni(path);
        sizeAfterwards = map.size();
    }
    bool FindIniFile(wchar_t* buffer, int capacity, const wchar_t* fileName) override {
        ++searches;
        EXPECT_EQ(capacity, 1024);
        EXPECT_STREQ(fileName, L"BIGFONT.INI");
        EXPECT_EQ(std::wstring(buffer, 1024), std::wstring(1024, L'\0'));
        found.copy(buffer, found.size()); // without a terminator
        return !found.empty();
    }

    std::wstring found;
    int searches = 0;
    int reads = 0;
    std::size_t sizeAfterwards = 0;
};

TEST(BigFonts, BuiltInListInBothLookups) {
    struct Row {
        const wchar_t* path;
        int id;
        int index; // of the same text, which is neither stripped nor completed
    };
    const Row rows[] = {
        {L"@extfont2.shx", 38, 1},
        {L"bigfont.shx", 38, 1},
        {L"chineset.shx", 41, 2},
        {L"extfont.shx", 38, 1},
        {L"extfont2.shx", 38, 1},
        {L"gbcbig.shx", 39, 5},
        {L"whgdtxt.shx", 40, 3},
        {L"whgtxt.shx", 40, 3},
        {L"whtgtxt.shx", 40, 3},
        {L"whtmtxt.shx", 40, 3},
        {L"visiojp.shx", 38, 1},
        {L"visiotc.shx", 41, 2},
        {L"BIGFONT.SHX", 38, 1},
        {L"gbcbig", 39, 0},
        {L"/fonts/GBCBIG.SHX", 39, 0},
        {L"/fonts.d/whgtxt", 40, 0},
        {L"gbcbig.shx/", 0, 0},
        {L"gbcbig.", 0, 0},
        {L"gbcbig.ttf", 0, 0},
        {L"\\gbcbig.shx", 0, 0},
        {L"", 0, 0},
        {nullptr, 0, 0},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(TqCharMapper::getCpByBigFont(row.path, nullptr), row.id) << row.path;
        EXPECT_EQ(indexOf(row.path), row.index) << row.path;
    }
}

TEST(BigFonts, EveryKindOfLine) {
    const std::string longest = "longest.shx;2#" + std::string(511 - 14, 'x');
    const IniFile file("# our fonts\n"
                       "\n"
                       "plain.shx;5\n"
                       "spa ced . shx ; 4 # Johab\n"
                       "upper.SHX;3\r\n"
                       "truetype.ttf;4\n"
                       "no_number.shx;abc\n"
                       "zero.shx;0\n"
                       "seven.shx;7\n"
                       "negative.shx;-1\n"
                       "no semicolon.shx 4\n"
                       "#comment.shx;4\n"
                       "hash.shx;#3\n"
                       "blank.shx; #3\n"
                       "twice.shx;1;2\n"
                       "replaced.shx;1\n"
                       "replaced.shx;4two\n"
                       "cut.shx;12#3\n"
                       "gr\xFC\xDF.shx;2 # \xB4\xE5\xC5\xD6\xD7\xCE\n" +
                       longest + "\nlast.shx;5");
    ReadBigfontIni(file.path().c_str());
    const std::pair<const wchar_t*, int> rows[] = {
        {L"plain.shx", 5},          {L"spaced.shx", 4},       {L"SPACED.SHX", 4},   {L"upper.shx", 3},
        {L"truetype.ttf", 0},       {L"no_number.shx", 0},    {L"zero.shx", 0},     {L"seven.shx", 7},
        {L"negative.shx", -1},      {L"nosemicolon.shx4", 0}, {L"comment.shx", 0},  {L"hash.shx", 0},
        {L"blank.shx", 0},          {L"twice.shx", 12},       {L"replaced.shx", 4}, {L"cut.shx", 12},
        {L"gr\u00FC\u00DF.shx", 2}, {L"longest.shx", 2},      {L"last.shx", 5},
    };
    for (const auto& [name, index] : rows) {
        EXPECT_EQ(indexOf(name), index) << name;
        const int ids[] = {0, 38, 41, 40, 42, 39};
        EXPECT_EQ(TqCharMapper::getCpByBigFont(name, nullptr), index >= 1 && index <= 5 ? ids[index] : 0) << name;
    }
    EXPECT_EQ(TqCharMapper::getCpByBigFont(L"/fonts/Spaced", nullptr), 42);
}

TEST(BigFonts, ReadingStopsWhereItCannotGoOn) {
    const IniFile tooLong("before.shx;5\n" + std::string(500, 'x') + "yyyyyyy.shx;\nafter.shx;5\n");
    ReadBigfontIni(tooLong.path().c_str()); // 512 bytes, and would throw if it was parsed
    EXPECT_EQ(indexOf(L"before.shx"), 5);
    EXPECT_EQ(indexOf(L"after.shx"), 0);
    ReadBigfontIni(tooLong.folder().c_str()); // opens, but holds no lines
    ReadBigfontIni(L"/nowhere/BIGFONT.INI");
    ReadBigfontIni(nullptr);

    // The same file by paths of 511 and 512 bytes.
    const IniFile file("far.shx;5\n");
    const std::wstring path = file.path();
    const std::wstring tooFar = std::wstring(512 - path.size(), L'/') + path;
    ReadBigfontIni(tooFar.c_str());
    EXPECT_EQ(indexOf(L"far.shx"), 0);
    ReadBigfontIni(tooFar.c_str() + 1);
    EXPECT_EQ(indexOf(L"far.shx"), 5);

    const IniFile foreign("foreign.shx;5\n", "\xE5\xAD\x97.INI");
    ReadBigfontIni((foreign.folder() + L"/\u5B57.INI").c_str());
    EXPECT_EQ(indexOf(L"foreign.shx"), 5) << "whatever the locale";

    const std::string failing[] = {"shx;5", ";", " ;5", "ends.shx;", "ends.shx;5;", "a.s hx;"};
    int number = 0;
    for (const std::string& line : failing) {
        const std::wstring kept = L"kept" + std::to_wstring(++number) + L".shx";
        const IniFile broken("kept" + std::to_string(number) + ".shx;3\n" + line + "\nnever.shx;5\n");
        EXPECT_THROW(ReadBigfontIni(broken.path().c_str()), std::out_of_range) << line;
        EXPECT_EQ(indexOf(kept.c_str()), 3) << line;
    }
    EXPECT_EQ(indexOf(L"never.shx"), 0);
}

// The only test that sets the flag of a file that was read.
TEST(BigFonts, TheReaderIsAskedUntilAFileWasRead) {
    Reader reader;
    const auto lookUp = [&] { return TqCharMapper::getCpByBigFont(L"asked", &reader); };
    EXPECT_EQ(TqCharMapper::getCpByBigFont(L"gbcbig", &reader), 39);
    EXPECT_EQ(reader.searches, 0) << "a built-in font asks nobody";
    EXPECT_EQ(lookUp(), 0);
    EXPECT_EQ(lookUp(), 0);
    EXPECT_EQ(reader.searches, 2);

    const IniFile file("kept.shx;1\nasked.shx;\n");
    reader.found = file.path();
    EXPECT_THROW(lookUp(), std::out_of_range);
    EXPECT_THROW(findCodepageByBigfontInUserDefined(L"asked.shx", &reader), std::out_of_range);
    EXPECT_EQ(reader.reads, 2);
    EXPECT_EQ(indexOf(L"kept.shx"), 1);

    file.write("asked.shx;2\n");
    EXPECT_EQ(lookUp(), 41);
    EXPECT_GE(reader.sizeAfterwards, 2U) << "the library's own map is passed";
    EXPECT_EQ(lookUp(), 41);
    EXPECT_EQ(findCodepageByBigfontInUserDefined(L"ASKED.shx", &reader), 2);
    EXPECT_EQ(reader.reads, 3);
    EXPECT_EQ(reader.searches, 5);
}

} // namespace
