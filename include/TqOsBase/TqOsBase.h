#pragma once

/// \file
/// All headers at once.

/// Everything the library offers, but for what is asked for by itself: containers/Range.h, format/Checked.h (C++20) and
/// the headers in porting/.

#include <TqOsBase/Export.h>
#include <TqOsBase/Version.h>
#include <TqOsBase/codepage/Bigfont.h>
#include <TqOsBase/codepage/CodePageId.h>
#include <TqOsBase/codepage/LineBreak.h>
#include <TqOsBase/codepage/LmCodePage.h>
#include <TqOsBase/codepage/NlsFunctions.h>
#include <TqOsBase/codepage/TqAnsiTextIterator.h>
#include <TqOsBase/codepage/TqCharCategory.h>
#include <TqOsBase/codepage/TqCharConverter.h>
#include <TqOsBase/codepage/TqCharMapper.h>
#include <TqOsBase/codepage/TqCharOp.h>
#include <TqOsBase/codepage/TqCodePageMapper.h>
#include <TqOsBase/containers/CMapStringToPtr.h>
#include <TqOsBase/containers/CMapStringToString.h>
#include <TqOsBase/containers/CPlex.h>
#include <TqOsBase/containers/CStdStr.h>
#include <TqOsBase/containers/CStringArray.h>
#include <TqOsBase/containers/CStringList.h>
#include <TqOsBase/containers/TqStringA.h>
#include <TqOsBase/containers/TqVector.h>
#include <TqOsBase/crtcompat/EnvironmentFunctions.h>
#include <TqOsBase/crtcompat/FileFunctions.h>
#include <TqOsBase/crtcompat/MultibyteFunctions.h>
#include <TqOsBase/crtcompat/NumberFunctions.h>
#include <TqOsBase/crtcompat/PrintfFunctions.h>
#include <TqOsBase/crtcompat/SecureFunctions.h>
#include <TqOsBase/crtcompat/StringFunctions.h>
#include <TqOsBase/diag/ErrorStatus.h>
#include <TqOsBase/diag/Exceptions.h>
#include <TqOsBase/diag/TqAsserter.h>
#include <TqOsBase/diag/TqLock.h>
#include <TqOsBase/diag/TqTracer.h>
#include <TqOsBase/fltcvt/FloatText.h>
#include <TqOsBase/fltcvt/StrToD.h>
#include <TqOsBase/fltcvt/TqGdImpl.h>
#include <TqOsBase/format/FormatUtil.h>
#include <TqOsBase/format/InputWithFormat.h>
#include <TqOsBase/format/LumoAppUnitSets.h>
#include <TqOsBase/format/OutputWithFormat.h>
#include <TqOsBase/format/QMode.h>
#include <TqOsBase/memory/Allocation.h>
#include <TqOsBase/memory/HeapReport.h>
#include <TqOsBase/stream/FileStreamBuf.h>
#include <TqOsBase/stream/MoveBytes.h>
#include <TqOsBase/stream/OpenStream.h>
#include <TqOsBase/stream/PathFunctions.h>
#include <TqOsBase/stream/TqFileSystem.h>
#include <TqOsBase/stream/TqFlatMemBuf.h>
#include <TqOsBase/stream/TqIO.h>
#include <TqOsBase/stream/TqMemStreamBuf.h>
#include <TqOsBase/stream/TqPathMaker.h>
#include <TqOsBase/stream/TqStreamBuf.h>
#include <TqOsBase/stream/WideName.h>
