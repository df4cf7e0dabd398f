// SPDX-License-Identifier: MIT
// Steps keep their order, in which each stands behind the one around it, and their number for none.
#include "output/PieceChains.h"
#include "Files.h"

namespace telv::tool
{

namespace
{

static_assert(s_none == -1, "as a ChainRecorder says it");

MapChain ChainOf(const ChainStep& step, const Sources& sources)
{
    MapChain chain;
    const bool isLoop = step.m_kind == ChainStep::STEP_LOOP;
    chain.m_kind = isLoop ? "loop" : "macro";
    chain.m_name = ToStdString(step.m_name);
    chain.m_round = isLoop ? step.m_round : s_none;
    chain.m_parent = step.m_outer;
    chain.m_place.m_inSize = step.m_place.size();
    if (const Source* const source = sources.Find(step.m_place.begin()))
        chain.m_place = RangeIn(*source, step.m_place);
    return chain;
}

} // namespace

OutputChains MakeOutputChains(const ChainRecorder& recorder, const Sources& sources)
{
    OutputChains chains;
    chains.m_chains.reserve(static_cast<size_t>(recorder.Steps().size()));
    for (const ChainStep& step : recorder.Steps())
        chains.m_chains.push_back(ChainOf(step, sources));
    chains.m_chainOfPiece.reserve(static_cast<size_t>(recorder.CountOfPieces()));
    for (ssize_t i = 0; i < recorder.CountOfPieces(); ++i)
        chains.m_chainOfPiece.push_back(recorder.StepOfPiece(i));
    return chains;
}

} // namespace telv::tool
