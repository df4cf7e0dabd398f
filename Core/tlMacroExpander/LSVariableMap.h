// The visible variables of a list by name: an ordered map in six words that costs next to nothing
// while it is small.
//
// Two variables fit in place; more go to a hash table on the heap. The order is made when somebody
// asks for it, which only dumps do.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlUtils/BasicSubString.h"
#include <utility>

namespace telv
{

class LSVariable;
class VarFrame;

/// Hash of a name, for the tables of variables. Differs from process to process, so that no text
/// can choose names that collide.
uint64 HashName(SubString name);

/// Map from name to variable, iterated in the order of `strcmp` on the names. Owns no variable;
/// names are those of the variables.
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
    ~LSVariableMap();
    LSVariableMap(const LSVariableMap&) = delete;
    LSVariableMap& operator=(const LSVariableMap&) = delete;

    ssize_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    const_iterator begin() const;
    const_iterator end() const { return const_iterator(this, nullptr); }
    const_iterator find(SubString name) const { return const_iterator(this, Lookup(name)); }

    /// The variable of this name, or null. Constant time.
    LSVariable* Lookup(SubString name) const;
    /// Makes `v` the variable of its name. Amortised constant time.
    void Set(LSVariable* v);
    /// After this the next `Set` does not allocate.
    void MakeRoom();

    /// The frame whose variables these are, or null for a list of its own.
    VarFrame* GetFrame() const { return m_frame; }
    void SetFrame(VarFrame* frame) { m_frame = frame; }

    /// Calls `visit` with each variable, in no particular order.
    template <class Visitor>
    void ForEach(Visitor visit) const
    {
        const ssize_t slots = m_capacity == 0 ? m_size : m_capacity;
        for (ssize_t i = 0; i < slots; ++i)
            if (LSVariable* v = Slots()[i])
                visit(v);
    }

private:
    static constexpr int32 s_inPlace = 2;

    LSVariable* const* Slots() const { return m_capacity == 0 ? m_few : m_table; }
    LSVariable** FindSlot(LSVariable** table, int32 capacity, SubString name) const;
    void Grow();
    void Sort() const;

    LSVariable** m_table = nullptr;          ///< Open addressing; null while all fit in place.
    mutable LSVariable** m_sorted = nullptr; ///< Made on demand, dropped by `Set`.
    VarFrame* m_frame = nullptr;
    LSVariable* m_few[s_inPlace] = {nullptr, nullptr};
    int32 m_size = 0;
    int32 m_capacity = 0; ///< Slots of the table, a power of two; 0 while all fit in place.
};

static_assert(sizeof(LSVariableMap) == 48, "the size of a standard ordered map");

} // namespace telv
