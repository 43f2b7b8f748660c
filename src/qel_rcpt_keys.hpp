// The keys of a transaction record: each fact about a key stands here and nowhere else. The
// command's list and warnings, docs/record.md, the manual page qelrcpt-record(5) and the fuzz
// dictionary are made from this table; tests compare them with it and with what the forms read.
#ifndef QEL_RCPT_KEYS_HPP
#define QEL_RCPT_KEYS_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace qel_rcpt
{

enum class key_group {
    merchant,
    transaction,
    amounts,
    order,
    outcome,
    chip,
    closing, // signature, duplicates, free text
    moneris_ecomm,
};

enum class key_kind {
    text,
    amount,    // decimal text
    flag,      // one of the words for yes
    word,      // compared with words that the rules know
    number,    // a whole number
    seconds,   // since 1970
    host_time, // mmddyyHHMMSS
    hex,       // bytes, two digits each
    json,      // a document
    fields,    // name:value, name:value
};

// The forms that read a key: the general ones (plain text, HTML, XML and JSON, which show the same
// blocks), Moneris in-store and Moneris e-commerce.
enum class key_readers {
    plain_html, // the general forms, but for XML and JSON
    general,
    general_and_store,
    general_and_ecomm,
    store,
    ecomm,
    all,
};

// Texts are in Markdown: what a reader has to type stands in backquotes. M and E are the two
// Moneris forms.
struct record_key {
    std::string_view name;
    key_group group;
    key_kind kind;
    key_readers readers;
    std::string_view meaning; // in one line
    std::string_view detail;  // whole sentences, or empty
    std::string_view example;
};

// In the order of the documents.
inline constexpr record_key record_keys[] = {
    {"merch_name", key_group::merchant, key_kind::text, key_readers::all, "trading name",
     "Absent: \"Unknown Merchant Name\" in the copy's language.", "Tillerbird Bakery"},
    {"merch_addr1", key_group::merchant, key_kind::text, key_readers::all, "first address line",
     "Absent: \"Unknown Address\".", "418 Juniper Street"},
    {"merch_addr2", key_group::merchant, key_kind::text, key_readers::all, "second address line",
     "", "Boulder, CO 80302"},
    {"merch_addr3", key_group::merchant, key_kind::text, key_readers::all, "third address line", "",
     "MID 0012345"},
    {"merch_phone", key_group::merchant, key_kind::text, key_readers::general_and_store,
     "telephone",
     "Absent: \"Unknown Phone\" in plain text, \"Unknown Phone Number\" in HTML, XML and JSON, no "
     "line in M.",
     "303-555-0142"},
    {"merch_email", key_group::merchant, key_kind::text, key_readers::general_and_store,
     "e-mail address", "", "till@tillerbird.example"},
    {"merch_url", key_group::merchant, key_kind::text, key_readers::all, "web address",
     "Absent: no line, but \"Unknown URL\" in E.", "tillerbird.example"},
    {"action_trans", key_group::transaction, key_kind::word, key_readers::all,
     "what was done; chooses the title",
     "A word of the [table below](#titles). In E, `reversal` also leaves out the rows for "
     "surcharge, tax and tip, and `preauth` calls the last row \"Authorized Amount\".",
     "sale"},
    {"action", key_group::transaction, key_kind::word, key_readers::all,
     "what was done, without `action_trans`",
     "The same for the title, when `action_trans` is absent or empty.", "sale"},
    {"u_cardclass", key_group::transaction, key_kind::word, key_readers::all,
     "`credit` or `debit`; part of a sale's title", "", "credit"},
    {"card_cardclass", key_group::transaction, key_kind::word, key_readers::all,
     "the same, without `u_cardclass`", "When `u_cardclass` is absent or empty.", "debit"},
    {"u_action", key_group::transaction, key_kind::word, key_readers::general, "kind of request",
     "When it is neither empty nor `txnrequest`, `txnfinish` or `txnquick`, there is no mode and "
     "no response code of an offline decision.",
     "txnrequest"},
    {"laneid", key_group::transaction, key_kind::number, key_readers::general, "number of the lane",
     "Plain text and HTML show a number, 1 when it is missing or not above zero; XML and JSON show "
     "the text, `1` when it is absent.",
     "2"},
    {"cardtype", key_group::transaction, key_kind::word, key_readers::general_and_store,
     "brand, or `cash`",
     "`cash` makes it a cash payment, which decides on the cash discount and the price to compare "
     "with; `Interac` makes the account type show. M writes `mc`, `disc` and `amex` out.",
     "VISA"},
    {"rcpt_entry_mode", key_group::transaction, key_kind::word, key_readers::general_and_store,
     "letter of the entry mode",
     "`f` is a chip card that was swiped, `t` contactless; M shows `t` as `H` and `r` as `T` "
     "beside the reference number.",
     "C"},
    {"rcpt_acct_type", key_group::transaction, key_kind::word, key_readers::general_and_store,
     "account of an Interac card",
     "`checking` or `chequing`, `savings`, `flash…`; any other text shows as it is. Contactless "
     "Interac always reads \"Flash Default\", when there is a text at all.",
     "chequing"},
    {"account", key_group::transaction, key_kind::text, key_readers::general_and_store,
     "masked account number, shown as it stands", "", "XXXXXXXXXXXX1234"},
    {"cardholdername", key_group::transaction, key_kind::text, key_readers::general,
     "name on the card",
     "`/` (a card without a name) is left out of the reference block of plain text, XML and JSON.",
     "PAT QUILLFEATHER"},
    {"ordernum", key_group::transaction, key_kind::text, key_readers::all,
     "order or invoice number",
     "Empty counts as absent in plain text, HTML and E; in XML, JSON and M an empty value hides "
     "the number that would stand in for it.",
     "A-1047"},
    {"ptrannum", key_group::transaction, key_kind::number, key_readers::general_and_store,
     "transaction number; stands in for a missing `ordernum`",
     "Plain text and HTML: only when it is above zero.", "5512"},
    {"custref", key_group::transaction, key_kind::text, key_readers::general_and_ecomm,
     "purchase order number", "In E the order number when `ordernum` is absent or empty.",
     "SPRING"},
    {"ttid", key_group::transaction, key_kind::text, key_readers::general_and_store,
     "the server's transaction number", "", "20417"},
    {"auth", key_group::transaction, key_kind::text, key_readers::all, "authorization code", "",
     "083261"},
    {"batch", key_group::transaction, key_kind::text, key_readers::general, "batch number", "",
     "118"},
    {"stan", key_group::transaction, key_kind::text, key_readers::general,
     "system trace audit number", "", "000213"},
    {"rcpt_host_ts", key_group::transaction, key_kind::host_time, key_readers::all,
     "date and time as the host gave them, `mmddyyHHMMSS`",
     "Shown without conversion. One that does not parse shows `00/00/00 00:00:00`.",
     "031426094107"},
    {"timestamp", key_group::transaction, key_kind::seconds, key_readers::all,
     "date and time as seconds since 1970",
     "Shown in the merchant's zone, when `rcpt_host_ts` is absent or empty. Without either: now. A "
     "negative one shows zeros.",
     "1773502867"},
    {"amount", key_group::amounts, key_kind::amount, key_readers::all, "the payment's whole amount",
     "With everything below that is part of it. Needed for subtotal, total and amount due. E shows "
     "the text itself.",
     "27.40"},
    {"authamount", key_group::amounts, key_kind::amount, key_readers::general_and_store,
     "what the issuer authorized, when it is less than the amount",
     "With an approval, *any* value (also the full amount) reads \"Transaction Partially "
     "Approved\": give it only after a partial approval. M shows that line even when the "
     "transaction was declined. Rows appear when it is neither zero nor the whole amount; the "
     "amount due when it is less.",
     "20.00"},
    {"examount", key_group::amounts, key_kind::amount, key_readers::all, "tip within `amount`",
     "Subtracted from the subtotal.", "4.00"},
    {"u_tip", key_group::amounts, key_kind::amount, key_readers::general_and_store,
     "tip on top of `amount`",
     "Added to the total, and the tip shown when the record has no key `examount`.", "2.00"},
    {"u_cashback", key_group::amounts, key_kind::amount, key_readers::general_and_store,
     "cash back on top of `amount`", "Added to the total, without a row of its own.", "20.00"},
    {"cashbackamount", key_group::amounts, key_kind::amount, key_readers::general_and_store,
     "cash back within `amount`", "", "20.00"},
    {"tax", key_group::amounts, key_kind::amount, key_readers::all, "tax within `amount`", "",
     "1.90"},
    {"surchargeamount", key_group::amounts, key_kind::amount, key_readers::all,
     "surcharge within `amount`", "", "1.50"},
    {"fee", key_group::amounts, key_kind::amount, key_readers::general_and_store,
     "fee within `amount`", "M subtracts it from its Amount row and has no row for it.", "4.00"},
    {"convenience_fee", key_group::amounts, key_kind::amount, key_readers::general_and_store,
     "convenience fee within `amount`", "As `fee`.", "2.50"},
    {"supplemental_fee", key_group::amounts, key_kind::amount, key_readers::general_and_store,
     "supplemental fee within `amount`", "As `fee`.", "0.75"},
    {"discountamount", key_group::amounts, key_kind::amount, key_readers::general_and_store,
     "discount that `amount` is already reduced by",
     "Added to the subtotal. M adds it and has no row for it.", "1.50"},
    {"balance", key_group::amounts, key_kind::amount, key_readers::general_and_store,
     "what is left on the card; customer copy only",
     "Plain text and M show any value, zero too; HTML, XML and JSON one above zero.", "31.75"},
    {"order_total", key_group::order, key_kind::amount, key_readers::general, "total of the order",
     "Not zero: there is an order block, and plain text and HTML leave the money block out when "
     "`amount` is the whole of it. XML and JSON write both, and the subtotal of an order of zero "
     "too.",
     "60.00"},
    {"order_tip", key_group::order, key_kind::amount, key_readers::general,
     "tip within `order_total`", "Subtracted from the order's subtotal.", "8.00"},
    {"order_tax", key_group::order, key_kind::amount, key_readers::general,
     "tax within `order_total`", "Subtracted from the order's subtotal.", "3.53"},
    {"order_discount", key_group::order, key_kind::amount, key_readers::general,
     "discount on the order", "The subtotal is *not* adjusted by it.", "3.00"},
    {"order_cash_discount", key_group::order, key_kind::amount, key_readers::plain_html,
     "the part of `discountamount` given for paying cash",
     "A row of its own. Only with `cardtype` `cash`, without an order block and with a "
     "`discountamount`.",
     "1.00"},
    {"order_cash_price", key_group::order, key_kind::amount, key_readers::plain_html,
     "what it would have cost in cash", "Above the notice of a payment that was not cash.", "9.50"},
    {"order_noncash_price", key_group::order, key_kind::amount, key_readers::plain_html,
     "what it would have cost by card", "Above the notice of a cash payment.", "10.50"},
    {"line_items", key_group::order, key_kind::json, key_readers::general, "the items",
     "[A JSON array](#line-items).", R"([{"name": "Cortado", "qty": "1", "price": "4.25"}])"},
    {"code", key_group::outcome, key_kind::word, key_readers::general_and_store,
     "the server's result", "`AUTH`, `SUCCESS`, `DENY`, `CALL`, `TIMEOUT` (M also `TOUT`).",
     "AUTH"},
    {"msoft_code", key_group::outcome, key_kind::word, key_readers::general,
     "result of the server's software", "`INT_SUCCESS`, `CONN_MAXATTEMPTS`, `CONN_MAXSENDS`.",
     "INT_SUCCESS"},
    {"phard_code", key_group::outcome, key_kind::word, key_readers::general_and_store,
     "result of the link to the processor", "`SUCCESS`, `CALL`, `NOREPLY`, `BAD_PIN`, `UNKNOWN`, …",
     "SUCCESS"},
    {"orig_code", key_group::outcome, key_kind::word, key_readers::general_and_store,
     "the `code` of the transaction that was reversed or completed",
     "Counts before `code`: in the general forms unless it is empty, in M also when it is.",
     "DENY"},
    {"orig_msoft_code", key_group::outcome, key_kind::word, key_readers::general,
     "its `msoft_code`", "Counts before `msoft_code` unless it is empty.", "CONN_MAXSENDS"},
    {"orig_phard_code", key_group::outcome, key_kind::word, key_readers::general_and_store,
     "its `phard_code`", "As `orig_code`.", "CALL"},
    {"u_errorcode", key_group::outcome, key_kind::word, key_readers::general_and_store,
     "the terminal's error",
     "`CANCELED`, `EMV_CARD_DENY`, `EMV_CARD_REMOVED`, `PAXTREL_CONNFAIL`, `PAXTREL_PROC_ERROR`.",
     "CANCELED"},
    {"reversal_reason", key_group::outcome, key_kind::word, key_readers::general_and_store,
     "why the transaction was reversed", "`CUSTOMERCANCEL`, `CARDDECLINE`, `CARDREMOVED`.",
     "CARDDECLINE"},
    {"offline_decline", key_group::outcome, key_kind::word, key_readers::general_and_store,
     "`CARDDECLINE`: the card declined without the issuer", "", "CARDDECLINE"},
    {"txnstatus", key_group::outcome, key_kind::word, key_readers::general,
     "holds `VOIDED` when the transaction was voided", "", "VOIDED"},
    {"issuer_decline", key_group::outcome, key_kind::flag, key_readers::general_and_store,
     "the issuer declined", "", "yes"},
    {"u_standin", key_group::outcome, key_kind::flag, key_readers::general,
     "approved in place of the issuer", "", "yes"},
    {"u_flowflags", key_group::outcome, key_kind::word, key_readers::general_and_store,
     "flags of the transaction's course",
     "Holds `SIGCAPTURED` after an electronic signature; `REVERSED` after a reversal (M).",
     "SIGCAPTURED"},
    {"rcpt_issuer_resp_code", key_group::outcome, key_kind::text, key_readers::all,
     "the issuer's response code", "", "00"},
    {"rcpt_resp_code", key_group::outcome, key_kind::text, key_readers::all,
     "the server's or processor's response code", "", "027"},
    {"rcpt_emv_name", key_group::chip, key_kind::text, key_readers::general_and_store,
     "application preferred name or label", "", "VISA CREDIT"},
    {"rcpt_emv_aid", key_group::chip, key_kind::hex, key_readers::general_and_store,
     "application identifier", "", "A0000000031010"},
    {"rcpt_emv_tvr", key_group::chip, key_kind::hex, key_readers::general_and_store,
     "terminal verification results", "", "0080008000"},
    {"rcpt_emv_tsi", key_group::chip, key_kind::hex, key_readers::general_and_store,
     "transaction status information", "", "E800"},
    {"rcpt_emv_iad", key_group::chip, key_kind::hex, key_readers::general,
     "issuer application data", "", "06011203A00000"},
    {"rcpt_emv_actype", key_group::chip, key_kind::text, key_readers::general,
     "type of the cryptogram",
     "In plain text it is the cryptogram's label, and neither shows without the other.", "TC"},
    {"rcpt_emv_ac", key_group::chip, key_kind::hex, key_readers::general, "application cryptogram",
     "", "5C1A8E2F90B34D67"},
    {"rcpt_emv_card_decline", key_group::chip, key_kind::hex, key_readers::general,
     "data of a decline by the card", "", "9F2701009F360200A1"},
    {"rcpt_emv_cvm", key_group::chip, key_kind::word, key_readers::general_and_store,
     "cardholder verification method", "`pin` and `pinsig` give \"Verified By Pin\".", "pin"},
    {"rcpt_emv_pinbypass", key_group::chip, key_kind::flag, key_readers::general_and_store,
     "the cardholder went without the PIN", "", "yes"},
    {"rcpt_emv_form_factor", key_group::chip, key_kind::hex, key_readers::store,
     "device of a contactless payment (\"FF/DT\")",
     "On the merchant's copy, and on the customer's with the self-service industry.", "01"},
    {"u_emv_chip_malfunction", key_group::chip, key_kind::flag, key_readers::store,
     "the chip could not be read", "", "yes"},
    {"u_need_signature", key_group::closing, key_kind::flag, key_readers::general_and_store,
     "a signature is wanted",
     "The merchant copy gets a signature line and the cardholder agreement.", "yes"},
    {"rcpt_duplicate", key_group::closing, key_kind::flag, key_readers::general_and_store,
     "the receipt is a duplicate", "Any of the three marks it.", "yes"},
    {"u_rcpt_duplicate", key_group::closing, key_kind::flag, key_readers::general_and_store,
     "the same", "", "yes"},
    {"u_duplicate", key_group::closing, key_kind::flag, key_readers::general_and_store, "the same",
     "", "yes"},
    {"printdata", key_group::closing, key_kind::text, key_readers::general,
     "the processor's text for the receipt", "Under the outcome.", "CALL 800-555-0100"},
    {"order_notes", key_group::closing, key_kind::text, key_readers::general, "the order's notes",
     "At the end.", "Leave at the door"},
    {"rcpt_user_notes", key_group::closing, key_kind::text, key_readers::general,
     "the merchant's notes", "At the end.", "Thank you!"},
    {"rcpt_custom", key_group::closing, key_kind::fields, key_readers::all,
     "merchant-defined fields", "[See below](#custom-fields).", "Table:4,Server:Ada"},
    {"moneris_rcpt_data", key_group::moneris_ecomm, key_kind::json, key_readers::ecomm,
     "items, fees, addresses and refund policy", "[A JSON object](#moneris-receipt-data).",
     R"({"policy": "Within 30 days"})"},
    {"recurring", key_group::moneris_ecomm, key_kind::word, key_readers::ecomm,
     "exactly `recurring`, in this case: no billing address", "", "recurring"},
};

inline constexpr std::size_t num_record_keys = std::size(record_keys);

// Where a key is looked for in the index: the slot that it names or one of those behind it.
constexpr std::size_t record_key_slot(std::string_view key)
{
    const auto code = [&](std::size_t at) -> std::size_t {
        return static_cast<unsigned char>(key[at]);
    };
    return key.empty() ? 0 : key.size() * 7 + code(key.size() / 2) * 29 + code(key.size() - 1) * 5;
}

// The places of the keys in the table, each in the first of its slots that was free; elsewhere the
// table's size.
inline constexpr auto record_key_index = [] {
    std::array<std::uint8_t, 256> index{};
    index.fill(num_record_keys);
    for (std::size_t place = 0; place < num_record_keys; ++place) {
        std::size_t slot = record_key_slot(record_keys[place].name);
        while (index[slot % index.size()] < num_record_keys)
            ++slot;
        index[slot % index.size()] = static_cast<std::uint8_t>(place);
    }
    return index;
}();

// The place of a key in the table; the table's size for any other text.
constexpr std::size_t find_record_key(std::string_view key)
{
    for (std::size_t slot = record_key_slot(key);; ++slot) {
        const std::size_t place = record_key_index[slot % record_key_index.size()];
        if (place == num_record_keys || record_keys[place].name == key)
            return place;
    }
}

static_assert([] { // each stands there once
    for (std::size_t place = 0; place < num_record_keys; ++place) {
        if (find_record_key(record_keys[place].name) != place)
            return false;
    }
    return true;
}());

// Whether the key's value is a JSON document.
constexpr bool is_document(std::string_view key)
{
    const std::size_t place = find_record_key(key);
    return place < num_record_keys && record_keys[place].kind == key_kind::json;
}

} // namespace qel_rcpt

#endif
