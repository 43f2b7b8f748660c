// Many threads render every form at once, between one init and one deinit. Worth most under the
// thread sanitizer.
#include "reading/record_file.h"
#include "test_record.hpp"

#include <qel_rcpt.h>

#include <array>
#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace
{

struct sample {
    tool::record_file file;
    Qel_rcpt_config_t config;
};

sample read_sample(const std::string &name)
{
    const bool quiet = true;
    sample read{tool::read_record_file(QELRCPT_RECORDS "/" + name, quiet), {}};
    read.config = tool::merchant_config({}, read.file.merchant);
    return read;
}

// Records with a time of their own; one zone is a file's, another the system's.
std::vector<sample> read_samples()
{
    std::vector<sample> samples;
    for (const char *name : {"chip-credit-sale.json", "euro-sale-german.json",
                             "restaurant-preauth-signature.json", "cash-dual-pricing.json",
                             "moneris-interac-chip-sale.json", "moneris-ecomm-purchase.json"})
        samples.push_back(read_sample(name));
    samples.front().config.merch_timezone = nullptr;
    return samples;
}

qel::dict copy_of(const Qel_hash_dict_t *record)
{
    qel::dict copy(Qel_hash_dict_create(16, 75, QEL_HASH_DICT_NONE));
    for (const auto [key, value] : qel::pairs(record))
        Qel_hash_dict_insert(copy.get(), key, value);
    return copy;
}

using receipt = std::vector<std::pair<std::string, std::string>>;

receipt taken(Qel_hash_dict_t *new_blocks)
{
    const qel::dict blocks(new_blocks);
    receipt all;
    for (const auto [key, text] : qel::pairs(blocks.get()))
        all.emplace_back(key, text);
    return all;
}

// All forms of a sample. The processor's generators may change the record, so they get one that no
// other thread has; the others share it.
std::array<receipt, 6> render(const sample &from)
{
    const Qel_hash_dict_t *record = from.file.record.get();
    const Qel_rcpt_config_t *config = &from.config;
    const qel::dict own = copy_of(record);
    return {taken(Qel_rcpt_generate_plain(record, config, 40, "\n")),
            taken(Qel_rcpt_generate_html(record, config)),
            taken(Qel_rcpt_generate_xml(record, config)),
            taken(Qel_rcpt_generate_json(record, config)),
            taken(Qel_rcpt_generate_plain_moneris(own.get(), config)),
            taken(Qel_rcpt_generate_plain_moneris_ecomm(own.get(), config))};
}

TEST(Threads, RenderAllFormsAlike)
{
    constexpr std::size_t threads = 8;
    constexpr int rounds = 25;
    const std::vector<sample> samples = read_samples();

    Qel_rcpt_init();
    std::vector<std::array<receipt, 6>> alone;
    for (const sample &one : samples) {
        alone.push_back(render(one));
        for (const receipt &form : alone.back())
            ASSERT_FALSE(form.empty());
    }

    std::atomic<int> different = 0;
    std::latch start(threads);
    std::vector<std::thread> crowd;
    for (std::size_t thread = 0; thread < threads; ++thread) {
        crowd.emplace_back([&, thread] {
            start.arrive_and_wait();
            for (int round = 0; round < rounds; ++round) {
                for (std::size_t i = 0; i < samples.size(); ++i) {
                    const std::size_t at = (i + thread) % samples.size();
                    different += render(samples[at]) == alone[at] ? 0 : 1;
                }
            }
        });
    }
    for (std::thread &one : crowd)
        one.join();
    Qel_rcpt_deinit();
    EXPECT_EQ(different, 0);
}

} // namespace
