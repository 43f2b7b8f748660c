#include "command_line.h"

#include "lists.h"
#include "messages.h"
#include "writing/forms.h"
#include "writing/playground.h"

#include <CLI/CLI.hpp>

#include <sched.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace tool
{

namespace
{

constexpr size_t most_jobs_by_default = 256;

constexpr const char *introduction =
    "Usage: qelrcpt [OPTIONS] [FILE...]\n\n"
    "Prints the receipts of card transactions: the customer copy and the merchant copy.\n\n"
    "A FILE holds one transaction record: a JSON object of its keys, an object\n"
    "{\"config\": {...}, \"record\": {...}} that brings its merchant along, or lines of "
    "key=value.\n"
    "Without FILE, or for -, the record is read from standard input.\n";

constexpr const char *conclusion =
    "\nExamples:\n"
    "  qelrcpt sale.json                              both copies, 40 columns wide\n"
    "  qelrcpt --copy customer --width 32 sale.json   the customer copy for a narrow printer\n"
    "  qelrcpt --country CA --currency CAD --customer-lang fr sale.json\n"
    "  qelrcpt --output json --block money sale.json  one block of each copy as JSON\n"
    "  qelrcpt --output escpos sale.json > /dev/usb/lp0   onto a receipt printer\n"
    "  qelrcpt --form html --page -o sale.html sale.json\n"
    "  qelrcpt --form html --email -o mail.html sale.json\n"
    "  qelrcpt --playground -o try.html sale.json     a page to try the record in a browser\n"
    "  printf 'action=sale\\namount=12.34\\n' | qelrcpt --line-break crlf -o receipt.txt\n"
    "  qelrcpt --batch archive.jsonl > receipts.jsonl\n"
    "  qelrcpt --check sale.json                      what is wrong with the record\n\n"
    "Exit status: 0 when the receipts are written or --check finds no errors, 1 when the input\n"
    "or the output is at fault, 2 when the command line is.\n";

std::vector<std::string_view> words_of(const option_row &row, const options &given)
{
    return !row.words ? std::vector<std::string_view>() : row.words(given);
}

std::string meaning_of(const option_row &row)
{
    std::string meaning(row.meaning);
    if (const size_t at = meaning.find("{}"); at != std::string::npos)
        meaning.replace(at, 2, listed(words_of(row, {})));
    return meaning;
}

// "  -q, --quiet" and its meaning beside it, in lines that fit a terminal.
std::string help_of(const option_row &row)
{
    constexpr size_t meaning_column = 28;
    constexpr size_t columns = 90;
    std::string text = "  " + row.name;
    if (const size_t comma = text.find(','); comma != std::string::npos)
        text.insert(comma + 1, " ");
    if (!row.value.empty())
        text.append(" ").append(row.value);
    if (text.size() + 1 < meaning_column)
        text.resize(meaning_column - 1, ' ');
    size_t column = text.size();
    std::istringstream words(meaning_of(row));
    for (std::string word; words >> word; column += 1 + word.size()) {
        const bool is_full = column + 1 + word.size() > columns;
        if (is_full) {
            text += "\n" + std::string(meaning_column - 1, ' ');
            column = meaning_column - 1;
        }
        text += " " + word;
    }
    return text + "\n";
}

std::string help()
{
    std::string text = introduction;
    std::string_view group;
    for (const option_row &row : option_rows()) {
        if (row.group.empty())
            continue;
        if (row.group != group)
            text.append("\n").append(group = row.group).append(":\n");
        text += help_of(row);
    }
    return text + conclusion;
}

// A line for each name of an option: the name, what its value is called, the words to choose from
// and the meaning, with "|" between them. The completions are made of it.
std::string option_list(const options &given)
{
    std::string text;
    for (const option_row &row : option_rows()) {
        std::string words;
        for (const std::string_view word : words_of(row, given))
            words.append(words.empty() ? "" : " ").append(word);
        std::istringstream names(row.name);
        for (std::string name; !row.group.empty() && std::getline(names, name, ',');) {
            text.append(name).append("|").append(row.value).append("|").append(words);
            text.append("|").append(meaning_of(row)).append("\n");
        }
    }
    return text;
}

// The cores that this process may use.
size_t usable_cores()
{
    cpu_set_t cores;
    const bool is_known = ::sched_getaffinity(0, sizeof cores, &cores) == 0;
    const size_t count = is_known ? static_cast<size_t>(CPU_COUNT(&cores)) : 1;
    return std::clamp<size_t>(count, 1, most_jobs_by_default);
}

void set_option(const option_row &row, options &taken, const std::string &given)
{
    try {
        row.set(taken, given);
    } catch (const std::invalid_argument &fault) {
        throw usage_error(long_name(row) + ": " + fault.what());
    }
}

CLI::Option *add_option(CLI::App &app, const option_row &row, options &taken)
{
    if (row.value.empty())
        return app.add_flag_callback(row.name, [&] { set_option(row, taken, ""); });
    const auto set = [&](const std::vector<std::string> &given) {
        for (size_t i = row.repeats ? 0 : given.size() - 1; i < given.size(); ++i)
            set_option(row, taken, given[i]);
    };
    return app.add_option_function<std::vector<std::string>>(row.name, set)
        ->allow_extra_args(false);
}

// Output that is JSON or for paper whatever the form says nothing of it.
void take_form_from_output_file(options &taken)
{
    if (taken.is_form_given || taken.batch || taken.playground ||
        taken.format.value_or(output_format::text) != output_format::text)
        return;
    if (const qel_rcpt::form *form = form_of_file(taken.output_file))
        taken.layout.form = form;
}

void check_blocks(const layout &layout)
{
    const std::vector<std::string_view> blocks = blocks_of(*layout.form);
    for (const std::string &name : layout.blocks) {
        if (std::ranges::find(blocks, name) == blocks.end())
            throw usage_error("--block: the " + std::string(layout.form->name) +
                              " receipt has no " + in_quotes(name) + ", expected " +
                              listed(blocks));
    }
}

// A page or a message holds one copy of one receipt.
void check_page(const options &given)
{
    if (!given.page && !given.email)
        return;
    const std::string option = given.page ? "--page" : "--email";
    if (given.page && given.email)
        throw usage_error(option + ": expected no --email with it");
    if (given.format == output_format::json)
        throw usage_error(option + ": a page is no JSON, expected no --output json with it");
    if (given.both_copies)
        throw usage_error(option + ": expected --copy customer or --copy merchant with it");
    if (given.files.size() > 1)
        throw usage_error(option + ": expected one FILE");
    if (given.batch)
        throw usage_error(option + ": expected no --batch with it");
}

void check_batch(const options &given)
{
    if (given.batch && given.format.value_or(output_format::json) != output_format::json)
        throw usage_error("--output: with --batch every line is JSON, expected no other");
}

// Text as wide as the paper where it may be, unless a width is asked for, which has to fit in font
// B.
void fit_paper(options &taken)
{
    if (!taken.format || !is_paper(*taken.format))
        return;
    if (!text_only.is_met(taken))
        throw usage_error("--output: expected " + std::string(text_only.expected));
    constexpr unsigned most_dots = qel_rcpt::most_starprnt_qr_module;
    if (taken.format == output_format::star && taken.paper.qr_module > most_dots)
        throw usage_error("--qr-module: expected at most " + std::to_string(most_dots) +
                          " with --output star");
    if (!is_form(taken.layout, "plain"))
        return;
    const size_t columns = taken.paper.columns.value_or(qel_rcpt::usual_paper_columns);
    if (taken.paper.columns && !taken.has_width)
        taken.layout.width = columns;
    const size_t most = qel_rcpt::columns_in_font_b(columns);
    if (taken.layout.width > most)
        throw usage_error("--width: " + std::to_string(taken.layout.width) +
                          " columns do not fit on the paper, expected at most " +
                          std::to_string(most) + ", or another --paper");
}

// There is no receipt to lay out.
void check_check(const options &given, const option_row &row)
{
    const bool is_layout = row.group == "Receipt" && row.name != "--form";
    const bool is_paper_asked = given.format && is_paper(*given.format);
    if (given.check && (is_layout || (row.name == "--output" && is_paper_asked) ||
                        row.name == "--page" || row.name == "--email" || row.name == "--strict"))
        throw usage_error(long_name(row) + ": expected no --check with it");
}

// The page has what it opens with, and all else is chosen there.
void check_playground(const options &given, const option_row &row)
{
    constexpr std::string_view others[] = {"--line-break", "--block",  "--output",
                                           "--page",       "--email",  "--raw",
                                           "--check",      "--strict", "--batch"};
    if (!given.playground)
        return;
    if (std::ranges::find(others, row.name) != std::end(others))
        throw usage_error(long_name(row) + ": expected no --playground with it");
    if (row.name == "--width" && given.layout.width > widest_on_page)
        throw usage_error("--width: expected at most " + std::to_string(widest_on_page) +
                          " with --playground");
    if (given.files.size() > 1)
        throw usage_error("--playground: expected one FILE");
}

} // namespace

options parse_options(int argc, char **argv)
{
    options taken;
    CLI::App app;
    app.set_help_flag();
    app.add_option("FILE", taken.files);
    std::vector<std::pair<const option_row *, const CLI::Option *>> added;
    for (const option_row &row : option_rows())
        added.emplace_back(&row, add_option(app, row, taken));
    try {
        app.parse(argc, argv);
    } catch (const CLI::ArgumentMismatch &fault) {
        const std::string message = fault.what(); // begins with the option and a colon
        throw usage_error(message.substr(0, message.find(':')) + ": expected a value");
    } catch (const CLI::ExtrasError &) {
        throw usage_error("unknown option " + in_quotes(app.remaining().front()));
    } catch (const CLI::ParseError &fault) {
        throw usage_error(fault.what());
    }
    if (taken.information != information::none)
        return taken;
    take_form_from_output_file(taken);
    for (const auto &[row, option] : added) {
        if (option->count() > 0 && !row->where.is_met(taken))
            throw usage_error(long_name(*row) + ": expected " + std::string(row->where.expected));
        if (option->count() > 0) {
            check_check(taken, *row);
            check_playground(taken, *row);
        }
    }
    check_blocks(taken.layout);
    check_page(taken);
    check_batch(taken);
    fit_paper(taken);
    if (taken.batch && taken.jobs == 0)
        taken.jobs = usable_cores();
    if (taken.files.empty())
        taken.files.emplace_back("-");
    if (taken.merchant_file == "-" && std::ranges::find(taken.files, "-") != taken.files.end())
        throw usage_error("--merchant: standard input is the record, expected another FILE");
    return taken;
}

std::string information_text(const options &given)
{
    switch (given.information) {
    case information::help:
        return help();
    case information::version:
        return "qelrcpt " QELRCPT_VERSION "\n";
    case information::options:
        return option_list(given);
    case information::keys:
        return listed_record_keys();
    case information::rules:
        return listed_rules();
    case information::none:
        break;
    }
    return "";
}

} // namespace tool
