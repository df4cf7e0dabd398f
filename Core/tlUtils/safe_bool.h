// SPDX-License-Identifier: MIT
// Base of types that can be tested but not compared as a boolean.
#pragma once

#include "tlUtils/Export.h"

namespace telv
{

/// `T` tells by `bool boolean_test() const` whether it is true.
template <class T>
class TLUTILS_API safe_bool
{
public:
    /// True when the derived object's `boolean_test` is.
    explicit operator bool() const { return static_cast<const T*>(this)->boolean_test(); }

protected:
    safe_bool() = default;
    safe_bool(const safe_bool&) = default;
    safe_bool& operator=(const safe_bool&) = default;
    ~safe_bool() = default;
};

} // namespace telv
