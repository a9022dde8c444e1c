// Compiled for its debugging information alone, which gdb reads with the views (tq_gdb.py). A program that g++ compiles
// knows no members of classes with virtual functions: they are described where their functions are, in the library,
// whose release has no debugging information.

#include <TqOsBase/diag/Exceptions.h>
#include <TqOsBase/stream/TqFlatMemBuf.h>

struct TqShownClasses {
    TqException* exception;
    TqExceptionWithMsg* exceptionWithMsg;
    TqErrorStatus* errorStatus;
    TqFlatMemBuf* flatMemBuf;
};
TqShownClasses* tqShownClasses;
