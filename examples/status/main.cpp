// SPDX-License-Identifier: MIT
// Walks an order through its states; the exit status says whether the tables are right.
#include "status.h"

#include <cstddef>
#include <cstdio>

static_assert(MayFollow(Status::New, Status::Paid));
static_assert(!MayFollow(Status::Delivered, Status::New));

int main()
{
    bool good = numStatuses == 5;
    for (const Status status : {Status::New, Status::Paid, Status::Shipped, Status::Delivered})
    {
        const auto i = static_cast<std::size_t>(status);
        std::printf("%-9s  %s", statusNames[i].data(), statusTexts[i].data());
        std::puts(MayFollow(status, Status::Cancelled) ? "  may be cancelled" : "");
        good = good && statusNames[i].size() > 2;
    }
    return good ? 0 : 1;
}
