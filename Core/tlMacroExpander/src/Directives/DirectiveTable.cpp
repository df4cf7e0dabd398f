// SPDX-License-Identifier: MIT
// Directives by name: one row each. Rows only call.
#include "tlMacroExpander/src/Directives/DirectiveTable.h"
#include "tlMacroExpander/src/Run/ErrorContext.h"
#include <array>
#include <bit>
#include <cstring>
#include <iterator>

namespace telv
{

/// The ways to read a directive for a plan, which this table hands out.
struct DirectivePlans
{
    using Reader = PlannedAction (*)(PlanReader&);

    static constexpr Reader s_for = MacroExpander::PlanFor;
    static constexpr Reader s_if = MacroExpander::PlanIf;
    static constexpr Reader s_let = MacroExpander::PlanLet;
    static constexpr Reader s_rndBracket = MacroExpander::PlanRndBracket;
    static constexpr Reader s_scope = MacroExpander::PlanScope;
    static constexpr Reader s_sqrBracket = MacroExpander::PlanSqrBracket;
    static constexpr Reader s_while = MacroExpander::PlanWhile;
    template <bool splitLines, EStrLiteralMode mode>
    static constexpr Reader s_str = MacroExpander::PlanStr<splitLines, mode>;
};

namespace
{

using Expander = MacroExpander;
using Plans = DirectivePlans;

void ProcessImport(Expander& e, const LSToken& word)
{
    if (e.m_importHandler == nullptr)
        ThrowAt(word.m_str.begin(), {"@import statement not allowed here"});
    e.ProcessImportDirective();
}

void ProcessImportPath(Expander& e, const LSToken& word)
{
    if (e.m_importHandler == nullptr)
        ThrowAt(word.m_str.begin(), {"@importpath statement not allowed here"});
    e.ProcessImportPathDirective();
}

[[noreturn]] void ProcessElse(Expander&, const LSToken& word)
{
    ThrowAt(word.m_str.begin(), {"@else with no matching @if directive"});
}

void ProcessDollar(Expander& e, const LSToken&)
{
    if (e.m_importHandler == nullptr)
        return;
    e.AdvanceWritePos(e.m_startDirectivePos, /*write=*/true);
    e.ProcessDollarDefDirective();
}

constexpr EToken s_name = TOKEN_IDENTIFIER;
constexpr bool s_keep = true;     // blanks before the directive are kept
constexpr bool s_swallow = false; // they go with it

// clang-format off
constexpr Directive s_directives[] = {
    {"import",       s_name, s_swallow, ProcessImport},
    {"importpath",   s_name, s_swallow, ProcessImportPath},
    {"relativepath", s_name, s_swallow, [](Expander& e, const LSToken&) { e.ProcessRelativePathDirective(); }},
    {"str",          s_name, s_keep,    [](Expander& e, const LSToken&) { e.ProcessStrDirective(/*splitLines=*/false, SLM_ASCII); }, Plans::s_str<false, SLM_ASCII>},
    {"strx",         s_name, s_keep,    [](Expander& e, const LSToken&) { e.ProcessStrDirective(/*splitLines=*/true, SLM_ASCII); }, Plans::s_str<true, SLM_ASCII>},
    {"strW",         s_name, s_keep,    [](Expander& e, const LSToken&) { e.ProcessStrDirective(/*splitLines=*/false, SLM_WIDE); }, Plans::s_str<false, SLM_WIDE>},
    {"strxW",        s_name, s_keep,    [](Expander& e, const LSToken&) { e.ProcessStrDirective(/*splitLines=*/true, SLM_WIDE); }, Plans::s_str<true, SLM_WIDE>},
    {"unstr",        s_name, s_keep,    [](Expander& e, const LSToken&) { e.ProcessUnstrDirective(); }},
    {"scope",        s_name, s_keep,    [](Expander& e, const LSToken&) { e.ProcessScopeDirective(); }, Plans::s_scope},
    {"if",           s_name, s_keep,    [](Expander& e, const LSToken&) { e.ProcessIfDirective(); }, Plans::s_if},
    {"else",         s_name, s_swallow, ProcessElse},
    {"while",        s_name, s_keep,    [](Expander& e, const LSToken&) { e.ProcessWhileDirective(); }, Plans::s_while},
    {"for",          s_name, s_keep,    [](Expander& e, const LSToken&) { e.ProcessForDirective(); }, Plans::s_for},
    {"print",        s_name, s_swallow, [](Expander& e, const LSToken&) { e.ProcessPrintDirective(/*newline=*/false); }},
    {"println",      s_name, s_swallow, [](Expander& e, const LSToken&) { e.ProcessPrintDirective(/*newline=*/true); }},
    {"assert",       s_name, s_swallow, [](Expander& e, const LSToken&) { e.ProcessAssertDirective(); }},
    {"assertfails",  s_name, s_swallow, [](Expander& e, const LSToken&) { e.ProcessAssertFailsDirective(); }},
    {"fail",         s_name, s_swallow, [](Expander& e, const LSToken&) { e.ProcessFailDirective(); }},
    {"def",          s_name, s_swallow, [](Expander& e, const LSToken&) { e.ProcessDefDirective(/*exportdef=*/false, /*nakeddef=*/false, /*defpython=*/false); }},
    {"exportdef",    s_name, s_swallow, [](Expander& e, const LSToken&) { e.ProcessDefDirective(/*exportdef=*/true, /*nakeddef=*/false, /*defpython=*/false); }},
    {"nakeddef",     s_name, s_swallow, [](Expander& e, const LSToken&) { e.ProcessDefDirective(/*exportdef=*/false, /*nakeddef=*/true, /*defpython=*/false); }},
    {"defpython",    s_name, s_swallow, [](Expander& e, const LSToken&) { e.ProcessDefDirective(/*exportdef=*/false, /*nakeddef=*/false, /*defpython=*/true); }},
    {"runpython",    s_name, s_swallow, [](Expander& e, const LSToken&) { e.ProcessRunPythonDirective(); }},
    {"let",          s_name, s_swallow, [](Expander& e, const LSToken&) { e.ProcessLetDirective(); }, Plans::s_let},
    {"quote",        s_name, s_keep,    [](Expander& e, const LSToken&) { e.ProcessQuoteDirective(); }},
    {"[", TOKEN_LEFT_SQUARE, s_keep,    [](Expander& e, const LSToken&) { e.ProcessSqrBracketDirective(); }, Plans::s_sqrBracket},
    {"(", TOKEN_LEFT_PAREN,  s_keep,    [](Expander& e, const LSToken&) { e.ProcessRndBracketDirective(); }, Plans::s_rndBracket},
    {"$", TOKEN_DOLLAR,      s_swallow, ProcessDollar}, // flushes itself, when it is a directive
};
// clang-format on

/// For each small letter a bit for each directive that begins with it.
constexpr std::array<uint32, 26> s_byLetter = []
{
    std::array<uint32, 26> byLetter{};
    for (size_t i = 0; i < std::size(s_directives); ++i)
        if (s_directives[i].m_type == TOKEN_IDENTIFIER)
            byLetter[static_cast<size_t>(s_directives[i].m_word[0] - 'a')] |= uint32{1} << i;
    return byLetter;
}();

const Directive* FindWord(SubString word)
{
    if (*word < 'a' || *word > 'z')
        return nullptr;
    for (uint32 left = s_byLetter[static_cast<size_t>(*word - 'a')]; left != 0; left &= left - 1)
        if (const Directive& directive = s_directives[std::countr_zero(left)];
            word == directive.m_word)
            return &directive;
    return nullptr;
}

static_assert(std::size(s_directives) <= 32);

} // namespace

const Directive* FindDirective(const LSToken& token)
{
    if (token.m_type == TOKEN_IDENTIFIER)
        return FindWord(token.m_str);
    for (const Directive& directive : s_directives)
        if (directive.m_type == token.m_type)
            return &directive;
    return nullptr;
}

void ForEachDirectiveWord(const std::function<void(SubString)>& visit)
{
    for (const Directive& directive : s_directives)
        if (directive.m_type == TOKEN_IDENTIFIER)
            visit(directive.m_word);
}

bool MayHoldDollarMacro(SubString literal)
{
    return std::memchr(literal.begin(), '$', static_cast<size_t>(literal.size())) != nullptr;
}

} // namespace telv
