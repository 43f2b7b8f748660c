// Every sample record in its forms against the receipt that was read and checked in:
// tests/receipts/FORM/SAMPLE. scripts/update-receipts writes them anew after a wanted change; read
// the difference before you commit it.
#include "record_file.h"
#include "render.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace
{

namespace fs = std::filesystem;

std::string read_text(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<fs::path> sample_records()
{
    std::vector<fs::path> samples;
    for (const auto &entry : fs::directory_iterator(QELRCPT_RECORDS))
        samples.push_back(entry.path());
    std::ranges::sort(samples);
    return samples;
}

// The processor's own samples are for its layouts, which bring the e-commerce one along.
bool is_for(const fs::path &sample, tool::form form)
{
    const bool is_moneris_sample = sample.filename().string().starts_with("moneris");
    return is_moneris_sample ? form == tool::form::moneris
                             : form != tool::form::moneris && form != tool::form::moneris_ecomm;
}

std::string render_sample(const fs::path &sample, tool::form form)
{
    const bool quiet = true;
    const tool::record_file file = tool::read_record_file(sample.string(), quiet);
    tool::layout layout;
    layout.form = form;
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
    for (const tool::form_facts &form : tool::forms()) {
        if (!is_for(GetParam(), form.id))
            continue;
        SCOPED_TRACE(form.name);
        const fs::path approved = fs::path(QELRCPT_RECEIPTS) / form.name / GetParam().filename();
        EXPECT_EQ(render_sample(GetParam(), form.id), read_text(approved.string() + ".txt"));
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
