// SPDX-License-Identifier: MIT
// Definitions that every file sees as its own, without a copy of all of them for each file.
//
// The frame of a file that takes part looks here for names that it does not know, and makes itself
// a copy of what it finds: from then on the variable is like any that the file defined. So what a
// file costs depends on the names that it uses, not on how many are given, and nobody can tell that
// the copies were not there from the start.
//
// Definitions are given by whole frames, one after the other; a file sees those that were given
// before it began.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Frames/HashName.h"
#include "tlMacroExpander/src/Frames/NameMarks.h"
#include "tlUtils/HeldContainers.h"
#include <algorithm>
#include <iterator>
#include <memory>

namespace telv
{

/// The string variable of a dollar macro.
class DollarVariable final : public LSVar, public HeldObject
{
public:
    using LSVar::LSVar;

    /// How the string variable of a dollar macro is called: `_NAME_`.
    static xstring NameOf(SubString dollarMacro);
};

/// Views the macros and dollar macros of frames that it was given; these and their texts must
/// outlive it and every frame that takes part.
class GivenNames
{
public:
    /// How many frames had been given: what a file sees.
    using Edition = int32;

    /// Gives the macros and dollar macros that `frame` defines, or hides with something else. It
    /// must not change any more.
    TLEXPANDER_API void Give(FileScopeVarFrame& frame);
    /// Lets `frame`, in which nothing is defined yet, see what has been given up to now. Frames
    /// that import it must see as much: they find there only what it has asked for.
    TLEXPANDER_API void MakeVisibleIn(FileScopeVarFrame& frame) const;

    /// A copy of what is given under `name`, or null.
    std::unique_ptr<LSVariable> Copy(SubString name, Edition edition) const;
    /// Whether that would be something.
    bool Has(SubString name, Edition edition) const;
    /// The value of the dollar macro, or null.
    const xstring* FindDollarMacro(SubString name, Edition edition) const;
    /// Of all names under which something was ever given.
    const NameMarks& Marks() const { return m_marks; }

    /// Calls `visit` with each name under which something is given, which may last no longer than
    /// the call.
    template <class Visitor>
    void ForEachName(Edition edition, Visitor visit) const
    {
        for (const auto& [name, macros] : m_macros)
            if (macros.At(edition) != nullptr)
                visit(name);
        for (const auto& [name, values] : m_dollarMacros)
            if (values.At(edition) != nullptr)
                visit(DollarVariable::NameOf(name));
    }

private:
    /// What a name stood for, from one edition to the next.
    template <class T>
    class Editions
    {
    public:
        const T* At(Edition edition) const
        {
            const auto behind = std::ranges::upper_bound(m_all, edition, {}, &Since::m_from);
            return behind == m_all.begin() ? nullptr : std::prev(behind)->m_thing;
        }
        void Set(Edition from, const T* thing) { m_all.push_back(Since{from, thing}); }

    private:
        struct Since
        {
            Edition m_from;
            const T* m_thing;
        };
        HeldVector<Since> m_all; ///< Oldest first.
    };
    struct Hash
    {
        size_t operator()(SubString name) const { return HashName(name); }
    };
    template <class T>
    using ByName = HeldHashMap<SubString, Editions<T>, Hash>;

    template <class T>
    static const T* Find(const ByName<T>& map, SubString name, Edition edition);
    const xstring* FindDollarVariable(SubString name, Edition edition) const;

    Edition m_edition = 0;
    ByName<LSMacroVariable> m_macros;
    ByName<xstring> m_dollarMacros;
    NameMarks m_marks;
};

/// What the root of a tree of frames sees.
struct GivenToRoot
{
    const GivenNames* m_names = nullptr; ///< Null: nothing.
    GivenNames::Edition m_edition = 0;
    FileScopeVarFrame* m_root = nullptr;
};

} // namespace telv
