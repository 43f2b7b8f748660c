// What the command takes as records, and what it says of those that it cannot take or doubts.
#include "command_runs.hpp"

namespace
{

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
        EXPECT_EQ(made.status, 0) << input;
        EXPECT_EQ(run({write("record", input)}).out, expected.out) << input;
    }
}

TEST_F(Command, TakesNumbersByTheirDecimalValue)
{
    const auto made =
        blocks({}, R"({"ordernum": 12.30, "custref": -0, "ttid": 1E+2, "batch": -12.50e-3,
        "auth": 123456789012345678901234567890, "stan": false,
        "line_items": [{"name": "Tea", "qty": 2.50, "price": 1.0E7, "notes": null}]})");
    const std::string reference = made["cust_reference"];
    for (const char *line :
         {" 12.30\n", " -0\n", " 100\n", " 123456789012345678901234567890\n", " -0.01250\n"})
        EXPECT_TRUE(has(reference, line)) << reference;
    EXPECT_TRUE(reference.ends_with(" FALSE")) << reference;
    EXPECT_EQ(made["cust_items"], "TEA (2.50)                  $10000000.00");
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
        {"{\"line_items\":[1\x94]}", ":1:17: ", {"0x94", "UTF-8", "WINDOWS-1252"}},
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
        {"auth=5\nmerch_name=Caf\xE9 A=1", ":2:15: ", {"0xE9", "iconv -f WINDOWS-1252"}},
        {"\x1F\x8B\x08garbage", ":1:1: ", {"gzip", "gunzip -c"}},
        {"\xFF\xFE{", ":1:1: ", {"UTF-16 text", "iconv -f UTF-16 "}},
        {std::string("{\0\n\0", 4), ":1:1: ", {"UTF-16 text", "iconv -f UTF-16LE "}},
        {"amount;tax\n5;1\n", ":1:1: ", {"comma-separated", "--batch"}},
        {"\"amount\",\"tax\"\n5,1\n", ":1:1: ", {"comma-separated", "--batch"}},
        {"[{\"amount\": 5},\n{\"amount\": 6}]", ":1:1: ", {"'['", "jq -c '.[]'", "--batch"}},
        {"{\"amount\": 5}\n{\"amount\": 6}", ":2:1: ", {"'{'", "jq -c .", "--batch"}},
    };
    for (const auto &[content, place, words] : cases) {
        const std::string bad = write("bad", content);
        const result made = run({"--quiet", write("good", "amount=5"), bad});
        EXPECT_EQ(made.status, 1) << content.substr(0, 80);
        EXPECT_EQ(made.out, "") << content.substr(0, 80);
        EXPECT_TRUE(made.err.starts_with("qelrcpt: " + bad + place)) << made.err;
        EXPECT_EQ(made.err.find('\n'), made.err.size() - 1) << made.err;
        for (const std::string &word : words)
            EXPECT_TRUE(has(made.err, word)) << made.err;
    }
    EXPECT_EQ(run({"no/such"}).err, "qelrcpt: no/such: No such file or directory\n");
    EXPECT_EQ(run({"4111111111111111"}).err,
              "qelrcpt: 411111******1111: No such file or directory\n");
    EXPECT_EQ(run({"/"}).err, "qelrcpt: /: Is a directory\n");
    EXPECT_TRUE(run({}, "{").err.starts_with("qelrcpt: <stdin>:1:2: "));
}

TEST_F(Command, WarnsOfKeysThatTheLibraryDoesNotKnow)
{
    const std::string file =
        write("sale.json",
              "{\"acount\": 1,\n  \"Amount\": 2, \"zzz\": 3,\n\"amount\": 4, \"amount\": 5}");
    const result made = run({file, "--block", "money", "--width", "20", "--copy", "customer"});
    EXPECT_EQ(made.status, 0);
    for (const char *warning :
         {":1:2: warning: nothing reads the key 'acount'; did you mean 'account'? [unknown-key]\n",
          ":2:3: warning: nothing reads the key 'Amount'; did you mean 'amount'? [unknown-key]\n",
          ":2:16: warning: nothing reads the key 'zzz' [unknown-key]\n",
          ":3:14: warning: the record has this key again; the later value counts [repeated-key]\n"})
        EXPECT_TRUE(has(made.err, "qelrcpt: " + file + warning)) << made.err;
    EXPECT_EQ(made.out, "SUBTOTAL:      $5.00\nTOTAL:         $5.00\n");
    EXPECT_EQ(run({"--quiet", file}).err, "");

    const result line = run({}, "amount=5\nttd=7\n\x1b[31mred=1");
    EXPECT_TRUE(has(line.err, "<stdin>:2:1: warning: nothing reads the key 'ttd'; did you mean "));
    EXPECT_FALSE(has(line.err, "\x1b")) << "an escape sequence reaches the terminal";
    const std::string key(1000000, 'z'); // what it is like is not looked for
    EXPECT_TRUE(has(run({}, key + "=1").err, "'" + key.substr(0, 40) + "...' [unknown-key]\n"));

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
        {"4111111111111111", true},
        {"4111 1111-1111 1111", true},
        {"378282246310005", true},
        {"4222222222222", true},       // 13 digits
        {"6304000000000000000", true}, // 19 digits
        {"4111111111111112", false},   // wrong check digit
        {"XXXXXXXXXXXX1111", false},
        {"411111XXXXXX1111", false},
        {"000000000000", false},
        {"00000000000000000000", false}, // 12 and 20 digits
        {"", false},
    };
    for (const auto &[account, is_warned] : cases) {
        const result made = run({"--block=money"}, "amount=5\naccount=" + account);
        EXPECT_EQ(made.status, 0);
        EXPECT_EQ(made.out, run({"--block=money"}, "amount=5").out);
        EXPECT_EQ(has(made.err, "<stdin>:2:1: warning: this looks like a whole card number"),
                  is_warned)
            << account << made.err;
        EXPECT_FALSE(has(made.err, "1111")) << made.err;
    }
    EXPECT_TRUE(has(run({}, R"({"record": {"account": 4111111111111111}})").err, "card-number"));
    EXPECT_EQ(run({"--quiet"}, "account=4111111111111111").err, "");
    EXPECT_TRUE(has(run({}, "ordernum=4111111111111111").err, "card-number"));
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

