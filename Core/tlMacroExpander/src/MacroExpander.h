// SPDX-License-Identifier: MIT
// The expander proper. Callers who want text expanded use MacroExpand.h.
//
// `Expand` scans the text token by token. Plain text is not copied token by token: a write position
// trails the scan position, and pending text is flushed when something else is to be written. An
// identifier that names a variable is expanded in place; `@` starts a directive. What a directive
// does is in its family's source in Directives/, which read their operands with the scanners of
// ScanSection.h and come back here for nested text.
#pragma once

#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/src/LSToken.h"
#include <functional>
#include <memory>
#include <optional>

namespace telv
{

class ExpansionLevel;
class ExpansionObserver;
class ExpansionRun;
class NameTable;
class OwningMacroVariable;
class MacroExpander;
class Plan;
class PlanReader;
class ScannedText;
class TemporaryText;
struct ScanItem;
struct LevelText;
struct TextBlock;
using PlannedAction = std::function<void(MacroExpander&)>;
enum EPieces : unsigned char;

/// How a string literal is written.
enum EStrLiteralMode
{
    SLM_ASCII = 0, ///< "text"
    SLM_WIDE = 1   ///< L"text"
};

/// One expansion of one text; lives on the stack and owns nothing.
class TLEXPANDER_API MacroExpander
{
public:
    ImportHandler* m_importHandler; ///< Null: no imports; always so in nested expansions.
    VarFrame* m_vf;                 ///< The current frame; never null.
    ExpandedOutput& m_output;
    ssize_t m_srcIndent;              ///< Columns removed from lines after a line feed.
    ssize_t m_dstIndent;              ///< Columns written before each line.
    SubString m_origStr;              ///< The whole text.
    SubString m_str;                  ///< What is not scanned yet.
    const xchar* m_startDirectivePos; ///< The last token of the main loop: what calculated
    const xchar* m_endDirectivePos;   ///< output is attributed to. Null before the first.
    const xchar* m_writePos;          ///< First character neither written nor discarded.

    MacroExpander(ImportHandler* importHandler, VarFrame* vf, SubString str, ssize_t srcIndent,
                  ssize_t dstIndent, ExpandedOutput& output);
    MacroExpander(const MacroExpander&) = delete;
    MacroExpander& operator=(const MacroExpander&) = delete;

    /// Expands the whole text.
    void Expand();

    // Shared operations.

    /// Adds `v` to the current frame, which takes ownership.
    void AddVariable(LSVariable* v);
    /// What `name` means at the scan position, or null.
    LSVariable* FindVariable(SubString name);
    /// The output's column, or the destination indentation at the start of a line: where a nested
    /// block begins.
    ssize_t GetOutputPos() const;
    /// Moves the write position to `pos`, writing what lies between or discarding it.
    void AdvanceWritePos(const xchar* pos, bool write);
    /// Writes text of the source at the destination indentation.
    void WriteSubStringFromSourceFile(SubString s);
    /// Writes text that the current directive, or `src`, produced.
    void WriteCalculatedSubString(SubString s);
    void WriteCalculatedSubString(SubString s, SubString src);
    /// Ends a directive that leaves no trace: swallows the blanks before it, the rest of its line
    /// and the blank lines that follow.
    void ScanOverWhiteSpaceAfterDirective();

    // Blocks: text as it stands, and text in a scope of its own.

    /// `@quote(text)`: the text as it stands, indented to where the directive stood.
    void ProcessQuoteDirective();
    /// `@scope{text}`: the text, expanded in a frame of its own.
    void ProcessScopeDirective();

    // Definitions of macros.

    /// `@def` and its kin: reads a definition and places the macro in the frame it is meant for.
    void ProcessDefDirective(bool exportdef, bool nakeddef, bool defpython);
    /// Reads the formal arguments, `=` and the body into `macroVar`.
    void ReadMacroVariableDefn(SubString name, LSMacroVariable* macroVar);
    /// Reads `=`.
    void ReadEqualsForVariableDefn(SubString name);
    /// Reads `=` or `:=`; true for the latter.
    bool ReadEqualsForVariableDefn2(SubString name);

    // Invocation of variables.

    /// Writes what the name just scanned stands for: a value, or the expansion of a macro, whose
    /// arguments are read from the text.
    void InvokeVariable(LSVariable* var);
    /// The same for a formal argument that stands for a macro: the call is composed from its text
    /// and the arguments in the text, and expanded where the argument came from.
    void InvokeMacroFunction(LSMacroVariable* macroVar);

    // Conditionals.

    /// `@if(condition){block}` with its `@elseif` and `@else`.
    void ProcessIfDirective();
    /// Reads, expands and evaluates the condition in the parentheses that follow.
    bool ParseBoolExpressionInBrackets(SubString directiveName);

