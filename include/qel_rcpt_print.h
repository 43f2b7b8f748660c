/* Receipts for receipt printers: the blocks of a text receipt as the bytes that a printer prints.
 *
 *     Qel_rcpt_strip_control(record);
 *     Qel_hash_dict_t *blocks = Qel_rcpt_generate_plain(record, &config, 42, "\n");
 *     const Qel_rcpt_printer_t printer = {0};
 *     Qel_rcpt_printed_t printed;
 *     char *bytes = Qel_rcpt_print(blocks, record, true, &printer, &printed);
 *     if (bytes != NULL)
 *         write(device, bytes, printed.len);
 *     Qel_free(bytes);
 *
 * The lines are those of the blocks, one cell a character, with a blank line between two blocks;
 * commands are added only between and around them. No value of a record can become a command:
 * control characters in a text are printed as '?' or as a blank, and only the library's own bytes
 * are left below 0x20. A line feed in a value, though, has become a line break of its block by
 * then, and a line of the record's own: Qel_rcpt_strip_control keeps it out. docs/paper.md tells
 * how to find out what a printer wants.
 *
 * The conventions of qel_rcpt.h on threads and memory apply.
 */
#ifndef QEL_RCPT_PRINT_H
#define QEL_RCPT_PRINT_H

#include <qel_rcpt.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The printer's language. */
typedef enum Qel_rcpt_printer_lang QEL_ENUM_U32 {
    QEL_RCPT_PRINTER_LANG_ESCPOS = 0,  /* ESC/POS, as in Epson's command reference */
    QEL_RCPT_PRINTER_LANG_STARPRNT = 1 /* StarPRNT, as in Star's command specifications */
} Qel_rcpt_printer_lang_t;

/* The page of characters beyond ASCII, by its usual number. */
typedef enum Qel_rcpt_code_page QEL_ENUM_U32 {
    QEL_RCPT_CODE_PAGE_DEFAULT = 0, /* 858: the letters of the five languages, and the euro sign */
    QEL_RCPT_CODE_PAGE_437 = 437,   /* USA */
    QEL_RCPT_CODE_PAGE_850 = 850,   /* Western Europe; StarPRNT has no number for it */
    QEL_RCPT_CODE_PAGE_852 = 852,   /* Central Europe */
    QEL_RCPT_CODE_PAGE_858 = 858,   /* 850 with the euro sign */
    QEL_RCPT_CODE_PAGE_860 = 860,   /* Portuguese */
    QEL_RCPT_CODE_PAGE_863 = 863,   /* Canadian French */
    QEL_RCPT_CODE_PAGE_865 = 865,   /* Nordic */
    QEL_RCPT_CODE_PAGE_866 = 866,   /* Cyrillic */
    QEL_RCPT_CODE_PAGE_1252 = 1252, /* Windows, Western Europe */
    QEL_RCPT_CODE_PAGE_ISO_8859_15 = 28605 /* Latin 9; StarPRNT has no number for it */
} Qel_rcpt_code_page_t;

/* What happens behind the receipt. A cut feeds the paper until the last line is past the cutter. */
typedef enum Qel_rcpt_cut QEL_ENUM_U32 {
    QEL_RCPT_CUT_FULL = 0,
    QEL_RCPT_CUT_PARTIAL = 1, /* one point is left uncut */
    QEL_RCPT_CUT_NONE = 2
} Qel_rcpt_cut_t;

/* The drawer to open before the receipt, by the pin of its connector. */
typedef enum Qel_rcpt_drawer QEL_ENUM_U32 {
    QEL_RCPT_DRAWER_NONE = 0,
    QEL_RCPT_DRAWER_1 = 1, /* pin 2; StarPRNT: external device 1 */
    QEL_RCPT_DRAWER_2 = 2  /* pin 5; StarPRNT: external device 2 */
} Qel_rcpt_drawer_t;

/* Error correction of a QR code (ISO/IEC 18004): how much of it may be lost. */
typedef enum Qel_rcpt_qr_level QEL_ENUM_U32 {
    QEL_RCPT_QR_LEVEL_DEFAULT = 0, /* M */
    QEL_RCPT_QR_LEVEL_L = 1,       /* 7 % */
    QEL_RCPT_QR_LEVEL_M = 2,       /* 15 % */
    QEL_RCPT_QR_LEVEL_Q = 3,       /* 25 % */
    QEL_RCPT_QR_LEVEL_H = 4        /* 30 % */
} Qel_rcpt_qr_level_t;

/* A printer and what goes on its paper beside the lines. All zero: ESC/POS on 80 mm paper, code
 * page 858, emphasis, a full cut, nothing else. The texts are borrowed for the call. */
