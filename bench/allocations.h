// Counts the program's heap allocations. Linked into a program, allocations.cpp stands in for
// malloc, calloc and realloc everywhere in it, the libraries and operator new included.
#ifndef QELRCPT_BENCH_ALLOCATIONS_H
#define QELRCPT_BENCH_ALLOCATIONS_H

#include <cstddef>

namespace allocations
{

// Since the program began.
std::size_t count() noexcept;

// Those of one call.
template <typename Call>
std::size_t of(Call &&call)
{
    const std::size_t before = count();
    call();
    return count() - before;
}

} // namespace allocations

#endif
