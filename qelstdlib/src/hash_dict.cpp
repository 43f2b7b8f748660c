#include "dict_index.h"
#include "qelstdlib_int.h"

#include <array>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

using qel::dict_entry;

// Entries stay where they are, in insertion order, so borrowed texts outlive other insertions.
struct Qel_hash_dict {
    explicit Qel_hash_dict(std::uint32_t flags)
        : ignore_case((flags & QEL_HASH_DICT_CASECMP) != 0), sorted(has_sorted_order(flags)),
          hash(ignore_case), index(qel::dict_equal{ignore_case})
    {
    }

    static bool has_sorted_order(std::uint32_t flags)
    {
        constexpr std::uint32_t both = QEL_HASH_DICT_KEYS_ORDERED | QEL_HASH_DICT_KEYS_SORTASC;
        return (flags & both) == both;
    }

    [[nodiscard]] dict_entry *find(std::string_view key) const
    {
        return index.find(key, hash(key));
    }

    void store(std::string_view key, std::string_view val)
    {
        if (dict_entry *const found = find(key)) {
            found->set_val(val);
            return;
        }
        append(dict_entry::create(key, val));
    }

    // Takes an entry of another dictionary, without copying it where the key is a new one.
    void take(std::unique_ptr<dict_entry> entry)
    {
        if (dict_entry *const found = find(entry->key()))
            found->set_val(entry->val());
        else
            append(std::move(entry));
    }

    void remove(dict_entry &removed)
    {
        index.remove(removed);
        entries.take(removed);
    }

    // In insertion order or sorted.
    [[nodiscard]] std::vector<dict_entry *> in_order() const
    {
        std::vector<dict_entry *> all;
        all.reserve(entries.size());
        for (dict_entry *each = entries.first(); each != nullptr; each = each->next)
            all.push_back(each);
        if (sorted)
            std::ranges::sort(all, qel::dict_less{ignore_case}, &dict_entry::key);
        return all;
    }

    bool ignore_case;
    bool sorted;
    qel::dict_entries entries;
    qel::dict_hash hash;
    qel::dict_index index;

  private:
    void append(std::unique_ptr<dict_entry> entry)
    {
        dict_entry &added = entries.append(std::move(entry));
        if (hash.expect(entries.size()))
            return index_anew();
        added.hash = hash(added.key());
        index.add(added);
    }

    void index_anew()
    {
        index.clear();
        for (dict_entry *each = entries.first(); each != nullptr; each = each->next) {
            each->hash = hash(each->key());
            index.add(*each);
        }
    }
};

struct Qel_hash_dict_enum {
    std::vector<dict_entry *> pairs;
    std::size_t next = 0;
};

Qel_hash_dict_t *Qel_hash_dict_create(size_t init_size, size_t fill_pct, uint32_t flags) noexcept
{
    auto dict = std::make_unique<Qel_hash_dict>(flags);
    dict->index.make_room(init_size, fill_pct);
    return dict.release();
}

bool Qel_hash_dict_insert(Qel_hash_dict_t *dict, const char *key, const char *val) noexcept
{
    if (dict == nullptr || key == nullptr)
        return false;
    dict->store(qel::view(key), qel::view(val));
    return true;
}

bool Qel_hash_dict_get(const Qel_hash_dict_t *dict, const char *key, const char **val) noexcept
{
    const char *const found = Qel_hash_dict_get_direct(dict, key);
    if (found != nullptr && val != nullptr)
        *val = found;
    return found != nullptr;
}

const char *Qel_hash_dict_get_direct(const Qel_hash_dict_t *dict, const char *key) noexcept
{
    if (dict == nullptr || key == nullptr)
        return nullptr;
    const dict_entry *const found = dict->find(key);
    return found == nullptr ? nullptr : found->val();
}

const char *Qel_hash_dict_get_direct_default(const Qel_hash_dict_t *dict, const char *key,
                                             const char *def) noexcept
{
    const char *const found = Qel_hash_dict_get_direct(dict, key);
    return found == nullptr ? def : found;
}

bool Qel_hash_dict_remove(Qel_hash_dict_t *dict, const char *key) noexcept
{
    if (dict == nullptr || key == nullptr)
        return false;
    dict_entry *const found = dict->find(key);
    if (found == nullptr)
        return false;
    dict->remove(*found);
    return true;
}

size_t Qel_hash_dict_num_keys(const Qel_hash_dict_t *dict) noexcept
{
    return dict == nullptr ? 0 : dict->entries.size();
}

