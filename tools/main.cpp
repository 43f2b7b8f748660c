// qelrcpt: prints the receipts of card transactions.
#include "archives/batch.h"
#include "checking/check.h"
#include "command_line.h"
#include "messages.h"
#include "out_of_memory.h"
#include "reading/input_file.h"
#include "reading/record_file.h"
#include "signals.h"
#include "writing/document.h"
#include "writing/forms.h"
#include "writing/html_email.h"
#include "writing/html_page.h"
#include "writing/output.h"
#include "writing/paper.h"
#include "writing/playground.h"
#include "writing/render.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <exception>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace
{

// The library, for as long as it is used.
struct library {
    library() { Qel_rcpt_init(); }
    ~library() { Qel_rcpt_deinit(); }
    library(const library &) = delete;
    library &operator=(const library &) = delete;
};

struct read_record {
    tool::record_file file; // without its text
    Qel_rcpt_config_t config;
};

// Warns of what is wrong with the record. Nobody asks for places in the text after that, and a
// large one would stand in memory beside its receipt.
read_record read(const std::string &name, const tool::options &options)
{
    read_record read{tool::read_record_file(name), {}};
    read.config = tool::complete(read.file, options.merchant, options.added);
    tool::warn_of_record(read.file, read.config, options);
    std::string().swap(read.file.text);
    return read;
}

// One copy by itself: the customer's, unless only the merchant's is asked for.
std::string make_page(const tool::options &options)
{
    const std::string &name = options.files.front();
    const auto [file, config] = read(name, options);
    const tool::layout &layout = options.layout;
    if (!layout.customer_copy && !Qel_rcpt_generate_merch_copy(config.industry))
        throw tool::input_error(name + ": this industry has no merchant copy");
    const tool::html_copy copy = tool::render_html_copy(file.record.get(), config, layout);
    if (copy.shown.blocks.empty()) {
        const std::vector<std::string_view> wanted(layout.blocks.begin(), layout.blocks.end());
        throw tool::input_error(name + ": the receipt has no " + tool::listed(wanted) + " block");
    }
    return options.email ? tool::html_email(copy) : tool::html_page(copy);
}

// The copies for a printer, or a picture of them.
std::string make_paper(const tool::options &options)
{
    const bool is_star = options.format == tool::output_format::star;
    tool::paper_roll roll(options.paper,
                          is_star ? QEL_RCPT_PRINTER_LANG_STARPRNT : QEL_RCPT_PRINTER_LANG_ESCPOS);
    for (const std::string &name : options.files) {
        const auto [file, config] = read(name, options);
        const tool::receipt shown = tool::render(file.record.get(), config, options.layout);
        roll.add(tool::shown_file_name(name), shown, file.record.get(), options.quiet);
    }
    return options.format == tool::output_format::png ? roll.as_png() : roll.bytes();
}

// The page shows what is wrong with the record; a card number is a warning here as everywhere.
std::string make_playground(const tool::options &options)
{
    tool::record_file file = tool::read_record_file(options.files.front());
    const Qel_rcpt_config_t config = tool::complete(file, options.merchant, options.added);
    tool::warn_of_record(file, config, options);
    return tool::playground(file, config, options.merchant, options.added, options.layout);
}

// Everything is rendered before anything is written, so that there is never half an output.
std::string make_output(const tool::options &options)
{
    if (options.page || options.email)
        return make_page(options);
    if (options.playground)
        return make_playground(options);
    if (options.format && tool::is_paper(*options.format))
        return make_paper(options);
    std::vector<tool::receipt> receipts;
    for (const std::string &name : options.files) {
        const auto [file, config] = read(name, options);
        receipts.push_back(tool::render(file.record.get(), config, options.layout));
    }
    return options.format == tool::output_format::json ? tool::as_json(receipts)
                                                       : tool::as_text(receipts, options.layout);
}

void write(const std::string &file, std::span<const std::string> inputs, std::string_view text,
           bool is_binary = false)
{
    tool::output output(file, inputs);
    if (is_binary && output.is_users_terminal())
        throw tool::usage_error("--output: this is not for a terminal, expected -o FILE, a pipe or "
                                "a printer");
    if (is_binary)
        output.write_bytes(text);
    else
        output.write(text);
    output.finish();
}

// Who sees nothing happen should know what is waited for.
void tell_of_terminal(const tool::options &options)
{
    const bool is_read = std::ranges::count(options.inputs(), "-") > 0;
    if (is_read && !options.quiet && ::isatty(STDIN_FILENO) == 1)
        tool::complain("reading standard input; end it with Ctrl-D, or see qelrcpt --help");
}

// A file that is opened here never gets the number of a standard stream that the caller closed, or
// messages would be written into receipts. What takes the numbers can be neither read nor written.
void keep_standard_descriptors()
{
    int fd = 0;
    while (fd >= 0 && fd <= STDERR_FILENO)
        fd = ::open("/", O_PATH | O_CLOEXEC);
    ::close(fd);
}

int run(int argc, char **argv)
{
    tool::options options = tool::parse_options(argc, argv);
    if (options.information != tool::information::none) {
        write("", {}, tool::information_text(options));
        return 0;
    }
    const library library;
    tell_of_terminal(options);
    tool::read_merchant_file(options.added, options.merchant_file);
    tool::warn_of_additions(options);
    if (options.batch)
        return tool::run_batch(options);
    if (options.check) {
        const tool::checked_records checked = tool::check_records(options);
        write(options.output_file, options.inputs(), checked.report);
        return checked.has_errors ? 1 : 0;
    }
    const bool is_binary = options.format && tool::is_paper(*options.format);
    write(options.output_file, options.inputs(), make_output(options), is_binary);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    keep_standard_descriptors();
    // What is left to do is done before the program ends.
    const bool is_pipe_ignored = std::signal(SIGPIPE, SIG_IGN) == SIG_IGN;
    std::signal(SIGXFSZ, SIG_IGN);
    tool::prepare_for_out_of_memory();
    try {
        return run(argc, argv);
    } catch (const tool::reader_gone &fault) {
        if (!is_pipe_ignored)
            tool::end_by(SIGPIPE); // quietly, as filters do
        tool::complain(fault.what());
    } catch (const tool::usage_error &fault) {
        tool::complain(fault.what() + std::string("\nsee qelrcpt --help"));
        return 2;
    } catch (const std::bad_alloc &) {
        tool::complain_of_memory();
    } catch (const std::exception &fault) {
        tool::complain(fault.what());
    }
    return 1;
}
