#pragma once

#include "base/CharacterClass.h"

namespace tq::platform {
using detail::codeOf;
using detail::isSpace;
} // namespace tq::platform
