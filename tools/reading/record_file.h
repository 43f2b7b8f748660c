// Reading what the command is given: a record, alone or in an envelope with its merchant.
#ifndef QELRCPT_TOOLS_RECORD_FILE_H
#define QELRCPT_TOOLS_RECORD_FILE_H

#include "reading/merchant.h"

#include <qelstdlib.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool
{

// What is probably a mistake about a member of a record.
enum class doubt_kind { unknown_key, repeated_key, unmasked_account };

struct doubt {
    doubt_kind kind;
    std::string key;
    size_t offset; // in the text
};

// About a member by itself; absent without one.
std::optional<doubt_kind> doubt_about(const std::string &key, const std::string &value);

// The warning in words.
std::string warning_of(const doubt &doubt);

struct record_file {
    tool::merchant merchant; // an envelope's "config"
    qel::dict record;
    std::vector<doubt> doubts;
};

// The record of a JSON text. Throws text_error.
record_file parse_json_record(std::string_view text);

// A record, or what a merchant's file has of one.
enum class contents { record, merchant };

// Reads the file, standard input for "-". Warns of what is probably a mistake, unless quiet.
// Throws input_error.
record_file read_record_file(const std::string &name, bool quiet,
                             contents wanted = contents::record);

} // namespace tool

#endif
