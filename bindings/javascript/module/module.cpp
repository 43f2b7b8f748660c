// The library as a module of WebAssembly: what the package's JavaScript calls.
//
// A call takes numbers in `settings` and texts in `request`, and leaves what it made in `result`.
// So nothing in here is the caller's to release, and a receipt crosses the boundary in one piece
// each way, whatever its record holds.
#include <qel_rcpt.h>
#include <qel_rcpt_check.h>
#include <qel_rcpt_outcome.hpp>
#include <qel_rcpt_print.h>
#include <qel_rcpt_tables.hpp>
#include <qelstdlib.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

namespace
{

// What the caller fills in: numbers of 32 bits, in the order of SETTINGS in src/options.js.
struct call_settings {
    std::uint32_t texts; // in the request
    std::uint32_t form;  // its place among the library's
    std::uint32_t customer_language;
    std::uint32_t merchant_language;
    std::uint32_t country;
    std::uint32_t currency;
    std::uint32_t industry;
    std::uint32_t width;
    std::uint32_t line_break; // 1: carriage return and line feed
    std::uint32_t is_raw;
    std::uint32_t copies; // 1: customer, 2: merchant
    std::uint32_t printer_language;
    std::uint32_t paper_columns;
    std::uint32_t columns; // of the receipt, for the printer
    std::uint32_t code_page;
    std::uint32_t has_code_page_number;
    std::uint32_t code_page_number;
    std::uint32_t no_emphasis;
    std::uint32_t cut;
    std::uint32_t feed;
    std::uint32_t drawer;
    std::uint32_t logo_number;
    std::uint32_t has_barcode;
    std::uint32_t qr_level;
    std::uint32_t qr_module;
};

// The first texts of a request; behind them come the record's keys, each with its value.
enum head : std::size_t { zone, blocks, logo_key, qr_text, heads };

constexpr std::uint32_t customer_copy = 1;
constexpr std::uint32_t merchant_copy = 2;
constexpr std::uint32_t broken_request = UINT32_MAX;

call_settings settings_of_call;
std::string request_of_call;
std::string result_of_call;

// Walks over the texts of a request, each with a NUL at its end.
class text_walk
{
  public:
    explicit text_walk(const char *first) : next_(first) {}

    const char *next()
    {
        const char *const text = next_;
        next_ += std::char_traits<char>::length(text) + 1;
        return text;
    }

  private:
    const char *next_;
};

// A call's record and configuration.
class transaction
{
  public:
    explicit transaction(const call_settings &given)
    {
        text_walk texts(request_of_call.data());
        for (const char *&text : heads_)
            text = texts.next();
        const std::size_t pairs = (given.texts - head::heads) / 2;
        record_.reset(Qel_hash_dict_create(pairs, 75, QEL_HASH_DICT_NONE));
        for (std::size_t i = 0; i < pairs; ++i) {
            const char *const key = texts.next();
            Qel_hash_dict_insert(record_.get(), key, texts.next());
        }
        if (*heads_[head::zone] != '\0')
            zone_.reset(Qel_time_tz_load(heads_[head::zone]));
        config_.cust_lang = static_cast<Qel_rcpt_lang_t>(given.customer_language);
        config_.merch_lang = static_cast<Qel_rcpt_lang_t>(given.merchant_language);
        config_.country_code = given.country;
        config_.currency_code = given.currency;
        config_.industry = static_cast<Qel_rcpt_ind_t>(given.industry);
        config_.merch_timezone = zone_.get();
    }

    [[nodiscard]] Qel_hash_dict_t *record() const { return record_.get(); }
    [[nodiscard]] const Qel_rcpt_config_t &config() const { return config_; }
    [[nodiscard]] const char *text(head which) const { return heads_[which]; }

