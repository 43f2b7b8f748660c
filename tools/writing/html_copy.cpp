#include "writing/html_copy.h"

#include <qel_rcpt_int.h>
#include <qel_rcpt_outcome.hpp>
#include <qel_rcpt_tables.hpp>
#include <qelstdlib_formats.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace tool
{

namespace
{

const char *transaction_type(const Qel_hash_dict_t *record, Qel_rcpt_lang_t lang)
{
    const char *action = Qel_hash_dict_get_direct(record, "action_trans");
    if (Qel_str_isempty(action))
        action = Qel_hash_dict_get_direct(record, "action");
    return Qel_rcpt_get_tran_type(action, lang, Qel_rcpt_get_cardclass(record));
}

std::string title_of(const Qel_hash_dict_t *record, Qel_rcpt_lang_t lang, bool is_customer_copy)
{
    std::string title;
    for (const char *part :
         {Qel_hash_dict_get_direct(record, "merch_name"), transaction_type(record, lang),
          Qel_rcpt_get_whos_copy(is_customer_copy, lang)}) {
        if (Qel_str_isempty(part))
            continue;
        if (!title.empty())
            title += " \u2013 ";
        title += part;
    }
    return title;
}

// How the card was read, by the letter of the entry mode.
struct entry_mode {
    const char *letter;
    std::array<const char *, std::size(qel_rcpt::languages)> words; // by Qel_rcpt_lang_t
};

constexpr entry_mode entry_modes[] = {
    {"C", {"Chip", "Puce", "Chip", "Chip", "Chip"}},
    {"T", {"Contactless", "Sans contact", "Sin contacto", "Kontaktlos", "Senza contatto"}},
    {"M", {"Keyed in", "Saisie manuelle", "Entrada manual", "Manuelle Eingabe", "Digitazione"}},
    {"S", {"Swiped", "Bande magnétique", "Banda magnética", "Magnetstreifen", "Banda magnetica"}},
};

static_assert(std::ranges::none_of(entry_modes,
                                   [](const entry_mode &mode) {
                                       return std::ranges::count(mode.words, nullptr) > 0;
                                   }),
              "every entry mode has its word in every language");

std::string entry_mode_of(const Qel_hash_dict_t *record, Qel_rcpt_lang_t lang)
{
    const char *letter = Qel_hash_dict_get_direct(record, "rcpt_entry_mode");
    if (Qel_str_caseeq(letter, "F"))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_CHIP_SWIPED);
    for (const auto &[known, words] : entry_modes) {
        if (Qel_str_caseeq(letter, known))
            return words[lang < words.size() ? lang : QEL_RCPT_LANG_EN];
    }
    return "";
}

} // namespace

html_copy render_html_copy(Qel_hash_dict_t *record, const Qel_rcpt_config_t &config, layout layout)
{
    layout.merchant_copy = !layout.customer_copy;
    const bool is_customer_copy = layout.customer_copy;
    const Qel_rcpt_lang_t lang = is_customer_copy ? config.cust_lang : config.merch_lang;
    return {.shown = render(record, config, layout),
            .lang = qel_rcpt::language_of(lang).code,
            .title = as_html(title_of(record, lang, is_customer_copy)),
            .signature = as_html(Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_SIGNATURE)),
            .entry_mode = as_html(entry_mode_of(record, lang)),
            .is_approved = qel_rcpt::is_approved(record)};
}

std::string as_html(const std::string &text)
{
    constexpr std::string_view begin = "<t>";
    constexpr std::string_view end = "</t>";
    constexpr std::pair<const char *, const char *> replaced[] = {
        {"&apos;", "&#39;"}, {"&#13;", " "}, {"\n", " "}};
    const qel::xml_doc element(Qel_xml_create_element_with_text("t", text.c_str(), 0, nullptr));
    qel::text html(Qel_xml_write(element.get(), QEL_XML_WRITER_NONE, nullptr));
    for (const auto &[xml, shown] : replaced)
        html.reset(Qel_strdup_replace_str(html.get(), xml, shown));
    std::string_view inner = html.get();
    inner.remove_prefix(begin.size());
    inner.remove_suffix(end.size());
    return std::string(inner);
}

} // namespace tool
