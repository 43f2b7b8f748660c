/* The receipt core: attributes of a copy, message catalogue, money, transaction status, line items
 * and transaction types. The generators are built on it, and so can be a layout of one's own.
 *
 * The conventions of qel_rcpt.h on threads and memory apply. Below, kvs is the transaction record,
 * where absent counts as empty; attrs are the attributes of the copy, where absent means those that
 * Qel_rcpt_setup_rcpt_attrs gives without a configuration (an absent symbol in them prints none).
 * A `char *` result is new text that the caller releases with Qel_free; a `const char *` result is
 * borrowed from the catalogue, from the record, or static. An absent result means that there is
 * nothing to show.
 */
#ifndef QEL_RCPT_INT_H
#define QEL_RCPT_INT_H

#include <qel_rcpt.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Attributes of a copy */

typedef struct Qel_rcpt_attrs {
    Qel_rcpt_lang_t lang;
    const char *currency_sym;      /* UTF-8, static */
    char currency_dec;             /* between units and hundredths; 0: nothing is written there */
    bool csym_right;               /* the symbol follows the amount */
    uint32_t country_code;         /* ISO 3166-1 numeric; chooses the order of dates */
    const Qel_time_tz_t *timezone; /* borrowed from the configuration; absent: the local zone */
} Qel_rcpt_attrs_t;

/* Fills every field of attrs (absent: does nothing) for the customer's or the merchant's copy. An
 * absent config gives English, "$" in front, '.', country 840 and no zone. */
QEL_API void Qel_rcpt_setup_rcpt_attrs(Qel_rcpt_attrs_t *attrs, const Qel_rcpt_config_t *config,
                                       bool is_custcopy) QEL_NOEXCEPT;

/* Message catalogue */

