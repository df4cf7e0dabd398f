// SPDX-License-Identifier: MIT
// Tokens tile the text: between them lies white space and nothing else, each one scans alone to
// itself, and leaving out comments changes nothing but the comments.
#include "Checks.h"
#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace telv::fuzz
{
namespace
{

bool IsWhiteSpace(SubString s)
{
    for (const char c : ToStd(s))
        if (c == '\0' || std::strchr(" \t\n\r\v\f", c) == nullptr)
            return false;
    return true;
}

/// The token's characters, cut out of their text, are the same token.
void CheckAlone(const LSToken& token)
{
    const ExactText alone(token.m_str.begin(), static_cast<size_t>(token.m_str.size()));
    SubString s = alone.View();
    FUZZ_REQUIRE(LsScanTokenHelper(s) == token.m_type);
    FUZZ_REQUIRE(s.empty());
}

void CheckToken(const ExactText& text, const LSToken& token, SubString before, SubString after)
{
    FUZZ_REQUIRE(text.Holds(token.m_str));
    FUZZ_REQUIRE(text.Holds(after));
    FUZZ_REQUIRE(after.m_p2 == before.m_p2);
    FUZZ_REQUIRE(token.m_str.m_p1 >= before.m_p1 && token.m_str.m_p2 == after.m_p1);
    FUZZ_REQUIRE(token.m_str.empty() == (token.m_type == TOKEN_END));
    FUZZ_REQUIRE(token.m_type >= TOKEN_END && token.m_type <= TOKEN_HASH);
    FUZZ_REQUIRE(token.m_type != TOKEN_DBL_MINUS);
    if (token.m_type != TOKEN_END)
        CheckAlone(token);
}

/// Scans to the end or to the first error and returns how it ended.
Outcome ScanAll(const ExactText& text, bool returnComments, std::vector<LSToken>& tokens)
{
    return Observe(text,
                   [&]
                   {
                       SubString s = text.View();
                       for (;;)
                       {
                           const SubString before(s);
                           tokens.push_back(LsScanToken(s, returnComments));
                           CheckToken(text, tokens.back(), before, s);
                           const SubString gap(before.m_p1, tokens.back().m_str.m_p1);
                           FUZZ_REQUIRE(!returnComments || IsWhiteSpace(gap));
                           if (tokens.back().m_type == TOKEN_END)
                               return std::string();
                       }
                   });
}

void CheckWithoutComments(const ExactText& text, const std::vector<LSToken>& all,
                          const Outcome& end)
{
    std::vector<LSToken> tokens;
    FUZZ_REQUIRE(ScanAll(text, /*returnComments=*/false, tokens) == end);
    auto next = tokens.begin();
    for (const LSToken& token : all)
    {
        if (token.m_type == TOKEN_COMMENT)
            continue;
        FUZZ_REQUIRE(next != tokens.end() && next->m_type == token.m_type);
        FUZZ_REQUIRE(next->m_str.m_p1 == token.m_str.m_p1 && next->m_str.m_p2 == token.m_str.m_p2);
        ++next;
    }
    FUZZ_REQUIRE(next == tokens.end());
}

/// Each piece of the scanner either takes something or leaves the text alone.
void CheckParts(const ExactText& text)
{
    Observe(text,
            [&]
            {
                SubString s = text.View();
                const bool taken = LsScanLiteralCharacter(s);
                FUZZ_REQUIRE(text.Holds(s) && taken == (s.m_p1 != text.View().m_p1));
                return std::string();
            });
    Observe(text,
            [&]
            {
                SubString s = text.View();
                const bool taken = LsScanEscapeCharacter(s);
                FUZZ_REQUIRE(text.Holds(s) && taken == (s.m_p1 != text.View().m_p1));
                return std::string();
            });
    Observe(text,
            [&]
            {
                SubString s = text.View();
                const bool taken = LsScanNumber(s) != TOKEN_UNDEF;
                FUZZ_REQUIRE(text.Holds(s) && taken == (s.m_p1 != text.View().m_p1));
                return std::string();
            });
}

void Check(const ExactText& text)
{
    std::vector<LSToken> tokens;
    const Outcome end = ScanAll(text, /*returnComments=*/true, tokens);
    FUZZ_REQUIRE(end.m_kind == Outcome::Value || end.m_kind == Outcome::LexError);
    FUZZ_REQUIRE(end.m_kind == Outcome::Value || end.m_offset >= 0);
    CheckWithoutComments(text, tokens, end);
    CheckParts(text);
}

} // namespace
} // namespace telv::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    telv::fuzz::Check(telv::fuzz::ExactText(data, size));
    return 0;
}
