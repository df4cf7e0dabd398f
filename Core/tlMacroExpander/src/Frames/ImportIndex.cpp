// SPDX-License-Identifier: MIT
// The index of what imports provide.
#include "tlMacroExpander/src/Frames/ImportIndex.h"
#include "tlMacroExpander/src/Frames/FrameTree.h"
#include "tlMacroExpander/src/Frames/ImportQuery.h"
#include "tlMacroExpander/src/Frames/NameTable.h"

namespace telv
{

std::atomic<uint64> ImportIndex::s_changes = 1;

namespace
{

/// Keeps an entry, which may be null, while others are made.
class Holder
{
public:
    explicit Holder(NameEntry* entry) : m_entry(entry)
    {
        if (m_entry != nullptr)
            NameTable::AddRef(*m_entry);
    }
    ~Holder()
    {
        if (m_entry != nullptr)
            NameTable::Release(*m_entry);
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

private:
    NameEntry* const m_entry;
};

} // namespace

void ImportIndex::MakeRoom(ssize_t n)
{
    const size_t room = m_pending.size() + static_cast<size_t>(n);
    if (room > m_pending.capacity())
        m_pending.reserve(room * 2);
}

void ImportIndex::NoteImport(VarFrame* imported)
{
    m_isExact = m_isExact && FrameTree::IsRoot(imported);
    m_pending.push_back(imported);
}

LSVariable* ImportIndex::Find(NameEntry* entry, SubString name, uint64 hash, const char* pos)
{
    if (!IsCurrent())
    {
        const Holder holder(entry); // `name` may be its name
        if (!m_isExact || (!m_isMade && !IsWorthMaking()))
            return ImportQuery(name, hash, pos).FindImported(m_importer);
        Synchronise();
        if (entry == nullptr)
            entry = FrameTree::Names(*m_importer).Lookup(name, hash);
    }
    if (entry == nullptr || entry->m_import == nullptr)
        return nullptr;
    return Answer(*entry->m_import, name, hash, pos);
}

/// Whether asking has cost as much by now as making the index will.
bool ImportIndex::IsWorthMaking()
{
    ssize_t names = 0;
    m_importer->m_setOfFrames.ForEach([&](const VarFrame* imported)
                                      { names += imported->m_localVariables.m_map.size(); });
    m_asked += m_importer->m_setOfFrames.size();
    if (m_asked <= names)
        return false;
    FrameTree::Names(*m_importer).MakeRoom(static_cast<size_t>(names));
    return true;
}

/// Makes the index current. When it throws, the next call goes on where it stopped.
void ImportIndex::Synchronise()
{
    const uint64 changes = Changes();
    ++m_state;
    if (changes != m_seenChanges)
    {
        for (Source& source : m_sources)
            Read(source);
    }
    while (!m_pending.empty())
    {
        m_sources.push_back(Source{m_pending.back(), nullptr});
        m_pending.pop_back();
        Read(m_sources.back());
    }
    m_seenChanges = changes;
    m_isMade = true;
}

/// Takes in what has been defined in an imported file since it was read last, oldest first.
void ImportIndex::Read(Source& source)
{
    const LSVariableList& list = source.m_frame->m_localVariables;
    FrameTree::Names(*source.m_frame).Watch();
    if (list.m_first == source.m_seen)
        return;
    HeldVector<LSVariable*> fresh;
    const NameTable& names = FrameTree::Names(*m_importer);
    for (LSVariable* v = list.m_first; v != source.m_seen; v = v->m_next)
    {
        names.FetchSlot(HashName(v->m_name));
        fresh.push_back(v);
    }
    while (!fresh.empty())
    {
        Provide(source.m_frame, fresh.back());
        source.m_seen = fresh.back();
        fresh.pop_back();
    }
}

void ImportIndex::Provide(VarFrame* provider, LSVariable* v)
{
    NameTable& names = FrameTree::Names(*m_importer);
    if (names.IsGiven(v->m_name))
        return; // what the importer has itself hides it
    NameEntry& entry = *names.Intern(v->m_name, HashName(v->m_name));
    if (entry.m_import == nullptr)
        entry.m_import = &m_names.emplace_back(ImportedName{provider, v, false, 0, nullptr});
    else if (entry.m_import->m_provider == provider)
        entry.m_import->m_var = v;
    else
        entry.m_import->m_isContested = true;
}

LSVariable* ImportIndex::Answer(ImportedName& imported, SubString name, uint64 hash,
                                const char* pos)
{
    if (!imported.m_isContested)
        return imported.m_var;
    if (imported.m_answeredAt == m_state)
        return imported.m_answer;
    ImportQuery query(name, hash, pos);
    LSVariable* const v = query.FindContested(m_importer);
    if (query.IsTracked())
    {
        imported.m_answer = v;
        imported.m_answeredAt = m_state;
    }
    return v;
}

} // namespace telv
