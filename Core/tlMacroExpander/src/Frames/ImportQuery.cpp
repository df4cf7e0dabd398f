// Look-ups through imports: hiding, and the error when two imports disagree.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/LSVariable"

#include "tlMacroExpander/src/Frames/ImportQuery.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Frames/NameIndex.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include <limits>

namespace telv
{

LSVariable* ImportQuery::FindAbove(VarFrame* frame, const VarFrame* owner, LSVariable* own)
{
    const int64 above = owner == nullptr ? -1 : owner->Depth();
    int64 below = std::numeric_limits<int64>::max();
    for (;;)
    {
        VarFrame* nearest = nullptr;
        for (VarFrame* importer : frame->GetIndex()->m_importers)
        {
            const int64 depth = importer->Depth();
            const bool between = above < depth && depth < below && depth <= frame->Depth();
            if (between && (nearest == nullptr || depth > nearest->Depth()) &&
                frame->AncestorAt(depth) == importer)
                nearest = importer;
        }
        if (nearest == nullptr)
            return own;
        if (LSVariable* v = FindImportedOrKnown(nearest))
            return v;
        below = nearest->Depth();
    }
}

/// `FindImported` for a frame whose own variables do not matter, from memory where possible.
LSVariable* ImportQuery::FindImportedOrKnown(VarFrame* frame)
{
    NameIndex& index = *frame->GetIndex();
    if (frame->Depth() != 0 || !index.HasEpoch())
        return FindImported(frame);
    const uint64 hash = HashName(m_name);
    LSVariable* v = nullptr;
    if (index.m_importCache.Find(m_name, hash, index.Epoch(), v))
        return v;
    v = FindImported(frame);
    index.m_importCache.Store(m_name, hash, v);
    return v;
}

LSVariable* ImportQuery::FindImported(VarFrame* frame)
{
    LSVariable* found = nullptr;
    for (VarFrame* imported : frame->m_setOfFrames)
    {
        LSVariable* const candidate = imported->Find2(m_name);
        if (candidate == nullptr || candidate == found)
            continue;
        if (found != nullptr)
        {
            LSVariable* const v = FindInDirectImports(frame);
            TELV_ASSERT(v);
            return v;
        }
        found = candidate;
    }
    return found;
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
    if (LSVariable* v = frame->m_localVariables.Find(m_name))
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
