// Amounts and their sums.
#include "qel_rcpt_rules.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <string>

using qel_rcpt::get;
using qel_rcpt::hundredths;
using qel_rcpt::money_term;
using qel_rcpt::saturating_add;
using qel_rcpt::saturating_subtract;
using qel_rcpt::sign;

namespace
{

// An amount as decimal text: -150 is -1.50.
class amount_text
{
  public:
    explicit amount_text(hundredths value)
    {
        const bool negative = value < 0;
        const auto bits = static_cast<std::uint64_t>(value);
        const std::uint64_t magnitude = negative ? 0 - bits : bits;
        char *end = text_.data();
        if (negative)
            *end++ = '-';
        end = std::to_chars(end, text_.data() + text_.size(), magnitude / 100).ptr;
        *end++ = '.';
        *end++ = static_cast<char>('0' + magnitude / 10 % 10);
        *end++ = static_cast<char>('0' + magnitude % 10);
    }
    [[nodiscard]] const char *c_str() const { return text_.data(); }

  private:
    std::array<char, 32> text_{};
};

char *format_hundredths(hundredths value, const Qel_rcpt_attrs_t *attrs)
{
    return Qel_rcpt_format_money(amount_text(value).c_str(), attrs);
}

// True when no digit but 0 occurs.
bool Qel_rcpt_is_zero_money(const char *money)
{
    return std::ranges::none_of(qel::view(money),
                                [](char chr) { return Qel_chr_isdigit(chr) && chr != '0'; });
}

// The amount with a '-' put in front of its text.
hundredths get_negated(const char *amount)
{
    std::array<char, 32> negated{};
    Qel_snprintf(negated.data(), negated.size(), "-%s", amount);
    return Qel_atofi100(negated.data());
}

// The amount under the required key with the terms that the record holds added and subtracted;
// absent without the required one.
char *format_sum(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs, const char *required,
                 std::span<const money_term> terms)
{
    const char *amount = get(kvs, required);
    if (Qel_str_isempty(amount))
        return nullptr;
    hundredths sum = Qel_atofi100(amount);
    for (const money_term &term : terms) {
        const char *value = get(kvs, term.key);
        if (!Qel_str_isempty(value))
            sum = saturating_add(sum, term.how == sign::minus ? get_negated(value)
                                                              : Qel_atofi100(value));
    }
    return format_hundredths(sum, attrs);
}

// What the issuer authorized beside what was asked for.
struct authorization {
    bool known; // the record holds both amounts
    hundredths amount;
    hundredths authorized;
};

authorization get_authorization(const Qel_hash_dict_t *kvs)
{
    const char *amount = get(kvs, "amount");
    const char *authorized = get(kvs, "authamount");
    return {!Qel_str_isempty(amount) && !Qel_str_isempty(authorized), Qel_atofi100(amount),
            Qel_atofi100(authorized)};
}

} // namespace

char *Qel_rcpt_format_money(const char *amount, const Qel_rcpt_attrs_t *attrs) noexcept
{
    const qel::text out(Qel_str_dot_money_out(amount));
    if (!out)
        return nullptr;

    const Qel_rcpt_attrs_t &style = qel_rcpt::attrs_or_default(attrs);
    char *dot = out.get() + Qel_str_len(out.get()) - 3;
    if (style.currency_dec == 0)
        Qel_mem_move(dot, dot + 1, 3); // both decimals and the end of the text
    else
        *dot = style.currency_dec;

    const std::string_view symbol = qel::view(style.currency_sym);
    std::string money;
    money.append(style.csym_right ? "" : symbol).append(qel::view(out));
    money.append(style.csym_right ? symbol : "");
    return Qel_strdup(money.c_str());
}

char *Qel_rcpt_format_order_subtotal(const Qel_hash_dict_t *kvs,
                                     const Qel_rcpt_attrs_t *attrs) noexcept
{
    static constexpr money_term terms[] = {
        {"order_tip", sign::minus},
        {"order_tax", sign::minus},
    };
    return format_sum(kvs, attrs, "order_total", terms);
}

char *Qel_rcpt_format_subtotal(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs) noexcept
{
    return format_sum(kvs, attrs, "amount", qel_rcpt::subtotal_terms);
}

char *Qel_rcpt_format_total_amount(const Qel_hash_dict_t *kvs,
                                   const Qel_rcpt_attrs_t *attrs) noexcept
{
    static constexpr money_term terms[] = {
        {"u_tip", sign::plus},
        {"u_cashback", sign::plus},
    };
    return format_sum(kvs, attrs, "amount", terms);
}

char *Qel_rcpt_format_amount_due(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs) noexcept
{
    const authorization auth = get_authorization(kvs);
    const hundredths due = saturating_subtract(auth.amount, auth.authorized);
    if (!auth.known || due <= 0)
        return nullptr;
    return format_hundredths(due, attrs);
}

char *Qel_rcpt_format_authamount(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs) noexcept
{
    const authorization auth = get_authorization(kvs);
    if (!auth.known || auth.authorized == 0 || auth.authorized == auth.amount)
        return nullptr;
    return format_hundredths(auth.authorized, attrs);
}

namespace
{

struct payment_discounts {
    qel::text discount;
    qel::text cash_discount;
};

qel::text drop_zero(qel::text money)
{
    return Qel_rcpt_is_zero_money(money.get()) ? qel::text() : std::move(money);
}

payment_discounts get_payment_discounts(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs)
{
    const char *discount = get(kvs, "discountamount");
    if (Qel_atofi100(discount) == 0)
        return {};

    const char *cash_discount = get(kvs, "order_cash_discount");
    const bool has_cash_discount = Qel_str_caseeq(get(kvs, "cardtype"), "cash") &&
                                   !Qel_rcpt_have_order_money(kvs) &&
                                   !Qel_str_isempty(cash_discount);
    if (!has_cash_discount)
        return {qel::text(Qel_rcpt_format_money(discount, attrs)), {}};

    const hundredths rest = saturating_add(Qel_atofi100(discount), get_negated(cash_discount));
    return {drop_zero(qel::text(format_hundredths(rest, attrs))),
            drop_zero(qel::text(Qel_rcpt_format_money(cash_discount, attrs)))};
}

} // namespace

void Qel_rcpt_format_payment_discounts(const Qel_hash_dict_t *kvs, const Qel_rcpt_attrs_t *attrs,
                                       char **discount_out, char **cash_discount_out) noexcept
{
    payment_discounts discounts = get_payment_discounts(kvs, attrs);
    if (discount_out != nullptr)
        *discount_out = discounts.discount.release();
    if (cash_discount_out != nullptr)
        *cash_discount_out = discounts.cash_discount.release();
}

bool Qel_rcpt_have_order_money(const Qel_hash_dict_t *kvs) noexcept
{
    return Qel_atofi100(get(kvs, "order_total")) != 0;
}

bool Qel_rcpt_is_order_parital_payment(const Qel_hash_dict_t *kvs) noexcept
{
    const hundredths total = Qel_atofi100(get(kvs, "order_total"));
    return total != 0 && Qel_atofi100(get(kvs, "amount")) != total;
}
