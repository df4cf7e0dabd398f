// SPDX-License-Identifier: MIT
// Cutting sections, blocks, arguments and tokens out of the text that is being expanded. Of a
// scanned text, what was cut out is known as a part.
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/ScanSection.h"
#include "tlMacroExpander/src/Texts/ScannedText.h"

namespace telv
{

/// A part of the text, with what is known of it.
LevelText MacroExpander::Part(SubString text) const
{
    const ExpansionLevel* const level = OwnLevel();
    return level != nullptr && level->Item() != nullptr ? level->Scanned()->Part(text)
                                                        : LevelText{text};
}

LSToken MacroExpander::NextToken()
{
    return LsScanToken(m_str, /*returnComments=*/false);
}

LevelText MacroExpander::CutSection(bool readOpen, EToken open, EToken close)
{
    return Part(ScanBrackettedSection(m_str, readOpen, open, close));
}

TextBlock MacroExpander::CutBlock()
{
    ssize_t indent = 0;
    const SubString text = ScanSubstString(m_str, indent);
    return {Part(text), indent};
}

TextBlock MacroExpander::CutRoundBlock()
{
    ssize_t indent = 0;
    const SubString text = ScanRndBrackettedString(m_str, indent);
    return {Part(text), indent};
}

LevelText MacroExpander::CutArgument(LSToken& end, EToken close)
{
    SubString arg;
    end = ScanArgument(m_str, arg, close);
    return Part(arg);
}

} // namespace telv
