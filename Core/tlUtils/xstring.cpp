// SPDX-License-Identifier: MIT
// The one instantiation of the string and of the array under it, and the order of strings.
#include "tlUtils/xstring.h"
#include "tlUtils/StringExt.h"

namespace telv
{

template class xvector<char>;
template class basic_xstring<char>;

bool operator<(const xstring& a, const xstring& b)
{
    return strcmp(SubString(a), SubString(b)) < 0;
}

} // namespace telv
