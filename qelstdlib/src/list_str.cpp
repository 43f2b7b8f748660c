#include "qelstdlib_int.h"

#include <memory>
#include <vector>

// All entries stand in one text, each with its terminator, so that a list costs few allocations
// however many lines it holds.
struct Qel_list_str {
    std::string text;
    std::vector<std::size_t> starts;

    [[nodiscard]] std::string_view entry(std::size_t idx) const
    {
        const std::size_t next = idx + 1 < starts.size() ? starts[idx + 1] : text.size();
        return std::string_view(text).substr(starts[idx], next - 1 - starts[idx]);
    }

    [[nodiscard]] std::size_t joined_len(std::size_t separator_len) const
    {
        if (starts.empty())
            return 0;
        const std::size_t terminators = starts.size();
        return text.size() - terminators + (starts.size() - 1) * separator_len;
    }
};

Qel_list_str_t *Qel_list_str_create(uint32_t /*there is but one order*/) noexcept
{
    return std::make_unique<Qel_list_str>().release();
}

void Qel_list_str_insert(Qel_list_str_t *list, const char *str) noexcept
{
    if (list == nullptr)
        return;

    const std::size_t start = list->text.size();
    list->text.append(qel::view(str)).push_back('\0');
    list->starts.push_back(start);
}

size_t Qel_list_str_len(const Qel_list_str_t *list) noexcept
{
    return list == nullptr ? 0 : list->starts.size();
}

const char *Qel_list_str_at(const Qel_list_str_t *list, size_t idx) noexcept
{
    return idx < Qel_list_str_len(list) ? list->entry(idx).data() : nullptr;
}

char *Qel_list_str_join_str(const Qel_list_str_t *list, const char *separator) noexcept
{
    if (list == nullptr)
        return qel::new_text("");

    const std::string_view between = qel::view(separator);
    char *const joined = qel::new_text_area(list->joined_len(between.size()));
    char *end = joined;
    for (std::size_t idx = 0; idx < list->starts.size(); ++idx) {
        if (idx > 0)
            end = std::ranges::copy(between, end).out;
        end = std::ranges::copy(list->entry(idx), end).out;
    }
    return joined;
}

void Qel_list_str_destroy(Qel_list_str_t *list) noexcept
{
    const std::unique_ptr<Qel_list_str> ended(list);
}
