// The Moneris processor's in-store receipt: plain text of 40 columns.
#include "qel_rcpt_lines.hpp"
#include "qel_rcpt_rows.hpp"

#include <algorithm>
#include <array>
#include <iterator>

using qel_rcpt::block_slot;
using qel_rcpt::get;
using qel_rcpt::is_one_of;
using qel_rcpt::key_contains;
using qel_rcpt::key_is;
using qel_rcpt::key_is_true;
using qel_rcpt::plain_block;
using qel_rcpt::plain_receipt;

namespace
{

// The record's value under key, also an empty one; the one under fallback when it has no such key.
const char *get_or(const Qel_hash_dict_t *kvs, const char *key, const char *fallback)
{
    return Qel_hash_dict_get_direct_default(kvs, key, get(kvs, fallback));
}

const char *get_code(const Qel_hash_dict_t *kvs)
{
    return get_or(kvs, "orig_code", "code");
}

bool is_authorized(const Qel_hash_dict_t *kvs)
{
    return Qel_str_caseeq(get_code(kvs), "auth");
}

// Result line

bool has_approving_code(const Qel_hash_dict_t *kvs)
{
    return qel_rcpt::is_approving(get_code(kvs));
}

bool has_cancel_error(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "u_errorcode", "canceled");
}

bool was_reversed(const Qel_hash_dict_t *kvs)
{
    return key_contains(kvs, "u_flowflags", "reversed");
}

bool was_left_open(const Qel_hash_dict_t *kvs)
{
    return is_one_of(get_code(kvs), {"tout", "call"}) ||
           Qel_str_caseeq(get_or(kvs, "orig_phard_code", "phard_code"), "call");
}

// The codes with which an Interac issuer says no.
bool was_declined_by_interac(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "cardtype", "interac") &&
           is_one_of(get(kvs, "rcpt_issuer_resp_code"),
                     {"05", "51", "54", "55", "57", "58", "61", "62", "65", "75", "82", "92"});
}

bool otherwise(const Qel_hash_dict_t * /*kvs*/)
{
    return true;
}

struct result_rule {
    bool (*holds)(const Qel_hash_dict_t *kvs);
    Qel_rcpt_msg_t msg;
    bool has_codes = true; // the issuer's and the server's stand around the message
};

// The first that holds.
constexpr result_rule result_rules[] = {
    {has_approving_code, QEL_RCPT_MSG_APPROVED_TY},
    {has_cancel_error, QEL_RCPT_MSG_CANCELED},
    {was_reversed, QEL_RCPT_MSG_NOT_COMPLETE, false},
    {was_left_open, QEL_RCPT_MSG_NOT_COMPLETE},
    {was_declined_by_interac, QEL_RCPT_MSG_NOT_APPROVED},
    {qel_rcpt::was_declined_by_issuer, QEL_RCPT_MSG_NOT_APPROVED},
    {otherwise, QEL_RCPT_MSG_NOT_COMPLETE},
};

using result_text = std::array<char, 256>;

result_text get_result(const plain_receipt &info)
{
    const auto *rule =
        std::ranges::find_if(result_rules, [&](const result_rule &r) { return r.holds(info.kvs); });
    const char *issuer_code = rule->has_codes ? get(info.kvs, "rcpt_issuer_resp_code") : nullptr;
    const char *server_code = rule->has_codes ? get(info.kvs, "rcpt_resp_code") : nullptr;
    result_text result{};
    Qel_snprintf(result.data(), result.size(), "%s %s %s", issuer_code,
                 Qel_rcpt_msg_to_string(info.attrs.lang, rule->msg), server_code);
    return result;
}

// Card status

bool has_refusal_of_card(const Qel_hash_dict_t *kvs)
{
    return (key_is(kvs, "u_errorcode", "emv_card_deny") && was_reversed(kvs)) ||
           qel_rcpt::was_declined_by_chip(kvs);
}

struct card_status_rule {
    bool (*holds)(const Qel_hash_dict_t *kvs);
    Qel_rcpt_msg_t msg;
    const char *number; // the processor's
};

// The first that holds.
constexpr card_status_rule card_status_rules[] = {
    {qel_rcpt::was_card_removed, QEL_RCPT_MSG_CARD_REMOVED, "991"},
    {has_refusal_of_card, QEL_RCPT_MSG_DECLINE_BY_CARD, "990"},
};

// What the card did, into msg; false, and nothing written, when that is nothing of note.
bool get_card_status(const plain_receipt &info, char *msg, std::size_t msg_len)
{
    const auto *rule = std::ranges::find_if(
        card_status_rules, [&](const card_status_rule &r) { return r.holds(info.kvs); });
    if (rule == std::end(card_status_rules))
        return false;
    Qel_snprintf(msg, msg_len, "%s - %s", Qel_rcpt_msg_to_string(info.attrs.lang, rule->msg),
                 rule->number);
    return true;
}

// The processor's words for the record's

struct translation {
    const char *word;
    const char *shown;
};

