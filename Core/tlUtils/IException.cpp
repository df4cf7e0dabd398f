// SPDX-License-Identifier: MIT
// The assertion error as text.
#include "tlUtils/IException.h"
#include "tlUtils/xostream.h"

namespace telv
{

void TelvAssertionError::Write(xostream& os) const
{
    os << what();
}

} // namespace telv
