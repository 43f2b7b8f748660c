// The outcome in words: result, mode, what the card did, verification, response code.
#include "qel_rcpt_rules.hpp"

#include <algorithm>
#include <span>

using qel_rcpt::get;
using qel_rcpt::get_nonempty;
using qel_rcpt::is_one_of;
using qel_rcpt::key_contains;
using qel_rcpt::key_is;
using qel_rcpt::key_is_true;
using qel_rcpt::was_declined_by_card;

namespace
{

// A key of the outcome; orig holds that of the transaction being corrected or completed.
struct outcome_key {
    const char *orig;
    const char *own;
};

constexpr outcome_key outcome_code = {"orig_code", "code"};
constexpr outcome_key outcome_msoft_code = {"orig_msoft_code", "msoft_code"};
constexpr outcome_key outcome_phard_code = {"orig_phard_code", "phard_code"};

const char *Qel_rcpt_get_orig(const Qel_hash_dict_t *kvs, const outcome_key &key)
{
    return get_nonempty(kvs, key.orig, key.own);
}

bool orig_is(const Qel_hash_dict_t *kvs, const outcome_key &key, const char *word)
{
    return Qel_str_caseeq(Qel_rcpt_get_orig(kvs, key), word);
}

bool was_canceled(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "u_errorcode", "canceled") ||
           key_is(kvs, "reversal_reason", "CUSTOMERCANCEL");
}

bool was_voided(const Qel_hash_dict_t *kvs)
{
    return key_contains(kvs, "txnstatus", "VOIDED");
}

bool was_approved(const Qel_hash_dict_t *kvs)
{
    return qel_rcpt::is_approving(Qel_rcpt_get_orig(kvs, outcome_code));
}

bool was_partially_approved(const Qel_hash_dict_t *kvs)
{
    return !Qel_str_isempty(get(kvs, "authamount")) && was_approved(kvs);
}

bool is_call_issuer(const Qel_hash_dict_t *kvs)
{
    return orig_is(kvs, outcome_code, "call") || orig_is(kvs, outcome_phard_code, "call");
}

bool has_answer_of_processor(const Qel_hash_dict_t *kvs)
{
    const char *phard_code = Qel_rcpt_get_orig(kvs, outcome_phard_code);
    return !Qel_str_isempty(phard_code) && !Qel_str_caseeq(phard_code, "unknown");
}

bool was_chip_swiped(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "rcpt_entry_mode", "f");
}

// A condition of the record and the message that it calls for.
struct status_rule {
    bool (*holds)(const Qel_hash_dict_t *kvs);
    Qel_rcpt_msg_t msg;
};

// The message of the first rule that holds, else the one given.
const char *first_status(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang,
                         std::span<const status_rule> rules, Qel_rcpt_msg_t otherwise)
{
    const auto rule =
        std::ranges::find_if(rules, [&](const status_rule &r) { return r.holds(kvs); });
    return Qel_rcpt_msg_to_string(lang, rule == rules.end() ? otherwise : rule->msg);
}

// Only a request of the payment flow itself has a mode and an offline response code.
bool is_payment_action(const Qel_hash_dict_t *kvs)
{
    const char *action = get(kvs, "u_action");
    return Qel_str_isempty(action) || is_one_of(action, {"txnrequest", "txnfinish", "txnquick"});
}

bool is_approval_of_issuer(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "code", "auth") &&
           (orig_is(kvs, outcome_phard_code, "success") || key_is_true(kvs, "u_standin"));
}

bool is_decline_of_issuer(const Qel_hash_dict_t *kvs)
{
    const char *error = get(kvs, "u_errorcode");
    return (Qel_str_isempty(error) || Qel_str_caseeq(error, "paxtrel_proc_error")) &&
           orig_is(kvs, outcome_code, "deny") && orig_is(kvs, outcome_msoft_code, "int_success");
}

bool was_host_out_of_reach(const Qel_hash_dict_t *kvs)
{
    return key_is(kvs, "u_errorcode", "PAXTREL_CONNFAIL") ||
           orig_is(kvs, outcome_code, "TIMEOUT") ||
           is_one_of(Qel_rcpt_get_orig(kvs, outcome_msoft_code),
                     {"CONN_MAXATTEMPTS", "CONN_MAXSENDS"}) ||
           orig_is(kvs, outcome_phard_code, "NOREPLY");
}

