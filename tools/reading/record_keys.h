// What the command says of record keys.
#ifndef QELRCPT_TOOLS_RECORD_KEYS_H
#define QELRCPT_TOOLS_RECORD_KEYS_H

#include <string>

namespace tool
{

// The keys, one a line, each with its meaning.
std::string listed_record_keys();

} // namespace tool

#endif
