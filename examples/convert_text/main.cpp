// Converts a file of drawing text between its escaped narrow form and UTF-8, line by line, in constant memory.

#include "Conversion.h"
#include "Report.h"
#include "files/Files.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace files;

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

// A longer line is converted in pieces of about this size.
constexpr std::size_t kBufferSize = 65536;

constexpr char kUsage[] =
    "usage: convert_text --to-utf8 IN OUT\n"
    "       convert_text --to-escaped IN OUT\n"
    "\n"
    "Converts drawing text between its escaped form (ASCII with \\U+XXXX and \\M+nXXXX) and UTF-8. Line ends are "
    "kept.\n"
    "\\M+ escapes stay as they are. What the other form cannot carry is listed with line and column on standard "
    "error,\n"
    "and a summary follows. Exit status: 0 converted, 1 a file could not be read or written, 2 wrong arguments.\n";

// Feeds the conversion whole lines, and lines that outgrow the buffer in pieces.
void convertFile(TqFileStreamBuf& in, TqFileStreamBuf& out, Conversion& conversion, Report& report) {
    std::vector<char> buffer(kBufferSize + 1);
    std::uint64_t left = in.length();
    std::size_t filled = 0;
    bool lineIsOpen = false;
    while (left > 0 || filled > 0) {
        const auto wanted = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, kBufferSize - filled));
        in.readBytes(reinterpret_cast<unsigned char*>(buffer.data() + filled), wanted);
        left -= wanted;
        filled += wanted;
        buffer[filled] = '\0';

        std::string_view text(buffer.data(), filled);
        while (!text.empty()) {
            const std::size_t end = text.find('\n');
            const bool isWholeLine = end != std::string_view::npos;
            if (!isWholeLine && left > 0 && text.size() < filled)
                break; // more of this line follows, and there is room for it
            std::string_view piece = text.substr(0, isWholeLine ? end + 1 : text.size());
            if (!isWholeLine && left > 0)
                piece.remove_suffix(incompleteTail(piece));
            write(out, conversion.convert(piece));
            text.remove_prefix(piece.size());
            lineIsOpen = !isWholeLine;
            if (isWholeLine) {
                ++report.lines;
                ++report.line;
                report.column = 1;
            } else if (left > 0) {
                break;
            }
        }
        std::memmove(buffer.data(), text.data(), text.size());
        filled = text.size();
    }
    if (lineIsOpen)
        ++report.lines;
}

void run(Conversion::Direction direction, const fs::path& inPath, const fs::path& outPath) {
    const File in = openInput(inPath);
    std::error_code ignored;
    if (fs::equivalent(inPath, outPath, ignored))
        throw std::runtime_error(inPath.string() + " and " + outPath.string() + " are the same file");
    const File out = openOutput(outPath);
    Report report(inPath.string());
    Conversion conversion(direction, report);
    try {
        convertFile(*in, *out, conversion, report);
        out->close();
    } catch (const wchar_t* reason) {
        abandon(*out);
        throw std::runtime_error("cannot convert " + inPath.string() + " to " + outPath.string() + ": " +
                                 narrowed(reason));
    }
    report.printSummary(conversion.sameBack());
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view option = argc > 1 ? argv[1] : "";
    if (option == "--help") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (argc != 4 || (option != "--to-utf8" && option != "--to-escaped")) {
        std::fputs(kUsage, stderr);
        return kExitUsage;
    }
    try {
        run(option == "--to-utf8" ? Conversion::Direction::ToUtf8 : Conversion::Direction::ToEscaped, argv[2], argv[3]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "convert_text: %s\n", error.what());
        return kExitFailed;
    }
    return 0;
}
