// The columns of the Moneris processor's e-commerce receipt: the table of items, and the addresses.
#ifndef QEL_RCPT_MONERIS_ECOMM_HPP
#define QEL_RCPT_MONERIS_ECOMM_HPP

#include <cstddef>
#include <iterator>
#include <string_view>

namespace qel_rcpt::moneris_ecomm
{

// A member of the receipt data and its place on the receipt.
struct column {
    const char *name;
    std::size_t width; // in characters
    bool holds_amount = false;
};

// In the table, labels of amounts stand in the column Amount and their values in the column
// Subtotal, which the total shares with its currency.
inline constexpr std::size_t label_width = 14;
inline constexpr std::size_t value_width = 8;
inline constexpr std::size_t currency_width = 3;
inline constexpr std::size_t total_width = value_width - currency_width;

inline constexpr column items[] = {{"sku", 8},
                                   {"descr", 27},
                                   {"qty", 5},
                                   {"amount", label_width, true},
                                   {"subtotal", value_width, true}};
inline constexpr column fees[] = {{"name", label_width}, {"val", value_width, true}};

inline constexpr const char *table_rule =
    "----------------------------------------------------------------------";
inline constexpr const char *table_heading =
    "| Item     Description                 Qty   Amount         Subtotal |";
inline constexpr const char *to_amount_column = "|                                            ";
inline constexpr const char *table_edge = " |";

// Who pays on the left, who gets the goods on the right.
struct address_row {
    column bill;
    column ship;
};

constexpr address_row address(const char *bill, const char *ship)
{
    return {{bill, 34}, {ship, 35}};
}

inline constexpr address_row addresses[] = {
    address("bill_name", "ship_name"),   address("bill_addr1", "ship_addr1"),
    address("bill_addr2", "ship_addr2"), address("bill_addr3", "ship_addr3"),
    address("bill_city", "ship_city"),   address("bill_state", "ship_state"),
    address("bill_zip", "ship_zip"),     address("bill_country", "ship_country"),
};

// Whether the columns of an item, with a blank in front of each, are those of the heading.
constexpr bool fits_heading()
{
    constexpr std::string_view heading = table_heading;
    constexpr std::string_view words[] = {"Item", "Description", "Qty", "Amount", "Subtotal"};
    std::size_t at = 1;
    for (std::size_t i = 0; i < std::size(items); at += 1 + items[i].width, ++i) {
        if (heading.find(words[i]) != at + 1)
            return false;
    }
    return at + std::string_view(table_edge).size() == heading.size() &&
           heading.size() == std::string_view(table_rule).size() &&
           heading.find("Amount") == std::string_view(to_amount_column).size();
}
static_assert(fits_heading());

} // namespace qel_rcpt::moneris_ecomm

#endif
