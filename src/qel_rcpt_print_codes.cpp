// The printers' languages, from Epson's ESC/POS command reference and Star's StarPRNT command
// specifications, and the sizes of the codes that they draw.
#include "qel_rcpt_print_codes.hpp"
#include "qel_rcpt_chars.hpp"
#include "qel_rcpt_tables.hpp"

#include <algorithm>
#include <array>

using qel_rcpt::barcode;
using qel_rcpt::printer_language;
using qel_rcpt::qr_code;
using namespace std::string_view_literals;

// The bytes that begin a command, to be followed by its letters.
#define ESC "\x1B"
#define FS "\x1C"
#define GS "\x1D"
#define RS "\x1E"
#define NUL "\0"

namespace
{

void append_bytes(std::string &out, std::initializer_list<std::size_t> bytes)
{
    for (const std::size_t byte : bytes)
        out += static_cast<char>(static_cast<unsigned char>(byte));
}

// 0 for L to 3 for H.
std::size_t index_of(Qel_rcpt_qr_level_t level)
{
    return static_cast<std::size_t>(level) - QEL_RCPT_QR_LEVEL_L;
}

constexpr std::size_t barcode_height = 80; // dots: a centimetre

// ESC/POS

void escpos_feed(std::string &out, unsigned lines)
{
    if (lines > 0)
        append_bytes(out.append(ESC "d"), {lines});
}

void escpos_logo_by_number(std::string &out, std::uint8_t number)
{
    append_bytes(out.append(FS "p"), {number, 0});
}

void escpos_logo_by_key(std::string &out, std::string_view key)
{
    out.append(GS "(L\x06" NUL "0E"sv).append(key).append("\x01\x01");
}

// Height, module width, characters below in font A, then the code with its code set.
void escpos_barcode(std::string &out, const barcode &code)
{
    std::string data(code.by_pairs ? "{C" : "{B");
    for (std::size_t i = 0; i < code.text.size(); ++i) {
        if (code.by_pairs) {
            const auto digit = [&](std::size_t at) { return code.text[at] - '0'; };
            data += static_cast<char>(digit(i) * 10 + digit(i + 1));
            ++i;
            continue;
        }
        if (code.text[i] == '{') // itself begins a code set
            data += '{';
        data += code.text[i];
    }
    append_bytes(out.append(GS "h"), {barcode_height});
    append_bytes(out.append(GS "w"), {code.module});
    out.append(GS "H\x02" GS "f\0"sv);
    append_bytes(out.append(GS "kI"), {data.size()});
    out.append(data);
}

// Model 2, module, level, text, print.
void escpos_qr(std::string &out, const qr_code &code)
{
    const std::size_t len = code.text.size() + 3;
    out.append(GS "(k\x04" NUL "1A2\0"sv);
    append_bytes(out.append(GS "(k\x03" NUL "1C"sv), {code.module});
    append_bytes(out.append(GS "(k\x03" NUL "1E"sv), {'0' + index_of(code.level)});
    append_bytes(out.append(GS "(k"), {len & 0xFFU, len >> 8U});
    out.append("1P0").append(code.text).append(GS "(k\x03" NUL "1Q0"sv);
}

constexpr printer_language escpos = {
    .start = ESC "@" FS "." ESC "R\0"sv,
    .select_page = ESC "t",
    .font_a = ESC "M\0"sv,
    .font_b = ESC "M\x01",
    .styles = {{},
               {ESC "E\x01", ESC "E\0"sv},
               {ESC "E\x01" GS "!\x01", GS "!" NUL ESC "E\0"sv},
               {GS "B\x01", GS "B\0"sv}},
    .center = ESC "a\x01",
    .left = ESC "a\0"sv,
    .drawer_1 = ESC "p\0\x32\xFA"sv, // on for 100 ms, off for 500 ms
    .drawer_2 = ESC "p\x01\x32\xFA",
    .full_cut = GS "VA\0"sv,
    .partial_cut = GS "VB\0"sv,
    .most_qr_module = qel_rcpt::most_escpos_qr_module,
    .feed = escpos_feed,
    .logo_by_number = escpos_logo_by_number,
    .logo_by_key = escpos_logo_by_key,
    .barcode = escpos_barcode,
    .qr = escpos_qr,
};

// StarPRNT

void star_feed(std::string &out, unsigned lines)
{
    constexpr unsigned most = 127; // at once
    for (; lines > 0; lines -= std::min(lines, most))
        append_bytes(out.append(ESC "a"), {std::min(lines, most)});
}

void star_logo_by_number(std::string &out, std::uint8_t number)
{
    append_bytes(out.append(ESC FS "p"), {number, 0});
}

// The printer chooses the code sets. Characters below, then a line feed; '%' is its own escape.
void star_barcode(std::string &out, const barcode &code)
{
    append_bytes(out.append(ESC "b\x06\x02"), {code.module - 1U, barcode_height});
    for (const char chr : code.text)
        out.append(chr == '%' ? "%0"sv : std::string_view(&chr, 1));
    out += '\x1E';
}

// Model 2, level, module, text, print.
void star_qr(std::string &out, const qr_code &code)
{
    const std::size_t len = code.text.size();
    out.append(ESC GS "yS0\x02");
    append_bytes(out.append(ESC GS "yS1"), {index_of(code.level)});
    append_bytes(out.append(ESC GS "yS2"), {code.module});
    append_bytes(out.append(ESC GS "yD1\0"sv), {len & 0xFFU, len >> 8U});
    out.append(code.text).append(ESC GS "yP");
}

constexpr printer_language starprnt = {
    .start = ESC "@" ESC "R\0"sv,
    .select_page = ESC GS "t",
    .font_a = ESC RS "F\0"sv,
    .font_b = ESC RS "F\x01",
    .styles = {{},
               {ESC "E", ESC "F"},
               {ESC "E" ESC "h\x01", ESC "h" NUL ESC "F"sv},
               {ESC "4", ESC "5"}},
    .center = ESC GS "a\x01",
    .left = ESC GS "a\0"sv,
    .drawer_1 = "\x07",
    .drawer_2 = "\x1A",
    .full_cut = ESC "d\x02",
    .partial_cut = ESC "d\x03",
    .most_qr_module = qel_rcpt::most_starprnt_qr_module,
    .feed = star_feed,
    .logo_by_number = star_logo_by_number,
    .logo_by_key = nullptr,
    .barcode = star_barcode,
    .qr = star_qr,
};

// Bytes that a QR code holds (ISO/IEC 18004), by its version and the level from L to H.
constexpr std::array<std::uint16_t, 4> qr_capacities[] = {
    {17, 14, 11, 7},          {32, 26, 20, 14},         {53, 42, 32, 24},
    {78, 62, 46, 34},         {106, 84, 60, 44},        {134, 106, 74, 58},
    {154, 122, 86, 64},       {192, 152, 108, 84},      {230, 180, 130, 98},
    {271, 213, 151, 119},     {321, 251, 177, 137},     {367, 287, 203, 155},
    {425, 331, 241, 177},     {458, 362, 258, 194},     {520, 412, 292, 220},
    {586, 450, 322, 250},     {644, 504, 364, 280},     {718, 560, 394, 310},
    {792, 624, 442, 338},     {858, 666, 482, 382},     {929, 711, 509, 403},
    {1003, 779, 565, 439},    {1091, 857, 611, 461},    {1171, 911, 661, 511},
    {1273, 997, 715, 535},    {1367, 1059, 751, 593},   {1465, 1125, 805, 625},
    {1528, 1190, 868, 658},   {1628, 1264, 908, 698},   {1732, 1370, 982, 742},
    {1840, 1452, 1030, 790},  {1952, 1538, 1112, 842},  {2068, 1628, 1168, 898},
    {2188, 1722, 1228, 958},  {2303, 1809, 1283, 983},  {2431, 1911, 1351, 1051},
    {2563, 1989, 1423, 1093}, {2699, 2099, 1499, 1139}, {2809, 2213, 1579, 1219},
    {2953, 2331, 1663, 1273},
};

// Modules across a code with the text as bytes and four blank ones on each side; 0 where none holds
// it.
std::size_t qr_modules(std::size_t len, Qel_rcpt_qr_level_t level)
{
    const auto *version = std::ranges::find_if(
        qr_capacities, [&](const auto &capacity) { return len <= capacity[index_of(level)]; });
    if (version == std::end(qr_capacities))
        return 0;
    constexpr std::size_t first_version = 21;
    constexpr std::size_t quiet_zone = 4;
    const auto later = static_cast<std::size_t>(version - std::begin(qr_capacities));
    return first_version + 4 * later + 2 * quiet_zone;
}

} // namespace

