// The command as a shell runs it: input forms, options, messages, exit statuses and output files.
#include "command_runs.hpp"

namespace
{

// At 20 columns.
const std::string sale = R"({"action": "sale", "amount": "12.34"})";
const std::string money = "SUBTOTAL:     $12.34\nTOTAL:        $12.34\n";
const std::string cut_line = "- - - - -  - - - - -\n";

TEST_F(Command, GivesTheSameReceiptForEveryFormOfTheInput)
{
    const std::string flat = R"({"action": "sale", "amount": 12.30, "u_need_signature": true,
        "rcpt_host_ts": "012324153000", "custref": null, // no purchase order
        "line_items": [{"name": "Tea", "qty": 2, "price": 12.30, "notes": "a \"b\" \u00e9"}]})";
    const std::string config = R"({"lang": "EN", "country": 840, "currency": "usd",
        "industry": ["retail", "mail"], "timezone": null})";
    const std::string lines =
        "# a comment\n\n action =sale\namount=12.30\nu_need_signature=true\n"
        "rcpt_host_ts=012324153000\n"
        R"(line_items=[{"name":"Tea","qty":"2","price":"12.30","notes":"a \"b\" \u00e9"}])";
    std::string crlf_lines = "\xEF\xBB\xBF";
    for (const char byte : lines)
        crlf_lines += byte == '\n' ? std::string("\r\n") : std::string(1, byte);

    const result expected = run({}, flat);
    EXPECT_EQ(expected.status, 0);
    EXPECT_EQ(expected.err, "");
    EXPECT_TRUE(has(expected.out, "TEA (2)                           $12.30\nA \"B\" \u00c9\n"));
    EXPECT_TRUE(has(expected.out, "TIME:                  01/23/24 15:30:00\n"));
    EXPECT_TRUE(has(expected.out, "\nX_______"));
    EXPECT_TRUE(expected.out.ends_with("MERCHANT COPY\n"));
    for (const std::string &input :
         {"/* first */" + flat, "// old line ends\r" + flat, "\xEF\xBB\xBF\r\n" + flat,
          R"({"record": )" + flat + "}", R"({"config": )" + config + R"(, "record": )" + flat + "}",
          lines, crlf_lines}) {
        const result made = run({"-"}, input);
        EXPECT_EQ(made.out, expected.out) << input;
        EXPECT_EQ(made.err, "") << input;
        EXPECT_EQ(run({write("record", input)}).out, expected.out) << input;
    }
}

TEST_F(Command, KeepsTheTextOfNumbers)
{
    const auto made = blocks({}, R"({"ordernum": 12.30, "custref": -0, "ttid": 1E+2,
        "auth": 123456789012345678901234567890, "stan": false,
        "line_items": [{"name": "Tea", "qty": 2.50, "price": 1.0, "notes": null}]})");
    const std::string reference = made["cust_reference"];
    for (const char *line : {" 12.30\n", " -0\n", " 1E+2\n", " 123456789012345678901234567890\n"})
        EXPECT_TRUE(has(reference, line)) << reference;
    EXPECT_TRUE(reference.ends_with(" FALSE")) << reference;
    EXPECT_EQ(made["cust_items"], "TEA (2.50)                         $1.00");
}

