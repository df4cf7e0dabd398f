// Cutting sections, blocks, arguments and tokens out of the text that is being expanded.
//
// What was cut behind an item of a scanned text is remembered with it, in order: the next expansion
// that comes there takes the same steps and finds the answers. Where it takes others (a name means
// another macro by then), the text is cut again.
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/ScanSection.h"
#include "tlMacroExpander/src/Texts/ScannedText.h"

namespace telv
{

namespace
{

/// The next remembered cut, if it is this one; `str` is moved behind it then.
const Cut* UseCut(ExpansionLevel& level, SubString& str, ECut kind, EToken close)
{
    Cuts* const cuts = level.Item()->m_cuts.get();
    size_t& used = level.UsedCuts();
    if (cuts == nullptr || used >= cuts->size())
        return nullptr;
    const Cut& cut = (*cuts)[used];
    if (cut.m_kind == kind && cut.m_close == close && cut.m_begin == str.begin() &&
        cut.m_limit == str.end())
    {
        ++used;
        str.m_p1 = cut.m_behind;
        return &cut;
    }
    cuts->resize(used);
    return nullptr;
}

/// Remembers a cut that has been made, unless another expansion of the item is ahead.
void RememberCut(ExpansionLevel& level, Cut cut)
{
    std::unique_ptr<Cuts>& cuts = level.Item()->m_cuts;
    if (cuts == nullptr)
        cuts = std::make_unique<Cuts>();
    if (cuts->size() != level.UsedCuts())
        return;
    const ScannedText& scanned = *level.Scanned();
    if (cut.m_kind != CUT_TOKEN && scanned.EndsBetweenTokens(cut.m_text.end()))
    {
        cut.m_first = scanned.IndexAt(cut.m_text.begin(), 0);
        cut.m_isScanned = cut.m_first != ScannedText::s_unknown;
    }
    cuts->push_back(cut);
    ++level.UsedCuts();
}

/// The level, when what it cuts is worth being remembered.
ExpansionLevel* RememberingLevel(ExpansionLevel* level)
{
    return level != nullptr && level->Item() != nullptr ? level : nullptr;
}

} // namespace

/// Makes a cut, or takes the one that was made here before. `make` cuts `str` and fills in text,
/// indentation and token.
template <class Make>
LevelText MacroExpander::MakeCut(ECut kind, EToken close, Cut& cut, const Make& make)
{
    ExpansionLevel* const level = RememberingLevel(OwnLevel());
    if (level != nullptr)
    {
        if (const Cut* const known = UseCut(*level, m_str, kind, close))
            cut = *known;
        else
        {
            cut = Cut{kind, close, false, 0, m_str.begin(), m_str.end(), nullptr, SubString(), 0, LSToken()};
            make(cut);
            cut.m_behind = m_str.begin();
            RememberCut(*level, cut);
        }
    }
    else
        make(cut);
    LevelText text{cut.m_text};
    if (level != nullptr && cut.m_isScanned)
    {
        text.m_scanned = level->Scanned();
        text.m_first = cut.m_first;
    }
    return text;
}

LSToken MacroExpander::NextToken()
{
    Cut cut;
    MakeCut(CUT_TOKEN, TOKEN_UNDEF, cut,
            [this](Cut& made) { made.m_token = LsScanToken(m_str, false); });
    return cut.m_token;
}

LevelText MacroExpander::CutSection(bool readOpen, EToken open, EToken close)
{
    Cut cut;
    return MakeCut(CUT_SECTION, close, cut, [&](Cut& made)
                   { made.m_text = ScanBrackettedSection(m_str, readOpen, open, close); });
}

LevelText MacroExpander::CutBlock(ssize_t& indent)
{
    Cut cut;
    const LevelText text = MakeCut(CUT_BLOCK, TOKEN_UNDEF, cut, [this](Cut& made)
                                   { made.m_text = ScanSubstString(m_str, made.m_indent); });
    indent = cut.m_indent;
    return text;
}

LevelText MacroExpander::CutRoundBlock(ssize_t& indent)
{
    Cut cut;
    const LevelText text =
        MakeCut(CUT_ROUND_BLOCK, TOKEN_UNDEF, cut,
                [this](Cut& made) { made.m_text = ScanRndBrackettedString(m_str, made.m_indent); });
    indent = cut.m_indent;
    return text;
}

LevelText MacroExpander::CutArgument(LSToken& end, EToken close)
{
    Cut cut;
    const LevelText text =
        MakeCut(CUT_ARGUMENT, close, cut,
                [&](Cut& made) { made.m_token = ScanArgument(m_str, made.m_text, close); });
    end = cut.m_token;
    return text;
}

} // namespace telv
