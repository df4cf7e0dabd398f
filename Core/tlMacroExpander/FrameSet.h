// An ordered set of frames in six words.
//
// The members are a sorted array, which takes three words. A frame has room for nothing else, so
// the other three hold where the owning frame stands in the tree of frames; with that, looking up a
// name need not walk every enclosing invocation (src/Frames/NameIndex.h). A frame has two sets; its depth
// is in one and its number in the other.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlUtils/IntTypes.h"

namespace telv
{

class NameIndex;
class VarFrame;

/// Set of frames by address; owns no frame.
class TLEXPANDER_API FrameSet
{
public:
    using const_iterator = VarFrame* const*;
    using iterator = const_iterator;

    FrameSet() = default;
    ~FrameSet();
    FrameSet(const FrameSet&) = delete;
    FrameSet& operator=(const FrameSet&) = delete;

    ssize_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    const_iterator begin() const { return m_frames; }
    const_iterator end() const { return m_frames + m_size; }
    /// Logarithmic.
    const_iterator find(VarFrame* frame) const;
    /// Adds `frame`; false when it is there already. Linear.
    bool insert(VarFrame* frame);
    /// After this the next `n` insertions do not allocate.
    void MakeRoom(ssize_t n);

private:
    friend class VarFrame;
    friend class FileScopeVarFrame;
    friend class NameIndex;

    VarFrame** m_frames = nullptr;
    ssize_t m_size = 0;
    ssize_t m_capacity = 0;

    int64 m_depth = 0;          ///< Of the owning frame below its file-scope frame; or its number.
    VarFrame* m_jump = nullptr; ///< An ancestor further up, or null at the root.
    NameIndex* m_index = nullptr; ///< Names bound in the whole tree; set at its root only.
};

static_assert(sizeof(FrameSet) == 48, "the size of a standard ordered set");

} // namespace telv
