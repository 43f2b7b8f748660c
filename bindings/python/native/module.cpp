// The module qelrcpt._native: the library's operations for the package in ../src, which knows what
// Python's users mean. _native.pyi says what is called how.
#include "objects.hpp"

#include <qel_rcpt.h>
#include <qel_rcpt_check.h>
#include <qel_rcpt_print.h>
#include <qel_rcpt_tables.hpp>

#include <algorithm>
#include <string>
#include <vector>

namespace binding
{

namespace
{

struct settings;

struct generator {
    std::string_view form;
    Qel_hash_dict_t *(*generate)(Qel_hash_dict_t *record, const settings &how);
};

// What a renderer was made with.
struct settings {
    const qel_rcpt::form *form = nullptr;
    std::size_t width = 0;
    std::string line_break;
    bool strips_control = false; // characters of the record
    qel::time_tz zone;
    Qel_rcpt_config_t config{}; // with the zone above
};

constexpr const char *settings_name = "qelrcpt._native.settings";

template <auto operation>
Qel_hash_dict_t *generate(Qel_hash_dict_t *record, const settings &how)
{
    return operation(record, &how.config);
}

Qel_hash_dict_t *generate_plain(Qel_hash_dict_t *record, const settings &how)
{
    return Qel_rcpt_generate_plain(record, &how.config, how.width, how.line_break.c_str());
}

constexpr generator generators[] = {
    {"plain", generate_plain},
    {"html", generate<Qel_rcpt_generate_html>},
    {"xml", generate<Qel_rcpt_generate_xml>},
    {"json", generate<Qel_rcpt_generate_json>},
    {"moneris", generate<Qel_rcpt_generate_plain_moneris>},
    {"moneris-ecomm", generate<Qel_rcpt_generate_plain_moneris_ecomm>},
};
static_assert(std::ranges::equal(generators, qel_rcpt::forms, {}, &generator::form,
                                 &qel_rcpt::form::name),
              "every form has its row here");

void destroy_settings(PyObject *capsule) noexcept
{
    const std::unique_ptr<settings> ended(
        static_cast<settings *>(PyCapsule_GetPointer(capsule, settings_name)));
}

const settings &settings_in(PyObject *capsule)
{
    const auto *how = static_cast<const settings *>(PyCapsule_GetPointer(capsule, settings_name));
    if (how == nullptr)
        throw python_error{};
    return *how;
}

const qel_rcpt::form *find_form(std::string_view name)
{
    const auto *found = std::ranges::find(qel_rcpt::forms, name, &qel_rcpt::form::name);
    if (found != std::end(qel_rcpt::forms))
        return found;
    PyErr_Format(PyExc_ValueError, "form: '%s' is unknown", name.data());
    throw python_error{};
}

void load_zone(settings &made, const char *name)
{
    if (name == nullptr)
        return;
    made.zone.reset(Qel_time_tz_load(name));
    made.config.merch_timezone = made.zone.get();
    if (made.zone)
        return;
    PyErr_Format(PyExc_ValueError,
                 "time_zone: '%s' is unknown, expected a zone of this system's zone files such as "
                 "America/Toronto",
                 name);
    throw python_error{};
}

PyObject *make_settings(PyObject * /*module*/, PyObject *arguments)
{
    return guarded([arguments] {
        auto made = std::make_unique<settings>();
        const char *form_name = nullptr;
        const char *line_break = nullptr;
        const char *zone_name = nullptr;
        int strips_control = 0;
        Py_ssize_t width = 0;
        unsigned customer_lang = 0;
        unsigned merchant_lang = 0;
        unsigned industry = 0;
        parse(arguments, "snspIIIIIz:settings", &form_name, &width, &line_break, &strips_control,
              &customer_lang, &merchant_lang, &made->config.country_code,
              &made->config.currency_code, &industry, &zone_name);
        made->form = find_form(form_name);
        made->width = static_cast<std::size_t>(width);
        made->line_break = line_break;
        made->strips_control = strips_control != 0;
        made->config.cust_lang = static_cast<Qel_rcpt_lang_t>(customer_lang);
        made->config.merch_lang = static_cast<Qel_rcpt_lang_t>(merchant_lang);
        made->config.industry = static_cast<Qel_rcpt_ind_t>(industry);
        load_zone(*made, zone_name);
        object capsule = owned(PyCapsule_New(made.get(), settings_name, destroy_settings));
        static_cast<void>(made.release()); // the capsule's now
        return capsule;
    });
}

// Rendering

// Blocks whose lines the form joins as the caller does not want it.
void replace_line_breaks(qel::dict &blocks, const settings &how)
{
    const std::string_view own = how.form->line_break;
    if (own.empty() || own == "\n" || own == how.line_break)
        return;
    qel::dict replaced(
        Qel_hash_dict_create(Qel_hash_dict_num_keys(blocks.get()), 75, QEL_HASH_DICT_NONE));
    for (const auto [key, text] : qel::pairs(blocks.get())) {
        const qel::text lines(Qel_strdup_replace_str(text, own.data(), how.line_break.c_str()));
        Qel_hash_dict_insert(replaced.get(), key, lines.get());
    }
    blocks = std::move(replaced);
}

qel::dict render_record(qel::dict record, const settings &how)
{
    if (how.strips_control)
        Qel_rcpt_strip_control(record.get());
    qel::dict blocks(generators[how.form - qel_rcpt::forms].generate(record.get(), how));
    replace_line_breaks(blocks, how);
    return blocks;
}

PyObject *render(PyObject * /*module*/, PyObject *arguments)
{
    return guarded([arguments] {
        PyObject *record = nullptr;
        PyObject *capsule = nullptr;
        PyObject *text_of = nullptr;
        parse(arguments, "O!OO:render", &PyDict_Type, &record, &capsule, &text_of);
        const settings &how = settings_in(capsule);
        qel::dict kvs = to_record(record, text_of);
        qel::dict blocks;
        {
            const unlocked others_run;
            blocks = render_record(std::move(kvs), how);
        }
        return to_copies(blocks.get());
    });
}

// Checking

struct finding {
    Qel_rcpt_severity_t severity;
    const char *rule;
    std::string key;
    std::size_t offset;
    std::string message;
    const char *source;
    const char *date;
};

void keep_finding(void *info, const Qel_rcpt_finding_t *found)
{
    static_cast<std::vector<finding> *>(info)->push_back({found->severity, found->rule, found->key,
                                                          found->offset, found->message,
                                                          found->source, found->date});
}

// Counts the characters of the record's values in front of findings. Findings of one value come in
// about its order, so each is sought from where the one before it was.
class place_counter
{
  public:
    explicit place_counter(const Qel_hash_dict_t *record) : record_(record) {}