constexpr translation entry_modes[] = {
    {"t", "H"}, // contactless
    {"r", "T"},
};

constexpr translation card_brands[] = {
    {"disc", "Discover"},
    {"mc", "Mastercard"},
    {"amex", "American Express"},
};

// A word without translation stays as it is.
template <std::size_t Count>
const char *translate(const translation (&words)[Count], const char *word)
{
    const auto *known = std::ranges::find_if(
        words, [&](const translation &t) { return Qel_str_caseeq(word, t.word); });
    return known == std::end(words) ? word : known->shown;
}

const char *get_entry_mode(const plain_receipt &info)
{
    return translate(entry_modes, get(info.kvs, "rcpt_entry_mode"));
}

const char *moneris_cardtype(const char *cardtype)
{
    return translate(card_brands, cardtype);
}

// Blocks

// A missing phone number is left out here.
Qel_rcpt_msg_t missing_message(const qel_rcpt::merchant_field &field)
{
    return field.missing == QEL_RCPT_MSG_UNKNOWN_PHONE ? QEL_RCPT_MSG_NONE : field.missing;
}

void generate_block_merchinfo(plain_receipt &info, const block_slot &slot)
{
    plain_block block(info);
    block.center(QEL_RCPT_MSG_TRECORD);
    if (Qel_rcpt_is_duplicate(info.kvs)) {
        block.blank();
        block.center(Qel_rcpt_get_duplicate(info.attrs.lang));
    }
    block.blank();
    for (const qel_rcpt::merchant_field &field : qel_rcpt::merchant_fields)
        block.left(
            qel_rcpt::get_or_message(info.kvs, field.key, info.attrs.lang, missing_message(field)));
    block.store(slot);
}

void generate_block_type(plain_receipt &info, const block_slot &slot)
{
    const qel::dict custom = qel_rcpt::parse_custom_fields(info.kvs);
    plain_block block(info);
    block.label_prefix(QEL_RCPT_MSG_TYPE,
                       qel_rcpt::get_title_moneris(info.kvs, info.attrs.lang,
                                                   get(custom.get(), "correction_type")));
    block.store(slot);
}

// After a partial approval: what was authorized and what is still due.
void add_authorized_amount(plain_block &block, const plain_receipt &info)
{
    const qel::text authorized(Qel_rcpt_format_authamount(info.kvs, &info.attrs));
    if (!authorized || !qel_rcpt::is_positive(get(info.kvs, "authamount")))
        return;
    block.labelled(QEL_RCPT_MSG_PARTIAL_AMOUNT, authorized.get());
    block.labelled(QEL_RCPT_MSG_AMOUNT_DUE,
                   qel::text(Qel_rcpt_format_amount_due(info.kvs, &info.attrs)).get());
}

void generate_block_money(plain_receipt &info, const block_slot &slot)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    plain_block block(info);
    block.left_right({block.label(QEL_RCPT_MSG_ACCOUNT_TYPE),
                      qel::view(moneris_cardtype(get(kvs, "cardtype"))),
                      {},
                      qel::view(Qel_rcpt_get_acct_type(kvs, info.attrs.lang))});
    block.labelled(QEL_RCPT_MSG_AMOUNT,
                   qel::text(Qel_rcpt_format_subtotal(kvs, &info.attrs)).get());
    add_authorized_amount(block, info);
    block.positive_money(QEL_RCPT_MSG_TIP, qel_rcpt::get_tip(kvs));
    block.positive_money(QEL_RCPT_MSG_CASHBACK_S, get(kvs, "cashbackamount"));
    block.positive_money(QEL_RCPT_MSG_SURCHARGE, get(kvs, "surchargeamount"));
    block.positive_money(QEL_RCPT_MSG_TAX, get(kvs, "tax"));
    block.labelled(QEL_RCPT_MSG_TOTAL,
                   qel::text(Qel_rcpt_format_total_amount(kvs, &info.attrs)).get());
    if (slot.is_custcopy)
        block.money(QEL_RCPT_MSG_BALANCE, get(kvs, "balance"));
    block.store(slot);
}

// The processor's reference number with the letter of the entry mode.
void add_reference_number(plain_block &block, const plain_receipt &info)
{
    const qel::dict custom = qel_rcpt::parse_custom_fields(info.kvs);
    const char *number = get(custom.get(), "refnum");
    const char *entry_mode = get_entry_mode(info);
    if (Qel_str_isempty(number) && Qel_str_isempty(entry_mode))
        return;
    std::array<char, 256> reference{};
    Qel_snprintf(reference.data(), reference.size(), "%s %s", number, entry_mode);
    block.left_right("REFERENCE: ", reference.data());
}

