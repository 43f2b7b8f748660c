#include "writing/document.h"

#include "writing/safe_text.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tool
{

namespace
{

struct copy_name {
    std::string_view prefix; // of the blocks' keys
    std::string_view name;
};

constexpr copy_name copies[] = {{"cust_", "customer"}, {"merch_", "merchant"}};

bool is_data(const receipt &shown)
{
    return shown.form->name == "json";
}

// Texts are put where they stay at once: those of a large record, which both copies show, would
// otherwise be in memory several times.

qel::text replaced(std::string_view terminated, const std::string &from, const std::string &to)
{
    return qel::text(Qel_strdup_replace_str(terminated.data(), from.c_str(), to.c_str()));
}

std::string with_line_breaks(std::string text, const std::string &eol)
{
    return eol == "\n" ? std::move(text) : replaced(text, "\n", eol).get();
}

// Appends the copy's blocks with a blank line between each two; false when there is nothing.
bool append_copy(std::string &text, const receipt &shown, std::string_view prefix,
                 const std::string &eol)
{
    const size_t begin = text.size();
    for (const block &part : shown.blocks) {
        if (!part.key.starts_with(prefix))
            continue;
        if (text.size() > begin)
            text.append(eol).append(eol);
        if (shown.line_break == eol)
            text += part.text;
        else
            text += replaced(part.text, shown.line_break, eol).get();
    }
    return text.size() > begin;
}

// Somewhat more than the blocks take.
size_t expected_size(const std::vector<receipt> &receipts)
{
    size_t size = 0;
    for (const receipt &shown : receipts) {
        for (const block &part : shown.blocks)
            size += part.text.size() + part.text.size() / 16 + 64;
    }
    return size;
}

// "- - - -": as wide as the receipt and the same from both ends.
std::string cut_line(size_t width)
{
    std::string line(width, ' ');
    for (size_t i = 0; i < (width + 1) / 2; i += 2)
        line[i] = line[width - 1 - i] = '-';
    return line;
}

// The copies one after the other, what divides them in between.
std::string joined_copies(const std::vector<receipt> &receipts, const std::string &eol,
                          std::string (*divider)(const receipt &next))
{
    std::string text;
    text.reserve(expected_size(receipts));
    for (const receipt &shown : receipts) {
        for (const auto &[prefix, name] : copies) {
            const size_t end = text.size();
            if (end > 0)
                text.append(eol).append(divider(shown)).append(eol).append(eol);
            if (append_copy(text, shown, prefix, eol))
                text += eol;
            else
                text.resize(end);
        }
    }
    return text;
}

std::string member(std::string_view name, std::string_view value)
{
    return std::string(1, '"').append(name).append("\": ").append(value);
}

// "{...}" or "[...]" of the parts, each on lines of its own.
std::string enclosed(char opening, const std::vector<std::string> &parts, char closing)
{
    std::string text(1, opening);
    for (const std::string &part : parts)
        text.append(&part == &parts.front() ? "\n" : ",\n").append(part);
    return text.append(parts.empty() ? "" : "\n").append(1, closing);
}

// The JSON text with each of its line breaks and the blanks after it replaced. There are none
// inside of its texts.
std::string indented(std::string_view json, std::string_view line_break)
{
    std::string text;
    for (size_t begin = 0; begin < json.size();) {
        const size_t end = std::min(json.find('\n', begin), json.size());
        text += json.substr(begin, end - begin);
        if (end == json.size())
            break;
        text += line_break;
        begin = end + 1;
    }
    return text;
}

std::string on_one_line(std::string_view json)
{
    std::string text;
    for (size_t begin = 0; begin < json.size();) {
        const size_t end = std::min(json.find('\n', begin), json.size());
        text += json.substr(begin, end - begin);
        if (text.ends_with(','))
            text += ' ';
        begin = std::min(json.find_first_not_of("\n ", end), json.size());
    }
    return text;
}

// A receipt's blocks by their keys, its lines behind the indent.
std::string json_object(const receipt &shown, const std::string &indent)
{
    std::string text = "{";
    for (const block &part : shown.blocks) {
        text.append(&part == &shown.blocks.front() ? "\n" : ",\n").append(indent).append("  ");
        append_json_text(text, part.key);
        text += ": ";
        if (is_data(shown))
            text += indented(part.text, "\n" + indent + "  ");
        else
            append_json_text(text, part.text);
    }
    return shown.blocks.empty() ? "{}" : text + "\n" + indent + "}";
}

} // namespace

std::string text_document(const std::vector<receipt> &receipts, const std::string &eol)
{
    return joined_copies(receipts, eol, [](const receipt &next) { return cut_line(next.width); });
}

std::string html_document(const std::vector<receipt> &receipts, const std::string &eol)
{
    return joined_copies(receipts, eol,
                         [](const receipt &) { return std::string("<hr class=\"rcpt_cut\">"); });
}

std::string xml_document(const std::vector<receipt> &receipts, const std::string &eol)
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    text.reserve(expected_size(receipts));
    const bool are_several = receipts.size() > 1;
    if (are_several)
        text += "<receipts>\n";
    for (const receipt &shown : receipts) {
        text += "<receipt>\n";
        for (const auto &[prefix, name] : copies) {
            const size_t end = text.size();
            text.append("<").append(name).append(">\n");
            if (append_copy(text, shown, prefix, "\n"))
                text.append("\n</").append(name).append(">\n");
            else
                text.resize(end);
        }
        text += "</receipt>\n";
    }
    if (are_several)
        text += "</receipts>\n";
    return with_line_breaks(std::move(text), eol);
}

std::string json_document(const std::vector<receipt> &receipts, const std::string &eol)
{
    std::vector<std::string> objects;
    for (const receipt &shown : receipts) {
        std::vector<std::string> members;
        for (const auto &[prefix, name] : copies) {
            std::vector<std::string> blocks;
            for (const block &part : shown.blocks) {
                if (part.key.starts_with(prefix))
                    blocks.push_back(member(part.key.substr(prefix.size()), part.text));
            }
            if (!blocks.empty())
                members.push_back(member(name, enclosed('{', blocks, '}')));
        }
        objects.push_back(enclosed('{', members, '}'));
    }
    std::string text =
        objects.size() == 1 ? std::move(objects.front()) : enclosed('[', objects, ']');
    return with_line_breaks(std::move(text += '\n'), eol);
}

std::string as_json(const std::vector<receipt> &receipts)
{
    if (receipts.size() == 1)
        return json_object(receipts.front(), "") + "\n";
    std::vector<std::string> objects;
    objects.reserve(receipts.size());
    for (const receipt &shown : receipts)
        objects.push_back("  " + json_object(shown, "  "));
    return enclosed('[', objects, ']') + "\n";
}

void append_json_block(std::string &json, const receipt &shown, const block &block)
{
    if (is_data(shown))
        json += on_one_line(block.text);
    else
        append_json_text(json, block.text);
}

} // namespace tool
