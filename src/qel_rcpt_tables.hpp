// The library's facts, each in one place: languages, currencies, countries with rules of their own,
// industries, forms and what printers are told. The command, the packages for other languages and
// the tests read them too. CONTRIBUTING.md says what stands beside a row.
#ifndef QEL_RCPT_TABLES_HPP
#define QEL_RCPT_TABLES_HPP

#include <qel_rcpt.h>
#include <qel_rcpt_check.h>
#include <qel_rcpt_print.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string_view>

namespace qel_rcpt
{

// By language number, which is the catalogue's column too.
struct language {
    Qel_rcpt_lang_t id;
    const char *code; // ISO 639-1
    const char *name;
};
inline constexpr language languages[] = {
    {QEL_RCPT_LANG_EN, "en", "English"}, {QEL_RCPT_LANG_FR, "fr", "French"},
    {QEL_RCPT_LANG_ES, "es", "Spanish"}, {QEL_RCPT_LANG_DE, "de", "German"},
    {QEL_RCPT_LANG_IT, "it", "Italian"},
};

// The first for a number that is none.
constexpr const language &language_of(Qel_rcpt_lang_t id)
{
    const auto *known = std::ranges::find(languages, id, &language::id);
    return known == std::end(languages) ? languages[0] : *known;
}

// How a currency is written. One without a row is written as the first.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): a row reads so
struct currency {
    std::uint32_t code; // ISO 4217, numeric
    const char *name;   // ISO 4217, alphabetic
    const char *symbol; // UTF-8
    char dec;           // between units and hundredths
};
inline constexpr currency currencies[] = {
    {840, "USD", "$", '.'},
    {124, "CAD", "$", '.'},
    {978, "EUR", "€", ','},
    {826, "GBP", "£", '.'},
};

// A country that the command knows by name, and its rules. The first is that of a copy without a
// configuration; one without a row has none of the rules.
struct country {
    std::uint32_t code; // ISO 3166-1, numeric
    const char *alpha2;
    const char *alpha3;
    std::uint32_t own_currency;                  // ISO 4217, numeric
    bool month_first;                            // in dates
    std::optional<Qel_rcpt_lang_t> symbol_right; // the language in which its own currency's symbol
                                                 // follows the amount
};
inline constexpr country countries[] = {
    {840, "US", "USA", 840, true, {}},
    {124, "CA", "CAN", 124, false, QEL_RCPT_LANG_FR},
    {826, "GB", "GBR", 826, false, {}},
};

// The merchant's industries, by the names that configurations use.
struct industry {
    const char *name;
    Qel_rcpt_ind_t bit;
};
inline constexpr industry industries[] = {
    {"retail", QEL_RCPT_IND_RETAIL},   {"mail", QEL_RCPT_IND_MAIL},
    {"ecomm", QEL_RCPT_IND_ECOMM},     {"restaurant", QEL_RCPT_IND_RESTAURANT},
    {"lodging", QEL_RCPT_IND_LODGING}, {"autofuel", QEL_RCPT_IND_AUTOFUEL},
    {"grocery", QEL_RCPT_IND_GROCERY}, {"selfserv", QEL_RCPT_IND_SELFSERV},
    {"unknown", QEL_RCPT_IND_UNKNOWN},
};

// A form of receipt.
struct form {
    std::string_view name;                    // as the command calls it
    std::string_view generator;               // the exported operation
    std::span<const std::string_view> blocks; // in the order of the receipt
    std::size_t width;                        // in characters; 0: as the caller wants it, or none
    std::string_view line_break;              // within a block; empty: as the caller wants it
    std::string_view ecommerce; // the form that e-commerce merchants get in its place; or empty
    Qel_rcpt_form_t checked_as;
    bool is_text; // lines that a printer takes as they are
};

inline constexpr std::string_view general_blocks[] = {
    "merch_info",  "reference", "items", "order_money", "money",
    "disposition", "signature", "emv",   "notice",      "notes",
};
inline constexpr std::string_view moneris_blocks[] = {
    "merch_info", "type", "money", "reference", "disposition", "signature", "notice",
};
inline constexpr std::string_view moneris_ecomm_blocks[] = {
    "merch_info", "reference", "line_items", "customer_info", "refund_policy",
};

inline constexpr form forms[] = {
    {"plain", "Qel_rcpt_generate_plain", general_blocks, 0, "", "", QEL_RCPT_FORM_GENERAL, true},
    {"html", "Qel_rcpt_generate_html", general_blocks, 0, "\n", "", QEL_RCPT_FORM_GENERAL, false},
    {"xml", "Qel_rcpt_generate_xml", general_blocks, 0, "\n", "", QEL_RCPT_FORM_GENERAL, false},
    {"json", "Qel_rcpt_generate_json", general_blocks, 0, "\n", "", QEL_RCPT_FORM_GENERAL, false},
    {"moneris", "Qel_rcpt_generate_plain_moneris", moneris_blocks, 40, "\r\n", "moneris-ecomm",
     QEL_RCPT_FORM_MONERIS, true},
    {"moneris-ecomm", "Qel_rcpt_generate_plain_moneris_ecomm", moneris_ecomm_blocks, 70, "\r\n", "",
     QEL_RCPT_FORM_MONERIS_ECOMM, true},
};

// What a printer is told, by the names of the options' values.
template <typename Id>
struct named {
    const char *name;
    Id id;
};
inline constexpr named<Qel_rcpt_printer_lang_t> printer_languages[] = {
    {"escpos", QEL_RCPT_PRINTER_LANG_ESCPOS},
    {"star", QEL_RCPT_PRINTER_LANG_STARPRNT},
};
inline constexpr named<Qel_rcpt_code_page_t> code_pages[] = {
    // the default first
    {"cp858", QEL_RCPT_CODE_PAGE_858},   {"cp437", QEL_RCPT_CODE_PAGE_437},
    {"cp850", QEL_RCPT_CODE_PAGE_850},   {"cp852", QEL_RCPT_CODE_PAGE_852},
    {"cp860", QEL_RCPT_CODE_PAGE_860},   {"cp863", QEL_RCPT_CODE_PAGE_863},
    {"cp865", QEL_RCPT_CODE_PAGE_865},   {"cp866", QEL_RCPT_CODE_PAGE_866},
    {"cp1252", QEL_RCPT_CODE_PAGE_1252}, {"iso8859-15", QEL_RCPT_CODE_PAGE_ISO_8859_15},
};
inline constexpr named<Qel_rcpt_cut_t> cuts[] = {
    {"full", QEL_RCPT_CUT_FULL},
    {"partial", QEL_RCPT_CUT_PARTIAL},
    {"none", QEL_RCPT_CUT_NONE},
};
inline constexpr named<Qel_rcpt_qr_level_t> qr_levels[] = {
    {"L", QEL_RCPT_QR_LEVEL_L},
    {"M", QEL_RCPT_QR_LEVEL_M},
    {"Q", QEL_RCPT_QR_LEVEL_Q},
    {"H", QEL_RCPT_QR_LEVEL_H},
};

// Paper as receipt printers measure it: in characters of font A, which are 12 dots wide. Those of
// font B are narrower.
inline constexpr std::size_t usual_paper_columns = 48; // 80 mm
inline constexpr std::size_t font_a_dots = 12;
inline constexpr std::size_t font_b_dots = 9;

constexpr std::size_t columns_in_font_b(std::size_t paper_columns)
{
    return paper_columns * font_a_dots / font_b_dots;
}

// A QR code's module, in dots.
inline constexpr std::uint8_t most_escpos_qr_module = 16;
inline constexpr std::uint8_t most_starprnt_qr_module = 8;

// By name.
constexpr const form &form_named(std::string_view name)
{
    return *std::ranges::find(forms, name, &form::name);
}

// The row with the code; absent without one.
template <typename Row, std::size_t Count>
constexpr const Row *find_code(const Row (&rows)[Count], std::uint32_t code)
{
    const Row *row = std::ranges::find(rows, code, &Row::code);
    return row == std::end(rows) ? nullptr : row;
}

constexpr const currency &currency_of(std::uint32_t code)
{
    const currency *known = find_code(currencies, code);
    return known == nullptr ? currencies[0] : *known;
}

} // namespace qel_rcpt

#endif
