// A layout of one's own in C++: the day's payments on one strip, a line each, with the outcome
// under those that need attention. The owners of qelstdlib.hpp release what the C operations
// return.
#include <qel_rcpt.hpp>
#include <qel_rcpt_plain.h>

#include <iostream>
#include <vector>

namespace rcpt = qel::rcpt;

class strip
{
  public:
    strip(const rcpt::config &shop, std::size_t width)
    {
        const Qel_rcpt_config_t native = shop.native();
        Qel_rcpt_setup_rcpt_attrs(&info_.attrs, &native, false);
        info_.blocks = blocks_.get();
        info_.line_break = "\n";
        info_.line_len = width;
    }

    void add(const rcpt::record &payment)
    {
        const Qel_hash_dict_t *kvs = payment.native();
        const qel::text time(Qel_rcpt_format_time(kvs, &info_.attrs));
        const qel::text total(Qel_rcpt_format_total_amount(kvs, &info_.attrs));
        Qel_rcpt_plain_format_left_right(&info_, nullptr, time.get(), nullptr, total.get(),
                                         lines_.get());
        if (payment.get("code") != "AUTH")
            Qel_rcpt_plain_format_right(&info_, Qel_rcpt_get_result(kvs, info_.attrs.lang),
                                        lines_.get());
    }

    std::string finish()
    {
        Qel_rcpt_plain_add_block(&info_, "strip", lines_.get());
        return std::string(qel::view(Qel_hash_dict_get_direct(blocks_.get(), "strip")));
    }

  private:
    qel::dict blocks_{Qel_hash_dict_create(16, 75, QEL_HASH_DICT_KEYS_ORDERED)};
    qel::list_str lines_{Qel_list_str_create(QEL_LIST_STR_NONE)};
    Qel_rcpt_plain_t info_{};
};

int main()
{
    const rcpt::session session;
    rcpt::config shop;
    shop.currency_code = rcpt::currency::pound_sterling;
    shop.country_code = rcpt::country::united_kingdom;

    const std::vector<rcpt::record> payments = {
        {{"rcpt_host_ts", "031426094107"}, {"amount", "12.5"}, {"u_tip", "1"}, {"code", "AUTH"}},
        {{"rcpt_host_ts", "031426101533"}, {"amount", "8.00"}, {"phard_code", "PICKUP"}},
    };
    strip day(shop, 32);
    for (const rcpt::record &payment : payments)
        day.add(payment);
    std::cout << day.finish() << '\n';
}
