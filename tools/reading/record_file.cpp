#include "reading/record_file.h"

#include "messages.h"
#include "reading/entries.h"
#include "reading/input_file.h"
#include "reading/wrong_kinds.h"

#include <qel_rcpt_keys.hpp>

#include <algorithm>
#include <set>

namespace tool
{

namespace
{

constexpr size_t longest_input = size_t{256} * 1024 * 1024;

std::string read_bytes(const std::string &name, const std::string &shown_name)
{
    const input_file file(name);
    std::vector<char> chunk(size_t{64} * 1024);
    std::string text;
    while (const size_t count = file.read(chunk)) {
        text.append(chunk.data(), count);
        if (text.size() > longest_input)
            throw input_error(shown_name + ": longer than 256 MiB, expected one record");
    }
    return text;
}

// Where the text begins, blanks aside. Throws text_error for what cannot be a text.
size_t begin_of(std::string_view text)
{
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        throw text_error(0, "nothing to read, expected a JSON object or lines of key=value");
    check_kind(text);
    return first;
}

std::vector<entry> read_entries(std::string_view text)
{
    const char first = text[begin_of(text)];
    if (std::string_view("{[\"/").find(first) != std::string_view::npos)
        return json_entries(text);
    check_utf8(text);
    std::vector<entry> entries = line_entries(text);
    if (entries.empty())
        throw text_error(0, "nothing but comments, expected lines of key=value");
    return entries;
}

// An envelope's top has no other members than its two sections, each once. A merchant's file may be
// without keys.
void check_envelope(const std::vector<entry> &entries, contents wanted)
{
    std::set<std::string_view> sections;
    for (const entry &member : entries) {
        if (member.kind == entry_kind::opening && !sections.insert(member.key).second)
            throw text_error(member.offset, "a second " + in_quotes(member.key) + ", expected one");
    }
    const bool has_record = sections.contains("record");
    const bool is_envelope = has_record || (wanted == contents::merchant && !sections.empty());
    for (const entry &member : entries) {
        const bool is_beside = member.where == section::top && member.kind != entry_kind::opening;
        if (is_envelope && is_beside && member.key == "config")
            throw text_error(member.offset, "'config' is not an object, expected one");
        if (is_envelope && is_beside)
            throw text_error(member.offset, "unexpected " + in_quotes(member.key) +
                                                " beside 'record', expected 'config' only");
        if (!is_envelope && member.kind == entry_kind::opening)
            throw text_error(member.offset, "'config' without a 'record' object beside it");
    }
}

// The JSON array's texts with commas between them.
std::string joined_texts(const std::string &json)
{
    const auto texts = json_texts(json);
    if (!texts)
        throw std::invalid_argument("expected an array of names");
    std::string joined;
    for (const std::string &text : *texts)
        joined.append(joined.empty() ? "" : ",").append(text);
    return joined;
}

void apply_setting(merchant &merchant, const entry &member)
{
    const merchant_setting *setting = find_merchant_setting(member.key);
    if (setting == nullptr) {
        std::vector<std::string_view> names;
        for (const merchant_setting &known : merchant_settings())
            names.push_back(known.name);
        throw text_error(member.offset, "unknown setting " + in_quotes(member.key) +
                                            " in 'config', expected " + listed(names));
    }
    const bool is_array = member.kind == entry_kind::nested && member.value.starts_with('[');
    try {
        if (member.kind == entry_kind::text)
            setting->set(merchant, member.value);
        else if (is_array && member.key == "industry")
            setting->set(merchant, joined_texts(member.value));
        else
            throw std::invalid_argument("an object or array, expected a text");
    } catch (const std::invalid_argument &fault) {
        throw text_error(member.offset, member.key + ": " + fault.what());
    }
}

void check_record_member(const entry &member)
{
    if (member.kind == entry_kind::nested && !qel_rcpt::is_document(member.key))
        throw text_error(member.offset, in_quotes(member.key) +
                                            " is an object or array, expected a text, a number, "
                                            "true or false");
}

// The library's texts end at a NUL.
void check_nul(const entry &member)
{
    const auto has_nul = [](std::string_view text) {
        return text.find('\0') != std::string_view::npos;
    };
    if (has_nul(member.key) || has_nul(member.value))
        throw text_error(member.offset, "NUL character in " + in_quotes(member.key));
}

// A value ends when the record has it, so that not all of them are in memory twice.
record_file make_record_file(std::vector<entry> entries, contents wanted)
{
    check_envelope(entries, wanted);
    record_file file;
    file.record.reset(Qel_hash_dict_create(entries.size(), 75, QEL_HASH_DICT_NONE));
    file.members.reserve(entries.size());
    for (entry &member : entries) {
        if (member.kind == entry_kind::opening)
            continue;
        check_nul(member);
        if (member.where == section::config) {
            apply_setting(file.merchant, member);
            continue;
        }
        check_record_member(member);
        const size_t num_keys = Qel_hash_dict_num_keys(file.record.get());
        Qel_hash_dict_insert(file.record.get(), member.key.c_str(), member.value.c_str());
        member.value.clear();
        member.value.shrink_to_fit();
        if (Qel_hash_dict_num_keys(file.record.get()) == num_keys)
            file.repeated.push_back({member.key, member.offset});
        file.members.push_back({std::move(member.key), member.offset});
    }
    return file;
}

} // namespace

record_file parse_json_record(std::string_view text)
{
    try {
        const size_t first = begin_of(text);
        if (std::string_view("{/").find(text[first]) == std::string_view::npos)
            throw text_error(first, "expected a JSON object");
        return make_record_file(json_entries(text), contents::record);
    } catch (const text_error &fault) {
        throw explained(fault, text, reading::line);
    }
}

record_file read_record_file(const std::string &name, contents wanted)
{
    const std::string shown_name = shown_file_name(name);
    std::string text = read_bytes(name, shown_name);
    if (text.starts_with("\xEF\xBB\xBF")) // byte-order mark
        text.erase(0, 3);
    try {
        record_file file = make_record_file(read_entries(text), wanted);
        file.name = shown_name;
        file.text = std::move(text);
        return file;
    } catch (const text_error &fault) {
        const text_error told = explained(fault, text, reading::file);
        throw input_error(places(shown_name, text).at(told.offset) + ": " + told.what());
    }
}

} // namespace tool
