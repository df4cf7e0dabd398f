// One look-up of a name through imports.
//
// Files import each other in graphs whose number of paths grows exponentially; a query visits each
// frame once and remembers what it resolved to.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include <map>

namespace telv
{

/// Lives for one look-up; views the name.
class ImportQuery
{
public:
    ImportQuery(SubString name, const char* pos) : m_name(name), m_pos(pos) {}

    /// What the frames between `frame` (inclusive) and its ancestor `owner` (exclusive; null: all)
    /// import under the name, nearest first; `own` when none does.
    LSVariable* FindAbove(VarFrame* frame, const VarFrame* owner, LSVariable* own);

    /// What `frame` imports under the name, or null.
    LSVariable* FindImported(VarFrame* frame);

    /// What the direct imports of `frame` agree on, or null.
    /// @throws LexScannerException  when they do not.
    LSVariable* FindInDirectImports(VarFrame* frame);

private:
    LSVariable* FindImportedOrKnown(VarFrame* frame);
    LSVariable* FindLocal(VarFrame* frame);
    [[noreturn]] void ThrowAmbiguous() const;

    SubString m_name;
    const char* m_pos;
    std::map<const VarFrame*, LSVariable*> m_resolved;
};

} // namespace telv
