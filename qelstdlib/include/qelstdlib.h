/* qelstdlib: text, buffers, lists, dictionaries and time behind a C interface.
 *
 * Absent means a null pointer. Every operation accepts an absent text or handle; its comment says
 * what that gives, and an operation on an absent handle otherwise does nothing.
 *
 * Text is NUL-terminated and meant to be UTF-8; no operation requires it to be valid. Case and
 * white space are ASCII (white space: space, \t \n \v \f \r) and never depend on the locale.
 *
 * Ownership: a `char *` result is new text that the caller releases with Qel_free; a `const char *`
 * result is borrowed and is never freed. Containers copy what is put into them.
 *
 * Threads: operations on different objects may run at once; an object that no thread changes may be
 * read by any number of threads.
 *
 * Kept between calls until the process ends, whichever thread comes first: the secret salt of the
 * dictionaries' hashes, drawn from the system's random source on first use (where it gives none,
 * made of the process's addresses, number and clock); and the rules of each time zone that
 * Qel_time_tz_load found.
 *
 * Memory: running out of it ends the process (std::terminate); it is the only way in which a call
 * can fail to return. No exception leaves the library.
 */
#ifndef QELSTDLIB_H
#define QELSTDLIB_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define QEL_API __attribute__((visibility("default")))
#define QEL_PRINTF(format_arg, first_arg) __attribute__((format(printf, format_arg, first_arg)))
#else
#define QEL_API
#define QEL_PRINTF(format_arg, first_arg)
#endif

