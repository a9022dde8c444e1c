#include "reference/Testing.h"

namespace {

// The user's definitions are one map for the process: every test uses font names of its own.

const int kIds[] = {0, 38, 41, 40, 42, 39}; // by code page index

int indexOf(const wchar_t* name) {
    return TqCharMapper::getCpIndexByBigFont(name, nullptr);
}

void readText(const std::string& content) {
    const reference::TempFolder folder;
    folder.write("BIGFONT.INI", content);
    ReadBigfontIni(folder.wide(L"BIGFONT.INI").c_str());
}

TEST(BigFonts, BuiltInListInBothLookups) {
    const std::pair<int, std::vector<const wchar_t*>> rows[] = {
        {1, {L"@extfont2.shx", L"bigfont.shx", L"extfont.shx", L"extfont2.shx", L"visiojp.shx", L"BIGFONT.SHX"}},
        {2, {L"chineset.shx", L"visiotc.shx"}},
        {3, {L"whgdtxt.shx", L"whgtxt.shx", L"whtgtxt.shx", L"whtmtxt.shx"}},
        {5, {L"gbcbig.shx"}},
        {0, {L"gbcbig.shx/", L"\\gbcbig.shx", L"gbcbig.", L"gbcbig.ttf", L"", nullptr}}};
    for (const auto& [index, names] : rows)
        for (const wchar_t* name : names) {
            EXPECT_EQ(indexOf(name), index) << name;
            EXPECT_EQ(TqCharMapper::getCpByBigFont(name, nullptr), kIds[index]) << name;
        }
    for (const wchar_t* path : {L"/fonts/GBCBIG.SHX", L"gbcbig", L"/fonts.d/gbcbig"}) {
        EXPECT_EQ(TqCharMapper::getCpByBigFont(path, nullptr), 39) << "without its folder, with the extension";
        EXPECT_EQ(indexOf(path), 0) << "as it is";
    }
}

// Older than the map, so that it goes after it: looking up must work to the very end.
struct LateReader {
    ~LateReader() {
        if (expected != 0 && indexOf(L"plain.shx") != expected)
            std::_Exit(9);
    }
    int expected = 0;
} g_lateReader;

TEST(BigFonts, EveryKindOfLine) {
    const reference::LocaleScope locale(reference::kUtf8Locale); // knows the case of other letters, too; names do not
    readText("# our fonts\n\nplain.shx;5\nspa ced . shx ; 4 # Johab\nupper.SHX;3\r\ntruetype.ttf;4\nno_number.shx;abc\n"
             "zero.shx;0\nseven.shx;7\nnegative.shx;-1\nno semicolon.shx 4\n#comment.shx;4\nhash.shx;#3\n"
             "blank.shx; #3\ntwice.shx;1;2\nreplaced.shx;1\nreplaced.shx;4two\ncut.shx;12#3\n"
             "t\tab.shx;1\nsame.shx;1\nSAME.shx;2\nSame.shx;3\n"
             "gr\xFC\xDF.shx;2 # \xB4\xE5\xC5\xD6\xD7\xCE\nlongest.shx;2#" +
             std::string(511 - 14, 'x') + "\nlast.shx;5");
    const std::pair<const wchar_t*, int> rows[] = {
        {L"plain.shx", 5},     {L"spaced.shx", 4},        {L"SPACED.SHX", 4},         {L"upper.shx", 3},
        {L"truetype.ttf", 0},  {L"zero.shx", 0},          {L"no_number.shx", 0},      {L"seven.shx", 7},
        {L"negative.shx", -1}, {L"nosemicolon.shx4", 0},  {L"hash.shx", 0},           {L"comment.shx", 0},
        {L"blank.shx", 0},     {L"twice.shx", 12},        {L"replaced.shx", 4},       {L"cut.shx", 12},
        {L"longest.shx", 2},   {L"last.shx", 5},          {L"gr\u00FC\u00DF.shx", 2}, {L"t\tab.shx", 1},
        {L"same.shx", 2},      {L"GR\u00DC\u00DF.SHX", 0}};
    g_lateReader.expected = 5;
    for (const auto& [name, index] : rows) {
        EXPECT_EQ(indexOf(name), index) << name;
        EXPECT_EQ(TqCharMapper::getCpByBigFont(name, nullptr), index >= 1 && index <= 5 ? kIds[index] : 0) << name;
    }
}

TEST(BigFonts, ReadingStopsWhereItCannotGoOn) {
    readText("before.shx;5\n" + std::string(500, 'x') + "yyyyyyy.shx;\nafter.shx;5\n"); // would throw if it was parsed
    EXPECT_TRUE(indexOf(L"before.shx") == 5 && indexOf(L"after.shx") == 0);

    const reference::TempFolder folder;
    folder.write("\xC3\xA9", "far.shx;5\n");
    const std::wstring path = folder.wide(L"\u00E9"); // of two bytes: by paths of 512 and 511
    const std::wstring tooFar = std::wstring(512 - path.size() - 1, L'/') + path;
    for (const std::wstring& text : {tooFar, folder.wide(L"none"), folder.wide(L""), std::wstring()})
        ReadBigfontIni(text.c_str());
    ReadBigfontIni(nullptr);
    EXPECT_EQ(indexOf(L"far.shx"), 0);
    ReadBigfontIni(tooFar.c_str() + 1);
    EXPECT_EQ(indexOf(L"far.shx"), 5);

    int number = 0;
    for (const char* line : {"shx;5", ";", " ;5", "ends.shx;", "ends.shx;5;", "a.s hx;"}) {
        const std::string kept = "kept" + std::to_string(++number) + ".shx";
        EXPECT_THROW(readText(kept + ";3\n" + line + "\nnever.shx;5\n"), std::out_of_range) << line;
        EXPECT_EQ(indexOf(std::wstring(kept.begin(), kept.end()).c_str()), 3) << line;
    }
    EXPECT_EQ(indexOf(L"never.shx"), 0);
}

class Reader : public CReadUserDefBigfontIni {
public:
    void ReadIni(const wchar_t* path, std::map<std::wstring, int>& map) override {
        ++reads;
        ReadBigfontIni(path);
        EXPECT_EQ(map.count(L"kept.shx"), 1U) << "the library's own map is passed";
    }
    bool FindIniFile(wchar_t* buffer, int capacity, const wchar_t* fileName) override {
        ++searches;
        EXPECT_EQ(std::wstring(buffer, static_cast<std::size_t>(capacity)), std::wstring(1024, L'\0'));
        EXPECT_STREQ(fileName, L"BIGFONT.INI");
        found.copy(buffer, found.size()); // without a terminator
        return !found.empty();
    }

    std::wstring found;
    int searches = 0, reads = 0;
};

// The only test that sets the flag of a file that was read.
TEST(BigFonts, TheReaderIsAskedUntilAFileWasRead) {
    Reader reader;
    const auto lookUp = [&] { return TqCharMapper::getCpByBigFont(L"asked", &reader); };
    EXPECT_EQ(TqCharMapper::getCpByBigFont(L"gbcbig", &reader), 39);
    EXPECT_EQ(reader.searches, 0) << "a built-in font asks nobody";
    EXPECT_EQ(lookUp() + lookUp(), 0);
    const reference::TempFolder folder;
    folder.write("ini", "kept.shx;1\nasked.shx;\n");
    reader.found = folder.wide(L"ini");
    EXPECT_THROW(lookUp(), std::out_of_range);
    EXPECT_THROW(findCodepageByBigfontInUserDefined(L"asked.shx", &reader), std::out_of_range);
    folder.write("ini", "asked.shx;2\n");
    EXPECT_TRUE(lookUp() == 41 && lookUp() == 41 && findCodepageByBigfontInUserDefined(L"ASKED.shx", &reader) == 2);
    EXPECT_TRUE(reader.reads == 3 && reader.searches == 5);
}

} // namespace
