// Every sample record in its forms against the receipt that was read and checked in:
// tests/receipts/FORM/SAMPLE. scripts/update-receipts writes them anew after a wanted change; read
// the difference before you commit it.
#include "reading/record_file.h"
#include "utility.hpp"
#include "writing/forms.h"

#include <algorithm>

namespace
{

std::vector<fs::path> sample_records()
{
    std::vector<fs::path> samples;
    for (const auto &entry : fs::directory_iterator(QELRCPT_RECORDS))
        samples.push_back(entry.path());
    std::ranges::sort(samples);
    return samples;
}

// The processor's own samples are for its layouts, which bring the e-commerce one along.
bool is_for(const fs::path &sample, const qel_rcpt::form &form)
{
    const bool is_moneris_sample = sample.filename().string().starts_with("moneris");
    return is_moneris_sample ? form.name == "moneris" : !form.name.starts_with("moneris");
}

std::string render_sample(const fs::path &sample, const qel_rcpt::form &form)
{
    const tool::record_file file = tool::read_record_file(sample.string());
    tool::layout layout;
    layout.form = &form;
    return tool::as_text(
        {tool::render(file.record.get(), tool::merchant_config({}, file.merchant), layout)},
        layout);
}

class Receipts : public testing::TestWithParam<fs::path>
{
  protected:
    static void SetUpTestSuite() { Qel_rcpt_init(); }
    static void TearDownTestSuite() { Qel_rcpt_deinit(); }
};

TEST_P(Receipts, ReadAsTheyWereReadAndApproved)
{
    for (const qel_rcpt::form &form : qel_rcpt::forms) {
        if (!is_for(GetParam(), form))
            continue;
        SCOPED_TRACE(form.name);
        const fs::path approved =
            fs::path(QELRCPT_SOURCE "/tests/receipts") / form.name / GetParam().filename();
        EXPECT_EQ(render_sample(GetParam(), form), read_file(approved.string() + ".txt"));
    }
}

// The merchant's blocks when the customer's copy is in the language given.
tool::receipt merchant_blocks(const fs::path &sample, const qel_rcpt::form &form,
                              Qel_rcpt_lang_t cust_lang, Qel_rcpt_lang_t merch_lang)
{
    const tool::record_file file = tool::read_record_file(sample.string());
    Qel_rcpt_config_t config = tool::merchant_config({}, file.merchant);
    config.cust_lang = cust_lang;
    config.merch_lang = merch_lang;
    tool::layout layout;
    layout.form = &form;
    layout.customer_copy = false;
    return tool::render(file.record.get(), config, layout);
}

// Blocks that read the same on both copies are built once when the copies share a language. The
// merchant must not see any of that.
TEST_P(Receipts, GiveTheMerchantTheSameWhateverTheCustomersLanguage)
{
    for (const qel_rcpt::form &form : qel_rcpt::forms) {
        SCOPED_TRACE(form.name);
        const auto shared = merchant_blocks(GetParam(), form, QEL_RCPT_LANG_FR, QEL_RCPT_LANG_FR);
        const auto own = merchant_blocks(GetParam(), form, QEL_RCPT_LANG_EN, QEL_RCPT_LANG_FR);
        ASSERT_EQ(shared.blocks.size(), own.blocks.size());
        for (size_t i = 0; i < own.blocks.size(); ++i) {
            EXPECT_EQ(shared.blocks[i].key, own.blocks[i].key);
            EXPECT_EQ(shared.blocks[i].text, own.blocks[i].text);
        }
    }
}

std::string test_name(const testing::TestParamInfo<fs::path> &sample)
{
    std::string name = sample.param.stem().string();
    std::ranges::replace(name, '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Samples, Receipts, testing::ValuesIn(sample_records()), test_name);

} // namespace
