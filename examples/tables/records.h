// Made from records.tl.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace shop
{

struct Customer
{
    std::int64_t id;
    std::string name;
    std::string email;
    std::optional<std::string> city;
};

inline constexpr const char* insertCustomer =
    "INSERT INTO customer (id, name, email, city) VALUES (?, ?, ?, ?)";

/// Gives the columns of a row, in the order of the statement, to bind(name, value).
template <class Bind>
void BindColumns(const Customer& row, Bind bind)
{
    bind("id", row.id);
    bind("name", row.name);
    bind("email", row.email);
    bind("city", row.city);
}

struct Invoice
{
    std::int64_t id;
    std::int64_t customer_id;
    double amount;
    std::optional<std::string> paid_on;
};

inline constexpr const char* insertInvoice =
    "INSERT INTO invoice (id, customer_id, amount, paid_on) VALUES (?, ?, ?, ?)";

/// Gives the columns of a row, in the order of the statement, to bind(name, value).
template <class Bind>
void BindColumns(const Invoice& row, Bind bind)
{
    bind("id", row.id);
    bind("customer_id", row.customer_id);
    bind("amount", row.amount);
    bind("paid_on", row.paid_on);
}

} // namespace shop
