// SPDX-License-Identifier: MIT
// Errors in statements stand in expanded text; they are moved to the file before they are reported.
#include "input/ProjectReader.h"
#include "Files.h"
#include "tlMacroExpander/ExpansionRun.h"
#include <algorithm>

namespace telv::tool
{

namespace
{

bool Holds(const std::vector<std::string>& names, SubString name)
{
    return std::ranges::any_of(names, [&](const std::string& n) { return ViewOf(n) == name; });
}

/// The place in a file that a piece of its expansion stands for: what made the text, where it was
/// made while expanding.
SubString SourceOf(const OutputPiece& piece)
{
    const ExpansionRun* const run = ExpansionRun::Current();
    SubString origin;
    if (run != nullptr && run->FindOrigin(piece.in.begin(), origin))
        return SubString(origin.begin(), origin.begin());
    return piece.in;
}

/// Where in the file the character `pos` of its expansion came from; for what came from another
/// file, the place before it.
const char* MapToBuffer(const MpfwSourceFile& file, const char* pos)
{
    if (pos == file.m_expanded.end())
        return file.m_buffer.end();
    ssize_t left = pos - file.m_expanded.begin();
    const char* place = file.m_buffer.begin();
    for (const OutputPiece& piece : file.m_pieces.m_pieces)
    {
        const SubString source = SourceOf(piece);
        const bool isInBuffer = IsWithin(source, file.m_buffer);
        if (left < piece.size())
        {
            const ssize_t offset = piece.out == 0 && !source.empty() ? left : 0;
            return isInBuffer ? source.begin() + offset : place;
        }
        if (isInBuffer)
            place = source.begin();
        left -= piece.size();
    }
    return place;
}

/// The place of an import for as long as the import goes on, however it ends.
class PositionScope
{
public:
    PositionScope(std::vector<const char*>& positions, const char* pos) : m_positions(positions)
    {
        m_positions.push_back(pos);
    }
    ~PositionScope() { m_positions.pop_back(); }
    PositionScope(const PositionScope&) = delete;
    PositionScope& operator=(const PositionScope&) = delete;

private:
    std::vector<const char*>& m_positions;
};

} // namespace

ProjectReader::ProjectReader(MpfwFrame& frame, const ProjectOptions& options, ErrorSink report)
    : MpfwParser(frame), m_options(options), m_report(std::move(report))
{
    for (const Definition& definition : options.m_definitions)
    {
        m_frame.m_vf.InsertDollarMacro(xstring(ViewOf(definition.m_name)),
                                       xstring(ViewOf(definition.m_value)));
        m_macros.emplace_back(definition.m_name, definition.m_value);
    }
}

void ProjectReader::Read(const xstring& path, xstring& text)
{
    ProcessImportedFile(AddText(path, text));
}

void ProjectReader::ReadLeft()
{
    for (ssize_t i = 0; i < m_frame.m_srcFileList.size(); ++i)
        ProcessImportedFile(m_frame.m_srcFileList[i]);
}

bool ProjectReader::HandleImport(VarFrame* vf, const xstring& path, const char* pos)
{
    const PositionScope scope(m_importPositions, pos);
    try
    {
        return MpfwParser::HandleImport(vf, path, pos);
    }
    catch (const ExpansionLimitException&)
    {
        throw;
    }
    catch (const LexScannerException& e)
    {
        m_failedImports.push_back(pos);
        m_report(e);
        return true; // so that what stands behind it is read
    }
}

MpfwSourceFile* ProjectReader::CreateMpfwSourceFile()
{
    const char* const importPos =
        m_importPositions.empty() ? PlaceInBuffer(m_token.m_str.begin()) : m_importPositions.back();
    return std::make_unique<ProjectFile>(importPos).release();
}

bool ProjectReader::FindImport(const xstring& name, xstring& path)
{
    if (MpfwParser::ResolveImportPath(name, path))
        return true;
    for (const std::string& directory : m_options.m_importPaths)
    {
        const std::string candidate = JoinImportPath(directory, ToStdString(name));
        if (!IsRegularFile(candidate))
            continue;
        path = xstring(ViewOf(candidate));
        return true;
    }
    return false;
}

bool ProjectReader::ResolveImportPath(const xstring& name, xstring& path)
{
    if (!FindImport(name, path))
        return false;
    // The statement of a directive that ran finds its file in the list; one that a macro or a quote
    // made has yet to have it read.
    if (m_importPositions.empty())
        AddFile(path);
    return true;
}

void ProjectReader::ProcessImportedFile(MpfwSourceFile* srcFile)
{
    auto& file = static_cast<ProjectFile&>(*srcFile);
    if (file.m_processed)
        return;
    file.m_processed = true;
    const ParserBase before(*this);
    try
    {
        ReadStatements(file);
    }
    catch (const ExpansionLimitException&)
    {
        throw;
    }
    catch (LexScannerException& e)
    {
        e.m_pos = PlaceInBuffer(e.m_pos);
        m_report(e);
    }
    static_cast<ParserBase&>(*this) = before;
}

/// An import that fails doesn't stop the reading of what stands behind it. Where a directive led to
/// it, its error has been reported.
bool ProjectReader::ReadImport()
{
    const char* const start = m_token.m_str.begin();
    try
    {
        return ParseImportDirective();
    }
    catch (const ExpansionLimitException&)
    {
        throw;
    }
    catch (LexScannerException& e)
    {
        if (m_token.m_type != TOKEN_DOUBLE_QUOTED_STRING &&
            m_token.m_type != TOKEN_SINGLE_QUOTED_STRING)
            throw; // It is no import.
        const SubString statement(PlaceInBuffer(start), PlaceInBuffer(m_token.m_str.begin()));
        if (std::ranges::none_of(m_failedImports, [&](const char* pos)
                                 { return IsWithin(SubString(pos, pos), statement); }))
        {
            e.m_pos = PlaceInBuffer(e.m_pos);
            m_report(e);
        }
        ReadNextToken();
        return true;
    }
}

void ProjectReader::ReadStatements(ProjectFile& file)
{
    Init(file.m_expanded);
    while (m_token.m_type != TOKEN_END)
    {
        if (ReadImport())
            continue;
        if (m_token.m_type == TOKEN_DOLLAR)
        {
            ReadDollarStatement();
            continue;
        }
        StringStream os(4096);
        os << "Syntax error: " << m_token;
        throw LexScannerException(os.GetString(), m_token);
    }
}

/// The name behind the `$` tells what the statement is.
void ProjectReader::ReadDollarStatement()
{
    SubString rest = m_str;
    const SubString name = LsScanToken(rest, /*returnComments=*/false).m_str;
    const bool isSetting = Holds(m_options.m_settings, name);
    xstring value;
    if (isSetting || Holds(m_options.m_pathSettings, name))
    {
        if (isSetting)
            ParseStringSetting(name, value);
        else
            ParsePathSetting(name, value);
        SetValue(ToStdString(name), value);
        return;
    }
    xstring macroName;
    ParseOneMacroDef(macroName, value);
    m_macros.emplace_back(ToStdString(macroName), ToStdString(value));
}

void ProjectReader::SetValue(const std::string& name, const xstring& value)
{
    const auto known = std::ranges::find(m_values, name, &NamedValues::value_type::first);
    if (known == m_values.end())
        m_values.emplace_back(name, ToStdString(value));
    else
        known->second = ToStdString(value);
}

/// The place in a file's buffer for one in its expansion; other positions as they are.
const char* ProjectReader::PlaceInBuffer(const char* pos) const
{
    if (pos == nullptr)
        return nullptr;
    for (const MpfwSourceFile* file : m_frame.m_srcFileList)
        if (IsWithin(SubString(pos, pos), file->m_expanded))
            return MapToBuffer(*file, pos);
    return pos;
}

} // namespace telv::tool
