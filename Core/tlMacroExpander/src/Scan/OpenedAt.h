// SPDX-License-Identifier: MIT
// Tells where what is never closed was opened, when an error at the end of the text is thrown.
// Noted in the run with the hints, so defined in Hints/Hints.cpp.
#pragma once

namespace telv
{

/// What begins at `opened` has no end; the error is thrown at `errorPos`.
void NoteOpened(const char* opened, const char* errorPos);
/// The same for a bracket around what could not be read, if that failed at the end of the text, and
/// not for something else that has no end.
void NoteOpenedAround(const char* opened, const char* errorPos, const char* end);
/// The same for a comment or a string, which is one token; in a lenient run it is text.
void NoteOpenedToken(const char* opened, const char* errorPos);

} // namespace telv
