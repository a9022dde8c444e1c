#include "base/CharacterClass.h"
#include "base/FileName.h"
#include "base/ProcessLock.h"
#include "codepage/EastAsianScripts.h"

#include <TqOsBase/codepage/Bigfont.h>
#include <TqOsBase/codepage/LmCodePage.h>
#include <TqOsBase/codepage/TqCharMapper.h>
#include <TqOsBase/crtcompat/NumberFunctions.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <fstream>
#include <string_view>

using namespace tq::detail;

namespace {

constexpr std::size_t kPathSize = 512; // bytes, with the terminator
constexpr std::size_t kLineSize = 512; // likewise
constexpr int kIniPathCapacity = 1024; // characters
constexpr int kUndecided = -1;         // in a row: the user's definitions decide
constexpr std::wstring_view kFontExtension = L".shx";

using FontMap = std::map<std::wstring, int>;

struct BigFont {
    const wchar_t* fileName;
    int codePageIndex;
};

constexpr BigFont lumoBigFontMap[] = {
    {L"@extfont2.shx", 1}, {L"bigfont.shx", 1}, {L"chineset.shx", 2}, {L"extfont.shx", 1},
    {L"extfont2.shx", 1},  {L"gbcbig.shx", 5},  {L"whgdtxt.shx", 3},  {L"whgtxt.shx", 3},
    {L"whtgtxt.shx", 3},   {L"whtmtxt.shx", 3}, {L"visiojp.shx", 1},  {L"visiotc.shx", 2},
};

// ASCII's letters alone are folded: the names must mean the same under every locale. (Under a Turkish one, wcscasecmp()
// takes "BIGFONT" and "bigfont" for different names.)
constexpr wchar_t folded(wchar_t c) {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c;
}

bool isSameName(std::wstring_view a, std::wstring_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](wchar_t x, wchar_t y) { return folded(x) == folded(y); });
}

int findBuiltIn(const wchar_t* fontFile) {
    for (const BigFont& font : lumoBigFontMap) {
        if (font.codePageIndex != kUndecided && isSameName(fontFile, font.fileName))
            return font.codePageIndex;
    }
    return kUndecided;
}

// For whoever holds the lock. Made by its first user and never destroyed, so that lookups work in any static object's
// constructor and destructor.
FontMap& userDefinedFonts() {
    static FontMap& g_mapCP2Bigfont = *new FontMap;
    return g_mapCP2Bigfont;
}

// substr(), and at() in readLine(), throw std::out_of_range where the line is too short for what must be there: "a;5"
// and "kai.shx;" throw, "kaishu;5" is no font, "kai.shx;5" is one.
bool hasFontExtension(const std::wstring& name) {
    return isSameName(name.substr(name.size() - kFontExtension.size()), kFontExtension);
}

void readLine(const std::wstring& line, FontMap& map) {
    std::wstring name;
    std::wstring value;
    bool isPastSemicolon = false;
    for (std::size_t i = 0; i < line.size() && line[i] != L'#'; ++i) {
        if (line[i] == L' ')
            continue;
        if (line[i] == L';') {
            if (!hasFontExtension(name))
                return;
            isPastSemicolon = true;
            value += line.at(++i);
        } else {
            (isPastSemicolon ? value : name) += line[i];
        }
    }
    const int codePageIndex = _wtoi(value.c_str());
    if (codePageIndex != 0)
        map[name] = codePageIndex;
}

// Each byte becomes the character of its value: comments may be in any encoding.
std::wstring widened(std::string_view bytes) {
    std::wstring text;
    for (const char byte : bytes)
        text += static_cast<wchar_t>(byteOf(byte));
    return text;
}

} // namespace

void ReadBigfontIni(const wchar_t* path) {
    std::string fileName;
    if (path == nullptr || !toFileName(path, fileName) || fileName.size() >= kPathSize)
        return;
    const ProcessLock lock;
    std::ifstream file(fileName);
    std::array<char, kLineSize> line{};
    while (file.getline(line.data(), line.size()))
        readLine(widened(line.data()), userDefinedFonts());
}

int findCodepageByBigfontInUserDefined(const std::wstring& fontFile, CReadUserDefBigfontIni* reader) {
    static bool g_bBigFontIniLoaded = false;
    const ProcessLock lock;
    FontMap& fonts = userDefinedFonts();
    if (reader != nullptr && !g_bBigFontIniLoaded) {
        std::array<wchar_t, kIniPathCapacity + 1> path{}; // a full one has its terminator too
        if (reader->FindIniFile(path.data(), kIniPathCapacity, L"BIGFONT.INI")) {
            reader->ReadIni(path.data(), fonts);
            g_bBigFontIniLoaded = true;
        }
    }
    for (const auto& [name, codePageIndex] : fonts) {
        if (isSameName(name.c_str(), fontFile.c_str())) // up to the first 0
            return codePageIndex;
    }
    const LCID lcid = LmCodePage::SysDefaultLCID();
    return LmCodePage::LanguageIsDoubleByte(static_cast<unsigned short>(lcid))
               ? LmCodePage::LanguageToCodePageIndex(static_cast<short>(lcid))
               : 0;
}

code_page_id TqCharMapper::getCpByBigFont(const wchar_t* fontPath, CReadUserDefBigfontIni* reader) {
    std::wstring name = fontPath != nullptr ? fontPath : L"";
    name.erase(0, name.rfind(L'/') + 1); // npos + 1 is 0
    if (name.find(L'.') == std::wstring::npos)
        name += kFontExtension;
    const EastAsianScript* script = scriptOfIndex(getCpIndexByBigFont(name.c_str(), reader));
    return script != nullptr ? script->id : kCodePageUndefined;
}

int TqCharMapper::getCpIndexByBigFont(const wchar_t* fontFile, CReadUserDefBigfontIni* reader) {
    if (fontFile == nullptr)
        fontFile = L"";
    const int builtIn = findBuiltIn(fontFile);
    return builtIn != kUndecided ? builtIn : findCodepageByBigfontInUserDefined(fontFile, reader);
}
