// The frame of every generator: which blocks of which copy are built, and where they go.
#ifndef QEL_RCPT_FRAME_HPP
#define QEL_RCPT_FRAME_HPP

#include "qel_rcpt_int.h"
#include "qel_rcpt_tables.hpp"

#include <qelstdlib.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace qel_rcpt
{

// Where a block goes: the copy, and the key in the result.
struct block_slot {
    bool is_custcopy;
    const char *key;
};

// The keys that a block has in the result: "cust_" or "merch_" and its name.
class block_keys
{
  public:
    consteval block_keys(const char *name)
        : cust_(joined("cust_", name)), merch_(joined("merch_", name))
    {
    }
    [[nodiscard]] constexpr block_slot slot(bool is_custcopy) const
    {
        return {is_custcopy, is_custcopy ? cust_.data() : merch_.data()};
    }

  private:
    using key_text = std::array<char, 24>;

    static consteval key_text joined(std::string_view prefix, std::string_view name)
    {
        key_text key{};
        std::ranges::copy(name, std::ranges::copy(prefix, key.begin()).out);
        return key;
    }

    key_text cust_;
    key_text merch_;
};

// What a block of the merchant's copy may differ by from the customer's.
enum differs : unsigned {
    by_nothing = 0,
    by_language = 1,
    by_balance = 2, // which only the customer is shown
    by_symbol = 4,  // the side of amounts with the currency's symbol; by_language covers it
    by_copy = 8,    // in any case
    merch_only = 16 // the customer has no such block
};

// What a generator's state record begins with. Those of plain text have the same fields.
struct receipt {
    Qel_hash_dict_t *blocks;
    const Qel_hash_dict_t *kvs;
    Qel_rcpt_attrs_t attrs;
};

// One step of a generator: builds a block of a copy. State is the generator's state record.
template <typename State>
struct block_builder {
    block_keys keys;
    void (*build)(State &info, const block_slot &slot);
    unsigned copies = by_language; // bits of differs

    [[nodiscard]] constexpr std::string_view name() const
    {
        return std::string_view(keys.slot(true).key).substr(std::string_view("cust_").size());
    }
};

// Whether the builders make the form's blocks in their order.
template <typename State, std::size_t Count>
consteval bool makes_blocks_of(std::string_view form, const block_builder<State> (&builders)[Count])
{
    return std::ranges::equal(builders, form_named(form).blocks, {}, &block_builder<State>::name);
}

// Whether the merchant's block is the customer's.
inline bool are_alike(unsigned copies, const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t &cust,
                      const Qel_rcpt_attrs_t &merch)
{
    return (copies & (by_copy | merch_only)) == 0 &&
           ((copies & by_symbol) == 0 || cust.csym_right == merch.csym_right) &&
           ((copies & by_language) == 0 || cust.lang == merch.lang) &&
           ((copies & by_balance) == 0 ||
            Qel_str_isempty(Qel_hash_dict_get_direct(kvs, "balance")));
}

// Stores the customer's block for the merchant too, where the customer has one.
inline void repeat_block(Qel_hash_dict_t *blocks, const block_keys &keys)
{
    const char *block = Qel_hash_dict_get_direct(blocks, keys.slot(true).key);
    if (block != nullptr)
        Qel_hash_dict_insert(blocks, keys.slot(false).key, block);
}

// The customer copy's blocks, then the merchant copy's when the industry gets one, each copy with
// its own attributes, which differ by the language alone. The caller owns the result.
template <typename State, std::size_t Count>
Qel_hash_dict_t *generate_copies(State &info, const Qel_rcpt_config_t *config,
                                 const block_builder<State> (&builders)[Count])
{
    qel::dict blocks(Qel_hash_dict_create(16, 75, QEL_HASH_DICT_KEYS_ORDERED));
    info.blocks = blocks.get();

    Qel_rcpt_setup_rcpt_attrs(&info.attrs, config, true);
    for (const auto &[keys, build, copies] : builders) {
        if ((copies & merch_only) == 0)
            build(info, keys.slot(true));
    }
    if (!Qel_rcpt_generate_merch_copy(config == nullptr ? QEL_RCPT_IND_UNKNOWN : config->industry))
        return blocks.release();

    const Qel_rcpt_attrs_t cust = info.attrs;
    Qel_rcpt_setup_rcpt_attrs(&info.attrs, config, false);
    for (const auto &[keys, build, copies] : builders) {
        if (are_alike(copies, info.kvs, cust, info.attrs))
            repeat_block(blocks.get(), keys);
        else
            build(info, keys.slot(false));
    }
    return blocks.release();
}

} // namespace qel_rcpt

#endif
