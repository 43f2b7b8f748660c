#include "key_hash.h"
#include "qelstdlib_int.h"

#include <array>
#include <bit>
#include <list>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace
{

struct entry {
    entry(std::string_view its_key, std::string_view its_val) : key(its_key), val(its_val) {}

    std::string key;
    std::string val;
    std::size_t hash = 0;
    std::list<entry>::iterator place{}; // its own
};

unsigned char lower_byte(char chr)
{
    return static_cast<unsigned char>(qel::to_lower(chr));
}

// The three questions that a dictionary asks about keys; ignore_case is for all of them alike. What
// a look-up in a record does is inline.

class key_hash
{
  public:
    explicit key_hash(bool ignore_case) : ignore_case_(ignore_case) {}

    std::size_t operator()(std::string_view key) const
    {
        return is_quick_ ? static_cast<std::size_t>(quick(key)) : unforeseeable(key);
    }

    // Whether hashes are others from now on, because there are so many keys.
    bool expect(std::size_t num_keys)
    {
        return num_keys > few_keys && std::exchange(is_quick_, false);
    }

  private:
    // Among so few keys a look-up stays cheap even where all of them share a hash.
    static constexpr std::size_t few_keys = 128;

    // Of the first and the last eight bytes, in any case, and the length.
    static std::uint64_t quick(std::string_view key)
    {
        constexpr std::uint64_t odd = 0x9E3779B97F4A7C15U; // 2^64 over the golden ratio
        constexpr std::uint64_t any_case = 0x2020202020202020U;
        constexpr std::size_t size = sizeof any_case;
        std::uint64_t first = 0;
        std::uint64_t last = 0;
        if (key.size() < size) {
            first = qel::read_few(key);
        } else {
            first = qel::read_int<std::uint64_t>(key.data());
            last = qel::read_int<std::uint64_t>(key.data() + key.size() - size);
        }
        const std::uint64_t hash =
            ((first | any_case) * odd ^ std::rotl((last | any_case) + key.size(), 32)) * odd;
        return hash ^ hash >> 32U; // the lower bits choose the slot
    }

    [[nodiscard, gnu::noinline]] std::size_t unforeseeable(std::string_view key) const
    {
        const qel::key_hasher &hasher = qel::own_hasher();
        return static_cast<std::size_t>(ignore_case_ ? hasher.of_lower(key) : hasher(key));
    }

    bool ignore_case_;
    bool is_quick_ = true;
};

struct key_equal {
    bool ignore_case;

    bool operator()(std::string_view a, std::string_view b) const
    {
        return a == b || (ignore_case && are_equal_lowered(a, b));
    }

  private:
    [[gnu::noinline]] static bool are_equal_lowered(std::string_view a, std::string_view b)
    {
        return std::ranges::equal(a, b, {}, lower_byte, lower_byte);
    }
};

struct key_less {
    bool ignore_case;

    bool operator()(std::string_view a, std::string_view b) const
    {
        if (ignore_case)
            return std::ranges::lexicographical_compare(a, b, {}, lower_byte, lower_byte);
        return a < b; // compares bytes as unsigned
    }
};

// Finds entries by key: slots as many as a power of two, each with one entry or none. An entry
// stands in the slot that its hash names or, where that is taken, in one of the next, with no empty
// slot between.
class key_index
{
  public:
    explicit key_index(key_equal equal) : equal_(equal), slots_(fewest_slots) {}

    // Follows a creator's hints within reason: they come from callers and may be anything.
    void make_room(std::size_t num_keys, std::size_t fill_pct)
    {
        constexpr std::size_t most_keys = 4096;
        fill_pct_ = std::clamp<std::size_t>(fill_pct, 10, 90);
        const std::size_t wanted = std::min(num_keys, most_keys) * 100 / fill_pct_ + 1;
        if (wanted > slots_.size())
            resize(std::bit_ceil(wanted));
    }

    [[nodiscard]] entry *find(std::string_view key, std::size_t hash) const
    {
        std::size_t at = first_slot(hash);
        while (slots_[at] != nullptr && !(slots_[at]->hash == hash && equal_(slots_[at]->key, key)))
            at = next_slot(at);
        return slots_[at];
    }

    void add(entry &added)
    {
        ++used_;
        if (used_ * 100 > slots_.size() * fill_pct_)
            resize(2 * slots_.size());
        put(added);
    }

    void clear()
    {
        used_ = 0;
        std::ranges::fill(slots_, nullptr);
    }

    // Moves the entries behind it up, so that none is cut off from its slot.
    void remove(const entry &removed)
    {
        --used_;
        std::size_t at = first_slot(removed.hash);
        while (slots_[at] != &removed)
            at = next_slot(at);
        slots_[at] = nullptr;
        for (at = next_slot(at); slots_[at] != nullptr; at = next_slot(at))
            put(*std::exchange(slots_[at], nullptr));
    }

  private:
    static constexpr std::size_t fewest_slots = 16;

    [[nodiscard]] std::size_t first_slot(std::size_t hash) const
    {
        return hash & (slots_.size() - 1);
    }
    [[nodiscard]] std::size_t next_slot(std::size_t slot) const { return first_slot(slot + 1); }

    void put(entry &placed)
    {
        std::size_t at = first_slot(placed.hash);
        while (slots_[at] != nullptr)
            at = next_slot(at);
        slots_[at] = &placed;
    }

    void resize(std::size_t count)
    {
        const std::vector<entry *> old = std::exchange(slots_, std::vector<entry *>(count));
        for (entry *const moved : old) {
            if (moved != nullptr)
                put(*moved);
        }
    }

    key_equal equal_;
    std::size_t fill_pct_ = 75;
    std::size_t used_ = 0;
    std::vector<entry *> slots_; // never all in use
};

} // namespace

