/* Layout of plain text in lines of a fixed width. The plain-text generators are built on it, and so
 * can be a layout of one's own: lines go into a string list made with QEL_LIST_STR_NONE, and
 * Qel_rcpt_plain_add_block turns the list into a block.
 *
 * Widths count characters. White space around a text is dropped; a text that is absent or blank
 * adds no line. A text that is too wide is broken at the right-most space among as many bytes as
 * the line has columns, or within a word where there is none, never within a character. The space
 * at the break is dropped, further ones before it stay. Padding is put in front of what is centred
 * or flush right; there is none at the end of a line. A width above 65,535 counts as that. A line
 * that is put into the list directly (such as an empty one) stays as it is.
 *
 * With an absent info nothing happens; an absent list is empty and takes no lines. Nothing changes
 * its owner; threads as in qel_rcpt.h.
 */
#ifndef QEL_RCPT_PLAIN_H
#define QEL_RCPT_PLAIN_H

#include <qel_rcpt_int.h>

#ifdef __cplusplus
extern "C" {
#endif

/* State of one plain-text receipt. */
typedef struct Qel_rcpt_plain {
    Qel_hash_dict_t *blocks;    /* receives the blocks */
    const Qel_hash_dict_t *kvs; /* the transaction record */
    const char *line_break;     /* put between two lines; absent: nothing */
    size_t line_len;        /* width in characters, 1 to 65,535; what is beyond counts as those */
    Qel_rcpt_attrs_t attrs; /* of the copy being rendered */
    bool is_unattended;     /* a self-service terminal, where the layout asks */
} Qel_rcpt_plain_t;

/* Joins the lines, upper-cases the text and stores it under the name. A block of white space alone
 * is not stored. */
QEL_API void Qel_rcpt_plain_add_block(const Qel_rcpt_plain_t *info, const char *block_name,
                                      const Qel_list_str_t *ret) QEL_NOEXCEPT;

/* Appends the text centred; an odd column stays free on the right. */
QEL_API void Qel_rcpt_plain_format_center(const Qel_rcpt_plain_t *info, const char *str,
                                          Qel_list_str_t *ret) QEL_NOEXCEPT;

/* Appends the text flush left. */
QEL_API void Qel_rcpt_plain_format_left(const Qel_rcpt_plain_t *info, const char *str,
                                        Qel_list_str_t *ret) QEL_NOEXCEPT;

/* Appends the text flush right. */
QEL_API void Qel_rcpt_plain_format_right(const Qel_rcpt_plain_t *info, const char *str,
                                         Qel_list_str_t *ret) QEL_NOEXCEPT;

/* Appends a left and a right part, on one line when they fit: prefixl and prefixr are labels that
 * stand before strl and strr, and go with them when those are empty. Two labelled parts that do not
 * fit on one line take a line each, label left and text right; otherwise what does not fit on the
 * left part's line is right-aligned below. Whether two labelled parts fit is told by the bytes of
 * the right one: with letters beyond ASCII it takes a line of its own a little earlier. */
QEL_API void Qel_rcpt_plain_format_left_right(const Qel_rcpt_plain_t *info, const char *prefixl,
                                              const char *strl, const char *prefixr,
                                              const char *strr, Qel_list_str_t *ret) QEL_NOEXCEPT;

/* Appends prefix, a space and the text flush left; without a text, the prefix alone. */
QEL_API void Qel_rcpt_plain_format_left_prefix(const Qel_rcpt_plain_t *info, const char *prefix,
                                               const char *str, Qel_list_str_t *ret) QEL_NOEXCEPT;

/* Appends the label on the left and the amount val (decimal text) as money on the right, with "- "
 * before it when negative is true. An amount that is absent or no decimal number adds nothing; a
 * zero is shown. */
QEL_API void Qel_rcpt_plain_add_money(const Qel_rcpt_plain_t *info, const char *key,
                                      const char *val, Qel_list_str_t *ret,
                                      bool negative) QEL_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
