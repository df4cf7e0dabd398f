// SPDX-License-Identifier: MIT
// The files of the page, compiled into the tool; their source is made by cmake/EmbedText.cmake.
#pragma once

namespace telv::tool
{

extern const char* const s_pageHtml;
extern const char* const s_pageStyle;  ///< page.css
extern const char* const s_pageScript; ///< model.js, pane.js, page.js

} // namespace telv::tool
