// Reports on a survey traverse: every leg with its bearing and its length in all units, then perimeter, closure and
// area.

#include "LineReader.h"
#include "TraverseParser.h"
#include "TraverseReport.h"
#include "files/Files.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

constexpr int kExitBadLines = 1;
constexpr int kExitUsage = 2;

constexpr char kUsage[] =
    "usage: traverse_report [--units MODE] [--angles MODE] [--precision N] [--out FILE] TRAVERSE\n"
    "\n"
    "Prints the legs of a traverse with bearings and lengths in drawing units, then perimeter, closure and area.\n"
    "  --units MODE     scientific, decimal, engineering, architectural or fractional, whatever the file says\n"
    "  --angles MODE    degrees, dms, grads, radians or surveyor, whatever the file says\n"
    "  --precision N    0 to 15: decimals, or the power of two of a fraction's denominator\n"
    "  --out FILE       also writes the report to FILE\n"
    "  --help           this text\n"
    "\n"
    "The file has settings lines (units, angles, base, direction, bigfont), then points: name ; x ; y ; label.\n"
    "Exit status: 0 reported, 1 a bad line (the good ones are reported) or a file that cannot be used, 2 wrong "
    "arguments.\n";

struct Arguments {
    FixedSettings fixed;
    std::string out;
    std::string traverse;
    bool help = false;
};

template <std::size_t N>
std::int16_t modeArgument(const std::array<NamedMode, N>& modes, const std::string& option, const std::string& name) {
    const std::int16_t mode = modeByName(modes, name);
    if (mode < 0)
        throw std::invalid_argument(option + " does not know " + name);
    return mode;
}

std::int16_t precisionArgument(const std::string& text) {
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || value < 0 || value > kMaxPrecision)
        throw std::invalid_argument("--precision is a number from 0 to 15, not " + text);
    return static_cast<std::int16_t>(value);
}

Arguments parseArguments(int argc, char** argv) {
    Arguments arguments;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (option == "--help") {
            arguments.help = true;
            return arguments;
        }
        if (option.rfind("--", 0) != 0) {
            if (!arguments.traverse.empty())
                throw std::invalid_argument("more than one file");
            arguments.traverse = option;
            continue;
        }
        if (i + 1 == argc)
            throw std::invalid_argument(option + " needs a value");
        const std::string value = argv[++i];
        if (option == "--units")
            arguments.fixed.linearMode = modeArgument(kLinearModes, option, value);
        else if (option == "--angles")
            arguments.fixed.angularMode = modeArgument(kAngularModes, option, value);
        else if (option == "--precision")
            arguments.fixed.precision = precisionArgument(value);
        else if (option == "--out")
            arguments.out = value;
        else
            throw std::invalid_argument("unknown option " + option);
    }
    if (arguments.traverse.empty())
        throw std::invalid_argument("no traverse file");
    return arguments;
}

// Returns the number of bad lines.
int report(const Arguments& arguments, TqFileStreamBuf& in, TqFileStreamBuf* out) {
    TraverseReport report([out](const std::string& line) {
        std::fwrite(line.data(), 1, line.size(), stdout);
        if (out != nullptr)
            files::write(*out, line);
    });
    TraverseParser parser(arguments.fixed);
    LineReader reader(in);
    int badLines = 0;
    while (reader.next()) {
        const TraverseParser::Result result = parser.parse(reader.text());
        if (result == TraverseParser::Result::Point && !reader.isCut()) {
            report.add(parser.point(), parser.settings());
        } else if (result == TraverseParser::Result::Bad || reader.isCut()) {
            ++badLines;
            const std::string reason = reader.isCut()
                                           ? "expected at most " + std::to_string(LineReader::kMaxLine) + " bytes"
                                           : parser.expectation();
            std::fprintf(stderr, "%s:%d: %s\n", arguments.traverse.c_str(), reader.number(), reason.c_str());
        }
    }
    report.finish();
    return badLines;
}

int run(const Arguments& arguments) {
    const files::File in = files::openInput(arguments.traverse);
    files::File out;
    if (!arguments.out.empty()) {
        std::error_code ignored;
        if (std::filesystem::equivalent(arguments.traverse, arguments.out, ignored))
            throw std::runtime_error(arguments.out + " is the traverse itself");
        out = files::openOutput(arguments.out);
    }
    int badLines = 0;
    try {
        badLines = report(arguments, *in, out.get());
        if (out != nullptr)
            out->close();
    } catch (const wchar_t* reason) {
        if (out != nullptr)
            files::abandon(*out);
        throw std::runtime_error("cannot write " + arguments.out + ": " + files::narrowed(reason));
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw std::runtime_error("cannot write to standard output");
    return badLines != 0 ? kExitBadLines : 0;
}

} // namespace

int main(int argc, char** argv) {
    Arguments arguments;
    try {
        arguments = parseArguments(argc, argv);
    } catch (const std::invalid_argument& error) {
        std::fprintf(stderr, "traverse_report: %s\n\n%s", error.what(), kUsage);
        return kExitUsage;
    }
    if (arguments.help) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    try {
        return run(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "traverse_report: %s\n", error.what());
        return kExitBadLines;
    }
}
