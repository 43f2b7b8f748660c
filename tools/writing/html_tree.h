// The HTML of a block as a tree again, for what has to be laid out in another way.
#ifndef QELRCPT_TOOLS_HTML_TREE_H
#define QELRCPT_TOOLS_HTML_TREE_H

#include <string_view>
#include <vector>

namespace tool
{

// An element that the library writes, with views into its HTML: texts stay escaped.
struct html_element {
    std::string_view id;
    std::string_view classes;
    std::string_view text; // of an element that holds no others
    std::vector<html_element> children;

    bool is(std::string_view class_name) const;
};

// The only element of a block. Takes what the library writes: elements with attributes in double
// quotes, each with an end tag, and texts without "<".
html_element read_html_block(std::string_view block);

} // namespace tool

#endif
