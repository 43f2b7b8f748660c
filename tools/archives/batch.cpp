#include "archives/batch.h"

#include "archives/line_renderer.h"
#include "archives/progress.h"
#include "archives/work_ring.h"
#include "messages.h"
#include "reading/line_reader.h"
#include "signals.h"
#include "writing/output.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <exception>
#include <iostream>
#include <iterator>
#include <system_error>
#include <thread>

namespace tool
{

namespace
{

constexpr int progress_interval = 250; // milliseconds
constexpr size_t items_per_job = 2;
constexpr size_t most_bytes_at_once = line_reader::longest_line + size_t{4} * 1024 * 1024;

using ring = work_ring<line_piece, rendered>;

// What was written so far. One thread adds to it; the two first counts are for all to see.
struct totals {
    std::atomic<uint64_t> records = 0;
    std::atomic<uint64_t> bytes = 0; // of the input
    uint64_t errors = 0;
    bool has_bad_records = false;
    rule_counts findings;
    std::vector<std::string> warnings;
    size_t file = 0;        // of the last line, its place among the files
    uint64_t last_line = 0; // its number
};

// How many findings each rule had, the most first; with the severity of those that --check counts.
void complain_of_rules(const rule_counts &findings, uint64_t records, bool is_check)
{
    std::vector<std::pair<uint64_t, std::string_view>> rows;
    for (const auto &[rule, count] : findings)
        rows.emplace_back(count, rule);
    std::ranges::stable_sort(rows, std::greater(), &std::pair<uint64_t, std::string_view>::first);
    if (is_check) {
        std::string table = counted(records, "record");
        table.append(rows.empty() ? ", no findings" : ", findings:");
        for (const auto &[count, rule] : rows) {
            table.append("\n  ").append(std::to_string(count)).append(" ");
            table.append(severity_of(rule)).append(" ").append(rule);
        }
        return complain(table);
    }
    std::string all;
    for (const auto &[count, rule] : rows) {
        all.append(all.empty() ? "warnings: " : ", ").append(std::to_string(count));
        all.append(1, ' ').append(rule);
    }
    if (!all.empty())
        complain(all);
}

void complain_of(const totals &totals, const options &options)
{
    if (options.quiet)
        return;
    for (const std::string &warning : totals.warnings)
        complain(warning);
    complain_of_rules(totals.findings, totals.records, options.check);
    if (totals.errors > 0)
        complain(counted(totals.records, "record") + ", " + counted(totals.errors, "error"));
}

// Where an interrupted run stopped, and how to go on.
std::string interruption(const totals &totals, const options &options, bool is_output_kept)
{
    const std::string &file = options.files[totals.file];
    std::string text = "stopped after line " + std::to_string(totals.last_line) + " of " +
                       shown_file_name(file) + "; ";
    if (is_output_kept)
        return text + options.output_file + " is as it was before";
    text += "--start-line " + std::to_string(totals.last_line + 1) + " goes on";
    if (totals.file > 0)
        text += ", with " + shown_file_name(file) + " as the first FILE";
    if (totals.file > 0 && totals.file + 1 == options.files.size())
        text += R"( and /dev/null as another, for lines with "file")";
    return text;
}

// The bytes of all files, as far as they can be known. Throws input_error for one that is not
// there, before anything is written.
std::optional<uint64_t> total_size(const std::vector<std::string> &files)
{
    uint64_t total = 0;
    bool is_known = true;
    for (const std::string &name : files) {
        struct stat file {
        };
        const bool is_there =
            name == "-" ? ::fstat(STDIN_FILENO, &file) == 0
                        : ::stat(name.c_str(), &file) == 0 && ::access(name.c_str(), R_OK) == 0;
        if (!is_there)
            throw input_error(shown_file_name(name) + ": " +
                              std::generic_category().message(errno));
        if (S_ISDIR(file.st_mode))
            throw input_error(shown_file_name(name) + ": " +
                              std::generic_category().message(EISDIR));
        is_known = is_known && S_ISREG(file.st_mode);
        total += static_cast<uint64_t>(std::max<off_t>(file.st_size, 0));
    }
    return is_known ? std::optional(total) : std::nullopt;
}

// One reader, several workers and one writer; the thread that runs it watches over them.
class batch
{
  public:
    explicit batch(const options &options)
        : options_(options), total_bytes_(total_size(options.files)),
          output_(options.output_file, options.inputs()),
          ring_(items_per_job * options.jobs, most_bytes_at_once)
    {
        totals_.last_line = options.start_line.value_or(1) - 1;
    }

    int run()
    {
        const held_signals signals;
        run_threads(signals);
        complain_of(totals_, options_);
        if (write_fault_)
            std::rethrow_exception(write_fault_);
        if (signal_ != 0 && !options_.quiet)
            complain(interruption(totals_, options_, output_.replaces_file()));
        if (signal_ == 0 && !read_fault_)
            output_.finish();
        if (read_fault_)
            std::rethrow_exception(read_fault_);
        return totals_.errors > 0 || totals_.has_bad_records ? 1 : 0;
    }

