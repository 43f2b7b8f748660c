// What the command does with each form of receipt.
#ifndef QELRCPT_TOOLS_FORMS_H
#define QELRCPT_TOOLS_FORMS_H

#include "writing/render.h"

#include <string>
#include <string_view>
#include <vector>

namespace tool
{

struct printed_form {
    std::string_view name;
    Qel_hash_dict_t *(*generate)(Qel_hash_dict_t *record, const Qel_rcpt_config_t &config,
                                 const layout &layout);
    std::string (*document)(const std::vector<receipt> &receipts, const std::string &eol);
    std::string_view ending; // of the names of files that are taken to be of this form
};

const printed_form &printed(const qel_rcpt::form &form);

// The receipts as one text, in the manner of the layout's form.
std::string as_text(const std::vector<receipt> &receipts, const layout &layout);

// What the name of an output file says of the form; absent when it says nothing.
const qel_rcpt::form *form_of_file(std::string_view file_name);

} // namespace tool

#endif
