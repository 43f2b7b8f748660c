// Many threads render every form at once, whenever the library's use begins and ends. Worth most
// under the thread sanitizer.
#include "reading/record_file.h"
#include "test_record.hpp"

#include <qel_rcpt_int.h>

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
    sample read{tool::read_record_file(QELRCPT_RECORDS "/" + name), {}};
    read.config = tool::merchant_config({}, read.file.merchant);
    // So long that its hash is salted.
    Qel_hash_dict_insert(read.file.record.get(), std::string(100, 'k').c_str(), "");
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

using receipts = std::vector<std::array<receipt, 6>>;

receipts render_all(const std::vector<sample> &samples)
{
    receipts all;
    for (const sample &one : samples)
        all.push_back(render(one));
    return all;
}

constexpr std::size_t threads = 8;

// Runs the work, which is told its thread's number, in all threads from the same moment on.
template <typename Work>
void run_crowd(Work work)
{
    std::latch start(threads);
    std::vector<std::thread> crowd;
    for (std::size_t thread = 0; thread < threads; ++thread) {
        crowd.emplace_back([&, thread] {
            start.arrive_and_wait();
            work(thread);
        });
    }
    for (std::thread &one : crowd)
        one.join();
}

TEST(Threads, RenderAllFormsAlike)
{
    constexpr int rounds = 25;
    const std::vector<sample> samples = read_samples();

    Qel_rcpt_init();
    const receipts alone = render_all(samples);
    for (const auto &forms : alone) {
        for (const receipt &form : forms)
            ASSERT_FALSE(form.empty());
    }

    std::atomic<int> different = 0;
    run_crowd([&](std::size_t thread) {
        for (int round = 0; round < rounds; ++round) {
            for (std::size_t i = 0; i < samples.size(); ++i) {
                const std::size_t at = (i + thread) % samples.size();
                different += render(samples[at]) == alone[at] ? 0 : 1;
            }
        }
    });
    Qel_rcpt_deinit();
    EXPECT_EQ(different, 0);
}

// Nothing but the crowd has used the library before: its first look-ups, zones and hashes meet, and
// the calls that begin and end its use come in any order.
TEST(Threads, NeedNoOrderOfInitAndDeinit)
{
    constexpr std::size_t rounds = 8;
    static constexpr void (*life_cycle[])() noexcept = {Qel_rcpt_init, Qel_rcpt_deinit,
                                                        Qel_rcpt_lang_init, Qel_rcpt_lang_deinit};
    std::array<receipts, threads> first;
    std::atomic<int> different = 0;
    run_crowd([&](std::size_t thread) {
        const std::vector<sample> samples = read_samples();
        first[thread] = render_all(samples);
        for (std::size_t round = 0; round < rounds; ++round) {
            life_cycle[(thread + round) % std::size(life_cycle)]();
            different += render_all(samples) == first[thread] ? 0 : 1;
        }
    });
    EXPECT_EQ(different, 0);

    const receipts alone = render_all(read_samples());
    for (const receipts &all : first)
        EXPECT_TRUE(all == alone);
}

// Nodes that were taken out of one tree are trees of their own, each its thread's.
TEST(Threads, ChangeWhatWasOneTree)
{
    constexpr int rounds = 2000;
    const std::string_view text = R"([{"a":"b"},{"c":["d"]}])";
    for (int round = 0; round < 20; ++round) {
        qel::json root(
            Qel_json_read(text.data(), text.size(), 0, nullptr, nullptr, nullptr, nullptr));
        qel::json part(Qel_json_array_at(root.get(), 0));
        Qel_json_take_from_parent(part.get());
        qel::json rest(Qel_json_array_at(root.get(), 0));
        Qel_json_take_from_parent(rest.get());
        root.reset();
        const auto change = [](qel::json tree) {
            for (int i = 0; i < rounds; ++i)
                Qel_json_object_insert_string(tree.get(), std::to_string(i).c_str(), "text");
            EXPECT_EQ(Qel_json_object_num_children(tree.get()), rounds + 1U);
        };
        std::thread other(change, std::move(part));
        change(std::move(rest));
        other.join();
    }
}

} // namespace
