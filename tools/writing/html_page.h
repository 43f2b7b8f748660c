// A receipt's HTML blocks as a page of their own.
#ifndef QELRCPT_TOOLS_HTML_PAGE_H
#define QELRCPT_TOOLS_HTML_PAGE_H

#include "writing/render.h"

#include <string>
#include <string_view>

namespace tool
{

// What a browser calls the page of one copy: the merchant, what was done, and whose copy it is.
std::string html_title(const Qel_hash_dict_t *record, Qel_rcpt_lang_t lang, bool is_customer_copy);

// A complete page that fetches nothing. The blocks are those of one copy, whose language it has:
// their ids come once in a page. The title is plain text.
std::string html_page(const receipt &blocks, Qel_rcpt_lang_t lang, std::string_view title);

} // namespace tool

#endif
