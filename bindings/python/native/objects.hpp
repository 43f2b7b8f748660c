// Owners of what belongs to Python, and its errors as C++ exceptions. Only the functions that
// Python calls (guarded) turn them back.
#ifndef QELRCPT_PYTHON_OBJECTS_HPP
#define QELRCPT_PYTHON_OBJECTS_HPP

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <qelstdlib.hpp>

#include <memory>
#include <new>
#include <string_view>

namespace binding
{

// Thrown when Python's error indicator is set.
struct python_error {
};

struct reference_ender {
    void operator()(PyObject *object) const noexcept { Py_DECREF(object); }
};

// A reference of our own.
using object = std::unique_ptr<PyObject, reference_ender>;

// Takes over a new reference; none means that the call failed.
inline object owned(PyObject *created)
{
    if (created == nullptr)
        throw python_error{};
    return object(created);
}

// What a call of Python's interface returned that gives -1 when it fails.
inline void expect(int status)
{
    if (status < 0)
        throw python_error{};
}

// Lets other threads run Python while it lives.
class unlocked
{
  public:
    unlocked() noexcept : thread_(PyEval_SaveThread()) {}
    ~unlocked() { PyEval_RestoreThread(thread_); }
    unlocked(const unlocked &) = delete;
    unlocked &operator=(const unlocked &) = delete;

  private:
    PyThreadState *thread_;
};

// Runs the body of a function that Python calls: its object, or nothing with the error set.
template <typename Body>
PyObject *guarded(Body body) noexcept
{
    try {
        return body().release();
    } catch (const python_error &) {
        return nullptr;
    } catch (const std::bad_alloc &) {
        return PyErr_NoMemory();
    }
}

template <typename... Wanted>
void parse(PyObject *arguments, const char *format, Wanted... wanted)
{
    if (!PyArg_ParseTuple(arguments, format, wanted...))
        throw python_error{};
}

// Broken bytes, which the library does not make, would be U+FFFD.
inline object to_str(std::string_view text)
{
    return owned(
        PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace"));
}

// An exact `dict` as the library's dictionary. `text_of` is called with each key and value that is
// not a str; it gives the text, or None for a value that is not there. Throws with a ValueError or
// TypeError that names the key for what no record can hold.
qel::dict to_record(PyObject *record, PyObject *text_of);

// The blocks of a receipt: a tuple of two dicts, the customer's and the merchant's, by block name.
object to_copies(const Qel_hash_dict_t *blocks);

// A copy's blocks, a dict, under the library's keys.
qel::dict to_blocks(PyObject *copy, bool is_custcopy);

} // namespace binding

#endif
