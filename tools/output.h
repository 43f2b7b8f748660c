// Writing what the command made.
#ifndef QELRCPT_TOOLS_OUTPUT_H
#define QELRCPT_TOOLS_OUTPUT_H

#include <string>
#include <string_view>

namespace tool
{

// Writes to standard output. Throws input_error when not all can be written.
void write_standard_output(std::string_view text);

// Writes to the file, which has either its old content or all of the new at any time; a name that
// stands for something else than a file, such as /dev/stdout, is written to directly. Throws
// input_error.
void write_file(const std::string &name, std::string_view text);

} // namespace tool

#endif
