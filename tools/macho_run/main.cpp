// Runs a macOS program on Linux, on the same processor: its file is mapped as it is, and what it asks of the system is
// answered by shims over the C library here. Meant for this project's tests, which are console programs.

#include "Image.h"
#include "shims/Imports.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char** argv) {
    if (argc < 2 || std::strcmp(argv[1], "--help") == 0) {
        std::fprintf(argc < 2 ? stderr : stdout,
                     "usage: macho_run PROGRAM [ARGUMENT ...]\n\n"
                     "Runs a Mach-O program for macOS. Exit status: the program's; 96 when the file "
                     "cannot be used,\n97 when the program calls a function that is not known here.\n");
        return argc < 2 ? 2 : 0;
    }
    macho::g_arguments = {argv[1], argc - 1, argv + 1};
    const macho::Image program(argv[1]);
    program.initialise();
    macho::exitProgram(program.runProgram());
}
