// Archives through the command, for the tests of its lines and those of its endings.
#ifndef QELRCPT_TESTS_BATCH_RUNS_HPP
#define QELRCPT_TESTS_BATCH_RUNS_HPP

#include "processes.hpp"

#include <nlohmann/json.hpp>

#include <cstdint>

using nlohmann::json;

class Batch : public ProcessTest
{
  protected:
    result run_fed(arguments args, const feeder &feed, const char *out_path = nullptr) const
    {
        args.insert(args.begin(), "--batch");
        channel in = make_pipe(false);
        channel out = make_pipe(true);
        const std::string err_path = (directory_ / "stderr").string();
        const descriptor err(
            open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
        const descriptor other(out_path != nullptr ? open(out_path, O_WRONLY | O_CLOEXEC) : -1);
        const pid_t child = start(args, in.theirs.get(),
                                  out_path != nullptr ? other.get() : out.theirs.get(), err.get());
        in.theirs.close();
        out.theirs.close();
        std::jthread feeding([&] {
            feed(in.ours);
            in.ours.close();
        });
        std::string text = out.ours.read();
        feeding.join();
        const ending end = wait_for(child);
        return {end, std::move(text), read_file(err_path)};
    }

    result run(const arguments &args, const std::string &input = "",
               const char *out_path = nullptr) const
    {
        return run_fed(
            args, [&](const descriptor &in) { in.write(input); }, out_path);
    }
};

inline std::vector<json> lines_of(const std::string &text)
{
    EXPECT_TRUE(text.empty() || text.ends_with('\n')) << "half a line";
    std::vector<json> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(json::parse(line));
    return lines;
}

// A line of which nothing is wrong that would be warned of.
inline const std::string sale_line =
    R"({"merch_name": "A", "merch_addr1": "B", "action": "sale", "cardtype": "cash", "amount": 5})"
    "\n";

inline const arguments money_only = {"--block=money", "--copy=customer", "--width=20"};

inline std::string money_line(uint64_t line, const std::string &file = "")
{
    const std::string begin = file.empty() ? "" : R"("file": ")" + file + R"(", )";
    return "{" + begin + R"("line": )" + std::to_string(line) +
           R"(, "blocks": {"cust_money": "SUBTOTAL:      $5.00\nTOTAL:         $5.00"}})" + "\n";
}

// A run whose input stays open, so that it is still at work.
class BatchAtWork : public Batch
{
  protected:
    void begin(arguments args)
    {
        args.insert(args.begin(), {"--batch", "--jobs=2"});
        child_ = start(args, in_.theirs.get(), out_.theirs.get(), err_.theirs.get());
        in_.theirs.close();
        out_.theirs.close();
        err_.theirs.close();
    }

    channel in_ = make_pipe(false);
    channel out_ = make_pipe(true);
    channel err_ = make_pipe(true);
    pid_t child_ = 0;
};

#endif
