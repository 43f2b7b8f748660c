// The command line: what it says of the options, and what is refused.
#ifndef QELRCPT_TOOLS_COMMAND_LINE_H
#define QELRCPT_TOOLS_COMMAND_LINE_H

#include "options.h"

#include <string>

namespace tool
{

// Throws usage_error.
options parse_options(int argc, char **argv);

// The help, the version or the list that the command line asks for.
std::string information_text(const options &given);

} // namespace tool

#endif
