// A receipt's copy as a page of its own.
#ifndef QELRCPT_TOOLS_HTML_PAGE_H
#define QELRCPT_TOOLS_HTML_PAGE_H

#include "writing/html_copy.h"

#include <string>

namespace tool
{

// A complete page that fetches nothing.
std::string html_page(const html_copy &copy);

} // namespace tool

#endif
