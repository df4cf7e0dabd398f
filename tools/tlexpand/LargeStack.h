// Runs the work on a thread whose stack is large enough for very deep nesting, whatever the limit
// of the shell says. Memory is taken only as the stack grows.
#pragma once

#include <functional>

namespace telv::tool
{

/// The result of `work`, which runs on another thread while this one waits. The signals that end a
/// run are delivered to the working thread only. Where no such thread can be made, the work is done
/// on this one.
int RunOnLargeStack(const std::function<int()>& work);

} // namespace telv::tool
