// SPDX-License-Identifier: MIT
#include "map/Checksum.h"
#include <zlib.h>

namespace telv::tool
{

uint32_t AddToCrc32(uint32_t before, SubString text)
{
    const auto* const bytes = reinterpret_cast<const Bytef*>(text.begin());
    return static_cast<uint32_t>(crc32_z(before, bytes, static_cast<z_size_t>(text.size())));
}

} // namespace telv::tool
