// The helpers of the tests of JSON and XML trees.
#ifndef TEST_TREES_HPP
#define TEST_TREES_HPP

#include <qelstdlib.hpp>

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace test
{

inline constexpr uint32_t strict = QEL_JSON_READER_NONE;
inline constexpr uint32_t repair = QEL_JSON_READER_REPLACE_BAD_CHARS;

inline qel::json read(std::string_view text, uint32_t flags = repair)
{
    return qel::json(
        Qel_json_read(text.data(), text.size(), flags, nullptr, nullptr, nullptr, nullptr));
}

inline std::string compact(const Qel_json_node_t *node)
{
    size_t len = 0;
    const qel::text text(Qel_json_write(node, QEL_JSON_WRITER_NONE, &len));
    EXPECT_EQ(len, qel::view(text).size());
    return std::string(qel::view(text));
}

inline std::string write(const Qel_xml_node_t *node,
                         uint32_t flags = QEL_XML_WRITER_PRETTYPRINT_SPACE)
{
    size_t len = 0;
    const qel::text text(Qel_xml_write(node, flags, &len));
    EXPECT_EQ(len, qel::view(text).size());
    return std::string(qel::view(text));
}

inline std::string repeat(std::string_view text, size_t count)
{
    std::string out;
    while (count-- > 0)
        out += text;
    return out;
}

} // namespace test

#endif
