#include "writing/playground.h"

#include "writing/safe_text.h"

#include <qel_rcpt_keys.hpp>
#include <qel_rcpt_tables.hpp>
#include <qelstdlib_json.hpp>

#include <string_view>

// share/playground.html becomes part of the command as it is.
asm(".pushsection .rodata\n"
    ".global qelrcpt_playground_begin, qelrcpt_playground_end\n"
    ".hidden qelrcpt_playground_begin, qelrcpt_playground_end\n"
    "qelrcpt_playground_begin:\n"
    ".incbin \"" QELRCPT_PLAYGROUND "\"\n"
    "qelrcpt_playground_end:\n"
    ".popsection\n");

extern "C" {
extern const char qelrcpt_playground_begin[];
extern const char qelrcpt_playground_end[];
}

namespace tool
{

namespace
{

// Where the page has what it opens with: JSON in an element of its own.
constexpr std::string_view opening = R"(<script type="application/json" id="given">)";
constexpr std::string_view nothing = "null";

void append_member(std::string &json, std::string_view name, const std::string &value)
{
    json.append(json.ends_with('{') ? "" : ", ");
    append_json_text(json, name);
    json.append(": ").append(value);
}

std::string json_text(std::string_view text)
{
    std::string json;
    append_json_text(json, text);
    return json;
}

// Which values a document has: the page makes texts of numbers, as the command does of those that
// are nested in a file, and not of those in a text.
struct values_handler : qel::json_handler {
    void value(qel::json_kind kind, std::string_view /*text*/, size_t /*offset*/)
    {
        are_texts = are_texts && (kind == qel::json_kind::string || kind == qel::json_kind::null);
    }
    bool are_texts = true;
};

bool is_shown_as_document(std::string_view key, std::string_view value)
{
    if (!qel_rcpt::is_document(key) || (!value.starts_with('{') && !value.starts_with('[')))
        return false;
    values_handler values;
    return qel::json_reader(value, values).read().problem == qel::json_problem::none &&
           values.are_texts;
}

// A key a line; documents as such, on whose last line a comment may stand.
std::string record_json(const Qel_hash_dict_t *record)
{
    std::string json = "{";
    for (const auto [key, value] : qel::pairs(record)) {
        json.append(json.ends_with('{') ? "\n  " : ",\n  ").append(json_text(key)).append(": ");
        if (is_shown_as_document(key, value))
            json.append(value).append(
                std::string_view(value).find("//") == std::string_view::npos ? "" : "\n");
        else
            json += json_text(value);
    }
    return json + "\n}\n";
}

// Under the names of the page's settings.
std::string config_json(const Qel_rcpt_config_t &config, const std::string &timezone)
{
    std::string json = "{";
    append_member(json, "customerLanguage",
                  json_text(qel_rcpt::language_of(config.cust_lang).code));
    append_member(json, "merchantLanguage",
                  json_text(qel_rcpt::language_of(config.merch_lang).code));
    append_member(json, "country", json_text(std::to_string(config.country_code)));
    append_member(json, "currency", json_text(std::to_string(config.currency_code)));
    append_member(json, "industry", json_text(industry_words(config.industry)));
    if (!timezone.empty())
        append_member(json, "timeZone", json_text(timezone));
    return json + "}";
}

std::string layout_json(const layout &layout)
{
    const bool are_both = layout.customer_copy && layout.merchant_copy;
    const char *const one = layout.customer_copy ? "customer" : "merchant";
    std::string json = "{";
    append_member(json, "forms", std::string(R"([")").append(layout.form->name).append(R"("])"));
    append_member(json, "copies", json_text(are_both ? "both" : one));
    append_member(json, "width", std::to_string(layout.width));
    return json + "}";
}

// Nothing in it ends the element that it stands in, or is taken for a comment.
std::string for_element(const std::string &json)
{
    std::string text;
    for (const char byte : json) {
        if (byte == '<')
            text += "\\u003c";
        else
            text += byte;
    }
    return text;
}

} // namespace

std::string playground(const record_file &file, const Qel_rcpt_config_t &config,
                       const merchant &options, const additions &added, const layout &layout)
{
    const bool is_completed = added.under.record || !added.over.empty();
    const std::string &timezone = timezone_name(options, file.merchant, added.under.merchant);

    std::string json = "{";
    append_member(json, "text",
                  json_text(is_completed ? record_json(file.record.get()) : file.text));
    append_member(json, "config", config_json(config, timezone));
    append_member(json, "layout", layout_json(layout));
    json += "}";

    std::string page(qelrcpt_playground_begin, qelrcpt_playground_end);
    const size_t at = page.find(opening) + opening.size();
    return page.replace(at, nothing.size(), for_element(json));
}

} // namespace tool
