// SPDX-License-Identifier: MIT
// Reading ahead what a directive or a call of a scanned text asks for, the first time that it is
// met.
#include "tlMacroExpander/src/Directives/DirectiveTable.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/FastPaths.h"
#include "tlMacroExpander/src/Texts/Plan.h"
#include "tlMacroExpander/src/Texts/ScannedText.h"

namespace telv
{

namespace
{

/// Reads a directive; null where that has to be done each time.
std::unique_ptr<Plan> MakePlan(ScannedText& scanned, SubString rest)
{
    auto plan = std::make_unique<Plan>();
    plan->m_limit = rest.end();
    try
    {
        PlanReader reader(*plan, scanned, rest);
        const LSToken word = reader.Token();
        const Directive* const directive = FindDirective(word);
        if (word.m_type == TOKEN_AT)
        {
            plan->m_keepsBlanks = true;
            plan->m_action = [](MacroExpander& expander)
            { expander.AdvanceWritePos(expander.m_str.begin(), /*write=*/false); };
        }
        else if (directive != nullptr && directive->m_plan != nullptr)
        {
            plan->m_keepsBlanks = directive->m_flush;
            plan->m_action = directive->m_plan(reader);
        }
        plan->m_behind = reader.m_rest.begin();
    }
    catch (const LexScannerException&)
    {
        return nullptr; // reading it again finds the error
    }
    return plan->m_action ? std::move(plan) : nullptr;
}

/// Reads the arguments of a call; null where that has to be done each time.
std::unique_ptr<Plan> MakePlanOfCall(const LSMacroVariable& macroVar, ScannedText& scanned,
                                     SubString rest)
{
    auto plan = std::make_unique<Plan>();
    plan->m_limit = rest.end();
    try
    {
        PlanReader reader(*plan, scanned, rest);
        LSToken end = reader.Token();
        if (end.m_type != TOKEN_LEFT_PAREN)
            return nullptr;
        const ssize_t n = macroVar.GetNumArgs();
        for (ssize_t i = 0; i < n; ++i)
        {
            plan->m_args.push_back(
                reader.Argument(end, macroVar.m_argNames[i].m_type != LSV_MACRO));
            if (end.m_type != (i == n - 1 ? TOKEN_RIGHT_PAREN : TOKEN_COMMA))
                return nullptr;
        }
        plan->m_behind = reader.m_rest.begin();
    }
    catch (const LexScannerException&)
    {
        return nullptr;
    }
    return plan;
}

} // namespace

/// The plan of a directive, made if need be; or null. `rest`: the text behind the `@`.
const Plan* MacroExpander::PlanOf(ScannedText& scanned, ScanItem& item, SubString rest)
{
    if (!item.m_isPlanned)
    {
        item.m_isPlanned = true;
        if (FastPaths::IsOn(FastPaths::PLANS))
            item.m_plan = MakePlan(scanned, rest);
    }
    return item.m_plan.get();
}

/// The plan of the call that the current name is, with as many arguments as `macroVar` takes; or
/// null.
const Plan* MacroExpander::PlanOfCall(const LSMacroVariable& macroVar) const
{
    ExpansionLevel* const level = OwnLevel();
    ScanItem* const item = level == nullptr ? nullptr : level->Item();
    if (item == nullptr)
        return nullptr;
    if (!item->m_isPlanned)
    {
        item->m_isPlanned = true;
        if (FastPaths::IsOn(FastPaths::PLANS))
            item->m_plan = MakePlanOfCall(macroVar, *level->Scanned(), m_str);
    }
    const Plan* const plan = item->m_plan.get();
    const bool suits = plan != nullptr && plan->m_limit == m_str.end() &&
                       static_cast<ssize_t>(plan->m_args.size()) == macroVar.GetNumArgs();
    return suits ? plan : nullptr;
}

} // namespace telv
