// SPDX-License-Identifier: MIT
// What was defined and not used: of a text, and of groups of texts, such as those that an import
// brings.
//
// Groups overlap: what many files import belongs to the groups of all. So each text is read once,
// for all groups, and it is remembered in which other texts the names stand that it defines; names
// that stand in the same texts count as one.
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Run/Watch.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlUtils/HeldContainers.h"
#include <algorithm>
#include <numeric>
#include <vector>

namespace telv
{

namespace
{

struct IsLess
{
    bool operator()(SubString a, SubString b) const
    {
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
    }
};

/// Calls `visit` with each name that stands in `text`, outside comments and strings, but where
/// something of that name is defined or the name has been met.
template <class Visitor>
void ForEachName(const Watch& watch, SubString text, Visitor visit)
{
    while (text)
    {
        const char* const begin = SkipBlanks(text.begin(), text.end());
        text.m_p1 = begin;
        try
        {
            const LSToken token = LsScanToken(text, /*returnComments=*/true);
            if (token.m_type == TOKEN_IDENTIFIER &&
                !watch.Definitions().contains(token.m_str.begin()) &&
                !watch.IsMet(token.m_str.begin()))
                visit(token.m_str);
        }
        catch (const LexScannerException&)
        {
            text.m_p1 = begin == text.end() ? begin : begin + 1; // a part that was never expanded
        }
    }
}

/// The first and the last place of a name in memory: all lie in a text when these two do.
struct Places
{
    const char* m_first = nullptr; ///< Null: it stands nowhere.
    const char* m_last = nullptr;

    void Add(const char* place)
    {
        m_first = m_first == nullptr ? place : std::min(m_first, place);
        m_last = std::max(m_last, place);
    }
    bool IsWithin(SubString text) const
    {
        return m_first == nullptr || (telv::IsWithin(SubString(m_first, m_first), text) &&
                                      telv::IsWithin(SubString(m_last, m_last), text));
    }
};

/// The definitions in `text` that nothing uses.
HeldVector<const Watch::Definition*> FindUnusedIn(const Watch& watch, SubString text,
                                                  const std::vector<SubString>& texts)
{
    HeldVector<const Watch::Definition*> unused;
    HeldMap<SubString, Places, IsLess> places;
    for (const auto& [pos, definition] : watch.Definitions())
    {
        if (!IsWithin(definition.m_name, text) || watch.IsUsed(definition.m_name))
            continue;
        unused.push_back(&definition);
        places[definition.m_name];
    }
    if (unused.empty())
        return unused;
    for (const SubString& read : texts)
        ForEachName(watch, read,
                    [&](SubString name)
                    {
                        if (const auto found = places.find(name); found != places.end())
                            found->second.Add(name.begin());
                    });
    std::erase_if(unused, [&](const Watch::Definition* definition)
                  { return !places.at(definition->m_name).IsWithin(definition->m_body); });
    return unused;
}

/// What is defined in texts, and in which of them its names stand.
class TextNames
{
public:
    TextNames(const Watch& watch, const std::vector<SubString>& texts)
        : m_texts(texts.size()), m_groups(texts.size())
    {
        HeldMap<const char*, size_t> byBegin;
        for (size_t i = 0; i < texts.size(); ++i)
            if (!texts[i].empty())
                byBegin[texts[i].begin()] = i;
        for (const auto& [pos, definition] : watch.Definitions())
        {
            const auto behind = byBegin.upper_bound(pos);
            if (behind == byBegin.begin())
                continue;
            const size_t text = std::prev(behind)->second;
            if (IsWithin(definition.m_name, texts[text]))
                AddDefinition(m_texts[text], definition, watch.IsUsed(definition.m_name));
        }
        if (m_places.empty())
            return;
        for (const auto& [begin, text] : byBegin)
            ForEachName(watch, texts[text], [&, text = text](SubString name) { Note(name, text); });
        for (size_t i = 0; i < texts.size(); ++i)
            Shorten(m_texts[i], i);
    }