// Entries stay where they are, in insertion order, so borrowed texts outlive other insertions.
struct Qel_hash_dict {
    explicit Qel_hash_dict(std::uint32_t flags)
        : ignore_case((flags & QEL_HASH_DICT_CASECMP) != 0), sorted(has_sorted_order(flags)),
          hash(ignore_case), index(key_equal{ignore_case})
    {
    }

    static bool has_sorted_order(std::uint32_t flags)
    {
        constexpr std::uint32_t both = QEL_HASH_DICT_KEYS_ORDERED | QEL_HASH_DICT_KEYS_SORTASC;
        return (flags & both) == both;
    }

    [[nodiscard]] entry *find(std::string_view key) const { return index.find(key, hash(key)); }

    void store(std::string_view key, std::string_view val)
    {
        if (entry *const found = find(key)) {
            found->val.assign(val);
            return;
        }
        entries.emplace_back(key, val);
        add_last_to_index();
    }

    // Takes the first entry of another dictionary's list, without copying it.
    void take_first(std::list<entry> &source)
    {
        const auto first = source.begin();
        if (entry *const found = find(first->key)) {
            found->val = std::move(first->val);
            source.erase(first);
            return;
        }
        entries.splice(entries.end(), source, first);
        add_last_to_index();
    }

    void remove(const entry &removed)
    {
        index.remove(removed);
        entries.erase(removed.place);
    }

    bool ignore_case;
    bool sorted;
    std::list<entry> entries;
    key_hash hash;
    key_index index;

  private:
    void add_last_to_index()
    {
        entry &last = entries.back();
        last.place = std::prev(entries.end());
        if (hash.expect(entries.size()))
            return index_anew();
        last.hash = hash(last.key);
        index.add(last);
    }

    void index_anew()
    {
        index.clear();
        for (entry &each : entries) {
            each.hash = hash(each.key);
            index.add(each);
        }
    }
};

struct Qel_hash_dict_enum {
    std::vector<const entry *> pairs;
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
    const entry *const found = dict->find(key);
    return found == nullptr ? nullptr : found->val.c_str();
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
    const entry *const found = dict->find(key);
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
    if (source->sorted)
        source->entries.sort([less = key_less{source->ignore_case}](
                                 const entry &a, const entry &b) { return less(a.key, b.key); });
    while (!source->entries.empty())
        (*dest)->take_first(source->entries);
}

size_t Qel_hash_dict_enumerate(const Qel_hash_dict_t *dict, Qel_hash_dict_enum_t **walk) noexcept
{
    if (walk == nullptr)
        return Qel_hash_dict_num_keys(dict);
    *walk = nullptr;
    if (dict == nullptr)
        return 0;

    auto started = std::make_unique<Qel_hash_dict_enum>();
    started->pairs.reserve(dict->entries.size());
    for (const entry &pair : dict->entries)
        started->pairs.push_back(&pair);
    if (dict->sorted)
        std::ranges::sort(started->pairs, key_less{dict->ignore_case}, &entry::key);
    *walk = started.release();
    return (*walk)->pairs.size();
}

bool Qel_hash_dict_enumerate_next(const Qel_hash_dict_t * /*the walk knows it*/,
                                  Qel_hash_dict_enum_t *walk, const char **key,
                                  const char **val) noexcept
{
    if (walk == nullptr || walk->next == walk->pairs.size())
        return false;

    const entry &pair = *walk->pairs[walk->next++];
    if (key != nullptr)
        *key = pair.key.c_str();
    if (val != nullptr)
        *val = pair.val.c_str();
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
