// SPDX-License-Identifier: MIT
// Runs the work on a stack that is large enough for very deep nesting, whatever the limit of the
// shell says. Memory is taken only as the stack grows.
#pragma once

namespace telv::tool
{

/// The result of `work(argc, argv)`, which must not throw, on a stack of its own. It is not on a
/// thread of its own: starting one costs more than a small expansion, and so does every allocation
/// in a process that has had one. Where no such stack can be had, the work is done on the caller's.
int RunOnLargeStack(int (*work)(int argc, char** argv), int argc, char** argv);

} // namespace telv::tool