typedef enum Qel_rcpt_msg QEL_ENUM_U32 {
    QEL_RCPT_MSG_NONE = 0,
    QEL_RCPT_MSG_UNKNOWN = 1,
    QEL_RCPT_MSG_TRECORD = 2,
    QEL_RCPT_MSG_ONLINERCPT = 3,
    QEL_RCPT_MSG_TYPE = 4,
    QEL_RCPT_MSG_TRANTYPE = 5,
    QEL_RCPT_MSG_FLASH_DEFAULT = 6,
    QEL_RCPT_MSG_CHECKING_ENUS = 7,
    QEL_RCPT_MSG_CHECKING_ENCA = 8,
    QEL_RCPT_MSG_SAVINGS = 9,
    QEL_RCPT_MSG_ISSUER_STANDIN = 10,
    QEL_RCPT_MSG_ISSUER = 11,
    QEL_RCPT_MSG_CARD = 12,
    QEL_RCPT_MSG_CARD_REMOVED = 13,
    QEL_RCPT_MSG_DECLINE_BY_CARD = 14,
    QEL_RCPT_MSG_CHIP_SWIPED = 15,
    QEL_RCPT_MSG_CHIP_MALFUNCTION = 16,
    QEL_RCPT_MSG_VERIED_PIN = 17,
    QEL_RCPT_MSG_PIN_BYPASSED = 18,
    QEL_RCPT_MSG_PARTIAL_APPROVAL = 19,
    QEL_RCPT_MSG_APPROVED = 20,
    QEL_RCPT_MSG_APPROVED_TY = 21,
    QEL_RCPT_MSG_CANCELED = 22,
    QEL_RCPT_MSG_DECLINE_CALL = 23,
    QEL_RCPT_MSG_NOT_APPROVED = 24,
    QEL_RCPT_MSG_NOT_COMPLETE = 25,
    QEL_RCPT_MSG_DECLINED = 26,
    QEL_RCPT_MSG_SIGNATURE = 27,
    QEL_RCPT_MSG_AGREEMENT = 28,
    QEL_RCPT_MSG_PAYMENT = 29,
    QEL_RCPT_MSG_ORDER = 30,
    QEL_RCPT_MSG_PAID = 31,
    QEL_RCPT_MSG_SIG_ELECTRONIC = 32,
    QEL_RCPT_MSG_NOTICE = 33,
    QEL_RCPT_MSG_DUPLICATE = 34,
    QEL_RCPT_MSG_CUST_COPY = 35,
    QEL_RCPT_MSG_MERCH_COPY = 36,
    QEL_RCPT_MSG_UNKNOWN_NAME = 37,
    QEL_RCPT_MSG_UNKNOWN_ADDR = 38,
    QEL_RCPT_MSG_UNKNOWN_PHONE = 39,
    QEL_RCPT_MSG_UNKNOWN_PHONE_S = 40,
    QEL_RCPT_MSG_UNKNOWN_URL = 41,
    QEL_RCPT_MSG_MID = 42,
    QEL_RCPT_MSG_LANE = 43,
    QEL_RCPT_MSG_ACCOUNT_TYPE = 44,
    QEL_RCPT_MSG_ACCOUNT = 45,
    QEL_RCPT_MSG_CUSTOMER = 46,
    QEL_RCPT_MSG_TIME = 47,
    QEL_RCPT_MSG_ORDER_NUM = 48,
    QEL_RCPT_MSG_ORDER_NUM_S = 49,
    QEL_RCPT_MSG_INVOICE_NUM = 50,
    QEL_RCPT_MSG_PO_NUM = 51,
    QEL_RCPT_MSG_PO_NUM_S = 52,
    QEL_RCPT_MSG_TTID = 53,
    QEL_RCPT_MSG_RESPONSE_CODE = 54,
    QEL_RCPT_MSG_RESPONSE_CODE_S = 55,
    QEL_RCPT_MSG_AUTH_NUM = 56,
    QEL_RCPT_MSG_APPROVAL_CODE = 57,
    QEL_RCPT_MSG_BATCH = 58,
    QEL_RCPT_MSG_STAN = 59,
    QEL_RCPT_MSG_AMOUNT = 60,
    QEL_RCPT_MSG_TIP = 61,
    QEL_RCPT_MSG_DISCOUNT = 62,
    QEL_RCPT_MSG_CASHDISCOUNT = 63,
    QEL_RCPT_MSG_TAX = 64,
    QEL_RCPT_MSG_CASHBACK = 65,
    QEL_RCPT_MSG_CASHBACK_S = 66,
    QEL_RCPT_MSG_AMOUNT_DUE = 67,
    QEL_RCPT_MSG_SUBTOTAL = 68,
    QEL_RCPT_MSG_TOTAL = 69,
    QEL_RCPT_MSG_PARTIAL_AMOUNT = 70,
    QEL_RCPT_MSG_AUTH_AMOUNT = 71,
    QEL_RCPT_MSG_AUTH_AMOUNT_S = 72,
    QEL_RCPT_MSG_SURCHARGE = 73,
    QEL_RCPT_MSG_FEE = 74,
    QEL_RCPT_MSG_CONVENIENCEFEE = 75,
    QEL_RCPT_MSG_SUPPLEMENTALFEE = 76,
    QEL_RCPT_MSG_BALANCE = 77,
    QEL_RCPT_MSG_MODE = 78,
    QEL_RCPT_MSG_NAME = 79,
    QEL_RCPT_MSG_AID = 80,
    QEL_RCPT_MSG_TVR = 81,
    QEL_RCPT_MSG_TSI = 82,
    QEL_RCPT_MSG_IAD = 83,
    QEL_RCPT_MSG_ODD = 84,
    QEL_RCPT_MSG_AC_TYPE = 85,
    QEL_RCPT_MSG_AC = 86,
    QEL_RCPT_MSG_PURCHASE = 87,
    QEL_RCPT_MSG_PURCHASE_DEBIT = 88,
    QEL_RCPT_MSG_PURCHASE_CREDIT = 89,
    QEL_RCPT_MSG_AUTHORIZATION = 90,
    QEL_RCPT_MSG_ACTIVATE = 91,
    QEL_RCPT_MSG_REFUND = 92,
    QEL_RCPT_MSG_RELOAD = 93,
    QEL_RCPT_MSG_VOIDED = 94,
    QEL_RCPT_MSG_VOID = 95,
    QEL_RCPT_MSG_ADMIN = 96,
    QEL_RCPT_MSG_BALANCE_INQ = 97,
    QEL_RCPT_MSG_AVSONLY = 98,
    QEL_RCPT_MSG_CASHOUT = 99,
    QEL_RCPT_MSG_CASH_PRICE = 100,
    QEL_RCPT_MSG_NONCASH_PRICE = 101
} Qel_rcpt_msg_t;

