#include "failing_allocations.hpp"

#include <atomic>
#include <cerrno>

namespace
{

std::atomic<std::size_t> counted = 0;
std::atomic<std::size_t> first_failing = 0; // 0: none
std::atomic<bool> fails_for_good = false;

bool fails() noexcept
{
    if (first_failing == 0)
        return false;
    const std::size_t number = ++counted;
    const bool is_failing = fails_for_good ? number >= first_failing : number == first_failing;
    if (is_failing)
        errno = ENOMEM;
    return is_failing;
}

} // namespace

void failing_allocations::begin(std::size_t number, bool for_good) noexcept
{
    counted = 0;
    fails_for_good = for_good;
    first_failing = number;
}

bool failing_allocations::has_failed() noexcept
{
    return counted >= first_failing;
}

extern "C" {

// The C library's own, under the names that it keeps for programs that replace them.
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *old, std::size_t size);

void *malloc(std::size_t size)
{
    return fails() ? nullptr : __libc_malloc(size);
}

void *calloc(std::size_t count, std::size_t size)
{
    return fails() ? nullptr : __libc_calloc(count, size);
}

void *realloc(void *old, std::size_t size)
{
    return fails() ? nullptr : __libc_realloc(old, size);
}
}
