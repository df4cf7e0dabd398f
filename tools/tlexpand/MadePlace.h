// SPDX-License-Identifier: MIT
// The way back from a text that was made from a file to that file.
#pragma once

#include "tlUtils/IntTypes.h"

namespace telv::tool
{

/// Where a stretch of a made text came from, up to the next one.
struct MadePlace
{
    ssize_t m_offset; ///< In the text.
    ssize_t m_origin; ///< In the file.
};

} // namespace telv::tool
