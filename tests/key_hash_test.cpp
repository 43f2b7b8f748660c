// The hashes that spread a record's keys over a table.
#include "key_hash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace
{

constexpr qel::hash_salt one_salt{0x0123456789ABCDEFU, 0xD1342543DE82EF95U};
constexpr qel::hash_salt other_salt{0xFEDCBA9876543210U, 0x5851F42D4C957F2DU};

std::size_t slot_of(const std::string &key, qel::hash_salt salt, std::size_t slots)
{
    return qel::key_hasher{salt}(key) % slots;
}

// How many of the keys stand in the slot that most of them share.
std::size_t fullest_slot(const std::vector<std::string> &keys, qel::hash_salt salt,
                         std::size_t slots)
{
    std::vector<std::size_t> used(slots);
    for (const std::string &key : keys)
        ++used[slot_of(key, salt, slots)];
    return *std::ranges::max_element(used);
}

} // namespace

// Of keys thrown at random into twice as many slots, more than nine would meet in one of them less
// than once in a hundred thousand times.
constexpr std::size_t many = 9;

TEST(KeyHash, SpreadsKeysThatDifferInOneByte)
{
    for (std::size_t len = 1; len <= 25; ++len) {
        for (std::size_t at = 0; at < len; ++at) {
            std::vector<std::string> keys(255, std::string(len, 'k'));
            for (std::size_t i = 0; i < keys.size(); ++i)
                keys[i][at] = static_cast<char>(i + 1);
            EXPECT_LE(fullest_slot(keys, one_salt, 512), many) << "byte " << at << " of " << len;
        }
    }
}

TEST(KeyHash, SpreadsNumberedKeys)
{
    for (const std::string name : {"", "key", "item", "a_field_of_", "the_custom_field"}) {
        std::vector<std::string> keys;
        for (int i = 1000; i < 5096; ++i)
            keys.push_back(name + std::to_string(i));
        EXPECT_LE(fullest_slot(keys, one_salt, 8192), many) << name;
    }
}

// Who knows the salt of one process can make keys that share a slot there, and nowhere else.
TEST(KeyHash, KeysMadeForOneSaltSpreadUnderAnother)
{
    constexpr std::size_t slots = 1024;
    std::vector<std::string> keys;
    for (int i = 0; keys.size() < slots / 2; ++i) {
        const std::string key = "custom_field_" + std::to_string(i);
        if (slot_of(key, one_salt, slots) == 0)
            keys.push_back(key);
    }
    EXPECT_EQ(fullest_slot(keys, one_salt, slots), keys.size());
    EXPECT_LE(fullest_slot(keys, other_salt, slots), many);
}

TEST(KeyHash, SaltsAreDrawnAnew)
{
    const qel::hash_salt first = qel::hash_salt::random();
    const qel::hash_salt second = qel::hash_salt::random();
    EXPECT_NE(first.start, second.start);
    EXPECT_NE(first.factor, second.factor);
    EXPECT_EQ(first.factor % 2, 1U);
}
