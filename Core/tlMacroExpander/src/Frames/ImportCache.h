// What names mean through the imports of one file, remembered.
//
// A word of a text that no frame of the file binds has to be looked for in every imported file. The
// answers are kept until one of the files concerned changes. Files that import each other, however
// indirectly, share an ImportEpoch, which counts those changes; they may be destroyed in any order.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include <memory>
#include <vector>

namespace telv
{

/// Counts the changes in a group of files. Joining two groups links one count to the other.
class ImportEpoch
{
public:
    using Ptr = std::shared_ptr<ImportEpoch>;

    /// The count of the group that `epoch` belongs to; shortens the way there.
    static ImportEpoch& Find(Ptr& epoch);
    /// Makes one group of two; both counts change.
    static void Join(Ptr& a, Ptr& b);

    uint64 m_changes = 1;
    bool m_isWhole = true; ///< Every change in the group is counted.

private:
    Ptr m_joined; ///< Null where the count is kept.
};

/// Answers by name. Copies the names; holds a bounded number.
class ImportCache
{
public:
    /// True when it is known what `name` means; `v` may be null.
    bool Find(SubString name, uint64 hash, uint64 epoch, LSVariable*& v);
    /// Remembers an answer that was found at `epoch`.
    void Store(SubString name, uint64 hash, LSVariable* v);

private:
    struct Entry
    {
        uint64 m_hash = 0;
        ssize_t m_name = 0;
        ssize_t m_length = -1; ///< Of the name, in `m_names`; negative in a free slot.
        LSVariable* m_var = nullptr;
    };

    Entry& Probe(SubString name, uint64 hash);
    void MakeRoom();
    void Clear();

    std::vector<Entry> m_table; ///< Open addressing; its size is 0 or a power of two.
    size_t m_size = 0;
    xstring m_names;
    uint64 m_epoch = 0;
};

} // namespace telv
