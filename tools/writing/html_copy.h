// One copy of a receipt as HTML, to be shown by itself.
#ifndef QELRCPT_TOOLS_HTML_COPY_H
#define QELRCPT_TOOLS_HTML_COPY_H

#include "writing/render.h"

#include <string>
#include <string_view>

namespace tool
{

// All texts are HTML, fit for the content of an element and for an attribute.
struct html_copy {
    receipt shown;
    std::string_view lang;  // such as "en"
    std::string title;      // the merchant, what was done, and whose copy it is
    std::string signature;  // what the line to sign on is called
    std::string entry_mode; // in words; empty: the receipt's letter is not a known one
    bool is_approved;       // in part at least
};

// The customer's copy, or the merchant's when the layout has that alone.
html_copy render_html_copy(Qel_hash_dict_t *record, const Qel_rcpt_config_t &config, layout layout);

// Text as the library writes it into HTML: repaired, markup escaped, on one line.
std::string as_html(const std::string &text);

} // namespace tool

#endif
