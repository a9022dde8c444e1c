#pragma once

/// \file
/// GoogleTest and what of the standard library nearly every test uses.

#include <algorithm>
#include <bit>
#include <cerrno>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>
