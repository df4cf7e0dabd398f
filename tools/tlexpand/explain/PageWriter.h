// SPDX-License-Identifier: MIT
// The page of `tlexpand explain`: output and sources side by side, in one HTML text that needs
// nothing else.
#pragma once

#include "map/OutputMap.h"
#include "output/OutputFile.h"

namespace telv::tool
{

/// A text of the page.
struct PageText
{
    std::string m_name;
    SubString m_text;
};

/// What the page shows. Views everything.
struct Page
{
    PageText m_output;
    std::vector<PageText> m_sources; ///< As the map counts them; empty where a text is not known.
    const OutputMap& m_map;
};

void WritePage(ByteSink& sink, const Page& page);

} // namespace telv::tool
