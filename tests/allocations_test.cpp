// Heap allocations of a receipt (both copies): unlike time, their number repeats exactly, so that a
// copy of a text or a container too many is seen at once. The ceilings leave a few per cent.
#include "allocations.h"
#include "workload.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace
{

TEST(Allocations, OfTheShortSaleStayFew)
{
    const std::map<std::string, std::size_t> ceilings{
        {"plain", 49}, {"html", 62},    {"xml", 52},
        {"json", 79},  {"moneris", 28}, {"moneris-ecomm", 30},
    };
    Qel_rcpt_init();
    const workload::input sale = workload::read(workload::samples[0]);
    for (const workload::form &form : workload::forms) {
        SCOPED_TRACE(form.name);
        const std::size_t count = allocations::of([&] { workload::generate(form, sale); });
        EXPECT_GT(count, 0U); // they are counted at all
        EXPECT_LE(count, ceilings.at(form.name));
    }
    Qel_rcpt_deinit();
}

// A note of any length is laid out in the block's own text, which doubles as it grows.
TEST(Allocations, DoNotGrowWithTheLinesOfANote)
{
    Qel_rcpt_init();
    const workload::input sale = workload::read(workload::samples[0]);
    const auto with_words = [&](int count) {
        std::string notes;
        for (int i = 0; i < count; ++i)
            notes += "Fresh loaves daily ";
        Qel_hash_dict_insert(sale.file.record.get(), "order_notes", notes.c_str());
        return allocations::of([&] { workload::generate(workload::forms[0], sale); });
    };
    const std::size_t few = with_words(10);
    EXPECT_LE(with_words(10000), few + 20);
    Qel_rcpt_deinit();
}

} // namespace
