// The check of a record: what its rules ask about it, and the report of what they find.
#include "qel_rcpt_check.hpp"

#include "qel_rcpt_outcome.hpp"
#include "qel_rcpt_tables.hpp"

#include <algorithm>
#include <iterator>

namespace qel_rcpt::check
{

namespace
{

char lower(char chr)
{
    return chr >= 'A' && chr <= 'Z' ? static_cast<char>(chr - 'A' + 'a') : chr;
}

constexpr std::size_t longest_word = 32;

// The number of letters to insert, remove, replace or swap with their neighbour to make one word of
// the other, neither longer than the longest; what is not below the limit counts as the limit.
std::size_t edit_distance(std::string_view a, std::string_view b, std::size_t limit)
{
    std::array<std::array<std::size_t, longest_word + 1>, longest_word + 1> distance;
    for (std::size_t i = 0; i <= a.size(); ++i) {
        std::size_t least_of_row = limit;
        for (std::size_t j = 0; j <= b.size(); ++j) {
            const auto same = [&](std::size_t x, std::size_t y) {
                return lower(a[x - 1]) == lower(b[y - 1]);
            };
            std::size_t least = i + j;
            if (i > 0 && j > 0) {
                least = std::min(distance[i - 1][j], distance[i][j - 1]) + 1;
                least = std::min(least, distance[i - 1][j - 1] + (same(i, j) ? 0 : 1));
            }
            if (i > 1 && j > 1 && same(i, j - 1) && same(i - 1, j))
                least = std::min(least, distance[i - 2][j - 2] + 1);
            distance[i][j] = least;
            least_of_row = std::min(least_of_row, least);
        }
        if (least_of_row == limit)
            return limit; // as no later row has less than the one before it
    }
    return std::min(limit, distance[a.size()][b.size()]);
}

} // namespace

nearest_word::nearest_word(std::string_view given)
    : given_(given), distance_(std::min<std::size_t>(2, given.size() / 3) + 1)
{
}

void nearest_word::offer(std::string_view known)
{
    const std::size_t difference =
        std::max(given_.size(), known.size()) - std::min(given_.size(), known.size());
    if (difference >= distance_ || std::max(given_.size(), known.size()) > longest_word)
        return;
    const std::size_t distance = edit_distance(given_, known, distance_);
    if (distance < distance_) {
        found_ = known;
        distance_ = distance;
    }
}

bool is_word(std::string_view text, std::span<const std::string_view> words)
{
    return std::ranges::any_of(words, [&](std::string_view word) {
        return std::ranges::equal(text, word, {}, lower, lower);
    });
}

character first_character(std::string_view text)
{
    const qel::utf8_sequence found = qel::utf8_at(text);
    if (!found.is_whole)
        return {0, 1, true};
    const auto lead = static_cast<unsigned char>(text.front());
    char32_t code = found.size == 1 ? lead : lead & (0x7FU >> found.size);
    for (const char chr : text.substr(1, found.size - 1))
        code = code << 6U | (static_cast<unsigned char>(chr) & 0x3FU);
    return {code, found.size, false};
}

bool is_control(char32_t code)
{
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || turns_direction(code);
}

// The record

namespace
{

// The sum behind what an operation of the core writes, in hundredths.
std::int64_t hundredths_of(char *(*format)(const Qel_hash_dict_t *, const Qel_rcpt_attrs_t *),
                           const Qel_hash_dict_t *kvs)
{
    Qel_rcpt_attrs_t bare{};
    bare.currency_sym = "";
    bare.currency_dec = '.';
    return Qel_atofi100(qel::text(format(kvs, &bare)).get());
}

} // namespace

subject::subject(const Qel_hash_dict_t *kvs, const Qel_rcpt_config_t *config, Qel_rcpt_form_t form)
    : kvs_(kvs), form_(form)
{
    if (config != nullptr) {
        config_ = *config;
    } else {
        config_ = {};
        config_.country_code = countries[0].code;
        config_.currency_code = currencies[0].code;
    }
    if (form > QEL_RCPT_FORM_MONERIS_ECOMM)
        form_ = QEL_RCPT_FORM_GENERAL;
    if (form == QEL_RCPT_FORM_MONERIS && (config_.industry & QEL_RCPT_IND_ECOMM) != 0)
        form_ = QEL_RCPT_FORM_MONERIS_ECOMM;
    for (const auto [key, value] : qel::pairs(kvs)) {
        const std::size_t place = place_of(key, value);
        if (place == num_record_keys) {
            has_unknown_keys_ = true;
            continue;
        }
        values_[place] = value;
        if (record_keys[place].kind == key_kind::amount)
            amounts_[place] = Qel_atofi100(value);
    }
    action_ = get_action(kvs);
    const char *kind = Qel_rcpt_get_tran_type(action_, QEL_RCPT_LANG_EN, "");
    is_payment_ = kind != nullptr &&
                  (kind == Qel_rcpt_msg_to_string(QEL_RCPT_LANG_EN, QEL_RCPT_MSG_PURCHASE) ||
                   kind == Qel_rcpt_msg_to_string(QEL_RCPT_LANG_EN, QEL_RCPT_MSG_AUTHORIZATION) ||
                   Qel_str_caseeq(action_, "preauthcomplete"));
    outcome_ = find_outcome();
    subtotal_ = hundredths_of(Qel_rcpt_format_subtotal, kvs);
    order_subtotal_ = hundredths_of(Qel_rcpt_format_order_subtotal, kvs);
}

// A dictionary that forgives the case of keys finds a key however it is written.
std::size_t subject::place_of(const char *key, const char *value) const
{
    const std::string_view written(key);
    const std::size_t place = find_record_key(written);
    if (place < num_record_keys || written.size() >= longest_word)
        return place;
    std::array<char, longest_word> name{};
    std::ranges::transform(written, name.begin(), lower);
    const bool is_found = Qel_hash_dict_get_direct(kvs_, name.data()) == value;
    return is_found ? find_record_key(name.data()) : place;
}

outcome subject::find_outcome() const
{
    struct meaning {
        Qel_rcpt_msg_t message;
        outcome result;
    };
    static constexpr meaning meanings[] = {
        {QEL_RCPT_MSG_VOIDED, outcome::voided},
        {QEL_RCPT_MSG_CANCELED, outcome::canceled},
        {QEL_RCPT_MSG_DECLINE_CALL, outcome::declined},
        {QEL_RCPT_MSG_NOT_APPROVED, outcome::declined},
        {QEL_RCPT_MSG_DECLINED, outcome::declined},
    };
    const char *stated = Qel_rcpt_get_result(kvs_, QEL_RCPT_LANG_EN);
    if (states_approval(stated))
        return outcome::approved;
    for (const auto &[message, result] : meanings) {
        if (stated == Qel_rcpt_msg_to_string(QEL_RCPT_LANG_EN, message))
            return result;
    }
    return is("code", "deny") || was_declined_by_card(kvs_) ? outcome::declined : outcome::open;
}

bool subject::has_language(Qel_rcpt_lang_t lang) const
{
    return config_.cust_lang == lang || (has_merchant_copy() && config_.merch_lang == lang);
}

bool subject::is_card_class(const char *word) const
{
    return Qel_str_caseeq(Qel_rcpt_get_cardclass(kvs_), word);
}

bool subject::is_benefit() const
{
    return Qel_str_caseeq_start(action_, "ebt") || holds("cardtype", "ebt") ||
           holds("cardtype", "snap");
}

bool subject::has_chip_data() const
{
    return has("rcpt_emv_aid") || has("rcpt_emv_ac") || has("rcpt_emv_tvr") ||
           has("rcpt_emv_tsi") || has("rcpt_emv_iad") || has("rcpt_emv_actype");
}

bool subject::is_chip_entry() const
{
    return is("rcpt_entry_mode", "c") || is("rcpt_entry_mode", "t");
}

const char *subject::title(Qel_rcpt_lang_t lang) const
{
    if (is_general())
        return get_title(kvs_, lang);
    const qel::dict custom = parse_custom_fields(kvs_);
    return get_title_moneris(kvs_, lang, qel_rcpt::get(custom.get(), "correction_type"));
}

// The report

namespace
{

// A sentence being put together; what does not fit is left out.
class sentence_text
{
  public:
    void add(const piece &part)
    {
        if (part.is_quoted)
            add_quoted(part.text);
        else
            std::ranges::for_each(part.text, [&](char chr) { add(chr); });
    }
    [[nodiscard]] const char *c_str()
    {
        text_[size_] = '\0';
        return text_.data();
    }

