#pragma once

/// Marks what the library exports. The library is compiled with hidden visibility, so that only what carries this
/// mark can be linked against; on a class it also makes its type information unique across library borders, which
/// catching its objects needs.
#define TQ_API __attribute__((visibility("default")))
