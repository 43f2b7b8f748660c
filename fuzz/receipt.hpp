// A whole record and configuration made from an input, and what holds for the receipts of every
// form.
#ifndef QELRCPT_FUZZ_RECEIPT_HPP
#define QELRCPT_FUZZ_RECEIPT_HPP

#include "fuzz.hpp"

#include <qel_rcpt.h>

#include <array>
#include <span>

namespace fuzz
{

// The layout of an input:
//   customer's language, merchant's language, industry   the value plus '0'
//   country, currency, time zone                         a place in the tables below, plus '0'
//   width of plain text                                  the value plus '0'
//   key=value pairs, separated
class receipt_input
{
  public:
    explicit receipt_input(input bytes) : is_repeated_(bytes.sum() % 8 == 0)
    {
        static constexpr std::uint32_t countries[] = {840, 124, 276, 826, 978, 0};
        static constexpr std::uint32_t currencies[] = {840, 124, 978, 826, 392, 0};
        static const qel::time_tz zones[] = {qel::time_tz(Qel_time_tz_load("America/Toronto")),
                                             qel::time_tz(Qel_time_tz_load("Asia/Kolkata")),
                                             nullptr};
        config_.cust_lang = static_cast<Qel_rcpt_lang_t>(bytes.number());
        config_.merch_lang = static_cast<Qel_rcpt_lang_t>(bytes.number());
        config_.industry = static_cast<Qel_rcpt_ind_t>(bytes.number());
        config_.country_code = countries[bytes.number() % std::size(countries)];
        config_.currency_code = currencies[bytes.number() % std::size(currencies)];
        const std::size_t zone = bytes.number() % (std::size(zones) + 1);
        has_config_ = zone < std::size(zones);
        config_.merch_timezone = has_config_ ? zones[zone].get() : nullptr;
        width_ = bytes.number();
        for (const std::string &pair : bytes.texts())
            add(pair);
        // The current time is another one a moment later.
        if (Qel_str_isempty(value("timestamp")))
            Qel_hash_dict_insert(record(), "timestamp", "1706041800");
    }

    Qel_hash_dict_t *record() const { return record_.get(); }
    const char *value(const char *key) const { return Qel_hash_dict_get_direct(record(), key); }
    const Qel_rcpt_config_t *config() const { return has_config_ ? &config_ : nullptr; }
    std::size_t width() const { return width_; }

    // Whether this is one of the inputs, some of all, that are rendered in each way a second time:
    // what differs then differs for many inputs, and rendering is most of a target's cost.
    bool is_repeated() const { return is_repeated_; }

    bool has_industry(Qel_rcpt_ind_t industry) const
    {
        return has_config_ && (config_.industry & industry) != 0;
    }

  private:
    void add(const std::string &pair)
    {
        const std::size_t equals = std::min(pair.find('='), pair.size() - 1);
        if (!pair.empty())
            Qel_hash_dict_insert(record(), pair.substr(0, equals).c_str(),
                                 pair.substr(equals + 1).c_str());
    }

    bool is_repeated_;
    qel::dict record_{Qel_hash_dict_create(16, 75, QEL_HASH_DICT_NONE)};
    Qel_rcpt_config_t config_{};
    bool has_config_ = false;
    std::size_t width_ = 0;
};

// The blocks of the forms that are not the processor's own, in their order.
inline constexpr std::string_view common_blocks[] = {
    "merch_info",  "reference", "items", "order_money", "money",
    "disposition", "signature", "emv",   "notice",      "notes"};

struct block {
    std::string name; // without the copy
    bool is_custcopy;
    std::string text;
};

// The blocks of both copies, after it has been checked that there are no others and that they
// stand in their order.
inline std::vector<block> checked_blocks(const receipt_input &from, const Qel_hash_dict_t *blocks,
                                         std::span<const std::string_view> names)
{
    const bool has_merch_copy =
        !from.has_industry(QEL_RCPT_IND_AUTOFUEL) && !from.has_industry(QEL_RCPT_IND_SELFSERV);
    std::vector<block> all;
    std::size_t earliest = 0; // place among both copies' names
    for (const auto &[key, text] : pairs_of(blocks)) {
        const bool is_custcopy = key.starts_with("cust_");
        require(is_custcopy || (has_merch_copy && key.starts_with("merch_")), "the copy exists");
        const std::string name = key.substr(key.find('_') + 1);
        const auto found = std::ranges::find(names, name);
        require(found != names.end(), "the block's name is known");
        require(!is_custcopy || name != "signature", "only the merchant's copy is signed");
        const auto place =
            static_cast<std::size_t>(found - names.begin()) + (is_custcopy ? 0 : names.size());
        require(place >= earliest, "the blocks stand in their order");
        earliest = place + 1;
        require(!Qel_str_isspace(text.c_str()), "no block is blank");
        all.push_back({name, is_custcopy, text});
    }
    return all;
}

// Renders, some inputs twice, and checks that the record stays as it was and the results are alike.
template <typename Generate>
std::vector<block> checked_receipt(const receipt_input &from,
                                   std::span<const std::string_view> names, Generate generate)
{
    const pairs before = pairs_of(from.record());
    const qel::dict blocks(generate());
    require(pairs_of(from.record()) == before, "the record is unchanged");
    if (from.is_repeated()) {
        const qel::dict again(generate());
        require(pairs_of(again.get()) == pairs_of(blocks.get()), "the same record gives the same");
    }
    return checked_blocks(from, blocks.get(), names);
}

// A value of the record that a block shows as it is.
struct shown_value {
    std::string_view block;
    const char *key;
};

} // namespace fuzz

#endif
