// SPDX-License-Identifier: MIT
// The file is read whole: the rows are views of it until they are written.
#include "rows/RowList.h"
#include "rows/CsvRows.h"
#include "rows/JsonRows.h"
#include <fcntl.h>

namespace telv::tool
{

namespace
{

/// Half of one generation of the file with half of another could be good data.
void ReadFile(const std::string& path, RowList& list)
{
    const Descriptor fd(OpenAt(StartDirectory(), path.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK));
    struct stat before;
    if (!fd.IsOpen() || fstat(fd.Get(), &before) != 0)
        throw MakeFileError("read", path, errno);
    if (!S_ISREG(before.st_mode))
        throw FileError("can't read '" + path + "': Not a regular file");
    list.m_fileText = ReadAll(fd.Get(), path);
    struct stat after;
    if (fstat(fd.Get(), &after) != 0)
        throw MakeFileError("read", path, errno);
    if (!HasSameText(before, after) || list.m_fileText.size() != after.st_size)
        throw FileError("can't read '" + path + "': It changes while it is read");
    list.m_identity = FileIdentity(after);
}

} // namespace

void ReadRowList(const RowListOption& option, RowList& list)
{
    ReadFile(option.m_file, list);
    RowWriter writer(option.m_columns, list);
    if (option.m_isJson)
        ReadJsonRows(list.m_fileText, writer);
    else
        ReadCsvRows(list.m_fileText, writer);
    writer.Finish();
}

} // namespace telv::tool
