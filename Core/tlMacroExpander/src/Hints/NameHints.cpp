// SPDX-License-Identifier: MIT
// Names that name nothing: what stands in the source of an expression is compared with what it was
// expanded to.
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/Expressions/BuiltIns.h"
#include "tlMacroExpander/src/Hints/HintSupport.h"
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/Hints/NearName.h"
#include "tlMacroExpander/src/Hints/StringHints.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include <algorithm>
#include <vector>

namespace telv
{

namespace
{

/// The words of a text that are no strings, comments or numbers.
std::vector<SubString> WordsOf(SubString text)
{
    std::vector<SubString> words;
    for (const LSToken& token : TokensOf(text))
        if (token.m_type == TOKEN_IDENTIFIER)
            words.push_back(token.m_str);
    return words;
}

bool HasWord(const std::vector<SubString>& words, SubString word)
{
    return std::ranges::find(words, word) != words.end();
}

/// The token that the error stands at; empty when it stands inside one, which can't be read, or
/// elsewhere.
LSToken TokenAt(SubString expanded, const LexScannerException& error)
{
    const char* const pos = error.m_pos;
    if (pos < expanded.begin() || pos >= expanded.end())
        return LSToken();
    try
    {
        LSToken token;
        do
            token = LsScanToken(expanded, /*returnComments=*/false);
        while (token && token.m_str.begin() < pos);
        return token.m_str.begin() == pos ? token : LSToken();
    }
    catch (const LexScannerException&)
    {
        return LSToken();
    }
}

/// What a word that names nothing is in other languages.
SubString OperatorNamed(SubString word)
{
    if (word == SubString("and"))
        return "&&";
    if (word == SubString("or"))
        return "||";
    return word == SubString("not") ? SubString("!") : SubString();
}

/// `word`, which can't be read, stands in the source itself and names nothing.
void HintAtUnknown(VarFrame& frame, SubString source, SubString word, Wanted wanted)
{
    SubString quotable;
    const bool isText = wanted == Wanted::String && GetQuotable(frame, source, quotable);
    const SubString nearest = NearestTo(frame, word);
    if (!nearest.empty() && (!isText || quotable == word))
        NoteHint({"'", word, "' names nothing here; did you mean '", nearest, "'?"});
    else if (isText)
        NoteHint({"a string is written in quotes: \"", quotable, "\""});
    else if (wanted == Wanted::Char && word.size() == 1 && WithoutBlanks(source) == word)
        NoteHint({"a character is written in quotes: '", word, "'"});
    else if (const SubString op = OperatorNamed(word); !op.empty())
        NoteHint({"'", word, "' is written ", op});
    else
        NoteHint({"'", word, "' names nothing here"});
}

/// Whether an assignment stands in the source of a condition, where none can be meant.
bool HasEqualsSign(SubString source)
{
    return std::ranges::any_of(TokensOf(source),
                               [](const LSToken& token) { return token.m_type == TOKEN_EQUAL; });
}

/// What can't be read was put in for a name; or it is no word.
void HintAtText(VarFrame& frame, SubString source, SubString word, Wanted wanted)
{
    SubString quotable;
    if (HintAtMissingStr(frame, TokensOf(source), word, wanted))
        return;
    if (wanted == Wanted::String && GetQuotable(frame, source, quotable))
        NoteHint({"a string is written in quotes: \"", quotable, "\""});
    else if (wanted == Wanted::Bool && HasEqualsSign(source))
        NoteHint({"= assigns; two values are compared with =="});
}

/// While it lives, what is no token is an error in the lenient run too.
class StrictReading
{
public:
    explicit StrictReading(ExpansionRun& run) : m_run(run) { m_run.m_lenient = false; }
    ~StrictReading() { m_run.m_lenient = true; }
    StrictReading(const StrictReading&) = delete;
    StrictReading& operator=(const StrictReading&) = delete;

private:
    ExpansionRun& m_run;
    SwallowedErrors m_nobodyIsTold;
};

/// `text`, in a lenient run, begins with what is no token: what the scanner says of it.
xstring WhyNoToken(SubString text)
{
    const StrictReading strict(*RunState::CurrentRun());
    try
    {
        LsScanToken(text, /*returnComments=*/false);
        return xstring();
    }
    catch (const LexScannerException& e)
    {
        return e.m_description;
    }
}

void HintAt(VarFrame& frame, SubString source, SubString expanded, const LexScannerException& error,
            Wanted wanted)
{
    if (!IsHintWanted() || dynamic_cast<const ExpansionLimitException*>(&error) != nullptr)
        return;
    const LSToken token = TokenAt(expanded, error);
    const SubString word = token.m_type == TOKEN_IDENTIFIER ? token.m_str : SubString();
    if (token.m_type == TOKEN_UNDEF && !token.m_str.empty())
        return NoteHint({"taken as text, as the run is lenient: ",
                         WhyNoToken(SubString(token.m_str.begin(), expanded.end()))});
    if (word.empty() || !HasWord(WordsOf(source), word))
        HintAtText(frame, source, word, wanted);
    else if (!IsBuiltIn(word) && FindVisible(frame, word) == nullptr)
        HintAtUnknown(frame, source, word, wanted);
}

} // namespace

SubString NearestTo(VarFrame& frame, SubString word)
{
    NearName near(word);
    near.OfferVisible(frame);
    ForEachBuiltIn([&](SubString name) { near.Offer(name); });
    return near.Best();
}

void HintAtExpression(VarFrame& frame, SubString source, SubString expanded,
                      const LexScannerException& error)
{
    HintAt(frame, source, expanded, error, Wanted::Any);
}

void HintAtCondition(VarFrame& frame, SubString source, SubString expanded,
                     const LexScannerException& error)
{
    HintAt(frame, source, expanded, error, Wanted::Bool);
}

void HintAtValue(VarFrame& frame, ELSVariable type, SubString source, SubString expanded,
                 const LexScannerException& error)
{
    switch (type)
    {
    case LSV_STRING:
        return HintAt(frame, source, expanded, error, Wanted::String);
    case LSV_BOOL:
        return HintAt(frame, source, expanded, error, Wanted::Bool);
    case LSV_CHAR:
        return HintAt(frame, source, expanded, error, Wanted::Char);
    default:
        return HintAt(frame, source, expanded, error, Wanted::Number);
    }
}

void HintAtString(VarFrame& frame, SubString source, SubString expanded,
                  const LexScannerException& error)
{
    if (!WithoutBlanks(source).empty()) // an empty one is of no use to a directive
        HintAt(frame, source, expanded, error, Wanted::String);
}

void HintAtName(VarFrame& frame, SubString name, SubString rest)
{
    if (!IsHintWanted())
        return;
    const char* const next = SkipBlanks(rest.begin(), rest.end());
    if (next != rest.end() && ClassOf(*next) <= CHAR_RAW_PREFIX)
        return NoteHint({"'", name, "' is no type: bool, int, double, char and string are"});
    NearName near(name);
    near.OfferVisible(frame);
    if (!near.Best().empty())
        NoteHint({"did you mean '", near.Best(), "'?"});
    else
        NoteHint({"a new variable has a type: @let ",
                  next != rest.end() && *next == ':' ? "string " : "int ", name,
                  next != rest.end() && *next == ':' ? " := {...}" : " = {...}"});
}

void HintAtList(VarFrame& frame, SubString source, SubString word)
{
    if (!IsHintWanted() || FindVisible(frame, word) != nullptr)
        return;
    const char* const begin = SkipBlanks(source.begin(), source.end());
    if (SubString(begin, SkipNameCharacters(begin, source.end())) != word)
        return; // what the name of the list stands for
    NearName near(word);
    near.OfferVisible(frame);
    if (!near.Best().empty())
        NoteHint({"'", word, "' names nothing here; did you mean '", near.Best(), "'?"});
}

} // namespace telv
