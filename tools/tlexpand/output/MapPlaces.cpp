// SPDX-License-Identifier: MIT
// Names are relative to the directory of the start; the way there from the map's directory does not
// change when both move together.
#include "output/MapPlaces.h"
#include "Files.h"

namespace telv::tool
{

namespace
{

std::string ResolvedDirectoryOf(const std::string& path)
{
    const std::string directory = DirectoryOf(path);
    return ResolvedPath(directory.empty() ? "." : directory);
}

/// From the directory of the map at `path` to the one of the start. Names of a map that goes to
/// standard output are meant from where they are read.
std::string DirectoryFrom(const std::optional<std::string>& path)
{
    if (!path || *path == s_standardStream)
        return ".";
    return RelativePath(ResolvedDirectoryOf(*path), ResolvedPath("."));
}

/// The shortest way from the directory of the map at `map` to the output.
std::string NameBeside(const std::string& map, const std::string& output)
{
    const std::string name = output.substr(output.rfind('/') + 1);
    return RelativePath(ResolvedDirectoryOf(map), JoinPath(ResolvedDirectoryOf(output), name));
}

} // namespace

MapStyle MakeMapStyle(const ExpandOptions& options)
{
    MapStyle style;
    style.m_joinRuns = options.m_mapRuns;
    style.m_copies = options.m_chains;
    style.m_directory = DirectoryFrom(options.m_map);
    if (options.m_output != s_standardStream)
        style.m_output = options.m_output;
    style.m_hasSum = style.m_output || options.m_chains;
    return style;
}

SourceMapStyle MakeSourceMapStyle(const ExpandOptions& options)
{
    SourceMapStyle style;
    style.m_contents = options.m_sourceMapContents;
    const bool isElsewhere = DirectoryFrom(options.m_sourceMap) != ".";
    if (isElsewhere)
    {
        style.m_mapDirectory = ResolvedDirectoryOf(*options.m_sourceMap);
        style.m_startDirectory = ResolvedPath(".");
    }
    if (options.m_output != s_standardStream)
        style.m_file = options.m_output.starts_with('/') || !isElsewhere
                           ? options.m_output
                           : NameBeside(*options.m_sourceMap, options.m_output);
    return style;
}

} // namespace telv::tool
