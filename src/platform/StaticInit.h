#pragma once

// Puts a global object before the other static initialisers of the program it is linked into. Mach-O has no such
// order across translation units; what uses this must therefore also be usable before its constructor has run.
#if defined(__linux__)
#define TQ_INIT_FIRST __attribute__((init_priority(101)))
#else
#define TQ_INIT_FIRST
#endif
