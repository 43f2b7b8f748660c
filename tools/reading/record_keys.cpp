#include "reading/record_keys.h"

#include <qel_rcpt_keys.hpp>
#include <qelstdlib.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tool
{

namespace
{

// The number of letters to insert, remove, replace or swap with their neighbour to make one word
// of the other.
size_t edit_distance(std::string_view a, std::string_view b)
{
    std::vector<std::vector<size_t>> distance(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t i = 0; i <= a.size(); ++i) {
        for (size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                distance[i][j] = i + j;
                continue;
            }
            const size_t replaced = distance[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            distance[i][j] = std::min({distance[i - 1][j] + 1, distance[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                distance[i][j] = std::min(distance[i][j], distance[i - 2][j - 2] + 1);
        }
    }
    return distance[a.size()][b.size()];
}

std::string upper_case(std::string_view text)
{
    std::string upper(text);
    Qel_str_upper(upper.data());
    return upper;
}

} // namespace

std::string_view nearest_record_key(std::string_view key)
{
    constexpr size_t longest_key = 32;
    if (key.size() > longest_key)
        return {};
    std::string_view nearest;
    size_t nearest_distance = std::min<size_t>(2, key.size() / 3) + 1;
    for (const qel_rcpt::record_key &record_key : qel_rcpt::record_keys) {
        const std::string_view known = record_key.name;
        const size_t distance = edit_distance(upper_case(key), upper_case(known));
        if (distance < nearest_distance) {
            nearest = known;
            nearest_distance = distance;
        }
    }
    return nearest;
}

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
