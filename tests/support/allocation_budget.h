#pragma once

namespace tessarin::test {

/// How many allocations this thread may still make before one fails; without a bound at first.
int& AllocationBudget();

} // namespace tessarin::test
