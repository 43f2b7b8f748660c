#include "lists.h"

#include "checking/findings.h"

#include <qel_rcpt_keys.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace tool
{

namespace
{

// The rows, one a line, their cells in columns.
template <std::size_t Columns>
std::string in_columns(const std::vector<std::array<std::string_view, Columns>> &rows)
{
    constexpr std::size_t gap = 2;
    std::array<std::size_t, Columns> widths{};
    for (const auto &row : rows) {
        for (std::size_t column = 0; column + 1 < Columns; ++column)
            widths[column] = std::max(widths[column], row[column].size() + gap);
    }
    std::string text;
    for (const auto &row : rows) {
        for (std::size_t column = 0; column + 1 < Columns; ++column)
            text.append(row[column]).append(widths[column] - row[column].size(), ' ');
        text.append(row.back()).append("\n");
    }
    return text;
}

} // namespace

std::string listed_record_keys()
{
    std::vector<std::array<std::string_view, 2>> rows;
    for (const qel_rcpt::record_key &key : qel_rcpt::record_keys)
        rows.push_back({key.name, key.meaning});
    std::string list = in_columns(rows);
    std::erase(list, '`');
    return list;
}

std::string listed_rules()
{
    std::vector<std::array<std::string_view, 3>> rows;
    for (const Qel_rcpt_rule_t &rule : rules())
        rows.push_back({rule.name, word_of(rule.severity), rule.wants});
    return in_columns(rows);
}

} // namespace tool
