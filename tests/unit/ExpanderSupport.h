// SPDX-License-Identifier: MIT
// What the tests of frames and of the expander share: expansions with everything that they need,
// and one-line forms of their results.
#pragma once

#include "TextFoundationSupport.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/src/LSToken.h"
#include <deque>
#include <functional>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <utility>

namespace telv::expander
{

using foundation::FailedAssertion;
using foundation::Str;
using foundation::View;
using foundation::Written;

/// "Assertion failed: CONDITION at PATH" for an area of the expander.
inline std::string AssertionIn(const std::string& area, const std::string& condition)
{
    return "Assertion failed: " + condition + " at Core/tlMacroExpander/src/" + area;
}

/// A frame and the texts that were expanded in it, which outlive it.
class Session
{
public:
    explicit Session(ImportHandler* handler = nullptr) : m_handler(handler) {}

    /// The expansion, or "error: MESSAGE @OFFSET". The offset counts in `text`.
    std::string Expand(const std::string& text, ssize_t srcIndent = 0, ssize_t dstIndent = 0)
    {
        const SubString source = Keep(text);
        xstring output;
        try
        {
            MacroExpand(m_handler, &m_frame, source, srcIndent, dstIndent, output);
        }
        catch (const LexScannerException& e)
        {
            return "error: " + Str(e.m_description) + " @" + Place(e.m_pos);
        }
        return Str(output);
    }

    /// A view of a copy that lives as long as the session.
    SubString Keep(const std::string& text)
    {
        m_texts.push_back(text);
        return View(m_texts.back());
    }

    /// Where `pos` stands in the text kept last; "#K:OFFSET" in an earlier one.
    std::string Place(const char* pos) const
    {
        if (pos == nullptr)
            return "null";
        for (size_t i = m_texts.size(); i-- > 0;)
        {
            const SubString text = View(m_texts[i]);
            if (!IsWithin(SubString(pos, pos), text))
                continue;
            const std::string number = i + 1 == m_texts.size() ? "" : "#" + std::to_string(i) + ":";
            return number + std::to_string(pos - text.begin());
        }
        return "elsewhere";
    }

private:
    std::deque<std::string> m_texts; ///< Before the frame: variables view them.

public:
    ImportHandler* m_handler;
    FileScopeVarFrame m_frame;
};

/// The expansion of one text in a frame of its own, as `Session::Expand` gives it.
inline std::string ExpansionOf(const std::string& text, ssize_t srcIndent = 0,
                               ssize_t dstIndent = 0)
{
    return Session().Expand(text, srcIndent, dstIndent);
}

/// The pieces as "source OFFSET+SIZE", "indent SIZE" and "calculated SIZE from OFFSET+SIZE".
inline std::string PiecesText(const OutputPieces& pieces, SubString source)
{
    std::string text;
    for (const OutputPiece& piece : pieces.m_pieces)
    {
        text += text.empty() ? "" : ", ";
        const std::string range = std::to_string(piece.in.begin() - source.begin()) + "+" +
                                  std::to_string(piece.in.size());
        if (piece.out == 0)
            text += "source " + range;
        else if (piece.in.begin() == nullptr)
            text += "indent " + std::to_string(piece.out);
        else
            text += "calculated " + std::to_string(piece.out) + " from " + range;
    }
    return text;
}

/// Runs `work` on a thread with a stack of `size` bytes.
inline void OnStackOf(size_t size, const std::function<void()>& work)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, size);
    pthread_t thread;
    const auto start = [](void* argument) -> void*
    {
        (*static_cast<const std::function<void()>*>(argument))();
        return nullptr;
    };
    auto argument = work;
    const int failed = pthread_create(&thread, &attributes, start, &argument);
    pthread_attr_destroy(&attributes);
    if (failed != 0)
        throw std::runtime_error("pthread_create");
    pthread_join(thread, nullptr);
}

} // namespace telv::expander
