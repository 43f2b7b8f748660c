// The receipt as named values, for the forms that carry values rather than a layout.
#ifndef QEL_RCPT_VALUES_HPP
#define QEL_RCPT_VALUES_HPP

#include "qel_rcpt_int.hpp"

namespace qel_rcpt
{

// What the values of a block are read from, and the node of a form's tree that takes them.
struct block_values {
    const Qel_hash_dict_t *kvs;
    const Qel_rcpt_attrs_t &attrs;
    bool is_custcopy;
    void *node;
    void (*put)(void *node, const char *name, const char *value); // both texts are lent
};

// A block of named values: adds them to the node in their order.
struct value_block {
    const char *name;
    void (*add_values)(const block_values &values);
};

void add_merchinfo_values(const block_values &values);
void add_reference_values(const block_values &values); // all but the custom fields, which come last
void add_order_money_values(const block_values &values);
void add_money_values(const block_values &values);
void add_disposition_values(const block_values &values);
void add_signature_values(const block_values &values);
void add_emv_values(const block_values &values);
void add_notice_values(const block_values &values);
void add_notes_values(const block_values &values);

inline constexpr value_block merchinfo_block = {"merch_info", add_merchinfo_values};
inline constexpr value_block reference_block = {"reference", add_reference_values};
inline constexpr value_block order_money_block = {"order_money", add_order_money_values};
inline constexpr value_block money_block = {"money", add_money_values};
inline constexpr value_block disposition_block = {"disposition", add_disposition_values};
inline constexpr value_block signature_block = {"signature", add_signature_values};
inline constexpr value_block emv_block = {"emv", add_emv_values};
inline constexpr value_block notice_block = {"notice", add_notice_values};
inline constexpr value_block notes_block = {"notes", add_notes_values};

} // namespace qel_rcpt

#endif
