// SPDX-License-Identifier: MIT
// Project files: statements, the list of files, imports, and errors that don't stop the reading.
#include "tlMacroExpander/src/Mpfw/MpfwParser.h"
#include "support/Files.h"
#include "support/TempDir.h"
#include "tlMacroExpander/ExpansionRun.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <vector>

namespace telv::test
{
namespace
{

std::string Str(SubString s)
{
    return s.empty() ? std::string() : std::string(s.begin(), s.end());
}

xstring X(const std::string& s)
{
    return xstring(SubString(s.data(), s.data() + s.size()));
}

/// A parser on one text, without files.
struct Statements
{
    xstring m_text;
    MpfwSourceFileList m_files;
    MpfwFrame m_frame{m_files};
    MpfwParser m_parser{m_frame};

    explicit Statements(const std::string& text) : m_text(X(text)) { m_parser.Init(m_text); }

    std::string Macro(const char* name) const
    {
        const xstring* const value = m_frame.m_vf.FindDollarMacro(name);
        return value == nullptr ? "(none)" : Str(*value);
    }
    std::string Current() const { return Str(m_parser.m_token.m_str); }
};

/// "POSITION: MESSAGE" of the error that `parse` throws on `text`, or "(none)".
std::string ErrorOf(const std::string& text, const std::function<void(MpfwParser&)>& parse)
{
    Statements s(text);
    try
    {
        parse(s.m_parser);
    }
    catch (const LexScannerException& e)
    {
        return std::to_string(e.m_pos - s.m_text.begin()) + ": " + Str(e.m_description);
    }
    return "(none)";
}

TEST(MpfwLayout, HasTheFieldsInOrder)
{
    static_assert(std::is_base_of_v<ExpressionParser, MpfwParser>);
    static_assert(std::is_base_of_v<ImportHandler, MpfwParser>);
    static_assert(std::has_virtual_destructor_v<MpfwSourceFile>);
    Statements s("");
    const auto offset = [&](const void* field)
    { return static_cast<const char*>(field) - reinterpret_cast<const char*>(&s.m_frame); };
    EXPECT_EQ(offset(&s.m_frame.m_vf), 8);
    EXPECT_EQ(offset(&s.m_frame.m_importPaths), 248);
    // The import handler is the primary base.
    EXPECT_EQ(static_cast<void*>(static_cast<ImportHandler*>(&s.m_parser)),
              static_cast<void*>(&s.m_parser));
}

TEST(MpfwParser, ReadsStringSettings)
{
    Statements s("$name = \"a\\tb\" rest");
    xstring value;
    s.m_parser.ParseStringSetting("name", value);
    EXPECT_EQ(Str(value), "a\tb");
    EXPECT_EQ(s.Current(), "rest");
}

TEST(MpfwParser, SaysWhatIsWrongWithASetting)
{
    const auto read = [](MpfwParser& parser)
    {
        xstring value;
        parser.ParseStringSetting("name", value);
    };
    const std::pair<const char*, const char*> rows[] = {
        {"name = \"x\"", "0: Expected '$' when read name"},
        {"", "0: Expected '$' when read EOS"},
        {"$nme = \"x\"", "1: Expected 'name' when read nme"},
        {"$\"name\" = \"x\"", "1: Expected 'name' when read \"name\""},
        {"$name \"x\"", "6: Expected = after name when read \"x\""},
        {"$name = 'x'", "8: Expected quoted string when read 'x'"},
        {"$name =", "7: Expected quoted string when read EOS"},
    };
    for (const auto& [text, error] : rows)
        EXPECT_EQ(ErrorOf(text, read), error) << text;
}

TEST(MpfwParser, PathSettingsAreStrict)
{
    const auto read = [](MpfwParser& parser)
    {
        xstring value;
        parser.ParsePathSetting("p", value);
    };
    const std::pair<const char*, const char*> rows[] = {
        {"$p = \"a/b\"", "(none)"},
        {"$p = \"\"", "(none)"},
        {"$p = \"a\\\\b\"", "5: Forward slashes must be used in \"a\\\\b\""},
        {"$p = \"a/b/\"", "5: Path can't end with a trailing slash : a/b/"},
        {"$p = \"/\"", "5: Path can't end with a trailing slash : /"},
    };
    for (const auto& [text, error] : rows)
        EXPECT_EQ(ErrorOf(text, read), error) << text;
}

TEST(MpfwParser, ReadsARowOfDefinitions)
{
    Statements s("$A = \"1\" $B = '$(A)2' $P = path \"x//./$(B)/\" $E = (\"a\" + \"$(A)\") rest");
    xstring name;
    xstring value;
    s.m_parser.ParseMacroDef(name, value);
    EXPECT_EQ(Str(name), "E");
    EXPECT_EQ(Str(value), "a1");
    EXPECT_EQ(s.Macro("A"), "1");
    EXPECT_EQ(s.Macro("B"), "12");
    EXPECT_EQ(s.Macro("P"), "x/12");
    EXPECT_EQ(s.Current(), "rest");
}

TEST(MpfwParser, ADefinitionIsAStringVariableToo)
{
    Statements s("$ROOT = \"/usr\"");
    s.m_parser.ParseMacroDef();
    const LSVariable* const variable = s.m_frame.m_vf.Find("_ROOT_", nullptr);
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(variable->GetType(), LSV_STRING);
}

TEST(MpfwParser, ReadsNothingWithoutADollar)
{
    Statements s("name = 1");
    s.m_parser.ParseMacroDef();
    EXPECT_EQ(s.Current(), "name");
}

TEST(MpfwParser, SaysWhatIsWrongWithADefinition)
{
    const auto read = [](MpfwParser& parser) { parser.ParseMacroDef(); };
    const std::pair<const char*, const char*> rows[] = {
        {"$1 = \"x\"", "1: Expected identifier after $ when read 1"},
        {"$A \"x\"", "3: Expected = after A when read \"x\""},
        {"$A = x", "5: Expected quoted string when read x"},
        {"$A = path", "9: Expected quoted string when read EOS"},
        {"$A = (\"x\"", "9: Expected ) after \"x\" when read EOS"},
        {"$A = \"$(A)\" $A = \"$(A)\"", "17: Dollar macro A contains itself"},
    };
    for (const auto& [text, error] : rows)
        EXPECT_EQ(ErrorOf(text, read), error) << text;
}

TEST(MpfwParser, FileNamesHaveForwardSlashes)
{
    const auto read = [](MpfwParser& parser) { parser.ParseFileOrDirName(); };
    EXPECT_EQ(ErrorOf("'a\\\\b'", read), "0: Forward slashes must be used in 'a\\\\b'");
    EXPECT_EQ(ErrorOf("x", read), "0: Expected quoted string when read x");
    Statements s("'a/b' rest");
    EXPECT_EQ(Str(s.m_parser.ParseFileOrDirName()), "a/b");
    EXPECT_EQ(s.Current(), "'a/b'");
}

TEST(MpfwParser, AnAtSignBeginsAnImport)
{
    const auto read = [](MpfwParser& parser) { parser.ParseImportDirective(); };
    const std::pair<const char*, const char*> rows[] = {
        {"x", "(none)"},
        {"@include \"x\"", "1: Syntax error: @include"},
        {"@", "1: Syntax error: @EOS"},
        {"@import x", "8: Expected quoted string when read x"},
        {"@import \"no such file\"", "8: Couldn't open file no such file"},
    };
    for (const auto& [text, error] : rows)
        EXPECT_EQ(ErrorOf(text, read), error) << text;
    Statements s("x");
    EXPECT_FALSE(s.m_parser.ParseImportDirective());
}

TEST(MpfwParser, RegistersImportPathsNormalised)
{
    Statements s("");
    s.m_frame.m_vf.InsertDollarMacro("D", "lib");
    EXPECT_TRUE(s.m_parser.HandleImportPath("./$(D)//x/", nullptr));
    ASSERT_EQ(s.m_frame.m_importPaths.size(), 1);
    EXPECT_EQ(Str(s.m_frame.m_importPaths[0]), "lib/x");
}

TEST(MpfwParser, ImportsIntoTheProjectsFrameOnly)
{
    Statements s("");
    FileScopeVarFrame other;
    EXPECT_THROW(s.m_parser.HandleImport(&other, "x", nullptr), TelvAssertionError);
}

/// An error by its text in a stream that was written to it.
std::string Written(const MpfwSourceFileList& files, const LexScannerException& e)
{
    StringStream os(4096);
    files.WriteLexScannerError(os, e);
    return Str(os.GetString());
}

TEST(MpfwSourceFileList, FindsFilesWithoutRegardToCase)
{
    MpfwSourceFileList files;
    auto* const file = new MpfwSourceFile;
    file->m_localPath = "Dir/File.txt";
    files.AddSrcFile(file);
    EXPECT_EQ(files.FindSourceFile("dir/file.TXT"), file);
    EXPECT_EQ(files.FindSourceFile("dir/file"), nullptr);
    EXPECT_THROW(files.AddSrcFile(nullptr), TelvAssertionError);
}

TEST(MpfwSourceFile, LocatesItsPositionsOnly)
{
    MpfwSourceFile file;
    file.m_localPath = "file";
    file.m_buffer = "one\ntwo";
    const char elsewhere = 'x';
    xstring name("unchanged");
    ssize_t line = 7;
    EXPECT_FALSE(file.GetFilenameAndLineNumber(&elsewhere, name, line));
    EXPECT_FALSE(file.GetFilenameAndLineNumber(nullptr, name, line));
    EXPECT_EQ(Str(name), "unchanged");
    EXPECT_EQ(line, 7);
    EXPECT_TRUE(file.GetFilenameAndLineNumber(file.m_buffer.end(), name, line));
    EXPECT_EQ(Str(name), "file");
    EXPECT_EQ(line, 2);
}

TEST(MpfwSourceFileList, LocatesPositions)
{
    MpfwSourceFileList files;
    for (const char* text : {"one\n", "two\nthree"})
    {
        auto* const file = new MpfwSourceFile;
        file->m_localPath = X(std::string("file ") + text[0] + text[1]);
        file->m_buffer = text;
        files.AddSrcFile(file);
    }
    const char* const pos = files[1]->m_buffer.begin() + 5;
    EXPECT_EQ(files.GetSrcFileIndexContainingPosition(pos), 1);
    EXPECT_EQ(files.GetSrcFileIndexContainingPosition(files[0]->m_buffer.begin()), 0);
    EXPECT_EQ(files.GetSrcFileIndexContainingPosition(nullptr), -1);
    const char elsewhere = 'x';
    EXPECT_EQ(files.GetSrcFileIndexContainingPosition(&elsewhere), -1);

    xstring name("unchanged");
    ssize_t line = 7;
    EXPECT_FALSE(files.GetFilenameAndLineNumber(&elsewhere, name, line));
    EXPECT_FALSE(files.GetFilenameAndLineNumber(nullptr, name, line));
    EXPECT_EQ(Str(name), "unchanged");
    EXPECT_EQ(line, 7);
    EXPECT_TRUE(files.GetFilenameAndLineNumber(pos, name, line));
    EXPECT_EQ(Str(name), "file tw");
    EXPECT_EQ(line, 2);

    EXPECT_EQ(Written(files, LexScannerException("bad", pos)), "\nfile tw(2) : bad");
    EXPECT_EQ(Written(files, LexScannerException("bad", &elsewhere)), "\nbad");
}

/// Files in a directory of their own, and a parser that reads them.
class MpfwProjectTest : public testing::Test
{
protected:
    void Write(const std::string& name, const std::string& text) const
    {
        std::filesystem::create_directories(
            std::filesystem::path(m_directory.Path(name)).parent_path());
        WriteFile(m_directory.Path(name), text);
    }
    xstring Path(const std::string& name) const { return X(m_directory.Path(name)); }

