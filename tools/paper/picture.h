// A picture of what is on the paper.
#ifndef QELRCPT_TOOLS_PICTURE_H
#define QELRCPT_TOOLS_PICTURE_H

#include "paper/printer.h"

#include <string>

namespace paper
{

// The pieces of paper from top to bottom as a PNG file, a pixel a dot; dots is the paper's width.
// What is not on paper, such as the opening of a drawer, is not shown, and a stored logo is a box
// with its name. Throws std::runtime_error when there is too much paper for a picture.
std::string as_png(const roll &printed, unsigned dots);

} // namespace paper

#endif
