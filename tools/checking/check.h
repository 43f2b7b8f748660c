// --check: the findings of records instead of their receipts.
#ifndef QELRCPT_TOOLS_CHECK_H
#define QELRCPT_TOOLS_CHECK_H

#include "options.h"
#include "reading/additions.h"
#include "reading/record_file.h"

#include <string>

namespace tool
{

struct checked_records {
    std::string report;
    bool has_errors;
};

// The findings of all files, worst first, as text or as a JSON array. Throws input_error.
checked_records check_records(const options &options);

// Warns of keys that do nothing and of secrets in what is laid under and over the records, unless
// quiet: once, and not with each record.
void warn_of_additions(const options &options);

// Before a receipt is rendered: warns of what is wrong with its record, unless quiet. With strict,
// says what the errors are and throws input_error where there are any.
void warn_of_record(const record_file &file, const Qel_rcpt_config_t &config,
                    const options &options);

} // namespace tool

#endif
