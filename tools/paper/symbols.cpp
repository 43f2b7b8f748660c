#include "paper/symbols.h"

#include <zint.h>

#include <memory>

namespace paper
{

namespace
{

struct symbol_ender {
    void operator()(zint_symbol *symbol) const { ZBarcode_Delete(symbol); }
};
using symbol = std::unique_ptr<zint_symbol, symbol_ender>;

std::optional<modules> encode(const symbol &made, const std::string &text)
{
    made->input_mode = DATA_MODE;
    const auto *bytes = reinterpret_cast<const unsigned char *>(text.data());
    if (text.empty() ||
        ZBarcode_Encode(made.get(), bytes, static_cast<int>(text.size())) >= ZINT_ERROR)
        return std::nullopt;
    modules rows;
    for (int y = 0; y < made->rows; ++y) {
        std::vector<bool> row(static_cast<size_t>(made->width));
        for (size_t x = 0; x < row.size(); ++x)
            row[x] = (made->encoded_data[y][x / 8] >> (x % 8) & 1) != 0;
        rows.push_back(std::move(row));
    }
    return rows;
}

} // namespace

std::optional<modules> qr_modules(const std::string &text, unsigned level)
{
    const symbol made(ZBarcode_Create());
    made->symbology = BARCODE_QRCODE;
    made->option_1 = static_cast<int>(level) + 1;
    return encode(made, text);
}

std::optional<modules> code128_modules(const std::string &text)
{
    const symbol made(ZBarcode_Create());
    made->symbology = BARCODE_CODE128;
    return encode(made, text);
}

} // namespace paper
