// Memory that is not there: makes an allocation of this program fail.
#ifndef QELRCPT_TESTS_FAILING_ALLOCATIONS_HPP
#define QELRCPT_TESTS_FAILING_ALLOCATIONS_HPP

#include <cstddef>

namespace failing_allocations
{

// The number'th allocation from now on fails, counted from 1, or that and all after it.
void begin(std::size_t number, bool for_good) noexcept;

// Whether one has failed.
bool has_failed() noexcept;

} // namespace failing_allocations

#endif
