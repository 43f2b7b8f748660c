// Dictionaries as text: parsing, and the laws that hold for what was parsed.
#include "fuzz.hpp"

#include <map>

namespace
{

using fuzz::pairs;
using fuzz::pairs_of;
using fuzz::require;

struct notation {
    char pair_sep = ',';
    char kv_sep = ':';
    char quote = '"';
    char escape = '"';

    // Whether every text can be written: no mark is a NUL, which ends the text, and no two are the
    // same but for quote and escape.
    bool is_complete() const
    {
        return pair_sep != kv_sep && pair_sep != quote && kv_sep != quote && escape == quote &&
               pair_sep != 0 && kv_sep != 0 && quote != 0;
    }
};

// The text stands in an allocation of exactly its size.
qel::dict parsed(std::string_view text, const notation &marks, std::uint32_t flags = 0)
{
    const std::vector<char> exact(text.begin(), text.end());
    const char *const start = exact.empty() ? "" : exact.data();
    return qel::dict(Qel_hash_dict_deserialize(start, exact.size(), marks.pair_sep, marks.kv_sep,
                                               marks.quote, marks.escape, flags));
}

std::string quoted(std::string_view text, const notation &marks)
{
    std::string out(1, marks.quote);
    for (const char chr : text) {
        if (chr == marks.quote)
            out += marks.escape;
        out += chr;
    }
    return out + marks.quote;
}

std::string serialized(const pairs &all, const notation &marks)
{
    std::string text;
    for (const auto &[key, val] : all)
        text += quoted(key, marks) + marks.kv_sep + quoted(val, marks) + marks.pair_sep;
    return text;
}

qel::dict merged(qel::dict dest, qel::dict source)
{
    Qel_hash_dict_t *raw = dest.release();
    Qel_hash_dict_merge(&raw, source.release());
    return qel::dict(raw);
}

std::string lower_case(std::string text)
{
    for (char &chr : text)
        chr = chr >= 'A' && chr <= 'Z' ? static_cast<char>(chr + 32) : chr;
    return text;
}

// As the receipts show custom fields.
void check_sorted(qel::dict source)
{
    std::map<std::string, std::string> expected;
    for (const auto &[key, val] : pairs_of(source.get()))
        expected[lower_case(key)] = val;
    const qel::dict sorted =
        merged(qel::dict(Qel_hash_dict_create(Qel_hash_dict_num_keys(source.get()), 75,
                                              QEL_HASH_DICT_CASECMP | QEL_HASH_DICT_KEYS_ORDERED |
                                                  QEL_HASH_DICT_KEYS_SORTASC)),
               std::move(source));
    pairs shown = pairs_of(sorted.get());
    for (auto &[key, val] : shown) {
        require(Qel_str_eq(Qel_hash_dict_get_direct(sorted.get(), key.c_str()), val.c_str()),
                "every key is found");
        key = lower_case(key);
    }
    require(shown == pairs(expected.begin(), expected.end()), "fields are sorted and merged");
}

void check_removal(qel::dict dict)
{
    pairs left = pairs_of(dict.get());
    for (std::size_t i = 0; i < left.size(); ++i) {
        require(Qel_hash_dict_remove(dict.get(), left[i].first.c_str()), "a key can be removed");
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(i));
        require(pairs_of(dict.get()) == left, "and the others stay in their order");
    }
}

void check_laws(std::string_view text, const notation &marks)
{
    qel::dict dict = parsed(text, marks);
    if (!dict)
        return;
    const pairs all = pairs_of(dict.get());
    require(all.size() == Qel_hash_dict_num_keys(dict.get()), "every pair is enumerated");
    if (marks.is_complete()) {
        const qel::dict again = parsed(serialized(all, marks), marks);
        require(again != nullptr && pairs_of(again.get()) == all, "what is written is read back");
    }
    check_removal(parsed(text, marks));
    check_sorted(std::move(dict));
}

// Two texts with the separator between them are the pairs of both.
void check_concatenation(const std::string &first, const std::string &second, const notation &marks)
{
    qel::dict left = parsed(first, marks);
    qel::dict right = parsed(second, marks);
    if (!left || !right)
        return;
    const qel::dict both = parsed(first + marks.pair_sep + second, marks);
    require(both != nullptr, "two texts make one");
    const qel::dict expected = merged(std::move(left), std::move(right));
    require(pairs_of(both.get()) == pairs_of(expected.get()), "with the pairs of both");
}

} // namespace

// The first byte chooses the receipts' notation, or takes another from the next four.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::input from(data, size);
    notation marks;
    if (from.number() == 1) {
        for (char *mark : {&marks.pair_sep, &marks.kv_sep, &marks.quote, &marks.escape})
            *mark = static_cast<char>(from.byte());
    }
    const std::vector<std::string> texts = from.texts();
    for (const std::string &text : texts)
        check_laws(text, marks);
    if (texts.size() >= 2 && marks.is_complete())
        check_concatenation(texts[0], texts[1], marks);
    return 0;
}