void generate_block_reference(plain_receipt &info, const block_slot &slot)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    plain_block block(info);
    block.labelled(QEL_RCPT_MSG_CARD, get(kvs, "account"));
    block.labelled(QEL_RCPT_MSG_TIME, qel::text(Qel_rcpt_format_time(kvs, &info.attrs)).get());
    add_reference_number(block, info);
    block.labelled(QEL_RCPT_MSG_AUTH_NUM, get(kvs, "auth"));
    qel_rcpt::for_each_value(
        info, slot, qel_rcpt::emv_rows, qel_rcpt::in_store,
        [&](const qel_rcpt::row & /*row*/, const char *text) { block.left(text); });
    block.store(slot);
}

void add_card_status(plain_block &block, const plain_receipt &info)
{
    std::array<char, 64> status{};
    if (!get_card_status(info, status.data(), status.size()))
        return;
    block.left(status.data());
    block.blank();
}

// How the card was read and its holder verified, when the transaction was authorized.
void add_verification(plain_block &block, const plain_receipt &info)
{
    if (!is_authorized(info.kvs))
        return;
    block.left(Qel_rcpt_get_pin_status(info.kvs, info.attrs.lang));
    if (key_is(info.kvs, "rcpt_entry_mode", "f"))
        block.left(QEL_RCPT_MSG_CHIP_SWIPED);
}

// The device that a contactless payment was made with: the merchant's to know, and the customer's
// where nobody attends.
void add_form_factor(plain_block &block, const plain_receipt &info, bool is_custcopy)
{
    const char *form_factor = get(info.kvs, "rcpt_emv_form_factor");
    if (Qel_str_isempty(form_factor) || (is_custcopy && !info.is_unattended))
        return;
    block.blank();
    block.left_right("FF/DT", form_factor);
}

void generate_block_disposition(plain_receipt &info, const block_slot &slot)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    plain_block block(info);
    add_card_status(block, info);
    add_verification(block, info);
    if (key_is_true(kvs, "u_emv_chip_malfunction"))
        block.left(QEL_RCPT_MSG_CHIP_MALFUNCTION);
    if (!Qel_str_isempty(get(kvs, "authamount")))
        block.left(QEL_RCPT_MSG_PARTIAL_APPROVAL);
    block.blank();
    block.labelled(QEL_RCPT_MSG_INVOICE_NUM, get_or(kvs, "ordernum", "ptrannum"));
    block.labelled(QEL_RCPT_MSG_TTID, get(kvs, "ttid"));
    block.blank();
    block.center(get_result(info).data());
    add_form_factor(block, info, slot.is_custcopy);
    block.store(slot);
}

void generate_block_signature(plain_receipt &info, const block_slot &slot)
{
    const Qel_hash_dict_t *kvs = info.kvs;
    const Qel_rcpt_lang_t lang = info.attrs.lang;
    plain_block block(info);
    if (Qel_rcpt_need_signature_line(kvs)) {
        block.left(QEL_RCPT_MSG_SIGNATURE);
        block.blank();
        block.left(qel::text(Qel_rcpt_get_signature_line(kvs, info.line_len)).get());
        block.blank();
        block.center(Qel_rcpt_get_signature_agreement(kvs, lang));
    } else {
        block.center(Qel_rcpt_get_signature_electronic(kvs, lang));
    }
    block.store(slot);
}

void generate_block_notice(plain_receipt &info, const block_slot &slot)
{
    const Qel_rcpt_lang_t lang = info.attrs.lang;
    plain_block block(info);
    block.center(Qel_rcpt_get_notice(lang));
    block.blank();
    block.center(Qel_rcpt_get_whos_copy(slot.is_custcopy, lang));
    if (Qel_rcpt_is_duplicate(info.kvs)) {
        block.blank();
        block.center(Qel_rcpt_get_duplicate(lang));
    }
    block.store(slot);
}

constexpr qel_rcpt::block_builder<plain_receipt> block_builders[] = {
    {"merch_info", generate_block_merchinfo},
    {"type", generate_block_type},
    {"money", generate_block_money, qel_rcpt::by_language | qel_rcpt::by_balance},
    {"reference", generate_block_reference},
    {"disposition", generate_block_disposition, qel_rcpt::by_copy},
    {"signature", generate_block_signature, qel_rcpt::merch_only},
    {"notice", generate_block_notice, qel_rcpt::by_copy},
};
static_assert(qel_rcpt::makes_blocks_of("moneris", block_builders));

bool has_industry(const Qel_rcpt_config_t *config, Qel_rcpt_ind_t industry)
{
    return config != nullptr && (config->industry & industry) != 0;
}

} // namespace

Qel_hash_dict_t *Qel_rcpt_generate_plain_moneris(Qel_hash_dict_t *kvs,
                                                 const Qel_rcpt_config_t *config) noexcept
{
    if (has_industry(config, QEL_RCPT_IND_ECOMM))
        return Qel_rcpt_generate_plain_moneris_ecomm(kvs, config);
    plain_receipt info{};
    info.kvs = kvs;
    info.line_break = "\r\n";
    info.line_len = 40;
    info.is_unattended = has_industry(config, QEL_RCPT_IND_SELFSERV);
    return qel_rcpt::generate_copies(info, config, block_builders);
}