    /// Whether something is defined in the texts of these numbers and nothing of it is used.
    bool DefineInVain(const std::vector<size_t>& group)
    {
        ++m_group;
        for (const size_t text : group)
            m_groups[text] = m_group;
        bool areDefined = false;
        for (const size_t text : group)
        {
            if (IsUsedOutside(m_texts[text]))
                return false;
            areDefined = areDefined || m_texts[text].m_defines;
        }
        return areDefined;
    }

private:
    using Numbers = HeldVector<size_t>;

    struct Text
    {
        bool m_defines = false;
        bool m_isUsed = false;              ///< Something that is defined in it.
        HeldVector<const Numbers*> m_names; ///< Of its definitions: where they stand.
    };

    void AddDefinition(Text& text, const Watch::Definition& definition, bool isUsed)
    {
        text.m_defines = true;
        if (isUsed)
            text.m_isUsed = true;
        else
            text.m_names.push_back(&m_places[definition.m_name]);
    }

    /// Texts are read one after the other.
    void Note(SubString name, size_t text)
    {
        const auto found = m_places.find(name);
        if (found != m_places.end() && (found->second.empty() || found->second.back() != text))
            found->second.push_back(text);
    }

    /// Keeps one name of those that stand in the same texts, and none of those that stand nowhere
    /// but in this one.
    static void Shorten(Text& text, size_t number)
    {
        auto& names = text.m_names;
        std::erase_if(names, [&](const Numbers* places)
                      { return places->empty() || *places == Numbers{number}; });
        std::ranges::sort(names, [](const Numbers* a, const Numbers* b) { return *a < *b; });
        const auto isSame = [](const Numbers* a, const Numbers* b) { return *a == *b; };
        names.erase(std::unique(names.begin(), names.end(), isSame), names.end());
    }

    /// Outside the last group.
    bool IsUsedOutside(const Text& text) const
    {
        return text.m_isUsed || std::ranges::any_of(text.m_names,
                                                    [&](const Numbers* places) {
                                                        return std::ranges::any_of(
                                                            *places, [&](size_t place)
                                                            { return m_groups[place] != m_group; });
                                                    });
    }

    HeldVector<Text> m_texts;
    HeldMap<SubString, Numbers, IsLess> m_places; ///< Texts in which a name stands.
    Numbers m_groups;                             ///< The last group that each text was found in.
    size_t m_group = 0;
};

} // namespace

std::vector<ExpansionWarning> ExpansionRun::FindUnused(SubString text,
                                                       const std::vector<SubString>& texts) const
{
    std::vector<ExpansionWarning> warnings;
    if (m_state->m_watch == nullptr)
        return warnings;
    for (const Watch::Definition* definition : FindUnusedIn(*m_state->m_watch, text, texts))
    {
        ExpansionWarning& warning = warnings.emplace_back();
        warning.m_kind = WARN_UNUSED;
        warning.m_pos = definition->m_name.begin();
        warning.m_text = definition->m_isMacro ? "the macro '" : "the variable '";
        warning.m_text += definition->m_name;
        warning.m_text += "' is not used";
    }
    return warnings;
}

std::vector<bool>
ExpansionRun::DefineInVain(const std::vector<SubString>& texts, size_t groups,
                           const std::function<void(size_t, std::vector<size_t>&)>& group) const
{
    std::vector<bool> areInVain(groups);
    if (m_state->m_watch == nullptr)
        return areInVain;
    TextNames names(*m_state->m_watch, texts);
    std::vector<size_t> numbers;
    for (size_t i = 0; i < groups; ++i)
    {
        numbers.clear();
        group(i, numbers);
        areInVain[i] = names.DefineInVain(numbers);
    }
    return areInVain;
}

bool ExpansionRun::DefinesInVain(const std::vector<SubString>& defining,
                                 const std::vector<SubString>& texts) const
{
    std::vector<SubString> all = defining;
    all.insert(all.end(), texts.begin(), texts.end());
    const auto group = [&](size_t, std::vector<size_t>& numbers)
    {
        numbers.resize(defining.size());
        std::iota(numbers.begin(), numbers.end(), size_t{0});
    };
    return DefineInVain(all, 1, group).front();
}

} // namespace telv
