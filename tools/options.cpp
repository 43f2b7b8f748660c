#include "options.h"

#include "messages.h"

#include <CLI/CLI.hpp>

#include <sched.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <stdexcept>
#include <utility>

namespace tool
{

namespace
{

constexpr size_t least_width = 10;
constexpr size_t most_width = 10000;
constexpr size_t most_jobs = 256;

constexpr const char *introduction =
    "Usage: qelrcpt [OPTIONS] [FILE...]\n\n"
    "Prints the receipts of card transactions: the customer copy and the merchant copy.\n\n"
    "A FILE holds one transaction record: a JSON object of its keys, an object\n"
    "{\"config\": {...}, \"record\": {...}} that brings its merchant along, or lines of "
    "key=value.\n"
    "Without FILE, or for -, the record is read from standard input.\n\n";

constexpr const char *conclusion =
    "\nExamples:\n"
    "  qelrcpt sale.json                              both copies, 40 columns wide\n"
    "  qelrcpt --copy customer --width 32 sale.json   the customer copy for a narrow printer\n"
    "  qelrcpt --country CA --currency CAD --customer-lang fr sale.json\n"
    "  qelrcpt --output json --block money sale.json  one block of each copy as data\n"
    "  qelrcpt --form html --page -o sale.html sale.json\n"
    "  printf 'action=sale\\namount=12.34\\n' | qelrcpt --line-break crlf -o receipt.txt\n"
    "  qelrcpt --batch archive.jsonl > receipts.jsonl\n\n"
    "Exit status: 0 when the receipts are written, 1 when the input or the output is at\n"
    "fault, 2 when the command line is.\n";

// The help: the texts above with the options between them, their groups a blank line apart.
class help_formatter : public CLI::Formatter
{
  public:
    std::string make_help(const CLI::App *app, std::string /*name*/,
                          CLI::AppFormatMode mode) const override
    {
        return introduction + make_groups(app, mode) + conclusion;
    }

