// SPDX-License-Identifier: MIT
// What comes in order, as nearly all does, is written where it belongs at once; only what comes
// before its turn is kept and copied.
#include "rows/TupleWriter.h"

namespace telv::tool
{

namespace
{

/// Appends a value that was written by itself.
void Append(WrittenValue& target, const WrittenValue& value)
{
    const size_t begin = target.m_text.size();
    for (const MadePlace& place : value.m_places)
        target.m_places.push_back({static_cast<ssize_t>(begin) + place.m_offset, place.m_origin});
    if (!target.m_openComment && value.m_openComment)
        target.m_openComment = begin + *value.m_openComment;
    target.m_text += value.m_text;
}

} // namespace

TupleWriter::TupleWriter(ObjectShape& shape, WrittenValue& target, ssize_t offset)
    : m_shape(&shape), m_target(&target), m_offset(offset)
{
    if (!shape.m_members)
        shape.m_members = std::make_unique<ObjectShape::Members>();
    m_target->m_places.push_back({static_cast<ssize_t>(m_target->m_text.size()), offset});
    m_target->m_text += '(';
}

size_t TupleWriter::IndexOf(const std::string& name, ssize_t offset)
{
    ObjectShape::Members& members = *m_shape->m_members;
    const auto known = members.m_byName.find(name);
    if (known != members.m_byName.end())
        return known->second;
    if (m_shape->m_isComplete)
        throw RowError("The first object of these has no member '" + name + "'", offset);
    const size_t index = members.m_names.size();
    members.m_byName.emplace(name, index);
    members.m_names.push_back(name);
    members.m_shapes.push_back(nullptr);
    return index;
}

WrittenValue& TupleWriter::Begin(const std::string& name, ssize_t offset)
{
    AppendWaiting();
    m_member = IndexOf(name, offset);
    if (m_member < m_next || m_waiting.contains(m_member))
        throw RowError("The object has several values for member '" + name + "'", offset);
    if (m_member != m_next)
        return m_waiting[m_member];
    if (m_next++ > 0)
        m_target->m_text += ',';
    return *m_target;
}

/// Appends those whose turn has come.
void TupleWriter::AppendWaiting()
{
    for (auto first = m_waiting.begin(); first != m_waiting.end() && first->first == m_next;
         first = m_waiting.erase(first))
    {
        if (m_next++ > 0)
            m_target->m_text += ',';
        Append(*m_target, first->second);
    }
}

void TupleWriter::End()
{
    AppendWaiting();
    const std::vector<std::string>& names = m_shape->m_members->m_names;
    if (m_next != names.size())
        throw RowError("The object has " + CountedValues(m_next + m_waiting.size()) +
                           " instead of " + std::to_string(names.size()) + ": none for member '" +
                           names[m_next] + "'",
                       m_offset);
    m_shape->m_isComplete = true;
    m_target->m_text += ')';
}

} // namespace telv::tool
