// Archives through the command: every line in, one whole line out, whatever happens on the way.
#include "archives/progress.h"
#include "batch_runs.hpp"

#include <algorithm>
#include <chrono>

namespace
{

TEST_F(Batch, GivesOneLineForEachRecordAndGoesOnAfterBadOnes)
{
    const std::string five = R"({"amount": 5})";
    struct {
        std::string input;
        std::string expected; // an error's line up to its message
        arguments words;      // of the message
    } const cases[] = {
        {"", "", {}},
        {"\n \r\n\t\n", "", {}},
        {five + "\n" + five + "\n", money_line(1) + money_line(2), {}},
        {five + "\n\n\r\n" + five, money_line(1) + money_line(4), {}}, // no line feed at the end
        {"\xEF\xBB\xBF" + five + "\r\n" + five + "\r\n", money_line(1) + money_line(2), {}},
        {R"({"record": {"amount": 6, "amount": "5"}, "config": {}})", money_line(1), {}},
        {R"({"ordernum": "\"7", "amount": 5, "ttid": 12, "ordernum": "A-1"})",
         R"({"line": 1, "ttid": "12", "ordernum": "A-1", )" + money_line(1).substr(12),
         {}},
        {R"({"config": {"currency": "GBP"}, "record": {"amount": 5}})",
         R"({"line": 1, "blocks": {"cust_money": "SUBTOTAL:      £5.00\nTOTAL:         £5.00"}})"
         "\n",
         {}},
        {five + "\n{\"amount\"",
         money_line(1) + R"({"line": 2, "error": ")",
         {"column 10: ", "':'", "the input ends within this line"}},
        {"{\"amount\n" + five, R"({"line": 1, "error": ")", {"column 2: ", "closing quote"}},
        {"amount=5\n" + five, R"({"line": 1, "error": ")", {"column 1: ", "JSON object"}},
        {"[" + five + "]\n" + five, R"({"line": 1, "error": ")", {"column 1: ", "JSON object"}},
        {five + five + "\n" + five, R"({"line": 1, "error": ")", {"column 14: ", "nothing after"}},
        {std::string("\0\x1B[2J\xFF\x01\n", 8) + five, R"({"line": 1, "error": ")", {"NUL"}},
        {"\xFF\xFE{\x80\n" + five, R"({"line": 1, "error": ")", {"UTF-16 text"}},
        {R"({"config": {"lang": "4111111111111111"}, "record": {}})",
         R"({"line": 1, "error": ")",
         {"'411111******1111'"}},
        {R"({"config": {"lang": "tlh"}, "record": {}})"
         "\n" +
             five,
         R"({"line": 1, "error": ")",
         {"lang", "en, fr, es, de or it"}},
    };
    for (const auto &[input, expected, words] : cases) {
        arguments args = money_only;
        args.emplace_back("--jobs=2");
        const result made = run(args, input);
        EXPECT_TRUE(made.out.starts_with(expected)) << made.out << "instead of\n" << expected;
        EXPECT_EQ(made.status, words.empty() ? 0 : 1) << input;
        EXPECT_EQ(has(made.err, ", 1 error\n"), !words.empty()) << made.err;
        const auto lines = std::ranges::count(made.out, '\n');
        EXPECT_EQ(lines, words.empty() ? std::ranges::count(expected, '\n')
                                       : std::ranges::count(input, '\n') + 1);
        for (const auto &line : lines_of(made.out)) {
            for (const std::string &word : words)
                EXPECT_TRUE(!line.contains("error") || has(line["error"], word)) << line;
        }
    }
}

