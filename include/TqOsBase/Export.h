#pragma once

/// \file
/// What marks the exported names.

/// Marks what the library exports. The library is compiled with hidden visibility, so that only what carries this
/// mark can be linked against; on a class it also makes its type information unique across library borders, which
/// catching its objects needs.
#define TQ_API __attribute__((visibility("default")))

/// On a class that debuggers show by its members. Clang leaves the description of such a class to whoever compiles its
/// functions, which is the library, whose release has none; with this mark each program has its own, as with g++.
#if defined(__clang__) && __has_attribute(standalone_debug)
#define TQ_SHOWN __attribute__((standalone_debug))
#else
#define TQ_SHOWN
#endif
