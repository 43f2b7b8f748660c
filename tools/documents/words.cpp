#include "documents/words.h"

#include "checking/findings.h"
#include "writing/render.h"

#include <qel_rcpt_keys.hpp>
#include <qel_rcpt_tables.hpp>

#include <cstddef>
#include <string_view>
#include <vector>

namespace documents
{

namespace
{

using texts = std::vector<std::string>;

std::string quoted(std::string_view text)
{
    std::string literal = "'";
    for (const char byte : text) {
        if (byte == '\r' || byte == '\n')
            literal.append(byte == '\r' ? "\\r" : "\\n");
        else
            literal += byte;
    }
    return literal + "'";
}

// In one line where there is room behind what stands before it, otherwise a part a line.
std::string bracketed(char open, const texts &parts, char close, std::size_t indent,
                      std::size_t before)
{
    constexpr std::size_t most_columns = 110;
    const std::string_view gap = open == '{' ? " " : "";
    std::string line = open + std::string(gap);
    std::string lines = open + std::string("\n");
    for (const std::string &part : parts) {
        line.append(part).append(&part == &parts.back() ? gap : ", ");
        lines.append(indent + 2, ' ').append(part).append(",\n");
    }
    line += close;
    const bool has_room =
        line.find('\n') == std::string::npos && indent + before + line.size() + 1 <= most_columns;
    return has_room ? line : lines.append(indent, ' ') + close;
}

// A member's name with its value behind it.
std::string member(std::string_view name, std::string_view value)
{
    const bool is_word = name.find('-') == std::string_view::npos;
    return (is_word ? std::string(name) : quoted(name)).append(": ").append(value);
}

std::string array(std::size_t indent, std::string_view name, const texts &items)
{
    return bracketed('[', items, ']', indent, name.size() + 3);
}

std::string exported(std::string_view name, char open, const texts &parts, char close)
{
    const std::string begin = "export const " + std::string(name) + " = ";
    return "\n" + begin + bracketed(open, parts, close, 0, begin.size()) + ";\n";
}

// The numbers of a table's rows by their names.
template <typename Rows, typename Name, typename Number>
std::string numbers(std::string_view variable, const Rows &rows, Name name, Number number)
{
    texts members;
    for (const auto &row : rows)
        members.push_back(member(row.*name, std::to_string(row.*number)));
    return exported(variable, '{', members, '}');
}

template <typename Id, std::size_t Count>
std::string numbers(std::string_view variable, const qel_rcpt::named<Id> (&rows)[Count])
{
    return numbers(variable, rows, &qel_rcpt::named<Id>::name, &qel_rcpt::named<Id>::id);
}

std::string countries()
{
    texts members;
    for (const qel_rcpt::country &row : qel_rcpt::countries) {
        for (const char *name : {row.alpha2, row.alpha3})
            members.push_back(member(name, std::to_string(row.code)));
    }
    return exported("COUNTRIES", '{', members, '}');
}

std::string form_object(const qel_rcpt::form &form)
{
    texts blocks;
    for (const std::string_view name : tool::blocks_of(form))
        blocks.push_back(quoted(name));
    texts members = {member("blocks", array(4, "blocks", blocks))};
    if (form.is_text)
        members.push_back(member("isText", "true"));
    if (form.width != 0)
        members.push_back(member("width", std::to_string(form.width)));
    if (!form.line_break.empty())
        members.push_back(member("lineBreak", quoted(form.line_break)));
    if (!form.ecommerce.empty())
        members.push_back(member("ecommerce", quoted(form.ecommerce)));
    return bracketed('{', members, '}', 2, form.name.size() + 4);
}

std::string forms()
{
    texts members;
    for (const qel_rcpt::form &row : qel_rcpt::forms)
        members.push_back(member(row.name, form_object(row)));
    return exported("FORMS", '{', members, '}');
}

std::string severities()
{
    texts words;
    for (const auto severity :
         {QEL_RCPT_SEVERITY_NOTE, QEL_RCPT_SEVERITY_WARNING, QEL_RCPT_SEVERITY_ERROR})
        words.push_back(quoted(tool::word_of(severity)));
    return exported("SEVERITIES", '[', words, ']');
}

std::string document_keys()
{
    texts keys;
    for (const qel_rcpt::record_key &key : qel_rcpt::record_keys) {
        if (qel_rcpt::is_document(key.name))
            keys.push_back(quoted(key.name));
    }
    return exported("DOCUMENT_KEYS", '[', keys, ']');
}

} // namespace

std::string javascript_words()
{
    using namespace qel_rcpt;
    return "// Words of the library and what they stand for. Made from its tables by "
           "scripts/update-documents.\n" +
           numbers("LANGUAGES", languages, &language::code, &language::id) + countries() +
           numbers("CURRENCIES", currencies, &currency::name, &currency::code) +
           numbers("INDUSTRIES", industries, &industry::name, &industry::bit) +
           numbers("PRINTER_LANGUAGES", printer_languages) + numbers("CODE_PAGES", code_pages) +
           numbers("CUTS", cuts) + numbers("QR_LEVELS", qr_levels) + "\n// By their numbers.\n" +
           severities().substr(1) + "\n// The keys of a record that hold JSON.\n" +
           document_keys().substr(1) +
           "\n// In the order of their numbers. width: in characters, absent where it is as one "
           "asks;"
           "\n// lineBreak: within a block, likewise; ecommerce: what merchants of that industry "
           "get "
           "instead.\n" +
           forms().substr(1);
}

} // namespace documents
