// The receipts of a sale in Toronto: the customer's in French, for a narrow printer, and the
// merchant's money and outcome in English as data.
#include <qel_rcpt.hpp>

#include <iostream>

int main()
{
    namespace rcpt = qel::rcpt;
    const rcpt::session session;

    // What the payment server answered, and what the till knows of the sale.
    const rcpt::record sale{
        {"merch_name", "Maplewick Books"},
        {"merch_addr1", "21 Harbour Street"},
        {"merch_phone", "416-555-0118"},
        {"action", "sale"},
        {"cardtype", "MC"},
        {"u_cardclass", "credit"},
        {"account", "XXXXXXXXXXXX0027"}, // masked: what stands here is printed
        {"timestamp", "1773502867"},
        {"amount", "33.90"},
        {"tax", "3.90"},
        {"code", "AUTH"},
    };

    rcpt::config shop;
    shop.customer_lang = rcpt::language::french;
    shop.country_code = rcpt::country::canada;
    shop.currency_code = rcpt::currency::canadian_dollar;
    shop.zone = rcpt::time_zone("America/Toronto");

    std::cout << rcpt::render_plain(sale, shop, 32, "\n").join(rcpt::copy::customer, "\n\n")
              << "\n\n";

    for (const auto &[copy, name, json] : rcpt::render_json(sale, shop)) {
        if (copy == rcpt::copy::merchant && (name == "money" || name == "disposition"))
            std::cout << name << ' ' << json << '\n';
    }
}
