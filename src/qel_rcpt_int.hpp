// What the core and the generators share beyond the exported operations: the generator frame, and
// the rules and tables that more than one form reads.
#ifndef QEL_RCPT_INT_HPP
#define QEL_RCPT_INT_HPP

#include "qel_rcpt_int.h"
#include "qel_rcpt_tables.hpp"

#include <qelstdlib.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace qel_rcpt
{

// The record's value, or absent.
inline const char *get(const Qel_hash_dict_t *kvs, const char *key)
{
    return Qel_hash_dict_get_direct(kvs, key);
}

// The attributes, or those of a copy without a configuration.
const Qel_rcpt_attrs_t &attrs_or_default(const Qel_rcpt_attrs_t *attrs);

// Where a block goes: the copy, and the key in the result.
struct block_place {
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
    [[nodiscard]] constexpr block_place place(bool is_custcopy) const
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

// How a block of the merchant's copy differs from the customer's in the same language.
enum class block_copies {
    alike,
    alike_without_balance, // which only the customer is shown
    differing,
    merch_only,
};

// One step of a generator: builds a block of a copy. State is the generator's state record, with
// the fields blocks, kvs and attrs.
template <typename State>
struct block_builder {
    block_keys keys;
    void (*build)(State &info, const block_place &place);
    block_copies copies = block_copies::alike;

    [[nodiscard]] constexpr std::string_view name() const
    {
        return std::string_view(keys.place(true).key).substr(std::string_view("cust_").size());
    }
};

// Whether the builders make the form's blocks in their order.
template <typename State, std::size_t Count>
consteval bool makes_blocks_of(std::string_view form, const block_builder<State> (&builders)[Count])
{
    return std::ranges::equal(builders, form_named(form).blocks, {}, &block_builder<State>::name);
}

inline bool are_alike(block_copies copies, const Qel_hash_dict_t *kvs)
{
    return copies == block_copies::alike ||
           (copies == block_copies::alike_without_balance && Qel_str_isempty(get(kvs, "balance")));
}

// Stores the customer's block for the merchant too, where the customer has one.
inline void repeat_block(Qel_hash_dict_t *blocks, const block_keys &keys)
{
    const char *block = Qel_hash_dict_get_direct(blocks, keys.place(true).key);
    if (block != nullptr)
        Qel_hash_dict_insert(blocks, keys.place(false).key, block);
}

// The frame of every generator: the customer copy's blocks, then the merchant copy's when the
// industry gets one, each copy with its own attributes, which differ by the language alone. The
// caller owns the result.
template <typename State, std::size_t Count>
Qel_hash_dict_t *generate_copies(State &info, const Qel_rcpt_config_t *config,
                                 const block_builder<State> (&builders)[Count])
{
    qel::dict blocks(Qel_hash_dict_create(16, 75, QEL_HASH_DICT_KEYS_ORDERED));
    info.blocks = blocks.get();

    Qel_rcpt_setup_rcpt_attrs(&info.attrs, config, true);
    for (const auto &[keys, build, copies] : builders) {
        if (copies != block_copies::merch_only)
            build(info, keys.place(true));
    }
    if (!Qel_rcpt_generate_merch_copy(config == nullptr ? QEL_RCPT_IND_UNKNOWN : config->industry))
        return blocks.release();

    const Qel_rcpt_lang_t cust_lang = info.attrs.lang;
    Qel_rcpt_setup_rcpt_attrs(&info.attrs, config, false);
    const bool same_lang = info.attrs.lang == cust_lang;
    for (const auto &[keys, build, copies] : builders) {
        if (same_lang && are_alike(copies, info.kvs))
            repeat_block(blocks.get(), keys);
        else
            build(info, keys.place(false));
    }
    return blocks.release();
}

// The record's value under key; the one under fallback when that is absent or empty.
const char *get_nonempty(const Qel_hash_dict_t *kvs, const char *key, const char *fallback);

// Whether the value is one of the words, without regard to case.
inline bool is_one_of(const char *value, std::initializer_list<const char *> words)
{
    return std::ranges::any_of(words,
                               [&](const char *word) { return Qel_str_caseeq(value, word); });
}

// Whether the record's value is the word, contains it, is set; without regard to case.
inline bool key_is(const Qel_hash_dict_t *kvs, const char *key, const char *word)
{
    return Qel_str_caseeq(get(kvs, key), word);
}
inline bool key_contains(const Qel_hash_dict_t *kvs, const char *key, const char *word)
{
    return Qel_str_casestr(get(kvs, key), word) != nullptr;
}
inline bool key_is_true(const Qel_hash_dict_t *kvs, const char *key)
{
    return Qel_str_istrue(get(kvs, key));
}

// Whether the card was taken out before the transaction was complete.
bool was_card_removed(const Qel_hash_dict_t *kvs);

// Whether the amount is above zero.
inline bool is_positive(const char *amount)
{
    return Qel_atofi100(amount) > 0;
}

// The merchant's lines from top to bottom, each with the message for a record without the key.
struct merchant_field {
    const char *key;
    Qel_rcpt_msg_t missing;
};
inline constexpr merchant_field merchant_fields[] = {
    {"merch_name", QEL_RCPT_MSG_UNKNOWN_NAME},
    {"merch_addr1", QEL_RCPT_MSG_UNKNOWN_ADDR},
    {"merch_addr2", QEL_RCPT_MSG_NONE},
    {"merch_addr3", QEL_RCPT_MSG_NONE},
    {"merch_phone", QEL_RCPT_MSG_UNKNOWN_PHONE},
    {"merch_email", QEL_RCPT_MSG_NONE},
    {"merch_url", QEL_RCPT_MSG_NONE},
};

// The record's value, also an empty one, or the message where the record does not have the key.
const char *get_or_message(const Qel_hash_dict_t *kvs, const char *key, Qel_rcpt_lang_t lang,
                           Qel_rcpt_msg_t missing);

// The chip's data: the name that markup gives a value, its label and the record's key.
struct emv_field {
    const char *name;
    Qel_rcpt_msg_t label;
    const char *key;
};
inline constexpr emv_field emv_fields[] = {
    {"name", QEL_RCPT_MSG_NAME, "rcpt_emv_name"},
    {"aid", QEL_RCPT_MSG_AID, "rcpt_emv_aid"},
    {"tvr", QEL_RCPT_MSG_TVR, "rcpt_emv_tvr"},
    {"tsi", QEL_RCPT_MSG_TSI, "rcpt_emv_tsi"},
    {"iad", QEL_RCPT_MSG_IAD, "rcpt_emv_iad"},
    {"actype", QEL_RCPT_MSG_AC_TYPE, "rcpt_emv_actype"},
    {"ac", QEL_RCPT_MSG_AC, "rcpt_emv_ac"},
    {"odd", QEL_RCPT_MSG_ODD, "rcpt_emv_card_decline"},
};

// What the transaction is called, from its action and card class; absent without an action.
const char *get_title(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang);

// As get_title, with the Moneris processor's titles; correction_type is the custom field.
const char *get_title_moneris(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang,
                              const char *correction_type);

// The number of the lane; 1 where the record has none above zero.
std::int64_t get_lane(const Qel_hash_dict_t *kvs);

// The order number: "ordernum", or a "ptrannum" above zero when that is absent or empty; or absent.
const char *get_order_number(const Qel_hash_dict_t *kvs);

// The merchant-defined fields of "rcpt_custom" as they stand there; absent where there are none or
// the text does not parse.
qel::dict parse_custom_fields(const Qel_hash_dict_t *kvs);

// The same sorted by name without regard to case.
qel::dict get_custom_fields(const Qel_hash_dict_t *kvs);

// A field's name as part of an id or element name: '_' in place of each byte that may not be there.
qel::text clean_field_name(const char *name);

// The tip that is part of the amount: "examount" when the record has that key, else "u_tip".
const char *get_tip(const Qel_hash_dict_t *kvs);

// Whether the money block is left out, because the order money says all: an order paid in full.
bool is_order_paid_in_full(const Qel_hash_dict_t *kvs);

// What the transaction would have cost, paid the other way: in cash or not.
struct alternative_price {
    Qel_rcpt_msg_t label;
    const char *amount; // may be absent or empty
};
alternative_price get_alternative_price(const Qel_hash_dict_t *kvs);

} // namespace qel_rcpt

#endif
