// What the command prints as a whole: documents that other tools read, in each form and as data.
#include "command_runs.hpp"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>

namespace
{

using nlohmann::ordered_json;
using names = std::vector<std::string>;

class Documents : public Command
{
  protected:
    std::string print(arguments args) const
    {
        args.emplace_back("--quiet");
        const result made = run(args);
        EXPECT_EQ(made.status, 0) << made.err;
        return made.out;
    }
};

const std::string record_files[] = {
    QELRCPT_RECORDS "/markup-in-values.json", QELRCPT_RECORDS "/restaurant-ten-items.json",
    QELRCPT_RECORDS "/fuel-sale.json", // no merchant copy
};

names keys_of(const ordered_json &object)
{
    names keys;
    for (const auto &[key, value] : object.items())
        keys.push_back(key);
    return keys;
}

names elements_of(const xmlNode *parent)
{
    names elements;
    for (const xmlNode *node = parent->children; node != nullptr; node = node->next) {
        if (node->type == XML_ELEMENT_NODE)
            elements.emplace_back(reinterpret_cast<const char *>(node->name));
    }
    return elements;
}

TEST_F(Documents, HoldTheCopiesByNameAndTheirBlocksInOrder)
{
    for (const std::string &file : record_files) {
        SCOPED_TRACE(file);
        const auto blocks = ordered_json::parse(print({"--output=json", "--form=plain", file}));
        names copies;
        std::map<std::string, names> expected; // the blocks of the plain receipt are the same
        for (const std::string &key : keys_of(blocks)) {
            const std::string copy = key.starts_with("cust_") ? "customer" : "merchant";
            if (copies.empty() || copies.back() != copy)
                copies.push_back(copy);
            expected[copy].push_back(key.substr(key.find('_') + 1));
        }

        const auto json = ordered_json::parse(print({"--form=json", file}));
        EXPECT_EQ(keys_of(json), copies);
        const auto data = ordered_json::parse(print({"--form=json", "--output=json", file}));
        const std::string xml = print({"--form=xml", file});
        const std::unique_ptr<xmlDoc, void (*)(xmlDoc *)> document(
            xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", "UTF-8", XML_PARSE_NOERROR),
            xmlFreeDoc);
        ASSERT_TRUE(document) << xml;
        const xmlNode *root = xmlDocGetRootElement(document.get());
        EXPECT_STREQ(reinterpret_cast<const char *>(root->name), "receipt");
        EXPECT_EQ(elements_of(root), copies);
        for (const xmlNode *copy = root->children; copy != nullptr; copy = copy->next) {
            if (copy->type != XML_ELEMENT_NODE)
                continue;
            const std::string name = reinterpret_cast<const char *>(copy->name);
            EXPECT_EQ(elements_of(copy), expected[name]);
            EXPECT_EQ(keys_of(json[name]), expected[name]);
            const std::string prefix = name == "customer" ? "cust_" : "merch_";
            for (const auto &[block, value] : json[name].items()) {
                EXPECT_TRUE(value.is_structured()) << block;
                EXPECT_EQ(data.at(prefix + block), value);
            }
        }
    }
}

TEST_F(Documents, OfSeveralReceiptsAreOneToo)
{
    arguments args = {"--form=json"};
    args.insert(args.end(), std::begin(record_files), std::end(record_files));
    const auto array = ordered_json::parse(print(args));
    ASSERT_EQ(array.size(), std::size(record_files));
    for (size_t i = 0; i < array.size(); ++i)
        EXPECT_EQ(array[i], ordered_json::parse(print({"--form=json", record_files[i]})));
    args[0] = "--form=xml";
    const std::string xml = print(args);
    const std::unique_ptr<xmlDoc, void (*)(xmlDoc *)> document(
        xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "", "UTF-8", 0), xmlFreeDoc);
    ASSERT_TRUE(document);
    EXPECT_EQ(elements_of(xmlDocGetRootElement(document.get())),
              names(std::size(record_files), "receipt"));
}

// A block's own text stands in the document unchanged.
TEST_F(Documents, KeepTheBlocksByteForByte)
{
    for (const std::string &file : record_files) {
        const auto blocks = ordered_json::parse(print({"--form=xml", "--output=json", file}));
        const std::string xml = print({"--form=xml", file});
        const std::string html = print({"--form=html", file});
        size_t at = 0;
        for (const auto &[key, block] : blocks.items()) {
            at = xml.find("\n" + block.get<std::string>() + "\n", at);
            EXPECT_NE(at, std::string::npos) << file << key;
        }
        const auto fragments = ordered_json::parse(print({"--form=html", "--output=json", file}));
        std::string expected;
        bool is_merchant = false;
        for (const auto &[key, block] : fragments.items()) {
            const bool is_next = !is_merchant && key.starts_with("merch_");
            is_merchant = is_merchant || is_next;
            if (!expected.empty())
                expected += is_next ? "\n\n<hr class=\"rcpt_cut\">\n\n" : "\n\n";
            expected += block.get<std::string>();
        }
        EXPECT_EQ(html, expected + "\n");
    }
}

TEST_F(Documents, OfAnArchiveAreDataOfALine)
{
    for (const std::string &file : record_files) {
        const std::string line = nlohmann::json::parse(read_file(file)).dump();
        const auto whole = ordered_json::parse(print({"--form=json", "--output=json", file}));
        const result made = run({"--batch", "--form=json", "--quiet"}, line);
        EXPECT_EQ(std::ranges::count(made.out, '\n'), 1) << made.out;
        EXPECT_EQ(ordered_json::parse(made.out).at("blocks"), whole);
    }
}

TEST_F(Documents, WithNothingInThemAreStillDocuments)
{
    EXPECT_EQ(print({"--form=json", "--block=signature", "--copy=customer", record_files[0]}),
              "{}\n");
    EXPECT_EQ(print({"--form=xml", "--block=signature", "--copy=customer", "--line-break=crlf",
                     record_files[0]}),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<receipt>\r\n</receipt>\r\n");
}

TEST_F(Documents, AreOfTheFormThatTheOutputFileIsNamedAfter)
{
    struct {
        std::string name;
        arguments args;
        std::string begin;
    } const cases[] = {
        {"a.html", {}, "<div "},
        {"a.xml", {}, "<?xml "},
        {"a.json", {}, "{\n\"customer\": {\n\"money\": {\n"},
        {"a.txt", {"--width=20"}, "SUBTOTAL:"},
        {"a.html.gz", {}, "SUBTOTAL:"},
        {"a.json", {"--form=plain"}, "SUBTOTAL:"},
        {"b.json", {"--output=json"}, "{\n  \"cust_money\": \"SUBTOTAL:"},
        {"c.html", {"--page"}, "<!DOCTYPE html>"},
    };
    for (const auto &[name, args, begin] : cases) {
        const std::string path = write(name, "");
        arguments all = args;
        all.insert(all.end(), {"--block=money", "-o", path, record_files[0]});
        print(all);
        EXPECT_TRUE(read_file(path).starts_with(begin)) << name << ": " << read_file(path);
    }
    const result refused = run({"-o", "a.xml", "--width=30"}, "amount=5");
    EXPECT_EQ(refused.status, 2);
    EXPECT_TRUE(has(refused.err, "--form plain")) << refused.err;
}

} // namespace
