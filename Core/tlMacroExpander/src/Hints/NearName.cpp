// SPDX-License-Identifier: MIT
// Optimal string alignment, row by row: three rows are enough for swapped neighbours.
#include "tlMacroExpander/src/Hints/NearName.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"
#include <algorithm>
#include <utility>
#include <vector>

namespace telv
{

namespace
{

char LowerCase(char c)
{
    return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool DifferInCaseAlone(SubString a, SubString b)
{
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(),
                      [](char c, char d) { return LowerCase(c) == LowerCase(d); });
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
    const auto n = static_cast<size_t>(b.size());
    const auto length = static_cast<size_t>(a.size());
    if (std::max(n, length) - std::min(n, length) > static_cast<size_t>(most))
        return most + 1;
    std::vector<int> beforeLast(n + 1);
    std::vector<int> last(n + 1);
    std::vector<int> row(n + 1);
    for (size_t j = 0; j <= n; ++j)
        row[j] = static_cast<int>(j);
    for (size_t i = 1; i <= length; ++i)
    {
        std::swap(beforeLast, last);
        std::swap(last, row);
        row[0] = static_cast<int>(i);
        for (size_t j = 1; j <= n; ++j)
        {
            const char c = a.begin()[i - 1];
            const char d = b.begin()[j - 1];
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (c == d ? 0 : 1)});
            if (i > 1 && j > 1 && c == b.begin()[j - 2] && a.begin()[i - 2] == d)
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        if (*std::min_element(row.begin(), row.end()) > most)
            return most + 1;
    }
    return std::min(row[n], most + 1);
}

int NearName::DefaultMost(SubString written)
{
    return static_cast<int>(std::min<ssize_t>(written.size() / 3, 3));
}

void NearName::Offer(SubString name)
{
    if (m_distance <= 1 || name.empty())
        return;
    const int distance =
        DifferInCaseAlone(m_written, name) ? 1 : EditDistance(m_written, name, m_distance - 1);
    if (distance >= m_distance || distance == 0)
        return;
    m_distance = distance;
    m_best = name;
}

void NearName::OfferVisible(VarFrame& frame)
{
    const auto offerNamesOf = [this](const VarFrame& f)
    {
        for (const auto& [name, variable] : f.m_localVariables.m_map)
            Offer(name);
    };
    for (VarFrame* f = &frame; f != nullptr; f = f->m_parent)
    {
        offerNamesOf(*f);
        f->m_setOfFrames.ForEach([&](VarFrame* imported) { offerNamesOf(*imported); });
    }
}

} // namespace telv
