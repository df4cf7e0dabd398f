// SPDX-License-Identifier: MIT
// A text that was edited after the expansion would lead to wrong places, so sizes and copied
// characters are compared once for each text.
#include "map/MappedFiles.h"
#include "Files.h"
#include "map/Checksum.h"
#include <cstring>
#include <fcntl.h>

namespace telv::tool
{

xstring ReadWholeFile(const std::string& path)
{
    const Descriptor fd(OpenAt(StartDirectory(), path.c_str(), O_RDONLY | O_NOCTTY));
    if (!fd.IsOpen())
        throw MakeFileError("read", path, errno);
    return ReadAll(fd.Get(), path);
}

bool IsFileName(const std::string& source)
{
    return !(source.starts_with('<') && source.ends_with('>'));
}

namespace
{

/// The directory that the names in a map are relative to, from here; empty for this one. A map that
/// is reached by a link lies where the link leads; where one lies that comes through a pipe is not
/// known.
std::string BaseOf(const std::string& mapPath, const std::string& directory)
{
    if (directory.empty() || directory.starts_with('/'))
        return directory;
    if (!IsRegularFile(mapPath))
        return "";
    const std::string base = JoinPath(DirectoryOf(mapPath), directory);
    const std::string real = JoinPath(DirectoryOf(ResolvedPath(mapPath)), directory);
    const bool isSame = !StatusOf(real) || IsSameFile(base.empty() ? "." : base, real);
    return isSame ? base : RelativePath(ResolvedPath("."), real);
}

} // namespace

MappedFiles::MappedFiles(const std::string& mapPath, const std::string& output)
    : m_mapPath(mapPath), m_map(ReadMap(ReadWholeFile(mapPath), mapPath)), m_outputPath(output)
{
    m_base = BaseOf(mapPath, m_map.m_directory);
    if (m_outputPath.empty() && m_map.m_output)
        m_outputPath = PathFromHere(*m_map.m_output);
    m_sources.resize(m_map.m_sources.size());
}

std::string MappedFiles::PathFromHere(const std::string& name) const
{
    if (name.starts_with('/') || m_base.empty() || m_base == ".")
        return name;
    std::string path = JoinPath(m_base, name);
    if (!path.starts_with("../"))
        return path;
    // Out of this directory and back into it is no way.
    const std::string here = ResolvedPath(".");
    return RelativePath(here, JoinPath(here, path));
}

std::string MappedFiles::SourcePath(size_t source) const
{
    const std::string& name = m_map.m_sources[source];
    return IsFileName(name) ? PathFromHere(name) : name;
}

const MappedText& MappedFiles::Output()
{
    if (m_output)
        return *m_output;
    auto output = std::make_unique<MappedText>(ReadWholeFile(m_outputPath));
    const ssize_t size = output->m_text.size();
    if (size != m_map.m_size)
        throw MapError("'" + m_mapPath + "' does not fit '" + m_outputPath + "': the file has " +
                       std::to_string(size) + " bytes, the map " + std::to_string(m_map.m_size));
    if (m_map.m_crc32 && AddToCrc32(0, output->m_text) != *m_map.m_crc32)
        throw MapError("'" + m_mapPath + "' does not fit '" + m_outputPath +
                       "': the file has changed since it was written");
    m_output = std::move(output);
    return *m_output;
}

/// Compares what was copied from a source with what stands in the output.
void MappedFiles::CheckCopies(size_t source, SubString text)
{
    const SubString output = Output().m_text;
    for (const MapPiece& piece : m_map.m_pieces)
    {
        const SourceRange& place = OriginRange(piece);
        if (place.m_source != static_cast<ssize_t>(source))
            continue;
        const bool isInside =
            place.m_in <= text.size() && place.m_inSize <= text.size() - place.m_in;
        const bool fits =
            isInside &&
            (!IsCopy(piece) || std::memcmp(text.begin() + place.m_in, output.begin() + piece.m_out,
                                           static_cast<size_t>(piece.m_size)) == 0);
        if (!fits)
            throw MapError("'" + m_mapPath + "' does not fit '" + m_outputPath + "' and '" +
                           SourcePath(source) + "': one of them has changed since it was written");
    }
}

const MappedText* MappedFiles::SourceText(size_t source)
{
    if (!IsFileName(m_map.m_sources[source]))
        return nullptr;
    if (m_sources[source])
        return m_sources[source].get();
    auto text = std::make_unique<MappedText>(ReadWholeFile(SourcePath(source)));
    CheckCopies(source, text->m_text);
    m_sources[source] = std::move(text);
    return m_sources[source].get();
}

} // namespace telv::tool
