// Every fact stands in one table of the library. Where people read it again, in headers and
// documents, this finds the place that was forgotten.
#include "qel_rcpt_rows.hpp"
#include "qel_rcpt_tables.hpp"
#include "utility.hpp"

#include <cctype>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace
{

bool is_part_of_word(char chr)
{
    return std::isalnum(static_cast<unsigned char>(chr)) != 0 || chr == '_';
}

// Whether the text stands there with no letter or digit around it.
bool holds(const std::string &document, std::string_view text)
{
    for (size_t at = document.find(text); at != std::string::npos;
         at = document.find(text, at + 1)) {
        const size_t end = at + text.size();
        const bool begins_word = at > 0 && is_part_of_word(document[at - 1]);
        const bool ends_word = end < document.size() && is_part_of_word(document[end]);
        if (!begins_word && !ends_word)
            return true;
    }
    return false;
}

void expect_in(const std::string &file, std::initializer_list<std::string> texts)
{
    const std::string document = read_file(QELRCPT_SOURCE "/" + file);
    ASSERT_FALSE(document.empty()) << file;
    for (const std::string &text : texts)
        EXPECT_TRUE(text.empty() || holds(document, text)) << file << " lacks " << text;
}

std::size_t count_of(const std::string &document, std::string_view text)
{
    std::size_t count = 0;
    for (size_t at = document.find(text); at != std::string::npos; at = document.find(text, at + 1))
        ++count;
    return count;
}

TEST(Facts, Languages)
{
    EXPECT_EQ(count_of(read_file(QELRCPT_SOURCE "/include/qel_rcpt.h"), "    QEL_RCPT_LANG_"),
              std::size(qel_rcpt::languages))
        << "src/qel_rcpt_tables.hpp has a row for each enumerator";
    for (const qel_rcpt::language &language : qel_rcpt::languages) {
        const std::string code = language.code;
        std::string enumerator = "QEL_RCPT_LANG_" + code;
        for (char &chr : enumerator)
            chr = static_cast<char>(std::toupper(static_cast<unsigned char>(chr)));
        expect_in("include/qel_rcpt.h",
                  {enumerator + " = " + std::to_string(language.id), "\"" + code + "\""});
        expect_in("include/qel_rcpt_record.hpp", {enumerator});
        expect_in("README.md", {language.name});
        expect_in("man/qelrcpt.1", {code});
        expect_in("docs/configuration.md", {"`" + enumerator + "` " + std::to_string(language.id) +
                                            " | `" + code + "` | " + language.name});
    }
}

TEST(Facts, Currencies)
{
    const qel_rcpt::currency &usual = qel_rcpt::currencies[0];
    for (const qel_rcpt::currency &currency : qel_rcpt::currencies) {
        const std::string code = std::to_string(currency.code);
        expect_in("include/qel_rcpt_record.hpp", {"= " + code});
        expect_in("man/qelrcpt.1", {currency.name});
        expect_in("docs/configuration.md", {currency.name, code});
        if (std::string_view(currency.symbol) == usual.symbol && currency.dec == usual.dec)
            continue;
        const std::string symbol = currency.symbol;
        expect_in("include/qel_rcpt.h", {code, "\"" + symbol + "\""});
        expect_in("docs/configuration.md", {symbol + "12" + currency.dec + "34"});
    }
}

TEST(Facts, Countries)
{
    for (const qel_rcpt::country &country : qel_rcpt::countries) {
        const std::string code = std::to_string(country.code);
        expect_in("include/qel_rcpt_record.hpp", {"= " + code});
        expect_in("man/qelrcpt.1", {country.alpha2, country.alpha3});
        expect_in("docs/configuration.md", {code});
    }
}

TEST(Facts, Forms)
{
    for (const qel_rcpt::form &form : qel_rcpt::forms) {
        const std::string generator(form.generator);
        const std::string name(form.name);
        for (const char *file :
             {"include/qel_rcpt.h", "include/qel_rcpt.hpp", "man/libqelrcpt.3", "README.md",
              "tests/exports/libqelrcpt.txt", "bench/workload.h", "tests/threads_test.cpp"})
            expect_in(file, {generator});
        for (const std::string_view block : form.blocks) {
            expect_in("docs/blocks.md", {"`" + std::string(block) + "`"});
            expect_in("README.md", {"`" + std::string(block) + "`"});
        }
        std::string escaped = name; // as a manual page writes a hyphen
        if (const size_t hyphen = escaped.find('-'); hyphen != std::string::npos)
            escaped.insert(hyphen, "\\");
        expect_in("man/qelrcpt.1", {escaped});
    }
}

// The words of the packages for other languages, which their options are said with.
TEST(Facts, Bindings)
{
    const std::string types = "bindings/javascript/index.d.ts";
    const std::string python = "bindings/python/README.md";
    for (const qel_rcpt::language &language : qel_rcpt::languages) {
        const std::string code = language.code;
        expect_in(types, {"'" + code + "'"});
        expect_in(python, {"`" + code + "`"});
    }
    for (const qel_rcpt::currency &currency : qel_rcpt::currencies) {
        const std::string name = currency.name;
        expect_in(types, {"'" + name + "'"});
        expect_in(python, {"`" + name + "`"});
    }
    for (const qel_rcpt::form &form : qel_rcpt::forms) {
        const std::string name(form.name);
        expect_in(types, {"'" + name + "'"});
        expect_in("bindings/python/src/qelrcpt/_receipts.py", {"\"" + name + "\""});
    }
}

// The id in a tag, or nothing.
std::string id_in(std::string_view tag)
{
    constexpr std::string_view before = " id=\"";
    const size_t begin = tag.find(before);
    if (begin == std::string_view::npos)
        return "";
    tag.remove_prefix(begin + before.size());
    return std::string(tag.substr(0, tag.find('"')));
}

TEST(Facts, Rows)
{
    for (const auto rows :
         {qel_rcpt::reference_rows, qel_rcpt::order_money_rows, qel_rcpt::money_rows,
          qel_rcpt::disposition_rows, qel_rcpt::signature_rows, qel_rcpt::emv_rows,
          qel_rcpt::notice_rows, qel_rcpt::notes_rows}) {
        for (const qel_rcpt::row &row : rows)
            expect_in("docs/blocks.md", {row.name, id_in(row.html.value.data())});
    }
}

TEST(Facts, Messages)
{
    const std::string header = read_file(QELRCPT_SOURCE "/src/qel_rcpt_int.h");
    std::uint32_t number = 0;
    for (size_t at = header.find("    QEL_RCPT_MSG_"); at != std::string::npos;
         at = header.find("    QEL_RCPT_MSG_", at + 1), ++number) {
        const std::string line = header.substr(at, header.find('\n', at) - at);
        EXPECT_TRUE(holds(line, "= " + std::to_string(number))) << line << ": not the next number";
        const auto msg = static_cast<Qel_rcpt_msg_t>(number);
        EXPECT_EQ(Qel_rcpt_msg_to_string(QEL_RCPT_LANG_EN, msg) == nullptr, number == 0)
            << "src/qel_rcpt_lang.cpp lacks" << line;
    }
    EXPECT_GT(number, 100U);
}

} // namespace
