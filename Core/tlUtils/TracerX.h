// SPDX-License-Identifier: MIT
// The trace stream: what is written to it goes to standard error when it ends.
#pragma once

#include "tlUtils/StringStream.h"

namespace telv
{

/// Collects a trace message and emits it, whole, in its destructor.
class TLUTILS_API TracerX : public StringStream
{
public:
    TracerX() : StringStream(4096) {}
    /// Writes the collected text to standard error; failures are ignored.
    ~TracerX();
};

} // namespace telv
