// The hashes that spread a record's keys over a table.
#include "colliding_keys.hpp"
#include "key_hash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include <sys/random.h>
#include <sys/wait.h>
#include <unistd.h>

static bool random_numbers_fail = false;

// Stands before the system's.
int getentropy(void *buffer, size_t length)
{
    if (random_numbers_fail)
        return -1;
    return ::getrandom(buffer, length, 0) == static_cast<ssize_t>(length) ? 0 : -1;
}

namespace
{

// The numbers published with the algorithm for the key 00 01 .. 0F and the texts "", 00, 00 01 and
// so on: those of its authors for two and four rounds, those of Rust's library for one and three.
// That of 15 bytes is the example in the publication.
constexpr struct {
    std::uint64_t two_four;
    std::uint64_t one_three;
} published[]{
    {0x726FDB47DD0E0E31, 0xABAC0158050FC4DC}, {0x74F839C593DC67FD, 0xC9F49BF37D57CA93},
    {0x0D6C8009D9A94F5A, 0x82CB9B024DC7D44D}, {0x85676696D7FB7E2D, 0x8BF80AB8E7DDF7FB},
    {0xCF2794E0277187B7, 0xCF75576088D38328}, {0x18765564CD99A68D, 0xDEF9D52F49533B67},
    {0xCBC9466E58FEE3CE, 0xC50D2B50C59F22A7}, {0xAB0200F58B01D137, 0xD3927D989BB11140},
    {0x93F5F5799A932462, 0x369095118D299A8E}, {0x9E0082DF0BA9E4B0, 0x25A48EB36C063DE4},
    {0x7A5DBBC594DDB9F3, 0x79DE85EE92FF097F}, {0xF4B32F46226BADA7, 0x70C118C1F94DC352},
    {0x751E8FBC860EE5FB, 0x78A384B157B4D9A2}, {0x14EA5627C0843D90, 0x306F760C1229FFA7},
    {0xF723CA908E7AF2EE, 0x605AA111C0F95D34}, {0xA129CA6149BE45E5, 0xD320D86D2A519956},
    {0x3F2ACC7F57C29BDB, 0xCC4FDD1A7D908B66}, {0x699AE9F52CBE4794, 0x9CF2689063DBD80C},
};
constexpr qel::hash_salt published_salt{0x0706050403020100, 0x0F0E0D0C0B0A0908};

} // namespace

TEST(KeyHash, IsThePublishedOne)
{
    std::string text;
    for (const auto &[two_four, one_three] : published) {
        EXPECT_EQ((qel::sip_hasher<2, 4>{published_salt}(text)), two_four) << text.size();
        EXPECT_EQ(qel::key_hasher{published_salt}(text), one_three) << text.size();
        text.push_back(static_cast<char>(text.size()));
    }
}

// Every byte in every place of a word, and the texts around it.
TEST(KeyHash, LowersCapitalsOnly)
{
    const qel::key_hasher hasher{published_salt};
    for (std::size_t len = 1; len <= 17; ++len) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string text(len, 'Q');
            text[len / 2] = static_cast<char>(byte);
            std::string lower(len, 'q');
            lower[len / 2] =
                byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : text[len / 2];
            EXPECT_EQ(hasher.of_lower(text), hasher(lower)) << byte << " in " << len;
        }
    }
}

TEST(KeyHash, KeysMadeToCollideDoNot)
{
    for (const auto &keys : {test::colliding_keys(13), test::colliding_ascii_keys(12)}) {
        for (const qel::hash_salt salt : {published_salt, qel::hash_salt::random()}) {
            std::vector<std::uint64_t> hashes;
            for (const std::string &key : keys)
                hashes.push_back(qel::key_hasher{salt}(key));
            std::ranges::sort(hashes);
            EXPECT_EQ(std::ranges::adjacent_find(hashes), hashes.end()) << keys.back();
        }
    }
}

TEST(KeyHash, SaltsAreDrawnAnew)
{
    const auto expect_others = [](qel::hash_salt one, qel::hash_salt other) {
        EXPECT_NE(one.first, other.first);
        EXPECT_NE(one.second, other.second);
        EXPECT_NE(one.first, one.second);
    };
    expect_others(qel::hash_salt::random(), qel::hash_salt::random());
    random_numbers_fail = true;
    const qel::hash_salt known = qel::hash_salt::random();
    expect_others(known, qel::hash_salt::random());
    EXPECT_NE(known.first, 0U);
    random_numbers_fail = false;
}

TEST(KeyHash, EveryProcessHasItsOwn)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        const std::uint64_t hash = qel::own_hasher()("key");
        _exit(write(ends[1], &hash, sizeof hash) == sizeof hash ? 0 : 1);
    }
    close(ends[1]);
    std::uint64_t other = 0;
    EXPECT_EQ(read(ends[0], &other, sizeof other), static_cast<ssize_t>(sizeof other));
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
    EXPECT_NE(qel::own_hasher()("key"), other);
}
