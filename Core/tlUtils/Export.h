// SPDX-License-Identifier: MIT
// Marks what libtlUtils exports; everything else is hidden.
#pragma once

#if defined(__GNUC__) || defined(__clang__)
#define TLUTILS_API __attribute__((visibility("default")))
#else
#define TLUTILS_API
#endif

/// Tells clang that the result of a function views its argument.
#if defined(__clang__)
#define TELV_LIFETIMEBOUND [[clang::lifetimebound]]
#else
#define TELV_LIFETIMEBOUND
#endif

#if defined(__cplusplus) && __cplusplus < 201703L
#error "the headers of libtlUtils and libtlMacroExpander want C++17 or later, as by -std=c++17"
#endif
