// A Markdown document as a manual page.
#ifndef QELRCPT_TOOLS_MANUAL_H
#define QELRCPT_TOOLS_MANUAL_H

#include <string>
#include <string_view>

namespace documents
{

// The sections of the document below its title, as the body of a page for man(7). Knows what our
// documents use: headings, paragraphs, tables, lists, quotations, code, emphasis and links.
std::string manual_body(std::string_view markdown);

} // namespace documents

#endif
