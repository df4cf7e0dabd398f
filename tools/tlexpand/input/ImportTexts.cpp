// SPDX-License-Identifier: MIT
#include "input/ImportTexts.h"
#include <utility>

namespace telv::tool
{

std::shared_ptr<const InputText> ImportTexts::Find(const struct stat& status) const
{
    const auto entry = m_entries.find(FileIdentity(status));
    if (entry == m_entries.end() || !entry->second.m_stamp.IsSettled(status))
        return nullptr;
    return entry->second.m_text;
}

void ImportTexts::Keep(const FileStamp& stamp, std::shared_ptr<const InputText> text)
{
    m_entries.insert_or_assign(stamp.Identity(), Entry{stamp, std::move(text)});
}

} // namespace telv::tool
