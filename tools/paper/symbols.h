// The modules of QR codes and barcodes.
#ifndef QELRCPT_TOOLS_SYMBOLS_H
#define QELRCPT_TOOLS_SYMBOLS_H

#include <optional>
#include <string>
#include <vector>

namespace paper
{

// Rows from top to bottom, true for a dark module; without blank ones around.
using modules = std::vector<std::vector<bool>>;

// The error correction is 0 for L to 3 for H. Absent where no code holds the text.
std::optional<modules> qr_modules(const std::string &text, unsigned level);

// One row. Absent for characters that CODE128 does not have, and for more than fit.
std::optional<modules> code128_modules(const std::string &text);

} // namespace paper

#endif
