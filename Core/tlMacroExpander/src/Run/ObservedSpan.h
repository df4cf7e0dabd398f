// SPDX-License-Identifier: MIT
// What an observer was told has begun, until it ends.
#pragma once

#include "tlMacroExpander/ExpansionObserver.h"

namespace telv
{

/// Tells the observer of the end, also when an error passes. To be made when the beginning has been
/// told.
class ObservedSpan
{
public:
    using End = void (ExpansionObserver::*)() noexcept;

    ObservedSpan(ExpansionObserver& observer, End end) : m_observer(observer), m_end(end) {}
    ~ObservedSpan() { (m_observer.*m_end)(); }
    ObservedSpan(const ObservedSpan&) = delete;
    ObservedSpan& operator=(const ObservedSpan&) = delete;

private:
    ExpansionObserver& m_observer;
    End m_end;
};

} // namespace telv
