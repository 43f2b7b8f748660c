#include "writing/html_tree.h"

#include <algorithm>
#include <cstddef>

namespace tool
{

namespace
{

class reader
{
  public:
    explicit reader(std::string_view html) : rest_(html) {}

    html_element read_element()
    {
        html_element element;
        take_until('<');
        const std::string_view tag = take_until('>');
        element.id = attribute(tag, " id=\"");
        element.classes = attribute(tag, " class=\"");
        const std::string_view text = rest_.substr(0, rest_.find('<'));
        rest_.remove_prefix(text.size());
        while (!rest_.empty() && !rest_.starts_with("</")) {
            element.children.push_back(read_element());
            rest_.remove_prefix(std::min(rest_.find('<'), rest_.size()));
        }
        if (element.children.empty())
            element.text = text;
        take_until('>');
        return element;
    }

  private:
    // What is before the character, which is skipped.
    std::string_view take_until(char end)
    {
        const std::string_view taken = rest_.substr(0, rest_.find(end));
        rest_.remove_prefix(std::min(taken.size() + 1, rest_.size()));
        return taken;
    }

    static std::string_view attribute(std::string_view tag, std::string_view begin)
    {
        const size_t at = tag.find(begin);
        if (at == std::string_view::npos)
            return "";
        tag.remove_prefix(at + begin.size());
        return tag.substr(0, tag.find('"'));
    }

    std::string_view rest_;
};

} // namespace

bool html_element::is(std::string_view class_name) const
{
    std::string_view words = classes;
    while (!words.empty()) {
        const std::string_view word = words.substr(0, words.find(' '));
        if (word == class_name)
            return true;
        words.remove_prefix(std::min(word.size() + 1, words.size()));
    }
    return false;
}

html_element read_html_block(std::string_view block)
{
    return reader(block).read_element();
}

} // namespace tool