/* These two do nothing, since the catalogue is constant data. Any thread, any time, any number of
 * times. */
QEL_API void Qel_rcpt_lang_init(void) QEL_NOEXCEPT;
QEL_API void Qel_rcpt_lang_deinit(void) QEL_NOEXCEPT;

/* The message in the language, static; absent for QEL_RCPT_MSG_NONE and for numbers that the
 * catalogue does not have. */
QEL_API const char *Qel_rcpt_msg_to_string(Qel_rcpt_lang_t lang, Qel_rcpt_msg_t msg) QEL_NOEXCEPT;

/* New text: the message with a ':' behind it, or "" where there is no message. Never absent. */
QEL_API char *Qel_rcpt_msg_to_string_colon(Qel_rcpt_lang_t lang, Qel_rcpt_msg_t msg) QEL_NOEXCEPT;

/* Money. Amounts of the record are decimal text; sums are formed in hundredths and saturate at the
 * ends of the 64-bit range. */

/* The amount with the copy's symbol and decimal character, no space between: $12.34, €12,34 or
 * 12.34$. A minus sign stays with the digits. Absent when the amount is absent or no decimal
 * number. */
QEL_API char *Qel_rcpt_format_money(const char *amount, const Qel_rcpt_attrs_t *attrs) QEL_NOEXCEPT;

/* order_total less order_tip and order_tax; absent without order_total. */
QEL_API char *Qel_rcpt_format_order_subtotal(const Qel_hash_dict_t *kvs,
                                             const Qel_rcpt_attrs_t *attrs) QEL_NOEXCEPT;

/* amount less examount, tax, cashbackamount, surchargeamount, fee, convenience_fee and
 * supplemental_fee, plus discountamount; absent without amount. */
QEL_API char *Qel_rcpt_format_subtotal(const Qel_hash_dict_t *kvs,
                                       const Qel_rcpt_attrs_t *attrs) QEL_NOEXCEPT;

/* amount less authamount, when that is above zero; absent otherwise and without either. */
QEL_API char *Qel_rcpt_format_amount_due(const Qel_hash_dict_t *kvs,
                                         const Qel_rcpt_attrs_t *attrs) QEL_NOEXCEPT;

/* authamount, when it is neither zero nor the whole amount; absent otherwise and without either. */
QEL_API char *Qel_rcpt_format_authamount(const Qel_hash_dict_t *kvs,
                                         const Qel_rcpt_attrs_t *attrs) QEL_NOEXCEPT;

/* amount plus u_tip and u_cashback; absent without amount. */
QEL_API char *Qel_rcpt_format_total_amount(const Qel_hash_dict_t *kvs,
                                           const Qel_rcpt_attrs_t *attrs) QEL_NOEXCEPT;

/* The discount and the cash discount of this payment, each into new text or absent; both outputs
 * are written unless they are absent themselves. Only a cash payment without order money has a
 * cash discount: order_cash_discount is then taken out of discountamount and shown by itself. */
QEL_API void Qel_rcpt_format_payment_discounts(const Qel_hash_dict_t *kvs,
                                               const Qel_rcpt_attrs_t *attrs, char **discount_out,
                                               char **cash_discount_out) QEL_NOEXCEPT;

