// SPDX-License-Identifier: MIT
// The one instantiation of the view, shared by both libraries.
#include "tlUtils/BasicSubString.h"

namespace telv
{

template class BasicSubString<char>;

} // namespace telv
