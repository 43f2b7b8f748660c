/* A layout of one's own: a slip for the kitchen, with the items, what they come to and whether they
 * are paid. The library finds the values and lays the lines out; which ones there are is up to us.
 */
#include <qel_rcpt_plain.h>

#include <stdio.h>

static const char *const items =
    "[{\"name\": \"Chowder\", \"qty\": \"2\", \"price\": \"18.00\"},"
    " {\"name\": \"Trout\", \"price\": \"24.00\", \"notes\": \"Sauce on the side\","
    "  \"modifiers\": [{\"name\": \"Extra vegetables\", \"type\": \"addon\", \"price\": \"4\"}]}]";

/* Takes one line of the items: ret are the lines of the block in the making. */
static void add_item(void *info, const char *name, const char *qty, const char *price,
                     Qel_rcpt_line_item_type_t type, void *ret)
{
    if (type == QEL_RCPT_LINE_ITEM_TYPE_ITEM)
        Qel_rcpt_plain_format_left_right(info, qty == NULL ? "1" : qty, name, NULL, price, ret);
    else
        Qel_rcpt_plain_format_left_right(info, "  +", name, NULL, price, ret);
}

static Qel_hash_dict_t *generate_slip(const Qel_hash_dict_t *record, const Qel_rcpt_config_t *shop)
{
    Qel_rcpt_plain_t info = {.kvs = record, .line_break = "\n", .line_len = 32};
    Qel_list_str_t *lines = Qel_list_str_create(QEL_LIST_STR_NONE);

    info.blocks = Qel_hash_dict_create(16, 75, QEL_HASH_DICT_KEYS_ORDERED);
    Qel_rcpt_setup_rcpt_attrs(&info.attrs, shop, false);

    Qel_rcpt_plain_format_center(&info, Qel_hash_dict_get_direct(record, "ordernum"), lines);
    Qel_list_str_insert(lines, ""); /* a line as it is: an empty one */
    Qel_rcpt_generate_line_items(Qel_hash_dict_get_direct(record, "line_items"), &info, &info.attrs,
                                 add_item, lines);
    Qel_list_str_insert(lines, "");
    Qel_rcpt_plain_add_money(&info, Qel_rcpt_msg_to_string(info.attrs.lang, QEL_RCPT_MSG_TOTAL),
                             Qel_hash_dict_get_direct(record, "amount"), lines, false);
    Qel_rcpt_plain_format_right(&info, Qel_rcpt_get_result(record, info.attrs.lang), lines);
    Qel_rcpt_plain_add_block(&info, "slip", lines);

    Qel_list_str_destroy(lines);
    return info.blocks;
}

int main(void)
{
    Qel_rcpt_init();

    const Qel_rcpt_config_t shop = {.country_code = 840, .currency_code = 840};
    Qel_hash_dict_t *record = Qel_hash_dict_create(16, 75, QEL_HASH_DICT_NONE);
    Qel_hash_dict_insert(record, "ordernum", "Table 4");
    Qel_hash_dict_insert(record, "line_items", items);
    Qel_hash_dict_insert(record, "amount", "46.00");
    Qel_hash_dict_insert(record, "code", "AUTH");

    Qel_hash_dict_t *blocks = generate_slip(record, &shop);
    puts(Qel_hash_dict_get_direct(blocks, "slip"));

    Qel_hash_dict_destroy(blocks);
    Qel_hash_dict_destroy(record);
    Qel_rcpt_deinit();
    return 0;
}
