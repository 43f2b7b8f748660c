#include "reading/record_keys.h"

#include <qel_rcpt_keys.hpp>

#include <algorithm>

namespace tool
{

std::string listed_record_keys()
{
    const size_t column =
        std::ranges::max(qel_rcpt::record_keys, {},
                         [](const qel_rcpt::record_key &key) { return key.name.size(); })
            .name.size() +
        2;
    std::string list;
    for (const qel_rcpt::record_key &key : qel_rcpt::record_keys) {
        list.append(key.name).append(column - key.name.size(), ' ').append(key.meaning);
        std::erase(list, '`');
        list += '\n';
    }
    return list;
}

} // namespace tool
