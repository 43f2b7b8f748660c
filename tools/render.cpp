#include "render.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace tool
{

namespace
{

constexpr std::string_view customer_prefix = "cust_";
constexpr std::string_view merchant_prefix = "merch_";

constexpr std::string_view plain_blocks[] = {
    "merch_info",  "reference", "items", "order_money", "money",
    "disposition", "signature", "emv",   "notice",      "notes"};

constexpr form_facts form_table[] = {
    {form::plain, "plain", plain_blocks},
};

qel::dict generate(Qel_hash_dict_t *record, const Qel_rcpt_config_t &config, const layout &layout)
{
    Qel_hash_dict_t *blocks = nullptr;
    switch (layout.form) {
    case form::plain:
        blocks = Qel_rcpt_generate_plain(record, &config, layout.width, layout.line_break.c_str());
        break;
    }
    return qel::dict(blocks);
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
std::string copy_text(const receipt &shown, std::string_view prefix, const layout &layout)
{
    std::string text;
    for (const block &part : shown) {
        if (!part.key.starts_with(prefix))
            continue;
        if (!text.empty())
            text += layout.line_break + layout.line_break;
        text += part.text;
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
    const qel::dict blocks = generate(record, config, layout);
    receipt shown;
    for (const auto [key, text] : qel::pairs(blocks.get())) {
        if (is_shown(key, layout))
            shown.push_back({key, text});
    }
    return shown;
}

std::string as_text(const std::vector<receipt> &receipts, const layout &layout)
{
    const std::string &eol = layout.line_break;
    std::string text;
    for (const receipt &shown : receipts) {
        for (const std::string_view prefix : {customer_prefix, merchant_prefix}) {
            const std::string copy = copy_text(shown, prefix, layout);
            if (copy.empty())
                continue;
            if (!text.empty())
                text.append(eol).append(cut_line(layout.width)).append(eol).append(eol);
            text.append(copy).append(eol);
        }
    }
    return text;
}

std::string as_json(const std::vector<receipt> &receipts)
{
    auto documents = nlohmann::ordered_json::array();
    for (const receipt &shown : receipts) {
        auto document = nlohmann::ordered_json::object();
        for (const block &part : shown)
            document[part.key] = part.text;
        documents.push_back(std::move(document));
    }
    const auto &whole = documents.size() == 1 ? documents.front() : documents;
    return whole.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

} // namespace tool
