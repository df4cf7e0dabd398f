// SPDX-License-Identifier: MIT
// Decimal text of numbers without an allocation, for streams and for strings.
#pragma once

#include "tlUtils/IntTypes.h"

namespace telv
{

/// The text of one number, in place. Private to this library.
struct NumberText
{
    explicit NumberText(long value);
    /// As `ToString(double)` describes it.
    explicit NumberText(double value);

    char m_text[32]; ///< Not NUL-terminated.
    ssize_t m_length;
};

} // namespace telv
