// The keys of a dictionary: how they are hashed, compared and found.
#ifndef QELSTDLIB_DICT_INDEX_H
#define QELSTDLIB_DICT_INDEX_H

#include "dict_entry.h"
#include "key_hash.h"
#include "qelstdlib_int.h"

#include <bit>
#include <utility>
#include <vector>

namespace qel
{

inline unsigned char lower_byte(char chr)
{
    return static_cast<unsigned char>(to_lower(chr));
}

// The three questions that a dictionary asks about keys; ignore_case is for all of them alike. What
// a look-up in a record does is inline.

class dict_hash
{
  public:
    explicit dict_hash(bool ignore_case) : ignore_case_(ignore_case) {}

    std::size_t operator()(std::string_view key) const
    {
        const bool is_quick = is_quick_ && key.size() <= longest_quick;
        return is_quick ? static_cast<std::size_t>(quick(key)) : unforeseeable(key);
    }

    // Whether hashes are others from now on, because there are so many keys.
    bool expect(std::size_t num_keys)
    {
        return num_keys > few_keys && std::exchange(is_quick_, false);
    }

  private:
    // Among so few keys, and so short ones, a look-up stays cheap even where all of them share a
    // hash.
    static constexpr std::size_t few_keys = 128;
    static constexpr std::size_t longest_quick = 32;

    // Of the first and the last eight bytes, in any case, and the length.
    static std::uint64_t quick(std::string_view key)
    {
        constexpr std::uint64_t odd = 0x9E3779B97F4A7C15U; // 2^64 over the golden ratio
        constexpr std::uint64_t any_case = 0x2020202020202020U;
        constexpr std::size_t size = sizeof any_case;
        std::uint64_t first = 0;
        std::uint64_t last = 0;
        if (key.size() < size) {
            first = read_few(key);
        } else {
            first = read_int<std::uint64_t>(key.data());
            last = read_int<std::uint64_t>(key.data() + key.size() - size);
        }
        const std::uint64_t hash =
            ((first | any_case) * odd ^ std::rotl((last | any_case) + key.size(), 32)) * odd;
        return hash ^ hash >> 32U; // the lower bits choose the slot
    }

    [[nodiscard, gnu::noinline]] std::size_t unforeseeable(std::string_view key) const
    {
        const key_hasher &hasher = own_hasher();
        return static_cast<std::size_t>(ignore_case_ ? hasher.of_lower(key) : hasher(key));
    }

    bool ignore_case_;
    bool is_quick_ = true;
};

struct dict_equal {
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

struct dict_less {
    bool ignore_case;

    bool operator()(std::string_view a, std::string_view b) const
    {
        if (ignore_case)
            return std::ranges::lexicographical_compare(a, b, {}, lower_byte, lower_byte);
        return a < b; // compares bytes as unsigned
    }
};

// Finds entries by key: slots as many as a power of two, each with one entry or none. An
// dict_entry stands in the slot that its hash names or, where that is taken, in one of the next,
// with no empty slot between.
class dict_index
{
  public:
    explicit dict_index(dict_equal equal) : equal_(equal), slots_(fewest_slots) {}

    // Follows a creator's hints within reason: they come from callers and may be anything.
    void make_room(std::size_t num_keys, std::size_t fill_pct)
    {
        constexpr std::size_t most_keys = 4096;
        fill_pct_ = std::clamp<std::size_t>(fill_pct, 10, 50);
        const std::size_t wanted = std::min(num_keys, most_keys) * 100 / fill_pct_ + 1;
        if (wanted > slots_.size())
            resize(std::bit_ceil(wanted));
    }

    [[nodiscard]] dict_entry *find(std::string_view key, std::size_t hash) const
    {
        std::size_t at = first_slot(hash);
        while (slots_[at] != nullptr &&
               !(slots_[at]->hash == hash && equal_(slots_[at]->key(), key)))
            at = next_slot(at);
        return slots_[at];
    }

    void add(dict_entry &added)
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
    void remove(const dict_entry &removed)
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

    void put(dict_entry &placed)
    {
        std::size_t at = first_slot(placed.hash);
        while (slots_[at] != nullptr)
            at = next_slot(at);
        slots_[at] = &placed;
    }

    void resize(std::size_t count)
    {
        const std::vector<dict_entry *> old =
            std::exchange(slots_, std::vector<dict_entry *>(count));
        for (dict_entry *const moved : old) {
            if (moved != nullptr)
                put(*moved);
        }
    }

    dict_equal equal_;
    std::size_t fill_pct_ = 50;
    std::size_t used_ = 0;
    std::vector<dict_entry *> slots_; // never all in use
};

} // namespace qel

#endif