    // Loops.

    /// `@for(name in [list]){block}`, or with several names: the block once per element.
    void ProcessForDirective();
    /// `@while(condition){block}`: the condition is expanded afresh for each round.
    void ProcessWhileDirective();

    // Typed expressions.

    /// `@let type name = {value}` defines a value, `@let name = {value}` assigns one.
    void ProcessLetDirective();
    /// `@(expression)`: the value as text.
    void ProcessRndBracketDirective();
    /// `@[text]`: the text, expanded twice.
    void ProcessSqrBracketDirective();
    /// Expands `text` and evaluates it as a string; the directive is named in errors.
    xstring EvaluateString(SubString text, SubString directiveName);
    /// The same for the text in the parentheses that follow.
    xstring ParseStringExpressionInBrackets(SubString directiveName, bool readOpenBracket);

    // String literals and dollar macros.

    /// `@str(text)` and its kin: the expanded text as a literal, or one literal for each line.
    void ProcessStrDirective(bool splitLines, EStrLiteralMode mode);
    /// `@unstr("text")`: the characters of a literal.
    void ProcessUnstrDirective();
    /// `@$NAME = "value"`: a dollar macro of the file.
    void ProcessDollarDefDirective();

    // Diagnostics.

    /// `@print(text)`, `@println(text)`: writes the expanded text to `xcout` and flushes it.
    void ProcessPrintDirective(bool newline);
    /// `@assert(condition)`: an error unless the condition holds.
    void ProcessAssertDirective();
    /// `@assertfails(text)`: an error unless the text has one.
    void ProcessAssertFailsDirective();
    /// `@fail(message)`: an error with this very text.
    [[noreturn]] void ProcessFailDirective();

    // Imports.

    /// `@import "file"`: asks the import handler, which must be set.
    void ProcessImportDirective();
    /// `@importpath "directory"`: the same for a directory.
    void ProcessImportPathDirective();
    /// `@relativepath(from, to)`: the path as a string literal.
    void ProcessRelativePathDirective();

    // Python.

    /// `@runpython {code}`: runs Python statements; writes nothing.
    void ProcessRunPythonDirective();

private:
    friend struct DirectivePlans;
    friend void ExpandIntoString(VarFrame& frame, const LevelText& text, ssize_t srcIndent,
                                 xstring& output, OutputPieces* pieces);
    friend void MacroExpand(ImportHandler* ih, VarFrame* vf, SubString str, ssize_t srcIndent,
                            ssize_t dstIndent, xstring& output);
    friend void MacroExpand(ImportHandler* ih, VarFrame* vf, SubString str, ssize_t srcIndent,
                            ssize_t dstIndent, xstring& output, OutputPieces& pieces);

    class ActualArgs;
    class FormalNames;
    class ForLoop;
    struct ForHead;
    struct KnownList;

    // What directives of a scanned text ask for, read once (Texts/Plan.h).

    static PlannedAction PlanIf(PlanReader& reader);
    static PlannedAction PlanWhile(PlanReader& reader);
    static PlannedAction PlanFor(PlanReader& reader);
    static PlannedAction PlanLet(PlanReader& reader);
    static PlannedAction PlanRndBracket(PlanReader& reader);
    static PlannedAction PlanSqrBracket(PlanReader& reader);
    static PlannedAction PlanScope(PlanReader& reader);
    template <bool splitLines, EStrLiteralMode mode>
    static PlannedAction PlanStr(PlanReader& reader);

    // From a text to the loop over its tokens, in three storeys.
    //
    // Who has a text calls ExpandText: `Expand`, ExpandHere and, through ExpandNested, who expands
    // into a string. It finds the run (or makes one: ExpandWithOwnRun) and calls ExpandIn, which
    // opens the level. A text of the application goes through ExpandForApplication and
    // ExpandWithinMemory, which do what is done once and not for each nested text. Both ways meet
    // in ExpandTokens, which chooses the loop: ExpandScanned, or by ExpandUnscanned one of
    // ExpandInStretches, ExpandObserved and ExpandTokenByToken. ExpandScanned goes over to
    // ExpandUnscanned where no more is known. Functions are apart, and inlined or not, so that a
    // nested level takes little stack.

