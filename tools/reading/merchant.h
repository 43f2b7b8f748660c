// What the options, an envelope's "config" or a merchant's file say of the merchant.
#ifndef QELRCPT_TOOLS_MERCHANT_H
#define QELRCPT_TOOLS_MERCHANT_H

#include <qel_rcpt.h>
#include <qelstdlib.hpp>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tool
{

struct merchant {
    std::optional<Qel_rcpt_lang_t> lang; // of the copies that have none of their own
    std::optional<Qel_rcpt_lang_t> customer_lang;
    std::optional<Qel_rcpt_lang_t> merchant_lang;
    std::optional<uint32_t> country;
    std::optional<uint32_t> currency;
    std::optional<Qel_rcpt_ind_t> industry;
    qel::time_tz timezone;
    std::string timezone_name; // as it was given; empty without a zone
};

// A setting's name, also its option's name with '-' in place of '_', and its meaning for --help.
struct merchant_setting {
    std::string_view name;
    std::string_view value;
    std::string_view meaning; // "{}" stands for the words
    void (*set)(merchant &merchant, const std::string &value);
    std::vector<std::string_view> (*words)(); // the values to choose from; absent: anything
};

std::span<const merchant_setting> merchant_settings();

// Absent for a name that there is not.
const merchant_setting *find_merchant_setting(std::string_view name);

// The configuration for the library; what the options say goes before what the file says, and that
// before the defaults. The time zone is borrowed from one of the three.
Qel_rcpt_config_t merchant_config(const merchant &options, const merchant &file,
                                  const merchant &defaults = {});

// The name of the zone that merchant_config takes; empty when none of the three has one.
const std::string &timezone_name(const merchant &options, const merchant &file,
                                 const merchant &defaults);

// Names as a setting has them, separated by commas.
std::string industry_words(Qel_rcpt_ind_t industry);

} // namespace tool

#endif
