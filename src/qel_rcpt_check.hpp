// What the groups of rules of the check share: the record under check, the rule's row, and the
// report that findings go to.
#ifndef QEL_RCPT_CHECK_HPP
#define QEL_RCPT_CHECK_HPP

#include "qel_rcpt_chars.hpp"
#include "qel_rcpt_check_rules.hpp"
#include "qel_rcpt_keys.hpp"
#include "qel_rcpt_rules.hpp"

#include <qel_rcpt_check.h>
#include <qelstdlib_json.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

namespace qel_rcpt::check
{

// Called where the code is compiled, it is an error that names what is missing.
inline void no_such_key() {}

// A key of the table, found when the code is compiled.
class known_key
{
  public:
    consteval known_key(const char *name) : place_(static_cast<std::uint8_t>(find_record_key(name)))
    {
        if (place_ >= num_record_keys)
            no_such_key();
    }
    explicit constexpr known_key(std::size_t place) : place_(static_cast<std::uint8_t>(place)) {}

    [[nodiscard]] constexpr std::uint8_t place() const { return place_; }
    [[nodiscard]] constexpr const char *name() const { return record_keys[place_].name.data(); }

  private:
    std::uint8_t place_;
};

// What the transaction came to, whatever form states it.
enum class outcome { approved, declined, canceled, voided, open };

// The record under check, its values at hand by the place of their key, with what many rules ask.
class subject
{
  public:
    subject(const Qel_hash_dict_t *kvs, const Qel_rcpt_config_t *config, Qel_rcpt_form_t form);

    [[nodiscard]] const Qel_hash_dict_t *record() const { return kvs_; }
    [[nodiscard]] const Qel_rcpt_config_t &config() const { return config_; }
    [[nodiscard]] bool has_unknown_keys() const { return has_unknown_keys_; }
    // Whether the library reads this pair of the record.
    [[nodiscard]] bool reads(const char *key, const char *value) const
    {
        return place_of(key, value) < num_record_keys;
    }

    // The record's value, or absent.
    [[nodiscard]] const char *get(known_key key) const { return text(key).data(); }
    // The record's value; empty without one.
    [[nodiscard]] std::string_view text(known_key key) const { return values_[key.place()]; }
    [[nodiscard]] bool has(known_key key) const { return !text(key).empty(); }
    [[nodiscard]] bool is(known_key key, const char *word) const
    {
        return has(key) && Qel_str_caseeq(get(key), word);
    }
    [[nodiscard]] bool holds(known_key key, const char *word) const
    {
        return has(key) && Qel_str_casestr(get(key), word) != nullptr;
    }
    [[nodiscard]] bool is_set(known_key key) const { return has(key) && Qel_str_istrue(get(key)); }
    // In hundredths, as sums take it.
    [[nodiscard]] std::int64_t amount(known_key key) const { return amounts_[key.place()]; }

    [[nodiscard]] bool is_general() const { return form_ == QEL_RCPT_FORM_GENERAL; }
    [[nodiscard]] bool is_in_store() const { return form_ == QEL_RCPT_FORM_MONERIS; }
    [[nodiscard]] bool is_ecommerce() const { return form_ == QEL_RCPT_FORM_MONERIS_ECOMM; }
    [[nodiscard]] bool is_in(std::uint32_t country) const
    {
        return config_.country_code == country;
    }
    [[nodiscard]] bool has_language(Qel_rcpt_lang_t lang) const; // on one of the copies
    [[nodiscard]] bool has_merchant_copy() const
    {
        return Qel_rcpt_generate_merch_copy(config_.industry);
    }

    [[nodiscard]] const char *action() const { return action_; }  // absent without one
    [[nodiscard]] bool is_payment() const { return is_payment_; } // a sale or an authorization
    [[nodiscard]] outcome result() const { return outcome_; }
    [[nodiscard]] bool is_approved() const { return outcome_ == outcome::approved; }
    [[nodiscard]] bool is_cash() const { return is("cardtype", "cash"); }
    [[nodiscard]] bool is_card_payment() const { return is_payment_ && !is_cash(); }
    [[nodiscard]] bool is_interac() const { return is("cardtype", "interac"); }
    [[nodiscard]] bool has_order() const { return amount("order_total") != 0; }
    [[nodiscard]] bool is_debit() const { return is_card_class("debit"); }
    [[nodiscard]] bool is_card_class(const char *word) const;
    [[nodiscard]] bool is_benefit() const; // SNAP and other EBT
    [[nodiscard]] bool has_chip_data() const;
    [[nodiscard]] bool is_chip_entry() const; // chip or contactless

    // The transaction's title in a language; absent without an action.
    [[nodiscard]] const char *title(Qel_rcpt_lang_t lang) const;
    // The subtotal as the receipt computes it, in hundredths.
    [[nodiscard]] std::int64_t subtotal() const { return subtotal_; }
    [[nodiscard]] std::int64_t order_subtotal() const { return order_subtotal_; }

  private:
    [[nodiscard]] std::size_t place_of(const char *key, const char *value) const;
    [[nodiscard]] outcome find_outcome() const;

