// SPDX-License-Identifier: MIT
// The frame in which a round of a @for binds its names.
//
// Most rounds leave nothing else in it. Then the next round takes it over with its variables, which
// get other texts: a frame and its variables would else be made and bound again a million times.
#pragma once

#include "tlMacroExpander/src/Frames/HeldNames.h"
#include "tlMacroExpander/src/Run/LevelText.h"
#include "tlUtils/HeldContainers.h"
#include "tlUtils/StringExt.h"
#include <optional>

namespace telv
{

class OwningMacroVariable;

/// For the rounds of one loop, one after the other. Views the names; they and the owner of the
/// texts must outlive it.
class RoundFrame
{
public:
    /// `parent`: the frame of the loop. `owner`: of the texts that are bound; or null.
    RoundFrame(VarFrame& parent, const xvector<SubString>& names, TemporaryText* owner);

    /// The frame of the next round, in which all names are to be bound, in their order. The former
    /// round's is gone or is the same one.
    VarFrame& Begin();
    /// Binds the name of this index. The text must live until the next round begins.
    void Bind(ssize_t name, const LevelText& value);

private:
    bool IsLeftAsBound() const;

    VarFrame& m_parent;
    const xvector<SubString>& m_names;
    TemporaryText* m_owner;
    HeldNames m_entries;
    std::optional<VarFrame> m_frame;
    HeldVector<OwningMacroVariable*> m_bound; ///< In the frame, in the order of the names.
};

} // namespace telv
