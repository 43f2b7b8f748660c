// What is laid under and over every record: the merchant's file and single keys.
#ifndef QELRCPT_TOOLS_ADDITIONS_H
#define QELRCPT_TOOLS_ADDITIONS_H

#include "reading/merchant.h"
#include "reading/record_file.h"

#include <qelstdlib.hpp>

#include <string>
#include <utility>
#include <vector>

namespace tool
{

struct additions {
    record_file under; // for what a record does not say itself
    std::vector<std::pair<std::string, std::string>> over;
};

// The key and value of "key=value". Throws std::invalid_argument.
std::pair<std::string, std::string> to_addition(const std::string &given);

// Reads the merchant's file, which holds its configuration, its keys or both. An empty name is no
// file. Throws input_error.
void read_merchant_file(additions &added, const std::string &name);

// Completes the file's record, and gives the configuration for it: what the options say goes before
// what the file says, and that before the merchant's file. It borrows from all three.
Qel_rcpt_config_t complete(record_file &file, const merchant &options, const additions &added);

} // namespace tool

#endif
