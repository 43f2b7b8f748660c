// One receipt of each form and sample, its floor, and what goes with it, for scripts/instructions
// to count under Callgrind: the counts of each go to a dump of their own.
#include "workload.h"

#include <unistd.h>
#include <valgrind/callgrind.h>

#include <cstddef>
#include <cstring>
#include <string>

// Stands before the system's: with the same salt in every run the dictionaries' hashes, and so the
// counts, repeat.
int getentropy(void *buffer, size_t length)
{
    std::memset(buffer, 0x5A, length);
    return 0;
}

namespace
{

using namespace workload;

template <typename Call>
void count(const char *form, const sample &sample, const std::string &what, Call call)
{
    call(); // binds symbols and builds what is built on first use
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    call();
    CALLGRIND_TOGGLE_COLLECT;
    const std::string name = std::string(form) + "|" + sample.name + "|" + what;
    CALLGRIND_DUMP_STATS_AT(name.c_str());
}

// A list of line items becomes a tree, which is dropped.
void count_reading(const sample &sample)
{
    const input in = read(sample);
    const char *const items = Qel_hash_dict_get_direct(in.file.record.get(), "line_items");
    const std::size_t size = Qel_str_len(items);
    count("reading", sample, std::to_string(size), [&] {
        const qel::json tree(Qel_json_read(items, size, QEL_JSON_READER_REPLACE_BAD_CHARS, nullptr,
                                           nullptr, nullptr, nullptr));
    });
}

} // namespace

// With names of a form and a sample as arguments only these.
int main(int argc, char **argv)
{
    const auto wanted = [&](int at, const char *name) {
        return argc <= at || std::string(argv[at]) == name;
    };
    Qel_rcpt_init();
    for (const form &form : forms) {
        for (const sample &sample : samples) {
            if (!wanted(1, form.name) || !wanted(2, sample.name))
                continue;
            const input in = read(sample);
            const qel::dict finished = finished_blocks(form, in);
            count(form.name, sample, "floor", [&] { floor(finished.get()); });
            count(form.name, sample, "receipt", [&] { generate(form, in); });
        }
    }
    for (const sample &sample : samples) {
        if (!wanted(2, sample.name))
            continue;
        if (wanted(1, "reading"))
            count_reading(sample);
        const input in = read(sample);
        const qel::dict plain = finished_blocks(forms[0], in);
        if (wanted(1, "checking"))
            count("checking", sample, "record", [&] { check(in); });
        if (wanted(1, "printing"))
            count("printing", sample, "copy", [&] { print(plain.get(), in); });
    }
    Qel_rcpt_deinit();
}
