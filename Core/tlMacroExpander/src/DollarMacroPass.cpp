// Why this ends: each stretch of text knows from which value it came, and each value in the text by
// which reference it got there. A reference lies in the smallest value that holds all its characters;
// when that is, or lies in, a value of the same macro, the macro contains itself. So values nest no
// deeper than there are macros. Values side by side may still make a reference together, and what it
// brings another one, for ever; there a macro that has helped to make a reference to itself may only
// come up in passes that make the text shorter.
//
// Macros that refer to each other in a ring, as their values are written, are found before the first
// pass: the text could double with each macro of the ring.
#include "tlMacroExpander/src/DollarMacroPass.h"
#include "tlMacroExpander/src/ExpansionLevel.h"
#include "tlMacroExpander/src/LSToken.h"
#include <cstring>
#include <set>
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

/// A known `$(NAME)` in a text.
struct Reference
{
    SubString m_text;
    SubString m_name;
    const xstring* m_value = nullptr;
};

/// Moves `s` behind the next known reference; false, with `s` empty, when there is none.
bool ScanReference(const FileScopeVarFrame& frame, SubString& s, Reference& reference)
{
    for (s.m_p1 = FindDollar(s); s; s.m_p1 = FindDollar(s))
    {
        const char* const behind = ScanDollarMacro(s, reference.m_name);
        if (behind != nullptr)
            reference.m_value = frame.FindDollarMacro(reference.m_name);
        if (behind != nullptr && reference.m_value != nullptr)
        {
            reference.m_text = SubString(s.begin(), behind);
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
        Reference reference;
        if (!ScanReference(frame, stack.back().m_rest, reference))
        {
            open.erase(stack.back().m_value);
            finished.insert(stack.back().m_value);
            stack.pop_back();
            continue;
        }
        if (finished.count(reference.m_value) > 0)
            continue;
        if (!open.insert(reference.m_value).second)
            ThrowContainsItself(reference.m_name);
        stack.push_back(OpenValue{reference.m_value, *reference.m_value});
    }
}

/// A text in which values have been put, and where each of its characters came from.
class SubstitutedText
{
public:
    SubstitutedText(const FileScopeVarFrame& frame, SubString text)
        : m_frame(frame), m_text(text), m_origins(static_cast<size_t>(text.size()), 0)
    {
        m_places.push_back(Place{nullptr, 0, s_none, 0, false});
    }

    /// One pass; false when there was nothing to replace.
    bool Run();

    xstring& Text() { return m_text; }

private:
    using Index = size_t;
    static constexpr Index s_none = static_cast<Index>(-1);

    /// A value in the text; the first one stands for the text that was given.
    struct Place
    {
        const xstring* m_value;
        Index m_parent;      ///< The smallest place that holds the whole reference.
        Index m_maker;       ///< A place beside this one that the reference was made with, or none.
        ssize_t m_depth;
        bool m_isReturning;  ///< It, or a place that it lies in, has helped to make itself.
    };

    Index CommonPlace(Index a, Index b) const;
    Index AddPlace(const Reference& reference);
    bool IsMadeBy(const xstring* value, Index maker) const;
    void Copy(SubString s, xstring& text, std::vector<Index>& origins) const;

    const FileScopeVarFrame& m_frame;
    xstring m_text;
    std::vector<Index> m_origins; ///< The place of each character of the text.
    std::vector<Place> m_places;
};

SubstitutedText::Index SubstitutedText::CommonPlace(Index a, Index b) const
{
    while (a != b)
    {
        Index& deeper = m_places[a].m_depth >= m_places[b].m_depth ? a : b;
        deeper = m_places[deeper].m_parent;
    }
    return a;
}

/// True when `maker`, what it was made with, and so on, is or includes a place of `value`.
bool SubstitutedText::IsMadeBy(const xstring* value, Index maker) const
{
    for (; maker != s_none; maker = m_places[maker].m_maker)
    {
        if (m_places[maker].m_value == value)
            return true;
    }
    return false;
}

SubstitutedText::Index SubstitutedText::AddPlace(const Reference& reference)
{
    const Index* const first = m_origins.data() + (reference.m_text.begin() - m_text.begin());
    const Index* const last = first + reference.m_text.size();
    Index parent = *first;
    for (const Index* origin = first; origin != last; ++origin)
        parent = CommonPlace(parent, *origin);
    for (Index place = parent; place != 0; place = m_places[place].m_parent)
    {
        if (m_places[place].m_value == reference.m_value)
            ThrowContainsItself(reference.m_name);
    }
    Index maker = s_none; // the youngest: its own makers are the longest line
    for (const Index* origin = first; origin != last; ++origin)
    {
        if (*origin != parent && (maker == s_none || *origin > maker))
            maker = *origin;
    }
    const Place& outer = m_places[parent];
    const bool isReturning = outer.m_isReturning || IsMadeBy(reference.m_value, maker);
    m_places.push_back(Place{reference.m_value, parent, maker, outer.m_depth + 1, isReturning});
    return m_places.size() - 1;
}

void SubstitutedText::Copy(SubString s, xstring& text, std::vector<Index>& origins) const
{
    const auto first = m_origins.begin() + (s.begin() - m_text.begin());
    origins.insert(origins.end(), first, first + s.size());
    text += s;
}

bool SubstitutedText::Run()
{
    xstring text;
    std::vector<Index> origins;
    SubString returning;
    SubString rest = m_text;
    const char* copied = m_text.begin();
    Reference reference;
    while (ScanReference(m_frame, rest, reference))
    {
        Copy(SubString(copied, reference.m_text.begin()), text, origins);
        copied = rest.begin();
        const Index place = AddPlace(reference);
        if (m_places[place].m_isReturning && returning.empty())
            returning = reference.m_name;
        text += *reference.m_value;
        origins.insert(origins.end(), static_cast<size_t>(reference.m_value->size()), place);
    }
    if (copied == m_text.begin())
        return false;
    Copy(SubString(copied, m_text.end()), text, origins);
    if (!returning.empty() && text.size() >= m_text.size())
        ThrowContainsItself(returning);
    m_text.swap(text);
    m_origins.swap(origins);
    return true;
}

} // namespace

bool RunDollarMacroPass(const FileScopeVarFrame& frame, xostream& os, SubString s)
{
    bool replaced = false;
    const char* written = s.begin();
    Reference reference;
    while (ScanReference(frame, s, reference))
    {
        os << SubString(written, reference.m_text.begin()) << *reference.m_value;
        written = s.begin();
        replaced = true;
    }
    os << SubString(written, s.end());
    return replaced;
}

bool SubstituteDollarMacros(const FileScopeVarFrame& frame, xstring& s)
{
    CheckForRings(frame, s);
    SubstitutedText text(frame, s);
    if (!text.Run())
        return false;
    while (text.Run())
        continue;
    s.swap(text.Text());
    return true;
}

} // namespace telv
