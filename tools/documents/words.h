// The words of the JavaScript package.
#ifndef QELRCPT_TOOLS_WORDS_H
#define QELRCPT_TOOLS_WORDS_H

#include <string>

namespace documents
{

// A module of JavaScript with the words that options are said with, and what they stand for.
std::string javascript_words();

} // namespace documents

#endif
