// The page to try receipts in a browser, with a record in it.
#ifndef QELRCPT_TOOLS_PLAYGROUND_H
#define QELRCPT_TOOLS_PLAYGROUND_H

#include "reading/additions.h"
#include "reading/merchant.h"
#include "reading/record_file.h"
#include "writing/render.h"

#include <string>

namespace tool
{

// The widest paper of the page, in characters.
inline constexpr size_t widest_on_page = 80;

// The page with the file's record, which is completed by what is added, and with its merchant, of
// whom the options, the file and the merchant's file say something. The layout's form, width and
// copies are those it opens with. No text of a record is anything but a text in it.
std::string playground(const record_file &file, const Qel_rcpt_config_t &config,
                       const merchant &options, const additions &added, const layout &layout);

} // namespace tool

#endif
