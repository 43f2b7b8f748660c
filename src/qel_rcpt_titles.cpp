// What a transaction is called.
#include "qel_rcpt_rules.hpp"

#include <algorithm>

using qel_rcpt::get_nonempty;

const char *Qel_rcpt_get_cardclass(const Qel_hash_dict_t *kvs) noexcept
{
    return Qel_str_safe(get_nonempty(kvs, "u_cardclass", "card_cardclass"));
}

const char *Qel_rcpt_get_tran_type(const char *action, Qel_rcpt_lang_t lang,
                                   const char *cardclass) noexcept
{
    struct tran_type {
        const char *action;
        Qel_rcpt_msg_t msg;
    };
    static constexpr tran_type tran_types[] = {
        {"sale", QEL_RCPT_MSG_PURCHASE},
        {"redemption", QEL_RCPT_MSG_PURCHASE},
        {"force", QEL_RCPT_MSG_PURCHASE},
        {"tip", QEL_RCPT_MSG_PURCHASE},
        {"ebtcbcash", QEL_RCPT_MSG_PURCHASE},
        {"ebtcbsale", QEL_RCPT_MSG_PURCHASE},
        {"ebtfssale", QEL_RCPT_MSG_PURCHASE},
        {"ebtfsvoucher", QEL_RCPT_MSG_PURCHASE},
        {"incremental", QEL_RCPT_MSG_PURCHASE},
        {"preauth", QEL_RCPT_MSG_AUTHORIZATION},
        {"activate", QEL_RCPT_MSG_ACTIVATE},
        {"issue", QEL_RCPT_MSG_ACTIVATE},
        {"return", QEL_RCPT_MSG_REFUND},
        {"merchreturn", QEL_RCPT_MSG_REFUND},
        {"ebtfsreturn", QEL_RCPT_MSG_REFUND},
        {"void", QEL_RCPT_MSG_REFUND},
        {"refund", QEL_RCPT_MSG_REFUND},
        {"reload", QEL_RCPT_MSG_RELOAD},
        {"credit", QEL_RCPT_MSG_RELOAD},
        {"balanceinq", QEL_RCPT_MSG_BALANCE_INQ},
        {"ebtcbbalance", QEL_RCPT_MSG_BALANCE_INQ},
        {"ebtfsbalance", QEL_RCPT_MSG_BALANCE_INQ},
        {"avsonly", QEL_RCPT_MSG_AVSONLY},
        {"verifyonly", QEL_RCPT_MSG_AVSONLY},
        {"admin", QEL_RCPT_MSG_ADMIN},
        {"cardtype", QEL_RCPT_MSG_ADMIN},
        {"cashout", QEL_RCPT_MSG_CASHOUT},
    };
    const auto *type = std::ranges::find_if(
        tran_types, [&](const tran_type &t) { return Qel_str_caseeq(action, t.action); });
    if (type == std::end(tran_types))
        return action;
    if (type->msg != QEL_RCPT_MSG_PURCHASE)
        return Qel_rcpt_msg_to_string(lang, type->msg);
    if (Qel_str_caseeq(cardclass, "debit"))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_PURCHASE_DEBIT);
    if (Qel_str_caseeq(cardclass, "credit"))
        return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_PURCHASE_CREDIT);
    return Qel_rcpt_msg_to_string(lang, QEL_RCPT_MSG_PURCHASE);
}

const char *Qel_rcpt_get_tran_type_moneris(const char *action, const char *orig_action,
                                           Qel_rcpt_lang_t lang, const char *cardclass) noexcept
{
    // An absent orig_action in a row stands for any.
    struct tran_type {
        const char *action;
        const char *orig_action;
        const char *title;
    };
    static constexpr tran_type tran_types[] = {
        {"sale", nullptr, "Purchase"},
        {"incremental", nullptr, "Purchase"},
        {"preauth", nullptr, "Pre-authorization"},
        {"force", nullptr, "Pre-authorization Completion"},
        {"preauthcomplete", nullptr, "Pre-authorization Completion"},
        {"return", nullptr, "Refund"},
        {"refund", nullptr, "Refund"},
        {"reversal", "purchase", "Purchase Correction"},
        {"void", "purchase", "Purchase Correction"},
        {"reversal", "refund", "Refund Correction"},
        {"void", "refund", "Refund Correction"},
        {"reversal", "preauth", "Pre-authorization Completion"},
        {"void", "preauth", "Pre-authorization Completion"},
        {"reversal", nullptr, "Correction"},
        {"void", nullptr, "Correction"},
        {"avsonly", nullptr, "Card Verification"},
        {"verifyonly", nullptr, "Card Verification"},
    };
    for (const tran_type &type : tran_types) {
        const bool any_orig = type.orig_action == nullptr;
        if (Qel_str_caseeq(action, type.action) &&
            (any_orig || Qel_str_caseeq(orig_action, type.orig_action)))
            return type.title;
    }
    return Qel_rcpt_get_tran_type(action, lang, cardclass);
}
