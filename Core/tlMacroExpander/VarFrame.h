// SPDX-License-Identifier: MIT
// Frames: where names are found.
//
// A source file has a file-scope frame; blocks and invocations push child frames. A look-up tries a
// frame's own variables, then what it imports, then its parent. What is observable is exactly that
// walk; it is answered from one table of the names bound in the whole tree of frames
// (src/Frames/NameTable.h), because scoping is dynamic and the chain of parents as long as the
// nesting of invocations.
#pragma once

#include "tlMacroExpander/FrameSet.h"
#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/LSVariableMap.h"
#include <map>

namespace telv
{

class FileScopeVarFrame;

/// Counts variable-list look-ups while `s_started` is true.
extern TLEXPANDER_API long s_count;
extern TLEXPANDER_API bool s_started;
/// Starts the counting.
TLEXPANDER_API void SetStarted();

/// Owns variables. Redefinition hides a variable without destroying it.
class TLEXPANDER_API LSVariableList
{
public:
    LSVariable* m_first; ///< Newest first, through `LSVariable::m_next`.
    LSVariableMap m_map; ///< The visible variable of each name.

    LSVariableList() : m_first(nullptr) {}
    /// Destroys every variable ever added.
    ~LSVariableList();
    LSVariableList(const LSVariableList&) = delete;
    LSVariableList& operator=(const LSVariableList&) = delete;

    /// Takes ownership of `v`, which becomes the visible variable of its name. When it throws, `v`
    /// has been deleted, unless it is null or has no name.
    void Add(LSVariable* v);
    /// The visible variable of this name, or null. Constant time.
    LSVariable* Find(SubString name);
    /// Writes every variable, hidden ones included, newest first.
    void WriteToStream(xostream& os) const;

private:
    friend class FrameTree;

    /// Add where the entry of the name in the table of the tree is known, in a frame in which
    /// nobody has looked for a name.
    void AddBound(LSVariable* v, NameEntry& entry);
};

/// A scope. Neither its parent nor the frames it imports are owned; they, and the texts that hold
/// the names of its variables, must outlive it, its destructor included.
class TLEXPANDER_API VarFrame
{
public:
    FrameSet m_setOfFrames;       ///< Imported directly or through other imports.
    FrameSet m_setOfDirectFrames; ///< Imported directly.
    LSVariableList m_localVariables;
    VarFrame* m_parent;                  ///< Or null.
    FileScopeVarFrame* m_fileScopeFrame; ///< At the root of the chain of parents; or null.

    /// A child of `parent`, or a frame of its own when that is null.
    explicit VarFrame(VarFrame* parent);
    ~VarFrame();
    VarFrame(const VarFrame&) = delete;
    VarFrame& operator=(const VarFrame&) = delete;

    /// The variable that `name` means here, or null.
    ///
    /// @param pos  Where the name is used; the position of an error.
    /// @throws LexScannerException  "Ambiguous macro name : NAME" when two imports disagree.
    LSVariable* Find(SubString name, const char* pos);
    /// The same without imports.
    LSVariable* Find2(SubString name);
    /// This frame's own variable or one that it imports; parents are not asked.
    LSVariable* FindLocal(SubString name, const char* pos);
    /// What the direct imports agree on, or null.
    LSVariable* FindInDirectImports(SubString name, const char* pos);

    /// Imports `vf` and what it has imported by now.
    void ImportFrame(VarFrame* vf);
    /// Writes the own variables and then the parent.
    void WriteToStream(xostream& os) const;

private:
    friend class FrameTree;

    LSVariable* FindByWalking(SubString name, const char* pos);
};

/// The frame of a source file: the root of a chain of frames, with its dollar macros.
class TLEXPANDER_API FileScopeVarFrame : public VarFrame
{
public:
    xvector<const FileScopeVarFrame*> m_imports; ///< In order of import, repeats kept.
    std::map<xstring, xstring> m_dollarMacrosMap;

    FileScopeVarFrame();
    ~FileScopeVarFrame();

    /// Imports the frame of another file; it must outlive this one.
    void AddImport(FileScopeVarFrame* md);

    /// Sets a dollar macro, visible as the string variable `_NAME_` too.
    void InsertDollarMacro(const xstring& name, const xstring& value);
    /// The value here or in the first import that knows the name, or null. The value belongs to its
    /// frame and changes with it.
    const xstring* FindDollarMacro(const xstring& name) const;

    /// Writes `s` with every known `$(NAME)` replaced, once; true if any was.
    bool ApplyDollarMacros(xostream& os, SubString s) const;
    /// Replaces in `s` until nothing changes; true if `s` changed.
    ///
    /// @throws ExpansionLimitException  "Dollar macro NAME contains itself", without a position.
    bool ApplyDollarMacros(xstring& s) const;
};

/// If `s` begins with `$(NAME)`, sets `name` to view NAME and returns the position behind the
/// parenthesis; else null.
TLEXPANDER_API const char* ScanDollarMacro(SubString s, SubString& name);

static_assert(sizeof(LSVariableList) == 56 && sizeof(VarFrame) == 168, "no other fields");
static_assert(sizeof(FileScopeVarFrame) == 240, "no other fields");

} // namespace telv
