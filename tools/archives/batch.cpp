#include "archives/batch.h"

#include "archives/progress.h"
#include "archives/work_ring.h"
#include "messages.h"
#include "reading/line_reader.h"
#include "reading/record_file.h"
#include "signals.h"
#include "writing/output.h"
#include "writing/safe_text.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
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
constexpr size_t items_per_job = 4;
constexpr size_t most_bytes_at_once = line_reader::longest_line + size_t{4} * 1024 * 1024;
constexpr uint64_t most_shown_warnings = 5; // of each kind

constexpr std::array<std::string_view, 3> doubt_names = {
    "unknown record keys", "repeated record keys", "accounts that look like unmasked card numbers"};

size_t index_of(doubt_kind kind)
{
    return static_cast<size_t>(kind);
}

struct placed_doubt {
    tool::doubt doubt;
    uint64_t line;
    size_t column;
};

struct rendered {
    std::string lines;
    uint64_t records = 0;
    uint64_t errors = 0;
    std::array<uint64_t, doubt_names.size()> doubts{};
    std::vector<placed_doubt> first_doubts;
};

using ring = work_ring<line_piece, rendered>;

// Of the byte, counted in characters from 1.
size_t column_of(std::string_view line, size_t offset)
{
    const auto before = line.substr(0, offset);
    return 1 + static_cast<size_t>(std::ranges::count_if(
                   before, [](char byte) { return !continues_character(byte); }));
}

std::string_view without_line_break(std::string_view line)
{
    for (const char end : {'\n', '\r'}) {
        if (line.ends_with(end))
            line.remove_suffix(1);
    }
    return line;
}

bool is_blank(std::string_view line)
{
    return line.find_first_not_of(" \t\r\n\v\f") == std::string_view::npos;
}

// Renders pieces; several threads may use it at once.
class line_renderer
{
  public:
    explicit line_renderer(const options &options) : options_(options) {}

    rendered render(const line_piece &piece) const
    {
        rendered result;
        uint64_t number = piece.first_line;
        if (piece.is_too_long)
            add_error(result, piece, number, "longer than 16 MiB, expected one record");
        for (std::string_view text = piece.text; !text.empty(); ++number) {
            const size_t size = std::min(text.find('\n'), text.size() - 1) + 1;
            const std::string_view line = without_line_break(text.substr(0, size));
            text.remove_prefix(size);
            if (!is_blank(line))
                add_line(result, piece, number, line);
        }
        return result;
    }

  private:
    void add_line(rendered &result, const line_piece &piece, uint64_t number,
                  std::string_view line) const
    {
        try {
            const record_file file = parse_json_record(line);
            add_record(result, piece, number, file);
            count_doubts(result, file.doubts, number, line);
        } catch (const text_error &fault) {
            std::string message("column ");
            message.append(std::to_string(column_of(line, fault.offset))).append(": ");
            message += fault.what();
            if (piece.is_unfinished)
                message += "; the input ends within this line";
            add_error(result, piece, number, message);
        } catch (const std::exception &fault) {
            add_error(result, piece, number, fault.what());
        }
    }

    void add_record(rendered &result, const line_piece &piece, uint64_t number,
                    const record_file &file) const
    {
        const Qel_rcpt_config_t config = merchant_config(options_.merchant, file.merchant);
        const receipt shown = tool::render(file.record.get(), config, options_.layout);
        begin_line(result.lines, piece, number);
        result.lines += "\"blocks\": {";
        for (const block &part : shown.blocks) {
            if (&part != &shown.blocks.front())
                result.lines += ", ";
            append_json_text(result.lines, part.key);
            result.lines += ": ";
            append_json_text(result.lines, part.text);
        }
        result.lines += "}}\n";
        ++result.records;
    }

    void add_error(rendered &result, const line_piece &piece, uint64_t number,
                   std::string_view message) const
    {
        begin_line(result.lines, piece, number);
        result.lines += "\"error\": ";
        append_json_text(result.lines, message);
        result.lines += "}\n";
        ++result.errors;
    }

