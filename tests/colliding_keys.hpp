// Keys that somebody chose to make a dictionary slow.
#ifndef QELRCPT_COLLIDING_KEYS_HPP
#define QELRCPT_COLLIDING_KEYS_HPP

#include <cstddef>
#include <string>
#include <vector>

namespace test
{

// Keys that met in one hash, whatever its salt, when a hash was words folded and multiplied: each
// key turns bits of some of its words that are turned back in the next. There are as many as ways
// to choose among all words but the last of the given number.
inline std::vector<std::string> colliding_keys(std::size_t words)
{
    std::vector<std::string> keys;
    for (std::size_t choices = 0; choices < std::size_t{1} << (words - 1); ++choices) {
        std::string key(8 * words, 'k');
        const auto turn = [&](std::size_t byte) {
            key[byte] = static_cast<char>(key[byte] ^ 0x80);
        };
        for (std::size_t word = 0; word + 1 < words; ++word) {
            if ((choices >> word & 1U) == 0)
                continue;
            turn(8 * word + 3);
            turn(8 * word + 7);
            turn(8 * word + 15);
        }
        keys.push_back(key);
    }
    return keys;
}

// The same in ASCII, which chooses among pairs of words.
inline std::vector<std::string> colliding_ascii_keys(std::size_t pairs)
{
    std::vector<std::string> keys;
    for (std::size_t choices = 0; choices < std::size_t{1} << pairs; ++choices) {
        std::string key(16 * pairs, '5');
        for (std::size_t pair = 0; pair < pairs; ++pair) {
            for (const std::size_t byte : {3U, 7U, 15U}) {
                if ((choices >> pair & 1U) != 0)
                    key[16 * pair + byte] = 'u'; // differs from '5' in 0x40
            }
        }
        keys.push_back(key);
    }
    return keys;
}

// Short ones that are alike but for their middle, at which a quick hash would not look.
inline std::vector<std::string> keys_with_same_ends(std::size_t count)
{
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < count; ++i)
        keys.push_back("beginnin" + std::to_string(1'000'000'000'000'000 + i) + "theirend");
    return keys;
}

} // namespace test

#endif
