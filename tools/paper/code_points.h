// Characters as the system's iconv knows them.
#ifndef QELRCPT_TOOLS_CODE_POINTS_H
#define QELRCPT_TOOLS_CODE_POINTS_H

#include "paper/machine.h"

#include <string>
#include <string_view>

namespace paper
{

// The page under iconv's name for it; valid until the end. Throws std::runtime_error for a name
// that iconv does not have.
const page &page_named(const std::string &name);

std::string to_utf8(std::u32string_view text);

} // namespace paper

#endif
