// qelrcpt: prints the receipts of card transactions.
#include "html_page.h"
#include "messages.h"
#include "options.h"
#include "output.h"
#include "record_file.h"
#include "render.h"

#include <exception>
#include <variant>
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

// One copy as a page: the customer's, unless only the merchant's is asked for.
std::string make_page(const tool::options &options)
{
    const std::string &name = options.files.front();
    const tool::record_file file = tool::read_record_file(name, options.quiet);
    const Qel_rcpt_config_t config = tool::merchant_config(options.merchant, file.merchant);
    tool::layout layout = options.layout;
    layout.merchant_copy = !layout.customer_copy;
    const tool::receipt copy = tool::render(file.record.get(), config, layout);
    if (layout.merchant_copy && !Qel_rcpt_generate_merch_copy(config.industry))
        throw tool::input_error(name + ": this industry has no merchant copy");
    const Qel_rcpt_lang_t lang = layout.customer_copy ? config.cust_lang : config.merch_lang;
    return tool::html_page(copy, lang,
                           tool::html_title(file.record.get(), lang, layout.customer_copy));
}

// Everything is rendered before anything is written, so that there is never half an output.
std::string make_output(const tool::options &options)
{
    const library library;
    if (options.page)
        return make_page(options);
    std::vector<tool::receipt> receipts;
    for (const std::string &name : options.files) {
        const tool::record_file file = tool::read_record_file(name, options.quiet);
        const Qel_rcpt_config_t config = tool::merchant_config(options.merchant, file.merchant);
        receipts.push_back(tool::render(file.record.get(), config, options.layout));
    }
    return options.format == tool::output_format::json ? tool::as_json(receipts)
                                                       : tool::as_text(receipts, options.layout);
}

void run(int argc, char **argv)
{
    const auto parsed = tool::parse_options(argc, argv);
    if (const auto *information = std::get_if<tool::information>(&parsed))
        return tool::write_standard_output(information->text);
    const auto &options = std::get<tool::options>(parsed);
    const std::string output = make_output(options);
    if (options.output_file.empty())
        tool::write_standard_output(output);
    else
        tool::write_file(options.output_file, output);
}

} // namespace

int main(int argc, char **argv)
{
    try {
        run(argc, argv);
        return 0;
    } catch (const tool::usage_error &fault) {
        tool::complain(fault.what() + std::string("\nsee qelrcpt --help"));
        return 2;
    } catch (const std::exception &fault) {
        tool::complain(fault.what());
        return 1;
    }
}
