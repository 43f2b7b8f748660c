// Reading what the command is given: a record, alone or in an envelope with its merchant.
#ifndef QELRCPT_TOOLS_RECORD_FILE_H
#define QELRCPT_TOOLS_RECORD_FILE_H

#include "merchant.h"

#include <qelstdlib.hpp>

#include <string>

namespace tool
{

struct record_file {
    tool::merchant merchant; // an envelope's "config"
    qel::dict record;
};

// Reads the file, standard input for "-". Warns of what is probably a mistake, unless quiet.
// Throws input_error.
record_file read_record_file(const std::string &name, bool quiet);

} // namespace tool

#endif
