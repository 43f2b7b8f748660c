// Values that cannot be used: what a receipt would leave out, cut or misread.
#include "qel_rcpt_check.hpp"
#include "qel_rcpt_moneris_ecomm.hpp"
#include "qel_rcpt_tables.hpp"

#include <algorithm>
#include <iterator>

namespace qel_rcpt::check
{

namespace
{

// How many characters there are of that kind before any other.
template <typename Predicate>
std::size_t count_in_front(std::string_view text, Predicate is_one)
{
    std::size_t count = 0;
    while (count < text.size() && is_one(text[count]))
        ++count;
    return count;
}

// ISO 4217: the currencies without a row of their own that are written as the first one is, with
// "$" and two decimals.
constexpr std::uint32_t written_as_dollars[] = {36,  554, 344, 702, 901, 484, 170, 32, 214,
                                                192, 858, 388, 780, 52,  44,  84,  60, 136,
                                                328, 951, 968, 242, 90,  96,  430, 516};

bool has_foreign_currency(const subject &record)
{
    const std::uint32_t code = record.config().currency_code;
    return find_code(currencies, code) == nullptr &&
           std::ranges::find(written_as_dollars, code) == std::end(written_as_dollars);
}

// The e-commerce layout writes the currency's code by the merchant's country.
bool has_currency_of_other_country(const subject &record)
{
    const Qel_rcpt_config_t &config = record.config();
    return record.is_ecommerce() && config.currency_code != currency_of(config.country_code).code;
}

bool has_unknown_title(const subject &record)
{
    const char *action = record.action();
    return action != nullptr && record.title(QEL_RCPT_LANG_EN) == action;
}

bool has_untitled_action(const subject &record)
{
    return has_unknown_title(record) && !record.has("action_trans");
}

bool has_untitled_action_trans(const subject &record)
{
    return has_unknown_title(record) && record.has("action_trans");
}

constexpr const char *untitled =
    "no title is known for this action, so its own text is printed as one";

constexpr condition conditions[] = {
    {rule_named("action-unknown"), has_untitled_action_trans, "action_trans", untitled},
    {rule_named("action-unknown"), has_untitled_action, "action", untitled},
    {rule_named("currency-unknown"), has_foreign_currency, "",
     "the configuration's currency is none of two decimals whose sign the library knows; the "
     "receipt would show dollars"},
    {rule_named("currency-misnamed"), has_currency_of_other_country, "",
     "this layout names the currency by the merchant's country, and that is not the "
     "configuration's currency"},
};

// Amounts

struct amount_form {
    bool is_readable;
    std::size_t fault;   // of the first byte that does not fit
    std::size_t dropped; // of the first decimal that is dropped and not zero, or no_offset
    std::size_t units;   // digits before the point, leading zeros aside
};

// As Qel_str_dot_money_out reads it: white space, a sign, digits with a point.
amount_form form_of_amount(std::string_view text)
{
    amount_form form{false, 0, no_offset, 0};
    std::size_t at = 0;
    const auto skip = [&](auto is_one) {
        const std::size_t count = count_in_front(text.substr(at), is_one);
        at += count;
        return count;
    };
    skip(is_space);
    if (at < text.size() && (text[at] == '-' || text[at] == '+'))
        ++at;
    skip([](char chr) { return chr == '0'; });
    const bool has_zero = at > 0 && text[at - 1] == '0';
    form.units = skip(is_digit);
    std::size_t decimals = 0;
    if (at < text.size() && text[at] == '.') {
        ++at;
        const std::size_t begin = at;
        decimals = skip(is_digit);
        for (std::size_t i = begin + 2; i < begin + decimals && form.dropped == no_offset; ++i)
            form.dropped = text[i] != '0' ? i : no_offset;
    }
    const bool has_digits = has_zero || form.units + decimals > 0;
    if (has_digits)
        skip(is_space);
    form.fault = at;
    form.is_readable = has_digits && at == text.size();
    return form;
}

} // namespace

bool is_amount(std::string_view text)
{
    return form_of_amount(text).is_readable;
}

bool look_at_amount(const subject &record, const char *key, std::string_view text,
                    std::size_t offset, report &findings)
{
    constexpr std::size_t most_units = 15;
    const amount_form form = form_of_amount(text);
    const auto place = [&](std::size_t at) { return offset == no_offset ? at : offset; };
    if (!form.is_readable)
        findings.add(rule_named("amount-unreadable"), key, place(form.fault),
                     {quoted(text), " is not an amount and would ",
                      record.is_ecommerce() ? "be printed as it stands" : "not be shown",
                      "; write digits with a point, such as 1234.50, without symbol or "
                      "separators"});
    else if (form.dropped != no_offset)
        findings.add(rule_named("amount-decimals"), key, place(form.dropped),
                     {quoted(text), " has more than two decimals, of which the rest is dropped; "
                                    "round it first"});
    else if (form.units > most_units)
        findings.add(rule_named("amount-too-large"), key, offset,
                     {quoted(text), " is too large to be added up"});
    else
        return true;
    return false;
}

void add_cut(const char *key, std::size_t offset, std::string_view value, report &findings)
{
    findings.add(rule_named("value-cut"), key, offset,
                 {quoted(value), " is longer than its place on the receipt and would be cut"});
}

void look_at_cut(const char *key, std::size_t offset, std::string_view value, std::size_t most,
                 report &findings)
{
    if (value.size() > most)
        add_cut(key, offset, value, findings);
}

namespace
{

void look_at_amounts(const subject &record, report &findings)
{
    for (std::size_t place = 0; place < num_record_keys; ++place) {
        const known_key key(place);
        if (record_keys[place].kind != key_kind::amount || !record.has(key))
            continue;
        const bool is_readable =
            look_at_amount(record, key.name(), record.text(key), no_offset, findings);
        if (is_readable && record.amount(key) < 0 && record_keys[place].name != "balance")
            findings.add(rule_named("amount-negative"), key.name(), no_offset,
                         {quoted(record.text(key)),
                          " is below zero: it would be printed with its sign, and what is "
                          "subtracted would be added; give amounts without one"});
    }
}

// The columns of the e-commerce layout.
void look_at_columns(const subject &record, report &findings)
{
    struct column {
        known_key key;
        std::size_t width;
    };
    static constexpr column columns[] = {{"amount", moneris_ecomm::total_width},
                                         {"tax", moneris_ecomm::value_width},
                                         {"surchargeamount", moneris_ecomm::value_width},
                                         {"examount", moneris_ecomm::value_width}};
    for (const auto &[key, width] : columns) {
        if (record.is_ecommerce())
            look_at_cut(key.name(), no_offset, record.text(key), width, findings);
    }
}

// Times

constexpr bool is_leap_year(int year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// The first of the twelve digits of mmddyyHHMMSS that makes no time; no_offset for a good one.
std::size_t find_host_time_fault(std::string_view text)
{
    if (const std::size_t at = count_in_front(text, is_digit); at < text.size())
        return at;
    if (text.size() != 12)
        return std::min<std::size_t>(text.size(), 12);
    const auto number = [&](std::size_t at) { return (text[at] - '0') * 10 + text[at + 1] - '0'; };
    constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const int month = number(0);
    if (month < 1 || month > 12)
        return 0;
    const int year = number(4) + (number(4) < 69 ? 2000 : 1900);
    const int most_days = days[month - 1] + (month == 2 && is_leap_year(year) ? 1 : 0);
    if (number(2) < 1 || number(2) > most_days)
        return 2;
    if (number(6) > 23)
        return 6;
    if (number(8) > 59)
        return 8;
    return number(10) > 60 ? 10 : no_offset;
}

void look_at_times(const subject &record, report &findings)
{
    if (record.has("rcpt_host_ts")) {
        const std::string_view text = record.text("rcpt_host_ts");
        const std::size_t fault = find_host_time_fault(text);
        if (fault != no_offset)
            findings.add(rule_named("host-time-unreadable"), "rcpt_host_ts", fault,
                         {quoted(text), " is no date and time as mmddyyHHMMSS; the receipt would "
                                        "show zeros or a day that there is not"});
        return;
    }
    const std::string_view text = record.text("timestamp");
    const std::size_t fault = count_in_front(text, is_digit);
    if (fault < text.size()) {
        findings.add(rule_named("timestamp-unreadable"), "timestamp", fault,
                     {quoted(text), " is not a number of seconds since 1970; the receipt would "
                                    "show another time"});
        return;
    }
    constexpr std::int64_t begin_of_2000 = 946684800;
    constexpr std::int64_t begin_of_2100 = 4102444800;
    const std::int64_t seconds = Qel_str_to_int64(record.get("timestamp"));
    if (!text.empty() && (seconds < begin_of_2000 || seconds >= begin_of_2100))
        findings.add(rule_named("timestamp-implausible"), "timestamp", no_offset,
                     {quoted(text), " is a time before 2000 or after 2099; give seconds since "
                                    "1970, not milliseconds"});
}

// Numbers, flags, words

void look_at_numbers(const subject &record, report &findings)
{
    for (const known_key key : {known_key("laneid"), known_key("ptrannum")}) {
        const std::string_view text = record.text(key);
        const bool is_number =
            count_in_front(text, is_digit) == text.size() && Qel_str_to_int64(record.get(key)) > 0;
        if (!text.empty() && !is_number)
            findings.add(rule_named("number-unreadable"), key.name(), no_offset,
                         {quoted(text), " is not a whole number above zero; some forms would not "
                                        "show it"});
    }
}

void look_at_flags(const subject &record, report &findings)
{
    static constexpr std::string_view no_words[] = {"0", "n", "no", "f", "false", "off"};
    for (std::size_t place = 0; place < num_record_keys; ++place) {
        const known_key key(place);
        if (record_keys[place].kind != key_kind::flag || !record.has(key))
            continue;
        if (!record.is_set(key) && !is_word(record.text(key), no_words))
            findings.add(rule_named("flag-unclear"), key.name(), no_offset,
                         {quoted(record.text(key)),
                          " is neither yes nor no and counts as no; write yes or no"});
    }
}

void look_at_results(const subject &record, report &findings)
{
    static constexpr std::string_view results[] = {"auth", "success", "deny",
                                                   "call", "timeout", "tout"};
    for (const known_key key : {known_key("orig_code"), known_key("code")}) {
        if (record.has(key) && !is_word(record.text(key), results))
            findings.add(rule_named("result-unknown"), key.name(), no_offset,
                         {quoted(record.text(key)),
                          " is no result that the rules know; the "
                          "receipt would say \"",
                          Qel_str_safe(Qel_rcpt_get_result(record.record(), QEL_RCPT_LANG_EN)),
                          "\""});
    }
}

void look_at_reasons(const subject &record, report &findings)
{
    struct known_words {
        known_key key;
        std::span<const std::string_view> words;
    };
    static constexpr std::string_view errors[] = {"canceled", "emv_card_deny", "emv_card_removed",
                                                  "paxtrel_connfail", "paxtrel_proc_error"};
    static constexpr std::string_view reversals[] = {"customercancel", "carddecline",
                                                     "cardremoved"};
    static constexpr std::string_view declines[] = {"carddecline"};
    static constexpr known_words reasons[] = {
        {"u_errorcode", errors}, {"reversal_reason", reversals}, {"offline_decline", declines}};
    for (const auto &[key, words] : reasons) {
        if (record.has(key) && !is_word(record.text(key), words))
            findings.add(rule_named("reason-unknown"), key.name(), no_offset,
                         {quoted(record.text(key)),
                          " is none of the words that the rules know; "
                          "the receipt would say \"",
                          Qel_str_safe(Qel_rcpt_get_result(record.record(), QEL_RCPT_LANG_EN)),
                          "\""});
    }
    static constexpr std::string_view entry_modes[] = {"c", "t", "r", "s", "f", "m"};
    if (record.has("rcpt_entry_mode") && !is_word(record.text("rcpt_entry_mode"), entry_modes))
        findings.add(rule_named("entry-mode-unknown"), "rcpt_entry_mode", no_offset,
                     {quoted(record.text("rcpt_entry_mode")),
                      " is no entry mode that the rules know; it is printed as it stands"});
}

// Chip data

struct chip_value {
    known_key key;
    std::size_t least; // digits
    std::size_t most;
};

constexpr std::size_t any_size = 1000;

constexpr chip_value chip_values[] = {
    {"rcpt_emv_aid", 10, 32}, // ISO/IEC 7816-4: 5 to 16 bytes
    {"rcpt_emv_tvr", 10, 10},
    {"rcpt_emv_tsi", 4, 4},
    {"rcpt_emv_iad", 2, 64},
    {"rcpt_emv_ac", 16, 16},
    {"rcpt_emv_card_decline", 2, any_size},
    {"rcpt_emv_form_factor", 2, any_size},
};

bool is_hex_digit(char chr)
{
    return is_digit(chr) || (chr >= 'A' && chr <= 'F') || (chr >= 'a' && chr <= 'f');
}

void look_at_chip_values(const subject &record, report &findings)
{
    for (const auto &[key, least, most] : chip_values) {
        const std::string_view text = record.text(key);
        const std::size_t fault = count_in_front(text, is_hex_digit);
        const bool is_right = fault == text.size() && text.size() % 2 == 0 &&
                              text.size() >= least && text.size() <= most;
        if (!text.empty() && !is_right)
            findings.add(rule_named("chip-value-malformed"), key.name(), fault,
                         {quoted(text), " is not the hexadecimal text that a chip gives here"});
    }
}

// The line of the result holds both codes and the result itself.
void look_at_codes(const subject &record, report &findings)
{
    constexpr std::size_t most = 100;
    for (const known_key key : {known_key("rcpt_issuer_resp_code"), known_key("rcpt_resp_code")}) {
        if (!record.is_general())
            look_at_cut(key.name(), no_offset, record.text(key), most, findings);
    }
}

// Keys

void look_at_unknown_keys(const subject &record, report &findings)
{
    if (!record.has_unknown_keys())
        return;
    for (const auto [key, value] : qel::pairs(record.record())) {
        if (record.reads(key, value) || is_secret_name(key))
            continue;
        nearest_word nearest(key);
        for (const record_key &known : record_keys)
            nearest.offer(known.name);
        add_unknown(rule_named("unknown-key"), key, no_offset, "key", nearest, findings);
    }
}

} // namespace

rule_group value_rules()
{
    static constexpr pass passes[] = {
        look_at_amounts, look_at_times,        look_at_numbers,     look_at_flags,
        look_at_results, look_at_reasons,      look_at_chip_values, look_at_codes,
        look_at_columns, look_at_unknown_keys,
    };
    return {conditions, passes};
}

} // namespace qel_rcpt::check
