// The command as a shell runs it: options, messages, exit statuses and output files.
#include "command_runs.hpp"

namespace
{

// At 20 columns.
const std::string sale = R"({"action": "sale", "amount": "12.34"})";
const std::string money = "SUBTOTAL:     $12.34\nTOTAL:        $12.34\n";
const std::string cut_line = "- - - - -  - - - - -\n";

TEST_F(Command, TellsWhatIsWrongWithTheCommandLine)
{
    struct {
        arguments args;
        arguments words;
    } const cases[] = {
        {{"--no-such-option"}, {"'--no-such-option'"}},
        {{"--width"}, {"--width", "a value"}},
        {{"--width", "9"}, {"--width", "'9'", "10 to 10000"}},
        {{"--width", "10001"}, {"--width", "'10001'", "10 to 10000"}},
        {{"--width", "40 "}, {"--width", "'40 '"}},
        {{"--width", "wide"}, {"--width", "'wide'"}},
        {{"--form", "parchment"}, {"--form", "'parchment'", "plain"}},
        {{"--line-break", "\n"}, {"--line-break", "lf or crlf"}},
        {{"--copy", "all"}, {"--copy", "customer, merchant or both"}},
        {{"--block", "cust_money"}, {"--block", "'cust_money'", "merch_info, reference", "notes"}},
        {{"--output", "xml"}, {"--output", "text, json, escpos, star"}},
        {{"--lang", "english"}, {"--lang", "'english'"}},
        {{"--customer-lang", ""}, {"--customer-lang", "''"}},
        {{"--country", "0"}, {"--country", "1 to 999"}},
        {{"--country", "84O"}, {"--country", "'84O'"}},
        {{"--currency", "JPY"}, {"--currency", "'JPY'", "1 to 999"}},
        {{"--industry", "retail,"}, {"--industry", "''"}},
        {{"--timezone", "../etc/passwd"}, {"--timezone"}},
        {{"-o", ""}, {"-o"}},
        {{"--batch=yess"}, {"--batch", "yess"}},
        {{"--page"}, {"--page", "--form html"}},
        {{"--page", "--form=html", "--output=json"}, {"--page", "no JSON"}},
        {{"--page", "--form=html", "-", "-"}, {"--page", "one FILE"}},
        {{"--page", "--form=html", "--copy=both"}, {"--page", "--copy customer"}},
        {{"--email"}, {"--email", "--form html"}},
        {{"--email", "--form=html", "--page"}, {"--page", "no --email"}},
        {{"--email", "--form=html", "--output=json"}, {"--email", "no JSON"}},
        {{"--email", "--form=html", "--batch"}, {"--email", "no --batch"}},
        {{"--playground", "--page", "--form=html"}, {"--page", "no --playground"}},
        {{"--playground", "--output=escpos"}, {"--output", "no --playground"}},
        {{"--playground", "--batch"}, {"--batch", "no --playground"}},
        {{"--playground", "--strict"}, {"--strict", "no --playground"}},
        {{"--playground", "--width=81"}, {"--width", "at most 80"}},
        {{"--playground", "-", "-"}, {"--playground", "one FILE"}},
        {{"--width=32", "--form=html"}, {"--width", "--form plain"}},
        {{"--form=moneris", "--width=40"}, {"--width", "--form plain"}},
        {{"--line-break=lf", "--form=xml", "--output=json"}, {"--line-break", "--form plain"}},
        {{"--line-break=lf", "--form=moneris", "--batch"}, {"--line-break", "--form plain"}},
        {{"--jobs=2"}, {"--jobs", "--batch"}},
        {{"--merchant", ""}, {"--merchant", "name of a file"}},
        {{"--merchant", "-"}, {"--merchant", "standard input"}},
        {{"--set", "=5"}, {"--set", "'=5'", "KEY=VALUE"}},
        {{"--set", "auth=\xE9"}, {"--set", "UTF-8"}},
    };
    for (const auto &[args, words] : cases) {
        const result made = run(args, sale);
        EXPECT_EQ(made.status, 2) << made.err;
        EXPECT_EQ(made.out, "") << args[0];
        EXPECT_TRUE(made.err.ends_with("\nsee qelrcpt --help\n")) << made.err;
        for (const std::string &word : words)
            EXPECT_TRUE(has(made.err, word)) << made.err;
    }
}

TEST_F(Command, SelectsAndSeparatesBlocksAndCopies)
{
    const std::string file = write("sale.json", sale);
    const std::string notice = " IMPORTANT - RETAIN\n THIS COPY FOR YOUR\n      RECORDS\n\n";
    struct {
        arguments args;
        std::string expected;
    } const cases[] = {
        {{"--block", "money"}, money + "\n" + cut_line + "\n" + money},
        {{"--block", "money", "--copy", "merchant"}, money},
        {{"--block=notice", "--block=money", "--copy=customer"}, // in the receipt's order
         money + "\n" + notice + "   CUSTOMER COPY\n"},
        {{"--block=money", "--copy=customer", file}, money + "\n" + cut_line + "\n" + money},
        {{"--block=money", "--industry=autofuel", "--copy=merchant"}, ""},
        {{"--block", "signature"}, ""},
    };
    for (const auto &[args, expected] : cases) {
        arguments all = {"--width", "20", file};
        all.insert(all.end(), args.begin(), args.end());
        const result made = run(all);
        EXPECT_EQ(made.status, 0);
        EXPECT_EQ(made.out, expected);
        all.insert(all.end(), {"--line-break", "crlf"});
        std::string crlf;
        for (const char byte : expected)
            crlf += byte == '\n' ? std::string("\r\n") : std::string(1, byte);
        EXPECT_EQ(run(all).out, crlf);
    }
}

TEST_F(Command, MakesAPageOfOneCopyInItsLanguage)
{
    struct {
        arguments args;
        std::string lang;
        std::string title;
    } const cases[] = {
        {{}, "en", "A &amp; &lt;B&gt;&#39;\uFFFD \u2013 Purchase \u2013 Customer Copy"},
        {{"--lang=fr"}, "fr", "A &amp; &lt;B&gt;&#39;\uFFFD \u2013 Achat \u2013 Copie Du Client"},
        {{"--lang=es"},
         "es",
         "A &amp; &lt;B&gt;&#39;\uFFFD \u2013 Compra \u2013 Copia del cliente"},
        {{"--lang=de", "--copy=customer"},
         "de",
         "A &amp; &lt;B&gt;&#39;\uFFFD \u2013 Kauf \u2013 Kundenkopie"},
        {{"--merchant-lang=it", "--copy=merchant"},
         "it",
         "A &amp; &lt;B&gt;&#39;\uFFFD \u2013 Acquista \u2013 Copia del commerciante"},
    };
    const std::string record = "action=sale\nmerch_name=A & <B>'\x01\n";
    for (const auto &[args, lang, title] : cases) {
        for (const char *option : {"--page", "--email"}) {
            arguments all = {"--form=html", option};
            all.insert(all.end(), args.begin(), args.end());
            const std::string page = run(all, record).out;
            EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n<html lang=\"" + lang + "\">")) << page;
            EXPECT_TRUE(has(page, "<title>" + title + "</title>")) << title << page;
        }
    }
    const std::pair<arguments, std::string> faults[] = {
        {{"--copy=merchant", "--industry=selfserv"}, "no merchant copy"},
        {{"--block=signature"}, "has no signature block"},
        {{"--block=money", "--block=emv"}, "has no money or emv block"},
    };
    for (const auto &[args, complaint] : faults) {
        arguments all = {"--form=html", "--email"};
        all.insert(all.end(), args.begin(), args.end());
        const result none = run(all, record);
        EXPECT_EQ(none.status, 1);
        EXPECT_EQ(none.out, "");
        EXPECT_TRUE(has(none.err, complaint)) << none.err;
    }
}

