// From the lines of an archive to those of its output.
#ifndef QELRCPT_TOOLS_LINE_RENDERER_H
#define QELRCPT_TOOLS_LINE_RENDERER_H

#include "checking/findings.h"
#include "options.h"
#include "reading/line_reader.h"
#include "reading/record_file.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace tool
{

constexpr uint64_t most_shown_warnings = 5; // of each rule

// What is worth a warning, and where.
struct line_warning {
    std::string_view rule;
    uint64_t line;
    size_t column; // 0: none
    std::string message;
};

// What became of a piece.
struct rendered {
    std::string lines; // whole ones
    uint64_t records = 0;
    uint64_t errors = 0;
    bool has_bad_records = false; // of which --check finds errors
    rule_counts warnings;
    std::vector<line_warning> first_warnings; // a few of each rule
    std::exception_ptr fault;                 // with which the run ends after these lines
};

// Renders pieces; several threads may use it at once.
class line_renderer
{
  public:
    explicit line_renderer(const options &options) : options_(options) {}

    // Adds to the result, whose lines are whole also where this throws: when there is no memory.
    void render(const line_piece &piece, rendered &result) const;

  private:
    struct position;

    void add_line(rendered &result, const position &where, std::string_view line) const;
    void add_record(rendered &result, const position &where, const record_file &file,
                    const Qel_rcpt_config_t &config) const;
    void add_findings(rendered &result, const position &where, std::string_view line,
                      const std::vector<finding> &findings) const;
    bool add_strict_error(rendered &result, const position &where,
                          const std::vector<finding> &findings) const;
    void warn_of(rendered &result, const position &where, std::string_view line,
                 const std::vector<finding> &findings) const;
    void add_error(rendered &result, const position &where, std::string_view message) const;
    void begin_line(std::string &lines, const position &where) const;

    const options &options_;
};

} // namespace tool

#endif
