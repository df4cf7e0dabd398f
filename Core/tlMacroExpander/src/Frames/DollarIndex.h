// SPDX-License-Identifier: MIT
// The dollar macros that the imports of one file know.
//
// A dollar macro is looked for in the imports, depth first in the order of import. Who asks a
// second time gets the answers of that walk in one map, which further imports of the file only add
// to; it is made anew when one of the other files changes.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Frames/HashName.h"
#include "tlUtils/HeldContainers.h"

namespace telv
{

/// Belongs to the table of names of the file.
class DollarIndex
{
public:
    /// The value that the first import of `file` that knows `name` has, or null.
    const xstring* FindImported(const FileScopeVarFrame& file, const xstring& name);

private:
    struct Hash
    {
        size_t operator()(SubString name) const { return HashName(name); }
    };

    void Synchronise(const FileScopeVarFrame& file);
    void Forget();

    HeldHashMap<SubString, const xstring*, Hash> m_values; ///< Names are those of the files.
    HeldHashSet<const FileScopeVarFrame*> m_visited;
    ssize_t m_imports = 0; ///< So many of the file's own imports have been visited.
    bool m_isWhole = false;
    bool m_isAsked = false; ///< Since the last change.
    uint64 m_seenChanges = 0;
};

} // namespace telv
