// How far a long run is, for people who watch it.
#ifndef QELRCPT_TOOLS_PROGRESS_H
#define QELRCPT_TOOLS_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace tool
{

struct progress {
    uint64_t records = 0;
    uint64_t bytes = 0;                  // of the input
    std::optional<uint64_t> total_bytes; // absent: nobody knows
    std::chrono::duration<double> elapsed{};
};

// One line without its end, at most so many columns wide:
// "[#####     ]  50%  1,000,000 records  52,000/s  0:19 left"
std::string progress_line(const progress &progress, size_t columns);

// The columns of the terminal on standard error.
size_t terminal_columns();

} // namespace tool

#endif
