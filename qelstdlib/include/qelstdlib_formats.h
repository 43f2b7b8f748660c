/* qelstdlib_formats: JSON and XML trees behind a C interface.
 *
 * The conventions of qelstdlib.h on absent values, ownership, threads and memory apply. A tree is
 * owned through its root: Qel_json_node_destroy or Qel_xml_node_destroy of the root releases all of
 * it. A tree that is read has at most 512 levels; recursion over it is safe.
 *
 * The nodes of a tree share its memory. What is taken out of a JSON tree keeps that memory alive,
 * and what is destroyed or replaced in it gives its own back with the rest; changed over and over,
 * a tree does not grow beyond what it holds at a time and what it once began with.
 */
#ifndef QELSTDLIB_FORMATS_H
#define QELSTDLIB_FORMATS_H

#include "qelstdlib.h"

#ifdef __cplusplus
extern "C" {
#endif

/* JSON (RFC 8259) */

typedef struct Qel_json_node Qel_json_node_t;

typedef enum Qel_json_type QEL_ENUM_U32 {
    QEL_JSON_TYPE_UNKNOWN = 0,
    QEL_JSON_TYPE_OBJECT = 1,
    QEL_JSON_TYPE_ARRAY = 2,
    QEL_JSON_TYPE_STRING = 3,
    QEL_JSON_TYPE_INTEGER = 4,
    QEL_JSON_TYPE_DECIMAL = 5,
    QEL_JSON_TYPE_BOOL = 6,
    QEL_JSON_TYPE_NULL = 7
} Qel_json_type_t;

/* Only REPLACE_BAD_CHARS and NONE are acted on; the others name what their absence means. */
typedef enum Qel_json_reader_flags QEL_ENUM_U32 {
    QEL_JSON_READER_NONE = 0,
    QEL_JSON_READER_ALLOW_DECIMAL_TRUNCATION = 1,
    QEL_JSON_READER_DISALLOW_COMMENTS = 2,
    QEL_JSON_READER_OBJECT_UNIQUE_KEYS = 4,
    QEL_JSON_READER_DONT_DECODE_UNICODE = 8,
    QEL_JSON_READER_REPLACE_BAD_CHARS = 16
} Qel_json_reader_flags_t;

/* Only PRETTYPRINT_SPACE and NONE are acted on. */
typedef enum Qel_json_writer_flags QEL_ENUM_U32 {
    QEL_JSON_WRITER_NONE = 0,
    QEL_JSON_WRITER_PRETTYPRINT_SPACE = 1,
    QEL_JSON_WRITER_PRETTYPRINT_TAB = 2,
    QEL_JSON_WRITER_PRETTYPRINT_WINLINEEND = 4,
    QEL_JSON_WRITER_DONT_ENCODE_UNICODE = 8,
    QEL_JSON_WRITER_REPLACE_BAD_CHARS = 16,
    QEL_JSON_WRITER_NUMBER_NOCOMPAT = 32
} Qel_json_writer_flags_t;

typedef enum Qel_json_error QEL_ENUM_U32 {
    QEL_JSON_ERROR_SUCCESS = 0,
    QEL_JSON_ERROR_EMPTY = 1,    /* absent or empty text */
    QEL_JSON_ERROR_SYNTAX = 2,   /* not JSON, or text after the document */
    QEL_JSON_ERROR_ENCODING = 3, /* not UTF-8, where that is not repaired */
    QEL_JSON_ERROR_DEPTH = 4     /* more than 512 levels */
} Qel_json_error_t;

/* Parses the first len bytes of text into a new tree and returns its root, released by
 * Qel_json_node_destroy; absent when the text is absent, empty or not valid JSON.
 *
 * Comments of both kinds and a leading byte-order mark are accepted. A repeated member name
 * replaces the earlier value in its place. Numbers keep their text, whatever their size. With
 * QEL_JSON_READER_REPLACE_BAD_CHARS, bytes that are not UTF-8 and unpaired surrogate escapes become
 * U+FFFD; without it they make the text unreadable. A \u0000 ends the text that holds it.
 *
 * Outputs, each of which may be absent: *processed the number of bytes read, *error what is wrong,
 * *error_line and *error_pos the line and the byte in that line where it is, both counted from 1
 * (0 when nothing is wrong). */
QEL_API Qel_json_node_t *Qel_json_read(const char *text, size_t len, uint32_t flags,
                                       size_t *processed, Qel_json_error_t *error,
                                       size_t *error_line, size_t *error_pos) QEL_NOEXCEPT;

/* New empty node of the type, released by Qel_json_node_destroy: an object, an array, an empty
 * string, the number 0, false or null. Absent for QEL_JSON_TYPE_UNKNOWN and what is no
 * type. */
QEL_API Qel_json_node_t *Qel_json_node_create(Qel_json_type_t type) QEL_NOEXCEPT;

/* The node's type; QEL_JSON_TYPE_UNKNOWN for absent. */
QEL_API Qel_json_type_t Qel_json_node_type(const Qel_json_node_t *node) QEL_NOEXCEPT;

/* The member of that name, borrowed; absent when there is none or node is absent or no object. */
QEL_API Qel_json_node_t *Qel_json_object_value(const Qel_json_node_t *node,
                                               const char *name) QEL_NOEXCEPT;

/* The text of a string member, borrowed; absent when there is none or it is no string. */
QEL_API const char *Qel_json_object_value_string(const Qel_json_node_t *node,
                                                 const char *name) QEL_NOEXCEPT;

/* Adds a string member with a copy of the text; a member of that name is replaced in its place. An
 * absent text or name, or a node that is no object, adds nothing and gives false. */
QEL_API bool Qel_json_object_insert_string(Qel_json_node_t *node, const char *name,
                                           const char *str) QEL_NOEXCEPT;

/* Adds a member and takes ownership of val; a member of that name is replaced in its place. Gives
 * false, with val still the caller's, when anything is absent, node is no object or val has a
 * parent. */
QEL_API bool Qel_json_object_insert(Qel_json_node_t *node, const char *name,
                                    Qel_json_node_t *val) QEL_NOEXCEPT;

/* Number of members of an object or elements of an array; 0 for all else. */
QEL_API size_t Qel_json_object_num_children(const Qel_json_node_t *node) QEL_NOEXCEPT;

/* Number of elements of an array; 0 for all else. */
QEL_API size_t Qel_json_array_len(const Qel_json_node_t *node) QEL_NOEXCEPT;

/* The element at idx, counted from 0, borrowed; absent past the end. */
QEL_API Qel_json_node_t *Qel_json_array_at(const Qel_json_node_t *node, size_t idx) QEL_NOEXCEPT;

/* Appends an element and takes ownership of val; false as for Qel_json_object_insert. */
QEL_API bool Qel_json_array_insert(Qel_json_node_t *node, Qel_json_node_t *val) QEL_NOEXCEPT;

/* Detaches the node from its parent: it outlives the rest of the tree and the caller destroys it.
 * A root and absent stay as they are. A member takes the same time wherever it stands; an element
 * takes it in proportion to those before or behind it, whichever are fewer. */
QEL_API void Qel_json_take_from_parent(Qel_json_node_t *node) QEL_NOEXCEPT;

/* New text with the node as JSON, members in insertion order, everything outside ASCII escaped; its
 * length in bytes goes to *len unless len is absent. With QEL_JSON_WRITER_PRETTYPRINT_SPACE: two
 * spaces a level, `"name": "value"`, `[]` and `{}` for empty ones, line feeds between lines and
 * none at the end; otherwise no white space. Broken UTF-8 is written as U+FFFD, one for each run of
 * broken bytes. Absent for an absent node. */
QEL_API char *Qel_json_write(const Qel_json_node_t *node, uint32_t flags, size_t *len) QEL_NOEXCEPT;

/* Releases the node and all under it, detaching it first when it has a parent; absent is
 * ignored. */
QEL_API void Qel_json_node_destroy(Qel_json_node_t *node) QEL_NOEXCEPT;

/* XML 1.0 */

typedef struct Qel_xml_node Qel_xml_node_t;

/* Only PRETTYPRINT_SPACE and NONE are acted on. */
typedef enum Qel_xml_writer_flags QEL_ENUM_U32 {
    QEL_XML_WRITER_NONE = 0,
    QEL_XML_WRITER_IGNORE_COMMENTS = 1,
    QEL_XML_WRITER_LOWER_TAGS = 2,
    QEL_XML_WRITER_LOWER_ATTRS = 4,
    QEL_XML_WRITER_DONT_ENCODE_TEXT = 8,
    QEL_XML_WRITER_DONT_ENCODE_ATTRS = 16,
    QEL_XML_WRITER_PRETTYPRINT_SPACE = 32,
    QEL_XML_WRITER_PRETTYPRINT_TAB = 64,
    QEL_XML_WRITER_SELFCLOSE_SPACE = 128
} Qel_xml_writer_flags_t;

/* New document node, released by Qel_xml_node_destroy; never absent. Written, it is its children
 * only, without a declaration. */
QEL_API Qel_xml_node_t *Qel_xml_create_doc(void) QEL_NOEXCEPT;

/* New element, never absent: the last child of parent, borrowed from its tree; without a parent, a
 * root released by Qel_xml_node_destroy. A name that is no valid XML name is written as one:
 * characters that may not stand there as '_', a '_' in front of a name that may not begin as it
 * does, '_' for an empty one. */
QEL_API Qel_xml_node_t *Qel_xml_create_element(const char *name,
                                               Qel_xml_node_t *parent) QEL_NOEXCEPT;

/* As Qel_xml_create_element, with one text child that holds at most max_len bytes of the text in
 * whole characters (0: all of it). An absent text gives an element without children. */
QEL_API Qel_xml_node_t *Qel_xml_create_element_with_text(const char *name, const char *text,
                                                         size_t max_len,
                                                         Qel_xml_node_t *parent) QEL_NOEXCEPT;

/* As Qel_xml_create_element, from the element's start tag as it is written, without its brackets:
 * `div id="total" class="amount"`; with all of the text as its one child, or without children when
 * that is absent. For tags that are known when a program is written: the tag is neither copied nor
 * checked, so it must outlive the tree and be right: one space in front of each attribute, double
 * quotes, no name twice, and nothing that is written as an entity. Its attributes can be
 * overwritten and others added like any. An absent or empty tag is "_". */
QEL_API Qel_xml_node_t *Qel_xml_create_element_from_tag(const char *tag, const char *text,
                                                        Qel_xml_node_t *parent) QEL_NOEXCEPT;

/* Adds an attribute after the others, with at most max_len bytes of the value in whole characters
 * (0: all of it). One of that name takes the new value when overwrite is true and stays otherwise.
 * An absent value adds none. True when the attribute was set. */
QEL_API bool Qel_xml_node_insert_attribute(Qel_xml_node_t *node, const char *name,
                                           const char *value, size_t max_len,
                                           bool overwrite) QEL_NOEXCEPT;

/* Number of child nodes, elements and texts; 0 for absent. */
QEL_API size_t Qel_xml_node_num_children(const Qel_xml_node_t *node) QEL_NOEXCEPT;

/* New text with the node and what is under it as XML, & < > " ' written as entities in texts and
 * attribute values; its length in bytes goes to *len unless len is absent. An element without
 * children is `<a/>`, one whose text is empty `<a></a>`. With QEL_XML_WRITER_PRETTYPRINT_SPACE:
 * every element on a line of its own, two spaces a level, one that holds only text on one line, no
 * line feed at the end. What XML cannot hold is written as U+FFFD (one for each run of broken
 * bytes), a carriage return as `&#13;`; so the result is always well-formed. Absent for an absent
 * node. */
QEL_API char *Qel_xml_write(const Qel_xml_node_t *node, uint32_t flags, size_t *len) QEL_NOEXCEPT;

/* Releases the node and all under it, detaching it first when it has a parent; absent is
 * ignored. What is destroyed below a root keeps its memory until the root goes. */
QEL_API void Qel_xml_node_destroy(Qel_xml_node_t *node) QEL_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
