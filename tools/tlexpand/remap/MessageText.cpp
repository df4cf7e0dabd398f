// SPDX-License-Identifier: MIT
// An apostrophe inside a word ("can't") opens no quote.
#include "remap/MessageText.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include <algorithm>
#include <array>

namespace telv::tool
{

namespace
{

/// With plain quotes for typographic ones.
std::string WithPlainQuotes(std::string text)
{
    for (const std::string quote : {"\u2018", "\u2019"})
        for (size_t pos = 0; (pos = text.find(quote, pos)) != std::string::npos; ++pos)
            text.replace(pos, quote.size(), "'");
    return text;
}

void AddWords(const std::string& text, size_t begin, size_t end, std::vector<std::string>& words)
{
    while (begin < end)
    {
        size_t wordEnd = begin;
        while (wordEnd < end && IsNameCharacter(text[wordEnd]))
            ++wordEnd;
        if (wordEnd > begin)
            words.push_back(text.substr(begin, wordEnd - begin));
        begin = std::max(wordEnd, begin + 1);
    }
}

} // namespace

std::string WithoutColours(const std::string& line)
{
    std::string plain;
    size_t from = 0;
    for (size_t escape = 0; (escape = line.find("\x1b[", from)) != std::string::npos;)
    {
        plain.append(line, from, escape - from);
        const size_t end = line.find_first_not_of("0123456789;", escape + 2);
        from = end == std::string::npos ? line.size() : end + 1;
    }
    return plain.append(line, from);
}

std::vector<std::string> QuotedWords(const std::string& line)
{
    const std::string text = WithPlainQuotes(line);
    std::vector<std::string> words;
    size_t open = 0;
    while ((open = text.find('\'', open)) != std::string::npos)
    {
        if (open > 0 && IsNameCharacter(text[open - 1]))
        {
            ++open;
            continue;
        }
        const size_t close = text.find('\'', open + 1);
        if (close == std::string::npos)
            break;
        AddWords(text, open + 1, close, words);
        open = close + 1;
    }
    return words;
}

bool HasSeverity(const std::string& line)
{
    static constexpr std::array<const char*, 3> s_severities{"error: ", "warning: ", "note: "};
    return std::any_of(s_severities.begin(), s_severities.end(),
                       [&](const char* severity)
                       { return line.find(severity) != std::string::npos; });
}

} // namespace telv::tool