// The EMV authorization response code of a transaction that was decided without the host.
char *Qel_rcpt_get_respcode_offline(const Qel_hash_dict_t *kvs)
{
    if (!is_payment_action(kvs))
        return nullptr;
    if (orig_is(kvs, outcome_code, "auth"))
        return key_is_true(kvs, "u_standin") ? Qel_strdup("Y3") : nullptr;
    if (was_host_out_of_reach(kvs))
        return Qel_strdup("Z3");
    if (was_declined_by_card(kvs))
        return Qel_strdup("Z1");
    return nullptr;
}

} // namespace

const char *Qel_rcpt_get_result(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang) noexcept
{
    static constexpr status_rule rules[] = {
        {was_canceled, QEL_RCPT_MSG_CANCELED},
        {was_voided, QEL_RCPT_MSG_VOIDED},
        {was_partially_approved, QEL_RCPT_MSG_PARTIAL_APPROVAL},
        {was_approved, QEL_RCPT_MSG_APPROVED},
        {is_call_issuer, QEL_RCPT_MSG_DECLINE_CALL},
        {qel_rcpt::was_declined_by_issuer, QEL_RCPT_MSG_NOT_APPROVED},
        {has_answer_of_processor, QEL_RCPT_MSG_DECLINED},
    };
    return first_status(kvs, lang, rules, QEL_RCPT_MSG_NOT_COMPLETE);
}

const char *Qel_rcpt_get_mode(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang) noexcept
{
    if (!is_payment_action(kvs))
        return nullptr;
    if (was_declined_by_card(kvs))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_CARD);
    if (!is_approval_of_issuer(kvs) && !is_decline_of_issuer(kvs))
        return nullptr;
    return Qel_rcpt_msg_to_string(lang, key_is_true(kvs, "u_standin") ? QEL_RCPT_MSG_ISSUER_STANDIN
                                                                      : QEL_RCPT_MSG_ISSUER);
}

const char *Qel_rcpt_get_card_status(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang) noexcept
{
    static constexpr status_rule rules[] = {
        {qel_rcpt::was_card_removed, QEL_RCPT_MSG_CARD_REMOVED},
        {was_declined_by_card, QEL_RCPT_MSG_DECLINE_BY_CARD},
        {was_chip_swiped, QEL_RCPT_MSG_CHIP_SWIPED},
    };
    return first_status(kvs, lang, rules, QEL_RCPT_MSG_NONE);
}

const char *Qel_rcpt_get_pin_status(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang) noexcept
{
    if (is_one_of(Qel_rcpt_get_orig(kvs, outcome_code), {"deny", "timeout"}) ||
        orig_is(kvs, outcome_phard_code, "bad_pin"))
        return nullptr;
    if (key_is_true(kvs, "rcpt_emv_pinbypass"))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_PIN_BYPASSED);
    if (is_one_of(get(kvs, "rcpt_emv_cvm"), {"pin", "pinsig"}))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_VERIED_PIN);
    return nullptr;
}

char *Qel_rcpt_get_respcode(const Qel_hash_dict_t *kvs) noexcept
{
    const char *issuer_code = get(kvs, "rcpt_issuer_resp_code");
    const char *server_code = get(kvs, "rcpt_resp_code");
    if (Qel_str_isempty(issuer_code) && Qel_str_isempty(server_code))
        return Qel_rcpt_get_respcode_offline(kvs);

    qel::buf code(Qel_buf_create());
    Qel_buf_add_str(code.get(), issuer_code);
    if (!Qel_str_isempty(issuer_code) && !Qel_str_isempty(server_code))
        Qel_buf_add_byte(code.get(), '/');
    Qel_buf_add_str(code.get(), server_code);
    return qel::finish(std::move(code)).release();
}

const char *Qel_rcpt_get_acct_type(const Qel_hash_dict_t *kvs, Qel_rcpt_lang_t lang) noexcept
{
    const char *acct_type = get(kvs, "rcpt_acct_type");
    if (!key_is(kvs, "cardtype", "Interac") || Qel_str_isempty(acct_type))
        return nullptr;
    if (Qel_str_caseeq_max(acct_type, "flash", 5) || key_is(kvs, "rcpt_entry_mode", "t"))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_FLASH_DEFAULT);
    if (is_one_of(acct_type, {"checking", "chequing"}))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_CHECKING_ENCA);
    if (Qel_str_caseeq(acct_type, "savings"))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_SAVINGS);
    return acct_type;
}
