// SPDX-License-Identifier: MIT
// The system's clock for files ticks every ten milliseconds at worst. A file that was changed less
// than two ticks before it was read can be changed, or replaced, without another time.
#include "input/FileStamp.h"

namespace telv::tool
{

namespace
{

constexpr long s_twoTicks = 20'000'000;

bool IsLongPast(const timespec& time)
{
    timespec now;
    if (clock_gettime(CLOCK_REALTIME, &now) != 0 || now.tv_sec < time.tv_sec)
        return false;
    return now.tv_sec > time.tv_sec + 1 ||
           (now.tv_sec - time.tv_sec) * 1'000'000'000 + now.tv_nsec - time.tv_nsec > s_twoTicks;
}

} // namespace

FileStamp::FileStamp(const struct stat& status)
    : m_status(status), m_tellsChanges(IsLongPast(status.st_ctim))
{
}

bool FileStamp::IsSettled(const struct stat& status) const
{
    const timespec& changed = m_status.st_ctim;
    return m_tellsChanges && HasSameText(status) && changed.tv_sec == status.st_ctim.tv_sec &&
           changed.tv_nsec == status.st_ctim.tv_nsec;
}

} // namespace telv::tool