TEST_F(Command, TakesTheMerchantFromTheFileAndFromOptions)
{
    struct {
        std::string config;
        arguments options;
        std::string customer; // on the customer copy
        std::string merchant; // on the merchant copy; empty: there is none
    } const cases[] = {
        {"", {}, "PURCHASE", "PURCHASE"},
        {R"("lang": "fr")", {}, "ACHAT", "ACHAT"},
        {R"("customer_lang": "es", "lang": "fr")", {}, "COMPRA", "ACHAT"},
        {R"("customer_lang": "es", "lang": "fr")", {"--lang", "De"}, "KAUF", "KAUF"},
        {R"("lang": "fr")", {"--merchant-lang=it", "--lang=de"}, "KAUF", "ACQUISTA"},
        {"", {"--lang", "de", "--lang", "es"}, "COMPRA", "COMPRA"},
        {"", {}, "$5.00", "01/23/24"},
        {R"("currency": 978, "country": "GB")", {}, "€5,00", "23/01/24"},
        {R"("currency": "EUR")", {"--currency", "gbp", "--country", "036"}, "£5.00", "23/01/24"},
        {R"("country": "CA", "currency": 124)", {"--customer-lang=fr"}, "5.00$", "$5.00"},
        {R"("industry": "retail,selfserv")", {}, "$5.00", ""},
        {R"("industry": ["grocery", "autofuel"])", {}, "$5.00", ""},
        {R"("industry": "selfserv")", {"--industry", "retail, lodging"}, "$5.00", "$5.00"},
    };
    for (const auto &[config, options, customer, merchant] : cases) {
        const std::string record = R"({"action": "sale", "amount": 5, )"
                                   R"("rcpt_host_ts": "012324153000"})";
        const auto made =
            blocks(options, R"({"config": {)" + config + R"(}, "record": )" + record + "}");
        std::string copies[2];
        for (const auto &[key, text] : made.items())
            copies[key.starts_with("merch_") ? 1 : 0] += text.get<std::string>();
        EXPECT_TRUE(has(copies[0], customer)) << config << "\n" << copies[0];
        EXPECT_TRUE(has(copies[1], merchant)) << config << "\n" << copies[1];
        EXPECT_EQ(copies[1].empty(), merchant.empty()) << config;
    }
    const std::string new_year = R"({"timestamp": 1704067200})"; // 2024 begins in UTC
    const auto in_tokyo = blocks({"--timezone", "Asia/Tokyo"}, new_year);
    EXPECT_TRUE(has(in_tokyo["cust_reference"], "01/01/24 09:00:00"));
    const auto in_lima =
        blocks({}, R"({"config": {"timezone": "America/Lima"}, "record": )" + new_year + "}");
    EXPECT_TRUE(has(in_lima["merch_reference"], "12/31/23 19:00:00"));
}

