#pragma once

#include <TqOsBase/Export.h>

#include <cstddef>

extern "C" {
TQ_API void* tqMalloc(std::size_t size);
TQ_API void tqFree(void* block);
}
