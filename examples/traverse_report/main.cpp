// Reports on a survey traverse: every leg with its bearing and its length in all units, then perimeter, closure and
// area.

#include "LineReader.h"
#include "TraverseParser.h"
#include "TraverseReport.h"
#include "files/Complaints.h"
#include "files/Files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

constexpr char kUsage[] =
    "usage: tq-traverse-report [--units MODE] [--angles MODE] [--precision N] [--out FILE] TRAVERSE\n"
    "\n"
    "Prints the legs of a traverse with bearings and lengths in drawing units, then perimeter, closure and area.\n"
    "  --units MODE     scientific, decimal, engineering, architectural or fractional, whatever the file says\n"
    "  --angles MODE    degrees, dms, grads, radians or surveyor, whatever the file says\n"
    "  --precision N    0 to 15: decimals, or the power of two of a fraction's denominator\n"
    "  --out FILE       also writes the report to FILE; - is standard output, where it goes anyway\n"
    "  --help, -h       this text\n"
    "\n"
    "The file (- is standard input) has settings lines (units, angles, base, direction, bigfont), then points:\n"
    "name ; x ; y ; label. A UTF-8 byte order mark is skipped. The first 20 bad lines are named.\n"
    "Exit status: 0 reported, 1 bad lines (the good ones are reported), fewer than two points or a file that cannot "
    "be\n"
    "used, 2 wrong arguments.\n";

constexpr std::array<std::string_view, 4> kOptions = {"--units", "--angles", "--precision", "--out"};

struct Arguments {
    FixedSettings fixed;
    files::Name out;
    files::Name traverse;
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
    const std::vector<files::Name> names = files::namesOf(argc, argv);
    Arguments arguments;
    for (int i = 1; i < argc; ++i) {
        const std::string& option = names[static_cast<std::size_t>(i)].given;
        if (option == "--help" || option == "-h") {
            arguments.help = true;
            return arguments;
        }
        if (option.empty() || option == "-" || option.front() != '-') {
            if (!arguments.traverse.given.empty())
                throw std::invalid_argument("more than one file");
            arguments.traverse = names[static_cast<std::size_t>(i)];
            continue;
        }
        if (std::find(kOptions.begin(), kOptions.end(), option) == kOptions.end())
            throw std::invalid_argument("unknown option " + option);
        if (i + 1 == argc)
            throw std::invalid_argument(option + " needs a value");
        const files::Name& name = names[static_cast<std::size_t>(++i)];
        const std::string& value = name.given;
        if (option == "--units")
            arguments.fixed.linearMode = modeArgument(kLinearModes, option, value);
        else if (option == "--angles")
            arguments.fixed.angularMode = modeArgument(kAngularModes, option, value);
        else if (option == "--precision")
            arguments.fixed.precision = precisionArgument(value);
        else
            arguments.out = name;
    }
    if (arguments.traverse.given.empty())
        throw std::invalid_argument("no traverse file");
    return arguments;
}

// True when every line was good and there was a traverse.
bool report(const Arguments& arguments, files::Input& in, files::Output* out) {
    TraverseReport report([out](const std::string& line) {
        std::fwrite(line.data(), 1, line.size(), stdout);
        if (out != nullptr)
            out->write(line);
    });
    TraverseParser parser(arguments.fixed);
    LineReader reader(in);
    files::Complaints badLines;
    while (reader.next()) {
        const TraverseParser::Result result = parser.parse(reader.text());
        if (result == TraverseParser::Result::kPoint && !reader.isCut()) {
            report.add(parser.point(), parser.settings());
        } else if (result == TraverseParser::Result::kBad || reader.isCut()) {
            const std::string reason = reader.isCut()
                                           ? "expected at most " + std::to_string(LineReader::kMaxLine) + " bytes"
                                           : parser.expectation();
            badLines.add(in.name() + ":" + std::to_string(reader.number()) + ": " + reason);
        }
    }
    badLines.finish();
    report.finish();
    if (report.points() < 2)
        std::fprintf(stderr, "tq-traverse-report: %s is no traverse: it has %s point\n", in.name().c_str(),
                     report.points() == 0 ? "no" : "one");
    return badLines.count() == 0 && report.points() >= 2;
}

int run(const Arguments& arguments) {
    files::Input in(arguments.traverse);
    std::optional<files::Output> out;
    if (!arguments.out.given.empty() && !arguments.out.isStandard()) {
        if (arguments.out.isSameFileAs(arguments.traverse))
            throw std::runtime_error(arguments.out.given + " is the traverse itself");
        out.emplace(arguments.out);
    }
    const bool isGood = report(arguments, in, out ? &*out : nullptr);
    if (out)
        out->close();
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw std::runtime_error("cannot write standard output: " +
                                 (errno != 0 ? std::generic_category().message(errno) : "an earlier write failed"));
    return isGood ? 0 : kExitFailed;
}

} // namespace

int main(int argc, char** argv) {
    try {
        const Arguments arguments = parseArguments(argc, argv);
        if (!arguments.help)
            return run(arguments);
        std::fputs(kUsage, stdout);
        return 0;
    } catch (const std::invalid_argument& error) {
        std::fprintf(stderr, "tq-traverse-report: %s\n\n%s", error.what(), kUsage);
        return kExitUsage;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tq-traverse-report: %s\n", error.what());
        return kExitFailed;
    }
}