    /// Expands the text in the run of this thread; an empty one takes no level.
    void ExpandText(const LevelText& text, EPieces pieces);
    /// The same for other sources, into which ExpandText can't be inlined.
    void ExpandNested(const LevelText& text, bool isRecorded);
    /// The same where no run is installed: in one that has no limits.
    void ExpandWithOwnRun(const LevelText& text, EPieces pieces);
    /// Opens the level of the text, and gives memory that has run out its place.
    void ExpandIn(ExpansionRun& run, const LevelText& text, EPieces pieces);
    /// The outermost text: forgets earlier errors, and moves a new one out of texts that are gone.
    void ExpandForApplication(ExpansionLevel& level);
    /// Under the run's limit of memory, which is set here once.
    void ExpandWithinMemory(ExpansionLevel& level);
    /// Takes the fastest loop that the level allows,
    void ExpandTokens(ExpansionLevel& level);
    /// or the fastest that needs no scanned text.
    void ExpandUnscanned(ExpansionLevel& level);
    /// The plain way, which defines what comes out.
    template <bool isObserved>
    void ExpandTokenByToken();
    /// Passes over what means nothing; where nothing is recorded.
    void ExpandInStretches(ExpansionLevel& level);
    /// From item to item of a scanned text (ScannedExpansion.cpp).
    void ExpandScanned(ExpansionLevel& level);
    void ExpandItem(ExpansionLevel& level, ScanItem& item, const char* resumed);
    bool FollowPlan(ExpansionLevel& level, ScanItem& item, const char* resumed);
    static const Plan* PlanOf(ScannedText& scanned, ScanItem& item, SubString rest);
    const Plan* PlanOfCall(const LSMacroVariable& macroVar) const;
    void Flush(const char* pos);
    bool WriteFollowed(ExpansionLevel& level, const LSVariable& var);
    void EndLine(const char* start);
    bool MoveToNextItem(ScannedText& scanned, uint32& index, uint32& resumed);
    bool WriteInertText(const LevelText& text, VarFrame& frame, ssize_t srcIndent);
    static bool MayMatter(NameTable& names, VarFrame& frame, SubString name, LSVariable*& var);
    const char* StartOfBlanks(const char* resumed, const char* token) const;
    void PassOverLineStarts();
    void ProcessToken(const LSToken& token);
    void ProcessQuotedString(const LSToken& token);
    void ProcessDirective();
    // The plain way, with an observer; see ObservedExpansion.cpp.
    void ExpandObserved(const ExpansionLevel& level);
    void ProcessObservedToken(const LSToken& token);
    void ProcessObservedDirective(ExpansionObserver& observer);
    void InvokeObserved(ExpansionObserver& observer, LSVariable& var);
    static void TellDefined(int kind, SubString name, SubString value, const LSVariable* var);
    void WriteObserved(const ExpansionLevel& level, SubString s, const SubString* src);

    void ProcessUnknownDirective(const LSToken& name);
    void ProcessPastedTokens();
    void CheckOutput(ExpansionLevel* level) const;
    /// The level of this expansion; null when it is not the innermost one, or there is no run.
    ExpansionLevel* OwnLevel() const;
    void CountStep() const;
    /// What calculated output is attributed to.
    SubString DirectiveRange() const { return SubString(m_startDirectivePos, m_endDirectivePos); }
    /// Expands a text straight into the output.
    void ExpandHere(VarFrame& frame, const LevelText& text, ssize_t srcIndent, ssize_t dstIndent);
    /// Expands a block in a scope of its own.
    void ExpandBlock(const LevelText& block, ssize_t indent, ssize_t dstIndent);
    /// Expands a text in a scope of its own into a string, which is unchanged after an error.
    void ExpandToString(const LevelText& text, ssize_t srcIndent, xstring& output) const;

    // Cutting what a directive or a call needs out of the text that follows; see Cuts.cpp.

    LevelText Part(SubString text) const;
    LSToken NextToken();
    LevelText CutSection(bool readOpen, EToken open, EToken close);
    TextBlock CutBlock();
    TextBlock CutRoundBlock();
    LevelText CutArgument(LSToken& end, EToken close);

    void ReadFormalArgs(SubString name, LSMacroVariable& macroVar);
    LSToken ReadFormalArg(SubString name, LSMacroVariable& macroVar, LSToken token,
                          FormalNames& known);
    VarFrame* FindTargetFrame(bool fileScope, bool exportdef, const LSToken& name);
    bool IsFileScopeOfTree() const;