    void begin_line(std::string &lines, const line_piece &piece, uint64_t number) const
    {
        lines += '{';
        if (options_.files.size() > 1) {
            lines += "\"file\": ";
            append_json_text(lines, options_.files[piece.file]);
            lines += ", ";
        }
        lines.append("\"line\": ").append(std::to_string(number)).append(", ");
    }

    static void count_doubts(rendered &result, const std::vector<doubt> &doubts, uint64_t number,
                             std::string_view line)
    {
        for (const doubt &doubt : doubts) {
            if (++result.doubts[index_of(doubt.kind)] <= most_shown_warnings)
                result.first_doubts.push_back({doubt, number, column_of(line, doubt.offset)});
        }
    }

    const options &options_;
};

// What was written so far. One thread adds to it; the two first counts are for all to see.
struct totals {
    std::atomic<uint64_t> records = 0;
    std::atomic<uint64_t> bytes = 0; // of the input
    uint64_t errors = 0;
    std::array<uint64_t, doubt_names.size()> doubts{};
    std::vector<std::string> warnings;
};

void complain_of(const totals &totals, bool is_quiet)
{
    if (is_quiet)
        return;
    for (const std::string &warning : totals.warnings)
        complain(warning);
    std::string all;
    for (size_t i = 0; i < doubt_names.size(); ++i) {
        if (totals.doubts[i] == 0)
            continue;
        all.append(all.empty() ? "warnings: " : ", ").append(std::to_string(totals.doubts[i]));
        all.append(1, ' ').append(doubt_names[i]);
    }
    if (!all.empty())
        complain(all);
    if (totals.errors > 0)
        complain(std::to_string(totals.records) + " records, " + std::to_string(totals.errors) +
                 " errors");
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
            throw input_error(name + ": " + std::generic_category().message(EISDIR));
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
          output_(options.output_file, options.files),
          ring_(items_per_job * options.jobs + 1, most_bytes_at_once)
    {
    }

    int run()
    {
        const held_signals signals;
        run_threads(signals);
        complain_of(totals_, options_.quiet);
        if (write_fault_)
            std::rethrow_exception(write_fault_);
        if (signal_ == 0 && !read_fault_)
            output_.finish();
        if (read_fault_)
            std::rethrow_exception(read_fault_);
        return totals_.errors > 0 ? 1 : 0;
    }

    int signal() const { return signal_; } // that ended the run; 0: none

  private:
    void run_threads(const held_signals &signals)
    {
        std::vector<std::jthread> threads;
        threads.emplace_back([this] { read(); });
        for (size_t i = 0; i < options_.jobs; ++i)
            threads.emplace_back([this] { work(); });
        threads.emplace_back([this] { write(); });
        watch(signals);
    }

    void read()
    {
        try {
            line_reader reader(options_.files, stop_.descriptor());
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
            item->result = renderer.render(item->task);
            ring_.finish(*item);
        }
    }

    void write()
    {
        try {
            while (const ring::item *item = ring_.oldest()) {
                output_.write(item->result.lines);
                add(item->task, item->result);
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
        for (const auto &[doubt, line, column] : result.first_doubts) {
            const uint64_t before = totals_.doubts[index_of(doubt.kind)]++;
            if (before < most_shown_warnings)
                totals_.warnings.push_back(shown_file_name(options_.files[piece.file]) + ":" +
                                           std::to_string(line) + ":" + std::to_string(column) +
                                           ": warning: " + warning_of(doubt));
        }
        for (size_t i = 0; i < doubt_names.size(); ++i) // those that were not kept
            totals_.doubts[i] += result.doubts[i] - std::min(result.doubts[i], most_shown_warnings);
        totals_.errors += result.errors;
        totals_.records += result.records;
        totals_.bytes += piece.bytes;
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
