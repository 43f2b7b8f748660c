// Hashes of keys that come from records, and so from anyone.
#ifndef QELSTDLIB_KEY_HASH_H
#define QELSTDLIB_KEY_HASH_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <unistd.h>

namespace qel
{

// Two numbers that nobody outside the process knows, so that nobody can write a record whose keys
// all fall into one place of a table and make it slow.
struct hash_salt {
    std::uint64_t start;
    std::uint64_t factor; // odd, so that no two words have the same product

    static hash_salt random()
    {
        // Stand where the system has no random bytes to give.
        std::uint64_t words[]{0x243F6A8885A308D3U, 0x9E3779B97F4A7C15U};
        static_cast<void>(::getentropy(words, sizeof words));
        return {words[0], words[1] | 1U};
    }
};

// Takes eight bytes at a time: keys are short and looked up often.
class key_hasher
{
  public:
    explicit constexpr key_hasher(hash_salt salt) : salt_(salt) {}

    std::size_t operator()(std::string_view key) const
    {
        std::uint64_t hash = salt_.start + key.size();
        if (key.size() < sizeof(std::uint64_t))
            return finished(hash ^ short_word(key));

        // The last word takes in again what of the one before it is needed to fill it.
        const std::size_t last = key.size() - sizeof(std::uint64_t);
        for (std::size_t at = 0; at < last; at += sizeof(std::uint64_t))
            hash = mixed(hash ^ read<std::uint64_t>(key.data() + at));
        return finished(hash ^ read<std::uint64_t>(key.data() + last));
    }

  private:
    template <typename Int>
    static Int read(const char *bytes)
    {
        Int word = 0;
        std::memcpy(&word, bytes, sizeof word);
        return word;
    }

    // Fewer than eight bytes as a number.
    static std::uint64_t short_word(std::string_view key)
    {
        constexpr std::size_t half = sizeof(std::uint32_t);
        if (key.size() >= half) {
            const auto back = read<std::uint32_t>(key.data() + key.size() - half);
            return std::uint64_t{read<std::uint32_t>(key.data())} << 32U | back;
        }
        std::uint64_t word = 0;
        for (const char byte : key)
            word = word << 8U | static_cast<unsigned char>(byte);
        return word;
    }

    [[nodiscard]] std::size_t finished(std::uint64_t hash) const
    {
        return static_cast<std::size_t>(folded(mixed(mixed(hash))));
    }

    static std::uint64_t folded(std::uint64_t hash) { return hash ^ hash >> 32U; }

    // Lets every bit have a say in every other, the second time it is called. A product alone
    // carries upwards only, so that keys which differ in their last bytes would share the lowest
    // bits, which choose the slot.
    [[nodiscard]] std::uint64_t mixed(std::uint64_t hash) const
    {
        return folded(hash) * salt_.factor;
    }

    hash_salt salt_;
};

// The one of this process, salted when it is first asked for.
inline const key_hasher &own_hasher()
{
    static const key_hasher hasher{hash_salt::random()};
    return hasher;
}

} // namespace qel

#endif
