// The numbers of JSON.
#ifndef QELRCPT_TOOLS_DECIMAL_H
#define QELRCPT_TOOLS_DECIMAL_H

#include <string>
#include <string_view>

namespace tool
{

// A JSON number as decimal text without an exponent: 1.0E7 is 10000000, 125e-2 is 1.25. One without
// an exponent, and one that would have more than 400 digits, stays as it is.
std::string decimal_text(std::string_view number);

} // namespace tool

#endif
