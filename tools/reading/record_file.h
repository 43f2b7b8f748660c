// Reading what the command is given: a record, alone or in an envelope with its merchant.
#ifndef QELRCPT_TOOLS_RECORD_FILE_H
#define QELRCPT_TOOLS_RECORD_FILE_H

#include "reading/merchant.h"

#include <qelstdlib.hpp>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tool
{

// Where a key stands in the text.
struct member_place {
    std::string key;
    size_t offset;
};

struct record_file {
    tool::merchant merchant; // an envelope's "config"
    qel::dict record;
    std::vector<member_place> members;  // of the record, in the order of the text
    std::vector<member_place> repeated; // those whose key stands there already
    std::string name;                   // for messages; empty without a file
    std::string text;                   // of the file
};

// The record of a JSON text. Throws text_error.
record_file parse_json_record(std::string_view text);

// A record, or what a merchant's file has of one.
enum class contents { record, merchant };

// Reads the file, standard input for "-". Throws input_error.
record_file read_record_file(const std::string &name, contents wanted = contents::record);

} // namespace tool

#endif