typedef struct Qel_rcpt_printer {
    Qel_rcpt_printer_lang_t language;

    /* Characters of the printer's font A (12 dots wide) across the paper: 48 (0 means that) or 42
     * on 80 mm paper, 32 on 58 mm. Font B (9 dots wide) has a third more: 64, 56, 42. */
    uint16_t paper_columns;
    /* The receipt's width in characters, as given to the generator; 0: that of the widest line of
     * both copies. Font A where it holds that many, else font B. A line that is wider than this and
     * than the font's line is broken by the printer. */
    uint16_t columns;

    Qel_rcpt_code_page_t code_page;
    /* Whether code_page_number, and not the maker's, is the page's number in the command that
     * selects it (`ESC t` or, for StarPRNT, `ESC GS t`). */
    bool has_code_page_number;
    uint8_t code_page_number;

    bool no_emphasis; /* every line in plain type */
    Qel_rcpt_cut_t cut;
    /* Lines fed behind the receipt, before the cut. 0 without a cut means 4, so that the paper can
     * be torn off. */
    uint8_t feed;
    Qel_rcpt_drawer_t drawer;

    /* A logo that is stored in the printer, above the receipt: its number (0: none), or its key of
     * two characters from 0x20 to 0x7E (absent or "": none), which only ESC/POS has. When
     * both are given, the key is used. */
    uint8_t logo_number;
    const char *logo_key;

    /* Whether the order number (ordernum, or ptrannum without one) stands below the receipt as a
     * CODE128 barcode with its characters. Left out where there is none, or where it has characters
     * beyond ASCII or more than fit on the paper. */
    bool barcode;

    /* The text of a QR code below the receipt, such as a link to the electronic receipt; absent or
     * "": none. */
    const char *qr_text;
    Qel_rcpt_qr_level_t qr_level;
    /* Dots of a module, to 16 (StarPRNT: 8); 0: the most that fit on the paper, to 6. */
    uint8_t qr_module;
} Qel_rcpt_printer_t;

/* Why there is no result. */
typedef enum Qel_rcpt_print_fault QEL_ENUM_U32 {
    QEL_RCPT_PRINT_FAULT_NONE = 0,
    QEL_RCPT_PRINT_FAULT_NO_COPY = 1,   /* there is no block of that copy */
    QEL_RCPT_PRINT_FAULT_NOT_TEXT = 2,  /* a block is HTML, XML or JSON */
    QEL_RCPT_PRINT_FAULT_OPTION = 3,    /* a language, cut, drawer, level or module that is none */
    QEL_RCPT_PRINT_FAULT_CODE_PAGE = 4, /* not a page of ours, or without number in the language */
    QEL_RCPT_PRINT_FAULT_WIDTH = 5,     /* the receipt is wider than a line in font B */
    QEL_RCPT_PRINT_FAULT_LOGO = 6,      /* the key is not two characters, or not for the language */
    QEL_RCPT_PRINT_FAULT_QR = 7 /* more text than a QR code holds or the paper has room for */
} Qel_rcpt_print_fault_t;

/* What came of printing. */
typedef struct Qel_rcpt_printed {
    size_t len; /* of the result, in bytes */
    /* Characters that are not on the code page: each stands as its nearest there (typographic
     * quotes and dashes as ASCII's, letters without their accent), else as '?', or is left out
     * where it takes no room (combining marks). Control characters count as well. */
    size_t replaced;
    bool has_barcode;
    Qel_rcpt_print_fault_t fault; /* QEL_RCPT_PRINT_FAULT_NONE exactly when there is a result */
} Qel_rcpt_printed_t;

/* New bytes that print one copy, to be released with Qel_free; they may hold NULs. Absent when that
 * cannot be done, for the reason that *printed has.
 *   blocks       of a plain or Moneris receipt, or text of one's own under such keys. A line ends
 *                at "\n", "\r\n" or "\r", so a generator's line break has to be one of these.
 *   kvs          the record of which they were made: the source of the barcode and of the
 *                merchant's name. Absent: no barcode, and the merchant's first line counts as the
 *                name.
 *   is_custcopy  which copy
 *   printer      absent counts as all zero
 *   printed      absent: nothing is told, not even the length
 *
 * Emphasis: in bold the transaction's title, the total (or what was paid of an order) and the
 * outcome; the merchant's name in bold, and twice as high when it takes one line; the mark of a
 * duplicate inverted. A line is recognised by its block and its place there and by the catalogue's
 * words, in any of the languages, so that no other value of the record is taken for one. */
QEL_API char *Qel_rcpt_print(const Qel_hash_dict_t *blocks, const Qel_hash_dict_t *kvs,
                             bool is_custcopy, const Qel_rcpt_printer_t *printer,
                             Qel_rcpt_printed_t *printed) QEL_NOEXCEPT;

/* A sentence in English about the fault, static, never absent: such as "the receipt is wider than
 * the paper". Any thread, any time. */
QEL_API const char *Qel_rcpt_print_fault_to_str(Qel_rcpt_print_fault_t fault) QEL_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
