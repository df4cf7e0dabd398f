// SPDX-License-Identifier: MIT
// Brings the types of the binary interface into one file with debug information, which holds their
// fields, bases and virtual operations: what the layout test compares with what it was.
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSSourceFile.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Mpfw/MpfwParser.h"
#include "tlMacroExpander/src/UsePython.h"
#include "tlUtils/HeldMemory.h"

namespace telv
{

// Text foundation.
void Use(const SubString&, const xstring&, const VectorOfByte&, const xvector<SubString>&,
         const xvector<xstring>&, const xvector<LSVariable*>&, const xvector<LSFormalArg>&,
         const xvector<OutputPiece>&, const xostream&, const StringStream&, const PagedBuffer&,
         const Indenter&, const StringX&, const HumanReadableCharInSubString&, const TracerX&,
         const IException&, const TelvAssertionError&)
{
}

// Memory that a run holds.
void Use(const HeldMemory&, const MemoryHold&, const MemoryLimitReached&) {}

// Scanning, literals, expressions.
void Use(const LSToken&, const LexScannerException&, const LSSourceFile&, const ParserBase&,
         const LSLiteral&, const LiteralException&, const ExpressionParser&, EToken, ELiteral)
{
}

// Variables, frames, expansion.
void Use(const LSFormalArg&, const LSVariable&, const LSValueVariable&, const LSVar&,
         const LSMacroVariable&, const LSVariableList&, const VarFrame&, const FileScopeVarFrame&,
         const ImportHandler&, const OutputPiece&, const OutputPieces&, const ExpandedOutput&,
         const OutputPiecesMonotonePosMapper&, const MacroExpander&, ELSVariable, EStrLiteralMode)
{
}

// Project files and Python.
void Use(const MpfwSourceFile&, const MpfwSourceFileList&, const MpfwFrame&, const MpfwParser&,
         const PyObjectRef&)
{
}

} // namespace telv
