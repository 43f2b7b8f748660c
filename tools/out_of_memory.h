// The end of a program that has no more memory.
#ifndef QELRCPT_TOOLS_OUT_OF_MEMORY_H
#define QELRCPT_TOOLS_OUT_OF_MEMORY_H

namespace tool
{

// Where the library cannot go on for want of memory it terminates the program, as std::terminate
// does. From now on that is a message and exit status 1, with whole lines in the output and without
// a file left over; what else terminates the program aborts it as before.
void prepare_for_out_of_memory();

// Says it, without memory.
void complain_of_memory();

} // namespace tool

#endif
