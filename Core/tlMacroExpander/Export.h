// SPDX-License-Identifier: MIT
// Marks what libtlMacroExpander exports; everything else is hidden.
#pragma once

#if defined(__GNUC__) || defined(__clang__)
#define TLEXPANDER_API __attribute__((visibility("default")))
#else
#define TLEXPANDER_API
#endif
