// SPDX-License-Identifier: MIT
// A sample of the language cases, spoilt in every place: cut off, with other line ends, with a byte
// replaced. Each goes through the library in this process and gives a text or an error whose place
// is in the text.
#include "support/Files.h"
#include "support/TestCase.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace telv::test
{
namespace
{

constexpr size_t s_everyNth = 13;
constexpr size_t s_longest = 500;
constexpr char s_special[] = {'\0', '@', '"', '\'', '(', '}', '[', '$', '\\', '\n', ',', '\xff'};

/// Takes what a text prints.
class Silence final : public IndentingStream
{
public:
    Silence() : m_before(xcout.m_os) { xcout.m_os = this; }
    ~Silence() { xcout.m_os = m_before; }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    void Flush() override {}

private:
    void Write(const char*, ssize_t) override {}
    char LastCharacter() const override { return '\n'; }

    IndentingStream* m_before;
};

/// Imports nothing, and says so as the tool does.
class EmptyFiles final : public ImportHandler
{
public:
    bool HandleImportPath(const xstring&, const char*) override { return true; }
    bool HandleImport(VarFrame*, const xstring&, const char*) override { return false; }
};

std::vector<std::string> Seeds()
{
    std::vector<std::string> seeds;
    const std::vector<TestCase> cases = FindCases(std::string(TELV_SOURCE_DIR) + "/tests/cases");
    for (size_t i = 0; i < cases.size(); i += s_everyNth)
        if (auto text = ReadFile(cases[i].File(".tl")); text && text->size() <= s_longest)
            seeds.push_back(*text);
    return seeds;
}

/// The assumptions of the library that a text can break.
bool IsKnownAssumption(const std::string& what)
{
    for (const char* const condition :
         {"MapEscapeCharacter(*s, c)", "var->GetType() == LSV_STRING",
          "GetFilenameAndLineNumberAtCurrentPosition(filename, lineNumber)"})
        if (what.find(condition) != std::string::npos)
            return true;
    return false;
}

class MutationTest : public testing::Test
{
protected:
    /// Expands a copy of `text` in a block of exactly its size.
    void Expand(const std::string& text);

    long m_count = 0;

private:
    void Check(const LexScannerException& e, SubString view, const ExpansionRun& run,
               const std::string& text) const;

    Silence m_silence;
};

void MutationTest::Expand(const std::string& text)
{
    ++m_count;
    const std::unique_ptr<char[]> block(new char[text.size()]);
    std::copy(text.begin(), text.end(), block.get());
    const SubString view(block.get(), block.get() + text.size());
    ExpansionRun run;
    run.m_limits.m_maxDepth = 100;
    run.m_limits.m_maxSteps = 3000;
    run.m_limits.m_maxOutput = 100'000;
    run.m_pythonAllowed = false;
    const ExpansionRunScope scope(run);
    EmptyFiles handler;
    FileScopeVarFrame frame; // keeps texts in which errors can stand
    try
    {
        xstring output;
        OutputPieces pieces;
        MacroExpand(&handler, &frame, view, 0, 0, output, pieces);
        EXPECT_EQ(output.size(), pieces.size()) << text;
    }
    catch (const LexScannerException& e)
    {
        Check(e, view, run, text);
    }
    catch (const TelvAssertionError& e)
    {
        EXPECT_TRUE(IsKnownAssumption(e.what())) << e.what() << "\n" << text;
    }
}

void MutationTest::Check(const LexScannerException& e, SubString view, const ExpansionRun& run,
                         const std::string& text) const
{
    // While a map is made, the run keeps the texts that its pieces view, and knows their origins.
    const char* const place = run.ResolvePosition(e.m_pos);
    const std::less_equal<const char*> notAfter;
    const bool isInside = notAfter(view.begin(), place) && notAfter(place, view.end());
    EXPECT_TRUE(place == nullptr || isInside) << e.what() << "\n" << text;
    EXPECT_FALSE(e.m_description.empty()) << text;
}

TEST_F(MutationTest, CutAtEveryByte)
{
    for (const std::string& seed : Seeds())
        for (size_t i = 0; i <= seed.size(); ++i)
        {
            Expand(seed.substr(0, i));
            Expand(seed.substr(i));
        }
    std::printf("%ld texts\n", m_count);
    EXPECT_GT(m_count, 5000);
}

TEST_F(MutationTest, OtherLineEnds)
{
    for (const std::string& seed : Seeds())
        for (const char* const end : {"\r\n", "\r", "\n\r", " \n", "\n\n", "\v\n"})
        {
            std::string text;
            for (const char c : seed)
                text += c == '\n' ? end : std::string(1, c);
            Expand(text);
        }
    EXPECT_GT(m_count, 300);
}

TEST_F(MutationTest, EveryByteReplaced)
{
    for (const std::string& seed : Seeds())
        for (size_t i = 0; i < seed.size(); ++i)
            for (const char c : s_special)
            {
                std::string text = seed;
                text[i] = c;
                Expand(text);
            }
    std::printf("%ld texts\n", m_count);
    EXPECT_GT(m_count, 30'000);
}

TEST_F(MutationTest, EveryByteRemovedOrDoubled)
{
    for (const std::string& seed : Seeds())
        for (size_t i = 0; i < seed.size(); ++i)
        {
            Expand(seed.substr(0, i) + seed.substr(i + 1));
            Expand(seed.substr(0, i) + seed.substr(i, 1) + seed.substr(i));
        }
    std::printf("%ld texts\n", m_count);
}

} // namespace
} // namespace telv::test
