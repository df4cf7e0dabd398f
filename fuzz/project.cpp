// SPDX-License-Identifier: MIT
// Project files: sections of the input that a record separator (0x1e) parts are the files "0", "1"
// and so on of a folder, read from "0" on. Reading twice gives the same; expansions are tiled by
// their pieces; errors lie in a file or in its expansion.
#include "Checks.h"
#include "Mutator.h"
#include "Nowhere.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/Mpfw/MpfwParser.h"
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace telv::fuzz
{

const Start s_start = Start::Project;

namespace
{

constexpr char s_separator = '\x1e';
constexpr size_t s_mostFiles = 4;

xstring ToX(const std::string& text)
{
    return xstring(SubString(text.data(), text.data() + text.size()));
}

/// A folder in memory where there is such a file system; gone when the process ends.
class Folder
{
public:
    Folder()
    {
        const bool hasMemory = std::filesystem::is_directory("/dev/shm");
        std::string pattern = hasMemory ? "/dev/shm/telv_fuzz_XXXXXX" : "/tmp/telv_fuzz_XXXXXX";
        FUZZ_REQUIRE(mkdtemp(pattern.data()) != nullptr);
        m_path = pattern;
    }
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string PathOf(size_t index) const { return m_path + "/" + std::to_string(index); }

    /// Writes the sections.
    void Write(const std::string& input)
    {
        size_t count = 0;
        for (size_t begin = 0; count < s_mostFiles && begin <= input.size(); ++count)
        {
            const size_t end = std::min(input.find(s_separator, begin), input.size());
            std::ofstream(PathOf(count), std::ios::binary) << input.substr(begin, end - begin);
            begin = end + 1;
        }
        for (size_t i = count; i < s_mostFiles; ++i)
            std::remove(PathOf(i).c_str());
    }

private:
    std::string m_path;
};

/// Finds only the files of the folder, and reads those that a statement wants.
class Reader final : public MpfwParser
{
public:
    Reader(MpfwFrame& frame, const Folder& folder) : MpfwParser(frame), m_folder(folder) {}

    bool ResolveImportPath(const xstring& name, xstring& path) override
    {
        const std::string folder = m_folder.PathOf(0);
        if (!MpfwParser::ResolveImportPath(name, path) || ToStd(path).size() != folder.size() ||
            !ToStd(path).starts_with(folder.substr(0, folder.size() - 1)))
            return false;
        if (m_inStatements)
            AddFile(path);
        return true;
    }

    void ProcessImportedFile(MpfwSourceFile* srcFile) override
    {
        FUZZ_REQUIRE(srcFile != nullptr);
        if (++m_processed < 50)
            MpfwParser::ProcessImportedFile(srcFile);
    }

    /// Reads the statements of a file: two settings, definitions, imports.
    std::string ReadStatements(const MpfwSourceFile& file)
    {
        m_inStatements = true;
        Init(file.m_expanded);
        std::string read;
        while (m_token.m_type != TOKEN_END)
            read += ReadStatement();
        return read;
    }

private:
    std::string ReadStatement()
    {
        if (ParseImportDirective())
            return "import\n";
        SubString rest(m_str);
        const std::string name = ToStd(LsScanToken(rest, false).m_str);
        xstring value;
        if (name == "a" || m_token.m_type != TOKEN_DOLLAR)
            ParseStringSetting("a", value);
        else if (name == "b")
            ParsePathSetting("b", value);
        else
            ParseMacroDef();
        FUZZ_REQUIRE(name != "b" || value.empty() || value.back() != '/');
        return name + "=" + ToStd(value) + "\n";
    }

    const Folder& m_folder;
    int m_processed = 0;
    bool m_inStatements = false;
};

bool IsIn(SubString text, const char* pos)
{
    return pos != nullptr && IsWithin(SubString(pos, pos), text);
}

/// Where a position lies: the file, and the offset in its text or its expansion.
std::string ShowPosition(const MpfwSourceFileList& files, const char* pos)
{
    for (ssize_t i = 0; i < files.size(); ++i)
    {
        const MpfwSourceFile& file = *files[i];
        if (IsIn(file.m_buffer, pos))
            return std::to_string(i) + ":" + std::to_string(pos - file.m_buffer.begin());
        if (IsIn(file.m_expanded, pos))
            return std::to_string(i) + "x" + std::to_string(pos - file.m_expanded.begin());
    }
    FUZZ_REQUIRE(pos == nullptr);
    return "none";
}

std::string ShowError(const MpfwSourceFileList& files, const LexScannerException& e)
{
    StringStream located(4096);
    files.WriteLexScannerError(located, e);
    return ToStd(e.m_description) + " at " + ShowPosition(files, e.m_pos) + "\n";
}

void CheckFile(const MpfwSourceFile& file)
{
    FUZZ_REQUIRE(file.m_pieces.size() == file.m_expanded.size());
    ssize_t begin = 0;
    for (const OutputPiece& piece : file.m_pieces.m_pieces)
    {
        const char* const out = file.m_expanded.begin() + begin;
        if (piece.out == 0 && IsWithin(piece.in, file.m_buffer))
            FUZZ_REQUIRE(piece.in == SubString(out, out + piece.size()));
        begin += piece.size();
    }
}

/// Everything that one reading gives, as text.
std::string ReadProject(const Folder& folder)
{
    ExpansionRun run;
    run.m_pythonAllowed = false;
    run.m_limits = {40, 500, 20'000};
    const ExpansionRunScope scope(run);
    MpfwSourceFileList list;
    MpfwFrame frame(list);
    std::string result;
    run.m_fileErrorSink = [&](const LexScannerException& e)
    {
        LexScannerException resolved(e);
        resolved.m_pos = run.ResolvePosition(e.m_pos);
        result += "swallowed: " + ShowError(list, resolved);
    };
    Reader reader(frame, folder);
    try
    {
        const MpfwSourceFile* const file = reader.AddFile(ToX(folder.PathOf(0)));
        result += reader.ReadStatements(*file);
    }
    catch (LexScannerException& e)
    {
        e.m_pos = run.ResolvePosition(e.m_pos);
        result += ShowError(list, e);
    }
    catch (const TelvAssertionError& e)
    {
        const Outcome outcome{Outcome::Assertion, e.what(), -2};
        FUZZ_REQUIRE(IsAssertion(outcome, "MapEscapeCharacter(*s, c)") ||
                     IsAssertion(outcome, "GetFilenameAndLineNumberAtCurrentPosition(filename, "
                                          "lineNumber)"));
        result += e.what();
    }
    for (const MpfwSourceFile* file : list)
    {
        CheckFile(*file);
        result += "file " + ToStd(file->m_localPath) + "\n" + ToStd(file->m_expanded) + "\n";
        FUZZ_REQUIRE(list.FindSourceFile(file->m_localPath) == file);
    }
    for (const auto& [name, value] : frame.m_vf.m_dollarMacrosMap)
        result += ToStd(name) + " is " + ToStd(value) + "\n";
    return result;
}

} // namespace
} // namespace telv::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static telv::fuzz::Nowhere s_nowhere;
    static telv::fuzz::Folder s_folder;
    telv::xcout.m_os = &s_nowhere;
    s_folder.Write(std::string(data, data + size));
    const std::string first = telv::fuzz::ReadProject(s_folder);
    FUZZ_REQUIRE(telv::fuzz::ReadProject(s_folder) == first);
    return 0;
}
