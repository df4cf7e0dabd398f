// SPDX-License-Identifier: MIT
// One look-up of a name through imports, one by one: the literal way.
//
// Files import each other in graphs whose number of paths grows exponentially; a query visits each
// frame once and remembers what it resolved to.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlUtils/HeldContainers.h"

namespace telv
{

/// Lives for one look-up; views the name.
class ImportQuery
{
public:
    ImportQuery(SubString name, uint64 hash, const char* pos)
        : m_name(name), m_hash(hash), m_pos(pos)
    {
    }

    /// What `frame` imports under the name, or null.
    LSVariable* FindImported(VarFrame* frame);
    /// The same when two of its imports are known to have the name.
    LSVariable* FindContested(VarFrame* frame);

    /// What the direct imports of `frame` agree on, or null.
    /// @throws LexScannerException  when they do not.
    LSVariable* FindInDirectImports(VarFrame* frame);

    /// Whether any change that might change the answer will be counted.
    bool IsTracked() const { return m_isTracked; }

private:
    LSVariable* FindLocal(VarFrame* frame);
    LSVariable* FindOwn(VarFrame* frame);
    LSVariable* FindOwnOrAbove(VarFrame* frame);
    void Visit(VarFrame* frame);
    [[noreturn]] void ThrowAmbiguous() const;

    SubString m_name;
    uint64 m_hash;
    const char* m_pos;
    bool m_isTracked = true;
    HeldMap<const VarFrame*, LSVariable*> m_resolved;
};

} // namespace telv
