// SPDX-License-Identifier: MIT
// A stream into a string, for expansions whose text is wanted and nothing else.
//
// A short text is collected in the sink itself and copied once; a longer one in a string that is
// then handed over. So a short result costs no allocation but that of the string that receives it,
// and none at all when that string has room.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlUtils/xostream.h"

namespace telv
{

/// Collects text. To be used as the stream behind an xostream.
class TLEXPANDER_API StringSink final : public IndentingStream
{
public:
    StringSink() { OfferRoom(m_few, m_few + s_few); }

    void Flush() override {}

    /// Characters collected.
    ssize_t size() const { return Room() - Begin(); }

    /// The text so far. Ends with the next write.
    SubString Text() const { return SubString(Begin(), Room()); }

    /// Moves the text into `out`, replacing what was there; the sink is empty afterwards.
    void Take(xstring& out);

protected:
    void Write(const char* text, ssize_t length) override;
    char LastCharacter() const override { return size() == 0 ? '\n' : Room()[-1]; }

private:
    static constexpr ssize_t s_few = 256;

    const char* Begin() const { return m_many.capacity() == 0 ? m_few : m_many.begin(); }

    xstring m_many; ///< Holds the text once it has room. Its size is set by `Take`.
    char m_few[s_few];
};

} // namespace telv
