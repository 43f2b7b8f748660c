/* libqelrcpt: receipts of card transactions.
 *
 * A caller hands over the record of one transaction (a dictionary of the texts that the payment
 * server returned) and a configuration of the merchant, and gets a dictionary of rendered blocks
 * for the customer's and the merchant's copy:
 *
 *     Qel_rcpt_init();
 *     Qel_hash_dict_t *record = Qel_hash_dict_create(16, 75, QEL_HASH_DICT_NONE);
 *     Qel_hash_dict_insert(record, "action", "sale");
 *     Qel_hash_dict_insert(record, "amount", "12.34");
 *     Qel_rcpt_config_t config = {.country_code = 840, .currency_code = 840};
 *     Qel_hash_dict_t *blocks = Qel_rcpt_generate_plain(record, &config, 40, "\n");
 *     puts(Qel_hash_dict_get_direct(blocks, "cust_reference"));
 *     Qel_hash_dict_destroy(blocks);
 *     Qel_hash_dict_destroy(record);
 *     Qel_rcpt_deinit();
 *
 * The library does no input or output, starts no threads and keeps nothing between calls but what
 * the utility layer keeps (qelstdlib.h): the salt of the dictionaries' hashes and the rules of time
 * zones that were loaded. A missing or unusable value gives the documented default, or leaves its
 * line out; nothing is reported and no record makes a call fail. Running out of memory ends the
 * process (std::terminate); it is the only way in which a call can fail to return.
 *
 * Threads: any number of them may call anything at once, each on records that no thread changes.
 */
#ifndef QEL_RCPT_H
#define QEL_RCPT_H

#include <qelstdlib.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Language of a copy. Any other value means English. */
typedef enum Qel_rcpt_lang QEL_ENUM_U32 {
    QEL_RCPT_LANG_EN = 0,
    QEL_RCPT_LANG_FR = 1,
    QEL_RCPT_LANG_ES = 2,
    QEL_RCPT_LANG_DE = 3,
    QEL_RCPT_LANG_IT = 4
} Qel_rcpt_lang_t;

/* The merchant's industry: bits, which may be combined. */
typedef enum Qel_rcpt_ind QEL_ENUM_U32 {
    QEL_RCPT_IND_UNKNOWN = 0,
    QEL_RCPT_IND_RETAIL = 1,
    QEL_RCPT_IND_MAIL = 2,
    QEL_RCPT_IND_ECOMM = 4,
    QEL_RCPT_IND_RESTAURANT = 8,
    QEL_RCPT_IND_LODGING = 16,
    QEL_RCPT_IND_AUTOFUEL = 32, /* no merchant copy */
    QEL_RCPT_IND_GROCERY = 64,
    QEL_RCPT_IND_SELFSERV = 128 /* no merchant copy */
} Qel_rcpt_ind_t;

#ifdef __cplusplus
extern "C++" {
constexpr Qel_rcpt_ind_t operator|(Qel_rcpt_ind_t a, Qel_rcpt_ind_t b) noexcept
{
    return static_cast<Qel_rcpt_ind_t>(static_cast<uint32_t>(a) | static_cast<uint32_t>(b));
}
}
#endif

/* What the library needs to know of the merchant. The caller fills and owns it; a generator only
 * reads it. */
typedef struct Qel_rcpt_config {
    Qel_rcpt_lang_t cust_lang;  /* language of the customer's copy */
    Qel_rcpt_lang_t merch_lang; /* language of the merchant's copy */
    uint32_t country_code; /* ISO 3166-1 numeric, such as 840 or 124; 840 puts the month first */
    /* ISO 4217 numeric: 978 is written with "€" and ',', 826 with "£" and '.', every other with "$"
     * and '.'. */
    uint32_t currency_code;
    Qel_rcpt_ind_t industry;             /* decides whether there is a merchant copy */
    const Qel_time_tz_t *merch_timezone; /* borrowed; absent: the system's local zone */
} Qel_rcpt_config_t;

/* The beginning and the end of the library's use: call Qel_rcpt_init before everything else and
 * Qel_rcpt_deinit at the end. Neither can be used wrongly: any thread, any time, balanced or not,
 * or not at all. All that is done today is to read the system's local zone, which the C library
 * does once: if no descriptor is free when it is first wanted, it is UTC until TZ changes. */
QEL_API void Qel_rcpt_init(void) QEL_NOEXCEPT;
QEL_API void Qel_rcpt_deinit(void) QEL_NOEXCEPT;

/* The language for an ISO 639-1 code ("en", "fr", "es", "de", "it", in any case); English for
 * anything else, absent and regional forms such as "fr-CA" included. Any thread, any time. */
