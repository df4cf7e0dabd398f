// SPDX-License-Identifier: MIT
// Shows a row as the statement that would store it; the exit status says whether it is right.
#include "records.h"

#include <iostream>
#include <sstream>

namespace
{

template <class Value>
void Write(std::ostream& os, const Value& value)
{
    os << value;
}

template <class Value>
void Write(std::ostream& os, const std::optional<Value>& value)
{
    value ? os << *value : os << "NULL";
}

template <class Row>
std::string Columns(const Row& row)
{
    std::ostringstream os;
    BindColumns(row,
                [&](const char* name, const auto& value)
                {
                    os << "  " << name << " = ";
                    Write(os, value);
                    os << '\n';
                });
    return os.str();
}

} // namespace

int main()
{
    const shop::Customer ann{7, "Ann", "ann@example.org", std::nullopt};
    const shop::Invoice invoice{1, ann.id, 12.5, "2024-02-29"};
    std::cout << shop::insertCustomer << '\n' << Columns(ann);
    std::cout << shop::insertInvoice << '\n' << Columns(invoice);
    return Columns(ann).find("city = NULL") != std::string::npos ? 0 : 1;
}
