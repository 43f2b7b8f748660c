#include "writing/document.h"

#include "writing/safe_text.h"

#include <algorithm>
#include <string_view>

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

std::string replaced(const char *text, const std::string &from, const std::string &to)
{
    if (from == to)
        return text;
    return qel::text(Qel_strdup_replace_str(text, from.c_str(), to.c_str())).get();
}

// The copy's blocks with a blank line between each two.
std::string copy_text(const receipt &shown, std::string_view prefix, const std::string &eol)
{
    std::string text;
    for (const block &part : shown.blocks) {
        if (!part.key.starts_with(prefix))
            continue;
        if (!text.empty())
            text += eol + eol;
        text += replaced(part.text.data(), shown.line_break, eol);
    }
    return text;
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
    for (const receipt &shown : receipts) {
        for (const auto &[prefix, name] : copies) {
            const std::string copy = copy_text(shown, prefix, eol);
            if (copy.empty())
                continue;
            if (!text.empty())
                text.append(eol).append(divider(shown)).append(eol).append(eol);
            text.append(copy).append(eol);
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
    const bool are_several = receipts.size() > 1;
    if (are_several)
        text += "<receipts>\n";
    for (const receipt &shown : receipts) {
        text += "<receipt>\n";
        for (const auto &[prefix, name] : copies) {
            const std::string copy = copy_text(shown, prefix, "\n");
            if (copy.empty())
                continue;
            text.append("<").append(name).append(">\n").append(copy);
            text.append("\n</").append(name).append(">\n");
        }
        text += "</receipt>\n";
    }
    if (are_several)
        text += "</receipts>\n";
    return replaced(text.c_str(), "\n", eol);
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
    const std::string text = objects.size() == 1 ? objects.front() : enclosed('[', objects, ']');
    return replaced((text + "\n").c_str(), "\n", eol);
}

std::string as_json(const std::vector<receipt> &receipts)
{
    if (receipts.size() == 1)
        return json_object(receipts.front(), "") + "\n";
    std::vector<std::string> objects;
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