const printer_language *qel_rcpt::find_printer_language(Qel_rcpt_printer_lang_t lang)
{
    switch (lang) {
    case QEL_RCPT_PRINTER_LANG_ESCPOS:
        return &escpos;
    case QEL_RCPT_PRINTER_LANG_STARPRNT:
        return &starprnt;
    }
    return nullptr;
}

std::optional<qr_code> qel_rcpt::fit_qr_code(std::string_view text, Qel_rcpt_qr_level_t level,
                                             std::uint8_t module, std::size_t dots)
{
    constexpr std::size_t usual_module = 6;
    if (level == QEL_RCPT_QR_LEVEL_DEFAULT)
        level = QEL_RCPT_QR_LEVEL_M;
    const std::size_t modules = qr_modules(text.size(), level);
    if (modules == 0)
        return std::nullopt;
    const std::size_t fitting = dots / modules;
    const std::size_t chosen = module == 0 ? std::min(fitting, usual_module) : module;
    if (chosen == 0 || chosen > fitting)
        return std::nullopt;
    return qr_code{text, level, static_cast<std::uint8_t>(chosen)};
}

// Start, check and stop characters have 35 modules, every other 11, and ten stay blank on each
// side.
std::optional<barcode> qel_rcpt::fit_barcode(std::string_view text, std::size_t dots)
{
    constexpr std::size_t longest = 120; // more fit on no paper
    if (text.empty() || text.size() > longest || !is_visible_ascii(text))
        return std::nullopt;
    const bool by_pairs =
        text.size() >= 4 && text.size() % 2 == 0 && std::ranges::all_of(text, is_digit);
    const std::size_t modules = 35 + 20 + 11 * (by_pairs ? text.size() / 2 : text.size());
    constexpr std::uint8_t wide = 3;
    constexpr std::uint8_t narrow = 2;
    if (modules * narrow > dots)
        return std::nullopt;
    return barcode{text, by_pairs, modules * wide <= dots ? wide : narrow};
}
