// What a receipt must not show: card numbers, expiry dates, verification values, names.
#include "qel_rcpt_check.hpp"

#include <algorithm>
#include <iterator>

namespace qel_rcpt::check
{

namespace
{

bool is_name_on_benefit(const subject &record)
{
    return record.is_benefit() && record.has("cardholdername") &&
           !Qel_str_eq(record.get("cardholdername"), "/");
}

bool is_interac_titled_debit(const subject &record)
{
    const Qel_rcpt_lang_t langs[] = {record.config().cust_lang, record.config().merch_lang};
    return record.is_interac() && std::ranges::any_of(langs, [&](Qel_rcpt_lang_t lang) {
               return Qel_str_casestr(record.title(lang), "debit") != nullptr;
           });
}

bool is_interac_named_debit(const subject &record)
{
    return record.is_interac() && record.holds("rcpt_emv_name", "debit");
}

constexpr condition conditions[] = {
    {rule_named("benefit-name"), is_name_on_benefit, "cardholdername",
     "a receipt of SNAP or EBT shows no customer's name; leave cardholdername out"},
    {rule_named("interac-debit"), is_interac_titled_debit, "u_cardclass",
     "the title of this Interac receipt says DEBIT; leave u_cardclass and card_cardclass out"},
    {rule_named("interac-debit"), is_interac_named_debit, "rcpt_emv_name",
     "the application's name on this Interac receipt says DEBIT; leave that word out"},
};

// Track data

// A stripe's second track, or the image of it: a number, then '=', '^' or (as the chip has it) 'D',
// and at least four digits of an expiry date. The first track has a name between two '^'.
std::size_t find_track(std::string_view text)
{
    std::size_t digits = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (is_digit(text[at])) {
            ++digits;
            continue;
        }
        const bool ends_number = digits >= 12 && digits <= 19;
        const std::string_view rest = text.substr(at + 1, 4);
        const bool has_date = rest.size() == 4 && std::ranges::all_of(rest, is_digit);
        if (ends_number && (text[at] == '^' || (has_date && (text[at] == '=' || text[at] == 'D'))))
            return at - digits;
        digits = 0;
    }
    return no_offset;
}

// What must stay out of a record, the rules for where it is printed and where it is not, and the
// names that it usually goes by: in lower case, without '_', '-', '.' and blanks.
struct secret {
    const char *what;
    const Qel_rcpt_rule_t &shown;
    const Qel_rcpt_rule_t &kept;
    std::span<const std::string_view> names;
};

constexpr std::string_view expiry_names[] = {"exp",
                                             "expdate",
                                             "expmonth",
                                             "expyear",
                                             "expiry",
                                             "expirydate",
                                             "expirymonth",
                                             "expiryyear",
                                             "expires",
                                             "expiration",
                                             "expirationdate",
                                             "expirationmonth",
                                             "expirationyear",
                                             "cardexp",
                                             "cardexpiry",
                                             "cardexpirydate",
                                             "cardexpiration",
                                             "cardexpirationdate",
                                             "ccexp",
                                             "validthru",
                                             "goodthru"};

constexpr std::string_view verification_names[] = {"cv",
                                                   "cvv",
                                                   "cvv2",
                                                   "cvc",
                                                   "cvc2",
                                                   "cid",
                                                   "csc",
                                                   "cvn",
                                                   "cardcvv",
                                                   "cardcvc",
                                                   "cardcode",
                                                   "securitycode",
                                                   "cardsecuritycode",
                                                   "verificationvalue",
                                                   "cardverification",
                                                   "pin",
                                                   "pinblock",
                                                   "pindata"};

constexpr std::string_view track_names[] = {
    "track",     "track1",     "track2",     "track3",
    "trackdata", "track1data", "track2data", "track2equivalentdata",
    "magstripe", "magdata"};

constexpr const Qel_rcpt_rule_t &verification_value = rule_named("verification-value");
constexpr const Qel_rcpt_rule_t &track_data = rule_named("track-data");

constexpr secret named_secrets[] = {
    {"an expiry date", rule_named("expiry-shown"), rule_named("expiry-kept"), expiry_names},
    {"a verification value or a PIN", verification_value, verification_value, verification_names},
    {"data of the magnetic stripe", track_data, track_data, track_names},
};

// The secret that goes by this name; absent for other names.
const secret *find_secret(std::string_view name)
{
    std::array<char, 32> plain{};
    std::size_t size = 0;
    for (const char chr : name) {
        if (chr == '_' || chr == '-' || chr == '.' || chr == ' ')
            continue;
        if (size == plain.size())
            return nullptr;
        plain[size++] = chr;
    }
    const auto *found = std::ranges::find_if(named_secrets, [&](const secret &candidate) {
        return is_word({plain.data(), size}, candidate.names);
    });
    return found == std::end(named_secrets) ? nullptr : found;
}

} // namespace

bool is_secret_name(std::string_view name)
{
    return find_secret(name) != nullptr;
}

