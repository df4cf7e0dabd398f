// The states of an order. Made from status.tl.
#pragma once

#include <string_view>

enum class Status
{
    New,
    Paid,
    Shipped,
    Delivered,
    Cancelled,
};

inline constexpr int numStatuses = 5;

inline constexpr std::string_view statusNames[numStatuses] = {
    "New",
    "Paid",
    "Shipped",
    "Delivered",
    "Cancelled",
};

inline constexpr std::string_view statusTexts[numStatuses] = {
    "The order has been placed.",
    "The order has been paid.",
    "The order is on its way.",
    "The order has arrived.",
    "The order was cancelled.",
};

constexpr bool MayFollow(Status status, Status next)
{
    switch (status)
    {
        case Status::New:
            return next == Status::Paid || next == Status::Cancelled || false;
        case Status::Paid:
            return next == Status::Shipped || next == Status::Cancelled || false;
        case Status::Shipped:
            return next == Status::Delivered || false;
        case Status::Delivered:
            return false;
        case Status::Cancelled:
            return false;
    }
    return false;
}
