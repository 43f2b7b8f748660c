// What the command reads records with: JSON, lines of key=value, and archives cut into lines.
#include "fuzz.hpp"

#include "messages.h"
#include "reading/entries.h"
#include "reading/line_reader.h"
#include "reading/record_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

namespace
{

using fuzz::require;

// What the reader gives, or nothing for a text that it refuses with a place inside of it.
template <typename Read>
auto accepted(std::string_view text, Read read) -> std::optional<decltype(read(text))>
{
    try {
        return read(text);
    } catch (const tool::text_error &error) {
        require(error.offset <= text.size(), "a fault has a place in the text");
        require(!std::string_view(error.what()).empty(), "a fault is explained");
        return std::nullopt;
    }
}

void check_entries(std::string_view text, const std::vector<tool::entry> &entries)
{
    std::size_t before = 0;
    for (const tool::entry &entry : entries) {
        require(entry.offset >= before && entry.offset < text.size(), "keys come in their order");
        before = entry.offset;
        require(fuzz::is_valid_utf8(entry.key), "keys are UTF-8");
        if (entry.kind != tool::entry_kind::nested) {
            require(fuzz::is_valid_utf8(entry.value), "values are UTF-8");
            continue;
        }
        // Its comments stand as they were written.
        const qel::json tree(Qel_json_read(entry.value.data(), entry.value.size(),
                                           QEL_JSON_READER_REPLACE_BAD_CHARS, nullptr, nullptr,
                                           nullptr, nullptr));
        require(tree != nullptr, "the library reads what was nested");
    }
}

void check_json(std::string_view text)
{
    const auto entries = accepted(text, tool::json_entries);
    const auto record = accepted(text, tool::parse_json_record);
    require(entries.has_value() || !record.has_value(), "only what can be read is a record");
    if (!entries)
        return;
    check_entries(text, *entries);
    const auto judged = nlohmann::json::parse(text, nullptr, false, true);
    require(judged.is_object(), "only objects are taken");
    if (!record)
        return;
    for (const tool::entry &entry : *entries)
        require(entry.where == tool::section::config ||
                    (entry.key + entry.value).find('\0') == std::string::npos,
                "no text of a record ends before its end");
    for (const tool::member_place &member : record->members)
        require(member.offset < text.size(), "a key has a place in the text");
    require(Qel_hash_dict_num_keys(record->record.get()) <= record->members.size(),
            "every key comes from the text");
}

void check_lines(std::string_view text)
{
    const auto entries = accepted(text, tool::line_entries);
    std::size_t before = 0;
    for (const tool::entry &entry : entries.value_or(std::vector<tool::entry>())) {
        require(entry.offset >= before && entry.offset < text.size(), "lines come in their order");
        require(!entry.key.empty() && entry.value.find('\n') == std::string::npos,
                "an entry is of one line");
        before = entry.offset;
    }
}

// The pieces of an archive are its lines, whatever stands in them.
void check_archive(std::string_view text)
{
    const int fd = ::memfd_create("archive", MFD_CLOEXEC);
    require(fd >= 0 && ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size()),
            "a file can be made");
    const std::vector<std::string> files = {"/proc/self/fd/" + std::to_string(fd)};
    tool::line_reader reader(files, 1, -1);
    std::string read;
    std::uint64_t lines = 1;
    std::uint64_t bytes = 0;
    while (const auto piece = reader.next()) {
        require(piece->first_line == lines, "lines are counted");
        require(piece->bytes > 0 && !piece->is_too_long, "a piece is of lines, if of a mark alone");
        require(piece->is_unfinished == !piece->text.ends_with('\n'), "only the end is unfinished");
        lines += static_cast<std::uint64_t>(std::ranges::count(piece->text, '\n'));
        bytes += piece->bytes;
        read += piece->text;
    }
    ::close(fd);
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    require(bytes == text.size() && read == text.substr(text.starts_with(mark) ? mark.size() : 0),
            "nothing is lost");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::input from(data, size);
    const unsigned how = from.byte() % 3;
    const std::vector<char> bytes = from.bytes();
    const std::string_view text(bytes.data(), bytes.size());
    if (how == 0)
        check_json(text);
    else if (how == 1)
        check_lines(text);
    else
        check_archive(text);
    return 0;
}