// What the page opens with, and that it is nowhere else and all else is the page as it is built.
TEST_F(Command, PutsTheRecordIntoThePage)
{
    const std::string opening = R"(<script type="application/json" id="given">)";
    const auto given = [&](const arguments &args, const std::string &record) {
        arguments all = {"--quiet", "--playground"};
        all.insert(all.end(), args.begin(), args.end());
        const std::string page = run(all, record).out;
        const size_t begin = page.find(opening) + opening.size();
        const size_t end = page.find("</script>", begin);
        const std::string built = read_file(QELRCPT_SOURCE "/share/playground.html");
        EXPECT_EQ(page.substr(0, begin) + "null" + page.substr(end), built);
        return nlohmann::json::parse(page.substr(begin, end - begin));
    };

    const std::string hostile =
        "{\"config\": {\"lang\": \"fr\", \"industry\": \"retail,mail\"},\n \"record\": "
        "{\"merch_name\": \"</script><!--<script>\\u2028\"}}\n";
    const auto as_it_is = given({}, hostile);
    EXPECT_EQ(as_it_is["text"], hostile);
    EXPECT_EQ(as_it_is["config"],
              nlohmann::json::parse(R"({"customerLanguage": "fr", "merchantLanguage": "fr",
                  "country": "840", "currency": "840", "industry": "retail,mail"})"));
    EXPECT_EQ(as_it_is["layout"],
              nlohmann::json::parse(R"({"forms": ["plain"], "copies": "both", "width": 40})"));

    const std::string shop = write("shop.json", R"({"config": {"country": 124, "currency": "EUR",
        "timezone": "Asia/Tokyo"}, "record": {"merch_phone": "1 < 2", "auth": "0"}})");
    const auto completed =
        given({"--merchant", shop, "--set", "custref=\"7\"", "--merchant-lang=it", "--form=html",
               "--copy=merchant", "--country=GB"},
              R"({"auth": "1", "line_items": [{"name": "a", "qty": 2}], "notes": "{no document"})");
    EXPECT_EQ(given({"--set=auth=1"}, R"({"custref": "{}", "moneris_rcpt_data": "{\"policy\": 1}",
                  "line_items": "[] // none"})")["text"],
              R"({
  "custref": "{}",
  "moneris_rcpt_data": "{\"policy\": 1}",
  "line_items": [] // none
,
  "auth": "1"
}
)");
    const auto record = nlohmann::json::parse(completed["text"].get<std::string>());
    EXPECT_EQ(record, nlohmann::json::parse(R"({"auth": "1", "notes": "{no document",
        "line_items": [{"name": "a", "qty": "2"}], "merch_phone": "1 < 2", "custref": "\"7\""})"));
    EXPECT_EQ(completed["config"],
              nlohmann::json::parse(R"({"customerLanguage": "en", "merchantLanguage": "it",
                  "country": "826", "currency": "978", "industry": "unknown",
                  "timeZone": "Asia/Tokyo"})"));
    EXPECT_EQ(completed["layout"],
              nlohmann::json::parse(R"({"forms": ["html"], "copies": "merchant", "width": 40})"));
}

