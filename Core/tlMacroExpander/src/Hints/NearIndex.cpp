// SPDX-License-Identifier: MIT
// Frames of files are read once, and then what is new in them; the others, which hold arguments,
// whenever they are in the way.
#include "tlMacroExpander/src/Hints/NearIndex.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/Frames/FrameTree.h"
#include "tlMacroExpander/src/Frames/HashName.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include "tlMacroExpander/src/Hints/NearName.h"
#include <algorithm>
#include <array>

namespace telv
{

namespace
{

constexpr ssize_t s_longestKept = 64;
constexpr ssize_t s_longestHashed = s_longestKept + 1;

bool StandsBefore(SubString a, SubString b)
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
}

/// Calls `visit` with the hash of the name, of the name in small letters, and of what is left of it
/// without each of its letters.
template <class Visitor>
void ForEachHash(SubString name, Visitor visit)
{
    std::array<char, s_longestHashed> rest;
    const auto size = static_cast<size_t>(name.size());
    const auto hashOfRest = [&](size_t n)
    { return HashName(SubString(rest.data(), rest.data() + n)); };
    visit(HashName(name));
    std::ranges::transform(name.begin(), name.end(), rest.begin(), LowerCase);
    visit(hashOfRest(size) + 1); // elsewhere than what is left of another
    std::copy(name.begin() + 1, name.end(), rest.begin());
    for (size_t left = 0; left < size; ++left)
    {
        visit(hashOfRest(size - 1));
        rest[left] = name.begin()[left];
    }
}

/// Whether the name means something in the frame, be it that its imports disagree about what.
bool IsVisible(VarFrame& frame, SubString name)
{
    try
    {
        return frame.Find(name, name.begin()) != nullptr;
    }
    catch (const LexScannerException&)
    {
        return true;
    }
}

} // namespace

size_t NearIndex::NameHash::operator()(const HeldString& name) const noexcept
{
    return HashName(SubString(name.data(), name.data() + name.size()));
}

SubString NearIndex::Find(VarFrame& frame, SubString word)
{
    if (!MayLook())
        return SubString();
    for (const VarFrame* f = &frame; f != nullptr; f = f->m_parent)
        Read(*f);
    HeldVector<SubString> candidates = Candidates(word);
    CountLooks(static_cast<ssize_t>(candidates.size()));
    std::ranges::sort(candidates, StandsBefore);
    NearName near(word, 1);
    for (const SubString name : candidates)
        if (near.Best().empty() && IsVisible(frame, name))
            near.Offer(name);
    return near.Best();
}

void NearIndex::Read(const VarFrame& frame)
{
    if (FrameTree::IsRoot(&frame))
        return ReadFile(frame);
    CountLooks(1);
    for (const LSVariable* v = frame.m_localVariables.m_first; v != nullptr; v = v->m_next)
        CountLooks(1);
    ReadNames(frame, nullptr);
    ReadImports(frame);
}

void NearIndex::ReadFile(const VarFrame& root)
{
    Seen& seen = m_files[FrameTree::Names(root).Serial()];
    const LSVariable* const newest = root.m_localVariables.m_first;
    if (seen.m_newest != newest)
        ReadNames(root, seen.m_newest);
    seen.m_newest = newest;
    const uint64 changes = ImportIndex::Changes();
    if (seen.m_imports != root.m_setOfFrames.size() || seen.m_changes != changes)
        ReadImports(root);
    seen.m_imports = root.m_setOfFrames.size();
    seen.m_changes = changes;
}

/// What is visible of an import are its own names; its imports are those of the importer too.
void NearIndex::ReadImports(const VarFrame& frame)
{
    CountLooks(frame.m_setOfFrames.size());
    frame.m_setOfFrames.ForEach(
        [&](const VarFrame* imported)
        {
            if (!FrameTree::IsRoot(imported))
                return ReadNames(*imported, nullptr);
            NameTable& names = FrameTree::Names(*imported);
            const LSVariable*& seen = m_files[names.Serial()].m_newest;
            ReadNames(*imported, seen);
            seen = imported->m_localVariables.m_first;
            names.Watch();
        });
}

void NearIndex::ReadNames(const VarFrame& frame, const LSVariable* seen)
{
    for (const LSVariable* v = frame.m_localVariables.m_first; v != seen && v != nullptr;
         v = v->m_next)
        Add(v->m_name);
}

void NearIndex::Add(SubString name)
{
    constexpr ssize_t shortest = 2;
    if (name.size() < shortest)
        return;
    const auto [place, isNew] = m_names.emplace(name.begin(), name.end());
    if (!isNew)
        return;
    const SubString own(place->data(), place->data() + place->size());
    if (own.size() > s_longestKept)
        return m_longNames.push_back(own);
    ForEachHash(own, [&](uint64 hash) { m_byHash.emplace(hash, own); });
}

/// All names that may differ in one letter, and few others, each perhaps more than once.
HeldVector<SubString> NearIndex::Candidates(SubString word) const
{
    HeldVector<SubString> candidates;
    if (word.size() >= s_longestKept)
        candidates = m_longNames;
    if (word.size() <= s_longestHashed)
        ForEachHash(word,
                    [&](uint64 hash)
                    {
                        const auto [begin, end] = m_byHash.equal_range(hash);
                        for (auto it = begin; it != end; ++it)
                            candidates.push_back(it->second);
                    });
    return candidates;
}

} // namespace telv
