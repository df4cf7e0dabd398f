// SPDX-License-Identifier: MIT
// Measures one piece of work in a process of its own: its time, and how much memory it took at its
// peak. The work runs on a thread with a large stack, of which only what is touched counts.
#pragma once

#include <functional>
#include <optional>

namespace telv::bench
{

struct Cost
{
    double m_seconds = 0;
    double m_megabytes = 0; ///< Resident at the peak, the empty process included.
};

/// Work that prepares itself when it is made and is timed when it is called.
using Work = std::function<void()>;

/// Makes the work, calls it, and tells what both needed; the time is that of the call alone. None
/// when the process did not end well, or not within 20 seconds.
std::optional<Cost> MeasureOnce(const std::function<Work()>& makeWork);

/// The least cost of `times` runs.
std::optional<Cost> Measure(const std::function<Work()>& makeWork, int times);

} // namespace telv::bench
