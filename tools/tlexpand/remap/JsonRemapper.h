// SPDX-License-Identifier: MIT
// Rewrites the places in JSON documents: GCC's -fdiagnostics-format=json, and SARIF 2.1.0.
#pragma once

#include "remap/MappedOutputs.h"

namespace telv::tool
{

/// What a text is the beginning of.
enum class EJson
{
    Whole,     ///< A document.
    Beginning, ///< Of one, and more must come.
    None
};

/// Whether `text`, whole lines from the beginning of one, is JSON: an object, or a list of objects.
EJson RecogniseJson(const std::string& text);

/// The document with its places rewritten, as compact or as indented as it was; `text` itself when
/// no place was, or when something in it has a shape that it has in neither kind. A fix that GCC
/// offers is rewritten where the text that it changes was copied, all other fixes of outputs are
/// left out.
std::string RemapJson(const std::string& text, MappedOutputs& outputs);

} // namespace telv::tool
