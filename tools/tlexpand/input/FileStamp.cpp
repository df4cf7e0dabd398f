// SPDX-License-Identifier: MIT
// The system's clock for files ticks every ten milliseconds at worst. A file that was changed less
// than two ticks before it was read can be changed, or replaced, without another time.
#include "input/FileStamp.h"

namespace telv::tool
{

namespace
{

constexpr long s_twoTicks = 20'000'000;

bool IsEqual(const timespec& a, const timespec& b)
{
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

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
    : m_identity(status), m_size(status.st_size), m_modified(status.st_mtim),
      m_changed(status.st_ctim), m_tellsChanges(IsLongPast(status.st_ctim))
{
}

bool FileStamp::HasSameText(const struct stat& status) const
{
    return m_size == status.st_size && IsEqual(m_modified, status.st_mtim);
}

bool FileStamp::IsSettled(const struct stat& status) const
{
    return m_tellsChanges && HasSameText(status) && IsEqual(m_changed, status.st_ctim);
}

} // namespace telv::tool
