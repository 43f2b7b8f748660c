// What a receipt says of the outcome, for the check, the command and the packages.
#ifndef QEL_RCPT_OUTCOME_HPP
#define QEL_RCPT_OUTCOME_HPP

#include "qel_rcpt_int.h"

#include <qelstdlib.h>

namespace qel_rcpt
{

// Whether the receipt says that the transaction is approved, be it in part.
inline bool is_approved(const Qel_hash_dict_t *kvs)
{
    const auto says = [result = Qel_rcpt_get_result(kvs, QEL_RCPT_LANG_EN)](Qel_rcpt_msg_t msg) {
        return Qel_str_eq(result, Qel_rcpt_msg_to_string(QEL_RCPT_LANG_EN, msg));
    };
    return says(QEL_RCPT_MSG_APPROVED) || says(QEL_RCPT_MSG_PARTIAL_APPROVAL);
}

} // namespace qel_rcpt

#endif
