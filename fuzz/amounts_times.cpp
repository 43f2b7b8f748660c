// Amounts and times of any text and any second.
#include "fuzz.hpp"

#include <qel_rcpt_int.h>

#include <array>
#include <chrono>
#include <limits>

namespace
{

__extension__ using wide = __int128; // no sum of amounts leaves it

using fuzz::require;
using limits = std::numeric_limits<std::int64_t>;

bool is_digit(char chr)
{
    return chr >= '0' && chr <= '9';
}

// An amount in hundredths as it is defined, in arithmetic that does not overflow.
std::int64_t hundredths(std::string_view text)
{
    const auto next = [&](auto holds) {
        const bool does = !text.empty() && holds(text.front());
        text.remove_prefix(does ? 1 : 0);
        return does;
    };
    bool negative = false;
    while (!text.empty() &&
           (fuzz::is_white_space(text.front()) || text.front() == '-' || text.front() == '+')) {
        negative ^= text.front() == '-';
        text.remove_prefix(1);
    }
    constexpr wide limit = wide{1} << 100U;
    wide value = 0;
    const auto add = [&](char digit) { value = std::min(value * 10 + (digit - '0'), limit); };
    for (; !text.empty() && is_digit(text.front()); text.remove_prefix(1))
        add(text.front());
    const bool has_decimals = next([](char chr) { return chr == '.'; });
    for (int decimal = 0; decimal < 2; ++decimal) {
        const bool has_digit = has_decimals && !text.empty() && is_digit(text.front());
        add(has_digit ? text.front() : '0');
        text.remove_prefix(has_digit ? 1 : text.size());
    }
    value = negative ? -value : value;
    return static_cast<std::int64_t>(std::clamp<wide>(value, limits::min(), limits::max()));
}

// Whether the text is an amount in its own form: -?digits.dd, no zeros in front.
bool is_normal(std::string_view text)
{
    if (text.starts_with('-')) {
        text.remove_prefix(1);
        if (text == "0.00")
            return false;
    }
    const std::size_t dot = text.find('.');
    const bool has_units = dot != text.npos && dot > 0 && (dot == 1 || text.front() != '0');
    return has_units && text.size() == dot + 3 &&
           std::ranges::all_of(text.substr(0, dot), is_digit) &&
           std::ranges::all_of(text.substr(dot + 1), is_digit);
}

void check_amount(const std::string &text)
{
    require(Qel_atofi100(text.c_str()) == hundredths(text), "an amount has its hundredths");
    require(Qel_str_to_int64(text.c_str()) == std::strtoll(text.c_str(), nullptr, 10),
            "a number has its value");

    const qel::text money(Qel_str_dot_money_out(text.c_str()));
    if (!money)
        return;
    require(is_normal(money.get()), "money is in its own form");
    require(Qel_atofi100(money.get()) == hundredths(text), "and has the amount");
    require(fuzz::taken(Qel_str_dot_money_out(money.get())) == money.get(), "and stays itself");
}

// The hundredths of a text with a symbol and any decimal character.
std::int64_t shown_hundredths(const char *new_text, const Qel_rcpt_attrs_t &attrs)
{
    std::string text = fuzz::taken(const_cast<char *>(new_text));
    const std::string symbol = attrs.currency_sym;
    text.erase(text.find(symbol), symbol.size());
    if (attrs.currency_dec == 0)
        text.insert(text.size() - 2, ".");
    std::ranges::replace(text, ',', '.');
    require(is_normal(text), "money is in its own form");
    return hundredths(text);
}

using sum = wide;

// Whether sums are exact: far from the ends of the range, and every amount is the same with a '-'
// put in front, which it is not when it is cut at 30 characters or begins with white space.
bool is_exact(const std::vector<std::string> &amounts)
{
    return std::ranges::all_of(amounts, [](const std::string &amount) {
        const std::int64_t value = hundredths(amount);
        return value > -1'000'000'000'000 && value < 1'000'000'000'000 && amount.size() <= 30 &&
               (amount.empty() || !fuzz::is_white_space(amount.front()));
    });
}

void check_sums(const std::vector<std::string> &amounts, const Qel_rcpt_attrs_t &attrs)
{
    static constexpr const char *keys[] = {"amount", "examount",       "tax",   "cashbackamount",
                                           "fee",    "discountamount", "u_tip", "authamount"};
    const qel::dict record(Qel_hash_dict_create(16, 75, QEL_HASH_DICT_NONE));
    std::array<std::int64_t, std::size(keys)> values{};
    for (std::size_t i = 0; i < std::min(amounts.size(), std::size(keys)); ++i) {
        Qel_hash_dict_insert(record.get(), keys[i], amounts[i].c_str());
        values[i] = hundredths(amounts[i]);
    }
    const auto [amount, tip, tax, cashback, fee, discount, tip_on_top, authorized] = values;

    char *const subtotal = Qel_rcpt_format_subtotal(record.get(), &attrs);
    char *const total = Qel_rcpt_format_total_amount(record.get(), &attrs);
    const bool has_amount = !amounts.empty() && !amounts[0].empty();
    require((subtotal != nullptr) == has_amount && (total != nullptr) == has_amount,
            "with an amount there are sums");
    if (has_amount) {
        const std::int64_t shown_subtotal = shown_hundredths(subtotal, attrs);
        const std::int64_t shown_total = shown_hundredths(total, attrs);
        const bool exact = is_exact(amounts);
        require(!exact || shown_subtotal == amount - tip - tax - cashback - fee + discount,
                "the subtotal is what is left");
        require(!exact || shown_total == amount + tip_on_top, "the total is all");
    }
    if (char *const due = Qel_rcpt_format_amount_due(record.get(), &attrs)) {
        const sum left = std::min<sum>(sum{amount} - authorized, limits::max());
        require(left > 0 && shown_hundredths(due, attrs) == left, "what is due is what is left");
    }
    Qel_free(Qel_rcpt_format_authamount(record.get(), &attrs));
    char *plain = nullptr;
    char *cash = nullptr;
    Qel_rcpt_format_payment_discounts(record.get(), &attrs, &plain, &cash);
    require(cash == nullptr, "only cash has a cash discount");
    Qel_free(plain);
}

// A time of the calendar's own range against the calendar.
void check_calendar(std::int64_t t, const Qel_time_localtm_t &local)
{
    namespace chrono = std::chrono;
    constexpr std::int64_t far = 900'000'000'000; // a little less than the year 30500
    if (t < -far || t > far)
        return;
    const chrono::sys_seconds when{chrono::seconds(t + local.gmtoff)};
    const auto day = chrono::floor<chrono::days>(when);
    const chrono::year_month_day date(day);
    const auto time = (when - day).count();
    const auto first = chrono::sys_days(date.year() / 1 / 1);
    require(local.year == int{date.year()} && local.month == unsigned{date.month()} &&
                local.day == unsigned{date.day()},
            "the date is right");
    require(local.hour * 3600 + local.min * 60 + local.sec == time, "the time is right");
    require(local.wday == chrono::weekday(day).c_encoding(), "the weekday is right");
    require(local.yday == (day - first).count(), "the day of the year is right");
}

void check_time(std::int64_t t)
{
    static const qel::time_tz toronto(Qel_time_tz_load("America/Toronto"));
    const Qel_time_tz_t *const zones[] = {toronto.get(), nullptr};
    for (const Qel_time_tz_t *zone : zones) {
        Qel_time_localtm_t local{};
        Qel_time_tolocal(t, &local, zone);
        require(local.month >= 1 && local.month <= 12 && local.day >= 1 && local.day <= 31 &&
                    local.hour >= 0 && local.hour <= 23 && local.min >= 0 && local.min <= 59 &&
                    local.sec >= 0 && local.sec <= 60 && local.year2 >= 0 && local.year2 <= 99,
                "every field is in its range");
        check_calendar(t, local);
        const std::string shown = fuzz::taken(Qel_time_to_str("%m/%d/%y %H:%M:%S", &local));
        require(shown.size() == 17, "a time has its form");
    }
}

void check_time_text(const std::string &text, const std::string &format)
{
    Qel_time_localtm_t parsed{};
    if (Qel_time_parsefmt(text.c_str(), "%m%d%y%H%M%S", &parsed))
        require(fuzz::taken(Qel_time_to_str("%m%d%y%H%M%S", &parsed)) == text,
                "what was read is written");
    Qel_time_localtm_t any{};
    const bool is_repeated = format.find('%') != format.rfind('%');
    if (Qel_time_parsefmt(text.c_str(), format.c_str(), &any) && !is_repeated)
        require(fuzz::taken(Qel_time_to_str(format.c_str(), &any)) == text,
                "what was read is written");
}

} // namespace

// A byte for the symbol and decimal character, eight of a time, and texts.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::input from(data, size);
    const unsigned style = from.number();
    const Qel_rcpt_attrs_t attrs = {.lang = QEL_RCPT_LANG_EN,
                                    .currency_sym = style % 2 == 0 ? "$" : "€",
                                    .currency_dec = ".,\0"[style % 3],
                                    .csym_right = style % 5 == 0,
                                    .country_code = 840,
                                    .timezone = nullptr};
    std::uint64_t t = 0;
    for (int i = 0; i < 8; ++i)
        t = t << 8U | from.byte();
    check_time(static_cast<std::int64_t>(t));

    const std::vector<std::string> texts = from.texts();
    for (const std::string &text : texts)
        check_amount(text);
    check_sums(texts, attrs);
    if (texts.size() >= 2)
        check_time_text(texts[0], texts[1]);
    return 0;
}
