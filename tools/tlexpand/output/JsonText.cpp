// SPDX-License-Identifier: MIT
// The library writes what it reads elsewhere.
#include "output/JsonText.h"
#include "Files.h"
#include <nlohmann/json.hpp>

namespace telv::tool
{

std::string JsonString(SubString text)
{
    using Json = nlohmann::json;
    return Json(ToStdString(text)).dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace telv::tool