    void ReadActualArgs(const LSMacroVariable& macroVar, ActualArgs& args);
    const LSVariable* PassArgs(LSMacroVariable& macroVar, VarFrame& context,
                               std::optional<VarFrame>& frame);
    const LSVariable* BindArgs(LSMacroVariable& macroVar, ActualArgs& args, VarFrame& frame);
    LSVariable* MakeNamedArg(const LSMacroVariable& macroVar, const LSFormalArg& formal,
                             const LevelText& arg);
    LSVariable* MakeValueArg(const LSMacroVariable& macroVar, const LSFormalArg& formal,
                             const LevelText& arg);
    template <bool isObserved>
    void InvokeMacro(LSMacroVariable& macroVar);
    template <bool isObserved>
    class InvocationSpan;
    bool InvokeAlias(const LSMacroVariable& macroVar);
    void NoteAliases(const OwningMacroVariable& alias, const LSMacroVariable& end,
                     const std::function<void(const LSMacroVariable&)>& note);
    void ExpandBody(const LSMacroVariable& macroVar, const LevelText& body, VarFrame& frame);
    void WriteValueOf(const LSVariable& var);
    void WriteTypedValue(VarFrame* frame, const LevelText& text, ELSVariable type);
    void WritePythonMacroResult(LSMacroVariable& macroVar, const LevelText& body, VarFrame& frame);
    void AddInvocationContext(LexScannerException& e, const LSMacroVariable& macroVar,
                              const LSVariable* lastArg) const;
    void NoteCall(const LSMacroVariable& macroVar) const;
    void NoteRound(ssize_t round) const;
    void BeginRound(ssize_t round) const;
    std::shared_ptr<TemporaryText> ComposeCall(const LSMacroVariable& macroVar,
                                               const LevelText& section);
    bool NotesCopies() const;
    std::shared_ptr<TemporaryText> MakeText(const LevelText& section);
    std::shared_ptr<TemporaryText> MakeNotedText(const LevelText& section);

    bool WriteValueDirectly(const LevelText& expression);
    void WriteExpression(const LevelText& section);
    void ExpandTwice(const LevelText& section);
    bool EvaluateCondition(const LevelText& condition, SubString directiveName);
    using Hint = void (*)(VarFrame& frame, SubString source, SubString expanded,
                          const LexScannerException& error);
    void AddExpressionContext(LexScannerException& e, Hint hint, SubString source,
                              SubString expanded, SubString directiveName) const;
    void ExpandScope(const TextBlock& block);
    void ExpandChosen(const TextBlock* block);
    void LoopWhile(const LevelText& condition, const TextBlock& block);
    template <class Next>
    static void ReadForHead(ForHead& head, const Next& next);
    void LoopFor(const ForHead& head, const std::shared_ptr<TemporaryText>& list,
                 const TextBlock& block, std::shared_ptr<KnownList>* known);
    void ExpandRound(const LevelText& block, ssize_t indent, ssize_t dstIndent, ssize_t round);
    void ExpandObservedRound(const LevelText& block, ssize_t indent, ssize_t dstIndent,
                             ssize_t round);
    TextBlock CutLoopBlock(const char* context);

    LSValueVariable* FindAssigned(SubString name);
    void AssignVariable(const LSToken& nameToken);
    void DefineVariable(ELSVariable type);
    void Assign(LSValueVariable& var, const LevelText& text, bool verbatim);
    void CheckNotDefined(SubString name);
    void Define(ELSVariable type, SubString name, const LevelText& text, bool verbatim);
    static void CheckVerbatim(ELSVariable type, SubString name, bool verbatim);
    LevelText ReadValueText(ELSVariable type, SubString name, bool& verbatim);
    void EvaluateValueText(ELSVariable type, const LevelText& text, bool verbatim, xstring& value);
    xstring EvaluateText(const LevelText& text, SubString directiveName);

    void WriteStr(const TextBlock& block, bool splitLines, EStrLiteralMode mode);
    void WriteLiteral(SubString text, bool splitLines, EStrLiteralMode mode);
    bool FailsToExpand(const LevelText& text);
    bool Import(const xstring& path, const char* pos);
    xstring ReadPathOperand(const LSToken& token, SubString word);
};

/// The type that a keyword (`bool`, `int`, `double`, `char`, `string`) names, else LSV_MACRO.
TLEXPANDER_API ELSVariable CheckVariableType(SubString word);

/// Expands `text` in a child of `frame`, evaluates it as a value of `type` (LSV_BOOL to LSV_STRING)
/// and stores its written form in `value`, which is unchanged after an error.
TLEXPANDER_API void ReadVariableValueByParsingExpression(VarFrame* frame, SubString text,
                                                         ELSVariable type, xstring& value);

/// Read `@elseif` or `@else` from the front of `str`; false, with `str` moved, for anything else.
TLEXPANDER_API bool ScanElseIfBlock(SubString& str);
TLEXPANDER_API bool ScanElseBlock(SubString& str);

/// Write what stands before and behind the characters of a string literal.
TLEXPANDER_API void WritePrefix(xostream& os, EStrLiteralMode mode);
TLEXPANDER_API void WriteSuffix(xostream& os, EStrLiteralMode mode);

static_assert(sizeof(MacroExpander) == 96, "no other fields");

} // namespace telv
