#include "allocations.h"

#include <atomic>

namespace
{

std::atomic<std::size_t> counted = 0;

void count_one() noexcept
{
    counted.store(counted.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

} // namespace

std::size_t allocations::count() noexcept
{
    return counted.load(std::memory_order_relaxed);
}

extern "C" {

// The C library's own, under the names that it keeps for programs that replace them.
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *old, std::size_t size);

void *malloc(std::size_t size)
{
    count_one();
    return __libc_malloc(size);
}

void *calloc(std::size_t count, std::size_t size)
{
    count_one();
    return __libc_calloc(count, size);
}

void *realloc(void *old, std::size_t size)
{
    count_one();
    return __libc_realloc(old, size);
}
}