    int signal() const { return signal_; } // that ended the run; 0: none

  private:
    void run_threads(const held_signals &signals)
    {
        std::vector<std::jthread> threads;
        try {
            start(threads);
            watch(signals);
        } catch (...) { // the threads end before this does
            stop_.set();
            throw;
        }
    }

    // Without a writer, a reader or any worker nothing can be done; with fewer workers than wanted
    // it takes longer.
    void start(std::vector<std::jthread> &threads)
    {
        constexpr size_t others = 2;
        try {
            threads.reserve(options_.jobs + others);
            threads.emplace_back([this] { write(); });
            threads.emplace_back([this] { work(); });
            threads.emplace_back([this] { read(); });
        } catch (const std::exception &fault) {
            ring_.close();
            throw input_error(std::string("expected to start a thread: ") + fault.what());
        }
        try {
            for (size_t i = 1; i < options_.jobs; ++i)
                threads.emplace_back([this] { work(); });
        } catch (const std::exception &fault) {
            if (!options_.quiet)
                complain("started " + std::to_string(threads.size() - others) + " of " +
                         std::to_string(options_.jobs) + " jobs only: " + fault.what());
        }
    }

    void read()
    {
        try {
            line_reader reader(options_.files, options_.start_line.value_or(1), stop_.descriptor());
            while (auto piece = reader.next()) {
                const size_t weight = piece->text.size();
                if (!ring_.put(std::move(*piece), weight))
                    break;
            }
        } catch (...) {
            read_fault_ = std::current_exception();
        }
        ring_.close();
    }

    void work()
    {
        const line_renderer renderer(options_);
        while (ring::item *item = ring_.take()) {
            try {
                renderer.render(item->task, item->result);
            } catch (...) {
                item->result.fault = std::current_exception();
            }
            ring_.finish(*item);
        }
    }

    void write()
    {
        try {
            while (const ring::item *item = ring_.oldest()) {
                output_.write(item->result.lines);
                add(item->task, item->result);
                if (item->result.fault)
                    std::rethrow_exception(item->result.fault);
                ring_.drop_oldest();
            }
        } catch (...) {
            write_fault_ = std::current_exception();
            ring_.stop();
            stop_.set();
        }
        finished_.set();
    }

    void add(const line_piece &piece, const rendered &result)
    {
        rule_counts shown;
        for (const auto &[rule, line, column, message] : result.first_warnings) {
            if (totals_.findings[rule] + shown[rule]++ >= most_shown_warnings)
                continue;
            std::string warning = shown_file_name(options_.files[piece.file]);
            warning.append(":").append(std::to_string(line));
            if (column > 0)
                warning.append(":").append(std::to_string(column));
            totals_.warnings.push_back(warning.append(": warning: ").append(message));
        }
        for (const auto &[rule, count] : result.warnings)
            totals_.findings[rule] += count;
        totals_.has_bad_records = totals_.has_bad_records || result.has_bad_records;
        totals_.errors += result.errors;
        totals_.records += result.records;
        totals_.bytes += piece.bytes;
        totals_.file = piece.file;
        totals_.last_line = piece.first_line + piece.lines - 1;
    }

    // Shows the progress and passes a signal on, until everything is written.
    void watch(const held_signals &signals)
    {
        const bool is_shown =
            !options_.quiet && ::isatty(STDERR_FILENO) == 1 && !output_.is_terminal();
        pollfd waited[] = {{finished_.descriptor(), POLLIN, 0}, {signals.descriptor(), POLLIN, 0}};
        while (waited[0].revents == 0) {
            if (is_shown)
                show_progress();
            ::poll(waited, std::size(waited), is_shown ? progress_interval : -1);
            if (waited[1].revents == 0 || signal_ != 0)
                continue;
            signal_ = signals.take();
            stop_.set();
            signals.let_through(); // a second one does not wait
            waited[1].fd = -1;
        }
        if (is_shown) {
            show_progress();
            std::cerr << '\n';
        }
    }

    void show_progress()
    {
        const size_t columns = terminal_columns() - 1; // the last one would begin a new line
        const std::string line = progress_line({totals_.records, totals_.bytes, total_bytes_,
                                                std::chrono::steady_clock::now() - begin_},
                                               columns);
        const size_t rest = shown_columns_ - std::min(line.size(), shown_columns_);
        std::cerr << "\r" + line + std::string(rest, ' ') << std::flush;
        shown_columns_ = line.size();
    }

    const options &options_;
    const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    const std::optional<uint64_t> total_bytes_;
    output output_;
    ring ring_;
    const event stop_;     // for the reader
    const event finished_; // for the watching thread
    totals totals_;
    std::exception_ptr read_fault_;
    std::exception_ptr write_fault_;
    int signal_ = 0;
    size_t shown_columns_ = 0;
};

} // namespace

int run_batch(const options &options)
{
    int status = 0;
    int signal = 0;
    {
        batch batch(options); // a signal ends the program while it waits for a pipe's reader
        status = batch.run();
        signal = batch.signal();
    }
    if (signal != 0)
        end_by(signal);
    return status;
}

} // namespace tool
