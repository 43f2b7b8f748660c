// A receipt's copy as the HTML of a message.
#ifndef QELRCPT_TOOLS_HTML_EMAIL_H
#define QELRCPT_TOOLS_HTML_EMAIL_H

#include "writing/html_copy.h"

#include <string>

namespace tool
{

// A complete document for programs that read mail: a table for the rows of each block, styles in
// the elements and nowhere else, nothing to fetch. It is well-formed XML, too.
std::string html_email(const html_copy &copy);

} // namespace tool

#endif
