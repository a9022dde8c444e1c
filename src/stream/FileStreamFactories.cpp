#include <TqOsBase/stream/FileStreamBuf.h>

TqFileIOStreamBuf::~TqFileIOStreamBuf() = default;

TqFileStreamBuf* createFileStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                     TqIO::ShareMode share, TqIO::CreationDisposition creation) {
    return new TqFileStreamBufImpl(name, status, access, share, creation);
}

TqFileStreamBuf* createFileIStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                      TqIO::ShareMode share, TqIO::CreationDisposition creation) {
    return new TqFileIStreamBuf(name, status, access, share, creation);
}

TqFileStreamBuf* createFileOStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                      TqIO::ShareMode share, TqIO::CreationDisposition creation, unsigned bufferSize) {
    return new TqFileOStreamBuf(name, status, access, share, creation, bufferSize);
}

TqFileStreamBuf* createFileIOStreamBuf(const wchar_t* name, Lumo::ErrorStatus* status, TqIO::AccessMode access,
                                       TqIO::ShareMode share, TqIO::CreationDisposition creation) {
    return new TqFileIOStreamBuf(name, status, access, share, creation);
}

TqFileStreamBuf* createFileIOStreamBuf(void* handle) {
    return new TqFileIOStreamBuf(handle);
}

void destoryFileIOStreamBuf(TqFileStreamBuf* p) {
    delete p;
}
