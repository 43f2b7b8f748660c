#include "writing/forms.h"

#include "writing/document.h"

#include <algorithm>

namespace tool
{

namespace
{

template <auto operation>
Qel_hash_dict_t *generate(Qel_hash_dict_t *record, const Qel_rcpt_config_t &config,
                          const layout & /*layout*/)
{
    return operation(record, &config);
}

Qel_hash_dict_t *generate_plain(Qel_hash_dict_t *record, const Qel_rcpt_config_t &config,
                                const layout &layout)
{
    return Qel_rcpt_generate_plain(record, &config, layout.width, layout.line_break.c_str());
}

// The one place that tells the forms apart.
constexpr printed_form printed_forms[] = {
    {"plain", generate_plain, text_document, ".txt"},
    {"html", generate<Qel_rcpt_generate_html>, html_document, ".html"},
    {"xml", generate<Qel_rcpt_generate_xml>, xml_document, ".xml"},
    {"json", generate<Qel_rcpt_generate_json>, json_document, ".json"},
    {"moneris", generate<Qel_rcpt_generate_plain_moneris>, text_document, ""},
    {"moneris-ecomm", generate<Qel_rcpt_generate_plain_moneris_ecomm>, text_document, ""},
};

static_assert(std::ranges::equal(printed_forms, qel_rcpt::forms, {}, &printed_form::name,
                                 &qel_rcpt::form::name),
              "every form has its row here");

} // namespace

const printed_form &printed(const qel_rcpt::form &form)
{
    return printed_forms[&form - qel_rcpt::forms];
}

std::string as_text(const std::vector<receipt> &receipts, const layout &layout)
{
    return printed(*layout.form).document(receipts, layout.line_break);
}

const qel_rcpt::form *form_of_file(std::string_view file_name)
{
    for (const auto &[name, generate, document, ending] : printed_forms) {
        if (!ending.empty() && file_name.ends_with(ending))
            return &qel_rcpt::form_named(name);
    }
    return nullptr;
}

} // namespace tool