TEST_F(Batch, CountsTheLinesOfEveryFileByItself)
{
    const std::string one = write("one", "\n{\"amount\": 5}");
    const std::string two = write("two", "{\"amount\": 5}\n");
    const std::string out = write("out", "old");
    arguments args = money_only;
    args.insert(args.end(), {"-o", out, one, two, "-", one});
    const result made = run(args, "{\"amount\": 5}\n");
    EXPECT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(made.out, "");
    EXPECT_EQ(read_file(out),
              money_line(2, one) + money_line(1, two) + money_line(1, "-") + money_line(2, one));

    args.emplace_back((directory_ / "missing").string());
    const result failed = run(args);
    EXPECT_EQ(failed.status, 1);
    EXPECT_TRUE(has(failed.err, "missing: No such file")) << failed.err;
    EXPECT_TRUE(has(read_file(out), "SUBTOTAL")) << "the old output is lost";
    EXPECT_EQ(run({directory_.string()}).status, 1);

    const result torn = run({"-q", "-o", out, two, "/proc/self/mem"}); // opens, but cannot be read
    EXPECT_EQ(torn.status, 1);
    EXPECT_EQ(torn.err, "qelrcpt: /proc/self/mem: Input/output error\n");
    EXPECT_TRUE(has(read_file(out), "SUBTOTAL")) << "the old output is lost";

    const std::string broken = write("\xFF", "{}");
    EXPECT_EQ(lines_of(run({broken, two}).out)[0]["file"], (directory_ / "\uFFFD").string());
}

TEST_F(Batch, BeginsAtTheLineThatIsAskedFor)
{
    const std::string five = R"({"amount": 5})";
    const std::string long_lines = std::string(size_t{70} * 1024, ' ') + "\n" + five + "\n" +
                                   std::string(size_t{140} * 1024, ' ') + five;
    struct {
        std::string input;
        std::string start;
        std::string expected;
        std::string message;
    } const cases[] = {
        {"bad\n" + five + "\n", "2", money_line(2), ""},
        {"\n\n\r\n" + five, "4", money_line(4), ""},
        {"\xEF\xBB\xBF" + five, "1", money_line(1), ""},
        {"bad\n" + five + "\nbad", "4", "", ""}, // went on to the end
        {"bad\n" + five + "\nbad\n", "4", "", ""},
        {"bad\n", "9", "", "<stdin>: there are 1 lines only, expected no --start-line 9"},
        {"bad\nbad", "4", "", "there are 2 lines only"},
        {"", "1", "", ""},
        {"", "2", "", "there are 0 lines only"},
        {long_lines, "2", money_line(2) + money_line(3), ""},
        {long_lines, "3", money_line(3), ""},
    };
    for (const auto &[input, start, expected, message] : cases) {
        arguments args = money_only;
        args.insert(args.end(), {"--start-line", start});
        const result made = run(args, input);
        EXPECT_EQ(made.status, message.empty() ? 0 : 1) << input.substr(0, 40) << start;
        EXPECT_EQ(made.out, expected);
        EXPECT_TRUE(has(made.err, message)) << made.err;
    }
}

TEST_F(Batch, GivesTheBlocksOfTheSameRecordAlone)
{
    std::string archive;
    std::vector<fs::path> samples;
    for (const auto &sample : fs::directory_iterator(QELRCPT_RECORDS)) {
        if (sample.path().extension() != ".json")
            continue;
        samples.push_back(sample.path());
        archive += json::parse(read_file(sample.path())).dump() + "\n";
    }
    for (const char *form : {"plain", "html", "xml", "json", "moneris", "moneris-ecomm"}) {
        const arguments how = {"--form", form, "--customer-lang", "fr"};
        const auto lines = lines_of(run(how, archive).out);
        ASSERT_EQ(lines.size(), samples.size());
        for (size_t i = 0; i < samples.size(); ++i) {
            const fs::path alone = directory_ / "alone";
            channel err = make_pipe(true);
            arguments args = how;
            args.insert(args.end(),
                        {"--output", "json", "-o", alone.string(), samples[i].string()});
            EXPECT_EQ(wait_for(start(args, 0, 1, err.theirs.get())).status, 0);
            EXPECT_EQ(lines[i]["blocks"], json::parse(read_file(alone))) << samples[i] << form;
        }
    }
}

// Records of very different lengths are not done in the order in which they come.
TEST_F(Batch, KeepsTheOrderWithAnyNumberOfJobs)
{
    constexpr size_t count = 6000;
    std::string archive;
    for (size_t i = 1; i <= count; ++i) {
        const std::string notes(i % 1000 == 7 ? 200000 : i % 7 * 30, 'x');
        archive += R"({"timestamp": 1, "ordernum": "N)" + std::to_string(i) +
                   R"(", "order_notes": ")" + notes + "\"}" + (i % 11 == 0 ? "!" : "") + "\n";
    }
    const result expected = run({"--jobs=1"}, archive);
    const auto lines = lines_of(expected.out);
    ASSERT_EQ(lines.size(), count);
    for (size_t i = 1; i <= count; ++i) {
        const json &line = lines[i - 1];
        EXPECT_EQ(line["line"], i);
        EXPECT_EQ(line.contains("error"), i % 11 == 0);
        if (line.contains("blocks")) {
            EXPECT_TRUE(has(line["blocks"]["cust_reference"], " N" + std::to_string(i)));
        }
    }
    EXPECT_EQ(expected.status, 1);
    EXPECT_TRUE(has(expected.err, "qelrcpt: 5455 records, 545 errors\n")) << expected.err;
    for (const char *jobs : {"--jobs=2", "--jobs=7"})
        EXPECT_TRUE(run({jobs}, archive).out == expected.out) << jobs;
}

