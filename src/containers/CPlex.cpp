#include <TqOsBase/containers/CPlex.h>

#include <cstdint>
#include <new>

CPlex* CPlex::Create(CPlex*& head, std::size_t count, std::size_t elementSize) {
    if (count == 0 || elementSize == 0)
        return nullptr;
    if (count > (SIZE_MAX - sizeof(CPlex)) / elementSize)
        throw std::bad_alloc();
    auto* storage = new std::byte[sizeof(CPlex) + count * elementSize];
    head = ::new (storage) CPlex{head};
    return head;
}

void CPlex::FreeDataChain() {
    for (CPlex* block = this; block != nullptr;) {
        CPlex* next = block->pNext;
        delete[] reinterpret_cast<std::byte*>(block);
        block = next;
    }
}
