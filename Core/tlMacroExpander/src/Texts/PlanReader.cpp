// SPDX-License-Identifier: MIT
// Reading for plans: the cuts of ScanSection.h, as parts of the scanned text.
#include "tlMacroExpander/src/Scan/ScanSection.h"
#include "tlMacroExpander/src/Texts/Plan.h"
#include "tlMacroExpander/src/Texts/ScannedText.h"

namespace telv
{

PlanReader::PlanReader(Plan& plan, ScannedText& scanned, SubString rest)
    : m_rest(rest), m_plan(plan), m_scanned(scanned)
{
}

LSToken PlanReader::Token()
{
    return LsScanToken(m_rest, /*returnComments=*/false);
}

LevelText PlanReader::Section(bool readOpen, EToken open, EToken close)
{
    return m_scanned.Part(ScanBrackettedSection(m_rest, readOpen, open, close));
}

LevelText PlanReader::Condition(bool readOpen)
{
    LevelText text = Section(readOpen, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN);
    Compile(text);
    return text;
}

TextBlock PlanReader::Block()
{
    ssize_t indent = 0;
    const SubString text = ScanSubstString(m_rest, indent);
    return {m_scanned.Part(text), indent};
}

TextBlock PlanReader::RoundBlock()
{
    ssize_t indent = 0;
    const SubString text = ScanRndBrackettedString(m_rest, indent);
    return {m_scanned.Part(text), indent};
}

LevelText PlanReader::ValueBlock()
{
    LevelText text = Block().m_text;
    Compile(text);
    return text;
}

LevelText PlanReader::Argument(LSToken& end, bool isExpression)
{
    SubString arg;
    end = ScanArgument(m_rest, arg, TOKEN_RIGHT_PAREN);
    LevelText text = m_scanned.Part(arg);
    if (isExpression)
        Compile(text);
    return text;
}

void PlanReader::Compile(LevelText& text)
{
    if (text.m_scanned == nullptr)
        return;
    m_plan.m_programs.push_back(std::make_unique<ExpressionProgram>(text.m_text, m_scanned));
    text.m_program = m_plan.m_programs.back().get();
}

} // namespace telv
