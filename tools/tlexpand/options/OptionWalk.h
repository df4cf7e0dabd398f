// SPDX-License-Identifier: MIT
// Walking through a command line with getopt_long: options may stand behind operands, and "--" ends
// them.
#pragma once

#include <functional>
#include <getopt.h>

namespace telv::tool
{

/// The code that stands for an operand.
constexpr int s_operandCode = 1;

/// Calls `take` with the code and the value of each option, and with `s_operandCode` and the
/// operand for each operand.
///
/// @param letters  As getopt takes them, beginning with "-:".
/// @throws UsageError  An option that is not in the table, or without the value that it needs.
void ForEachOption(int argc, char** argv, const char* letters, const option* table,
                   const std::function<void(int code, const char* value)>& take);

/// The same until the first operand that is behind "--": returns its index, or `argc`.
int ForEachOptionBeforeCommand(int argc, char** argv, const char* letters, const option* table,
                               const std::function<void(int code, const char* value)>& take);

} // namespace telv::tool
