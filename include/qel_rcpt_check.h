/* libqelrcpt: what is wrong with a transaction record before it becomes a receipt.
 *
 * Rendering never fails: what it cannot use it leaves out. The check says what that would be, what
 * a receipt must show and does not, and what it must not show and would:
 *
 *     static void print(void *info, const Qel_rcpt_finding_t *finding)
 *     {
 *         printf("%s: %s (%s)\n", finding->key, finding->message, finding->rule);
 *     }
 *     ...
 *     if (Qel_rcpt_check(record, &config, QEL_RCPT_FORM_GENERAL, print, NULL) > 0)
 *         puts("not to be printed like this");
 *
 * docs/requirements.md lists the rules. They were gathered from public documents; such rules differ
 * by scheme, country and acquirer, and change. The acquirer has the last word.
 *
 * The check does no input or output and keeps nothing; the same record, configuration and form give
 * the same findings in the same order. It takes time in proportion to the size of the record.
 *
 * Threads: as for the generators.
 */
#ifndef QEL_RCPT_CHECK_H
#define QEL_RCPT_CHECK_H

#include <qel_rcpt.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef enum Qel_rcpt_severity QEL_ENUM_U32 {
    QEL_RCPT_SEVERITY_NOTE = 0,    /* worth knowing */
    QEL_RCPT_SEVERITY_WARNING = 1, /* the receipt may be wrong, or lack what some ask for */
    QEL_RCPT_SEVERITY_ERROR = 2    /* the receipt is wrong or breaks a rule */
} Qel_rcpt_severity_t;

/* What the receipt will be rendered as. Any other value means the general forms. */
typedef enum Qel_rcpt_form QEL_ENUM_U32 {
    QEL_RCPT_FORM_GENERAL = 0,      /* plain text, HTML, XML and JSON: they show the same */
    QEL_RCPT_FORM_MONERIS = 1,      /* in-store; e-commerce for a merchant of that industry */
    QEL_RCPT_FORM_MONERIS_ECOMM = 2 /* e-commerce */
} Qel_rcpt_form_t;

/* A finding that has no place inside a value. */
#define QEL_RCPT_NO_OFFSET SIZE_MAX

/* One thing that is wrong. All texts are lent for the call, except for rule, source and date, which
 * are constants; none is absent. */
typedef struct Qel_rcpt_finding {
    Qel_rcpt_severity_t severity;
    const char *rule; /* its name, such as "amount-unreadable"; names do not change */
    const char *key;  /* of the record, also one that the record lacks; "" for the whole record or
                       * the configuration */
    size_t offset;    /* in bytes inside the key's value, at most its length; QEL_RCPT_NO_OFFSET for
                       * the whole value, or a key that the record does not have */
    const char *message; /* one sentence in English: what is wrong and what to do. UTF-8; never a
                          * card number; each control character of the record, character that turns
                          * the direction of writing and byte that is not UTF-8 is a "?" */
    const char *source;  /* the document that asks for it; "" for a rule of this library */
    const char *date;    /* when that document was read, as year and month; "" without a document */
} Qel_rcpt_finding_t;

/* Takes one finding; info is passed through from Qel_rcpt_check. It must not throw. */
typedef void (*Qel_rcpt_check_cb)(void *info, const Qel_rcpt_finding_t *finding);

/* Checks the record and hands each finding to cb, group by group of rules.
 *   kvs     the transaction record; absent counts as empty
 *   config  the merchant; absent: as for the generators
 *   form    what it will be rendered as
 *   cb      may be absent, for the count alone
 *   info    passed through to cb
 * Returns the number of findings that are errors. Nothing is left for the caller to release. */
QEL_API size_t Qel_rcpt_check(const Qel_hash_dict_t *kvs, const Qel_rcpt_config_t *config,
                              Qel_rcpt_form_t form, Qel_rcpt_check_cb cb, void *info) QEL_NOEXCEPT;

/* What a rule is about. */
typedef enum Qel_rcpt_rule_group QEL_ENUM_U32 {
    QEL_RCPT_RULES_VALUES = 0,         /* values that cannot be used */
    QEL_RCPT_RULES_CONTRADICTIONS = 1, /* values that contradict each other */
    QEL_RCPT_RULES_SECRETS = 2,        /* what must not be shown */
    QEL_RCPT_RULES_REQUIRED = 3        /* what must be shown */
} Qel_rcpt_rule_group_t;

/* The facts of a rule: constants, none absent. */
typedef struct Qel_rcpt_rule {
    const char *name;
    Qel_rcpt_severity_t severity;
    Qel_rcpt_rule_group_t group;
    const char *wants;   /* what the rule wants */
    const char *applies; /* when; "" for always */
    const char *keys;    /* the keys that it is about, separated by a comma and a blank */
    const char *source;  /* as in a finding */
    const char *date;
} Qel_rcpt_rule_t;

/* The rule at this place of the table, counted from 0; absent beyond its end. Any thread, any time.
 */
QEL_API const Qel_rcpt_rule_t *Qel_rcpt_check_rule(size_t index) QEL_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