TEST_F(Command, TellsWhatIsWrongWithTheInputAndWhere)
{
    struct {
        std::string content;
        std::string place;
        arguments words;
    } const cases[] = {
        {"{\"amount\": 1,\n \"tax\" 2}", ":2:8: ", {"'2'", "expected ':'"}},
        {"{\n\n  amount: 5}", ":3:3: ", {"'a'", "a key in double quotes"}},
        {"{\"amount\": 5,}", ":1:14: ", {"'}'", "a key in double quotes"}},
        {"{\"amount\": }", ":1:12: ", {"'}'", "expected a value"}},
        {"{\"amount\": 05}", ":1:13: ", {"'5'", "',' or '}'"}},
        {"{\"amount\": 1-23}", ":1:13: ", {"'-'", "',' or '}'"}},
        {"{\"amount\": 1true}", ":1:13: ", {"'t'", "',' or '}'"}},
        {"{\"amount\": -}", ":1:13: ", {"incomplete number", "a digit"}},
        {"{\"line_items\":[1\x94]}", ":1:17: ", {"unexpected", "',' or ']'"}},
        {"{\"amount\": 1 // all", ":1:20: ", {"end of the text", "',' or '}'"}},
        {"{\"auth\": \"\\ud83d\\u0041\"}", ":1:22: ", {"half of a surrogate pair"}},
        {"{\"amount\": \u00e9}", ":1:12: ", {"'\u00e9'", "expected a value"}},
        {"{\"auth\": /* \u00e9\n */ \"\u00e9\u00e9\" \"tax\"", ":2:10: ", {"'\"'", "',' or '}'"}},
        {"{\"line_items\": [1 2]}", ":1:19: ", {"'2'", "',' or ']'"}},
        {"{\"amount\": 5", ":1:13: ", {"end of the text", "',' or '}'"}},
        {"{\"amount\": 5}\n{", ":2:1: ", {"'{'", "nothing after the object"}},
        {"{\"auth\": \"5}\n", ":1:13: ", {"control character", "\\n"}},
        {"{\"auth\": \"5}", ":1:10: ", {"without a closing quote"}},
        {"{\"auth\": \"\xFF\"}", ":1:11: ", {"UTF-8"}},
        {"{\"auth\": \"\\x\"}", ":1:12: ", {"escape"}},
        {"{\"amount\": 1e999}", ":1:12: ", {"out of range"}},
        {"{\"amount\": 5} /* ", ":1:15: ", {"comment without an end"}},
        {" [1]", ":1:2: ", {"'['", "expected a JSON object"}},
        {"\"amount\"", ":1:1: ", {"'\"'", "expected a JSON object"}},
        {"/**/null", ":1:5: ", {"'n'", "expected a JSON object"}},
        {"{\n\"tax\": {\"a\": 1}}", ":2:1: ", {"'tax'", "an object or array", "expected a text"}},
        {"{\"auth\": \"a\\u0000b\"}", ":1:2: ", {"NUL", "'auth'"}},
        {"{\"line_items\": " + std::string(100000, '['), ":1:528: ", {"512 levels"}},
        {"{\"line_items\": " + std::string(512, '[') + "{", ":1:528: ", {"512 levels"}},
        {"{\"record\": {}, \"record\": {}}", ":1:16: ", {"a second 'record'"}},
        {"{\"record\": {},\n\"amount\": 5}", ":2:1: ", {"'amount'", "'config' only"}},
        {"{\"record\": {}, \"config\": 5}", ":1:16: ", {"'config' is not an object"}},
        {"{\"config\": {}}", ":1:2: ", {"'record'"}},
        {R"({"record": {}, "config": {"lang": "en-US"}})",
         ":1:27: ",
         {"lang", "'en-US'", "en, fr, es, de or it"}},
        {R"({"record": {}, "config": {"country": 1000}})",
         ":1:27: ",
         {"country", "'1000'", "1 to 999"}},
        {R"({"record": {}, "config": {"currency": true}})", ":1:27: ", {"currency", "EUR"}},
        {R"({"record": {}, "config": {"industry": ["retial"]}})",
         ":1:27: ",
         {"'retial'", "retail"}},
        {R"({"record": {}, "config": {"industry": [[]]}})", ":1:27: ", {"an array of names"}},
        {R"({"record": {}, "config": {"industry": {}}})", ":1:27: ", {"industry", "a text"}},
        {R"({"record": {}, "config": {"lang": ["en"]}})", ":1:27: ", {"lang", "a text"}},
        {R"({"record": {}, "config": {"timezone": "Mars/Olympus"}})",
         ":1:27: ",
         {"'Mars/Olympus'"}},
        {R"({"record": {}, "config": {"tz": "UTC"}})", ":1:27: ", {"'tz'", "currency", "timezone"}},
        {"amount=5\r\n\r\ntax 2\r\n", ":3:1: ", {"'tax 2'", "key=value"}},
        {"amount=5\n =2", ":2:1: ", {"no key", "key=value"}},
        {std::string(58, 'x') + "\x7f\u00e9", ":1:1: ", {"'" + std::string(58, 'x') + "?...'"}},
        {"# only this\n", ":1:1: ", {"expected lines of key=value"}},
        {" \n", ":1:1: ", {"nothing to read", "JSON object", "key=value"}},
        {std::string("amount=5\0", 9), ":1:9: ", {"NUL"}},
    };
    for (const auto &[content, place, words] : cases) {
        const std::string bad = write("bad", content);
        const result made = run({write("good", sale), bad});
        EXPECT_EQ(made.status, 1) << content.substr(0, 80);
        EXPECT_EQ(made.out, "") << content.substr(0, 80);
        EXPECT_TRUE(made.err.starts_with("qelrcpt: " + bad + place)) << made.err;
        EXPECT_EQ(made.err.find('\n'), made.err.size() - 1) << made.err;
        for (const std::string &word : words)
            EXPECT_TRUE(has(made.err, word)) << made.err;
    }
    EXPECT_EQ(run({"no/such"}).err, "qelrcpt: no/such: No such file or directory\n");
    EXPECT_EQ(run({"/"}).err, "qelrcpt: /: Is a directory\n");
    EXPECT_TRUE(run({}, "{").err.starts_with("qelrcpt: <stdin>:1:2: "));
}

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
        {{"--output", "xml"}, {"--output", "text or json"}},
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
        {{"--width=32", "--form=html"}, {"--width", "--form plain"}},
        {{"--form=moneris", "--width=40"}, {"--width", "--form plain"}},
        {{"--line-break=lf", "--form=xml", "--output=json"}, {"--line-break", "--form plain"}},
        {{"--line-break=lf", "--form=moneris", "--batch"}, {"--line-break", "--form plain"}},
        {{"--jobs=2"}, {"--jobs", "--batch"}},
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
    const result broken = run({"--output", "json"}, "merch_name=\xFF\xC3"); // still JSON
    EXPECT_TRUE(nlohmann::json::parse(broken.out).contains("cust_merch_info"));
}

