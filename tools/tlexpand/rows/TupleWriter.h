// SPDX-License-Identifier: MIT
// The objects within the values of rows. A tuple has no names, and the members of an object have no
// order: all objects that stand at one place of the rows (the members of one name, the elements of
// lists there) are tuples in the order of the first one, with the same members.
#pragma once

#include "rows/RowWriter.h"
#include <deque>
#include <map>
#include <memory>

namespace telv::tool
{

/// What the first object at a place has, and the places below.
///
/// Rows can nest deep, so one of them owns none of those below: see ObjectShapes.
struct ObjectShape
{
    struct Members
    {
        std::vector<std::string> m_names; ///< In their order.
        std::vector<ObjectShape*> m_shapes;
        std::map<std::string, size_t, std::less<>> m_byName;
    };

    ObjectShape* m_element = nullptr; ///< The place of what stands in a list here; null: none did.
    std::unique_ptr<Members> m_members; ///< Null: no object has begun here.
    bool m_isComplete = false;          ///< One has ended.
};

/// Owns shapes; they stay where they are.
class ObjectShapes
{
public:
    ObjectShape& New() { return m_shapes.emplace_back(); }
    /// The shape that a link leads to, made when there is none.
    ObjectShape& At(ObjectShape*& link)
    {
        if (link == nullptr)
            link = &New();
        return *link;
    }

private:
    std::deque<ObjectShape> m_shapes;
};

/// Writes one object as a tuple, into `target`.
class TupleWriter
{
public:
    /// All must outlive this; `offset` is that of the object in the file.
    TupleWriter(ObjectShape& shape, WrittenValue& target, ssize_t offset);

    /// Begins the member `name`, whose name stands at `offset`.
    ///
    /// @return Where its value is to be put, up to the next call here.
    /// @throws RowError  The first object has none of that name, or this one has it already.
    WrittenValue& Begin(const std::string& name, ssize_t offset);
    /// The link to the shape of the member that was begun last.
    ObjectShape*& MemberShape() { return m_shape->m_members->m_shapes[m_member]; }
    WrittenValue& Target() { return *m_target; }
    /// @throws RowError  A member is missing.
    void End();

private:
    size_t IndexOf(const std::string& name, ssize_t offset);
    void AppendWaiting();

    ObjectShape* m_shape;
    WrittenValue* m_target;
    ssize_t m_offset;
    size_t m_member = 0;                      ///< The one that was begun last.
    size_t m_next = 0;                        ///< So many members are in the target, in order.
    std::map<size_t, WrittenValue> m_waiting; ///< Those that have come before their turn.
};

} // namespace telv::tool
