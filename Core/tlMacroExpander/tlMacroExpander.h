// SPDX-License-Identifier: MIT
// Everything that applications use, in one include. MacroExpand.h says how a text is expanded,
// VarFrame.h where names are found, ExpansionRun.h what else a run may set.
#pragma once

#include "tlMacroExpander/ChainRecorder.h"
#include "tlMacroExpander/ExpandedOutput.h"
#include "tlMacroExpander/ExpansionObserver.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/LSLiteral.h"
#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/ExpressionParser.h"
#include "tlMacroExpander/src/LSSourceFile.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Mpfw/MpfwParser.h"
#include "tlMacroExpander/src/UsePython.h"
#include "tlUtils/HeldMemory.h"
#include "tlUtils/StringExt.h"
