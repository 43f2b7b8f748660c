/* The receipts of a sale in Toronto: the customer's in French, the merchant's in English. */
#include <qel_rcpt.h>

#include <stdio.h>
#include <string.h>

/* What the payment server answered, and what the till knows of the sale. */
static const char *const fields[][2] = {
    {"merch_name", "Maplewick Books"},
    {"merch_addr1", "21 Harbour Street"},
    {"merch_addr2", "Toronto ON M5J 0A1"},
    {"merch_phone", "416-555-0118"},
    {"action", "sale"},
    {"cardtype", "MC"},
    {"u_cardclass", "credit"},
    {"rcpt_entry_mode", "T"},
    {"account", "XXXXXXXXXXXX0027"}, /* masked: what stands here is printed */
    {"timestamp", "1773502867"},
    {"ordernum", "5531"},
    {"auth", "04417Z"},
    {"rcpt_issuer_resp_code", "00"},
    {"amount", "33.90"},
    {"tax", "3.90"},
    {"code", "AUTH"},
    {"msoft_code", "INT_SUCCESS"},
    {"phard_code", "SUCCESS"},
    {"rcpt_emv_name", "Mastercard"},
    {"rcpt_emv_aid", "A0000000041010"},
};

static Qel_hash_dict_t *make_record(void)
{
    Qel_hash_dict_t *record = Qel_hash_dict_create(32, 75, QEL_HASH_DICT_NONE);
    for (size_t i = 0; i < sizeof fields / sizeof *fields; ++i)
        Qel_hash_dict_insert(record, fields[i][0], fields[i][1]);
    return record;
}

/* The blocks come in their order on paper; a blank line between two makes the receipt. */
static void print_copy(const Qel_hash_dict_t *blocks, const char *prefix)
{
    Qel_hash_dict_enum_t *walk = NULL;
    const char *key = NULL;
    const char *text = NULL;

    Qel_hash_dict_enumerate(blocks, &walk);
    while (Qel_hash_dict_enumerate_next(blocks, walk, &key, &text)) {
        if (strncmp(key, prefix, strlen(prefix)) == 0)
            printf("%s\n\n", text);
    }
    Qel_hash_dict_enumerate_free(walk);
}

int main(void)
{
    /* Without a zone the times would be those of this machine. */
    Qel_time_tz_t *zone = Qel_time_tz_load("America/Toronto");
    if (zone == NULL) {
        fputs("This system does not know the time zone America/Toronto.\n", stderr);
        return 1;
    }
    Qel_rcpt_init();

    const Qel_rcpt_config_t shop = {.cust_lang = QEL_RCPT_LANG_FR,
                                    .merch_lang = QEL_RCPT_LANG_EN,
                                    .country_code = 124,
                                    .currency_code = 124,
                                    .industry = QEL_RCPT_IND_RETAIL,
                                    .merch_timezone = zone};
    Qel_hash_dict_t *record = make_record();
    Qel_hash_dict_t *blocks = Qel_rcpt_generate_plain(record, &shop, 40, "\n");

    print_copy(blocks, "cust_");
    print_copy(blocks, "merch_");

    Qel_hash_dict_destroy(blocks);
    Qel_hash_dict_destroy(record);
    Qel_time_tz_destroy(zone);
    Qel_rcpt_deinit();
    return 0;
}