    /// The names of the files that were read, each behind a blank.
    std::string Files() const
    {
        std::string names;
        const size_t prefix = m_directory.Path("").size();
        for (const MpfwSourceFile* file : m_files)
            names += " " + Str(file->m_localPath).substr(prefix);
        return names;
    }
    std::string Macro(const char* name) const
    {
        const xstring* const value = m_frame.m_vf.FindDollarMacro(name);
        return value == nullptr ? "(none)" : Str(*value);
    }

    TempDir m_directory;
    MpfwSourceFileList m_files;
    MpfwFrame m_frame{m_files};
    MpfwParser m_parser{m_frame};
};

TEST_F(MpfwProjectTest, ReadsImportsWhileExpandingAndTheirStatementsWhenParsed)
{
    Write("p", "@import \"sub/a\" $P = \"$(A)\"");
    Write("sub/a", "@import \"b\" $A = \"$(B)a\"");
    Write("sub/b", "@def macro = {m}\n$B = \"b\"");
    MpfwSourceFile* const file = m_parser.AddFile(Path("p"));
    EXPECT_EQ(Files(), " p sub/a sub/b");
    EXPECT_EQ(Macro("B"), "(none)");
    EXPECT_EQ(Str(file->m_expanded), "@import \"sub/a\" $P = \"$(A)\"");
    m_parser.Init(file->m_expanded);
    EXPECT_TRUE(m_parser.ParseImportDirective());
    EXPECT_EQ(Macro("A"), "ba");
    m_parser.ParseMacroDef();
    EXPECT_EQ(Macro("P"), "ba");
    EXPECT_EQ(m_parser.m_token.m_type, TOKEN_END);
}

TEST_F(MpfwProjectTest, TakesATextThatNoFileHolds)
{
    Write("sub/a", "$A = \"a\"");
    xstring text("@import \"a\" @def m = {x}\n$B = (string(1))");
    MpfwSourceFile* const file = m_parser.AddText(Path("sub/none"), text);
    EXPECT_EQ(Str(text), "");
    EXPECT_EQ(Files(), " sub/none sub/a");
    m_parser.Init(file->m_expanded);
    EXPECT_TRUE(m_parser.ParseImportDirective());
    m_parser.ParseMacroDef();
    EXPECT_EQ(Macro("A"), "a");
    EXPECT_EQ(Macro("B"), "1");
}

TEST_F(MpfwProjectTest, KeepsTheMapOfEachFile)
{
    Write("p", "@def m = {x}\n m");
    const MpfwSourceFile* const file = m_parser.AddFile(Path("p"));
    EXPECT_EQ(Str(file->m_expanded), " x");
    EXPECT_EQ(file->m_pieces.MapOutputPositionToAddress(1), file->m_buffer.begin() + 10);
}

TEST_F(MpfwProjectTest, LooksBesideTheImportingFileThenInTheImportPaths)
{
    Write("p", "@importpath \"" + m_directory.Path("one") + "\"@importpath \"" +
                   m_directory.Path("two") + "\"\n@import \"a\" @import \"b\" @import \"c\"");
    Write("a", "");
    Write("one/a", "");
    Write("one/b", "");
    Write("two/b", "");
    Write("two/c", "");
    m_parser.AddFile(Path("p"));
    EXPECT_EQ(Files(), " p a one/b two/c");
}

TEST_F(MpfwProjectTest, ReadsAFileOnce)
{
    Write("p", "@import \"a\" @import \"./a\" @import \"sub/../a\"");
    Write("a", "");
    Write("sub/x", "");
    MpfwSourceFile* const file = m_parser.AddFile(Path("p"));
    EXPECT_EQ(Files(), " p a");
    EXPECT_EQ(m_parser.AddFile(Path("p")), file);
}

TEST_F(MpfwProjectTest, SaysThatAFileCantBeOpened)
{
    try
    {
        m_parser.AddFile(Path("none"));
        FAIL() << "no error";
    }
    catch (const LexScannerException& e)
    {
        EXPECT_EQ(Str(e.m_description), "Couldn't open file " + m_directory.Path("none"));
        EXPECT_EQ(e.m_pos, nullptr);
    }
}

/// Collects what goes to the run's sink as "PATH(LINE) : MESSAGE" with the directory left out.
struct Collected
{
    ExpansionRun m_run;
    std::vector<std::string> m_errors;

