// Substitution of dollar macros, pass by pass, and the error when it would not end.
#pragma once

#include "tlMacroExpander/LSVariable.h"

namespace telv
{

/// One pass over a text.
class DollarMacroPass
{
public:
    explicit DollarMacroPass(const FileScopeVarFrame& frame) : m_frame(frame) {}

    /// Writes `s` with each known `$(NAME)` replaced; true if any was.
    bool Run(xostream& os, SubString s);

    /// The first macro that the pass replaced; views the text that it ran over.
    SubString FirstName() const { return m_firstName; }

private:
    const FileScopeVarFrame& m_frame;
    SubString m_firstName;
};

/// Runs passes over `s` until nothing changes; true if `s` changed.
/// @throws ExpansionLimitException  when that would never be.
bool SubstituteDollarMacros(const FileScopeVarFrame& frame, xstring& s);

} // namespace telv
