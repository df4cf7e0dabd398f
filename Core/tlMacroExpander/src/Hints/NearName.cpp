// SPDX-License-Identifier: MIT
// Optimal string alignment, row by row: three rows are enough for swapped neighbours. Of each only
// what is near the diagonal is looked at, so that long names take no more than their length.
#include "tlMacroExpander/src/Hints/NearName.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/Frames/FrameTree.h"
#include "tlMacroExpander/src/Frames/HashName.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include "tlMacroExpander/src/LSToken.h"
#include <algorithm>
#include <array>

namespace telv
{

namespace
{

bool DifferInCaseAlone(SubString a, SubString b)
{
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(),
                      [](char c, char d) { return LowerCase(c) == LowerCase(d); });
}

bool StandsBefore(SubString a, SubString b)
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
}

/// The distances of the first letters of one name, some number of them, to the beginnings of
/// another that are at most `most` letters longer or shorter; only those can lead to so few
/// differences. What is further off stands beside them, on either side, as too much.
using Row = std::array<int, 2 * s_mostDifferences + 3>;

/// The place of the beginning of `j` letters in the row of `i` letters.
size_t PlaceOf(ssize_t j, ssize_t i, int most)
{
    return static_cast<size_t>(1 + most + j - i);
}

/// The row of the first `i` letters of `a`, from the two before it.
/// Counts the places that it fills.
Row NextRow(SubString a, SubString b, ssize_t i, int most, const Row& last, const Row& beforeLast,
            ssize_t& places)
{
    Row row;
    row.fill(most + 1);
    for (ssize_t j = std::max<ssize_t>(0, i - most); j <= std::min(b.size(), i + most); ++j)
    {
        ++places;
        const size_t at = PlaceOf(j, i, most);
        row[at] = std::min(row[at], last[at + 1] + 1);
        if (j == 0)
            continue;
        const char c = a.begin()[i - 1];
        const char d = b.begin()[j - 1];
        row[at] = std::min({row[at], row[at - 1] + 1, last[at] + (c == d ? 0 : 1)});
        if (i > 1 && j > 1 && c == b.begin()[j - 2] && a.begin()[i - 2] == d)
            row[at] = std::min(row[at], beforeLast[at] + 1);
    }
    return row;
}

} // namespace

const LSVariable* FindVisible(VarFrame& frame, SubString name)
{
    try
    {
        return frame.Find(name, name.begin());
    }
    catch (const LexScannerException&)
    {
        return nullptr;
    }
}

int EditDistance(SubString a, SubString b, int most)
{
    ssize_t places = 0;
    return EditDistance(a, b, most, places);
}

int EditDistance(SubString a, SubString b, int most, ssize_t& places)
{
    const int tooMany = most + 1;
    if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) > most)
        return tooMany;
    Row last;
    last.fill(tooMany);
    for (int j = 0; j <= most; ++j)
        last[PlaceOf(j, 0, most)] = j;
    Row beforeLast = last;
    for (ssize_t i = 1; i <= a.size(); ++i)
    {
        const Row row = NextRow(a, b, i, most, last, beforeLast, places);
        if (*std::ranges::min_element(row) > most)
            return tooMany;
        beforeLast = last;
        last = row;
    }
    return last[PlaceOf(b.size(), a.size(), most)];
}

int NearName::DefaultMost(SubString written)
{
    return static_cast<int>(std::min<ssize_t>(written.size() / 3, s_mostDifferences));
}

int NearName::Distance(SubString name, int most) const
{
    if (m_written == name)
        return 0;
    return DifferInCaseAlone(m_written, name) ? std::min(1, most + 1)
                                              : EditDistance(m_written, name, most);
}

void NearName::Offer(SubString name)
{
    if (m_distance <= 1 || name.empty())
        return;
    const int distance = Distance(name, m_distance - 1);
    if (distance >= m_distance || distance == 0)
        return;
    m_distance = distance;
    m_best = name;
}

void NearName::OfferImports(const VarFrame& frame, ssize_t& looked)
{
    NearName best(m_written, m_distance - 1);
    const auto offer = [&](SubString name)
    {
        const int distance = best.Distance(name, std::min(best.m_distance, m_distance - 1));
        const bool isNearer = distance < best.m_distance;
        if (distance == 0 || distance >= m_distance ||
            (!isNearer && (distance > best.m_distance || !StandsBefore(name, best.m_best))))
            return;
        best.m_distance = distance;
        best.m_best = name;
    };
    frame.m_setOfFrames.ForEach(
        [&](const VarFrame* imported)
        {
            for (const auto& [name, variable] : imported->m_localVariables.m_map)
                offer(name);
            looked += 1 + imported->m_localVariables.m_map.size();
        });
    Offer(best.Best());
}

/// Of the names that are given to a file, the nearest alone may become the best: only that is
/// bound, and then offered like any other.
void NearName::BindNearestGiven(NameTable& names, ssize_t& looked) const
{
    xstring best;
    int least = m_distance;
    names.ForEachGivenName(
        [&](SubString name)
        {
            ++looked;
            const int distance = Distance(name, std::min(least, m_distance - 1));
            if (distance == 0 || distance >= m_distance || distance > least ||
                (distance == least && strcmp(name, best) > 0))
                return;
            least = distance;
            best = xstring(name);
        });
    if (!best.empty())
        names.Lookup(best, HashName(best));
}

ssize_t NearName::OfferVisible(VarFrame& frame)
{
    ssize_t looked = 0;
    for (VarFrame* f = &frame; f != nullptr; f = f->m_parent)
    {
        if (FrameTree::IsRoot(f))
            BindNearestGiven(FrameTree::Names(*f), looked);
        for (const auto& [name, variable] : f->m_localVariables.m_map)
            Offer(name);
        looked += 1 + f->m_localVariables.m_map.size();
        OfferImports(*f, looked);
    }
    return looked;
}

} // namespace telv