    Collected(const MpfwSourceFileList& files, const TempDir& directory)
    {
        m_run.m_fileErrorSink = [this, &files, &directory](const LexScannerException& e)
        {
            std::string error = Written(files, e).substr(1);
            const std::string prefix = directory.Path("");
            for (size_t at = 0; (at = error.find(prefix)) != std::string::npos;)
                error.erase(at, prefix.size());
            m_errors.push_back(error);
        };
    }
};

TEST_F(MpfwProjectTest, AnErrorInOneFileGoesToTheSinkAndStopsNothing)
{
    Write("p", "@import \"a\"\n@import \"b\"\n@import \"none\"");
    Write("a", "\n@else");
    Write("b", "");
    Collected collected(m_files, m_directory);
    const ExpansionRunScope scope(collected.m_run);
    EXPECT_NE(m_parser.AddFile(Path("p")), nullptr);
    EXPECT_EQ(collected.m_errors,
              (std::vector<std::string>{"a(2) : @else with no matching @if directive",
                                        "p(3) : Couldn't open file none"}));
    EXPECT_EQ(Files(), " p a b");
}

TEST_F(MpfwProjectTest, WithoutASinkErrorsGoToTheTraceStream)
{
    Write("p", "\n@else");
    testing::internal::CaptureStderr();
    m_parser.AddFile(Path("p"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "\n" + m_directory.Path("p") + "(2) : @else with no matching @if directive");
}

TEST_F(MpfwProjectTest, ACycleIsAnError)
{
    Write("p", "@import \"a\"");
    Write("a", "@import \"b\"");
    Write("b", "\n@import \"a\"");
    Collected collected(m_files, m_directory);
    const ExpansionRunScope scope(collected.m_run);
    m_parser.AddFile(Path("p"));
    EXPECT_EQ(collected.m_errors, (std::vector<std::string>{"b(2) : Import cycle: a -> b -> a"}));
    // The files are finished afterwards.
    EXPECT_EQ(m_parser.AddFile(Path("a")), m_files[1]);
}

TEST_F(MpfwProjectTest, WhatRunsOutPassesThrough)
{
    Write("p", "@def f = {f}\nf");
    EXPECT_THROW(m_parser.AddFile(Path("p")), ExpansionLimitException);
    EXPECT_TRUE(m_files[0]->m_pieces.m_pieces.empty());
}

TEST_F(MpfwProjectTest, AnUnknownStatementInAnImportedFileIsAnError)
{
    Write("p", "@import \"a\"");
    Write("a", "nonsense");
    m_parser.Init(m_parser.AddFile(Path("p"))->m_expanded);
    try
    {
        m_parser.ParseImportDirective();
        FAIL() << "no error";
    }
    catch (LexScannerException& e)
    {
        EXPECT_EQ(Str(e.m_description), "Syntax error: nonsense");
        m_files[1]->m_pieces.AdjustErrorPosition(e, m_files[1]->m_expanded);
        EXPECT_EQ(e.m_pos, m_files[1]->m_buffer.begin());
    }
}

TEST_F(MpfwProjectTest, AFileThatOthersImportIsParsedOnceForEachStatement)
{
    Write("p", "@import \"a\" @import \"b\" @import \"a\"");
    Write("a", "@import \"c\"");
    Write("b", "$ROOT = \"b\" @import \"c\"");
    Write("c", "$ROOT = \"c\"");
    MpfwSourceFile* const file = m_parser.AddFile(Path("p"));
    const auto root = [&] { return Str(*m_frame.m_vf.FindDollarMacro("ROOT")); };
    m_parser.Init(file->m_expanded);
    const char* const expected[] = {"c", "c", "c"};
    for (const char* const value : expected)
    {
        EXPECT_TRUE(m_parser.ParseImportDirective());
        EXPECT_EQ(root(), value);
    }
    m_frame.m_vf.InsertDollarMacro("ROOT", "");
    m_parser.ProcessImportedFile(file);
    EXPECT_EQ(root(), "b");
}

TEST_F(MpfwProjectTest, FilesThatImportTheNextOneTwice)
{
    const int levels = 60;
    for (int i = 0; i < levels; ++i)
    {
        const std::string next = "@import \"f" + std::to_string(i + 1) + "\"\n";
        Write("f" + std::to_string(i), next + next);
    }
    Write("f" + std::to_string(levels), "$ROOT = \"end\"");
    m_parser.Init(m_parser.AddFile(Path("f0"))->m_expanded);
    EXPECT_TRUE(m_parser.ParseImportDirective());
    EXPECT_EQ(Str(*m_frame.m_vf.FindDollarMacro("ROOT")), "end");
}

TEST_F(MpfwProjectTest, AStatementsFileMustHaveBeenRead)
{
    Write("a", "");
    const xstring text = X("@import \"" + m_directory.Path("a") + "\"");
    m_parser.Init(text);
    EXPECT_THROW(m_parser.ParseImportDirective(), TelvAssertionError);
}

/// A parser that supplies more of each file and processes imports itself.
class DerivedParser final : public MpfwParser
{
public:
    class File final : public MpfwSourceFile
    {
    };

    using MpfwParser::MpfwParser;

    MpfwSourceFile* CreateMpfwSourceFile() override { return new File; }
    bool ResolveImportPath(const xstring& name, xstring& path) override
    {
        path = X(m_prefix);
        path += name;
        return true;
    }
    void ProcessImportedFile(MpfwSourceFile* srcFile) override { m_processed.push_back(srcFile); }

    std::string m_prefix;
    std::vector<MpfwSourceFile*> m_processed;
};

TEST_F(MpfwProjectTest, ADerivedParserDecides)
{
    Write("p", "@import \"a\"");
    Write("x/a", "");
    DerivedParser parser(m_frame);
    parser.m_prefix = m_directory.Path("x/");
    parser.Init(parser.AddFile(Path("p"))->m_expanded);
    EXPECT_EQ(Files(), " p x/a");
    EXPECT_NE(dynamic_cast<DerivedParser::File*>(m_files[1]), nullptr);
    EXPECT_TRUE(parser.ParseImportDirective());
    EXPECT_EQ(parser.m_processed, std::vector<MpfwSourceFile*>{m_files[1]});
}

} // namespace
} // namespace telv::test
