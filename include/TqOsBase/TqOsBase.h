#pragma once

/// Everything the library offers.

#include <TqOsBase/Export.h>
#include <TqOsBase/codepage/Bigfont.h>
#include <TqOsBase/codepage/CodePageId.h>
#include <TqOsBase/codepage/LmCodePage.h>
#include <TqOsBase/codepage/NlsFunctions.h>
#include <TqOsBase/codepage/TqCharConverter.h>
#include <TqOsBase/codepage/TqCharMapper.h>
#include <TqOsBase/codepage/TqCharOp.h>
#include <TqOsBase/codepage/TqCodePageMapper.h>
#include <TqOsBase/containers/CPlex.h>
#include <TqOsBase/containers/CStdStr.h>
#include <TqOsBase/containers/CStringList.h>
#include <TqOsBase/containers/TqStringA.h>
#include <TqOsBase/containers/TqVector.h>
#include <TqOsBase/crtcompat/NumberFunctions.h>
#include <TqOsBase/diag/ErrorStatus.h>
#include <TqOsBase/diag/Exceptions.h>
#include <TqOsBase/diag/TqLock.h>
#include <TqOsBase/format/FormatUtil.h>
#include <TqOsBase/format/InputWithFormat.h>
#include <TqOsBase/format/LumoAppUnitSets.h>
#include <TqOsBase/format/OutputWithFormat.h>
#include <TqOsBase/format/QMode.h>
#include <TqOsBase/fltcvt/FloatText.h>
#include <TqOsBase/fltcvt/StrToD.h>
#include <TqOsBase/fltcvt/TqGdImpl.h>
#include <TqOsBase/memory/Allocation.h>
#include <TqOsBase/stream/FileStreamBuf.h>
#include <TqOsBase/stream/TqFlatMemBuf.h>
#include <TqOsBase/stream/TqIO.h>
#include <TqOsBase/stream/TqMemStreamBuf.h>
#include <TqOsBase/stream/TqStreamBuf.h>
