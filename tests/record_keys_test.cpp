// The table of record keys against what the forms do: a form reads a key when another value of it
// makes another receipt of some record.
#include "reading/record_file.h"
#include "writing/forms.h"

#include <qel_rcpt_keys.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using qel_rcpt::key_kind;
using qel_rcpt::key_readers;
using qel_rcpt::record_key;
using form_names = std::set<std::string_view>;

// Records with which rules show that the samples leave out.
constexpr const char *further_records[] = {
    R"({"action": "sale", "amount": "9.00", "code": "AUTH", "cardtype": "cash",
        "discountamount": "2.00", "order_cash_discount": "1.00", "order_cash_price": "1.00"})",
    R"({"action": "sale", "amount": "9.00", "order_total": "20.00", "code": "DENY",
        "phard_code": "CALL", "cardtype": "VISA"})",
    R"({"action": "sale", "amount": "9.00", "code": "DENY", "msoft_code": "INT_SUCCESS",
        "u_action": "txnrequest"})",
    R"({"action": "sale", "amount": "9.00", "u_errorcode": "PAXTREL_CONNFAIL"})",
    R"({"action": "reversal", "amount": "9.00", "u_flowflags": "REVERSED", "code": "DENY",
        "phard_code": "DENY"})",
    R"({"action": "tip", "amount": "9.00", "code": "DENY", "phard_code": "SUCCESS"})",
};

// What else a key may hold, beyond the table's example, to be noticed.
const std::multimap<std::string_view, const char *> telling_values{
    {"action_trans", "refund"},
    {"action", "refund"},
    {"u_cardclass", "debit"},
    {"cardtype", "cash"},
    {"rcpt_entry_mode", "f"},
    {"rcpt_acct_type", "savings"},
    {"code", "DENY"},
    {"code", "TIMEOUT"},
    {"phard_code", "NOREPLY"},
    {"phard_code", "CALL"},
    {"orig_code", "AUTH"},
    {"orig_phard_code", "SUCCESS"},
    {"u_action", "other"},
    {"u_flowflags", "REVERSED"},
    {"u_flowflags", "SIGCAPTURED"},
    {"u_errorcode", "CANCELED"},
    {"orig_msoft_code", "INT_SUCCESS"},
    {"orig_phard_code", "BAD_PIN"},
    {"rcpt_custom", "refnum:66,correction_type:refund"},
};

std::vector<tool::record_file> all_records()
{
    std::vector<tool::record_file> records;
    for (const auto &entry : fs::directory_iterator(QELRCPT_RECORDS))
        records.push_back(tool::read_record_file(entry.path().string()));
    for (const char *text : further_records)
        records.push_back(tool::parse_json_record(text));
    for (const tool::record_file &file : records) { // no receipt of the present time
        if (!Qel_hash_dict_get(file.record.get(), "timestamp", nullptr))
            Qel_hash_dict_insert(file.record.get(), "timestamp", "1773502867");
    }
    return records;
}

qel::dict copy_of(const Qel_hash_dict_t *record)
{
    qel::dict copy(Qel_hash_dict_create(64, 75, QEL_HASH_DICT_NONE));
    for (const auto [key, value] : qel::pairs(record))
        Qel_hash_dict_insert(copy.get(), key, value);
    return copy;
}

std::string receipt_of(const Qel_hash_dict_t *record, const tool::merchant &merchant,
                       const qel_rcpt::form &form)
{
    const qel::dict copy = copy_of(record); // some forms change it
    tool::layout layout;
    layout.form = &form;
    return tool::as_text({tool::render(copy.get(), tool::merchant_config({}, merchant), layout)},
                         layout);
}

// Whether another value of the key, or none, makes another receipt of the record.
bool shows(const tool::record_file &file, const record_key &key, const qel_rcpt::form &form)
{
    const std::string name(key.name);
    std::vector<std::string> values{std::string(key.example)};
    for (auto [at, end] = telling_values.equal_range(key.name); at != end; ++at)
        values.emplace_back(at->second);
    const std::string before = receipt_of(file.record.get(), file.merchant, form);
    const qel::dict changed = copy_of(file.record.get());
    Qel_hash_dict_remove(changed.get(), name.c_str());
    if (receipt_of(changed.get(), file.merchant, form) != before)
        return true;
    return std::ranges::any_of(values, [&](const std::string &value) {
        Qel_hash_dict_insert(changed.get(), name.c_str(), value.c_str());
        return receipt_of(changed.get(), file.merchant, form) != before;
    });
}

form_names readers_of(const record_key &key)
{
    const form_names general{"plain", "html", "xml", "json"};
    const auto with = [&](std::string_view form) {
        form_names names = general;
        names.insert(form);
        return names;
    };
    switch (key.readers) {
    case key_readers::plain_html:
        return {"plain", "html"};
    case key_readers::general:
        return general;
    case key_readers::general_and_store:
        return with("moneris");
    case key_readers::general_and_ecomm:
        return with("moneris-ecomm");
    case key_readers::store:
        return {"moneris"};
    case key_readers::ecomm:
        return {"moneris-ecomm"};
    case key_readers::all:
        break;
    }
    form_names names = with("moneris");
    names.insert("moneris-ecomm");
    return names;
}

TEST(RecordKeys, AreReadByTheFormsThatTheTableNames)
{
    Qel_rcpt_init();
    const std::vector<tool::record_file> records = all_records();
    for (const record_key &key : qel_rcpt::record_keys) {
        form_names readers;
        for (const qel_rcpt::form &form : qel_rcpt::forms) {
            const auto is_read = [&](const tool::record_file &file) {
                const auto config = tool::merchant_config({}, file.merchant);
                // The in-store form hands e-commerce merchants on to the other.
                const bool is_handed_on =
                    !form.ecommerce.empty() && (config.industry & QEL_RCPT_IND_ECOMM) != 0;
                return !is_handed_on && shows(file, key, form);
            };
            if (std::ranges::any_of(records, is_read))
                readers.insert(form.name);
        }
        EXPECT_EQ(readers, readers_of(key)) << key.name;
    }
    Qel_rcpt_deinit();
}

} // namespace
