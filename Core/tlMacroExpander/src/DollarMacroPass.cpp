// Why this ends: macros that refer to each other in a ring are found after the first pass, in the
// graph of the values. Without a ring, each pass removes at least one macro from those that can
// still come up, unless values put new references together; then only passes that make the text
// shorter are allowed beyond that number.
#include "tlMacroExpander/src/DollarMacroPass.h"
#include "tlMacroExpander/src/LSToken.h"
#include <cstring>
#include <limits>
#include <set>
#include <unordered_set>
#include <vector>

namespace telv
{

namespace
{

[[noreturn]] void ThrowContainsItself(SubString name)
{
    xstring description("Dollar macro ");
    description += name;
    description += " contains itself";
    throw ExpansionLimitException(description, nullptr);
}

const char* FindDollar(SubString s)
{
    if (s.empty())
        return s.end();
    const void* const found = std::memchr(s.begin(), '$', static_cast<size_t>(s.size()));
    return found == nullptr ? s.end() : static_cast<const char*>(found);
}

/// Takes the next `$(NAME)` out of `s`; false when there is none.
bool ScanNextReference(SubString& s, SubString& name)
{
    for (s.m_p1 = FindDollar(s); s; s.m_p1 = FindDollar(s))
    {
        if (const char* behind = ScanDollarMacro(s, name))
        {
            s.m_p1 = behind;
            return true;
        }
        ++s;
    }
    return false;
}

/// Throws when a macro that `text` refers to leads back to itself. Depth first, left to right, with
/// the open values on a heap stack.
void CheckForRings(const FileScopeVarFrame& frame, SubString text)
{
    struct OpenValue
    {
        const xstring* m_value;
        SubString m_rest;
    };
    std::set<const xstring*> finished;
    std::set<const xstring*> open;
    std::vector<OpenValue> stack{OpenValue{nullptr, text}};
    while (!stack.empty())
    {
        SubString name;
        if (!ScanNextReference(stack.back().m_rest, name))
        {
            open.erase(stack.back().m_value);
            finished.insert(stack.back().m_value);
            stack.pop_back();
            continue;
        }
        const xstring* const value = frame.FindDollarMacro(name);
        if (value == nullptr || finished.count(value) > 0)
            continue;
        if (!open.insert(value).second)
            ThrowContainsItself(name);
        stack.push_back(OpenValue{value, *value});
    }
}

/// How many macros are visible from `frame`.
ssize_t CountMacros(const FileScopeVarFrame& frame)
{
    std::set<xstring> names;
    std::unordered_set<const FileScopeVarFrame*> visited{&frame};
    std::vector<const FileScopeVarFrame*> pending{&frame};
    while (!pending.empty())
    {
        const FileScopeVarFrame* const current = pending.back();
        pending.pop_back();
        for (const auto& macro : current->m_dollarMacrosMap)
            names.insert(macro.first);
        for (const FileScopeVarFrame* import : current->m_imports)
        {
            if (visited.insert(import).second)
                pending.push_back(import);
        }
    }
    return static_cast<ssize_t>(names.size());
}

} // namespace

bool DollarMacroPass::Run(xostream& os, SubString s)
{
    bool replaced = false;
    while (s)
    {
        const char* const dollar = FindDollar(s);
        os << SubString(s.begin(), dollar);
        s.m_p1 = dollar;
        if (s.empty())
            break;
        SubString name;
        const char* const behind = ScanDollarMacro(s, name);
        const xstring* const value = behind == nullptr ? nullptr : m_frame.FindDollarMacro(name);
        if (value == nullptr)
        {
            os << *s;
            ++s;
            continue;
        }
        os << *value;
        if (!replaced)
            m_firstName = name;
        replaced = true;
        s.m_p1 = behind;
    }
    return replaced;
}

bool SubstituteDollarMacros(const FileScopeVarFrame& frame, xstring& s)
{
    ssize_t passesLeft = std::numeric_limits<ssize_t>::max();
    for (ssize_t pass = 1;; ++pass)
    {
        StringStream os(4096);
        DollarMacroPass run(frame);
        if (!run.Run(os, s))
            return pass > 1;
        if (pass == 1)
            CheckForRings(frame, s);
        if (pass == 2)
            passesLeft = CountMacros(frame) - 1;
        if (--passesLeft < 0 && os.size() >= s.size())
            ThrowContainsItself(run.FirstName());
        os.GetString(s, true);
    }
}

} // namespace telv
