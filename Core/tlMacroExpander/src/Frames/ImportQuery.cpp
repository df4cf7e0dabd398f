// SPDX-License-Identifier: MIT
// Look-ups through imports: hiding, and the error when two imports disagree.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/LSVariable"

#include "tlMacroExpander/src/Frames/ImportQuery.h"
#include "tlMacroExpander/src/Frames/NameTable.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include <utility>

namespace telv
{

/// Changes of roots are counted when somebody asks for it, those of other frames are not.
void ImportQuery::Visit(VarFrame* frame)
{
    m_isTracked = m_isTracked && FrameTree::IsRoot(frame);
    FrameTree::Names(*frame).Watch();
}

LSVariable* ImportQuery::FindOwn(VarFrame* frame)
{
    if (IsCountingLookups())
        return frame->m_localVariables.Find(m_name);
    return FrameTree::FindOwn(*frame, m_name, m_hash);
}

LSVariable* ImportQuery::FindOwnOrAbove(VarFrame* frame)
{
    if (IsCountingLookups())
        return frame->Find2(m_name);
    return FrameTree::Names(*frame).FindBound(frame, m_name, m_hash);
}

LSVariable* ImportQuery::FindImported(VarFrame* frame)
{
    LSVariable* found = nullptr;
    const bool isContested = frame->m_setOfFrames.Any(
        [&](VarFrame* imported)
        {
            Visit(imported);
            LSVariable* const candidate = FindOwnOrAbove(imported);
            if (candidate == nullptr || candidate == found)
                return false;
            return std::exchange(found, candidate) != nullptr;
        });
    return isContested ? FindContested(frame) : found;
}

LSVariable* ImportQuery::FindContested(VarFrame* frame)
{
    LSVariable* const v = FindInDirectImports(frame);
    TELV_ASSERT(v);
    return v;
}

LSVariable* ImportQuery::FindInDirectImports(VarFrame* frame)
{
    CheckStack(m_pos);
    LSVariable* found = nullptr;
    for (VarFrame* direct : frame->m_setOfDirectFrames)
    {
        LSVariable* const candidate = FindLocal(direct);
        if (candidate == nullptr || candidate == found)
            continue;
        if (found != nullptr)
            ThrowAmbiguous();
        found = candidate;
    }
    return found;
}

LSVariable* ImportQuery::FindLocal(VarFrame* frame)
{
    Visit(frame);
    if (LSVariable* v = FindOwn(frame))
        return v;
    if (frame->m_setOfFrames.empty())
        return nullptr;
    // Entered before it is resolved, so that frames that import each other end the search.
    const auto [place, isNew] = m_resolved.try_emplace(frame, nullptr);
    if (isNew)
        place->second = FindImported(frame);
    return place->second;
}

void ImportQuery::ThrowAmbiguous() const
{
    xstring description("Ambiguous macro name : ");
    description += m_name;
    throw LexScannerException(description, m_pos);
}

} // namespace telv
