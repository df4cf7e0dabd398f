// SPDX-License-Identifier: MIT
// The values that options take. Each function throws a UsageError that names the option, if it can.
#pragma once

#include "options/Options.h"

namespace telv::tool
{

/// NAME=VALUE, NAME being an identifier.
Definition ParseDefinition(const char* option, const std::string& text);
/// NAME=FILE[:COLUMNS], NAME being an identifier and FILE ending in .csv or .json.
Definition ParseList(const char* option, const std::string& text);
/// Any text, to be expanded.
Definition ParseEvaluatedText(const char* option, const std::string& text);
/// Any text.
std::string ParseAnyText(const char* option, const std::string& text);
/// An identifier.
std::string ParseIdentifier(const char* option, const std::string& text);
/// A name that is not empty.
std::string ParseFileName(const char* option, const std::string& text);
/// The same, from the root on.
std::string ParseAbsolutePath(const char* option, const std::string& text);
/// Columns: 0 to 1,000,000.
ssize_t ParseIndent(const char* option, const std::string& text);
/// A number of 0 or more.
ssize_t ParseCount(const char* option, const std::string& text);
/// A number of 1 or more.
ssize_t ParsePositiveCount(const char* option, const std::string& text);
/// Bytes, or with K, M or G behind the number: 1024 to the power of 1, 2 or 3 of them.
ssize_t ParseSize(const char* option, const std::string& text);
/// A form of line directives: `%l` and `%f` in it, on one line.
std::string ParseLineFormat(const char* option, const std::string& text);
/// Names of warnings separated by commas, or all, or none.
unsigned ParseWarnings(const char* option, const std::string& text);
/// auto, always, never.
Colour ParseColour(const char* option, const std::string& text);

} // namespace telv::tool
