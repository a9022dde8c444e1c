#pragma once

#include "base/ArgumentCursor.h"

namespace tq::platform {
using detail::ArgumentCursor;
}
