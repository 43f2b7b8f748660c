// Rendering archives: a record a line in, its blocks as a line of JSON out.
#ifndef QELRCPT_TOOLS_BATCH_H
#define QELRCPT_TOOLS_BATCH_H

#include "options.h"

namespace tool
{

// Renders the records of all files with as many threads as the options say; the library is ready.
// Gives the exit status: 1 when there were lines that are no records. Throws input_error. Ends the
// program by the signal that interrupted it, with whole lines written.
int run_batch(const options &options);

} // namespace tool

#endif
