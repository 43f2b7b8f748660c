// Both copies of a receipt from the texts of a record to the texts of its blocks, over and over:
// what a binding for another language does, without the language. Prints the least time of a
// receipt in microseconds for each form and sample.
#include "workload.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

using texts = std::vector<std::pair<std::string, std::string>>;

texts texts_of(const Qel_hash_dict_t *record)
{
    texts all;
    for (const auto [key, value] : qel::pairs(record))
        all.emplace_back(key, value);
    return all;
}

std::string receipt(const workload::form &form, const texts &given, const Qel_rcpt_config_t &config)
{
    const qel::dict record(Qel_hash_dict_create(given.size(), 75, QEL_HASH_DICT_NONE));
    for (const auto &[key, value] : given)
        Qel_hash_dict_insert(record.get(), key.c_str(), value.c_str());
    const std::string_view name = form.name;
    if (name == "plain" || name.starts_with("moneris"))
        Qel_rcpt_strip_control(record.get());
    const qel::dict blocks(form.generate(record.get(), &config));
    std::string made;
    for (const auto [key, text] : qel::pairs(blocks.get()))
        made.append(key).append(1, '\0').append(text).append(1, '\0');
    return made;
}

double least_time(const workload::form &form, const texts &given, const Qel_rcpt_config_t &config)
{
    using clock = std::chrono::steady_clock;
    constexpr int rounds = 400;
    constexpr int receipts = 100;
    double least = 1e9;
    std::size_t bytes = 0;
    for (int round = 0; round < rounds; ++round) {
        const auto begin = clock::now();
        for (int i = 0; i < receipts; ++i)
            bytes += receipt(form, given, config).size();
        const std::chrono::duration<double, std::micro> taken = clock::now() - begin;
        least = std::min(least, taken.count() / receipts);
    }
    return bytes == 0 ? 0 : least;
}

} // namespace

int main()
{
    Qel_rcpt_init();
    for (const workload::sample &sample : workload::samples) {
        const workload::input in = workload::read(sample);
        const texts given = texts_of(in.file.record.get());
        for (const workload::form &form : workload::forms)
            std::printf("%s %s %.2f\n", sample.file, form.name, least_time(form, given, in.config));
    }
    Qel_rcpt_deinit();
}
