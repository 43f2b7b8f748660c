// A finding as data.
#ifndef QELRCPT_TOOLS_FINDINGS_JSON_H
#define QELRCPT_TOOLS_FINDINGS_JSON_H

#include "checking/findings.h"
#include "messages.h"

#include <string>

namespace tool
{

// Where a finding is, beyond what it says itself.
struct finding_origin {
    std::string file; // empty: not said
    text_place place; // line 0: not said
};

// Appends the finding as a JSON object on one line.
void append_finding(std::string &json, const finding &finding, const finding_origin &origin);

} // namespace tool

#endif