  private:
    const char *heads_[head::heads];
    qel::dict record_;
    qel::time_tz zone_;
    Qel_rcpt_config_t config_{};
};

Qel_hash_dict_t *generate_plain(Qel_hash_dict_t *record, const Qel_rcpt_config_t *config)
{
    return Qel_rcpt_generate_plain(record, config, settings_of_call.width,
                                   settings_of_call.line_break == 1 ? "\r\n" : "\n");
}

template <auto operation>
Qel_hash_dict_t *generate(Qel_hash_dict_t *record, const Qel_rcpt_config_t *config)
{
    return operation(record, config);
}

struct generator {
    std::string_view form;
    Qel_hash_dict_t *(*generate)(Qel_hash_dict_t *record, const Qel_rcpt_config_t *config);
};

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

std::size_t chosen_form()
{
    return std::min<std::size_t>(settings_of_call.form, std::size(generators) - 1);
}

qel::dict generated(const transaction &made)
{
    const bool hands_control_on = qel_rcpt::forms[chosen_form()].is_text;
    if (hands_control_on && settings_of_call.is_raw == 0)
        Qel_rcpt_strip_control(made.record());
    return qel::dict(generators[chosen_form()].generate(made.record(), &made.config()));
}

// Whether a name is in a list of names with commas between them; an empty list has all.
bool is_listed(std::string_view list, std::string_view name)
{
    for (std::string_view rest = list; !rest.empty();) {
        const std::size_t end = std::min(rest.find(','), rest.size());
        if (rest.substr(0, end) == name)
            return true;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return list.empty();
}

// The blocks of a receipt but for those that nobody asked for.
qel::dict wanted_blocks(const transaction &made)
{
    qel::dict all = generated(made);
    const std::string_view names = made.text(head::blocks);
    if (settings_of_call.copies == (customer_copy | merchant_copy) && names.empty())
        return all;
    qel::dict wanted(Qel_hash_dict_create(32, 75, QEL_HASH_DICT_KEYS_ORDERED));
    for (const auto [key, text] : qel::pairs(all.get())) {
        const std::string_view view(key);
        const std::uint32_t copy = view.starts_with("cust_") ? customer_copy : merchant_copy;
        if ((settings_of_call.copies & copy) != 0 &&
            is_listed(names, view.substr(view.find('_') + 1)))
            Qel_hash_dict_insert(wanted.get(), key, text);
    }
    return wanted;
}

void add_text(const char *text)
{
    result_of_call.append(text).push_back('\0');
}

// What is kept between calls does not stay as large as the largest receipt ever made.
void release_if_large(std::string &text)
{
    constexpr std::size_t usual = std::size_t{256} * 1024;
    text.clear();
    if (text.capacity() > usual)
        text.shrink_to_fit();
}

// Runs the operation on the request, and gives the length of its result.
template <typename Operation>
std::uint32_t answer(Operation operation)
{
    result_of_call.clear();
    const auto texts = static_cast<std::size_t>(std::ranges::count(request_of_call, '\0'));
    const bool is_whole =
        texts == settings_of_call.texts && texts >= head::heads && (texts - head::heads) % 2 == 0;
    if (is_whole)
        operation(transaction(settings_of_call));
    release_if_large(request_of_call);
    return is_whole ? static_cast<std::uint32_t>(result_of_call.size()) : broken_request;
}

Qel_rcpt_printer_t printer_of(const transaction &made)
{
    const call_settings &given = settings_of_call;
    Qel_rcpt_printer_t printer{};
    printer.language = static_cast<Qel_rcpt_printer_lang_t>(given.printer_language);
    printer.paper_columns = static_cast<std::uint16_t>(given.paper_columns);
    printer.columns = static_cast<std::uint16_t>(given.columns);
    printer.code_page = static_cast<Qel_rcpt_code_page_t>(given.code_page);
    printer.has_code_page_number = given.has_code_page_number != 0;
    printer.code_page_number = static_cast<std::uint8_t>(given.code_page_number);
    printer.no_emphasis = given.no_emphasis != 0;
    printer.cut = static_cast<Qel_rcpt_cut_t>(given.cut);
    printer.feed = static_cast<std::uint8_t>(given.feed);
    printer.drawer = static_cast<Qel_rcpt_drawer_t>(given.drawer);
    printer.logo_number = static_cast<std::uint8_t>(given.logo_number);
    printer.logo_key = made.text(head::logo_key);
    printer.barcode = given.has_barcode != 0;
    printer.qr_text = made.text(head::qr_text);
    printer.qr_level = static_cast<Qel_rcpt_qr_level_t>(given.qr_level);
    printer.qr_module = static_cast<std::uint8_t>(given.qr_module);
    return printer;
}

void add_number(std::size_t number)
{
    for (unsigned shift = 0; shift < 32; shift += 8)
        result_of_call.push_back(static_cast<char>(number >> shift & 0xFFU));
}

qel::text decimal(unsigned long long number)
{
    char *text = nullptr;
    Qel_asprintf(&text, "%llu", number);
    return qel::text(text);
}

void add_finding(void * /*info*/, const Qel_rcpt_finding_t *finding)
{
    const bool has_place = finding->offset != QEL_RCPT_NO_OFFSET;
    add_text(decimal(finding->severity).get());
    add_text(finding->rule);
    add_text(finding->key);
    add_text(has_place ? decimal(finding->offset).get() : "");
    add_text(finding->message);
    add_text(finding->source);
    add_text(finding->date);
}

} // namespace

// The C++ library for WebAssembly comes without exceptions, and there is nobody to read its last
// words, which would take a tenth of the module. What would throw or give up ends the call.
extern "C" [[noreturn]] void *__cxa_allocate_exception(std::size_t /*size*/) noexcept
{
    __builtin_trap();
}
extern "C" [[noreturn]] void __cxa_throw(void * /*thrown*/, void * /*type*/,
                                         void (* /*destructor*/)(void *))
{
    __builtin_trap();
}
extern "C" [[noreturn]] void abort_message(const char * /*format*/, ...)
{
    __builtin_trap();
}
[[noreturn]] void std::__libcpp_verbose_abort(const char * /*format*/, ...)
{
    __builtin_trap();
}

#define MODULE_EXPORT(name) extern "C" __attribute__((export_name(#name)))

// Where the caller writes the numbers of a call.
MODULE_EXPORT(settings) call_settings *module_settings()
{
    return &settings_of_call;
}

// Room for so many bytes of texts. They are UTF-8 and each ends with a NUL.
MODULE_EXPORT(request) char *module_request(std::uint32_t size)
{
    request_of_call.resize(size);
    return request_of_call.data();
}

// What the last call made, as long as it said.
MODULE_EXPORT(result) const char *module_result()
{
    return result_of_call.data();
}

// Whether it is all ASCII, which is quicker to read as a whole.
MODULE_EXPORT(result_is_ascii) std::uint32_t module_result_is_ascii()
{
    unsigned char bits = 0; // every byte counts, so that this can be done with vectors
    for (const char byte : result_of_call)
        bits |= static_cast<unsigned char>(byte);
    return bits < 0x80 ? 1 : 0;
}

// The length of the text in it that begins at this byte.
MODULE_EXPORT(text_length) std::uint32_t module_text_length(std::uint32_t at)
{
    return static_cast<std::uint32_t>(Qel_str_len(result_of_call.c_str() + at));
}

// To be called when the result was read.
MODULE_EXPORT(release) void module_release()
{
    release_if_large(result_of_call);
}

// "1" for what was approved or "0", the blocks' keys with commas between them, then their texts.
MODULE_EXPORT(render) std::uint32_t module_render()
{
    return answer([](const transaction &made) {
        const qel::dict blocks = wanted_blocks(made);
        add_text(qel_rcpt::is_approved(made.record()) ? "1" : "0");
        for (const auto [key, text] : qel::pairs(blocks.get()))
            result_of_call.append(key).push_back(',');
        add_text("");
        for (const auto [key, text] : qel::pairs(blocks.get()))
            add_text(text);
    });
}

// Each finding's severity, rule, key, offset in bytes or "", message, source and date.
MODULE_EXPORT(check) std::uint32_t module_check()
{
    return answer([](const transaction &made) {
        Qel_rcpt_check(made.record(), &made.config(), qel_rcpt::forms[chosen_form()].checked_as,
                       add_finding, nullptr);
    });
}

// For each copy, the customer's first: the fault, the length, the characters that were replaced and
// whether there is a barcode, as numbers of 32 bits, then the bytes.
MODULE_EXPORT(print) std::uint32_t module_print()
{
    return answer([](const transaction &made) {
        const qel::dict blocks = wanted_blocks(made);
        Qel_rcpt_printer_t printer = printer_of(made);
        for (const bool is_customer_copy : {true, false}) {
            Qel_rcpt_printed_t printed{};
            const qel::text bytes(
                Qel_rcpt_print(blocks.get(), made.record(), is_customer_copy, &printer, &printed));
            const std::size_t length = bytes ? printed.len : 0;
            for (const std::size_t number : {static_cast<std::size_t>(printed.fault), length,
                                             printed.replaced, std::size_t{printed.has_barcode}})
                add_number(number);
            if (!bytes)
                continue;
            result_of_call.append(bytes.get(), length);
            printer.drawer = QEL_RCPT_DRAWER_NONE; // opened once
        }
    });
}

// A sentence about a fault of printing.
MODULE_EXPORT(print_fault) const char *module_print_fault(std::uint32_t fault)
{
    return Qel_rcpt_print_fault_to_str(static_cast<Qel_rcpt_print_fault_t>(fault));
}
