// SPDX-License-Identifier: MIT
// Finds the visible names that differ in one letter from a word, without looking at all of them:
// a text may have as many words that name nothing as it has names.
//
// Two names that differ in one letter are the same when one letter is left out of one of them, or
// of both. So each name stands under the hash of itself and of what is left of it without each of
// its letters, and a word is looked for under its own.
#pragma once

#include "tlMacroExpander/src/LSToken.h"
#include "tlUtils/HeldContainers.h"
#include <functional>
#include <unordered_map>

namespace telv
{

class LSVariable;
class VarFrame;

/// The names that a run has seen in frames that it asked about. Names stay when their frame ends:
/// whether one is visible is asked of the frame at hand.
class NearIndex
{
public:
    /// The visible name that differs from `word` in one letter or in the case of letters; of
    /// several the first in the order of their bytes. Empty for none. A view of the index's copy.
    SubString Find(VarFrame& frame, SubString word);

    /// Whether it is still worth looking: a run spends only so much on names that are not there.
    bool MayLook() const { return m_looked < s_most; }
    /// Frames and names have been looked at.
    void CountLooks(ssize_t n) { m_looked += n; }
    /// What has been looked at more often than once for each frame of a file and each name in it.
    ssize_t Looks() const { return m_looked; }

private:
    /// What has been read of the frame of a file.
    struct Seen
    {
        const LSVariable* m_newest = nullptr;
        ssize_t m_imports = 0;
        uint64 m_changes = 0;
    };

    struct NameHash
    {
        size_t operator()(const HeldString& name) const noexcept;
    };

    void Read(const VarFrame& frame);
    void ReadFile(const VarFrame& root);
    void ReadImports(const VarFrame& frame);
    void ReadNames(const VarFrame& frame, const LSVariable* seen);
    void Add(SubString name);
    HeldVector<SubString> Candidates(SubString word) const;

    static constexpr ssize_t s_most = ssize_t{1} << 22;

    HeldHashSet<HeldString, NameHash> m_names;
    HeldVector<SubString> m_longNames; ///< Those that stand under no hash.
    std::unordered_multimap<uint64, SubString, std::hash<uint64>, std::equal_to<uint64>,
                            HeldAllocator<std::pair<const uint64, SubString>>>
        m_byHash;
    HeldHashMap<uint64, Seen> m_files; ///< By the number of their table of names.
    ssize_t m_looked = 0;
};

} // namespace telv
