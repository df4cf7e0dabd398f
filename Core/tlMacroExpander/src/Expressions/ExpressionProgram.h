// SPDX-License-Identifier: MIT
// An expression in a scanned text, compiled before it is evaluated the second time.
#pragma once

#include "tlMacroExpander/src/Expressions/ExpressionSteps.h"
#include "tlUtils/HeldContainers.h"
#include <deque>

namespace telv
{

class NameTable;
class ScannedText;
struct ScanItem;

/// Views the text; its names are items of a scanned text, which must live as long.
class ExpressionProgram : public HeldObject
{
public:
    /// `text` lies in the text of `scanned`.
    ExpressionProgram(SubString text, ScannedText& scanned);
    ExpressionProgram(const ExpressionProgram&) = delete;
    ExpressionProgram& operator=(const ExpressionProgram&) = delete;

    bool empty() const { return m_steps.empty(); }
    const ExpressionStep* begin() const { return m_steps.data(); }
    const ExpressionStep* end() const { return m_steps.data() + m_steps.size(); }
    /// The items, with names of `names`.
    const ScanItem* Items(NameTable& names);

private:
    bool Keep(ExpressionStep& step);

    HeldVector<ExpressionStep> m_steps;
    std::deque<xstring, HeldAllocator<xstring>> m_texts; ///< Of literals.
    ScannedText& m_scanned;
};

} // namespace telv
