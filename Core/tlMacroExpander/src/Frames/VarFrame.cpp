// Frames and variable lists: ownership, look-ups and imports.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/LSVariable"

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Frames/ImportQuery.h"
#include "tlMacroExpander/src/Frames/NameIndex.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include <algorithm>
#include <memory>
#include <vector>

namespace telv
{

long s_count = 0;
bool s_started = false;

void SetStarted()
{
    s_started = true;
}

LSVariableList::~LSVariableList()
{
    while (LSVariable* v = m_first)
    {
        m_first = v->m_next;
        delete v;
    }
}

void LSVariableList::Add(LSVariable* v)
{
    TELV_ASSERT(v);
    TELV_ASSERT(!v->m_name.empty());
    // What can fail comes first and changes nothing when it does.
    std::unique_ptr<LSVariable> owned(v);
    m_map.MakeRoom();
    VarFrame* const frame = m_map.GetFrame();
    if (frame != nullptr)
    {
        if (NameIndex* index = frame->GetIndex())
            index->Bind(frame, v);
    }
    m_map.Set(v);
    v->m_next = m_first;
    m_first = owned.release();
    TELV_ASSERT(m_map.find(v->m_name)->second == v);
}

LSVariable* LSVariableList::Find(SubString name)
{
    TELV_ASSERT(!name.empty());
    if (s_started)
        ++s_count;
    return m_map.Lookup(name);
}

void LSVariableList::WriteToStream(xostream& os) const
{
    os << "{\n";
    {
        Indenter indenter(os, 4);
        for (const LSVariable* v = m_first; v != nullptr; v = v->m_next)
        {
            v->WriteToStream(os);
            os << '\n';
        }
    }
    os << "}\n";
}

VarFrame::VarFrame(VarFrame* parent) : m_parent(parent), m_fileScopeFrame(nullptr)
{
    TELV_ASSERT(parent != this);
    if (parent != nullptr)
    {
        m_fileScopeFrame = parent->m_fileScopeFrame;
        TELV_ASSERT(m_fileScopeFrame);
    }
    m_localVariables.m_map.SetFrame(this);
    LinkToTree();
}

VarFrame::~VarFrame()
{
    NameIndex* const index = GetIndex();
    if (index == nullptr)
        return;
    m_localVariables.m_map.ForEach([&](const LSVariable* v) { index->Unbind(this, v); });
    if (!m_setOfFrames.empty())
        std::erase(index->m_importers, this);
}

/// Jump pointers of a skew-binary kind: an ancestor of any depth is found in logarithmic time.
void VarFrame::LinkToTree()
{
    m_setOfFrames.m_jump = this;
    if (m_parent == nullptr)
        return;
    m_setOfFrames.m_depth = m_parent->Depth() + 1;
    if (NameIndex* const index = GetIndex())
        m_setOfDirectFrames.m_depth = index->TakeFrameNumber();
    VarFrame* const jump = m_parent->m_setOfFrames.m_jump;
    VarFrame* const further = jump->m_setOfFrames.m_jump;
    const bool equalJumps = m_parent->Depth() - jump->Depth() == jump->Depth() - further->Depth();
    m_setOfFrames.m_jump = equalJumps ? further : m_parent;
}

const VarFrame* VarFrame::AncestorAt(int64 depth) const
{
    const VarFrame* frame = this;
    while (frame->Depth() > depth)
    {
        const VarFrame* const jump = frame->m_setOfFrames.m_jump;
        frame = jump->Depth() >= depth ? jump : frame->m_parent;
    }
    return frame;
}

NameIndex* VarFrame::GetIndex() const
{
    return m_fileScopeFrame == nullptr ? nullptr : m_fileScopeFrame->m_setOfFrames.m_index;
}

LSVariable* VarFrame::Find(SubString name, const char* pos)
{
    TELV_ASSERT(!name.empty());
    NameIndex* const index = GetIndex();
    if (index == nullptr || s_started)
        return FindByWalking(name, pos);
    const NameIndex::Hit hit = index->Find(this, name, HashName(name));
    if (index->m_importers.empty())
        return hit.m_var;
    return ImportQuery(name, pos).FindAbove(this, hit.m_frame, hit.m_var);
}

LSVariable* VarFrame::FindByWalking(SubString name, const char* pos)
{
    for (VarFrame* frame = this; frame != nullptr; frame = frame->m_parent)
    {
        if (LSVariable* v = frame->FindLocal(name, pos))
            return v;
    }
    return nullptr;
}

LSVariable* VarFrame::Find2(SubString name)
{
    TELV_ASSERT(!name.empty());
    NameIndex* const index = GetIndex();
    if (index != nullptr && !s_started)
        return index->Find(this, name, HashName(name)).m_var;
    for (VarFrame* frame = this; frame != nullptr; frame = frame->m_parent)
    {
        if (LSVariable* v = frame->m_localVariables.Find(name))
            return v;
    }
    return nullptr;
}

LSVariable* VarFrame::FindLocal(SubString name, const char* pos)
{
    if (LSVariable* v = m_localVariables.Find(name))
        return v;
    return m_setOfFrames.empty() ? nullptr : ImportQuery(name, pos).FindImported(this);
}

LSVariable* VarFrame::FindInDirectImports(SubString name, const char* pos)
{
    return ImportQuery(name, pos).FindInDirectImports(this);
}

void VarFrame::ImportFrame(VarFrame* vf)
{
    TELV_ASSERT(vf);
    // Room first: an import that is only half made would never be completed.
    const std::vector<VarFrame*> further(vf->m_setOfFrames.begin(), vf->m_setOfFrames.end());
    m_setOfFrames.MakeRoom(vf->m_setOfFrames.size() + 1);
    m_setOfDirectFrames.MakeRoom(1);
    NameIndex* const index = GetIndex();
    if (index != nullptr)
    {
        index->NoteImport(this, vf);
        if (m_setOfFrames.empty())
            index->m_importers.push_back(this);
    }
    if (m_setOfFrames.insert(vf))
    {
        for (VarFrame* frame : further)
            m_setOfFrames.insert(frame);
    }
    m_setOfDirectFrames.insert(vf);
}

void VarFrame::WriteToStream(xostream& os) const
{
    CheckStack(nullptr);
    os << "{\n";
    {
        Indenter indenter(os, 4);
        os << "Local vars\n";
        m_localVariables.WriteToStream(os);
        os << "Parent frame\n";
        if (m_parent != nullptr)
            m_parent->WriteToStream(os);
    }
    os << "}\n";
}

} // namespace telv
