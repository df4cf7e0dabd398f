// SPDX-License-Identifier: MIT
// Exported definitions of small operations that the headers inline, for those who call them by
// name.
//
// A compiler emits an inline function where something refers to it that it does not inline: this
// file is compiled without optimisation and refers to each of them once.
#include "tlUtils/IException.h"
#include "tlUtils/StringExt.h"
#include <new>
#include <utility>

namespace telv
{

namespace
{

/// Its base brings a table of virtual functions, which optimisation at link time would drop.
struct AnyException final : IException
{
    void Write(xostream& /*os*/) const override {}
};

/// Constructors and destructors have no address; calls are all that there is.
[[gnu::used]] void Construct(void* place, SubString s, xstring& string, IndentingStream* os)
{
    ::new (place) xstring;
    ::new (place) xstring(string);
    ::new (place) xstring(std::move(string));
    string = *static_cast<xstring*>(place);
    string = std::move(*static_cast<xstring*>(place));
    static_cast<xstring*>(place)->~xstring();
    ::new (place) VectorOfByte;
    ::new (place) StringX;
    ::new (place) HumanReadableCharInSubString(s);
    ::new (place) xostream(os);
    ::new (place) AnyException;
}

[[gnu::used]] void (VectorOfByte::*const s_clear)() = &VectorOfByte::clear;
[[gnu::used]] void (xostream::*const s_putText)(const char*, ssize_t) = &xostream::put;
[[gnu::used]] void (xostream::*const s_putChar)(char) = &xostream::put;
[[gnu::used]] void (xostream::*const s_flush)() = &xostream::flush;
[[gnu::used]] bool (*const s_equal)(SubString, SubString) = &operator==;
[[gnu::used]] xostream& (*const s_writeView)(xostream&, SubString) = &operator<<;
[[gnu::used]] xostream& (*const s_writeString)(xostream&, const xstring&) = &operator<<;

} // namespace

} // namespace telv