  private:
    static constexpr std::size_t most_quoted = 40;

    // The sentences' own words and the quoted part of two values fit.
    void add(char chr)
    {
        if (size_ + 1 < text_.size())
            text_[size_++] = chr;
    }

    void add_quoted(std::string_view value)
    {
        std::string_view rest = value;
        for (std::size_t quoted = 0; !rest.empty() && quoted < most_quoted; ++quoted)
            rest.remove_prefix(first_character(rest).size);
        const std::string_view shown = value.substr(0, value.size() - rest.size());
        const bool is_secret = find_card_number(value) != no_offset || has_card_digits(shown);
        add('\'');
        add_harmless(shown, is_secret);
        add(rest.empty() ? piece("'") : piece("...'"));
    }

    void add_harmless(std::string_view shown, bool is_secret)
    {
        while (!shown.empty()) {
            const character chr = first_character(shown);
            if (chr.is_broken || is_control(chr.code))
                add('?');
            else if (is_secret && is_digit(shown.front()))
                add('#');
            else
                std::ranges::for_each(shown.substr(0, chr.size), [&](char byte) { add(byte); });
            shown.remove_prefix(chr.size);
        }
    }

    std::array<char, 512> text_{};
    std::size_t size_ = 0;
};

} // namespace

void report::add(const Qel_rcpt_rule_t &rule, const char *key, std::size_t offset,
                 const char *sentence)
{
    if (rule.severity == table::error)
        ++errors_;
    if (cb_ == nullptr)
        return;
    const Qel_rcpt_finding_t finding = {
        .severity = rule.severity,
        .rule = rule.name,
        .key = key,
        .offset = offset,
        .message = sentence,
        .source = rule.source,
        .date = rule.date,
    };
    cb_(info_, &finding);
}

void report::add(const Qel_rcpt_rule_t &rule, const char *key, std::size_t offset,
                 std::initializer_list<piece> sentence)
{
    sentence_text text;
    if (cb_ != nullptr) {
        for (const piece &part : sentence)
            text.add(part);
    }
    add(rule, key, offset, text.c_str());
}

void add_unknown(const Qel_rcpt_rule_t &rule, const char *key, std::size_t offset, const char *what,
                 const nearest_word &name, report &findings)
{
    const bool is_near = !name.found().empty();
    findings.add(rule, key, offset,
                 {"nothing reads the ", what, " ", quoted(name.given()),
                  is_near ? "; did you mean " : "", is_near ? quoted(name.found()) : piece(""),
                  is_near ? "?" : ""});
}

// The rules

namespace
{

using group_of_rules = rule_group (*)();

constexpr group_of_rules groups[] = {value_rules, document_rules, contradiction_rules, secret_rules,
                                     requirement_rules};

} // namespace

} // namespace qel_rcpt::check

std::size_t Qel_rcpt_check(const Qel_hash_dict_t *kvs, const Qel_rcpt_config_t *config,
                           Qel_rcpt_form_t form, Qel_rcpt_check_cb cb, void *info) noexcept
{
    using namespace qel_rcpt::check;
    const subject record(kvs, config, form);
    report findings(cb, info);
    for (const group_of_rules rules_of : groups) {
        const auto &[conditions, passes] = rules_of();
        for (const pass look : passes)
            look(record, findings);
        for (const condition &each : conditions) {
            if (each.is_broken(record))
                findings.add(each.rule, each.key, no_offset, each.sentence);
        }
    }
    return findings.errors();
}

const Qel_rcpt_rule_t *Qel_rcpt_check_rule(std::size_t index) noexcept
{
    using qel_rcpt::check::table::rules;
    return index < std::size(rules) ? &rules[index] : nullptr;
}
