// SPDX-License-Identifier: MIT
// A string that either borrows a view or owns a copy.
#pragma once

#include "tlUtils/BasicSubString.h"

namespace telv
{

/// Text that is borrowed until it needs to be owned. `m_subString` views it either way.
class TLUTILS_API StringX
{
public:
    StringX() : m_subString(), m_capacity(0) {} // NOLINT(readability-redundant-member-init)
    ~StringX();
    StringX(const StringX&) = delete;
    StringX& operator=(const StringX&) = delete;

    /// With `copy` the characters are copied; without, `s` must outlive this object's use of it.
    void Set(SubString s, bool copy);

    SubString m_subString;
    ssize_t m_capacity; ///< Bytes of the owned copy; 0 when the text is borrowed.
};

static_assert(sizeof(StringX) == 24, "no other fields");

} // namespace telv
