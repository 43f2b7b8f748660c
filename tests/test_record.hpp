// Records to hand to the receipt library, and owners of what it hands back.
#ifndef TEST_RECORD_HPP
#define TEST_RECORD_HPP

#include <qelstdlib.hpp>

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace test
{

// A transaction record; stands wherever the library takes one.
class record
{
  public:
    struct field {
        const char *key;
        const char *value;
    };

    record() = default;

    // record{{"code", "auth"}, {"amount", "1.00"}}
    record(std::initializer_list<field> fields)
    {
        for (const field &one : fields)
            Qel_hash_dict_insert(dict_.get(), one.key, one.value);
    }

    // record("code:auth,amount:1.00")
    explicit record(std::string_view fields) { set(fields); }

    // Adds the fields, in place of those that the record has under the same keys.
    record &set(std::string_view fields)
    {
        Qel_hash_dict_t *added =
            Qel_hash_dict_deserialize(fields.data(), fields.size(), ',', ':', '"', '"', 0);
        EXPECT_TRUE(fields.empty() || added != nullptr) << fields;
        Qel_hash_dict_t *dict = dict_.release();
        Qel_hash_dict_merge(&dict, added);
        dict_.reset(dict);
        return *this;
    }

    operator Qel_hash_dict_t *() const { return dict_.get(); }

  private:
    qel::dict dict_{Qel_hash_dict_create(16, 75, QEL_HASH_DICT_NONE)};
};

// What a call gave: a text, or nothing.
using result = std::optional<std::string>;
inline constexpr std::nullopt_t absent = std::nullopt;

inline result borrowed(const char *text)
{
    return text == nullptr ? absent : result(text);
}

// Releases the new text.
inline result taken(char *new_text)
{
    return borrowed(qel::text(new_text).get());
}

} // namespace test

#endif