namespace
{

// Reports the first control character and the first byte that belongs to no character.
void look_at_characters(const char *key, std::string_view value, report &findings)
{
    bool was_control = false;
    bool was_broken = false;
    character chr;
    for (std::size_t at = 0; at < value.size() && !(was_control && was_broken); at += chr.size) {
        chr.size = 1;
        if (is_visible(value[at]) || value[at] == '\n' || value[at] == '\r' || value[at] == '\t')
            continue;
        chr = first_character(value.substr(at));
        if (chr.is_broken && !was_broken) {
            was_broken = true;
            findings.add(rule_named("broken-utf8"), key, at,
                         "the text is not UTF-8; convert it from the character set that it is in");
        } else if (!chr.is_broken && is_control(chr.code) && !was_control) {
            was_control = true;
            findings.add(rule_named("control-character"), key, at,
                         "a control character, or one that turns the direction of writing, would "
                         "reach the printer or the page; take it out");
        }
    }
}

// Whether so many digits stand in a row, with nothing between them but blanks and hyphens.
bool has_digits(std::string_view value, std::size_t count)
{
    const auto is_gap = [](char chr) { return chr == ' ' || chr == '-' || !is_visible(chr); };
    std::string_view::const_iterator at = value.begin();
    while ((at = std::find_if(at, value.end(), is_digit)) != value.end()) {
        std::size_t digits = 0;
        for (; at != value.end() && (is_digit(*at) || is_gap(*at)); ++at)
            digits += is_digit(*at) ? 1 : 0;
        if (digits >= count)
            return true;
    }
    return false;
}

void look_at_text(const char *key, std::string_view value, bool is_hex, report &findings)
{
    constexpr std::size_t fewest_digits = 12;
    if (!is_visible_ascii(value))
        look_at_characters(key, value, findings);
    if (value.size() < fewest_digits || !has_digits(value, fewest_digits))
        return;
    if (const std::size_t at = find_track(value); at != no_offset)
        return findings.add(track_data, key, at,
                            "this looks like data of a card's magnetic stripe; it must not be in a "
                            "record at all");
    const std::size_t at = is_hex ? no_offset : find_card_number(value);
    if (at != no_offset)
        findings.add(rule_named("card-number"), key, at,
                     "this looks like a whole card number and would be printed, logged or kept; "
                     "mask it");
}

// Values under keys that nothing reads are looked at too: a record that is logged holds them.
void look_at_texts(const subject &record, report &findings)
{
    for (std::size_t place = 0; place < num_record_keys; ++place) {
        const known_key key(place);
        if (record.get(key) != nullptr)
            look_at_text(key.name(), record.text(key), record_keys[place].kind == key_kind::hex,
                         findings);
    }
    if (!record.has_unknown_keys())
        return;
    for (const auto [key, value] : qel::pairs(record.record())) {
        if (record.reads(key, value) || Qel_str_isempty(value))
            continue;
        look_at_text(key, value, false, findings);
        if (const secret *found = find_secret(key))
            findings.add(found->kept, key, no_offset,
                         {"the record holds ", found->what,
                          "; nothing prints this key, but logs and archives would keep it: leave "
                          "it out"});
    }
}

// The merchant's own fields are printed in the general forms.
void look_at_fields(const subject &record, report &findings)
{
    if (!record.has("rcpt_custom"))
        return;
    field_reader fields(record.text("rcpt_custom"));
    for (field each; fields.next(each);) {
        const secret *found = each.value.empty() ? nullptr : find_secret(each.name);
        if (found != nullptr)
            findings.add(found->shown, "rcpt_custom", each.offset,
                         {"the field ", quoted(each.name), " holds ", found->what,
                          " and would be printed; leave it out"});
    }
}

// The digits of a masked number that show: in front of what is masked, behind it, and in all.
struct shown_digits {
    std::size_t front = 0;
    std::size_t back = 0;
    std::size_t all = 0;
};

shown_digits count_shown(std::string_view account)
{
    shown_digits shown;
    bool is_masked = false;
    for (const char chr : account) {
        const bool is_grouping = chr == ' ' || chr == '-';
        if (is_digit(chr)) {
            ++shown.all;
            ++(is_masked ? shown.back : shown.front);
        } else if (!is_grouping) {
            is_masked = true;
            shown.back = 0;
        }
    }
    if (!is_masked) // the end of a number alone
        std::swap(shown.front, shown.back);
    return shown;
}

// "12/29" somewhere in the text.
std::size_t find_date(std::string_view text)
{
    for (std::size_t at = 0; at + 5 <= text.size(); ++at) {
        const std::string_view date = text.substr(at, 5);
        const bool has_digits =
            is_digit(date[0]) && is_digit(date[1]) && is_digit(date[3]) && is_digit(date[4]);
        if (has_digits && date[2] == '/')
            return at;
    }
    return no_offset;
}

void look_at_account(const subject &record, report &findings)
{
    const std::string_view account = record.text("account");
    if (const std::size_t at = find_date(account); at != no_offset)
        return findings.add(rule_named("expiry-shown"), "account", at,
                            "this looks like an expiry date, which no copy may show; leave it out");
    if (find_card_number(account) != no_offset)
        return; // said already
    const shown_digits shown = count_shown(account);
    const std::size_t between = shown.all - shown.front - shown.back;
    if (record.is_in(country_us) && (shown.front + between > 0 || shown.back > 5))
        findings.add(rule_named("account-digits-us"), "account", no_offset,
                     "more than the last five digits of the account show; mask the others");
    else if (record.is_in(country_canada) && (shown.front + between > 0 || shown.back > 4))
        findings.add(rule_named("account-digits-canada"), "account", no_offset,
                     "more than the last four digits of the account show; mask the others");
    else if (shown.front > 6 || between > 0 || shown.back > 4)
        findings.add(rule_named("account-digits"), "account", no_offset,
                     "more than the first six and the last four digits of the account show; mask "
                     "the others");
}

} // namespace

rule_group secret_rules()
{
    static constexpr pass passes[] = {look_at_texts, look_at_fields, look_at_account};
    return {conditions, passes};
}

} // namespace qel_rcpt::check
