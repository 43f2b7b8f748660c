#include "record_file.h"

#include "entries.h"
#include "messages.h"
#include "record_keys.h"

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <cerrno>
#include <set>
#include <span>
#include <system_error>
#include <vector>

namespace tool
{

namespace
{

constexpr size_t longest_input = size_t{256} * 1024 * 1024;

class input_file
{
  public:
    input_file(const std::string &name, std::string shown_name)
        : fd_(name == "-" ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_CLOEXEC)),
          shown_name_(std::move(shown_name))
    {
        if (fd_ < 0)
            fail();
    }
    ~input_file()
    {
        if (fd_ != STDIN_FILENO)
            ::close(fd_);
    }
    input_file(const input_file &) = delete;
    input_file &operator=(const input_file &) = delete;

    // Reads what there is into the bytes; 0 only at the end.
    size_t read(std::span<char> bytes) const
    {
        for (;;) {
            const ssize_t count = ::read(fd_, bytes.data(), bytes.size());
            if (count >= 0)
                return static_cast<size_t>(count);
            if (errno != EINTR)
                fail();
        }
    }

  private:
    [[noreturn]] void fail() const
    {
        throw input_error(shown_name_ + ": " + std::generic_category().message(errno));
    }

    int fd_;
    std::string shown_name_;
};

std::string read_bytes(const std::string &name, const std::string &shown_name)
{
    const input_file file(name, shown_name);
    std::vector<char> chunk(size_t{64} * 1024);
    std::string text;
    while (const size_t count = file.read(chunk)) {
        text.append(chunk.data(), count);
        if (text.size() > longest_input)
            throw input_error(shown_name + ": longer than 256 MiB, expected one record");
    }
    return text;
}

std::vector<entry> read_entries(std::string_view text)
{
    const size_t first = text.find_first_not_of(" \t\r\n\v\f");
    if (first == std::string_view::npos)
        throw text_error(0, "nothing to read, expected a JSON object or lines of key=value");
    if (const size_t nul = text.find('\0'); nul != std::string_view::npos)
        throw text_error(nul, "NUL byte, expected text");
    const bool is_json = std::string_view("{[\"/").find(text[first]) != std::string_view::npos;
    std::vector<entry> entries = is_json ? json_entries(text) : line_entries(text);
    if (!is_json && entries.empty())
        throw text_error(0, "nothing but comments, expected lines of key=value");
    return entries;
}

// An envelope's top has no other members than its two sections, each once.
void check_envelope(const std::vector<entry> &entries)
{
    std::set<std::string_view> sections;
    for (const entry &member : entries) {
        if (member.kind == entry_kind::opening && !sections.insert(member.key).second)
            throw text_error(member.offset, "a second " + in_quotes(member.key) + ", expected one");
    }
    const bool is_envelope = sections.contains("record");
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
    std::string joined;
    for (const auto &item : nlohmann::json::parse(json)) {
        if (!item.is_string())
            throw std::invalid_argument("expected an array of names");
        if (!joined.empty())
            joined += ',';
        joined += item.get<std::string>();
    }
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

// What is probably a mistake about the member; empty when nothing is.
std::string doubt_about(const entry &member, const Qel_hash_dict_t *record)
{
    if (Qel_hash_dict_get(record, member.key.c_str(), nullptr))
        return "record key " + in_quotes(member.key) + " again, the later value counts";
    if (is_record_key(member.key))
        return {};
    const std::string_view nearest = nearest_record_key(member.key);
    const std::string hint =
        nearest.empty() ? "" : " (did you mean '" + std::string(nearest) + "'?)";
    return "unknown record key " + in_quotes(member.key) + hint;
}

void check_record_member(const entry &member)
{
    const bool is_document = member.key == "line_items" || member.key == "moneris_rcpt_data";
    if (member.kind == entry_kind::nested && !is_document)
        throw text_error(member.offset, in_quotes(member.key) +
                                            " is an object or array, expected a text, a number, "
                                            "true or false");
}

// The library's texts end at a NUL.
void check_nul(const entry &member)
{
    if ((member.key + member.value).find('\0') != std::string::npos)
        throw text_error(member.offset, "NUL character in " + in_quotes(member.key));
}

record_file make_record_file(const std::vector<entry> &entries, bool quiet, places &where)
{
    constexpr int most_warnings = 20;
    check_envelope(entries);
    record_file file;
    file.record.reset(Qel_hash_dict_create(entries.size(), 75, QEL_HASH_DICT_NONE));
    int warnings_left = quiet ? 0 : most_warnings;
    for (const entry &member : entries) {
        if (member.kind == entry_kind::opening)
            continue;
        check_nul(member);
        if (member.where == section::config) {
            apply_setting(file.merchant, member);
            continue;
        }
        check_record_member(member);
        const std::string doubt =
            warnings_left > 0 ? doubt_about(member, file.record.get()) : std::string();
        if (!doubt.empty()) {
            complain(where.at(member.offset) + ": warning: " + doubt);
            if (--warnings_left == 0)
                complain(where.at(member.offset) + ": warning: further warnings are left out");
        }
        Qel_hash_dict_insert(file.record.get(), member.key.c_str(), member.value.c_str());
    }
    return file;
}

} // namespace

record_file read_record_file(const std::string &name, bool quiet)
{
    const std::string shown_name = name == "-" ? "<stdin>" : name;
    const std::string bytes = read_bytes(name, shown_name);
    std::string_view text = bytes;
    if (text.starts_with("\xEF\xBB\xBF")) // byte-order mark
        text.remove_prefix(3);
    places where(shown_name, text);
    try {
        return make_record_file(read_entries(text), quiet, where);
    } catch (const text_error &fault) {
        throw input_error(where.at(fault.offset) + ": " + fault.what());
    }
}

} // namespace tool
