/* The headers are C11, and a receipt can be made from C. */
#include <qel_rcpt.h>
#include <qel_rcpt_check.h>
#include <qel_rcpt_int.h>
#include <qel_rcpt_plain.h>
#include <qel_rcpt_print.h>
#include <qelstdlib.h>
#include <qelstdlib_formats.h>

#include <stdio.h>
#include <string.h>

static int check(const char *what, const char *expected, const char *actual)
{
    if (actual != NULL && strcmp(expected, actual) == 0)
        return 0;
    fprintf(stderr, "%s: expected \"%s\", got \"%s\"\n", what, expected,
            actual == NULL ? "(absent)" : actual);
    return 1;
}

/* A block of the caller's own, from the exported layout operations. */
static int check_own_layout(void)
{
    Qel_rcpt_plain_t info = {.line_break = "\n", .line_len = 20};
    Qel_list_str_t *lines = Qel_list_str_create(QEL_LIST_STR_NONE);
    int failed = 0;

    info.blocks = Qel_hash_dict_create(16, 75, QEL_HASH_DICT_KEYS_ORDERED);
    Qel_rcpt_setup_rcpt_attrs(&info.attrs, NULL, true);
    Qel_rcpt_plain_format_center(&info, "Coffee", lines);
    Qel_rcpt_plain_add_money(&info, "Total", "3.5", lines, false);
    Qel_rcpt_plain_add_block(&info, "own", lines);
    failed = check("own layout", "       COFFEE\nTOTAL          $3.50",
                   Qel_hash_dict_get_direct(info.blocks, "own"));

    Qel_list_str_destroy(lines);
    Qel_hash_dict_destroy(info.blocks);
    return failed;
}

/* A printer that is all zero, from C. */
static int check_print(const Qel_hash_dict_t *blocks, const Qel_hash_dict_t *record)
{
    const Qel_rcpt_printer_t printer = {0};
    Qel_rcpt_printed_t printed;
    char *bytes = Qel_rcpt_print(blocks, record, true, &printer, &printed);
    int failed = 0;

    if (bytes == NULL || printed.len < 50 || printed.fault != QEL_RCPT_PRINT_FAULT_NONE)
        return check("printing", "bytes", Qel_rcpt_print_fault_to_str(printed.fault));
    bytes[2] = '\0';
    failed = check("reset at the start", "\x1B@", bytes);
    failed += check("cut at the end", "\x1DVA", bytes + printed.len - 4);
    Qel_free(bytes);
    return failed;
}

/* Keeps the first finding's rule and key, "rule key". */
static void keep_first(void *info, const Qel_rcpt_finding_t *finding)
{
    char *first = info;
    if (first[0] == '\0')
        Qel_snprintf(first, 64, "%s %s", finding->rule, finding->key);
}

static int check_findings(const Qel_hash_dict_t *record, const Qel_rcpt_config_t *config)
{
    char first[64] = "";
    const size_t errors = Qel_rcpt_check(record, config, QEL_RCPT_FORM_GENERAL, keep_first, first);
    /* the merchant's name and address, and the action are missing */
    return check("first finding", "merchant-name-missing merch_name", first) +
           (errors == 3 ? 0 : 1);
}

int main(void)
{
    Qel_rcpt_config_t config = {.country_code = 124,
                                .currency_code = 124,
                                .cust_lang = QEL_RCPT_LANG_FR,
                                .industry = QEL_RCPT_IND_RETAIL};
    Qel_hash_dict_t *record = Qel_hash_dict_create(16, 75, QEL_HASH_DICT_NONE);
    Qel_hash_dict_t *blocks = NULL;
    int failed = 0;

    Qel_rcpt_init();
    Qel_hash_dict_insert(record, "amount", "12.34");
    Qel_hash_dict_insert(record, "code", "AUTH");
    blocks = Qel_rcpt_generate_plain(record, &config, 24, "\n");
    failed += check("customer's money", "SOUS-TOTAL:       12.34$\nTOTAL:            12.34$",
                    Qel_hash_dict_get_direct(blocks, "cust_money"));
    failed += check("merchant's disposition", "        APPROVED\n",
                    Qel_hash_dict_get_direct(blocks, "merch_disposition"));
    failed += check_own_layout();
    failed += check_print(blocks, record);
    failed += check_findings(record, &config);

    Qel_hash_dict_destroy(blocks);
    Qel_hash_dict_destroy(record);
    Qel_rcpt_deinit();
    return failed == 0 ? 0 : 1;
}
