#include "options.h"

#include "checking/findings.h"
#include "messages.h"
#include "option_values.h"
#include "writing/forms.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace tool
{

namespace
{

constexpr size_t least_width = 10;
constexpr size_t most_width = 10000;
constexpr size_t most_jobs = 256;
constexpr size_t most_lines = std::min<uint64_t>(1'000'000'000'000'000, PTRDIFF_MAX);
constexpr size_t most_byte = 255;

constexpr choice<const char *> line_breaks[] = {{"lf", "\n"}, {"crlf", "\r\n"}};

enum class copies { customer, merchant, both };

constexpr choice<copies> copy_words[] = {
    {"customer", copies::customer}, {"merchant", copies::merchant}, {"both", copies::both}};

constexpr choice<output_format> formats[] = {
    {"text", output_format::text},     {"json", output_format::json},
    {"escpos", output_format::escpos}, {"star", output_format::star},
#ifdef QELRCPT_PNG
    {"png", output_format::png},
#endif
};

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
    taken.has_width = true;
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

word_list rule_names(const options & /*given*/)
{
    word_list names;
    for (const Qel_rcpt_rule_t &rule : rules())
        names.emplace_back(rule.name);
    return names;
}

template <auto names>
void add_rule(options &taken, const std::string &given)
{
    const word_list known = rule_names(taken);
    if (std::ranges::find(known, given) == known.end())
        throw std::invalid_argument("there is no rule " + in_quotes(given) +
                                    ", expected one that qelrcpt --rules lists");
    (taken.*names).push_back(given);
}

void set_jobs(options &taken, const std::string &given)
{
    taken.jobs = to_number(given, "number of jobs", 1, most_jobs);
}

void set_start_line(options &taken, const std::string &given)
{
    taken.start_line = to_number(given, "line", 1, most_lines);
}

void set_code_page(options &taken, const std::string &given)
{
    taken.paper.code_page = choose(qel_rcpt::code_pages, given);
}

void set_code_page_number(options &taken, const std::string &given)
{
    taken.paper.code_page_number =
        static_cast<uint8_t>(to_number(given, "number of a code page", 0, most_byte));
}

void set_paper(options &taken, const std::string &given)
{
    taken.paper.columns =
        static_cast<uint16_t>(to_number(given, "width of paper", least_width, most_byte));
}

void set_cut(options &taken, const std::string &given)
{
    taken.paper.cut = choose(qel_rcpt::cuts, given);
}

void set_feed(options &taken, const std::string &given)
{
    taken.paper.feed = static_cast<uint8_t>(to_number(given, "number of lines", 0, most_byte));
}

void set_logo(options &taken, const std::string &given)
{
    constexpr std::string_view key = "key:";
    taken.paper.logo_key.clear();
    taken.paper.logo_number = 0;
    if (given.starts_with(key) && given.size() == key.size() + 2)
        taken.paper.logo_key = given.substr(key.size());
    else if (given.starts_with(key))
        throw std::invalid_argument(in_quotes(given) + " is not a key, expected two characters");
    else
        taken.paper.logo_number = static_cast<uint8_t>(to_number(given, "logo", 1, most_byte));
}

void set_qr(options &taken, const std::string &given)
{
    if (given.empty())
        throw std::invalid_argument("the text is empty, expected what the QR code is to hold");
    taken.paper.qr_text = given;
}

void set_qr_level(options &taken, const std::string &given)
{
    taken.paper.qr_level = choose(qel_rcpt::qr_levels, given);
}

void set_qr_module(options &taken, const std::string &given)
{
    taken.paper.qr_module =
        static_cast<uint8_t>(to_number(given, "size in dots", 1, qel_rcpt::most_escpos_qr_module));
}

template <auto flag>
void turn_on_paper(options &taken, const std::string & /*given*/)
{
    taken.paper.*flag = true;
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
    return !given.batch && given.format.value_or(output_format::text) == output_format::text;
}

constexpr use plain_only = {is_plain, "--form plain with it"};

constexpr use on_paper = {
    [](const options &given) { return given.format && is_paper(*given.format); },
    "--output escpos, star or png with it"};

constexpr use with_qr = {
    [](const options &given) { return on_paper.is_met(given) && !given.paper.qr_text.empty(); },
    "--qr with it"};

// Blocks of the other forms keep their own line breaks, so that it ends only lines between them.
constexpr use plain_or_text = {[](const options &given) {
                                   return is_text(given) ||
                                          (is_plain(given) && !on_paper.is_met(given));
                               },
                               "--form plain with it, or text as output"};

constexpr use with_batch = {[](const options &given) { return given.batch; }, "--batch with it"};

constexpr use html_only = {[](const options &given) { return is_form(given.layout, "html"); },
                           "--form html with it"};

using row_list = std::vector<option_row>;

row_list receipt_rows()
{
    constexpr const char *group = "Receipt";
    return {
        {group, "--form", "FORM",
         "{} (default plain, or what the output file's ending says); moneris has 40 columns, "
         "moneris-ecomm 70",
         set_form, anywhere, form_names},
        {group, "--width", "COLUMNS", "width of a plain receipt, 10 to 10000 (default 40)",
         set_width, plain_only},
        {group, "--line-break", "BREAK", "what ends a line: {} (default lf)", set_line_break,
         plain_or_text, [](const options &) { return words_of(line_breaks); }},
        {group, "--copy", "COPY", "{} (default both)", set_copy, anywhere,
         [](const options &) { return words_of(copy_words); }},
        {group, "--block", "NAME", "only this block, such as money; may be repeated", add_block,
         anywhere, block_names, true},
    };
}

row_list merchant_rows()
{
    constexpr const char *group = "Merchant (instead of what FILE says)";
    row_list rows;
    for (const merchant_setting &setting : merchant_settings()) {
        std::string name = "--" + std::string(setting.name);
        std::ranges::replace(name, '_', '-');
        rows.push_back({group, name, setting.value, setting.meaning,
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
            {group, "--merchant", "FILE",
             "a file with the merchant's \"config\" and keys in its \"record\", for what FILE does "
             "not say itself",
             set_merchant_file},
            {group, "--set", "KEY=VALUE",
             "this record key, whatever the files say; may be repeated", add_key, anywhere, nullptr,
             true},
        });
    return rows;
}

row_list output_rows()
{
    constexpr const char *group = "Output";
    return {
        {group, "--output", "FORMAT",
         "{} (default text); json: the blocks as one object; escpos and star: what receipt "
         "printers print; png: a picture of that, where it is built in",
         set_format, anywhere, [](const options &) { return words_of(formats); }},
        {group, "--page", "",
         "with --form html: one copy as a page with its style sheet, the customer copy unless "
         "--copy merchant",
         turn_on<&options::page>, html_only},
        {group, "--email", "",
         "as --page, for programs that read mail: a table, and styles in its elements alone",
         turn_on<&options::email>, html_only},
        {group, "--playground", "",
         "a page to try the record in a browser, where it can be changed; --form, --width and "
         "--copy are what it opens with",
         turn_on<&options::playground>},
        {group, "--raw", "",
         "let control characters of the record through, which printers and terminals obey",
         [](options &taken, const std::string & /*given*/) { taken.layout.raw = true; }, text_only},
        {group, "-o,--output-file", "FILE", "write to FILE instead of standard output",
         set_output_file},
        {group, "-q,--quiet", "",
         "no warnings, not even of card numbers (but --strict says what is wrong); no progress "
         "or summary of --batch",
         turn_on<&options::quiet>},
        {group, "--keys", "", "list the keys of a record, each with its meaning",
         ask<information::keys>},
        {group, "--rules", "",
         "list the rules of the check, each with its severity and what it wants",
         ask<information::rules>},
        {group, "-h,--help", "", "show this help", ask<information::help>},
        {group, "--version", "", "show the version", ask<information::version>},
        {"", "--list-options", "", "the options a line each, for completion",
         ask<information::options>},
    };
}

row_list paper_rows()
{
    constexpr const char *group = "Paper (with --output escpos, star or png)";
    return {
        {group, "--paper", "COLUMNS",
         "characters of font A across the paper, not its millimetres, 10 to 255: 48 (default) "
         "or "
         "42 on 80 mm, 32 on 58 mm; the width of a plain receipt too, unless --width",
         set_paper, on_paper},
        {group, "--code-page", "PAGE", "{} (default cp858)", set_code_page, on_paper,
         [](const options &) { return words_of(qel_rcpt::code_pages); }},
        {group, "--code-page-number", "N", "the printer's own number of the page, 0 to 255",
         set_code_page_number, on_paper},
        {group, "--no-emphasis", "", "every line in plain type",
         turn_on_paper<&paper_options::no_emphasis>, on_paper},
        {group, "--cut", "CUT", "after each copy: {} (default full)", set_cut, on_paper,
         [](const options &) { return words_of(qel_rcpt::cuts); }},
        {group, "--feed", "LINES", "feed so many lines before the cut, 0 to 255", set_feed,
         on_paper},
        {group, "--logo", "LOGO",
         "above each copy the logo that is stored in the printer under this number, 1 to 255, "
         "or under key:XY",
         set_logo, on_paper},
        {group, "--barcode", "", "below each copy the order number as a CODE128 barcode",
         turn_on_paper<&paper_options::barcode>, on_paper},
        {group, "--qr", "TEXT", "below each copy a QR code of this text, such as a link", set_qr,
         on_paper},
        {group, "--qr-level", "LEVEL", "its error correction: {} (default M)", set_qr_level,
         with_qr, [](const options &) { return words_of(qel_rcpt::qr_levels); }},
        {group, "--qr-module", "DOTS",
         "the size of its modules, 1 to 16 dots (default: what fits, to 6)", set_qr_module,
         with_qr},
        {group, "--drawer", "", "open the cash drawer before the first copy",
         turn_on_paper<&paper_options::drawer>, on_paper},
        {group, "--other-drawer", "", "open the one on the connector's other pin",
         turn_on_paper<&paper_options::other_drawer>, on_paper},
    };
}

row_list check_rows()
{
    constexpr const char *group = "Checks";
    return {
        {group, "--check", "",
         "what is wrong with the records instead of their receipts, worst first; with --output "
         "json as data; with --batch a line for each record of which anything is",
         turn_on<&options::check>},
        {group, "--strict", "", "write no receipt of a record that has errors",
         turn_on<&options::strict>},
        {group, "--rule", "NAME",
         "look at this rule only, one of those that --rules lists; may be repeated",
         add_rule<&options::rules>, anywhere, rule_names, true},
        {group, "--no-rule", "NAME", "leave this rule out; may be repeated",
         add_rule<&options::left_out_rules>, anywhere, rule_names, true},
    };
}

row_list archive_rows()
{
    constexpr const char *group = "Archives";
    return {
        {group, "--batch", "",
         "a FILE holds one JSON object a line, and so does the output: the line's number and "
         "its blocks, or what is wrong with it",
         turn_on<&options::batch>},
        {group, "--jobs", "N", "with --batch: render with N threads, 1 to 256 (default: the cores)",
         set_jobs, with_batch},
        {group, "--start-line", "N",
         "with --batch: leave out the lines before this one of the first FILE", set_start_line,
         with_batch},
    };
}

row_list make_rows()
{
    row_list rows;
    for (const auto group :
         {receipt_rows, merchant_rows, output_rows, paper_rows, check_rows, archive_rows})
        std::ranges::move(group(), std::back_inserter(rows));
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
