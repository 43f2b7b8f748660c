#include "options.h"

#include "messages.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <utility>

namespace tool
{

namespace
{

constexpr size_t least_width = 10;
constexpr size_t most_width = 10000;
constexpr size_t most_jobs = 256;
constexpr size_t most_lines = 1'000'000'000'000'000;

using word_list = std::vector<std::string_view>;

template <typename T>
using choice = std::pair<std::string_view, T>;

template <typename T, size_t N>
word_list words_of(const choice<T> (&choices)[N])
{
    word_list words;
    for (const auto &[word, value] : choices)
        words.push_back(word);
    return words;
}

[[noreturn]] void reject(const std::string &given, const word_list &words)
{
    throw std::invalid_argument(in_quotes(given) + " is unknown, expected " + listed(words));
}

template <typename T, size_t N>
T choose(const choice<T> (&choices)[N], const std::string &given)
{
    for (const auto &[word, value] : choices) {
        if (word == given)
            return value;
    }
    reject(given, words_of(choices));
}

constexpr choice<const char *> line_breaks[] = {{"lf", "\n"}, {"crlf", "\r\n"}};

enum class copies { customer, merchant, both };

constexpr choice<copies> copy_words[] = {
    {"customer", copies::customer}, {"merchant", copies::merchant}, {"both", copies::both}};

constexpr choice<output_format> formats[] = {{"text", output_format::text},
                                             {"json", output_format::json}};

word_list form_names(const options & /*given*/)
{
    word_list names;
    for (const qel_rcpt::form &known : qel_rcpt::forms)
        names.push_back(known.name);
    return names;
}

word_list block_names(const options &given)
{
    return blocks_of(*given.layout.form);
}

// A number of what is named, within its bounds.
size_t to_number(const std::string &given, std::string_view what, size_t least, size_t most)
{
    size_t number = 0;
    const char *const end = given.data() + given.size();
    const auto [stop, error] = std::from_chars(given.data(), end, number);
    if (error != std::errc() || stop != end || number < least || number > most)
        throw std::invalid_argument(in_quotes(given) + " is not a " + std::string(what) +
                                    ", expected a number from " + std::to_string(least) + " to " +
                                    std::to_string(most));
    return number;
}

const std::string &file_name(const std::string &given)
{
    if (given.empty())
        throw std::invalid_argument("the name is empty, expected the name of a file");
    return given;
}

void set_form(options &taken, const std::string &given)
{
    const word_list names = form_names(taken);
    if (std::ranges::find(names, given) == names.end())
        reject(given, names);
    taken.layout.form = &qel_rcpt::form_named(given);
    taken.is_form_given = true;
}

void set_width(options &taken, const std::string &given)
{
    taken.layout.width = to_number(given, "width", least_width, most_width);
}

void set_line_break(options &taken, const std::string &given)
{
    taken.layout.line_break = choose(line_breaks, given);
}

void set_copy(options &taken, const std::string &given)
{
    const copies wanted = choose(copy_words, given);
    taken.layout.customer_copy = wanted != copies::merchant;
    taken.layout.merchant_copy = wanted != copies::customer;
    taken.both_copies = wanted == copies::both;
}

void add_block(options &taken, const std::string &given)
{
    taken.layout.blocks.push_back(given);
}

void set_merchant_file(options &taken, const std::string &given)
{
    taken.merchant_file = file_name(given);
}

void add_key(options &taken, const std::string &given)
{
    taken.added.over.push_back(to_addition(given));
}

void set_format(options &taken, const std::string &given)
{
    taken.format = choose(formats, given);
}

void set_output_file(options &taken, const std::string &given)
{
    taken.output_file = file_name(given);
}

void set_jobs(options &taken, const std::string &given)
{
    taken.jobs = to_number(given, "number of jobs", 1, most_jobs);
}

void set_start_line(options &taken, const std::string &given)
{
    taken.start_line = to_number(given, "line", 1, most_lines);
}

template <auto flag>
void turn_on(options &taken, const std::string & /*given*/)
{
    taken.*flag = true;
}

template <information asked>
void ask(options &taken, const std::string & /*given*/)
{
    taken.information = asked;
}

bool is_plain(const options &given)
{
    return is_form(given.layout, "plain");
}

bool is_text(const options &given)
{
    return !given.batch && given.format != output_format::json;
}

constexpr use plain_only = {is_plain, "--form plain with it"};

// Blocks of the other forms keep their own line breaks, so that it ends only lines between them.
constexpr use plain_or_text = {
    [](const options &given) { return is_plain(given) || is_text(given); },
    "--form plain with it, or text as output"};

constexpr use with_batch = {[](const options &given) { return given.batch; }, "--batch with it"};

constexpr use html_only = {[](const options &given) { return is_form(given.layout, "html"); },
                           "--form html with it"};

std::vector<option_row> make_rows()
{
    constexpr const char *receipt = "Receipt";
    constexpr const char *merchant = "Merchant (instead of what FILE says)";
    constexpr const char *output = "Output";
    constexpr const char *archives = "Archives";

    std::vector<option_row> rows = {
        {receipt, "--form", "FORM",
         "{} (default plain, or what the output file's ending says); moneris has 40 columns, "
         "moneris-ecomm 70",
         set_form, anywhere, form_names},
        {receipt, "--width", "COLUMNS", "width of a plain receipt, 10 to 10000 (default 40)",
         set_width, plain_only},
        {receipt, "--line-break", "BREAK", "what ends a line: {} (default lf)", set_line_break,
         plain_or_text, [](const options &) { return words_of(line_breaks); }},
        {receipt, "--copy", "COPY", "{} (default both)", set_copy, anywhere,
         [](const options &) { return words_of(copy_words); }},
        {receipt, "--block", "NAME", "only this block, such as money; may be repeated", add_block,
         anywhere, block_names, true},
    };
    for (const merchant_setting &setting : merchant_settings()) {
        std::string name = "--" + std::string(setting.name);
        std::ranges::replace(name, '_', '-');
        rows.push_back({merchant, name, setting.value, setting.meaning,
                        [&setting](options &taken, const std::string &given) {
                            setting.set(taken.merchant, given);
                        },
                        anywhere});
        if (setting.words != nullptr)
            rows.back().words = [&setting](const options &) { return setting.words(); };
    }
    rows.insert(
        rows.end(),
        {
            {merchant, "--merchant", "FILE",
             "a file with the merchant's \"config\" and keys in its \"record\", for what FILE does "
             "not say itself",
             set_merchant_file},
            {merchant, "--set", "KEY=VALUE",
             "this record key, whatever the files say; may be repeated", add_key, anywhere, nullptr,
             true},
            {output, "--output", "FORMAT", "{} (default text); json: the blocks as one object",
             set_format, anywhere, [](const options &) { return words_of(formats); }},
            {output, "--page", "",
             "with --form html: one copy as a page with its style sheet, the customer copy unless "
             "--copy merchant",
             turn_on<&options::page>, html_only},
            {output, "--email", "",
             "as --page, for programs that read mail: a table, and styles in its elements alone",
             turn_on<&options::email>, html_only},
            {output, "-o,--output-file", "FILE", "write to FILE instead of standard output",
             set_output_file},
            {output, "-q,--quiet", "",
             "no warnings, not even of card numbers; no progress or summary of --batch",
             turn_on<&options::quiet>},
            {output, "-h,--help", "", "show this help", ask<information::help>},
            {output, "--version", "", "show the version", ask<information::version>},
            {"", "--list-options", "", "the options a line each, for completion",
             ask<information::options>},
            {archives, "--batch", "",
             "a FILE holds one JSON object a line, and so does the output: the line's number and "
             "its blocks, or what is wrong with it",
             turn_on<&options::batch>},
            {archives, "--jobs", "N", "with --batch: render with N threads (default: the cores)",
             set_jobs, with_batch},
            {archives, "--start-line", "N",
             "with --batch: leave out the lines before this one of the first FILE", set_start_line,
             with_batch},
        });
    return rows;
}

} // namespace

std::vector<std::string> options::inputs() const
{
    std::vector<std::string> all = files;
    if (!merchant_file.empty())
        all.push_back(merchant_file);
    return all;
}

const std::vector<option_row> &option_rows()
{
    static const std::vector<option_row> rows = make_rows();
    return rows;
}

std::string long_name(const option_row &row)
{
    return row.name.substr(row.name.find("--"));
}

} // namespace tool
