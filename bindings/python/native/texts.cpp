// Texts and dictionaries, from Python and back.
#include "objects.hpp"

#include <cstring>
#include <string>

namespace binding
{

namespace
{

constexpr std::string_view customer_prefix = "cust_";
constexpr std::string_view merchant_prefix = "merch_";

[[noreturn]] void reject(PyObject *kind, const char *message, PyObject *key)
{
    PyErr_Format(kind, message, key);
    throw python_error{};
}

// A str's bytes in UTF-8. `key` is what an error is about.
object encoded(PyObject *text, PyObject *key)
{
    object bytes(PyUnicode_AsUTF8String(text));
    if (!bytes) {
        if (PyErr_ExceptionMatches(PyExc_UnicodeEncodeError) == 0)
            throw python_error{};
        PyErr_Clear();
        reject(PyExc_ValueError,
               "%R holds half of a surrogate pair, expected a text of whole characters", key);
    }
    if (std::strlen(PyBytes_AsString(bytes.get())) !=
        static_cast<std::size_t>(PyBytes_Size(bytes.get())))
        reject(PyExc_ValueError, "%R holds a NUL character, expected a text without", key);
    return bytes;
}

// The value's text, a str; None for a value that is not there.
object text_for(PyObject *key, PyObject *value, PyObject *text_of)
{
    if (PyUnicode_Check(value)) {
        Py_INCREF(value);
        return object(value);
    }
    object text = owned(PyObject_CallFunctionObjArgs(text_of, key, value, nullptr));
    if (text.get() != Py_None && !PyUnicode_Check(text.get()))
        reject(PyExc_TypeError, "%R was not made a str", key);
    return text;
}

void put(Qel_hash_dict_t *record, PyObject *key, PyObject *value, PyObject *text_of)
{
    if (!PyUnicode_Check(key))
        reject(PyExc_TypeError, "the key %R is not a str", key);
    const object text = text_for(key, value, text_of);
    if (text.get() == Py_None)
        return;
    const object name = encoded(key, key);
    const object bytes = encoded(text.get(), key);
    Qel_hash_dict_insert(record, PyBytes_AsString(name.get()), PyBytes_AsString(bytes.get()));
}

} // namespace

qel::dict to_record(PyObject *record, PyObject *text_of)
{
    qel::dict made(Qel_hash_dict_create(static_cast<std::size_t>(PyDict_Size(record)), 75,
                                        QEL_HASH_DICT_NONE));
    PyObject *key = nullptr;
    PyObject *value = nullptr;
    for (Py_ssize_t at = 0; PyDict_Next(record, &at, &key, &value) != 0;) {
        // What text_of calls may take them out of the dictionary.
        Py_INCREF(key);
        const object kept_key(key);
        Py_INCREF(value);
        const object kept_value(value);
        put(made.get(), key, value, text_of);
    }
    return made;
}

object to_copies(const Qel_hash_dict_t *blocks)
{
    const object customer = owned(PyDict_New());
    const object merchant = owned(PyDict_New());
    for (const auto [key, text] : qel::pairs(blocks)) {
        std::string_view name = qel::view(key);
        const bool is_customer = name.starts_with(customer_prefix);
        name.remove_prefix(is_customer ? customer_prefix.size() : merchant_prefix.size());
        expect(PyDict_SetItem(is_customer ? customer.get() : merchant.get(), to_str(name).get(),
                              to_str(qel::view(text)).get()));
    }
    return owned(PyTuple_Pack(2, customer.get(), merchant.get()));
}

qel::dict to_blocks(PyObject *copy, bool is_custcopy)
{
    qel::dict blocks(
        Qel_hash_dict_create(static_cast<std::size_t>(PyDict_Size(copy)), 75, QEL_HASH_DICT_NONE));
    PyObject *name = nullptr;
    PyObject *text = nullptr;
    for (Py_ssize_t at = 0; PyDict_Next(copy, &at, &name, &text) != 0;) {
        const object name_bytes = encoded(name, name);
        const object text_bytes = encoded(text, name);
        std::string key(is_custcopy ? customer_prefix : merchant_prefix);
        key += PyBytes_AsString(name_bytes.get());
        Qel_hash_dict_insert(blocks.get(), key.c_str(), PyBytes_AsString(text_bytes.get()));
    }
    return blocks;
}

} // namespace binding
