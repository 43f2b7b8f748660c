// From records to the blocks of their receipts.
#ifndef QELRCPT_TOOLS_RENDER_H
#define QELRCPT_TOOLS_RENDER_H

#include <qel_rcpt.h>
#include <qel_rcpt_tables.hpp>
#include <qelstdlib.hpp>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tool
{

struct layout {
    const qel_rcpt::form *form = &qel_rcpt::forms[0];
    size_t width = 40;
    std::string line_break = "\n";
    bool customer_copy = true;
    bool merchant_copy = true;
    std::vector<std::string> blocks; // those to show; empty: all
    bool raw = false;                // the control characters of the record's texts go through
};

inline bool is_form(const layout &layout, std::string_view name)
{
    return layout.form->name == name;
}

// The blocks that the form may give to some merchant, in the order of the receipt.
std::vector<std::string_view> blocks_of(const qel_rcpt::form &form);

// A block under its full key, such as "cust_money". The texts are their receipt's, terminated.
struct block {
    std::string_view key;
    std::string_view text;
};

// The blocks to show of one receipt, in its order.
struct receipt {
    std::shared_ptr<const Qel_hash_dict_t> all; // blocks, whose texts it holds
    std::vector<block> blocks;
    const qel_rcpt::form *form; // of the blocks
    std::string line_break;     // between the lines of a block
    size_t width;               // of the line to cut along
};

// Without raw, forms of text take the control characters out of the record, where it stays so.
receipt render(Qel_hash_dict_t *record, const Qel_rcpt_config_t &config, const layout &layout);

} // namespace tool

#endif
