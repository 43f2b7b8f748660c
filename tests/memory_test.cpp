// Every allocation fails once: what comes out is whole and right, or the run says that it is not.
#include "archives/batch.h"
#include "failing_allocations.hpp"
#include "messages.h"
#include "out_of_memory.h"
#include "processes.hpp"
#include "reading/record_file.h"
#include "writing/forms.h"
#include "writing/new_file.h"
#include "writing/output.h"
#include "writing/render.h"

#include <gtest/gtest.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <new>
#include <string>
#include <string_view>
#include <thread>

namespace
{

constexpr unsigned longest_run = 60; // seconds

class Memory : public ProcessTest
{
  protected:
    struct outcome {
        int status;
        bool has_failed;
        std::string out;
        std::string err;
    };

    // Runs as the command does, in a process of its own in which the number'th allocation fails.
    template <typename Run>
    outcome with_failure(size_t number, bool for_good, Run run) const
    {
        const std::string names[] = {(directory_ / "out").string(), (directory_ / "err").string(),
                                     (directory_ / "failed").string()};
        fs::remove(names[2]);
        const pid_t child = fork();
        if (child == 0) {
            for (const int fd : {STDOUT_FILENO, STDERR_FILENO})
                dup2(open(names[fd - 1].c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), fd);
            alarm(longest_run);
            tool::prepare_for_out_of_memory();
            failing_allocations::begin(number, for_good);
            int status = 1;
            try {
                status = run();
            } catch (const std::bad_alloc &) {
                tool::complain_of_memory();
            } catch (const std::exception &fault) {
                tool::complain(fault.what());
            }
            if (!failing_allocations::has_failed())
                close(creat(names[2].c_str(), 0600));
            _exit(status);
        }
        const int status = wait_for(child).status;
        return {status, !fs::exists(names[2]), read_file(names[0]), read_file(names[1])};
    }

