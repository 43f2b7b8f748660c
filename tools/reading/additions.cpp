#include "reading/additions.h"

#include "messages.h"
#include "reading/wrong_kinds.h"

#include <stdexcept>

namespace tool
{

std::pair<std::string, std::string> to_addition(const std::string &given)
{
    const size_t equals = given.find('=');
    if (equals == std::string::npos || equals == 0)
        throw std::invalid_argument(in_quotes(given) + ", expected KEY=VALUE");
    try {
        check_utf8(given);
    } catch (const text_error &) {
        throw std::invalid_argument(in_quotes(given) + " is not UTF-8");
    }
    return {given.substr(0, equals), given.substr(equals + 1)};
}

void read_merchant_file(additions &added, const std::string &name)
{
    if (!name.empty())
        added.under = read_record_file(name, contents::merchant);
}

Qel_rcpt_config_t complete(record_file &file, const merchant &options, const additions &added)
{
    if (added.under.record) {
        for (const auto [key, value] : qel::pairs(added.under.record.get())) {
            if (!Qel_hash_dict_get(file.record.get(), key, nullptr))
                Qel_hash_dict_insert(file.record.get(), key, value);
        }
    }
    for (const auto &[key, value] : added.over)
        Qel_hash_dict_insert(file.record.get(), key.c_str(), value.c_str());
    return merchant_config(options, file.merchant, added.under.merchant);
}

} // namespace tool
