#include "writing/render.h"

#include "writing/safe_text.h"

#include <algorithm>

namespace tool
{

namespace
{

constexpr std::string_view customer_prefix = "cust_";
constexpr std::string_view merchant_prefix = "merch_";

constexpr std::string_view general_blocks[] = {
    "merch_info",  "reference", "items", "order_money", "money",
    "disposition", "signature", "emv",   "notice",      "notes"};

// With those of the e-commerce layout, which e-commerce merchants get.
constexpr std::string_view moneris_blocks[] = {
    "merch_info", "type",   "money",      "reference",     "disposition",
    "signature",  "notice", "line_items", "customer_info", "refund_policy"};

constexpr std::string_view moneris_ecomm_blocks[] = {"merch_info", "reference", "line_items",
                                                     "customer_info", "refund_policy"};

constexpr form_facts form_table[] = {
    {form::plain, "plain", general_blocks, "", 0},
    {form::html, "html", general_blocks, "\n", 0},
    {form::xml, "xml", general_blocks, "\n", 0},
    {form::json, "json", general_blocks, "\n", 0},
    {form::moneris, "moneris", moneris_blocks, "\r\n", 40},
    {form::moneris_ecomm, "moneris-ecomm", moneris_ecomm_blocks, "\r\n", 70},
};

Qel_hash_dict_t *generate(Qel_hash_dict_t *record, const Qel_rcpt_config_t &config,
                          const layout &layout)
{
    switch (layout.form) {
    case form::plain:
        return Qel_rcpt_generate_plain(record, &config, layout.width, layout.line_break.c_str());
    case form::html:
        return Qel_rcpt_generate_html(record, &config);
    case form::xml:
        return Qel_rcpt_generate_xml(record, &config);
    case form::json:
        return Qel_rcpt_generate_json(record, &config);
    case form::moneris:
        return Qel_rcpt_generate_plain_moneris(record, &config);
    case form::moneris_ecomm:
        return Qel_rcpt_generate_plain_moneris_ecomm(record, &config);
    }
    return nullptr;
}

// An e-commerce merchant's receipt is in that layout, whichever of the two was asked for.
form form_for(form asked, const Qel_rcpt_config_t &config)
{
    const bool is_ecomm = (config.industry & QEL_RCPT_IND_ECOMM) != 0;
    return asked == form::moneris && is_ecomm ? form::moneris_ecomm : asked;
}

bool is_shown(std::string_view key, const layout &layout)
{
    const bool is_customer = key.starts_with(customer_prefix);
    if (!(is_customer ? layout.customer_copy : layout.merchant_copy))
        return false;
    key.remove_prefix(is_customer ? customer_prefix.size() : merchant_prefix.size());
    return layout.blocks.empty() || std::ranges::find(layout.blocks, key) != layout.blocks.end();
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
        text += shown.line_break == eol
                    ? part.text
                    : qel::text(Qel_strdup_replace_str(part.text.c_str(), shown.line_break.c_str(),
                                                       eol.c_str()))
                          .get();
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

// The blocks as an object, whose lines begin with the break.
void append_document(std::string &json, const receipt &shown, std::string_view line_break)
{
    json += '{';
    for (const block &part : shown.blocks) {
        json.append(&part == &shown.blocks.front() ? "" : ",").append(line_break).append("  ");
        append_json_text(json, part.key);
        json += ": ";
        append_json_text(json, part.text);
    }
    json.append(shown.blocks.empty() ? "" : line_break).append("}");
}

} // namespace

std::span<const form_facts> forms()
{
    return form_table;
}

const form_facts &facts_of(form id)
{
    return *std::ranges::find(form_table, id, &form_facts::id);
}

receipt render(Qel_hash_dict_t *record, const Qel_rcpt_config_t &config, const layout &layout)
{
    const qel::dict blocks(generate(record, config, layout));
    const form_facts &facts = facts_of(form_for(layout.form, config));
    receipt shown{{},
                  facts.line_break.empty() ? layout.line_break : std::string(facts.line_break),
                  facts.width == 0 ? layout.width : facts.width};
    for (const auto [key, text] : qel::pairs(blocks.get())) {
        if (is_shown(key, layout))
            shown.blocks.push_back({key, text});
    }
    return shown;
}

std::string as_text(const std::vector<receipt> &receipts, const layout &layout)
{
    const std::string &eol = layout.line_break;
    std::string text;
    for (const receipt &shown : receipts) {
        for (const std::string_view prefix : {customer_prefix, merchant_prefix}) {
            const std::string copy = copy_text(shown, prefix, eol);
            if (copy.empty())
                continue;
            if (!text.empty())
                text.append(eol).append(cut_line(shown.width)).append(eol).append(eol);
            text.append(copy).append(eol);
        }
    }
    return text;
}

std::string as_json(const std::vector<receipt> &receipts)
{
    const bool is_array = receipts.size() != 1;
    std::string json(is_array ? "[" : "");
    for (const receipt &shown : receipts) {
        if (is_array)
            json += &shown == &receipts.front() ? "\n  " : ",\n  ";
        append_document(json, shown, is_array ? "\n  " : "\n");
    }
    if (is_array)
        json += receipts.empty() ? "]" : "\n]";
    return json + "\n";
}

} // namespace tool
