// SPDX-License-Identifier: MIT
// Maps, then messages. A map that can't be used is no reason to lose messages.
#include "RemapCommand.h"
#include "Files.h"
#include "remap/CommandRun.h"
#include "remap/MessageStream.h"
#include "report/Diagnostics.h"
#include <unistd.h>

namespace telv::tool
{

int RunRemapCommand(const RemapOptions& options)
{
    bool failed = false;
    MappedOutputs outputs(
        [&](const std::string& message)
        {
            failed = true;
            ReportToolError(message);
        });
    for (const MapFile& map : options.m_maps)
        outputs.Add(map.m_path, map.m_output);
    const auto writeTo = [](int fd)
    { return [fd](const std::string& text) { WriteAll(fd, ViewOf(text), NameOfStream(fd)); }; };
    MessageStream out(outputs, writeTo(STDOUT_FILENO));
    MessageStream err(outputs, writeTo(STDERR_FILENO));
    const auto takeOut = [&](SubString bytes) { out.Add(bytes); };
    const auto takeErr = [&](SubString bytes) { err.Add(bytes); };
    int status = 0;
    if (options.m_command != nullptr)
        status = RunAndRead(options.m_command, takeOut, takeErr);
    else
        ReadStream(STDIN_FILENO, takeOut);
    out.Finish();
    err.Finish();
    if (options.m_command != nullptr)
        return status;
    return failed ? 2 : 0;
}

} // namespace telv::tool
