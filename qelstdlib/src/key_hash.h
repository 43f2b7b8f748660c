// Hashes of keys that come from records, and so from anyone.
#ifndef QELSTDLIB_KEY_HASH_H
#define QELSTDLIB_KEY_HASH_H

#include <array>
#include <bit>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string_view>
#include <unistd.h>

namespace qel
{

// The secret of a hash: 128 bits that nobody outside the process knows.
struct hash_salt {
    std::uint64_t first;
    std::uint64_t second;

    static hash_salt random();
    static hash_salt of_process();
};

// The first byte has the lowest place on every machine.
template <typename Int>
Int read_int(const char *bytes)
{
    Int value = 0;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&value, bytes, sizeof value);
    } else {
        for (std::size_t i = sizeof value; i > 0; --i)
            value = static_cast<Int>(value << 8U) | static_cast<unsigned char>(bytes[i - 1]);
    }
    return value;
}

// Up to seven bytes of a text that has no more, the first of them in the lowest place.
inline std::uint64_t read_few(std::string_view str)
{
    const char *const end = str.data() + str.size();
    if (str.empty())
        return 0;
    // What is read twice stands in the same place both times.
    constexpr std::size_t half = sizeof(std::uint32_t);
    if (str.size() >= half)
        return read_int<std::uint32_t>(str.data()) |
               std::uint64_t{read_int<std::uint32_t>(end - half)} << (8 * (str.size() - half));
    const auto byte = [&](std::size_t at) {
        return std::uint64_t{static_cast<unsigned char>(str[at])} << (8 * at);
    };
    return byte(0) | byte(str.size() / 2) | byte(str.size() - 1);
}

// ASCII capitals in lower case, eight bytes at once: adding to the lower seven bits of each carries
// into its top bit for those from 'A' on, and for those after 'Z'.
inline std::uint64_t lower_bytes(std::uint64_t bytes)
{
    constexpr std::uint64_t each = 0x0101010101010101U;
    constexpr std::uint64_t top = 0x80 * each;
    const std::uint64_t low = bytes & ~top;
    const std::uint64_t from_a = low + (0x80 - 'A') * each;
    const std::uint64_t after_z = low + (0x7F - 'Z') * each;
    const std::uint64_t capitals = (from_a ^ after_z) & ~bytes & top;
    return bytes | capitals >> 2U;
}

// SipHash by Aumasson and Bernstein ("SipHash: a fast short-input PRF", 2012) with the given rounds
// for each word and at the end. Without its salt nobody can make texts that share a hash, or a part
// of one, other than by chance.
template <int word_rounds, int end_rounds>
class sip_hasher
{
  public:
    explicit constexpr sip_hasher(hash_salt salt)
        : start_{salt.first ^ 0x736F6D6570736575U, salt.second ^ 0x646F72616E646F6DU,
                 salt.first ^ 0x6C7967656E657261U, salt.second ^ 0x7465646279746573U}
    {
    }

    std::uint64_t operator()(std::string_view key) const { return hashed(key, std::identity()); }

    // The hash of the key with its ASCII capitals in lower case.
    [[nodiscard]] std::uint64_t of_lower(std::string_view key) const
    {
        return hashed(key, lower_bytes);
    }

  private:
    using word = std::uint64_t;

    struct state {
        word a, b, c, d;

        void round()
        {
            a += b;
            c += d;
            b = std::rotl(b, 13) ^ a;
            d = std::rotl(d, 16) ^ c;
            a = std::rotl(a, 32);
            c += b;
            a += d;
            b = std::rotl(b, 17) ^ c;
            d = std::rotl(d, 21) ^ a;
            c = std::rotl(c, 32);
        }

        void take(word taken)
        {
            d ^= taken;
            for (int i = 0; i < word_rounds; ++i)
                round();
            a ^= taken;
        }

        word finish()
        {
            c ^= 0xFFU;
            for (int i = 0; i < end_rounds; ++i)
                round();
            return a ^ b ^ c ^ d;
        }
    };

    template <typename Change>
    std::uint64_t hashed(std::string_view key, Change change) const
    {
        state taking = start_;
        const std::size_t whole = key.size() / sizeof(word) * sizeof(word);
        for (std::size_t at = 0; at < whole; at += sizeof(word))
            taking.take(change(read_int<word>(key.data() + at)));
        taking.take(change(rest(key)) | static_cast<word>(key.size()) << 56U);
        return taking.finish();
    }

    // Up to seven bytes after the last whole word.
    static word rest(std::string_view key)
    {
        const std::size_t count = key.size() % sizeof(word);
        if (count == 0 || key.size() < sizeof(word))
            return read_few(key.substr(0, count));
        return read_int<word>(key.data() + key.size() - sizeof(word)) >>
               (8 * (sizeof(word) - count));
    }

    state start_;
};

// One round a word and three at the end are what hash tables use.
using key_hasher = sip_hasher<1, 3>;

inline hash_salt hash_salt::random()
{
    hash_salt drawn{};
    return ::getentropy(&drawn, sizeof drawn) == 0 ? drawn : of_process();
}

// Stands in where the system has no random numbers to give: where this process lies in memory, its
// number and the time, which are hard to guess together from outside, though not as hard.
inline hash_salt hash_salt::of_process()
{
    const auto place = [](const void *address) {
        return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(address));
    };
    const auto count = [](auto time) {
        return static_cast<std::uint64_t>(time.time_since_epoch().count());
    };
    std::array<std::uint64_t, 6> known{};
    known = {place(&known), // of the stack
             place(reinterpret_cast<const void *>(&hash_salt::of_process)),
             place(reinterpret_cast<const void *>(&::getentropy)),
             count(std::chrono::system_clock::now()),
             count(std::chrono::steady_clock::now()),
#ifndef __wasi__ // has no processes
             static_cast<std::uint64_t>(::getpid())
#endif
    };
    const std::string_view bytes(reinterpret_cast<const char *>(known.data()), sizeof known);
    return {sip_hasher<2, 4>({0, 0})(bytes), sip_hasher<2, 4>({0, 1})(bytes)};
}

// The one of this process, salted when it is first asked for.
inline const key_hasher &own_hasher()
{
    static const key_hasher hasher{hash_salt::random()};
    return hasher;
}

} // namespace qel

#endif