    std::string make_group(std::string group, bool is_positional,
                           std::vector<const CLI::Option *> options) const override
    {
        return Formatter::make_group(group, is_positional, options).substr(1);
    }
};

template <typename T, size_t N>
T choose(const std::pair<std::string_view, T> (&choices)[N], const std::string &given)
{
    std::vector<std::string_view> words;
    for (const auto &[word, value] : choices) {
        if (word == given)
            return value;
        words.push_back(word);
    }
    throw std::invalid_argument(in_quotes(given) + " is unknown, expected " + listed(words));
}

constexpr std::pair<std::string_view, const char *> line_breaks[] = {{"lf", "\n"},
                                                                     {"crlf", "\r\n"}};

enum class copies { customer, merchant, both };

constexpr std::pair<std::string_view, copies> copy_words[] = {
    {"customer", copies::customer}, {"merchant", copies::merchant}, {"both", copies::both}};

constexpr std::pair<std::string_view, output_format> formats[] = {{"text", output_format::text},
                                                                  {"json", output_format::json}};

form to_form(const std::string &given)
{
    std::vector<std::string_view> names;
    for (const form_facts &known : forms()) {
        if (known.name == given)
            return known.id;
        names.push_back(known.name);
    }
    throw std::invalid_argument(in_quotes(given) + " is unknown, expected " + listed(names));
}

size_t to_width(const std::string &given)
{
    size_t width = 0;
    const char *const end = given.data() + given.size();
    const auto [stop, error] = std::from_chars(given.data(), end, width);
    if (error != std::errc() || stop != end || width < least_width || width > most_width)
        throw std::invalid_argument(in_quotes(given) + " is not a width, expected a number from " +
                                    std::to_string(least_width) + " to " +
                                    std::to_string(most_width));
    return width;
}

size_t to_jobs(const std::string &given)
{
    size_t jobs = 0;
    const char *const end = given.data() + given.size();
    const auto [stop, error] = std::from_chars(given.data(), end, jobs);
    if (error != std::errc() || stop != end || jobs < 1 || jobs > most_jobs)
        throw std::invalid_argument(in_quotes(given) + " is not a number of jobs, expected 1 to " +
                                    std::to_string(most_jobs));
    return jobs;
}

// The cores that this process may use.
size_t usable_cores()
{
    cpu_set_t cores;
    const bool is_known = ::sched_getaffinity(0, sizeof cores, &cores) == 0;
    const size_t count = is_known ? static_cast<size_t>(CPU_COUNT(&cores)) : 1;
    return std::clamp<size_t>(count, 1, most_jobs);
}

std::string to_file_name(const std::string &given)
{
    if (given.empty())
        throw std::invalid_argument("the name is empty, expected the name of a file");
    return given;
}

// An option with one value, of which the last counts; apply throws std::invalid_argument.
template <typename Apply>
CLI::Option *add_value(CLI::App &app, const std::string &name, std::string_view value,
                       std::string_view meaning, Apply apply)
{
    const auto set = [name, apply](const std::string &given) {
        try {
            apply(given);
        } catch (const std::invalid_argument &fault) {
            throw usage_error(name + ": " + fault.what());
        }
    };
    return app.add_option_function<std::string>(name, set, std::string(meaning))
        ->take_last()
        ->option_text(std::string(value));
}

void add_layout_options(CLI::App &app, layout &layout)
{
    constexpr const char *group = "Receipt";
    add_value(
        app, "--form", "FORM",
        "plain (default), html, xml, json, moneris (40 columns) or\nmoneris-ecomm (70 columns)",
        [&](const std::string &given) { layout.form = to_form(given); })
        ->group(group);
    add_value(app, "--width", "COLUMNS", "width of a plain receipt, 10 to 10000 (default 40)",
              [&](const std::string &given) { layout.width = to_width(given); })
        ->group(group);
    add_value(app, "--line-break", "BREAK", "what ends a line: lf (default) or crlf",
              [&](const std::string &given) { layout.line_break = choose(line_breaks, given); })
        ->group(group);
    add_value(app, "--copy", "COPY", "customer, merchant or both (default)",
              [&](const std::string &given) {
                  const copies wanted = choose(copy_words, given);
                  layout.customer_copy = wanted != copies::merchant;
                  layout.merchant_copy = wanted != copies::customer;
              })
        ->group(group);
    app.add_option("--block", layout.blocks, "only this block, such as money; may be repeated")
        ->allow_extra_args(false)
        ->option_text("NAME")
        ->group(group);
}

void add_merchant_options(CLI::App &app, merchant &merchant)
{
    for (const merchant_setting &setting : merchant_settings()) {
        std::string name = "--" + std::string(setting.name);
        std::ranges::replace(name, '_', '-');
        add_value(app, name, setting.value, setting.meaning, [&](const std::string &given) {
            setting.set(merchant, given);
        })->group("Merchant (instead of what FILE says)");
    }
}

void add_output_options(CLI::App &app, options &options)
{
    constexpr const char *group = "Output";
    add_value(app, "--output", "FORMAT", "text (default), or json: the blocks as one object",
              [&](const std::string &given) { options.format = choose(formats, given); })
        ->group(group);
    app.add_flag("--page", options.page,
                 "with --form html: one copy as a page with its style sheet,\n"
                 "the customer copy unless --copy merchant")
        ->group(group);
    add_value(app, "-o", "FILE", "write to FILE instead of standard output",
              [&](const std::string &given) { options.output_file = to_file_name(given); })
        ->group(group);
    app.add_flag("-q,--quiet", options.quiet,
                 "no warnings, not even of card numbers; no progress or summary\nof --batch")
        ->group(group);
    app.set_help_flag("-h,--help", "show this help")->group(group);
    app.set_version_flag("--version", "qelrcpt " QELRCPT_VERSION, "show the version")->group(group);
}

void add_batch_options(CLI::App &app, options &options)
{
    constexpr const char *group = "Archives";
    app.add_flag("--batch", options.batch,
                 "a FILE holds one JSON object a line, and so does the output: the\n"
                 "line's number and its blocks, or what is wrong with it")
        ->group(group);
    add_value(app, "--jobs", "N", "with --batch: render with N threads (default: the cores)",
              [&](const std::string &given) { options.jobs = to_jobs(given); })
        ->group(group);
}

void check_blocks(const layout &layout)
{
    const form_facts &form = facts_of(layout.form);
    for (const std::string &name : layout.blocks) {
        if (std::ranges::find(form.blocks, name) == form.blocks.end())
            throw usage_error("--block: the " + std::string(form.name) + " receipt has no " +
                              in_quotes(name) + ", expected " + listed(form.blocks));
    }
}

// A page holds one copy of one receipt.
void check_page(const options &options)
{
    if (!options.page)
        return;
    if (options.layout.form != form::html)
        throw usage_error("--page: expected --form html with it");
    if (options.format == output_format::json)
        throw usage_error("--page: a page is no JSON, expected no --output json with it");
    if (options.files.size() > 1)
        throw usage_error("--page: expected one FILE");
}

void check_batch(const options &options)
{
    if (options.jobs > 0 && !options.batch)
        throw usage_error("--jobs: expected --batch with it");
    if (!options.batch)
        return;
    if (options.page)
        throw usage_error("--page: expected no --batch with it");
    if (options.format == output_format::text)
        throw usage_error("--output: with --batch every line is JSON, expected no text");
}

} // namespace

std::variant<options, information> parse_options(int argc, char **argv)
{
    options options;
    CLI::App app;
    app.formatter(std::make_shared<help_formatter>());
    app.get_formatter()->column_width(28);
    app.add_option("FILE", options.files)->group("");
    add_layout_options(app, options.layout);
    add_merchant_options(app, options.merchant);
    add_output_options(app, options);
    add_batch_options(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp &) {
        return information{app.help()};
    } catch (const CLI::CallForVersion &version) {
        return information{version.what() + std::string("\n")};
    } catch (const CLI::ArgumentMismatch &fault) {
        const std::string message = fault.what(); // begins with the option and a colon
        throw usage_error(message.substr(0, message.find(':')) + ": expected a value");
    } catch (const CLI::ExtrasError &) {
        throw usage_error("unknown option " + in_quotes(app.remaining().front()));
    } catch (const CLI::ParseError &fault) {
        throw usage_error(fault.what());
    }
    check_blocks(options.layout);
    check_page(options);
    check_batch(options);
    if (options.batch && options.jobs == 0)
        options.jobs = usable_cores();
    if (options.files.empty())
        options.files.emplace_back("-");
    return options;
}

} // namespace tool
