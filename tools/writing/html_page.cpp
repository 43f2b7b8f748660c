#include "writing/html_page.h"

#include "page_styles.h"

#include <qel_rcpt_int.h>

namespace tool
{

namespace
{

std::string_view language_code(Qel_rcpt_lang_t lang)
{
    switch (lang) {
    case QEL_RCPT_LANG_FR:
        return "fr";
    case QEL_RCPT_LANG_ES:
        return "es";
    case QEL_RCPT_LANG_DE:
        return "de";
    case QEL_RCPT_LANG_IT:
        return "it";
    default:
        return "en";
    }
}

// Fit for the content of an element.
std::string escaped(std::string_view text)
{
    std::string out;
    for (const char chr : text) {
        if (chr == '&')
            out += "&amp;";
        else if (chr == '<')
            out += "&lt;";
        else
            out += chr;
    }
    return out;
}

const char *transaction_type(const Qel_hash_dict_t *record, Qel_rcpt_lang_t lang)
{
    const char *action = Qel_hash_dict_get_direct(record, "action_trans");
    if (Qel_str_isempty(action))
        action = Qel_hash_dict_get_direct(record, "action");
    return Qel_rcpt_get_tran_type(action, lang, Qel_rcpt_get_cardclass(record));
}

} // namespace

std::string html_title(const Qel_hash_dict_t *record, Qel_rcpt_lang_t lang, bool is_customer_copy)
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

std::string html_page(const receipt &blocks, Qel_rcpt_lang_t lang, std::string_view title)
{
    std::string page("<!DOCTYPE html>\n<html lang=\"");
    page.append(language_code(lang)).append("\">\n<head>\n<meta charset=\"utf-8\">\n");
    page += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
            "<meta name=\"color-scheme\" content=\"light\">\n"
            "<meta name=\"format-detection\" content=\"telephone=no\">\n"
            "<meta http-equiv=\"Content-Security-Policy\" "
            "content=\"default-src 'none'; style-src 'unsafe-inline'\">\n";
    page.append("<title>").append(escaped(title)).append("</title>\n");
    page.append("<style>\n").append(receipt_style).append(page_style).append("</style>\n");
    page += "</head>\n<body>\n<main class=\"receipt\">\n";
    for (const block &part : blocks.blocks)
        page.append(part.text).append("\n");
    page += "</main>\n</body>\n</html>\n";
    return page;
}

} // namespace tool
