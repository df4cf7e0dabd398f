// SPDX-License-Identifier: MIT
// Frames and variable lists: ownership, look-ups and imports.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/LSVariable"

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Frames/ImportQuery.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include <memory>

namespace telv
{

long s_count = 0;
bool s_started = false;

void SetStarted()
{
    __atomic_store_n(&s_started, true, __ATOMIC_RELAXED);
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
    std::unique_ptr<LSVariable> owned(v);
    m_map.Set(v);
    v->m_next = m_first;
    m_first = owned.release();
}

void LSVariableList::AddBound(LSVariable* v, NameEntry& entry)
{
    std::unique_ptr<LSVariable> owned(v);
    m_map.Set(v, entry);
    v->m_next = m_first;
    m_first = owned.release();
}

LSVariable* LSVariableList::Find(SubString name)
{
    TELV_ASSERT(!name.empty());
    if (IsCountingLookups())
        CountLookup();
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
    if (parent == nullptr)
    {
        m_localVariables.m_map.MakeNames();
        return;
    }
    m_fileScopeFrame = parent->m_fileScopeFrame;
    TELV_ASSERT(m_fileScopeFrame);
    NameTable* const names = parent->m_localVariables.m_map.m_names;
    m_localVariables.m_map.m_names = names;
    m_localVariables.m_map.m_frame = this;
    FramePlace& place = FrameTree::Place(this);
    place.m_depth = FrameTree::Depth(parent) + 1;
    place.m_number = names->TakeFrameNumber();
}

VarFrame::~VarFrame()
{
    LSVariableMap& map = m_localVariables.m_map;
    if (map.m_bindings != nullptr)
        map.m_names->Unbind(map.m_bindings);
}

LSVariable* VarFrame::Find(SubString name, const char* pos)
{
    TELV_ASSERT(!name.empty());
    if (IsCountingLookups())
        return FindByWalking(name, pos);
    return FrameTree::Names(*this).Find(this, name, HashName(name), pos);
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
    if (!IsCountingLookups())
        return FrameTree::Names(*this).FindBound(this, name, HashName(name));
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
    if (m_setOfFrames.empty())
        return nullptr;
    const uint64 hash = HashName(name);
    NameTable& names = FrameTree::Names(*this);
    if (IsCountingLookups() || !FrameTree::IsRoot(this))
        return ImportQuery(name, hash, pos).FindImported(this);
    return names.Imports()->Find(names.Lookup(name, hash), name, hash, pos);
}

LSVariable* VarFrame::FindInDirectImports(SubString name, const char* pos)
{
    return ImportQuery(name, HashName(name), pos).FindInDirectImports(this);
}

void VarFrame::ImportFrame(VarFrame* vf)
{
    TELV_ASSERT(vf);
    // Room first: an import that is only half made would never be completed.
    const bool isNew = !m_setOfFrames.contains(vf);
    ssize_t count = 0;
    if (isNew)
    {
        count = 1;
        vf->m_setOfFrames.ForEach([&](const VarFrame* frame)
                                  { count += m_setOfFrames.contains(frame) ? 0 : 1; });
    }
    NameTable& names = FrameTree::Names(*this);
    m_setOfFrames.MakeRoom(count);
    m_setOfDirectFrames.MakeRoom(1);
    names.MakeRoomForImports(this, count);
    const auto add = [&](VarFrame* frame)
    {
        if (m_setOfFrames.insert(frame))
            names.NoteImport(this, frame);
    };
    if (isNew)
    {
        add(vf);
        vf->m_setOfFrames.ForEach(add);
    }
    if (m_setOfDirectFrames.insert(vf))
        names.NoteDirectImport(this);
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