    // Every allocation in its turn, until the run has no more of them.
    template <typename Run>
    void fail_each(const std::string &whole, bool has_lines, bool for_good, Run run) const
    {
        size_t number = 0;
        for (outcome made{0, true, "", ""}; made.has_failed;) {
            made = with_failure(++number, for_good, run);
            SCOPED_TRACE("allocation " + std::to_string(number) + ": " + made.err);
            ASSERT_TRUE(made.status == 0 || made.status == 1) << made.status;
            ASSERT_TRUE(made.status == 0 ? made.out == whole : !made.err.empty()) << made.out;
            ASSERT_TRUE(whole.starts_with(made.out)) << made.out;
            ASSERT_TRUE(made.out.empty() || made.out == whole ||
                        (has_lines && made.out.ends_with('\n')))
                << made.out;
        }
        EXPECT_GT(number, 10U);
    }
};

TEST_F(Memory, EndsOrGivesTheWholeReceiptInEachForm)
{
    const std::string sale = QELRCPT_RECORDS "/chip-credit-sale.json";
    for (const qel_rcpt::form &form : qel_rcpt::forms) {
        tool::layout layout;
        layout.form = &form;
        const auto text = [&] {
            const tool::record_file file = tool::read_record_file(sale);
            return tool::as_text(
                {tool::render(file.record.get(), tool::merchant_config({}, file.merchant), layout)},
                layout);
        };
        SCOPED_TRACE(form.name);
        const auto run = [&] {
            tool::output output("");
            output.write(text());
            output.finish();
            return 0;
        };
        fail_each(text(), false, false, run);
        if (form.name == "plain")
            fail_each(text(), false, true, run);
    }
}

TEST_F(Memory, EndsOrGivesTheWholeArchive)
{
    tool::options options;
    options.batch = true;
    options.jobs = 2;
    options.layout.blocks = {"money"};
    options.files = {write("archive",
                           "{\"amount\": 5, \"timestamp\": 1}\n{\"amount\": 6, \"amont\": 1}\n"
                           "{\"config\": {\"timezone\": \"UTC\"}, \"record\": {\"tax\": 1}}\n")};
    const auto run = [&] { return tool::run_batch(options); };
    constexpr size_t never = 1'000'000;
    const outcome whole = with_failure(never, false, run);
    ASSERT_EQ(whole.status, 0);
    ASSERT_EQ(std::ranges::count(whole.out, '\n'), 3);
    fail_each(whole.out, true, false, run);
    fail_each(whole.out, true, true, run);

    // A file is replaced by all of it or not at all.
    options.output_file = write("receipts", "old");
    for (size_t number = 1; with_failure(number, false, run).has_failed; ++number) {
        const std::string text = read_file(options.output_file);
        ASSERT_TRUE(text == "old" || text == whole.out) << number << text;
        ASSERT_EQ(files_in(directory_), 4) << number;
        std::ofstream(options.output_file) << "old";
    }
}

// A file that has a name from its beginning.
TEST_F(Memory, LeavesNoFileBehind)
{
    const auto run = [&] {
        const tool::new_file file((directory_ / "receipts").string(), tool::new_file::name::beside);
        failing_allocations::begin(1, true);
        Qel_list_str_destroy(Qel_list_str_create(0));
        return 0;
    };
    EXPECT_EQ(with_failure(1'000'000, false, run).status, 1);
    EXPECT_EQ(files_in(directory_), 2); // what it said
}

// One thread writes into a pipe that is full when there is no memory for another.
TEST_F(Memory, FinishesTheLineThatIsBeingWritten)
{
    const std::string line(1'000'000, 'x');
    channel out = make_pipe(true);
    channel ready = make_pipe(true);
    const pid_t child = fork();
    if (child == 0) {
        alarm(longest_run);
        dup2(out.theirs.get(), STDOUT_FILENO);
        close(STDERR_FILENO);
        tool::prepare_for_out_of_memory();
        const tool::output output("");
        const std::jthread writing([&] { output.write(line); });
        for (int waiting = 0; waiting < 1 << 16;)
            ioctl(out.ours.get(), FIONREAD, &waiting);
        failing_allocations::begin(1, true);
        ready.theirs.write("!");
        Qel_list_str_destroy(Qel_list_str_create(0));
        _exit(0);
    }
    out.theirs.close();
    ready.theirs.close();
    ready.ours.read("!");
    while (has(read_file("/proc/" + std::to_string(child) + "/stat"), ") R "))
        std::this_thread::yield();
    EXPECT_EQ(out.ours.read().size(), line.size());
    EXPECT_EQ(wait_for(child).status, 1);
}

// The command itself, with more and more room until there is enough.
TEST_F(Memory, EndsTheCommandWithAMessage)
{
    const std::string record =
        write("record", R"({"order_notes": ")" + std::string(12'000'000, 'x') + "\"}");
    const std::string out = write("out", "old");
    const std::string err = (directory_ / "err").string();
    constexpr int without_libraries = 77; // not even these fit
    int status = 1;
    int times_without_memory = 0;
    for (int kilobytes = 10'000; status != 0 && kilobytes < 1'000'000; kilobytes += 5'000) {
        const std::string script =
            "ulimit -v " + std::to_string(kilobytes) + "; " QELRCPT_COMMAND " --version > " + err +
            " 2>&1 || exit 77; exec " QELRCPT_COMMAND " -q -o " + out + " " + record + " 2> " + err;
        status = wait_for(start({"-c", script}, 0, 1, 2, "/bin/sh")).status;
        if (status == without_libraries)
            continue;
        EXPECT_EQ(read_file(err), status == 0 ? "" : "qelrcpt: out of memory\n");
        EXPECT_EQ(read_file(out) == "old", status != 0);
        times_without_memory += status;
    }
    EXPECT_GT(times_without_memory, 0);
    EXPECT_EQ(status, 0);
}

} // namespace