    const Qel_hash_dict_t *kvs_;
    Qel_rcpt_config_t config_;
    Qel_rcpt_form_t form_;
    std::array<std::string_view, num_record_keys> values_{};
    std::array<std::int64_t, num_record_keys> amounts_{}; // of the keys that hold one
    bool has_unknown_keys_ = false;
    const char *action_ = nullptr;
    bool is_payment_ = false;
    outcome outcome_ = outcome::open;
    std::int64_t subtotal_ = 0;
    std::int64_t order_subtotal_ = 0;
};

inline constexpr std::uint32_t country_us = 840; // ISO 3166-1
inline constexpr std::uint32_t country_canada = 124;

// A piece of a sentence: our own words, or a value of the record in quotes.
struct piece {
    constexpr piece(const char *words) : text(words) {}
    constexpr piece(std::string_view words, bool in_quotes = false)
        : text(words), is_quoted(in_quotes)
    {
    }
    std::string_view text;
    bool is_quoted = false;
};

// The beginning of a value, in quotes, without control characters, a card number in it masked.
constexpr piece quoted(std::string_view value)
{
    return {value, true};
}

// Where findings go; counts the errors.
class report
{
  public:
    report(Qel_rcpt_check_cb cb, void *info) : cb_(cb), info_(info) {}

    void add(const Qel_rcpt_rule_t &rule, const char *key, std::size_t offset,
             std::initializer_list<piece> sentence);
    void add(const Qel_rcpt_rule_t &rule, const char *key, std::size_t offset,
             const char *sentence);

    [[nodiscard]] std::size_t errors() const { return errors_; }

  private:
    Qel_rcpt_check_cb cb_;
    void *info_;
    std::size_t errors_ = 0;
};

inline constexpr std::size_t no_offset = QEL_RCPT_NO_OFFSET;

// A rule about the record as a whole: when the record breaks it, and the key and the sentence of
// the finding. The other rules are reported by the passes.
struct condition {
    const Qel_rcpt_rule_t &rule;
    bool (*is_broken)(const subject &);
    const char *key;
    const char *sentence;
};

using pass = void (*)(const subject &, report &);

struct rule_group {
    std::span<const condition> conditions;
    std::span<const pass> passes;
};

rule_group value_rules();
rule_group document_rules(); // line items, receipt data, custom fields
rule_group contradiction_rules();
rule_group secret_rules();
rule_group requirement_rules();

// Whether the text is one decimal number, as money formatting reads it.
bool is_amount(std::string_view text);

// Reports an amount that cannot be used, at the offset given or at the byte that does not fit; true
// when there is nothing to report.
bool look_at_amount(const subject &record, const char *key, std::string_view text,
                    std::size_t offset, report &findings);

// Reports a value that does not fit.
void add_cut(const char *key, std::size_t offset, std::string_view value, report &findings);

// The same of one of more bytes than fit.
void look_at_cut(const char *key, std::size_t offset, std::string_view value, std::size_t most,
                 report &findings);

// Whether a value under this name must stay out of a record.
bool is_secret_name(std::string_view name);

// Where a whole card number stands in the text, or no_offset.
std::size_t find_card_number(std::string_view text);

// Whether a card number is among the digits of the text, however they are written: what is next to
// it or between its digits may make it none for find_card_number.
bool has_card_digits(std::string_view text);

// A field of rcpt_custom, its name and its value as they are written between their quotes.
struct field {
    std::string_view name;
    std::string_view value;
    std::size_t offset = 0; // where it begins
};

// Takes name:value, name:value apart as Qel_hash_dict_deserialize does.
class field_reader
{
  public:
    explicit field_reader(std::string_view text) : text_(text) {}

    // False at the end, and at what cannot be read.
    bool next(field &out);
    [[nodiscard]] std::size_t fault() const { return fault_; } // where it is; no_offset without one

  private:
    bool take_text(std::string_view ends, std::string_view &out);
    bool fail(std::size_t at);

    std::string_view text_;
    std::size_t at_ = 0;
    std::size_t fault_ = no_offset;
};

// Texts

struct character {
    char32_t code = 0;
    std::size_t size = 1; // in bytes
    bool is_broken = false;
};

// The first character of a text that is not empty; a byte that belongs to none is broken.
character first_character(std::string_view text);

// Control characters, and those that turn the direction in which a terminal or a page writes.
bool is_control(char32_t code);

// Whether text equals one of the words, without regard to case.
bool is_word(std::string_view text, std::span<const std::string_view> words);

// The known word that was probably meant, whatever the case of its letters.
class nearest_word
{
  public:
    explicit nearest_word(std::string_view given);

    void offer(std::string_view known);
    [[nodiscard]] std::string_view given() const { return given_; }
    [[nodiscard]] std::string_view found() const { return found_; } // empty: none is near

  private:
    std::string_view given_;
    std::string_view found_;
    std::size_t distance_; // less than this is near
};

// Reports a name that nothing reads, and the one that was probably meant. what: such as "key".
void add_unknown(const Qel_rcpt_rule_t &rule, const char *key, std::size_t offset, const char *what,
                 const nearest_word &name, report &findings);

// The documents inside a record

inline constexpr qel::json_rules reading_rules = {512, true, false}; // as the forms read

// Whether the whole text is the JSON object or array that it should be; of any other nothing is
// used, so what would be shown is lost.
bool is_document(const subject &record, known_key key, qel::json_kind wanted,
                 const Qel_rcpt_rule_t &rule, const char *lost, report &findings);

template <typename Members>
void add_unknown_member(const char *key, std::string_view name, std::size_t offset,
                        const Members &members, report &findings)
{
    nearest_word nearest(name);
    for (const auto &member : members)
        nearest.offer(member.name);
    add_unknown(rule_named("member-unknown"), key, offset, "member", nearest, findings);
}

void look_at_line_items(const subject &record, report &findings);
void look_at_receipt_data(const subject &record, report &findings);

} // namespace qel_rcpt::check

#endif
