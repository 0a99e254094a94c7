// SPDX-License-Identifier: Apache-2.0
// The TOML library as it is used here: errors are exceptions, and what it asserts of itself neither ends the process
// nor is taken for granted by the compiler. A garbled text can break it, and is to be refused as any other.
#pragma once

#pragma push_macro("NDEBUG")
#undef NDEBUG
#define TOML_EXCEPTIONS 1
#define TOML_ASSERT(expr) static_cast<void>(0)

#include <toml++/toml.h>

#pragma pop_macro("NDEBUG")