/* True when order_total is not zero. */
QEL_API bool Qel_rcpt_have_order_money(const Qel_hash_dict_t *kvs) QEL_NOEXCEPT;

/* True when there is order money and amount is not the whole order_total. */
QEL_API bool Qel_rcpt_is_order_parital_payment(const Qel_hash_dict_t *kvs) QEL_NOEXCEPT;

/* Transaction status. The outcome is read from orig_code, orig_msoft_code and orig_phard_code where
 * the record has them, else from code, msoft_code and phard_code. Words compare without regard to
 * case. */

/* The disposition, such as "Approved"; never absent. */
QEL_API const char *Qel_rcpt_get_result(const Qel_hash_dict_t *kvs,
                                        Qel_rcpt_lang_t lang) QEL_NOEXCEPT;

/* Who decided: the card, the issuer or standin processing; absent when nobody did. */
QEL_API const char *Qel_rcpt_get_mode(const Qel_hash_dict_t *kvs,
                                      Qel_rcpt_lang_t lang) QEL_NOEXCEPT;

/* What the card did: removed, declined, or a chip card that was swiped. */
QEL_API const char *Qel_rcpt_get_card_status(const Qel_hash_dict_t *kvs,
                                             Qel_rcpt_lang_t lang) QEL_NOEXCEPT;

/* The cardholder verification line: PIN verified or bypassed. */
QEL_API const char *Qel_rcpt_get_pin_status(const Qel_hash_dict_t *kvs,
                                            Qel_rcpt_lang_t lang) QEL_NOEXCEPT;

/* The issuer's and the server's response code, joined by '/' when there are both; without either,
 * the EMV authorization response code of an offline decision (Y3, Z1 or Z3). */
QEL_API char *Qel_rcpt_get_respcode(const Qel_hash_dict_t *kvs) QEL_NOEXCEPT;

/* The account of an Interac debit card: a message, or rcpt_acct_type itself. */
QEL_API const char *Qel_rcpt_get_acct_type(const Qel_hash_dict_t *kvs,
                                           Qel_rcpt_lang_t lang) QEL_NOEXCEPT;

/* Date and time of the transaction: rcpt_host_ts as the host gave it, else timestamp (seconds since
 * 1970) in the copy's zone, else now. mm/dd/yy HH:MM:SS in country 840, dd/mm/yy HH:MM:SS in all
 * others. Never absent. */
QEL_API char *Qel_rcpt_format_time(const Qel_hash_dict_t *kvs,
                                   const Qel_rcpt_attrs_t *attrs) QEL_NOEXCEPT;

/* True when u_need_signature is set. */
QEL_API bool Qel_rcpt_need_signature_line(const Qel_hash_dict_t *kvs) QEL_NOEXCEPT;

/* 'X' and underscores, len characters in all (0 counts as 1, more than 65,535 as that); absent when
 * no signature is needed. */
QEL_API char *Qel_rcpt_get_signature_line(const Qel_hash_dict_t *kvs, size_t len) QEL_NOEXCEPT;

/* The cardholder agreement; absent when no signature is needed. */
QEL_API const char *Qel_rcpt_get_signature_agreement(const Qel_hash_dict_t *kvs,
                                                     Qel_rcpt_lang_t lang) QEL_NOEXCEPT;

/* True when u_flowflags holds SIGCAPTURED. */
QEL_API bool Qel_rcpt_was_signature_electronic(const Qel_hash_dict_t *kvs) QEL_NOEXCEPT;

/* That the signature was captured electronically; absent when it was not. */
QEL_API const char *Qel_rcpt_get_signature_electronic(const Qel_hash_dict_t *kvs,
                                                      Qel_rcpt_lang_t lang) QEL_NOEXCEPT;

