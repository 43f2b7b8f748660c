// What the command lists for who asks what there is.
#ifndef QELRCPT_TOOLS_LISTS_H
#define QELRCPT_TOOLS_LISTS_H

#include <string>

namespace tool
{

// The keys of a record, one a line, each with its meaning.
std::string listed_record_keys();

// The rules of the check, one a line, each with its severity and what it wants.
std::string listed_rules();

} // namespace tool

#endif
