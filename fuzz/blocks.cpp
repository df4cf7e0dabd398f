// SPDX-License-Identifier: MIT
// Sections, arguments and blocks of any bytes, read behind every bracket and line feed of the text:
// views lie inside it, start before they end, and are those of a plain reference that scans token
// by token. Brackets that are looked up give what scanning for them gives.
#include "Checks.h"
#include "Mutator.h"
#include "tlMacroExpander/src/Scan/BracketCache.h"
#include "tlMacroExpander/src/Scan/ScanSection.h"
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace telv::fuzz
{

const Start s_start = Start::Program;

namespace
{

constexpr size_t s_mostPlaces = 12;

struct Pair
{
    EToken m_open;
    EToken m_close;
    const char* m_openText;
    const char* m_closeText;
};

constexpr Pair s_pairs[] = {{TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN, "(", ")"},
                            {TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY, "{", "}"},
                            {TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE, "[", "]"}};

std::string Show(const ExactText& text, SubString view, SubString rest, ssize_t extra)
{
    return std::to_string(text.OffsetOf(view.m_p1)) + "-" +
           std::to_string(text.OffsetOf(view.m_p2)) + " rest " +
           std::to_string(text.OffsetOf(rest.m_p1)) + " " + std::to_string(extra);
}

/// What a scan must hold to, whatever the text.
void CheckView(const ExactText& text, SubString view, SubString rest)
{
    FUZZ_REQUIRE(text.Holds(view));
    FUZZ_REQUIRE(text.Holds(rest));
    FUZZ_REQUIRE(rest.m_p2 == text.View().m_p2);
    FUZZ_REQUIRE(view.m_p2 <= rest.m_p1);
}

/// Reads tokens up to the bracket that closes one that has been read; false at the end of the text.
/// `lastEnd` is the end of the last token before it.
bool SkipPlainly(SubString& s, EToken open, EToken close, const char*& lastEnd, const char*& start)
{
    for (ssize_t level = 1;;)
    {
        const LSToken token = LsScanToken(s, false);
        if (token.m_type == TOKEN_END)
            return false;
        level += token.m_type == open ? 1 : token.m_type == close ? -1 : 0;
        start = token.m_str.m_p1;
        if (level == 0)
            return true;
        lastEnd = token.m_str.m_p2;
    }
}

SubString SectionPlainly(SubString& s, const Pair& pair)
{
    const LSToken token = LsScanToken(s, false);
    if (token.m_type != pair.m_open)
    {
        StringStream message(4096);
        message << pair.m_openText << " expected when read " << token;
        throw LexScannerException(message.GetString(), token);
    }
    ScanWhiteSpace(s);
    SubString section(s.m_p1, s.m_p1);
    const char* start = nullptr;
    if (!SkipPlainly(s, pair.m_open, pair.m_close, section.m_p2, start))
        throw LexScannerException("Met EOS while reading bracketted section", s);
    return section;
}

LSToken ArgumentPlainly(SubString& s, SubString& arg, EToken close)
{
    ScanWhiteSpace(s);
    const SubString whole(s);
    const auto fail = [&] {
        throw LexScannerException(xstring("Met EOS while reading argument ") + xstring(whole),
                                  whole);
    };
    if (s && *s == '`')
    {
        ++s;
        for (arg = SubString(s.m_p1, s.m_p1); s && *s != '`'; ++s)
            arg.m_p2 = s.m_p1 + 1;
        if (!s)
            fail();
        ++s;
        return LsScanToken(s, false);
    }
    const Pair* group = nullptr;
    ssize_t level = 0;
    for (arg.m_p1 = s.m_p1;;)
    {
        arg.m_p2 = s.m_p1;
        const LSToken token = LsScanToken(s, false);
        if (token.m_type == TOKEN_END)
            fail();
        if (group != nullptr)
        {
            level += token.m_type == group->m_open ? 1 : token.m_type == group->m_close ? -1 : 0;
            group = level == 0 ? nullptr : group;
            continue;
        }
        if (token.m_type == close || token.m_type == TOKEN_COMMA)
            return token;
        for (const Pair& pair : s_pairs)
            if (token.m_type == pair.m_open)
            {
                group = &pair;
                level = 1;
            }
    }
}

void CheckSection(const ExactText& text, SubString from, const Pair& pair)
{
    const Outcome plain = Observe(text,
                                  [&]
                                  {
                                      SubString s(from);
                                      const SubString section = SectionPlainly(s, pair);
                                      return Show(text, section, s, 0);
                                  });
    const Outcome outcome = Observe(text,
                                    [&]
                                    {
                                        SubString s(from);
                                        const SubString section = ScanBrackettedSection(
                                            s, true, pair.m_open, pair.m_close);
                                        CheckView(text, section, s);
                                        return Show(text, section, s, 0);
                                    });
    FUZZ_REQUIRE(outcome == plain);
}

void CheckArgument(const ExactText& text, SubString from, const Pair& pair)
{
    const Outcome plain = Observe(text,
                                  [&]
                                  {
                                      SubString s(from);
                                      SubString arg;
                                      const LSToken token = ArgumentPlainly(s, arg, pair.m_close);
                                      return Show(text, arg, s, token.m_type);
                                  });
    const Outcome outcome =
        Observe(text,
                [&]
                {
                    SubString s(from);
                    SubString arg;
                    const LSToken token = ScanArgument(s, arg, pair.m_close);
                    CheckView(text, arg, s);
                    FUZZ_REQUIRE(text.Holds(token.m_str) && token.m_str.m_p2 == s.m_p1);
                    return Show(text, arg, s, token.m_type);
                });
    FUZZ_REQUIRE(outcome == plain);
}

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

/// The end of a multi-line block whose closing bracket stands at `close`, by the rule's own words.
const char* EndOfLinesPlainly(const char* begin, const char* first, const char* close)
{
    const char* end = close - 1;
    while (end > first && IsBlank(*end))
        --end;
    if (*end == '\n' && end > first && end[-1] == '\r')
        --end;
    return end < begin ? begin : end;
}

SubString LinesPlainly(SubString& s, ssize_t& indent, const Pair& pair)
{
    const LSToken open = LsScanToken(s, false);
    if (open.m_type != pair.m_open)
    {
        StringStream message(4096);
        message << "Expected " << pair.m_openText << " when read " << open;
        throw LexScannerException(message.GetString(), open);
    }
    SubString block(s);
    while (block && (IsBlank(*block) || *block == '\v' || *block == '\f' || *block == '\r'))
        ++block;
    if (block && *block == '\n')
        for (++block; block && IsBlank(*block); ++block)
            indent += *block == '\t' ? 4 : 1;
    const char* lastEnd = nullptr;
    if (!SkipPlainly(s, pair.m_open, pair.m_close, lastEnd, block.m_p2))
        throw LexScannerException(xstring("Met EOS before closing ") + xstring(pair.m_closeText),
                                  open);
    block.m_p2 = EndOfLinesPlainly(block.m_p1, open.m_str.m_p1, block.m_p2);
    return block;
}

SubString BlockPlainly(SubString& s, ssize_t& indent, const Pair& pair, bool requireOpen)
{
    indent = 0;
    while (s && (IsBlank(*s) || *s == '\v' || *s == '\f' || *s == '\r'))
        ++s;
    if (s && *s == '\n')
        return LinesPlainly(s, indent, pair);
    SubString rest(s);
    const LSToken token = s ? LsScanToken(rest, false) : LSToken(TOKEN_END, s);
    if (token.m_type != pair.m_open && (requireOpen || !s))
    {
        StringStream message(4096);
        message << "Expected " << pair.m_openText << " when read " << token;
        throw LexScannerException(message.GetString(), token);
    }
    SubString block(s.m_p1, s.m_p1);
    if (token.m_type != pair.m_open)
    {
        while (s && *s != '\n' && *s != '\r')
            ++s;
        return SubString(block.m_p1, s.m_p1);
    }
    s = rest;
    if (!s)
        throw LexScannerException(xstring("Met EOS before closing ") + xstring(pair.m_closeText),
                                  token);
    block = s;
    if (block && *block == '\r')
        ++block;
    if (block && *block == '\n')
        ++block;
    const char* lastEnd = nullptr;
    if (!SkipPlainly(s, pair.m_open, pair.m_close, lastEnd, block.m_p2))
        throw LexScannerException("Met EOS while reading bracketted string", token);
    return block;
}

void CheckBlock(const ExactText& text, SubString from, const Pair& pair, bool requireOpen)
{
    const Outcome plain = Observe(text,
                                  [&]
                                  {
                                      SubString s(from);
                                      ssize_t indent = -1;
                                      const SubString block =
                                          BlockPlainly(s, indent, pair, requireOpen);
                                      return Show(text, block, s, indent);
                                  });
    const Outcome outcome = Observe(text,
                                    [&]
                                    {
                                        SubString s(from);
                                        ssize_t indent = -1;
                                        const SubString block = ScanStringBlock(
                                            s, indent, pair.m_open, pair.m_close, pair.m_openText,
                                            pair.m_closeText, requireOpen);
                                        CheckView(text, block, s);
                                        FUZZ_REQUIRE(indent >= 0);
                                        return Show(text, block, s, indent);
                                    });
    FUZZ_REQUIRE(outcome == plain);
}

std::string ShowMatch(const ExactText& text, SubString s, EToken open, EToken close,
                      BracketCache* cache)
{
    MatchingBracket found{};
    if (!SkipToMatchingBracket(s, open, close, found, cache))
        return "none " + std::to_string(text.OffsetOf(s.m_p1));
    return std::to_string(text.OffsetOf(found.m_close)) + " " +
           std::to_string(text.OffsetOf(found.m_end)) + " " +
           std::to_string(text.OffsetOf(found.m_lastEnd)) + " rest " +
           std::to_string(text.OffsetOf(s.m_p1));
}

/// The brackets to read at a place: those of the bracket before it, else any.
const Pair& PairAt(const ExactText& text, const char* place)
{
    const char before = place == text.View().m_p1 ? '\0' : place[-1];
    for (const Pair& pair : s_pairs)
        if (before == *pair.m_openText || before == *pair.m_closeText)
            return pair;
    return s_pairs[static_cast<size_t>(text.OffsetOf(place)) % std::size(s_pairs)];
}

/// Both directions, so that inner brackets are looked up behind outer ones and before them; each
/// view also ends early once, before the bracket that may be known.
void CheckCache(const ExactText& text, const std::vector<const char*>& places)
{
    BracketCache cache(text.View());
    const size_t count = places.size();
    for (size_t i = 0; i < 3 * count; ++i)
    {
        const size_t place = i < count ? i : i < 2 * count ? 2 * count - 1 - i : i - 2 * count;
        SubString s(places[place], text.View().m_p2);
        if (i >= 2 * count)
            s.m_p2 = places[(place * 7 + 3) % count];
        if (s.m_p2 < s.m_p1)
            continue;
        const Pair& pair = PairAt(text, s.m_p1);
        const auto match = [&](BracketCache* known) {
            return Observe(text,
                           [&] { return ShowMatch(text, s, pair.m_open, pair.m_close, known); });
        };
        FUZZ_REQUIRE(match(&cache) == match(nullptr));
    }
}

/// The start, and behind line feeds, brackets and equals signs.
std::vector<const char*> FindPlaces(const ExactText& text)
{
    std::vector<const char*> places{text.View().m_p1};
    for (const char* p = text.View().m_p1; p != text.View().m_p2; ++p)
        if (places.size() < s_mostPlaces &&
            std::string("\n\r({[=,`)").find(*p) != std::string::npos)
            places.push_back(p + 1);
    return places;
}

void Check(const ExactText& text)
{
    const std::vector<const char*> places = FindPlaces(text);
    for (const char* place : places)
    {
        const Pair& pair = PairAt(text, place);
        const SubString from(place, text.View().m_p2);
        CheckSection(text, from, pair);
        CheckArgument(text, from, pair);
        CheckBlock(text, from, pair, false);
        CheckBlock(text, from, pair, true);
    }
    CheckCache(text, places);
}

} // namespace
} // namespace telv::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    telv::fuzz::Check(telv::fuzz::ExactText(data, size));
    return 0;
}