// What a record says itself goes before the merchant's file, and single keys before both.
TEST_F(Command, CompletesRecordsFromTheMerchantsFile)
{
    const std::string shop = write("shop.json", R"({
        "config": {"customer_lang": "fr", "currency": "EUR", "country": "GB"},
        "record": {"merch_name": "Joe's", "merch_phone": "555", "amount": "1.00"}})");
    const std::string keys_only = write("keys", "merch_name=Joe's\nmerch_phone=555\n");
    const std::string config_only = write("config.json", R"({"config": {"lang": "de"}})");
    const std::string plain = R"({"action": "sale", "amount": "5", "merch_phone": ""})";
    const std::string envelope = R"({"config": {"lang": "it"}, "record": )" + plain + "}";
    struct {
        arguments args;
        std::string record;
        arguments words;    // on the receipts
        arguments no_words; // on none
    } const cases[] = {
        {{"--merchant", shop}, plain, {"JOE'S", "ACHAT", "PURCHASE", "€5,00"}, {"555", "1.00"}},
        {{"--merchant", shop}, envelope, {"JOE'S", "ACQUISTA", "€5,00"}, {"ACHAT", "555"}},
        {{"--merchant", shop, "--lang=es"}, envelope, {"COMPRA"}, {"ACHAT", "ACQUISTA"}},
        {{"--merchant", keys_only}, plain, {"JOE'S", "$5.00"}, {"555"}},
        {{"--merchant", config_only}, plain, {"KAUF", "$5.00"}, {}},
        {{"--set", "amount=7", "--set=merch_name=A=B"}, plain, {"A=B", "$7.00"}, {"$5.00"}},
        {{"--merchant", shop, "--set", "merch_phone=556"}, plain, {"556", "€5,00"}, {"555"}},
        {{"--merchant", shop, "--set", "amount=8", "--batch", "--line-break=lf"},
         plain,
         {"JOE'S", "ACHAT", "€8,00"},
         {"555"}},
    };
    for (const auto &[args, record, words, no_words] : cases) {
        const result made = run(args, record);
        EXPECT_EQ(made.status, 0) << made.err;
        for (const std::string &word : words)
            EXPECT_TRUE(has(made.out, word)) << word << " in " << made.out;
        for (const std::string &word : no_words)
            EXPECT_FALSE(has(made.out, word)) << word << " in " << made.out;
    }
    const std::string bad = write("bad.json", R"({"config": {"lang": "xx"}})");
    EXPECT_TRUE(has(run({"--merchant", bad}, plain).err, bad + ":1:13: lang: 'xx'"));
    EXPECT_TRUE(has(run({"--set", "ammount=1"}, plain).err, "did you mean 'amount'?"));
    EXPECT_EQ(run({"--merchant", shop, "-o", shop}, plain).status, 1);
    EXPECT_TRUE(has(read_file(shop), "customer_lang"));
}

TEST_F(Command, SaysOfAnArchiveThatHasRecordsOfSeveralLinesWhatToDo)
{
    for (const auto &[archive, hint] : {std::pair("{\n  \"amount\": 5\n}\n", "jq -c . FILE"),
                                        std::pair("[\n{\"amount\": 5}\n]\n", "jq -c '.[]' FILE")}) {
        const result made = run({"--batch", "--quiet"}, archive);
        EXPECT_EQ(made.status, 1);
        const std::string first = made.out.substr(0, made.out.find('\n'));
        EXPECT_TRUE(has(nlohmann::json::parse(first).at("error"), hint)) << first;
    }
}

} // namespace
