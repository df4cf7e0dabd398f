// SPDX-License-Identifier: MIT
// Observers that care for nothing, and those that stand for several.
#include "tlMacroExpander/ExpansionObserver.h"

namespace telv
{

void ExpansionObserver::ExpansionBegins(const ObservedExpansion&) {}
void ExpansionObserver::ExpansionEnds() noexcept {}
void ExpansionObserver::InvocationBegins(const ObservedInvocation&) {}
void ExpansionObserver::InvocationEnds() noexcept {}
void ExpansionObserver::RoundBegins(const ObservedRound&) {}
void ExpansionObserver::RoundEnds() noexcept {}
void ExpansionObserver::DirectiveBegins(const ObservedDirective&) {}
void ExpansionObserver::DirectiveEnds() noexcept {}
void ExpansionObserver::ImportBegins(const ObservedImport&) {}
void ExpansionObserver::ImportEnds() noexcept {}
void ExpansionObserver::Defined(const ObservedDefinition&) {}
void ExpansionObserver::PieceWritten(const ObservedPiece&) {}

/// Where one of them throws, it has begun for those before it, and ends for them.
template <class Event>
void ExpansionObserverGroup::Begin(void (ExpansionObserver::*begin)(const Event&), End end,
                                   const Event& event)
{
    size_t begun = 0;
    try
    {
        for (; begun < m_observers.size(); ++begun)
            (m_observers[begun]->*begin)(event);
    }
    catch (...)
    {
        EndLast(begun, end);
        throw;
    }
}

template <class Event>
void ExpansionObserverGroup::Tell(void (ExpansionObserver::*what)(const Event&), const Event& event)
{
    for (ExpansionObserver* const observer : m_observers)
        (observer->*what)(event);
}

/// Tells the first `count`, the last of them first.
void ExpansionObserverGroup::EndLast(size_t count, End end) noexcept
{
    while (count > 0)
        (m_observers[--count]->*end)();
}

void ExpansionObserverGroup::ExpansionBegins(const ObservedExpansion& expansion)
{
    Begin(&ExpansionObserver::ExpansionBegins, &ExpansionObserver::ExpansionEnds, expansion);
}

void ExpansionObserverGroup::ExpansionEnds() noexcept
{
    EndLast(m_observers.size(), &ExpansionObserver::ExpansionEnds);
}

void ExpansionObserverGroup::InvocationBegins(const ObservedInvocation& invocation)
{
    Begin(&ExpansionObserver::InvocationBegins, &ExpansionObserver::InvocationEnds, invocation);
}

void ExpansionObserverGroup::InvocationEnds() noexcept
{
    EndLast(m_observers.size(), &ExpansionObserver::InvocationEnds);
}

void ExpansionObserverGroup::RoundBegins(const ObservedRound& round)
{
    Begin(&ExpansionObserver::RoundBegins, &ExpansionObserver::RoundEnds, round);
}

void ExpansionObserverGroup::RoundEnds() noexcept
{
    EndLast(m_observers.size(), &ExpansionObserver::RoundEnds);
}

void ExpansionObserverGroup::DirectiveBegins(const ObservedDirective& directive)
{
    Begin(&ExpansionObserver::DirectiveBegins, &ExpansionObserver::DirectiveEnds, directive);
}

void ExpansionObserverGroup::DirectiveEnds() noexcept
{
    EndLast(m_observers.size(), &ExpansionObserver::DirectiveEnds);
}

void ExpansionObserverGroup::ImportBegins(const ObservedImport& import)
{
    Begin(&ExpansionObserver::ImportBegins, &ExpansionObserver::ImportEnds, import);
}

void ExpansionObserverGroup::ImportEnds() noexcept
{
    EndLast(m_observers.size(), &ExpansionObserver::ImportEnds);
}

void ExpansionObserverGroup::Defined(const ObservedDefinition& definition)
{
    Tell(&ExpansionObserver::Defined, definition);
}

void ExpansionObserverGroup::PieceWritten(const ObservedPiece& piece)
{
    Tell(&ExpansionObserver::PieceWritten, piece);
}

} // namespace telv
