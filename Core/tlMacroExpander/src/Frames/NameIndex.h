// The names that are bound anywhere in one tree of frames.
//
// Scoping is dynamic: the parent of an invocation's frame is the frame of the caller, so a chain of
// parents is as long as the invocations are nested, and walking it for each identifier would make
// recursion quadratic. The index keeps, for each name, its bindings ordered by the depth of their
// frames. The answer to a look-up from a frame F is the deepest binding whose frame is F or an
// ancestor of F. Whether a frame is an ancestor is decided in logarithmic time with jump pointers;
// nearly always the first binding that is looked at is one, because frames elsewhere are alive only
// while the text of an argument is expanded in its caller's frame. Where arguments are nested deep
// in arguments there can be many such frames; a look-up that has passed several remembers its
// answer for its frame and ancestors (Passed), so that those from deeper frames need not pass them
// again. A name that is bound nowhere, which most words of a text are, costs one probe.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Frames/ImportCache.h"
#include <vector>

namespace telv
{

/// Owned by the file-scope frame at the root of the tree. Views names in live variables only.
class NameIndex
{
public:
    NameIndex() = default;
    ~NameIndex();
    NameIndex(const NameIndex&) = delete;
    NameIndex& operator=(const NameIndex&) = delete;

    /// `v` is now the visible variable of its name in `frame`.
    void Bind(VarFrame* frame, LSVariable* v);
    /// Forgets the binding of `v`'s name in `frame`.
    void Unbind(VarFrame* frame, const LSVariable* v);

    struct Hit
    {
        LSVariable* m_var = nullptr;
        const VarFrame* m_frame = nullptr;
    };

    /// The variable of `name` in `frame` or its nearest ancestor that has one; imports apart.
    Hit Find(const VarFrame* frame, SubString name, uint64 hash) const;

    /// A number that no frame of the tree has had.
    int64 TakeFrameNumber() { return ++m_lastNumber; }

    /// Frames of the tree that import others, in the order in which they first did.
    std::vector<VarFrame*> m_importers;

    /// To be called when `importer`, a frame of this tree, is about to import `imported`.
    void NoteImport(const VarFrame* importer, const VarFrame* imported);

    /// Whether what the root of the tree imports may be remembered, and at which state of the
    /// files.
    bool HasEpoch() { return m_epoch != nullptr && ImportEpoch::Find(m_epoch).m_isWhole; }
    uint64 Epoch() { return ImportEpoch::Find(m_epoch).m_changes; }
    ImportCache m_importCache;

private:
    /// Where a frame is in the order of bindings. Never equal for two frames of one tree.
    struct Place
    {
        int64 m_depth;
        int64 m_number;

        auto operator<=>(const Place&) const = default;
    };

    struct Binding
    {
        VarFrame* m_frame;
        LSVariable* m_var;
        Place m_place;
    };

    /// The answer for a frame, which may have been destroyed since: valid for a look-up from a
    /// frame that has one with this address and this number among its ancestors.
    struct Passed
    {
        const VarFrame* m_frame;
        Place m_place;
        const VarFrame* m_answer; ///< The frame with the binding, or null.
    };

    /// One bound name; kept in the table while it has bindings.
    struct Record
    {
        SubString m_name;
        uint64 m_hash;
        Binding m_one;                ///< The only binding, while `m_more` is empty.
        std::vector<Binding> m_more;  ///< All of them, by place, once there were two.
        std::vector<Passed> m_passed; ///< By depth.

        Binding* Begin() { return m_more.empty() ? &m_one : m_more.data(); }
        Binding* End() { return Begin() + Count(); }
        size_t Count() const { return m_more.empty() ? 1 : m_more.size(); }
    };

    class Search;

    static Place PlaceOf(const VarFrame* frame);
    static Binding* FindBinding(Record& record, const VarFrame* frame);
    static Binding* Behind(Record& record, Binding* end, Place place);
    static void ForgetPassed(Record& record, int64 depth);
    size_t Probe(SubString name, uint64 hash) const;
    void InsertRecord(size_t slot, VarFrame* frame, LSVariable* v, uint64 hash);
    void EraseSlot(size_t slot);
    void Grow();

    std::vector<Record*> m_table; ///< Open addressing, linear probing, a power of two.
    void NoteChange(const VarFrame* frame);

    ImportEpoch::Ptr m_epoch;  ///< Of the files that this one is connected with; or null.
    bool m_isImported = false; ///< Another file's answers depend on this one.

    int64 m_lastNumber = 0;
    size_t m_size = 0;
    std::vector<Record*> m_spare; ///< Records to use again.
};

} // namespace telv
