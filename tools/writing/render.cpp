#include "writing/render.h"

#include "writing/forms.h"

#include <algorithm>

namespace tool
{

namespace
{

// Some merchants get their receipt in another form than the one asked for.
const qel_rcpt::form &form_for(const qel_rcpt::form &asked, const Qel_rcpt_config_t &config)
{
    const bool is_ecommerce = (config.industry & QEL_RCPT_IND_ECOMM) != 0;
    return is_ecommerce && !asked.ecommerce.empty() ? qel_rcpt::form_named(asked.ecommerce) : asked;
}

bool is_shown(std::string_view key, const layout &layout)
{
    const bool is_customer = key.starts_with("cust_");
    if (!(is_customer ? layout.customer_copy : layout.merchant_copy))
        return false;
    return layout.blocks.empty() ||
           std::ranges::find(layout.blocks, key.substr(key.find('_') + 1)) != layout.blocks.end();
}

} // namespace

std::vector<std::string_view> blocks_of(const qel_rcpt::form &form)
{
    std::vector<std::string_view> blocks(form.blocks.begin(), form.blocks.end());
    if (form.ecommerce.empty())
        return blocks;
    for (const std::string_view name : qel_rcpt::form_named(form.ecommerce).blocks) {
        if (std::ranges::find(blocks, name) == blocks.end())
            blocks.push_back(name);
    }
    return blocks;
}

receipt render(Qel_hash_dict_t *record, const Qel_rcpt_config_t &config, const layout &layout)
{
    if (layout.form->is_text && !layout.raw)
        Qel_rcpt_strip_control(record);
    const qel_rcpt::form &form = form_for(*layout.form, config);
    receipt shown{qel::dict(printed(*layout.form).generate(record, config, layout)),
                  {},
                  &form,
                  form.line_break.empty() ? layout.line_break : std::string(form.line_break),
                  form.width == 0 ? layout.width : form.width};
    shown.blocks.reserve(Qel_hash_dict_num_keys(shown.all.get()));
    for (const auto [key, text] : qel::pairs(shown.all.get())) {
        if (is_shown(key, layout))
            shown.blocks.push_back({key, text});
    }
    return shown;
}

} // namespace tool
