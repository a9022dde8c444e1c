#include <TqOsBase/containers/TqVector.h>

template class TqVectorData<wchar_t, TqDefaultMemAllocator<wchar_t>, TqRefCounter, TqVectorDefaultGrowPolicy>;
template class TqVectorDataPtr<wchar_t, TqDefaultMemAllocator<wchar_t>, TqRefCounter, TqVectorDefaultGrowPolicy>;
template class TqVector<wchar_t>;
template class TqVectorData<char, TqDefaultMemAllocator<char>, TqRefCounter, TqVectorDefaultGrowPolicy>;
template class TqVectorDataPtr<char, TqDefaultMemAllocator<char>, TqRefCounter, TqVectorDefaultGrowPolicy>;
template class TqVector<char>;
template class TqVectorData<unsigned char, TqDelegateMemAllocator<unsigned char>, int, TqVectorFlatMemBufGrowPolicy>;
template class TqVectorDataPtr<unsigned char, TqDelegateMemAllocator<unsigned char>, int, TqVectorFlatMemBufGrowPolicy>;
template class TqVector<unsigned char, TqDelegateMemAllocator<unsigned char>, int, TqVectorFlatMemBufGrowPolicy>;
