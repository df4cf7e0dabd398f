// SPDX-License-Identifier: MIT
// Names of files as URIs: "file:///home/a%20b/c.cpp", or relative.
#pragma once

#include <string>

namespace telv::tool
{

constexpr const char* s_fileScheme = "file://";

/// The path of a URI: a relative one, or one of a file.
std::string PathOfUri(const std::string& uri);

/// A path as it stands in a URI, without the scheme.
std::string UriOfPath(const std::string& path);

} // namespace telv::tool
