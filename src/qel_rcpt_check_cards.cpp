// Whole card numbers in texts.
#include "qel_rcpt_check.hpp"

#include <algorithm>

namespace qel_rcpt::check
{

namespace
{

// The first six digits of an issuer's numbers, and how many digits they have.
struct issuer_range {
    std::uint32_t first;
    std::uint32_t last;
    std::uint8_t least;
    std::uint8_t most;
};

// ISO/IEC 7812-1 has the form of the numbers. Its register of issuers is not public: these are the
// ranges of public lists and of processors' test numbers, wider than what is issued.
constexpr issuer_range issuer_ranges[] = {
    {400000, 499999, 13, 13}, // Visa, of old
    {400000, 499999, 16, 16}, // Visa
    {400000, 499999, 19, 19}, //
    {510000, 559999, 16, 16}, // Mastercard
    {222100, 272099, 16, 16}, //
    {340000, 349999, 15, 15}, // American Express
    {370000, 379999, 15, 15}, //
    {300000, 305999, 14, 19}, // Diners Club
    {309500, 309599, 14, 19}, //
    {360000, 369999, 14, 19}, //
    {380000, 399999, 14, 19}, //
    {601100, 601199, 16, 19}, // Discover
    {644000, 659999, 16, 19}, // Discover; RuPay, Elo, Troy, Verve
    {352800, 358999, 16, 19}, // JCB
    {308800, 310299, 16, 19}, // JCB, of old
    {311200, 312099, 16, 19}, //
    {315800, 315999, 16, 19}, //
    {333700, 334999, 16, 19}, //
    {180000, 180099, 15, 15}, //
    {213100, 213199, 15, 15}, //
    {620000, 629999, 16, 19}, // UnionPay, Discover
    {810000, 817199, 16, 19}, //
    {500000, 509999, 13, 19}, // Maestro, Dankort, Elo, Aura, EBT, RuPay, Verve
    {560000, 589999, 13, 19}, // Maestro, EBT, Bankcard, UzCard
    {630400, 630499, 13, 19}, // Maestro
    {639000, 639099, 13, 19}, //
    {670000, 679999, 13, 19}, // Maestro, Bancontact
    {600000, 609999, 16, 16}, // RuPay, Hipercard
    {600400, 600999, 16, 19}, // EBT, merchants' own cards
    {604001, 604200, 16, 19}, // UkrCard
    {606282, 606282, 13, 19}, // Hipercard
    {610000, 610999, 16, 19}, // EBT
    {627780, 639999, 16, 19}, // Elo, Hiper, InstaPayment, Switch, Solo
    {817200, 829999, 16, 16}, // RuPay
    {220000, 220599, 16, 19}, // Mir, BORICA
    {860000, 860099, 16, 16}, // UzCard
    {970400, 970499, 16, 19}, // Napas
    {979200, 979299, 16, 16}, // Troy
    {986000, 986099, 16, 16}, // Humo
};

constexpr std::size_t least_digits = 13;
constexpr std::size_t most_digits = 19;

// The last digits of a text, with at most blanks and hyphens between them.
class digit_groups
{
  public:
    void clear() { size_ = 0; }
    [[nodiscard]] std::size_t size() const { return size_; }

    void add(char chr, std::size_t at, bool begins_group)
    {
        if (size_ == digits_.size()) {
            std::shift_left(digits_.begin(), digits_.end(), 1);
            --size_;
        }
        digits_[size_++] = {at, static_cast<std::uint8_t>(chr - '0'), begins_group};
    }

    // Where the card number begins that ends with the last digit; no_offset when there is none.
    [[nodiscard]] std::size_t number_begin() const
    {
        for (std::size_t count = least_digits; count <= std::min(size_, most_digits); ++count) {
            const std::size_t first = size_ - count;
            if (digits_[first].begins_group && is_number(first, count))
                return digits_[first].at;
        }
        return no_offset;
    }

  private:
    struct digit {
        std::size_t at;
        std::uint8_t value;
        bool begins_group;
    };

    [[nodiscard]] bool is_number(std::size_t first, std::size_t count) const
    {
        std::uint32_t prefix = 0;
        for (std::size_t i = first; i < first + 6; ++i)
            prefix = prefix * 10 + digits_[i].value;
        const bool is_issued = std::ranges::any_of(issuer_ranges, [&](const issuer_range &range) {
            return prefix >= range.first && prefix <= range.last && count >= range.least &&
                   count <= range.most;
        });
        return is_issued &&
               has_check_digit(count, [&](std::size_t i) { return digits_[first + i].value; });
    }

    std::array<digit, most_digits> digits_{};
    std::size_t size_ = 0;
};

// The bytes that may stand between two groups of a number: up to three blanks, tabs, no-break
// spaces, hyphens and dashes.
std::size_t separator_size(std::string_view text)
{
    constexpr std::size_t most = 3;
    std::size_t size = 0;
    for (std::size_t count = 0; count < most && size < text.size(); ++count) {
        const character chr = first_character(text.substr(size));
        const bool separates = chr.code == ' ' || chr.code == '\t' || chr.code == '-' ||
                               chr.code == 0xA0 || chr.code == 0x202F ||
                               (chr.code >= 0x2007 && chr.code <= 0x2015);
        if (chr.is_broken || !separates)
            break;
        size += chr.size;
    }
    return size;
}

} // namespace

std::size_t find_card_number(std::string_view text)
{
    digit_groups groups;
    bool begins_group = true;
    for (std::size_t at = 0; at < text.size();) {
        if (is_digit(text[at])) {
            groups.add(text[at], at, begins_group);
            begins_group = false;
            ++at;
            const bool ends_group = at == text.size() || !is_digit(text[at]);
            if (ends_group && groups.size() >= least_digits) {
                const std::size_t begin = groups.number_begin();
                if (begin != no_offset)
                    return begin;
            }
            continue;
        }
        const std::size_t size = separator_size(text.substr(at));
        at += size;
        const bool goes_on = size > 0 && at < text.size() && is_digit(text[at]);
        if (!goes_on) {
            groups.clear();
            at += size == 0 ? 1 : 0;
        }
        begins_group = true;
    }
    return no_offset;
}

bool has_card_digits(std::string_view text)
{
    digit_groups digits;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!is_digit(text[at]))
            continue;
        digits.add(text[at], at, true);
        if (digits.number_begin() != no_offset)
            return true;
    }
    return false;
}

} // namespace qel_rcpt::check
