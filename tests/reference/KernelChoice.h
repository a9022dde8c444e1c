#pragma once

#include "codepage/TextKernels.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

namespace reference {

/// Every form of the inner loops of text conversions that this processor can run.
inline std::vector<const tq::detail::TextKernels*> kernelForms() {
    using namespace tq::detail;
    std::vector<const TextKernels*> forms = {&kPlainKernels};
    for (const KernelSet set : {KernelSet::kPortable, KernelSet::kSse2, KernelSet::kNeon, KernelSet::kAvx2})
        if (const TextKernels* kernels = textKernels(set))
            forms.push_back(kernels);
    return forms;
}

/// Makes the library use the set that the environment variable TQ_KERNELS names: portable, sse2, neon or avx2. Without
/// the variable the library chooses; a name of none of them, or of one that the processor lacks, ends the program.
inline bool chooseKernels() {
    using namespace tq::detail;
    const char* const wanted = std::getenv("TQ_KERNELS");
    if (wanted == nullptr)
        return false;
    for (const auto& [name, set] : {std::pair<std::string_view, KernelSet>("portable", KernelSet::kPortable),
                                    {"sse2", KernelSet::kSse2},
                                    {"neon", KernelSet::kNeon},
                                    {"avx2", KernelSet::kAvx2}}) {
        const TextKernels* const kernels = name == wanted ? textKernels(set) : nullptr;
        if (kernels != nullptr) {
            useKernels(*kernels);
            return true;
        }
    }
    std::fprintf(stderr, "TQ_KERNELS=%s: this processor has no such set\n", wanted);
    std::exit(1);
}

} // namespace reference
