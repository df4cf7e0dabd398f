// SPDX-License-Identifier: MIT
// One sentence for each kind.
#include "map/ChainText.h"

namespace telv::tool
{

std::string DescribeStep(const MapChain& step)
{
    const std::string name = step.m_name.empty() ? "" : " '" + step.m_name + "'";
    if (step.m_kind == "macro")
        return "in expansion of macro" + name;
    if (step.m_kind == "loop" && step.m_round != s_none)
        return "in round " + std::to_string(step.m_round) + " of the loop";
    if (step.m_kind == "import")
        return "imported as" + name;
    return "in " + step.m_kind + name;
}

std::string DescribeMoreSteps(size_t count)
{
    return "... " + std::to_string(count) + " more";
}

const char* DescribeOrigin(const Origin& origin)
{
    if (origin.m_isMade)
        return "made while expanding this";
    if (origin.m_isReworded)
        return "made from this";
    return origin.m_kind == EPieceKind::Source ? "copied from here" : "calculated here";
}

} // namespace telv::tool