/* The request to retain the copy; never absent. */
QEL_API const char *Qel_rcpt_get_notice(Qel_rcpt_lang_t lang) QEL_NOEXCEPT;

/* The mark of a duplicate; never absent. */
QEL_API const char *Qel_rcpt_get_duplicate(Qel_rcpt_lang_t lang) QEL_NOEXCEPT;

/* Whose copy it is; never absent. */
QEL_API const char *Qel_rcpt_get_whos_copy(bool is_custcopy, Qel_rcpt_lang_t lang) QEL_NOEXCEPT;

/* True when rcpt_duplicate, u_rcpt_duplicate or u_duplicate is set. */
QEL_API bool Qel_rcpt_is_duplicate(const Qel_hash_dict_t *kvs) QEL_NOEXCEPT;

/* Line items */

typedef enum Qel_rcpt_line_item_type QEL_ENUM_U32 {
    QEL_RCPT_LINE_ITEM_TYPE_ITEM = 0,
    QEL_RCPT_LINE_ITEM_TYPE_ITEM_ADDON = 1,
    QEL_RCPT_LINE_ITEM_TYPE_ITEM_DISC_PERCENT = 2,
    QEL_RCPT_LINE_ITEM_TYPE_ITEM_DISC_FIXED = 3,
    QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_PERCENT = 4,
    QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_FIXED = 5,
    QEL_RCPT_LINE_ITEM_TYPE_ORDER_DISC_CASH = 6,
    QEL_RCPT_LINE_ITEM_TYPE_NOTES = 7
} Qel_rcpt_line_item_type_t;

/* Takes one line; all texts are lent for the call.
 *   info, ret  passed through from Qel_rcpt_generate_line_items
 *   name       the line's name, or the text of a note
 *   qty        quantity as the input has it; absent when it has none, and for notes
 *   price      formatted money, or the input's own text for percentages and cash discounts; absent
 *              when there is none or it is unreadable, and for notes */
typedef void (*line_item_add_cb)(void *info, const char *name, const char *qty, const char *price,
                                 Qel_rcpt_line_item_type_t type, void *ret);

/* Hands the line items in the JSON text to cb: first all top-level entries whose type does not
 * begin with "discount", in order, then those whose type does; each entry is followed by its note
 * and by its modifiers, these likewise. Entries without a name are skipped with all they hold. Text
 * that is absent or no JSON array calls nothing, and so does an absent cb. cb must not throw. */
QEL_API void Qel_rcpt_generate_line_items(const char *items, void *info,
                                          const Qel_rcpt_attrs_t *attrs, line_item_add_cb cb,
                                          void *ret) QEL_NOEXCEPT;

/* A static word for the type: "item", "addon", "item_discount_percent", "item_discount_fixed",
 * "order_discount_percent", "order_discount_fixed", "order_discount_cash", "note", or "unknown";
 * never absent. */
QEL_API const char *Qel_rcpt_line_item_type_to_str(Qel_rcpt_line_item_type_t type) QEL_NOEXCEPT;

/* Transaction types */

/* u_cardclass, else card_cardclass, else ""; never absent. */
QEL_API const char *Qel_rcpt_get_cardclass(const Qel_hash_dict_t *kvs) QEL_NOEXCEPT;

/* The receipt's title for the request's action word; the action itself, absent or not, for one
 * without a title. The card class (absent: neither) tells credit from debit sales. */
QEL_API const char *Qel_rcpt_get_tran_type(const char *action, Qel_rcpt_lang_t lang,
                                           const char *cardclass) QEL_NOEXCEPT;

/* As Qel_rcpt_get_tran_type with the Moneris processor's English titles in front; orig_action is
 * what a reversal or void corrects ("purchase", "refund" or "preauth"; may be absent). */
QEL_API const char *Qel_rcpt_get_tran_type_moneris(const char *action, const char *orig_action,
                                                   Qel_rcpt_lang_t lang,
                                                   const char *cardclass) QEL_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
