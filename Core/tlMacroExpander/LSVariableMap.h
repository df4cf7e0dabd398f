// SPDX-License-Identifier: MIT
// The visible variables of a list by name: what an ordered map would offer, in six words.
//
// The variables stand in the table of names of the tree of frames that the list belongs to
// (src/Frames/NameTable.h); this is what that table says about one frame. A list without a frame
// has a table of its own. The order is made when somebody asks for it, which only dumps do.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlUtils/BasicSubString.h"
#include <utility>

namespace telv
{

class LSVariable;
class NameEntry;
class NameTable;
class VarFrame;
struct NameBinding;

/// Map from name to variable, iterated in the order of `strcmp` on the names. Owns no variable.
class TLEXPANDER_API LSVariableMap
{
public:
    using value_type = std::pair<const SubString, LSVariable*>;

    /// Forward iterator; `it->first` is the name, `it->second` the variable.
    class TLEXPANDER_API const_iterator
    {
    public:
        struct Arrow
        {
            value_type m_value;
            const value_type* operator->() const { return &m_value; }
        };

        value_type operator*() const;
        Arrow operator->() const { return Arrow{**this}; }
        /// Logarithmic after the first step.
        const_iterator& operator++();
        bool operator==(const const_iterator& other) const { return m_var == other.m_var; }
        bool operator!=(const const_iterator& other) const { return m_var != other.m_var; }

    private:
        friend class LSVariableMap;
        const_iterator(const LSVariableMap* map, LSVariable* var) : m_map(map), m_var(var) {}

        const LSVariableMap* m_map;
        LSVariable* m_var; ///< Null at the end.
    };
    using iterator = const_iterator;

    LSVariableMap() = default;
    ~LSVariableMap()
    {
        if (m_ownsNames || m_sorted != nullptr)
            Free();
    }
    LSVariableMap(const LSVariableMap&) = delete;
    LSVariableMap& operator=(const LSVariableMap&) = delete;

    ssize_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    const_iterator begin() const;
    const_iterator end() const { return const_iterator(this, nullptr); }
    const_iterator find(SubString name) const { return const_iterator(this, Lookup(name)); }

    /// The variable of this name, or null. Constant time.
    LSVariable* Lookup(SubString name) const;
    /// Makes `v` the variable of its name. Changes nothing when it throws.
    void Set(LSVariable* v);

private:
    friend class FrameTree;
    friend class LSVariableList;
    friend class VarFrame;

    LSVariable* Lookup(SubString name, uint64 hash) const;
    /// Set where the entry of the name is known, in a new frame.
    void Set(LSVariable* v, NameEntry& entry);
    bool HasNone() const;
    void MakeNames();
    void Sort() const;
    void Free();

    NameTable* m_names = nullptr;      ///< Of the tree; null for a list without frame or variables.
    VarFrame* m_frame = nullptr;       ///< Null at the root of a tree, which the table knows.
    NameBinding* m_bindings = nullptr; ///< Of the frame, newest first.
    mutable LSVariable** m_sorted = nullptr; ///< Made on demand, dropped by `Set`.
    ssize_t m_size = 0;
    bool m_ownsNames = false;
};

static_assert(sizeof(LSVariableMap) == 48, "the size of a standard ordered map");

} // namespace telv
