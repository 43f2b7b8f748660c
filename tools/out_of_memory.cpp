#include "out_of_memory.h"

#include "signals.h"
#include "writing/output.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <new>

namespace tool
{

namespace
{

// The library ends without an exception where it asks for memory by another way than new.
bool is_out_of_memory()
{
    const std::exception_ptr cause = std::current_exception();
    if (!cause)
        return true;
    try {
        std::rethrow_exception(cause);
    } catch (const std::bad_alloc &) {
        return true;
    } catch (...) {
        return false;
    }
}

[[noreturn]] void end()
{
    if (!is_out_of_memory())
        std::abort();
    output::end_all();
    removed_by_signals::remove();
    complain_of_memory();
    std::_Exit(1);
}

} // namespace

void prepare_for_out_of_memory()
{
    std::set_terminate(end);
}

void complain_of_memory()
{
    write_all(STDERR_FILENO, "qelrcpt: out of memory\n");
}

} // namespace tool
