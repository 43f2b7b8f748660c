// What a receipt says of the outcome, for the check, the command and the packages.
#ifndef QEL_RCPT_OUTCOME_HPP
#define QEL_RCPT_OUTCOME_HPP

#include "qel_rcpt_int.h"

#include <qelstdlib.h>

namespace qel_rcpt
{

// Whether a result in English is an approval, be it in part.
inline bool states_approval(const char *result)
{
    const auto is = [result](Qel_rcpt_msg_t msg) {
        return Qel_str_eq(result, Qel_rcpt_msg_to_string(QEL_RCPT_LANG_EN, msg));
    };
    return is(QEL_RCPT_MSG_APPROVED) || is(QEL_RCPT_MSG_PARTIAL_APPROVAL);
}

// Whether the receipt says that the transaction is approved.
inline bool is_approved(const Qel_hash_dict_t *kvs)
{
    return states_approval(Qel_rcpt_get_result(kvs, QEL_RCPT_LANG_EN));
}

} // namespace qel_rcpt

#endif
