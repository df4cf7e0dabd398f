// SPDX-License-Identifier: MIT
#include "Mutator.h"
#include <algorithm>
#include <cctype>
#include <cstring>
#include <utility>
#include <vector>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize,
                                          unsigned int seed);
extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* data1, size_t size1,
                                            const uint8_t* data2, size_t size2, uint8_t* out,
                                            size_t maxOutSize, unsigned int seed);

namespace telv::fuzz
{

namespace
{

/// [first, second) of a text.
using Range = std::pair<size_t, size_t>;

/// The bracketed sections of a text, brackets included; strings and comments count like the rest.
std::vector<Range> FindSections(const std::string& text)
{
    std::vector<Range> sections;
    std::vector<size_t> open;
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (std::strchr("({[", text[i]) != nullptr && text[i] != '\0')
            open.push_back(i);
        else if (std::strchr(")}]", text[i]) != nullptr && text[i] != '\0' && !open.empty())
        {
            sections.emplace_back(open.back(), i + 1);
            open.pop_back();
        }
    }
    return sections;
}

bool IsWordCharacter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

std::vector<Range> FindWords(const std::string& text)
{
    std::vector<Range> words;
    for (size_t i = 0; i < text.size();)
    {
        size_t end = i;
        while (end < text.size() && IsWordCharacter(text[end]))
            ++end;
        if (end > i)
            words.emplace_back(i, end);
        i = end + 1;
    }
    return words;
}

std::string Slice(const std::string& text, Range range)
{
    return text.substr(range.first, range.second - range.first);
}

std::string Replace(const std::string& text, Range range, const std::string& by)
{
    return text.substr(0, range.first) + by + text.substr(range.second);
}

/// A place between two tokens, roughly; often the start of a line.
size_t PickPlace(const std::string& text, Grammar& grammar)
{
    size_t place = grammar.Below(text.size() + 1);
    const bool wantsLine = grammar.OneIn(2);
    while (place < text.size() && place > 0 &&
           (wantsLine ? text[place - 1] != '\n'
                      : IsWordCharacter(text[place - 1]) && IsWordCharacter(text[place])))
        ++place;
    return place;
}

std::string ChangeSection(const std::string& text, Range section, Grammar& grammar, Start start)
{
    const Range inside(section.first + 1, section.second - 1);
    switch (grammar.Below(6))
    {
    case 0:
        return Replace(text, inside, grammar.Part(start));
    case 1:
        return Replace(text, section, grammar.Wrap(Slice(text, section)));
    case 2:
        return Replace(text, inside, grammar.Wrap(Slice(text, inside)));
    case 3:
        return Replace(text, section, "");
    case 4:
        return Replace(text, {section.second, section.second}, Slice(text, section));
    default:
        return Replace(text, {PickPlace(text, grammar), section.first}, "");
    }
}

/// Two sections of the text change places, or one is copied over the other.
std::string MixSections(const std::string& text, const std::vector<Range>& sections,
                        Grammar& grammar)
{
    const Range a = sections[grammar.Below(sections.size())];
    const Range b = sections[grammar.Below(sections.size())];
    if (a.second > b.first || grammar.OneIn(2))
        return Replace(text, a, Slice(text, b));
    return Replace(Replace(text, b, Slice(text, a)), a, Slice(text, b));
}

std::string ChangeWord(const std::string& text, Grammar& grammar)
{
    const std::vector<Range> words = FindWords(text);
    if (words.empty())
        return text + grammar.Name();
    const std::string other = Slice(text, words[grammar.Below(words.size())]);
    return Replace(text, words[grammar.Below(words.size())],
                   grammar.OneIn(2) ? grammar.Name() : other);
}

} // namespace

std::string MutateText(const std::string& text, uint32_t seed, Start start)
{
    Grammar grammar(seed);
    if (text.size() < 2 || grammar.OneIn(12))
        return grammar.Text(start);
    const std::vector<Range> sections = FindSections(text);
    const size_t place = PickPlace(text, grammar);
    switch (grammar.Below(sections.empty() ? 4 : 8))
    {
    case 0:
    case 1:
        return Replace(text, {place, place}, grammar.Part(start));
    case 2:
        return ChangeWord(text, grammar);
    case 3:
        return grammar.OneIn(2) ? text + grammar.Part(start) : grammar.Wrap(text);
    case 4:
        return MixSections(text, sections, grammar);
    default:
    {
        Range section = sections[grammar.Below(sections.size())];
        return ChangeSection(text, section, grammar, start);
    }
    }
}

std::string CrossTexts(const std::string& text, const std::string& other, uint32_t seed)
{
    Grammar grammar(seed);
    const std::vector<Range> sections = FindSections(other);
    const size_t from = PickPlace(other, grammar);
    const Range taken = sections.empty() || grammar.OneIn(2)
                            ? Range(from, std::max(from, PickPlace(other, grammar)))
                            : sections[grammar.Below(sections.size())];
    const size_t place = PickPlace(text, grammar);
    return Replace(text, {place, place}, Slice(other, taken));
}

} // namespace telv::fuzz

namespace
{

size_t Store(const std::string& text, uint8_t* out, size_t most)
{
    const size_t size = std::min(text.size(), most);
    std::copy_n(text.data(), size, out);
    return size;
}

std::string Load(const uint8_t* data, size_t size)
{
    return std::string(data, data + size);
}

} // namespace

size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed)
{
    if (seed % 3 == 0)
        return LLVMFuzzerMutate(data, size, maxSize);
    return Store(telv::fuzz::MutateText(Load(data, size), seed, telv::fuzz::s_start), data,
                 maxSize);
}

size_t LLVMFuzzerCustomCrossOver(const uint8_t* data1, size_t size1, const uint8_t* data2,
                                 size_t size2, uint8_t* out, size_t maxOutSize, unsigned int seed)
{
    return Store(telv::fuzz::CrossTexts(Load(data1, size1), Load(data2, size2), seed), out,
                 maxOutSize);
}