// The reader, the workers and the writer hold a bounded part of the input only.
TEST_F(Batch, NeedsNoMoreMemoryForMoreRecordsOrLongerLines)
{
    constexpr long ceiling = 100 * 1024; // kilobytes
    const arguments args = {"--jobs=2", "--block=money"};
    const std::string block(1 << 20, 'x');
    const result long_line = run_fed(args, [&](const descriptor &in) {
        in.write("{\"amount\": 5}\n{\"order_notes\": \"");
        for (int i = 0; i < 100; ++i)
            in.write(block);
        in.write("\"}\n{\"amount\": 5}\n");
    });
    const auto lines = lines_of(long_line.out);
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(long_line.status, 1);
    EXPECT_TRUE(has(lines[1]["error"], "longer than 16 MiB")) << lines[1];
    EXPECT_EQ(lines[2]["line"], 3);
    EXPECT_TRUE(lines[2].contains("blocks"));
    const result cut_off = run(args, std::string(size_t{17} << 20, 'x'));
    EXPECT_TRUE(has(cut_off.out, "longer than 16 MiB")) << cut_off.out;

    std::string records;
    for (int i = 0; i < 1000; ++i)
        records += R"({"amount": 5, "order_notes": ")" + std::string(900, 'y') + "\"}\n";
    const result many = run_fed(args, [&](const descriptor &in) {
        for (int i = 0; i < (is_sanitized ? 5 : 100); ++i)
            in.write(records);
    });
    EXPECT_EQ(many.status, 0);
    if (!is_sanitized) {
        EXPECT_LT(long_line.most_kilobytes, ceiling);
        EXPECT_LT(many.most_kilobytes, ceiling);
    }
}

TEST_F(Batch, WarnsOfEveryKindOfMistakeButNeverFloods)
{
    std::string archive;
    for (int i = 0; i < 1000; ++i)
        archive += R"({"amuont": 5, "auth": 1, "auth": 2})"
                   "\n";
    archive += R"({"auth": "é", "account": "4111-1111-1111-1111"})"
               "\n";
    const result made = run(
        {"--jobs=2", "--set=merch_name=A", "--set=merch_addr1=B", "--set=action=sale"}, archive);
    EXPECT_EQ(made.status, 0);
    EXPECT_EQ(std::ranges::count(made.err, '\n'), 5 + 5 + 5 + 1 + 1) << made.err;
    for (const char *part :
         {"qelrcpt: <stdin>:1:2: warning: nothing reads the key 'amuont'; did you mean 'amount'?",
          ":5:26: warning: the record has this key again", ":1001:15: warning: this looks like a ",
          ":1: warning: the receipt shows no amount; give amount [amount-missing; ",
          "qelrcpt: warnings: 1001 amount-missing, 1000 repeated-key, 1000 unknown-key, "
          "1 card-number\n"})
        EXPECT_TRUE(has(made.err, part)) << part << made.err;
    EXPECT_FALSE(has(made.err, "1111-")) << "a card number is shown";
    EXPECT_EQ(run({"--quiet"}, archive + "bad").err, "");
}

