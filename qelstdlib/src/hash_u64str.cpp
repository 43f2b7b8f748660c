#include "qelstdlib_int.h"

#include <memory>
#include <unordered_map>

struct Qel_hash_u64str {
    std::unordered_map<std::uint64_t, std::string> texts;
};

namespace
{

// Follows a creator's hints within reason: they come from callers and may be anything.
void make_room(std::unordered_map<std::uint64_t, std::string> &table, std::size_t init_size,
               std::size_t fill_pct)
{
    constexpr std::size_t max_reserved = 4096;
    const auto percent = static_cast<float>(std::clamp<std::size_t>(fill_pct, 10, 100));
    table.max_load_factor(percent / 100.0F);
    table.reserve(std::min(init_size, max_reserved));
}

} // namespace

Qel_hash_u64str_t *Qel_hash_u64str_create(size_t init_size, size_t fill_pct,
                                          uint32_t /*none exist*/) noexcept
{
    auto table = std::make_unique<Qel_hash_u64str>();
    make_room(table->texts, init_size, fill_pct);
    return table.release();
}

void Qel_hash_u64str_insert(Qel_hash_u64str_t *table, uint64_t key, const char *str) noexcept
{
    if (table != nullptr)
        table->texts[key].assign(qel::view(str));
}

const char *Qel_hash_u64str_get_direct(const Qel_hash_u64str_t *table, uint64_t key) noexcept
{
    if (table == nullptr)
        return nullptr;
    const auto found = table->texts.find(key);
    return found == table->texts.end() ? nullptr : found->second.c_str();
}

void Qel_hash_u64str_destroy(Qel_hash_u64str_t *table) noexcept
{
    const std::unique_ptr<Qel_hash_u64str> ended(table);
}
