// From the blocks of receipts to what the command prints.
#ifndef QELRCPT_TOOLS_DOCUMENT_H
#define QELRCPT_TOOLS_DOCUMENT_H

#include "writing/render.h"

#include <string>
#include <vector>

namespace tool
{

// The receipts as one text in which every line ends with eol. The blocks stay as they are: with a
// blank line between two and, between two copies, a line to cut along or a rule; in XML and JSON
// as the elements or members of their copy, "customer" or "merchant".
std::string text_document(const std::vector<receipt> &receipts, const std::string &eol);
std::string html_document(const std::vector<receipt> &receipts, const std::string &eol);
std::string xml_document(const std::vector<receipt> &receipts, const std::string &eol);
std::string json_document(const std::vector<receipt> &receipts, const std::string &eol);

// One JSON object of a receipt's blocks by their keys, or an array of them when there are several
// receipts.
std::string as_json(const std::vector<receipt> &receipts);

// Appends the block as a JSON value on one line: the data of a JSON receipt, a text of the others.
void append_json_block(std::string &json, const receipt &shown, const block &block);

} // namespace tool

#endif
