// SPDX-License-Identifier: MIT
// The interface of every exception of the libraries, and the one for broken assumptions.
#pragma once

#include "tlUtils/Export.h"
#include <stdexcept>

namespace telv
{

class xostream;

/// What can be thrown and written as text. Thrown and caught by value or reference, never deleted
/// through this interface.
class TLUTILS_API IException
{
public:
    /// Writes the message as a user reads it.
    virtual void Write(xostream& os) const = 0;

protected:
    IException() = default;
    IException(const IException&) = default;
    IException& operator=(const IException&) = default;
    ~IException() = default;
};

/// A broken internal assumption: "Assertion failed: CONDITION at PATH(LINE)".
class TLUTILS_API TelvAssertionError : public IException, public std::logic_error
{
public:
    using std::logic_error::logic_error;

    void Write(xostream& os) const override;
};

} // namespace telv
