// The rules and tables that more than one form reads, beyond the exported operations.
#ifndef QEL_RCPT_RULES_HPP
#define QEL_RCPT_RULES_HPP

#include "qel_rcpt_int.h"

#include <qelstdlib.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string_view>

namespace qel_rcpt
{

// More columns count as so many: no paper has them, and padding takes memory.
constexpr std::size_t most_columns = 65535;

// The record's value, or absent.
inline const char *get(const Qel_hash_dict_t *kvs, const char *key)
{
    return Qel_hash_dict_get_direct(kvs, key);
}

// The attributes, or those of a copy without a configuration.
const Qel_rcpt_attrs_t &attrs_or_default(const Qel_rcpt_attrs_t *attrs);

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

// Whether a result code, of whichever transaction, is an approval.
inline bool is_approving(const char *code)
{
    return is_one_of(code, {"auth", "success"});
}

// Whether the card was taken out before the transaction was complete.
bool was_card_removed(const Qel_hash_dict_t *kvs);

// Whether the chip said no, by what is known of the reversal or of the offline decision.
bool was_declined_by_chip(const Qel_hash_dict_t *kvs);

// The same, or by the terminal's error.
bool was_declined_by_card(const Qel_hash_dict_t *kvs);

// Whether the issuer said no.
bool was_declined_by_issuer(const Qel_hash_dict_t *kvs);

// An amount as sums take it.
using hundredths = std::int64_t;

// Sums and differences of amounts stop at the ends of the range instead of wrapping round.
inline hundredths saturating_add(hundredths a, hundredths b)
{
    hundredths sum = 0;
    if (!__builtin_add_overflow(a, b, &sum))
        return sum;
    return b > 0 ? std::numeric_limits<hundredths>::max() : std::numeric_limits<hundredths>::min();
}
inline hundredths saturating_subtract(hundredths a, hundredths b)
{
    hundredths difference = 0;
    if (!__builtin_sub_overflow(a, b, &difference))
        return difference;
    return b < 0 ? std::numeric_limits<hundredths>::max() : std::numeric_limits<hundredths>::min();
}

// Whether the amount is above zero.
inline bool is_positive(const char *amount)
{
    return Qel_atofi100(amount) > 0;
}

// An amount of the record that is added to a sum or taken from it.
enum class sign { plus, minus };
struct money_term {
    const char *key;
    sign how;
};

// From the amount to the subtotal: what the rows above the total show is taken out again.
inline constexpr money_term subtotal_terms[] = {
    {"examount", sign::minus},
    {"tax", sign::minus},
    {"cashbackamount", sign::minus},
    {"surchargeamount", sign::minus},
    {"fee", sign::minus},
    {"convenience_fee", sign::minus},
    {"supplemental_fee", sign::minus},
    {"discountamount", sign::plus},
};

// The record's value, also an empty one, or the message where the record does not have the key.
const char *get_or_message(const Qel_hash_dict_t *kvs, const char *key, Qel_rcpt_lang_t lang,
                           Qel_rcpt_msg_t missing);

// What is done or, for a correction, was done; absent where the record does not say.
const char *get_action(const Qel_hash_dict_t *kvs);

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
