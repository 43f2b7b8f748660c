// JSON: reading, writing, and reading back.
#include "fuzz.hpp"

#include <nlohmann/json.hpp>

namespace
{

using fuzz::require;

struct reading {
    qel::json root;
    std::size_t processed = 0;
    Qel_json_error_t error = QEL_JSON_ERROR_SUCCESS;
    std::size_t line = 0;
    std::size_t pos = 0;
};

reading read(const std::vector<char> &text, std::uint32_t flags)
{
    reading got;
    got.root.reset(Qel_json_read(text.data(), text.size(), flags, &got.processed, &got.error,
                                 &got.line, &got.pos));
    const bool is_read = got.root != nullptr;
    require(is_read == (got.error == QEL_JSON_ERROR_SUCCESS), "a text is read or has an error");
    require(got.processed <= text.size(), "no more than the text is read");
    require(!is_read || got.processed == text.size(), "the whole text is read");
    require(is_read == (got.line == 0) && is_read == (got.pos == 0), "an error has a place");
    require(got.pos <= text.size() + 1, "the error is in the text");
    return got;
}

std::string write(const Qel_json_node_t *node, Qel_json_writer_flags_t flags)
{
    std::size_t len = 0;
    const std::string text = fuzz::taken(Qel_json_write(node, flags, &len));
    require(text.size() == len, "the length is the text's");
    return text;
}

std::string written(const Qel_json_node_t *node)
{
    const std::string compact = write(node, QEL_JSON_WRITER_NONE);
    const std::string pretty = write(node, QEL_JSON_WRITER_PRETTYPRINT_SPACE);
    require(std::ranges::none_of(pretty, [](char chr) { return chr < 0; }), "JSON is ASCII");
    for (const std::string &text : {compact, pretty}) {
        const reading again = read({text.begin(), text.end()}, QEL_JSON_READER_NONE);
        require(again.root != nullptr, "what is written can be read");
        require(write(again.root.get(), QEL_JSON_WRITER_NONE) == compact, "and is the same");
        require(write(again.root.get(), QEL_JSON_WRITER_PRETTYPRINT_SPACE) == pretty,
                "and is the same");
    }
    return compact;
}

std::size_t levels(std::string_view text)
{
    std::size_t depth = 0;
    std::size_t deepest = 0;
    for (const char chr : text) {
        if (chr == '[' || chr == '{')
            deepest = std::max(deepest, ++depth);
        else if ((chr == ']' || chr == '}') && depth > 0)
            --depth;
    }
    return deepest;
}

// Where the other reader does not differ on purpose: it ends a text at a NUL, rejects large
// numbers, lets escaped NULs stand, and takes anything for a comment.
bool is_comparable(std::string_view text)
{
    std::size_t digits = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool is_digit = text[i] >= '0' && text[i] <= '9';
        digits = is_digit ? digits + 1 : 0;
        const bool has_exponent =
            i > 0 && text[i - 1] >= '0' && text[i - 1] <= '9' && (text[i] | 0x20) == 'e';
        if (digits > 15 || has_exponent)
            return false;
    }
    return fuzz::is_valid_utf8(text) && text.find('\0') == std::string_view::npos &&
           text.find("u0000") == std::string_view::npos && levels(text) <= 512;
}

using other_json = nlohmann::ordered_json;

other_json other_reading(std::string_view text)
{
    return other_json::parse(text, nullptr, /*allow_exceptions=*/false, /*ignore_comments=*/true);
}

void compare_readers(std::string_view text, const reading &strict)
{
    const other_json other = other_reading(text);
    require((strict.root != nullptr) == !other.is_discarded(), "both readers agree");
    if (strict.root != nullptr)
        require(other_reading(write(strict.root.get(), QEL_JSON_WRITER_NONE)) == other,
                "both readers see the same");
}

void take_apart(qel::json root)
{
    const std::size_t count = Qel_json_array_len(root.get());
    if (count == 0)
        return;
    Qel_json_node_t *const last = Qel_json_array_at(root.get(), count - 1);
    const std::string before = write(last, QEL_JSON_WRITER_NONE);
    Qel_json_take_from_parent(last);
    const qel::json taken(last);
    require(Qel_json_array_len(root.get()) == count - 1, "one element is gone");
    root.reset();
    require(write(taken.get(), QEL_JSON_WRITER_NONE) == before, "and outlives its tree");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::vector<char> text = fuzz::input(data, size).bytes();
    const reading strict = read(text, QEL_JSON_READER_NONE);
    reading repairing = read(text, QEL_JSON_READER_REPLACE_BAD_CHARS);
    if (is_comparable({text.data(), text.size()}))
        compare_readers({text.data(), text.size()}, strict);
    if (repairing.root == nullptr) {
        require(strict.root == nullptr, "repairing reads what needs no repair");
        return 0;
    }
    const std::string repaired = written(repairing.root.get());
    if (strict.root != nullptr)
        require(written(strict.root.get()) == repaired, "and leaves it as it is");
    take_apart(std::move(repairing.root));
    return 0;
}
