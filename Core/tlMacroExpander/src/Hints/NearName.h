// SPDX-License-Identifier: MIT
// The name that was probably meant where another is written.
//
// Names are near when few letters were added, left out, changed or swapped with their neighbours:
// none in names of two letters, one in five, two in eight. A change of case alone is one.
#pragma once

#include "tlUtils/BasicSubString.h"
#include <limits>

namespace telv
{

class LSVariable;
class NameTable;
class VarFrame;

/// What `name` means in `frame`, or null; also when imports disagree.
const LSVariable* FindVisible(VarFrame& frame, SubString name);

inline char LowerCase(char c)
{
    return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// The most that are counted.
constexpr int s_mostDifferences = 3;

/// How many letters must be added, left out, changed or swapped with the next one to make `a` of
/// `b`; `most + 1` when it is more than `most`, which is at most `s_mostDifferences`.
/// Linear.
int EditDistance(SubString a, SubString b, int most);
/// The same; adds to `places` the pairs of letters that were compared.
int EditDistance(SubString a, SubString b, int most, ssize_t& places);

/// Looks for the name nearest to one that is not known.
class NearName
{
public:
    /// @param most  Differences that are allowed; by default as many as suit the length.
    explicit NearName(SubString written) : NearName(written, DefaultMost(written)) {}
    NearName(SubString written, int most) : m_written(written), m_distance(most + 1) {}

    /// Of several that are equally near the first counts.
    void Offer(SubString name);
    /// Offers every name that is visible in `frame`, those of inner frames first; how many frames
    /// and names that were. Imports have no order: of equally near names of theirs that counts
    /// whose bytes come first.
    ssize_t OfferVisible(VarFrame& frame);

    /// The nearest of those offered, which it views; empty when none is near.
    SubString Best() const { return m_best; }

private:
    static int DefaultMost(SubString written);
    /// The differences from what is written, or more than `most`.
    int Distance(SubString name, int most) const;
    void BindNearestGiven(NameTable& names, ssize_t& looked) const;
    void OfferImports(const VarFrame& frame, ssize_t& looked);

    SubString m_written;
    SubString m_best;
    int m_distance; ///< Of the best, or one more than is allowed.
};

} // namespace telv
