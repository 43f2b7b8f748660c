// From records to the command's output.
#ifndef QELRCPT_TOOLS_RENDER_H
#define QELRCPT_TOOLS_RENDER_H

#include <qel_rcpt.h>
#include <qelstdlib.hpp>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tool
{

enum class form { plain, html, xml, json, moneris, moneris_ecomm };

struct form_facts {
    form id;
    std::string_view name;
    std::span<const std::string_view> blocks; // in the order of the receipt
    std::string_view line_break;              // empty: as asked for
    size_t width;                             // 0: as asked for
};

std::span<const form_facts> forms();
const form_facts &facts_of(form id);

struct layout {
    tool::form form = tool::form::plain;
    size_t width = 40;
    std::string line_break = "\n";
    bool customer_copy = true;
    bool merchant_copy = true;
    std::vector<std::string> blocks; // those to show; empty: all
};

// A block under its full key, such as "cust_money".
struct block {
    std::string key;
    std::string text;
};

// The blocks to show of one receipt, in its order.
struct receipt {
    std::vector<block> blocks;
    std::string line_break; // between the lines of a block
    size_t width;           // of the line to cut along
};

receipt render(Qel_hash_dict_t *record, const Qel_rcpt_config_t &config, const layout &layout);

// The receipts to be printed: a blank line between blocks, a line to cut along between copies.
std::string as_text(const std::vector<receipt> &receipts, const layout &layout);

// One JSON object, or an array of them when there are several receipts.
std::string as_json(const std::vector<receipt> &receipts);

} // namespace tool

#endif
