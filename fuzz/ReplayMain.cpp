// Runs a fuzz target over every file of the folders and files given, then over seeded mutations of them, without any
// fuzzing engine. The last input tried is named on standard error when the target aborts.

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int kMutations = 20000;
constexpr unsigned kSeed = 20240229;

std::string g_current;

extern "C" void reportAbort(int) {
    std::fprintf(stderr, "input: %s\n", g_current.c_str());
    std::_Exit(1);
}

// The heap copy has exactly the input's size, so that reading past it is seen by the tools.
void run(const Bytes& input, std::string name) {
    g_current = std::move(name);
    const Bytes exact(input);
    LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

Bytes mutate(const std::vector<Bytes>& seeds, std::mt19937& random) {
    const auto below = [&random](std::size_t n) {
        return std::uniform_int_distribution<std::size_t>(0, n - 1)(random);
    };
    Bytes bytes = seeds[below(seeds.size())];
    for (std::size_t edits = 1 + below(6); edits > 0; --edits) {
        const auto at = static_cast<std::ptrdiff_t>(below(bytes.size() + 1));
        switch (below(4)) {
        case 0:
            bytes.insert(bytes.begin() + at, static_cast<std::uint8_t>(below(256)));
            break;
        case 1:
            bytes.resize(static_cast<std::size_t>(at));
            break;
        case 2:
            if (!bytes.empty())
                bytes[below(bytes.size())] = static_cast<std::uint8_t>(below(256));
            break;
        default: {
            const Bytes& other = seeds[below(seeds.size())];
            bytes.insert(bytes.begin() + at, other.begin(), other.end());
        }
        }
    }
    return bytes;
}

} // namespace

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::signal(SIGABRT, reportAbort);
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        if (fs::is_directory(argv[i]))
            std::copy(fs::directory_iterator(argv[i]), fs::directory_iterator(), std::back_inserter(files));
        else
            files.emplace_back(argv[i]);
    }
    std::sort(files.begin(), files.end());
    std::vector<Bytes> seeds;
    for (const fs::path& file : files) {
        std::ifstream in(file, std::ios::binary);
        if (!in) {
            std::fprintf(stderr, "cannot read %s\n", file.c_str());
            return 1;
        }
        seeds.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        run(seeds.back(), file.string());
    }
    if (seeds.empty()) {
        std::fprintf(stderr, "no input to replay\n");
        return 1;
    }
    std::mt19937 random(kSeed);
    for (int i = 0; i < kMutations; ++i)
        run(mutate(seeds, random), "mutation " + std::to_string(i));
    std::printf("%zu corpus inputs, %d mutations\n", seeds.size(), kMutations);
}
