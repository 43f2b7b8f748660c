// Receipts of the Moneris layouts, taken apart so that a test can say what a line is and where.
#ifndef QELRCPT_TESTS_MONERIS_RECEIPT_HPP
#define QELRCPT_TESTS_MONERIS_RECEIPT_HPP

#include "qel_rcpt_int.h"

#include "test_record.hpp"

#include <qelstdlib.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace test::moneris
{

using lines = std::vector<std::string>;

// The country is that of the currency too: Canada.
constexpr Qel_rcpt_config_t merchant(std::uint32_t industry, std::uint32_t country = 124,
                                     Qel_rcpt_lang_t customer = QEL_RCPT_LANG_EN)
{
    const auto bits = static_cast<Qel_rcpt_ind_t>(industry);
    return {customer, QEL_RCPT_LANG_EN, country, country, bits, nullptr};
}
inline constexpr Qel_rcpt_config_t shop = merchant(QEL_RCPT_IND_RETAIL);
inline constexpr Qel_rcpt_config_t french = merchant(QEL_RCPT_IND_RETAIL, 124, QEL_RCPT_LANG_FR);

inline std::size_t width(std::string_view text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

inline std::string joined(const lines &parts, std::string_view separator)
{
    std::string all;
    for (const std::string &part : parts)
        all.append(all.empty() && &part == &parts.front() ? "" : separator).append(part);
    return all;
}

// A line with its place in short: "^TEXT" is centred, ">TEXT" ends in the last column, and
// "LEFT_RIGHT" fills the line from end to end. Whatever is none of these stays as it is.
inline std::string shape(const std::string &line, std::size_t columns)
{
    const std::size_t start = std::min(line.find_first_not_of(' '), line.size());
    const std::string text = line.substr(start);
    if (start > 0 && start == (columns - width(text)) / 2)
        return std::string("^").append(text);
    if (start > 0 && width(line) == columns)
        return std::string(">").append(text);
    const std::size_t gap = line.find("  ");
    if (start > 0 || gap == std::string::npos || width(line) != columns)
        return line;
    return line.substr(0, gap) + "_" + line.substr(line.find_first_not_of(' ', gap));
}

// What a generator gave: the lines of each block, by key and in order.
struct block {
    std::string key;
    lines text;
    bool operator==(const block &) const = default;
};
using receipt = std::vector<block>;

inline receipt taken(const qel::dict &blocks)
{
    receipt made;
    for (const auto [key, text] : qel::pairs(blocks.get())) {
        made.push_back({key, {}});
        std::istringstream rest(std::string(text).append("\n"));
        for (std::string line; std::getline(rest, line);)
            made.back().text.push_back(line.substr(0, line.find_last_not_of('\r') + 1));
    }
    return made;
}

inline receipt in_store(const record &kvs, const Qel_rcpt_config_t &config = shop)
{
    return taken(qel::dict(Qel_rcpt_generate_plain_moneris(kvs, &config)));
}

inline receipt online(const record &kvs, const Qel_rcpt_config_t &config = shop)
{
    return taken(qel::dict(Qel_rcpt_generate_plain_moneris_ecomm(kvs, &config)));
}

// The block's lines; none for a block that is not there.
inline lines text_of(const receipt &made, std::string_view key)
{
    const auto found = std::ranges::find(made, key, &block::key);
    return found == made.end() ? lines() : found->text;
}

inline std::string keys_of(const receipt &made)
{
    lines keys;
    std::ranges::transform(made, std::back_inserter(keys), &block::key);
    return joined(keys, " ");
}

// A record's fields beside a time (23 January 2024, 15:30:00) and two response codes (91 and 105),
// and the shapes of the block that it gives.
struct block_case {
    const char *fields;
    const char *expected;
};

inline void expect_blocks(decltype(&in_store) generate, const char *key,
                          std::initializer_list<block_case> cases,
                          const Qel_rcpt_config_t &config = shop)
{
    for (const block_case &one : cases) {
        record kvs("rcpt_host_ts:012324153000,rcpt_issuer_resp_code:91,rcpt_resp_code:105");
        lines text = text_of(generate(kvs.set(one.fields), config), key);
        for (std::string &line : text)
            line = shape(line, generate == online ? 70 : 40);
        EXPECT_EQ(joined(text, "|"), one.expected) << key << ": " << one.fields;
    }
}

} // namespace test::moneris

#endif