QEL_API Qel_rcpt_lang_t Qel_rcpt_lang_from_str(const char *lang) QEL_NOEXCEPT;

/* Whether a merchant of this industry gets a merchant copy: not with the bit for automated fuel or
 * self-service. Any thread, any time. */
QEL_API bool Qel_rcpt_generate_merch_copy(Qel_rcpt_ind_t industry) QEL_NOEXCEPT;

/* Takes the control characters out of every value of a record, in place: white space (tab, line
 * feed, carriage return and their like) becomes a space, each other one a question mark, escapes in
 * the JSON of line_items and moneris_rcpt_data included, whose comments become spaces. The
 * plain-text and Moneris forms hand on values as they are: a printer obeys what it is sent, and a
 * line feed in a value makes a line of its own. HTML, XML and JSON need no such care. Call it on
 * records whose texts others chose:
 *
 *     Qel_rcpt_strip_control(record);
 *     Qel_hash_dict_t *blocks = Qel_rcpt_generate_plain(record, &config, 40, "\n");
 *
 * Absent is ignored. Keys stay as they are. Control characters are U+0000 to U+001F, U+007F to
 * U+009F, and bytes 0x80 to 0x9F that are part of no UTF-8 character. */
QEL_API void Qel_rcpt_strip_control(Qel_hash_dict_t *kvs) QEL_NOEXCEPT;

/* The generators. Each takes
 *   kvs     the transaction record, keys in lower case; absent counts as empty. docs/record.md
 *           lists the keys.
 *   config  the merchant; absent: English, US dollars, country 840, local time zone, unknown
 *           industry.
 * and returns a new dictionary, released by Qel_hash_dict_destroy, never absent.
 * Its keys are "cust_" or "merch_" and the block's name, first the customer copy's blocks from top
 * to bottom, then the merchant copy's when there is one; a block with nothing to show has no entry.
 */

/* Plain text. Blocks: merch_info, reference, items, order_money, money, disposition, signature
 * (merchant copy only), emv, notice, notes. Each is in upper case, its lines joined by line_break,
 * none after the last.
 *   line_len    width of a line in characters: 0 means 40, 1 to 9 mean 10, and more
 *               than 65,535 mean that
 *   line_break  absent or "": "\r\n" */
QEL_API Qel_hash_dict_t *Qel_rcpt_generate_plain(const Qel_hash_dict_t *kvs,
                                                 const Qel_rcpt_config_t *config, size_t line_len,
                                                 const char *line_break) QEL_NOEXCEPT;

/* HTML fragments for a style sheet: each block is a `div` with the id "rcpt_" and the block's name;
 * share/receipt.css styles them. Blocks as for plain text. */
QEL_API Qel_hash_dict_t *Qel_rcpt_generate_html(const Qel_hash_dict_t *kvs,
                                                const Qel_rcpt_config_t *config) QEL_NOEXCEPT;

/* XML: each block is an element named after it, whose children are named after their values. Blocks
 * as for plain text. */
QEL_API Qel_hash_dict_t *Qel_rcpt_generate_xml(const Qel_hash_dict_t *kvs,
                                               const Qel_rcpt_config_t *config) QEL_NOEXCEPT;

/* JSON: each block is an object whose members are texts (items: an array of such objects;
 * rcpt_custom: an object of its own). Blocks as for plain text. */
QEL_API Qel_hash_dict_t *Qel_rcpt_generate_json(const Qel_hash_dict_t *kvs,
                                                const Qel_rcpt_config_t *config) QEL_NOEXCEPT;

/* The Moneris processor's in-store layout: plain text of 40 columns, lines joined by "\r\n".
 * Blocks: merch_info, type, money, reference, disposition, signature (merchant copy only), notice.
 * An industry with the e-commerce bit gives what Qel_rcpt_generate_plain_moneris_ecomm gives, and
 * changes the record as that does. */
QEL_API Qel_hash_dict_t *
Qel_rcpt_generate_plain_moneris(Qel_hash_dict_t *kvs, const Qel_rcpt_config_t *config) QEL_NOEXCEPT;

/* The Moneris processor's e-commerce layout: plain text of 70 columns, lines joined by "\r\n".
 * Blocks: merch_info, reference, line_items, customer_info, refund_policy.
 *
 * Changes the record: when the custom field correction_type is "purchase" and there is an action,
 * the keys surchargeamount, tax and examount are removed where their value is "0.00". */
QEL_API Qel_hash_dict_t *
Qel_rcpt_generate_plain_moneris_ecomm(Qel_hash_dict_t *kvs,
                                      const Qel_rcpt_config_t *config) QEL_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