TEST_F(Batch, ChecksItsOptions)
{
    struct {
        arguments args;
        std::string word;
    } const cases[] = {
        {{"--jobs", "0"}, "1 to 256"},         {{"--jobs", "257"}, "1 to 256"},
        {{"--jobs", "two"}, "'two'"},          {{"--jobs", "2x"}, "'2x'"},
        {{"--start-line", "0"}, "not a line"}, {{"--start-line", "x"}, "'x'"},
        {{"--output", "text"}, "--output"},    {{"--form=html", "--page"}, "--page"},
    };
    for (const auto &[args, word] : cases) {
        const result made = run(args, "{}");
        EXPECT_EQ(made.status, 2);
        EXPECT_EQ(made.out, "");
        EXPECT_TRUE(has(made.err, word)) << made.err;
    }
    EXPECT_EQ(run({"--output=json"}, "").status, 0);
    const channel err = make_pipe(true);
    EXPECT_EQ(wait_for(start({"--jobs", "2"}, 0, 1, err.theirs.get())).status, 2);
}

// What is asked of the system's zones does not stay.
TEST_F(Batch, NeedsNoMoreMemoryForMoreZones)
{
    constexpr long ceiling = 14 * 1024; // kilobytes
    constexpr int zones = is_sanitized ? 1000 : 100000;
    const result made = run_fed({"--jobs=2", "--quiet"}, [&](const descriptor &in) {
        for (int i = 0; i < zones; ++i)
            in.write(R"({"config": {"timezone": "America/)" + std::string(40, 'x') +
                     std::to_string(i) + "\"}, \"record\": {}}\n");
    });
    EXPECT_EQ(made.status, 1);
    EXPECT_EQ(std::ranges::count(made.out, '\n'), zones);
    if (!is_sanitized) {
        EXPECT_LT(made.most_kilobytes, ceiling);
    }
}

// What a terminal shows of the arguments' run, the command's end not included.
std::string shown_on_terminal(const arguments &args, bool is_stderr, const descriptor &other)
{
    channel terminal = make_terminal();
    const int theirs = terminal.theirs.get();
    const pid_t child =
        start(args, 0, is_stderr ? other.get() : theirs, is_stderr ? theirs : other.get());
    terminal.theirs.close();
    std::string shown = terminal.ours.read();
    wait_for(child);
    return shown;
}

TEST_F(Batch, NeverLetsAValueActOnTheTerminal)
{
    const std::string hostile = "A\x1b[2JB\x07"
                                "C\u009b31mD\x7f"
                                "E\rF";
    const std::string escaped = R"(A\u001b[2JB\u0007C\u009b31mD\u007fE\rF)";
    const std::string record = "{\"cardholdername\": \"" + escaped + "\", \"\\u001b[9m\": 1}\n";
    const std::string file = write("\x1b[5mname", record);
    const std::string bytes = write("bytes", "cardholdername=A\x9b"
                                             "31mB\x1b[2J");
    const descriptor nowhere(open("/dev/null", O_RDWR | O_CLOEXEC));
    const auto is_harmless = [](std::string shown) {
        for (size_t bar = 0; (bar = shown.find("\r[", bar)) != std::string::npos;)
            shown.erase(bar, 1); // progress that goes back to the begin of its line
        return std::ranges::none_of(shown,
                                    [](char byte) {
                                        return (static_cast<unsigned char>(byte) < 0x20 &&
                                                byte != '\n') ||
                                               byte == 0x7F;
                                    }) &&
               !has(shown, "\u009b") && json(shown).dump() != ""; // dump throws for broken UTF-8
    };
    for (const arguments &args : std::vector<arguments>{{file},
                                                        {bytes},
                                                        {"--form=xml", file},
                                                        {"--form=html", "--page", file},
                                                        {"--output=json", file},
                                                        {"--batch", file},
                                                        {"--batch", file, file},
                                                        {"-o/dev/tty/no", file},
                                                        {"\x1b[5mmissing"}}) {
        for (const bool is_stderr : {false, true}) {
            const std::string shown = shown_on_terminal(args, is_stderr, nowhere);
            EXPECT_TRUE(is_harmless(shown))
                << json(shown).dump(-1, ' ', true, json::error_handler_t::replace);
        }
    }
    EXPECT_TRUE(has(shown_on_terminal({"--copy=merchant", file}, false, nowhere), "A?[2JB?"));
    EXPECT_TRUE(
        has(shown_on_terminal({"--raw", "--copy=merchant", file}, false, nowhere), "A^[[2JB^G"));
    EXPECT_TRUE(has(shown_on_terminal({file}, true, nowhere), "^[[5mname:1:"));

    // What is harmless stays as it is, and everything that is asked for does for what is no
    // terminal.
    const std::string plain = write("plain", "amount=5\nprintdata=A\tB");
    const std::string copy = shown_on_terminal(
        {"--raw", "--currency=GBP", "--line-break=crlf", "--copy=merchant", plain}, false, nowhere);
    EXPECT_TRUE(has(copy, " \u00a35.00\r\n") && has(copy, "A\tB\r\n")) << copy;
    const std::string out = (directory_ / "out").string();
    wait_for(start({"-q", "-o", out, file}, 0, 1, 2));
    EXPECT_TRUE(has(read_file(out), "A?[2JB?C?31MD?E F\n")) << read_file(out);
    wait_for(start({"-q", "--raw", "-o", out, file}, 0, 1, 2));
    EXPECT_TRUE(has(read_file(out), "A\x1b[2JB\x07"));
    EXPECT_TRUE(has(run({"-q", file}).out, "A?[2JB?C?31MD?E F"));
    const std::string name = R"({"merch_name": ")" + escaped + "\"}";
    for (const char *form : {"plain", "moneris", "moneris-ecomm"})
        EXPECT_TRUE(has(run({"-q", "--form", form}, name).out, "A?[2JB?C?31MD?E F")) << form;
    const auto lines = lines_of(run({"-q", "--raw", file}).out);
    EXPECT_TRUE(has(lines[0]["blocks"]["cust_reference"], "A\x1b[2JB\x07"
                                                          "C\u009b31MD\x7f"))
        << lines[0];
}

