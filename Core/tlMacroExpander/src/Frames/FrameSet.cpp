// The set of frames: a sorted array.
#include "tlMacroExpander/FrameSet.h"
#include <algorithm>
#include <functional>

namespace telv
{

FrameSet::~FrameSet()
{
    delete[] m_frames;
}

FrameSet::const_iterator FrameSet::find(VarFrame* frame) const
{
    const const_iterator found = std::lower_bound(begin(), end(), frame, std::less<>());
    return found != end() && *found == frame ? found : end();
}

void FrameSet::MakeRoom(ssize_t n)
{
    if (m_capacity - m_size >= n)
        return;
    const ssize_t capacity = m_capacity * 2 + n;
    VarFrame** const larger = new VarFrame*[static_cast<size_t>(capacity)];
    std::copy(begin(), end(), larger);
    delete[] m_frames;
    m_frames = larger;
    m_capacity = capacity;
}

bool FrameSet::insert(VarFrame* frame)
{
    const ssize_t place = std::lower_bound(begin(), end(), frame, std::less<>()) - begin();
    if (place < m_size && m_frames[place] == frame)
        return false;
    MakeRoom(1);
    std::copy_backward(m_frames + place, m_frames + m_size, m_frames + m_size + 1);
    m_frames[place] = frame;
    ++m_size;
    return true;
}

} // namespace telv
