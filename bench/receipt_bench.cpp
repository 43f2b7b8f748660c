// Time of a receipt (both copies) beside its floor: a block dictionary created, filled with the
// same finished blocks under the same keys, and destroyed, which is what the interface alone costs.
#include "record_file.h"

#include <qel_rcpt.h>
#include <qelstdlib.hpp>

#include <benchmark/benchmark.h>

namespace
{

struct sample {
    tool::record_file file;
    Qel_rcpt_config_t config;
};

sample read_sample(const char *name)
{
    const bool quiet = true;
    tool::record_file file =
        tool::read_record_file(std::string(QELRCPT_RECORDS "/").append(name), quiet);
    const Qel_rcpt_config_t config = tool::merchant_config({}, file.merchant);
    return {std::move(file), config};
}

qel::dict generate_plain(const sample &input)
{
    return qel::dict(Qel_rcpt_generate_plain(input.file.record.get(), &input.config, 40, "\n"));
}

void plain(benchmark::State &state, const char *name)
{
    const sample input = read_sample(name);
    for (auto _ : state)
        benchmark::DoNotOptimize(generate_plain(input));
}

void plain_floor(benchmark::State &state, const char *name)
{
    const qel::dict finished = generate_plain(read_sample(name));
    for (auto _ : state) {
        const qel::dict blocks(Qel_hash_dict_create(16, 75, QEL_HASH_DICT_KEYS_ORDERED));
        for (const auto [key, text] : qel::pairs(finished.get()))
            Qel_hash_dict_insert(blocks.get(), key, text);
        benchmark::DoNotOptimize(blocks.get());
    }
}

BENCHMARK_CAPTURE(plain_floor, chip_sale, "chip-credit-sale.json");
BENCHMARK_CAPTURE(plain, chip_sale, "chip-credit-sale.json");

} // namespace

int main(int argc, char **argv)
{
    Qel_rcpt_init();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    Qel_rcpt_deinit();
}