TEST_F(Batch, ShowsItsProgressOnATerminalOnly)
{
    const std::string file = write("file", "{}\n{}\n{}\nbad\n");
    const descriptor nowhere(open("/dev/null", O_RDWR | O_CLOEXEC));
    const std::string shown = shown_on_terminal({"--batch", file}, true, nowhere);
    const size_t end = shown.find('\n');
    const std::string last = shown.substr(shown.rfind('\r', end) + 1);
    EXPECT_TRUE(last.starts_with("[" + std::string(30, '#') + "] 100%  3 records  ")) << last;
    EXPECT_TRUE(has(last, "/s  0:00 left")) << last;
    EXPECT_TRUE(last.ends_with("\nqelrcpt: 3 records, 1 error\n")) << last;
    EXPECT_EQ(shown_on_terminal({"--batch", "--quiet", file}, true, nowhere), "");
    const channel other = make_terminal();
    const std::string told =
        shown_on_terminal({"--batch", "--block=money", file}, true, other.theirs);
    EXPECT_TRUE(told.ends_with("qelrcpt: 3 records, 1 error\n")) << told;
    EXPECT_FALSE(has(told, "100%")) << told;
    EXPECT_FALSE(has(run({file}).err, "\r"));
}

TEST(Progress, Lines)
{
    const std::string blank(23, ' ');
    const struct {
        tool::progress progress;
        size_t columns;
        std::string line;
    } cases[] = {
        {{1234567, 50, 200, std::chrono::seconds(10)},
         99,
         "[#######" + blank + "]  25%  1,234,567 records  123,456/s  0:30 left"},
        {{999, 1, 3601, std::chrono::seconds(1)},
         99,
         "[" + std::string(30, ' ') + "]   0%  999 records  999/s  1:00:00 left"},
        {{20, 1, 76, std::chrono::seconds(10)},
         99,
         "[" + std::string(30, ' ') + "]   1%  20 records  2/s  12:30 left"},
        {{1, 20, 10, {}}, 99, "[" + std::string(30, '#') + "] 100%  1 record  1,000/s  0:00 left"},
        {{0, 0, 10, {}}, 99, "[" + std::string(30, ' ') + "]   0%  0 records  0/s"},
        {{0, 0, 0, {}}, 99, "0 records  0/s"},
        {{1000, 9, {}, std::chrono::seconds(2)}, 99, "1,000 records  500/s"},
        {{10, 5, 10, std::chrono::seconds(1)}, 41, "[##   ]  50%  10 records  10/s  0:01 left"},
        {{10, 5, 10, std::chrono::seconds(1)}, 40, "10 records  10/s  0:01 left"},
        {{10, 5, 10, std::chrono::seconds(1)}, 20, "10 records  10/s  0:"},
    };
    for (const auto &[progress, columns, line] : cases)
        EXPECT_EQ(tool::progress_line(progress, columns), line);
}

} // namespace
