// SPDX-License-Identifier: MIT
// Emits a trace in one write where the descriptor takes it, so that traces of several processes
// do not mix within a line.
#include "tlUtils/TracerX.h"
#include <new>

namespace telv
{

TracerX::~TracerX()
{
    try
    {
        const xstring text = GetString();
        DescriptorStream standardError(2);
        if (text.size() > 0)
            standardError.Put(text.begin(), text.size());
        standardError.Flush();
    }
    catch (const std::bad_alloc&)
    {
        // A trace is not worth more than the program.
    }
}

} // namespace telv
