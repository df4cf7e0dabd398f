// SPDX-License-Identifier: MIT
// Paths as text; the file system is not asked.
//
// Both functions go through a path component by component. Normalising writes the result over the
// path itself: it never gets ahead of what is read, except that nothing becomes ".".
#include "tlUtils/StringExt.h"
#include <algorithm>
#include <cstring>

namespace telv
{

namespace
{

bool IsAbsolute(SubString path)
{
    return path && *path == '/';
}

/// Cuts the next component off the front of `path`, with the slashes around it; empty at the end.
SubString CutComponent(SubString& path)
{
    while (path && *path == '/')
        ++path;
    SubString component(path.begin(), path.begin());
    while (path && *path != '/')
        ++path;
    component.m_p2 = path.begin();
    return component;
}

/// The last component of a path that ends with one, or that is empty.
SubString LastComponent(SubString path)
{
    const void* const slash =
        path.empty() ? nullptr : ::memrchr(path.begin(), '/', static_cast<size_t>(path.size()));
    if (slash != nullptr)
        path.m_p1 = static_cast<const char*>(slash) + 1;
    return path;
}

/// Drops the components that `from` and `to` begin with in common.
void DropCommon(SubString& from, SubString& to)
{
    for (;;)
    {
        SubString restOfFrom = from;
        SubString restOfTo = to;
        const SubString component = CutComponent(restOfFrom);
        if (component.empty() || component != CutComponent(restOfTo))
            return;
        from = restOfFrom;
        to = restOfTo;
    }
}

/// A normalised path without the "." that stands for nothing.
SubString WithoutDot(const xstring& path TELV_LIFETIMEBOUND)
{
    return path == "." ? SubString() : SubString(path);
}

void AppendComponent(xstring& path, SubString component)
{
    if (!path.empty())
        path += '/';
    path += component;
}

} // namespace

void NormalisePath(xstring& path)
{
    if (path.empty())
        return;
    std::replace(path.begin(), path.end(), '\\', '/');
    const bool absolute = IsAbsolute(path);
    char* const first = path.begin() + (absolute ? 1 : 0);
    char* out = first;
    SubString rest = path;
    while (const SubString component = CutComponent(rest))
    {
        if (component == ".")
            continue;
        if (component == "..")
        {
            const SubString last = LastComponent(SubString(first, out));
            const bool climbs = last.empty() || last == "..";
            if (!climbs)
            {
                out -= last.size();
                out -= out == first ? 0 : 1; // the slash before it
            }
            if (!climbs || absolute)
                continue;
        }
        if (out != first)
            *out++ = '/';
        std::memmove(out, component.begin(), static_cast<size_t>(component.size()));
        out += component.size();
    }
    path.resize(out - path.begin());
    if (path.empty())
        path += '.';
}

void CalcRelativePath(SubString from, SubString to, xstring& out)
{
    xstring fromPath(from);
    xstring toPath(to);
    NormalisePath(fromPath);
    NormalisePath(toPath);
    if (IsAbsolute(fromPath) != IsAbsolute(toPath))
    {
        out.swap(toPath);
        return;
    }
    SubString up = WithoutDot(fromPath);
    SubString down = WithoutDot(toPath);
    DropCommon(up, down);
    xstring result;
    while (const SubString component = CutComponent(up))
    {
        if (component == "..") // leads to a directory whose name is not known
        {
            out.swap(toPath);
            return;
        }
        AppendComponent(result, "..");
    }
    while (const SubString component = CutComponent(down))
        AppendComponent(result, component);
    if (result.empty())
        result += '.';
    out.swap(result);
}

} // namespace telv