TEST_F(Command, WarnsOfKeysThatTheLibraryDoesNotKnow)
{
    const std::string file =
        write("sale.json",
              "{\"acount\": 1,\n  \"Amount\": 2, \"zzz\": 3,\n\"amount\": 4, \"amount\": 5}");
    const std::string warnings =
        "qelrcpt: " + file +
        ":1:2: warning: unknown record key 'acount' (did you mean 'account'?)\n"
        "qelrcpt: " +
        file +
        ":2:3: warning: unknown record key 'Amount' (did you mean 'amount'?)\n"
        "qelrcpt: " +
        file +
        ":2:16: warning: unknown record key 'zzz'\n"
        "qelrcpt: " +
        file + ":3:14: warning: record key 'amount' again, the later value counts\n";
    const result made = run({file, "--block", "money", "--width", "20", "--copy", "customer"});
    EXPECT_EQ(made.status, 0);
    EXPECT_EQ(made.err, warnings);
    EXPECT_EQ(made.out, "SUBTOTAL:      $5.00\nTOTAL:         $5.00\n");
    EXPECT_EQ(run({"--quiet", file}).err, "");

    const result line = run({}, "amount=5\nttd=7\n\x1b[31mred=1");
    EXPECT_TRUE(
        has(line.err, "<stdin>:2:1: warning: unknown record key 'ttd' (did you mean 'ttid'?)\n"));
    EXPECT_FALSE(has(line.err, "\x1b")) << "an escape sequence reaches the terminal";
    const std::string key(1000000, 'z'); // what it is like is not looked for
    EXPECT_EQ(run({}, key + "=1").err,
              "qelrcpt: <stdin>:1:1: warning: unknown record key '" + key.substr(0, 60) + "...'\n");

    std::string many;
    for (int i = 0; i < 1000; ++i)
        many += "zzz" + std::to_string(i) + "=1\n";
    const std::string told = run({}, many).err;
    EXPECT_LE(std::ranges::count(told, '\n'), 21);
    EXPECT_TRUE(has(told, "further warnings"));
}

TEST_F(Command, WarnsOfAnUnmaskedCardNumberWithoutShowingIt)
{
    struct {
        std::string account;
        bool is_warned;
    } const cases[] = {
        {"4111111111111111", true},       {"4111 1111-1111 1111", true},
        {"378282246310005", true},        {"4222222222222", true}, // 13 digits
        {"6304000000000000000", true},                             // 19 digits
        {"4111111111111112", false},                               // wrong check digit
        {"XXXXXXXXXXXX1111", false},      {"411111XXXXXX1111", false},
        {"000000000000", false},          {"00000000000000000000", false}, // 12 and 20 digits
        {"4111111111111111=2512", false}, {"", false},
    };
    for (const auto &[account, is_warned] : cases) {
        const result made = run({"--block=money"}, "amount=5\naccount=" + account);
        EXPECT_EQ(made.status, 0);
        EXPECT_EQ(made.out, run({"--block=money"}, "amount=5").out);
        EXPECT_EQ(made.err, is_warned ? "qelrcpt: <stdin>:2:1: warning: account looks like an "
                                        "unmasked card number; receipts must show it masked\n"
                                      : "")
            << account;
    }
    EXPECT_TRUE(has(run({}, R"({"record": {"account": 4111111111111111}})").err, "unmasked"));
    EXPECT_EQ(run({"--quiet"}, "account=4111111111111111").err, "");
    EXPECT_EQ(run({}, "ordernum=4111111111111111").err, "");
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
    EXPECT_EQ(std::distance(fs::directory_iterator(out.parent_path()), {}), 4)
        << "a file is left over";

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
        const result made = run({sample.path()});
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

// A file that was cut off is never taken for a whole one, and never crashes the command.
TEST_F(Command, RejectsEveryBeginningOfARecord)
{
    const std::string whole = read_file(fs::path(QELRCPT_RECORDS) / "chip-credit-sale.json");
    const size_t last_brace = whole.rfind('}');
    for (size_t size = 0; size <= last_brace; size += 29) {
        const result made = run({}, whole.substr(0, size));
        EXPECT_EQ(made.status, 1) << size;
        EXPECT_EQ(made.out, "") << size;
        EXPECT_TRUE(made.err.starts_with("qelrcpt: <stdin>:")) << made.err;
    }
}

} // namespace
