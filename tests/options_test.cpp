// The table of options against what is written of them elsewhere.
#include "options.h"
#include "utility.hpp"

#include <regex>
#include <set>

namespace
{

// The manual page as it reads: without the marks of its fonts.
std::string manual()
{
    std::string text = read_file(QELRCPT_SOURCE "/man/qelrcpt.1");
    text = std::regex_replace(text, std::regex(R"(\\f[BIRP]|\\&)"), "");
    return std::regex_replace(text, std::regex(R"(\\-)"), "-");
}

bool has_word(const std::string &text, const std::string &word)
{
    return std::regex_search(text, std::regex("(^|[^A-Za-z_-])" + word + "($|[^A-Za-z_-])"));
}

// What the manual says of an option: from its heading to the next.
std::string paragraph_of(const tool::option_row &row, const std::string &manual)
{
    std::string heading = std::regex_replace(row.name, std::regex(","), ", ");
    if (!row.value.empty())
        heading.append(" ").append(row.value);
    const size_t begin = manual.find("\n.B " + heading + "\n");
    if (begin == std::string::npos)
        return "";
    return manual.substr(begin,
                         std::min(manual.find("\n.TP", begin), manual.find("\n.S", begin)) - begin);
}

TEST(Options, StandInTheManualWithTheirWords)
{
    const std::string text = manual();
    std::set<std::vector<std::string_view>> told; // the words that an option before has too
    for (const tool::option_row &row : tool::option_rows()) {
        const std::string paragraph = paragraph_of(row, text);
        EXPECT_FALSE(paragraph.empty())
            << "man/qelrcpt.1 does not have " << row.name << " " << row.value;
        const bool is_rule = row.name == "--rule" || row.name == "--no-rule";
        if (!row.words || row.name == "--block" || is_rule) // docs/blocks.md, docs/requirements.md
            continue;
        const auto words = row.words({});
        if (!told.insert(words).second)
            continue;
        for (const std::string_view word : words)
            EXPECT_TRUE(has_word(paragraph, std::string(word)))
                << "man/qelrcpt.1 does not have the word " << word << " of " << row.name;
    }
}

// An option does something in some mode, and its refusal says in which.
TEST(Options, AreToldApart)
{
    std::set<std::string> names;
    for (const tool::option_row &row : tool::option_rows()) {
        std::istringstream all(row.name);
        for (std::string name; std::getline(all, name, ',');)
            EXPECT_TRUE(names.insert(name).second) << name << " stands twice";
        EXPECT_EQ(row.where.expected.empty(), row.where.is_met == tool::anywhere.is_met)
            << row.name;
        EXPECT_EQ(row.meaning.find("{}") != std::string_view::npos && !row.words, false)
            << row.name;
    }
}

} // namespace
