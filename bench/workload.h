// What the benchmarks and the test of allocations measure: sample records in all forms, each beside
// its floor.
#ifndef QELRCPT_BENCH_WORKLOAD_H
#define QELRCPT_BENCH_WORKLOAD_H

#include "reading/record_file.h"

#include <qel_rcpt.h>
#include <qel_rcpt_check.h>
#include <qel_rcpt_print.h>
#include <qelstdlib.hpp>

#include <string>

namespace workload
{

struct sample {
    const char *name;
    const char *file; // in examples/records
};

inline constexpr sample samples[] = {
    {"short sale", "chip-credit-sale.json"},
    {"ten items", "restaurant-ten-items.json"},
    {"e-commerce", "moneris-ecomm-purchase.json"},
};

// A record with its merchant's configuration, which borrows the time zone.
struct input {
    tool::record_file file;
    Qel_rcpt_config_t config;
};

inline input read(const sample &sample)
{
    tool::record_file file =
        tool::read_record_file(std::string(QELRCPT_RECORDS "/").append(sample.file));
    const Qel_rcpt_config_t config = tool::merchant_config({}, file.merchant);
    return {std::move(file), config};
}

struct form {
    const char *name;
    Qel_hash_dict_t *(*generate)(Qel_hash_dict_t *record, const Qel_rcpt_config_t *config);
};

inline Qel_hash_dict_t *generate_plain(Qel_hash_dict_t *record, const Qel_rcpt_config_t *config)
{
    return Qel_rcpt_generate_plain(record, config, 40, "\n");
}
inline Qel_hash_dict_t *generate_html(Qel_hash_dict_t *record, const Qel_rcpt_config_t *config)
{
    return Qel_rcpt_generate_html(record, config);
}
inline Qel_hash_dict_t *generate_xml(Qel_hash_dict_t *record, const Qel_rcpt_config_t *config)
{
    return Qel_rcpt_generate_xml(record, config);
}
inline Qel_hash_dict_t *generate_json(Qel_hash_dict_t *record, const Qel_rcpt_config_t *config)
{
    return Qel_rcpt_generate_json(record, config);
}

// The in-store layout gives the e-commerce one to a merchant of that industry.
inline Qel_hash_dict_t *generate_moneris(Qel_hash_dict_t *record, const Qel_rcpt_config_t *config)
{
    Qel_rcpt_config_t in_store = *config;
    in_store.industry = QEL_RCPT_IND_RETAIL;
    return Qel_rcpt_generate_plain_moneris(record, &in_store);
}

inline constexpr form forms[] = {
    {"plain", generate_plain},     {"html", generate_html},
    {"xml", generate_xml},         {"json", generate_json},
    {"moneris", generate_moneris}, {"moneris-ecomm", Qel_rcpt_generate_plain_moneris_ecomm},
};

// Both copies of a receipt, from the record to the release of its blocks.
inline void generate(const form &form, const input &input)
{
    const qel::dict blocks(form.generate(input.file.record.get(), &input.config));
}

inline qel::dict finished_blocks(const form &form, const input &input)
{
    return qel::dict(form.generate(input.file.record.get(), &input.config));
}

// The check of a record, and the bytes of its plain text, the customer's copy, for a printer.
inline void check(const input &input)
{
    Qel_rcpt_check(input.file.record.get(), &input.config, QEL_RCPT_FORM_GENERAL, nullptr, nullptr);
}

inline void print(const Qel_hash_dict_t *blocks, const input &input)
{
    const Qel_rcpt_printer_t printer{};
    qel::text(Qel_rcpt_print(blocks, input.file.record.get(), true, &printer, nullptr));
}

// What the interface alone costs: a block dictionary created, filled with the same finished blocks
// under the same keys, and released.
inline void floor(const Qel_hash_dict_t *finished)
{
    const qel::dict blocks(Qel_hash_dict_create(16, 75, QEL_HASH_DICT_KEYS_ORDERED));
    for (const auto [key, text] : qel::pairs(finished))
        Qel_hash_dict_insert(blocks.get(), key, text);
}

} // namespace workload

#endif
