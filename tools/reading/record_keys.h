// What the command says of record keys.
#ifndef QELRCPT_TOOLS_RECORD_KEYS_H
#define QELRCPT_TOOLS_RECORD_KEYS_H

#include <string>
#include <string_view>

namespace tool
{

// The record key that was probably meant, whatever the case of its letters; empty when none is
// near.
std::string_view nearest_record_key(std::string_view key);

// The keys, one a line, each with its meaning.
std::string listed_record_keys();

} // namespace tool

#endif