TEST_F(Command, WritesTheBlocksAsJson)
{
    const std::string file =
        write("sale.json", R"({"amount": "5", "merch_name": "Caf\u00e9 \"A\""})");
    const arguments args = {"--output", "json",      "--block", "merch_info",
                            "--block",  "signature", "--copy",  "customer"};
    arguments one = args;
    one.push_back(file);
    const result made = run(one);
    EXPECT_TRUE(has(made.out, "CAFÉ \\\"A\\\"")) << made.out; // UTF-8, not escapes
    EXPECT_TRUE(made.out.ends_with("}\n"));
    const auto document = nlohmann::json::parse(made.out);
    EXPECT_EQ(document.size(), 1);
    EXPECT_TRUE(
        document["cust_merch_info"].get<std::string>().starts_with("                CAFÉ \"A\"\n"));

    arguments two = one;
    two.push_back(file);
    EXPECT_EQ(nlohmann::json::parse(run(two).out), nlohmann::json::array({document, document}));
    EXPECT_EQ(run({"--output", "json", "--block", "signature"}, sale).out, "{}\n");
}

TEST_F(Command, ReplacesTheOutputFileOnlyByACompleteOne)
{
    const fs::path out = write("receipt.txt", "old");
    const fs::path link = out.parent_path() / "link";
    const fs::path kept = out.parent_path() / "kept";
    fs::create_symlink("receipt.txt", link);
    fs::create_hard_link(out, kept); // shows whether the old file itself is written to
    fs::permissions(out, fs::perms::owner_read | fs::perms::owner_write);
    const arguments money_only = {"--block=money", "--copy=customer", "--width=20"};
    const auto run_to = [&](const fs::path &path, const std::string &input) {
        arguments args = money_only;
        args.insert(args.end(), {path == link ? "--output-file" : "-o", path.string()});
        return run(args, input);
    };

    EXPECT_EQ(run_to(out, "{").status, 1);
    EXPECT_EQ(read_file(out), "old");
    EXPECT_EQ(run_to(link, sale).out, "");
    EXPECT_EQ(read_file(out), money);
    EXPECT_EQ(read_file(kept), "old");
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(fs::status(out).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(run_to(out.parent_path() / "new", sale).status, 0);
    EXPECT_EQ(read_file(out.parent_path() / "new"), money);
    EXPECT_EQ(run_to("/dev/stdout", sale).out, money);
    EXPECT_EQ(files_in(directory_), 4 + 3) << "a file is left over"; // beside what the run is given

    for (const result &failed : {run_to("/dev/full", sale), run({}, sale, "/dev/full"),
                                 run({"--help"}, "", "/dev/full")}) {
        EXPECT_EQ(failed.status, 1);
        EXPECT_TRUE(has(failed.err, "No space left on device")) << failed.err;
    }
    const std::string detached = QELRCPT_COMMAND " --block=money --width=20 --copy=merchant -o " +
                                 link.string() + " " + write("sale", sale) + " >&- 2>&-";
    EXPECT_EQ(run_to(out, "amount=1").status, 0);
    EXPECT_EQ(std::system(detached.c_str()), 0); // without standard output and error
    EXPECT_EQ(read_file(out), money);

    EXPECT_EQ(run_to(out.parent_path(), sale).status, 1);
    EXPECT_EQ(run_to(out.parent_path() / "no" / "such", sale).status, 1);
}

TEST_F(Command, ShowsHelpAndVersion)
{
    const result help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.starts_with("Usage: qelrcpt "));
    EXPECT_TRUE(has(help.out,
                    "\n  --lang LANG               language of both copies: en, fr, es, de or it "
                    "(default en)\n"))
        << help.out;
    std::istringstream lines(help.out);
    for (std::string line; std::getline(lines, line);)
        EXPECT_LE(line.size(), 100) << line;
    EXPECT_TRUE(run({"--version"}).out.starts_with("qelrcpt "));
}

TEST_F(Command, PrintsEverySampleRecord)
{
    int samples = 0;
    for (const auto &sample : fs::directory_iterator(QELRCPT_RECORDS)) {
        SCOPED_TRACE(sample.path());
        const result made = run({"--quiet", sample.path()});
        EXPECT_EQ(made.status, 0);
        EXPECT_EQ(made.err, "");
        std::istringstream lines(made.out);
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(std::ranges::count_if(line, [](char byte) { return (byte & 0xC0) != 0x80; }),
                      40)
                << line;
        const std::string content = read_file(sample.path());
        const bool has_one_copy = has(content, "\"autofuel\"") || has(content, "\"selfserv\"");
        EXPECT_EQ(has(made.out, "\n- - - - - - - - - -  - - - - - - - - - -\n"), !has_one_copy);
        ++samples;
    }
    EXPECT_GE(samples, 17);
}

} // namespace