    // None for a finding without a place.
    object characters_before(const finding &found)
    {
        if (found.offset == QEL_RCPT_NO_OFFSET) {
            Py_INCREF(Py_None);
            return object(Py_None);
        }
        if (found.key != key_)
            *this = place_counter(record_, found.key);
        const auto &[first, last] = std::minmax(offset_, found.offset);
        const std::ptrdiff_t between =
            std::ranges::count_if(value_.substr(first, last - first), [](char byte) {
                return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80;
            });
        characters_ += found.offset < offset_ ? -between : between;
        offset_ = found.offset;
        return owned(PyLong_FromSsize_t(characters_));
    }

  private:
    place_counter(const Qel_hash_dict_t *record, const std::string &key)
        : record_(record), key_(key),
          value_(qel::view(Qel_hash_dict_get_direct(record, key.c_str())))
    {
    }

    const Qel_hash_dict_t *record_;
    std::string key_;
    std::string_view value_;
    std::size_t offset_ = 0;
    std::ptrdiff_t characters_ = 0;
};

object to_tuple(const finding &found, place_counter &places)
{
    const object offset = places.characters_before(found);
    const object key = to_str(found.key);
    const object message = to_str(found.message);
    return owned(Py_BuildValue("(IsOOOss)", static_cast<unsigned>(found.severity), found.rule,
                               key.get(), offset.get(), message.get(), found.source, found.date));
}

PyObject *check(PyObject * /*module*/, PyObject *arguments)
{
    return guarded([arguments] {
        PyObject *record = nullptr;
        PyObject *capsule = nullptr;
        PyObject *text_of = nullptr;
        parse(arguments, "O!OO:check", &PyDict_Type, &record, &capsule, &text_of);
        const settings &how = settings_in(capsule);
        const qel::dict kvs = to_record(record, text_of);
        std::vector<finding> findings;
        {
            const unlocked others_run;
            Qel_rcpt_check(kvs.get(), &how.config, how.form->checked_as, keep_finding, &findings);
        }
        object list = owned(PyList_New(0));
        place_counter places(kvs.get());
        for (const finding &found : findings)
            expect(PyList_Append(list.get(), to_tuple(found, places).get()));
        return list;
    });
}

// Printing

PyObject *print_copy(PyObject * /*module*/, PyObject *arguments)
{
    return guarded([arguments] {
        PyObject *copy = nullptr;
        PyObject *record = nullptr;
        PyObject *text_of = nullptr;
        int is_custcopy = 0;
        int strips_control = 0;
        unsigned language = 0;
        unsigned code_page = 0;
        int has_code_page_number = 0;
        int has_emphasis = 0;
        unsigned cut = 0;
        unsigned drawer = 0;
        int has_barcode = 0;
        unsigned qr_level = 0;
        Qel_rcpt_printer_t printer{};
        parse(arguments, "O!O!Opp(IHHIpBpIBIBspsIB):print_copy", &PyDict_Type, &copy, &PyDict_Type,
              &record, &text_of, &is_custcopy, &strips_control, &language, &printer.paper_columns,
              &printer.columns, &code_page, &has_code_page_number, &printer.code_page_number,
              &has_emphasis, &cut, &printer.feed, &drawer, &printer.logo_number, &printer.logo_key,
              &has_barcode, &printer.qr_text, &qr_level, &printer.qr_module);
        printer.language = static_cast<Qel_rcpt_printer_lang_t>(language);
        printer.code_page = static_cast<Qel_rcpt_code_page_t>(code_page);
        printer.has_code_page_number = has_code_page_number != 0;
        printer.no_emphasis = has_emphasis == 0;
        printer.cut = static_cast<Qel_rcpt_cut_t>(cut);
        printer.drawer = static_cast<Qel_rcpt_drawer_t>(drawer);
        printer.barcode = has_barcode != 0;
        printer.qr_level = static_cast<Qel_rcpt_qr_level_t>(qr_level);

        const qel::dict kvs = to_record(record, text_of);
        if (strips_control != 0)
            Qel_rcpt_strip_control(kvs.get());
        const qel::dict blocks = to_blocks(copy, is_custcopy != 0);
        Qel_rcpt_printed_t told{};
        const qel::text bytes(
            Qel_rcpt_print(blocks.get(), kvs.get(), is_custcopy != 0, &printer, &told));
        if (!bytes) {
            PyErr_SetString(PyExc_ValueError, Qel_rcpt_print_fault_to_str(told.fault));
            throw python_error{};
        }
        const object replaced = owned(PyLong_FromSize_t(told.replaced));
        return owned(Py_BuildValue("(y#OO)", bytes.get(), static_cast<Py_ssize_t>(told.len),
                                   replaced.get(), told.has_barcode ? Py_True : Py_False));
    });
}

// The module

PyMethodDef functions[] = {
    {"settings", make_settings, METH_VARARGS, nullptr},
    {"render", render, METH_VARARGS, nullptr},
    {"check", check, METH_VARARGS, nullptr},
    {"print_copy", print_copy, METH_VARARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

void add_number(const object &table, const char *name, unsigned long number)
{
    expect(PyDict_SetItemString(table.get(), name, owned(PyLong_FromUnsignedLong(number)).get()));
}

template <typename Rows, typename Name, typename Number>
object numbers_by_name(const Rows &rows, Name name, Number number)
{
    object table = owned(PyDict_New());
    for (const auto &row : rows)
        add_number(table, row.*name, row.*number);
    return table;
}

template <typename Id, std::size_t Count>
object numbers_by_name(const qel_rcpt::named<Id> (&rows)[Count])
{
    return numbers_by_name(rows, &qel_rcpt::named<Id>::name, &qel_rcpt::named<Id>::id);
}

object countries()
{
    object table = owned(PyDict_New());
    for (const qel_rcpt::country &row : qel_rcpt::countries)
        add_number(table, row.alpha2, row.code);
    for (const qel_rcpt::country &row : qel_rcpt::countries)
        add_number(table, row.alpha3, row.code);
    return table;
}

// By name: width, or 0 for the caller's choice, the form that e-commerce merchants get, and whether
// it is text.
object form_table()
{
    object table = owned(PyDict_New());
    for (const qel_rcpt::form &row : qel_rcpt::forms) {
        const object ecommerce = to_str(row.ecommerce);
        const object facts =
            owned(Py_BuildValue("(nOO)", static_cast<Py_ssize_t>(row.width), ecommerce.get(),
                                row.is_text ? Py_True : Py_False));
        expect(PyDict_SetItem(table.get(), to_str(row.name).get(), facts.get()));
    }
    return table;
}

void add(PyObject *module, const char *name, const object &value)
{
    expect(PyObject_SetAttrString(module, name, value.get()));
}

int fill_module(PyObject *module)
{
    using namespace qel_rcpt;
    const object filled(guarded([module] {
        Qel_rcpt_init();
        add(module, "VERSION", to_str(QELRCPT_VERSION));
        add(module, "FORMS", form_table());
        add(module, "LANGUAGES", numbers_by_name(languages, &language::code, &language::id));
        add(module, "COUNTRIES", countries());
        add(module, "CURRENCIES", numbers_by_name(currencies, &currency::name, &currency::code));
        add(module, "INDUSTRIES", numbers_by_name(industries, &industry::name, &industry::bit));
        add(module, "PRINTER_LANGUAGES", numbers_by_name(printer_languages));
        add(module, "CODE_PAGES", numbers_by_name(code_pages));
        add(module, "CUTS", numbers_by_name(cuts));
        add(module, "QR_LEVELS", numbers_by_name(qr_levels));
        Py_INCREF(Py_None);
        return object(Py_None);
    }));
    return filled ? 0 : -1;
}

PyModuleDef_Slot slots[] = {
    {Py_mod_exec, reinterpret_cast<void *>(fill_module)},
    {0, nullptr},
};

PyModuleDef definition = {
    PyModuleDef_HEAD_INIT, "_native", nullptr, 0, functions, slots, nullptr, nullptr, nullptr,
};

} // namespace

} // namespace binding

// NOLINTNEXTLINE(bugprone-reserved-identifier): the name that Python looks for
PyMODINIT_FUNC PyInit__native(void)
{
    return PyModuleDef_Init(&binding::definition);
}
