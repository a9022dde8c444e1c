// Converts a file of drawing text between its escaped narrow form and UTF-8, line by line, in constant memory.

#include "Conversion.h"
#include "Report.h"
#include "files/Files.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;
constexpr int kExitNotCarried = 3;

// A longer line is converted in pieces of about this size.
constexpr std::size_t kBufferSize = 65536;

constexpr char kUsage[] =
    "usage: tq-convert-text --to-utf8 IN OUT\n"
    "       tq-convert-text --to-escaped IN OUT\n"
    "\n"
    "Converts drawing text between its escaped form (ASCII with \\U+XXXX and \\M+nXXXX) and UTF-8. Line ends are "
    "kept.\n"
    "\\M+ escapes stay as they are. A UTF-8 byte order mark is skipped. - stands for standard input or output.\n"
    "What the other form cannot carry is listed with line and column on standard error, the first 20 of it, and a "
    "summary\n"
    "follows. Exit status: 0 converted, 1 a file could not be read or written, 2 wrong arguments, 3 converted, but "
    "the\n"
    "other form could not carry all of it.\n";

// Feeds the conversion whole lines, and lines that outgrow the buffer in pieces.
void convertFile(files::Input& in, files::Output& out, Conversion& conversion, Report& report) {
    std::vector<char> buffer(kBufferSize + 1);
    std::size_t filled = 0;
    bool hasMore = true;
    bool lineIsOpen = false;
    while (hasMore || filled > 0) {
        const std::size_t wanted = kBufferSize - filled;
        const std::size_t count = in.read(buffer.data() + filled, wanted);
        hasMore = count == wanted;
        filled += count;
        buffer[filled] = '\0';

        std::string_view text(buffer.data(), filled);
        while (!text.empty()) {
            const std::size_t end = text.find('\n');
            const bool isWholeLine = end != std::string_view::npos;
            if (!isWholeLine && hasMore && text.size() < filled)
                break; // more of this line follows, and there is room for it
            std::string_view piece = text.substr(0, isWholeLine ? end + 1 : text.size());
            if (!isWholeLine && hasMore)
                piece.remove_suffix(incompleteTail(piece));
            out.write(conversion.convert(piece));
            text.remove_prefix(piece.size());
            lineIsOpen = !isWholeLine;
            if (isWholeLine) {
                ++report.lines;
                ++report.line;
                report.column = 1;
            } else if (hasMore) {
                break;
            }
        }
        std::memmove(buffer.data(), text.data(), text.size());
        filled = text.size();
    }
    if (lineIsOpen)
        ++report.lines;
}

int run(Conversion::Direction direction, const files::Name& inName, const files::Name& outName) {
    files::Input in(inName);
    if (inName.isSameFileAs(outName))
        throw std::runtime_error(inName.given + " and " + outName.given + " are the same file");
    files::Output out(outName);
    Report report(in.name());
    Conversion conversion(direction, report);
    convertFile(in, out, conversion, report);
    out.close();
    report.printSummary(conversion.sameBack() && !in.hadMark());
    if (report.countNotCarried() == 0)
        return 0;
    std::fprintf(stderr, "tq-convert-text: the other form does not carry all of %s\n", in.name().c_str());
    return kExitNotCarried;
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view option = argc > 1 ? argv[1] : "";
    if (option == "--help" || option == "-h") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (argc != 4 || (option != "--to-utf8" && option != "--to-escaped")) {
        std::fputs(kUsage, stderr);
        return kExitUsage;
    }
    try {
        const std::vector<files::Name> names = files::namesOf(argc, argv);
        return run(option == "--to-utf8" ? Conversion::Direction::kToUtf8 : Conversion::Direction::kToEscaped, names[2],
                   names[3]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tq-convert-text: %s\n", error.what());
        return kExitFailed;
    }
}