/* Enumerations that may carry combined or unknown values have 32 unsigned bits in C++ too. */
#ifdef __cplusplus
#define QEL_NOEXCEPT noexcept
#define QEL_ENUM_U32 : uint32_t
extern "C" {
#else
#define QEL_NOEXCEPT
#define QEL_ENUM_U32
#endif

/* Text */

/* True for "" and for absent. */
QEL_API bool Qel_str_isempty(const char *str) QEL_NOEXCEPT;

/* Length in bytes; 0 for absent. */
QEL_API size_t Qel_str_len(const char *str) QEL_NOEXCEPT;

/* Number of characters: of bytes that are not UTF-8 continuation bytes, so that it is defined for
 * broken text too. 0 for absent. */
QEL_API size_t Qel_utf8_cnt(const char *str) QEL_NOEXCEPT;

/* The text itself, or a static "" for absent; never absent. */
QEL_API const char *Qel_str_safe(const char *str) QEL_NOEXCEPT;

/* True for '0' to '9' only. */
QEL_API bool Qel_chr_isdigit(char chr) QEL_NOEXCEPT;

/* Equality of whole texts, byte for byte. Absent and "" are equal; absent equals no other text. */
QEL_API bool Qel_str_eq(const char *str1, const char *str2) QEL_NOEXCEPT;

/* As Qel_str_eq, ignoring ASCII case. */
QEL_API bool Qel_str_caseeq(const char *str1, const char *str2) QEL_NOEXCEPT;

/* Equality of the first max_len bytes, ignoring ASCII case. A text that ends before that equals
 * only a text that ends at the same place. */
QEL_API bool Qel_str_caseeq_max(const char *str1, const char *str2, size_t max_len) QEL_NOEXCEPT;

/* True when str begins with prefix, ignoring ASCII case. False for an absent str; every other text
 * begins with an absent or empty prefix. */
QEL_API bool Qel_str_caseeq_start(const char *str, const char *prefix) QEL_NOEXCEPT;

/* Where needle first stands in haystack, ignoring ASCII case: borrowed from haystack, absent when
 * it is not there or haystack is absent. An absent or empty needle is found at the start. */
QEL_API const char *Qel_str_casestr(const char *haystack, const char *needle) QEL_NOEXCEPT;

/* True for the words 1, y, yes, t, true and on, in any ASCII case, and for nothing else. */
QEL_API bool Qel_str_istrue(const char *str) QEL_NOEXCEPT;

/* True when every byte is white space; so also for "" and for absent. */
QEL_API bool Qel_str_isspace(const char *str) QEL_NOEXCEPT;

/* Upper-cases in place and keeps the length in bytes: ASCII, and the two-byte Latin letters U+00E0
 * to U+017E whose capital takes two bytes as well. All else, broken text included, stays. */
QEL_API void Qel_str_upper(char *str) QEL_NOEXCEPT;

/* The decimal integer at the start of the text: optional white space, an optional sign, digits.
 * Saturates at the ends of the 64-bit range; 0 when there is none or the text is absent. */
QEL_API int64_t Qel_str_to_int64(const char *str) QEL_NOEXCEPT;

/* The decimal amount at the start of the text, in hundredths: white space and signs in any order,
 * none needed, then digits with an optional '.'. Each '-' before them turns the sign. Digits after
 * the second decimal are dropped and reading stops at the first byte that does not fit. Saturates
 * at the ends of the 64-bit range; 0 when there is no number or the text is absent. */
QEL_API int64_t Qel_atofi100(const char *str) QEL_NOEXCEPT;

/* New text with the amount as an optional '-', at least one digit, '.', and two decimals. The whole
 * text must be one decimal number with at most one sign, white space around it allowed; further
 * decimals and superfluous leading zeros are dropped, any number of digits is kept, and zero has no
 * sign. Absent when the text is absent or no such number. */
QEL_API char *Qel_str_dot_money_out(const char *str) QEL_NOEXCEPT;

/* New copy; absent for absent. */
QEL_API char *Qel_strdup(const char *str) QEL_NOEXCEPT;

/* New copy without white space at both ends; absent for absent. */
QEL_API char *Qel_strdup_trim(const char *str) QEL_NOEXCEPT;

/* New copy in which every occurrence of search is replaced, left to right and without overlap.
 * An absent or empty search replaces nothing; an absent replace counts as "". Absent for an absent
 * str. */
QEL_API char *Qel_strdup_replace_str(const char *str, const char *search,
                                     const char *replace) QEL_NOEXCEPT;

/* New copy in which every byte that is one of the first charset_len bytes of charset is replaced by
 * the text replace (absent counts as ""). Absent for an absent str. */
QEL_API char *Qel_strdup_replace_charset(const char *str, const char *charset, size_t charset_len,
                                         const char *replace) QEL_NOEXCEPT;

/* Formats into buf, which has room for size bytes: the result is terminated, has at most size - 1
 * bytes and is never cut inside a character. Returns its length in bytes. Directives: %s %lld %llu
 * %02llu %%, and no others; %s of an absent text prints nothing. A size of 0 or an absent buf
 * writes nothing. */
QEL_API size_t Qel_snprintf(char *buf, size_t size, const char *fmt, ...) QEL_NOEXCEPT
    QEL_PRINTF(3, 4);

/* As Qel_snprintf, but into new text of any length, which it stores in *out and the caller
 * releases. Returns its length in bytes. */
QEL_API size_t Qel_asprintf(char **out, const char *fmt, ...) QEL_NOEXCEPT QEL_PRINTF(2, 3);

/* Copies len bytes; the areas may overlap. Does nothing when either is absent. */
QEL_API void Qel_mem_move(void *dest, const void *src, size_t len) QEL_NOEXCEPT;

/* Sets len bytes to byte. Does nothing when mem is absent. */
QEL_API void Qel_mem_set(void *mem, uint8_t byte, size_t len) QEL_NOEXCEPT;

/* Releases memory that this library or one built on it returned; absent is ignored. */
QEL_API void Qel_free(void *mem) QEL_NOEXCEPT;

/* Buffers: text that grows at its end */

typedef struct Qel_buf Qel_buf_t;

typedef enum Qel_str_justify QEL_ENUM_U32 {
    QEL_STR_JUSTIFY_LEFT_TRUNC_RIGHT = 3 /* from the left, cut on the right, filled on the right */
} Qel_str_justify_t;

/* New empty buffer, released by Qel_buf_cancel or Qel_buf_finish_str; never absent. */
QEL_API Qel_buf_t *Qel_buf_create(void) QEL_NOEXCEPT;

/* Appends the text; absent adds nothing. */
QEL_API void Qel_buf_add_str(Qel_buf_t *buf, const char *str) QEL_NOEXCEPT;

/* Appends one byte. */
QEL_API void Qel_buf_add_byte(Qel_buf_t *buf, uint8_t byte) QEL_NOEXCEPT;

/* Appends the byte count times. */
QEL_API void Qel_buf_add_fill(Qel_buf_t *buf, uint8_t byte, size_t count) QEL_NOEXCEPT;

/* Appends exactly width columns: the text (absent: none), cut when it has more characters than
 * that, then the fill byte. Columns count characters as Qel_utf8_cnt does. */
QEL_API void Qel_buf_add_str_just(Qel_buf_t *buf, const char *str, Qel_str_justify_t justify,
                                  uint8_t fill, size_t width) QEL_NOEXCEPT;

/* The contents so far, borrowed until the buffer changes or ends; "" for absent, never absent. */
QEL_API const char *Qel_buf_peek(const Qel_buf_t *buf) QEL_NOEXCEPT;

/* Ends the buffer and drops its contents; absent is ignored. */
QEL_API void Qel_buf_cancel(Qel_buf_t *buf) QEL_NOEXCEPT;

/* Ends the buffer and returns its contents as new text; its length in bytes goes to *len unless
 * len is absent. Absent for an absent buffer. */
QEL_API char *Qel_buf_finish_str(Qel_buf_t *buf, size_t *len) QEL_NOEXCEPT;

/* Lists of texts */

typedef struct Qel_list_str Qel_list_str_t;

typedef enum Qel_list_str_flags QEL_ENUM_U32 {
    QEL_LIST_STR_NONE = 1 /* insertion order */
} Qel_list_str_flags_t;

/* New empty list, released by Qel_list_str_destroy; never absent. Every list keeps insertion
 * order. */
QEL_API Qel_list_str_t *Qel_list_str_create(uint32_t flags) QEL_NOEXCEPT;

/* Appends a copy of the text; absent is stored as "". */
QEL_API void Qel_list_str_insert(Qel_list_str_t *list, const char *str) QEL_NOEXCEPT;

/* Number of entries; 0 for absent. */
QEL_API size_t Qel_list_str_len(const Qel_list_str_t *list) QEL_NOEXCEPT;

/* The entry at idx, counted from 0, borrowed until the list ends, whatever is inserted meanwhile;
 * absent past the end. */
QEL_API const char *Qel_list_str_at(const Qel_list_str_t *list, size_t idx) QEL_NOEXCEPT;

/* New text, never absent: the entries in order with the separator (absent: none) between each two.
 * "" for an empty or absent list. */
QEL_API char *Qel_list_str_join_str(const Qel_list_str_t *list, const char *separator) QEL_NOEXCEPT;

/* Releases the list and its entries; absent is ignored. */
QEL_API void Qel_list_str_destroy(Qel_list_str_t *list) QEL_NOEXCEPT;

/* Dictionaries from text to text */

typedef struct Qel_hash_dict Qel_hash_dict_t;
typedef struct Qel_hash_dict_enum Qel_hash_dict_enum_t;

typedef enum Qel_hash_dict_flags QEL_ENUM_U32 {
    QEL_HASH_DICT_NONE = 0,
    QEL_HASH_DICT_CASECMP = 1,      /* keys that differ only in ASCII case are one key */
    QEL_HASH_DICT_KEYS_ORDERED = 8, /* enumeration in insertion order */
    /* With KEYS_ORDERED: enumeration in ascending order of keys, by bytes; with CASECMP as if in
     * lower case. */
    QEL_HASH_DICT_KEYS_SORTASC = 16
} Qel_hash_dict_flags_t;

/* New empty dictionary, released by Qel_hash_dict_destroy; never absent. init_size is the number of
 * keys to make room for, fill_pct the percentage of slots in use above which the table grows; both
 * are hints, any value is taken. flags: an OR of Qel_hash_dict_flags_t. A key is found in constant
 * time, whoever chose the keys: their hash is SipHash-1-3 with a salt of the process, but for those
 * of at most 32 bytes in a dictionary of at most 128, which are so few and short that it does not
 * matter how many of them share a hash. */
QEL_API Qel_hash_dict_t *Qel_hash_dict_create(size_t init_size, size_t fill_pct,
                                              uint32_t flags) QEL_NOEXCEPT;

/* Stores copies of key and value; an absent value is stored as "". A key that is there keeps its
 * place and spelling and takes the new value. False, and nothing stored, when dict or key is
 * absent. */
QEL_API bool Qel_hash_dict_insert(Qel_hash_dict_t *dict, const char *key,
                                  const char *val) QEL_NOEXCEPT;

/* True when the key exists; its value then goes to *val (unless val is absent), borrowed until the
 * value is replaced or removed. When it does not exist, *val stays as it was. */
QEL_API bool Qel_hash_dict_get(const Qel_hash_dict_t *dict, const char *key,
                               const char **val) QEL_NOEXCEPT;

/* The value, borrowed as above; absent when dict, key or the pair is. */
QEL_API const char *Qel_hash_dict_get_direct(const Qel_hash_dict_t *dict,
                                             const char *key) QEL_NOEXCEPT;

/* The value when the key exists, also when it is ""; otherwise def itself. */
QEL_API const char *Qel_hash_dict_get_direct_default(const Qel_hash_dict_t *dict, const char *key,
                                                     const char *def) QEL_NOEXCEPT;

/* Removes the pair; true when it was there. */
QEL_API bool Qel_hash_dict_remove(Qel_hash_dict_t *dict, const char *key) QEL_NOEXCEPT;

/* Number of keys; 0 for absent. */
QEL_API size_t Qel_hash_dict_num_keys(const Qel_hash_dict_t *dict) QEL_NOEXCEPT;

/* Moves every pair of src, in its order, into *dest, whose rules for comparison and order apply,
 * and releases src; of equal keys the later value wins. An absent src changes nothing; an absent
 * *dest takes src over; without a dest, src stays the caller's. */
QEL_API void Qel_hash_dict_merge(Qel_hash_dict_t **dest, Qel_hash_dict_t *src) QEL_NOEXCEPT;

/* Starts a walk, which is released by Qel_hash_dict_enumerate_free, stores it in *walk (absent for
 * an absent dict) and returns the number of pairs. The dictionary must not change meanwhile.
 * Without an order flag the walk follows insertion order too. */
QEL_API size_t Qel_hash_dict_enumerate(const Qel_hash_dict_t *dict,
                                       Qel_hash_dict_enum_t **walk) QEL_NOEXCEPT;

/* True and the next pair, borrowed from the dictionary; false at the end. key and val may be
 * absent. */
QEL_API bool Qel_hash_dict_enumerate_next(const Qel_hash_dict_t *dict, Qel_hash_dict_enum_t *walk,
                                          const char **key, const char **val) QEL_NOEXCEPT;

/* Ends the walk; absent is ignored. */
QEL_API void Qel_hash_dict_enumerate_free(Qel_hash_dict_enum_t *walk) QEL_NOEXCEPT;

/* Parses the first len bytes of text, such as key:value,"key":"a ""quoted"" value", into a new
 * dictionary with the given flags, released by Qel_hash_dict_destroy.
 *
 * pair_sep stands between pairs; the first unquoted kv_sep splits a pair and later ones belong to
 * the value. A quote opens quoted text only as the first byte of a key or value; inside, separators
 * are ordinary and escape followed by quote stands for quote; after the closing quote of a key only
 * kv_sep may follow, after that of a value only pair_sep or the end. Empty pairs are skipped and a
 * repeated key takes the later value. White space is kept.
 *
 * Absent when the text is absent or unparsable: a pair without kv_sep, an unterminated quote, text
 * after a closing quote. */
QEL_API Qel_hash_dict_t *Qel_hash_dict_deserialize(const char *text, size_t len, char pair_sep,
                                                   char kv_sep, char quote, char escape,
                                                   uint32_t flags) QEL_NOEXCEPT;

/* Releases the dictionary with its keys and values; absent is ignored. */
QEL_API void Qel_hash_dict_destroy(Qel_hash_dict_t *dict) QEL_NOEXCEPT;

/* Tables from unsigned 64-bit integer to text */

typedef struct Qel_hash_u64str Qel_hash_u64str_t;

/* New empty table, released by Qel_hash_u64str_destroy; never absent. Sizes as for
 * Qel_hash_dict_create; flags must be 0. */
QEL_API Qel_hash_u64str_t *Qel_hash_u64str_create(size_t init_size, size_t fill_pct,
                                                  uint32_t flags) QEL_NOEXCEPT;

/* Stores a copy of the text (absent: ""), in place of the one that the key had. */
QEL_API void Qel_hash_u64str_insert(Qel_hash_u64str_t *table, uint64_t key,
                                    const char *str) QEL_NOEXCEPT;

/* The text, borrowed until it is replaced or the table ends; absent when there is none. */
QEL_API const char *Qel_hash_u64str_get_direct(const Qel_hash_u64str_t *table,
                                               uint64_t key) QEL_NOEXCEPT;

/* Releases the table and its texts; absent is ignored. */
QEL_API void Qel_hash_u64str_destroy(Qel_hash_u64str_t *table) QEL_NOEXCEPT;

/* Time */

/* Seconds since 1970-01-01 00:00:00 UTC. */
typedef int64_t Qel_time_t;

/* A time zone. */
typedef struct Qel_time_tz Qel_time_tz_t;

/* A date and time as a clock on the wall shows it. */
typedef struct Qel_time_localtm {
    int64_t month;     /* 1 to 12 */
    int64_t day;       /* 1 to 31 */
    int64_t year;      /* four digits */
    int64_t year2;     /* two digits */
    int64_t hour;      /* 0 to 23 */
    int64_t min;       /* 0 to 59 */
    int64_t sec;       /* 0 to 60 */
    int64_t wday;      /* days since Sunday */
    int64_t yday;      /* days since 1 January */
    int64_t isdst;     /* 1 in daylight-saving time, 0 otherwise */
    Qel_time_t gmtoff; /* seconds east of UTC */
    char abbr[32];     /* abbreviation of the zone, such as EST */
} Qel_time_localtm_t;

/* The current time. */
QEL_API Qel_time_t Qel_time(void) QEL_NOEXCEPT;

/* New zone for a name of the IANA time zone database, such as America/Toronto, released by
 * Qel_time_tz_destroy. Absent for a name that the system does not know and for absent or ""; check
 * it, for an absent zone means the system's own everywhere else.
 *
 * Reads the system's zone files, in the folder that the environment's TZDIR names or in
 * /usr/share/zoneinfo; the only operation here that reads files, but for Qel_time_tolocal without a
 * zone. Absent too while no descriptor is free; asked again it is looked for again, unless another
 * thread took the last descriptor just then. A zone's rules stay loaded after Qel_time_tz_destroy,
 * so that they are read once. Names
 * that have no file there (UTC needs none) or more than 64 bytes leave nothing behind, so what is
 * kept is bounded by the number of zone files. */
QEL_API Qel_time_tz_t *Qel_time_tz_load(const char *name) QEL_NOEXCEPT;

/* Releases the zone; absent is ignored. */
QEL_API void Qel_time_tz_destroy(Qel_time_tz_t *zone) QEL_NOEXCEPT;

/* Parses the whole text by the format (%m %d %y %H %M %S, %% and literal bytes) and fills month,
 * day, year, year2, hour, min and sec, leaving the other fields. Each field has exactly two digits
 * in its own range; the calendar is not consulted. Years 69 to 99 are 1969 to 1999, 00 to 68 2000
 * to 2068. False, and nothing written, when the text does not fit or anything is absent. */
QEL_API bool Qel_time_parsefmt(const char *text, const char *fmt,
                               Qel_time_localtm_t *localtm) QEL_NOEXCEPT;

/* Fills every field for the time in the zone; an absent zone means the system's local one (which
 * the environment's TZ names), or UTC for a time whose year that cannot express. The C library
 * reads that zone at the first such call; if it cannot, it takes UTC until TZ changes. */
QEL_API void Qel_time_tolocal(Qel_time_t t, Qel_time_localtm_t *localtm,
                              const Qel_time_tz_t *zone) QEL_NOEXCEPT;

/* New text by the format: %m %d %H %M %S and %y with at least two digits (%y prints year2), %Y with
 * at least four, %% and literal bytes. An all-zero record prints zeros. "" when anything is
 * absent; never absent. */
QEL_API char *Qel_time_to_str(const char *fmt, const Qel_time_localtm_t *localtm) QEL_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