void Qel_hash_dict_merge(Qel_hash_dict_t **dest, Qel_hash_dict_t *src) noexcept
{
    if (dest == nullptr || src == nullptr || *dest == src)
        return;
    if (*dest == nullptr) {
        *dest = src;
        return;
    }

    const std::unique_ptr<Qel_hash_dict> source(src);
    for (dict_entry *const each : source->in_order())
        (*dest)->take(source->entries.take(*each));
}

size_t Qel_hash_dict_enumerate(const Qel_hash_dict_t *dict, Qel_hash_dict_enum_t **walk) noexcept
{
    if (walk == nullptr)
        return Qel_hash_dict_num_keys(dict);
    *walk = nullptr;
    if (dict == nullptr)
        return 0;

    auto started = std::make_unique<Qel_hash_dict_enum>();
    started->pairs = dict->in_order();
    *walk = started.release();
    return (*walk)->pairs.size();
}

bool Qel_hash_dict_enumerate_next(const Qel_hash_dict_t * /*the walk knows it*/,
                                  Qel_hash_dict_enum_t *walk, const char **key,
                                  const char **val) noexcept
{
    if (walk == nullptr || walk->next == walk->pairs.size())
        return false;

    const dict_entry &pair = *walk->pairs[walk->next++];
    if (key != nullptr)
        *key = pair.key().data();
    if (val != nullptr)
        *val = pair.val();
    return true;
}

void Qel_hash_dict_enumerate_free(Qel_hash_dict_enum_t *walk) noexcept
{
    const std::unique_ptr<Qel_hash_dict_enum> ended(walk);
}

namespace
{

struct pair_marks {
    char pair_sep;
    char kv_sep;
    char quote;
    char escape;
};

bool take_byte(std::string_view &rest, char wanted)
{
    if (!rest.starts_with(wanted))
        return false;
    rest.remove_prefix(1);
    return true;
}

// Takes the text between the quote at the start of rest and the one that closes it.
std::optional<std::string> take_quoted(std::string_view &rest, const pair_marks &marks)
{
    std::string taken;
    for (std::size_t i = 1; i < rest.size(); ++i) {
        const bool quote_follows = i + 1 < rest.size() && rest[i + 1] == marks.quote;
        if (rest[i] == marks.escape && quote_follows) {
            ++i;
        } else if (rest[i] == marks.quote) {
            rest.remove_prefix(i + 1);
            return taken;
        }
        taken.push_back(rest[i]);
    }
    return std::nullopt;
}

// Takes a key or a value and leaves rest at the byte after it; unquoted, it ends before the first
// of the separators.
std::optional<std::string> take_part(std::string_view &rest, std::string_view separators,
                                     const pair_marks &marks)
{
    if (rest.starts_with(marks.quote))
        return take_quoted(rest, marks);

    std::string taken(rest.substr(0, rest.find_first_of(separators)));
    rest.remove_prefix(taken.size());
    return taken;
}

bool take_pair(std::string_view &rest, const pair_marks &marks, Qel_hash_dict &dict)
{
    const std::array<char, 2> separators{marks.pair_sep, marks.kv_sep};
    const auto key = take_part(rest, {separators.data(), 2}, marks);
    if (!key || !take_byte(rest, marks.kv_sep))
        return false;

    const auto val = take_part(rest, {separators.data(), 1}, marks);
    const bool ended = rest.empty() || rest.front() == marks.pair_sep;
    if (!val || !ended)
        return false;

    dict.store(*key, *val);
    return true;
}

} // namespace

Qel_hash_dict_t *Qel_hash_dict_deserialize(const char *text, size_t len, char pair_sep, char kv_sep,
                                           char quote, char escape, uint32_t flags) noexcept
{
    if (text == nullptr)
        return nullptr;

    const pair_marks marks{pair_sep, kv_sep, quote, escape};
    auto dict = std::make_unique<Qel_hash_dict>(flags);
    std::string_view rest(text, ::strnlen(text, len));
    while (!rest.empty()) {
        const bool between_pairs = take_byte(rest, pair_sep);
        if (!between_pairs && !take_pair(rest, marks, *dict))
            return nullptr;
    }
    return dict.release();
}

void Qel_hash_dict_destroy(Qel_hash_dict_t *dict) noexcept
{
    const std::unique_ptr<Qel_hash_dict> ended(dict);
}
