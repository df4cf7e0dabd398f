// SPDX-License-Identifier: MIT
// The custom mutator of the targets whose input is a text of the language.
//
// It changes a text along its structure: it inserts generated parts between lines and tokens,
// wraps, copies, removes and replaces bracketed sections, and exchanges names. Every third time or
// so it leaves the work to the fuzzer's own mutations of bytes.
#pragma once

#include "Grammar.h"

namespace telv::fuzz
{

/// What the texts of the program consist of; each target that links the mutator defines it.
extern const Start s_start;

/// Makes another text out of `text`.
std::string MutateText(const std::string& text, uint32_t seed, Start start);

/// Puts a part of `other` into `text`.
std::string CrossTexts(const std::string& text, const std::string& other, uint32_t seed);

} // namespace telv::fuzz
