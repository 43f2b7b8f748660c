#include "qelstdlib_int.h"

#include <memory>
#include <utility>
#include <vector>

// The entries stand in blocks that grow and never move, so that a list costs few allocations
// however many lines it holds, and what was borrowed from it stays where it is.
struct Qel_list_str {
    // With their terminators behind them.
    std::vector<std::string_view> entries;

    void append(std::string_view str)
    {
        char *const place = take(str.size() + 1);
        str.copy(place, str.size());
        place[str.size()] = '\0';
        entries.emplace_back(place, str.size());
        entries_len_ += str.size();
    }

    [[nodiscard]] std::size_t joined_len(std::size_t separator_len) const
    {
        return entries.empty() ? 0 : entries_len_ + (entries.size() - 1) * separator_len;
    }

  private:
    char *take(std::size_t count)
    {
        if (count > room_) {
            constexpr std::size_t first = 512;
            room_ = std::max({first, 2 * entries_len_, count});
            blocks_.push_back(std::make_unique_for_overwrite<char[]>(room_));
            free_ = blocks_.back().get();
        }
        room_ -= count;
        return std::exchange(free_, free_ + count);
    }

    std::vector<std::unique_ptr<char[]>> blocks_;
    char *free_ = nullptr; // in the last block
    std::size_t room_ = 0; // behind it
    std::size_t entries_len_ = 0;
};

Qel_list_str_t *Qel_list_str_create(uint32_t /*there is but one order*/) noexcept
{
    return std::make_unique<Qel_list_str>().release();
}

void Qel_list_str_insert(Qel_list_str_t *list, const char *str) noexcept
{
    if (list != nullptr)
        list->append(qel::view(str));
}

size_t Qel_list_str_len(const Qel_list_str_t *list) noexcept
{
    return list == nullptr ? 0 : list->entries.size();
}

const char *Qel_list_str_at(const Qel_list_str_t *list, size_t idx) noexcept
{
    return idx < Qel_list_str_len(list) ? list->entries[idx].data() : nullptr;
}

char *Qel_list_str_join_str(const Qel_list_str_t *list, const char *separator) noexcept
{
    if (list == nullptr)
        return qel::new_text("");

    const std::string_view between = qel::view(separator);
    char *const joined = qel::new_text_area(list->joined_len(between.size()));
    char *end = joined;
    for (std::size_t idx = 0; idx < list->entries.size(); ++idx) {
        if (idx > 0)
            end = std::ranges::copy(between, end).out;
        end = std::ranges::copy(list->entries[idx], end).out;
    }
    return joined;
}

void Qel_list_str_destroy(Qel_list_str_t *list) noexcept
{
    const std::unique_ptr<Qel_list_str> ended(list);
}
