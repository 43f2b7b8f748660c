// qelrcpt_documents ROOT [--write]: the documents that are made from the library's tables, in the
// source tree at ROOT. Says which of them differ from the tables; with --write, writes them.
#include "checking/findings.h"
#include "documents/manual.h"
#include "documents/words.h"

#include <qel_rcpt_check.h>
#include <qel_rcpt_keys.hpp>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace
{

namespace fs = std::filesystem;
using qel_rcpt::key_group;
using qel_rcpt::key_readers;

std::string read(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The text with what stands between the end of begin and the next end put in place.
std::string replaced(std::string_view text, std::string_view begin, std::string_view end,
                     std::string_view content)
{
    const size_t heading = text.find(begin);
    if (heading == std::string_view::npos)
        throw std::runtime_error("there is no " + std::string(begin));
    const size_t first = heading + begin.size();
    const size_t last = text.find(end, first);
    return std::string(text.substr(0, first)).append(content).append(text.substr(last));
}

constexpr std::pair<key_group, std::string_view> headings[] = {
    {key_group::merchant, "Merchant"},
    {key_group::transaction, "Transaction"},
    {key_group::amounts, "Amounts"},
    {key_group::order, "Order"},
    {key_group::outcome, "Outcome"},
    {key_group::chip, "Chip"},
    {key_group::closing, "Signature, duplicates, free text"},
    {key_group::moneris_ecomm, "Moneris e-commerce"},
};

std::string_view abbreviated(key_readers readers)
{
    switch (readers) {
    case key_readers::plain_html:
        return "P H";
    case key_readers::general:
        return "G";
    case key_readers::general_and_store:
        return "G M";
    case key_readers::general_and_ecomm:
        return "G E";
    case key_readers::store:
        return "M";
    case key_readers::ecomm:
        return "E";
    case key_readers::all:
        break;
    }
    return "All";
}

std::string key_row(const qel_rcpt::record_key &key)
{
    std::string row = "| `" + std::string(key.name) + "` | " + std::string(key.meaning);
    if (!key.detail.empty())
        row.append(". ").append(key.detail);
    row.append(" | ").append(abbreviated(key.readers)).append(" | `");
    return row.append(key.example).append("` |\n");
}

std::string record_document(std::string document, const fs::path & /*root*/)
{
    constexpr std::string_view head = "| key | meaning | read by | example |\n|---|---|---|---|\n";
    for (const auto &[group, heading] : headings) {
        std::string rows(head);
        for (const qel_rcpt::record_key &key : qel_rcpt::record_keys) {
            if (key.group == group)
                rows += key_row(key);
        }
        const std::string title = "\n## " + std::string(heading) + "\n";
        const size_t section = document.find(title);
        const size_t table = document.find(head, section);
        if (section == std::string::npos || table == std::string::npos)
            throw std::runtime_error("there is no table under '## " + std::string(heading) + "'");
        const size_t end = document.find("\n\n", table) + 1;
        document.replace(table, std::min(end, document.size()) - table, rows);
    }
    return document;
}

std::string record_manual(const std::string & /*old*/, const fs::path &root)
{
    const std::string document = record_document(read(root / "docs/record.md"), root);
    return ".\\\" Made from docs/record.md by scripts/update-documents.\n"
           ".TH QELRCPT-RECORD 5 \"November 2026\" \"qelrcpt 1.0\" \"File Formats\"\n"
           ".SH NAME\nqelrcpt-record \\- the record of a card transaction\n"
           ".SH DESCRIPTION\n" +
           documents::manual_body(document) +
           ".SH SEE ALSO\n.BR qelrcpt (1),\n.BR libqelrcpt (3)\n";
}

std::string fuzz_dictionary(const std::string &old, const fs::path & /*root*/)
{
    std::set<std::string_view> names;
    for (const qel_rcpt::record_key &key : qel_rcpt::record_keys)
        names.insert(key.name);
    std::string keys;
    for (const std::string_view name : names)
        keys.append("\"\\x1E").append(name).append("=\"\n");
    return replaced(old, "in front and the sign behind.\n", "\n#", keys);
}

constexpr std::string_view requirements_head =
    R"(# What receipts are checked for

Made from the library's table of rules by `scripts/update-documents`. `qelrcpt --rules` lists them.

`Qel_rcpt_check` (`include/qel_rcpt_check.h`) and `qelrcpt --check` look at a record before it becomes a
receipt. An **error** is a receipt that is wrong or breaks a rule, a **warning** one that may be, and a
**note** is worth knowing.

The rules with a source were gathered from public documents, read in the month beside them. **Rules differ
by scheme, country and acquirer, and change; the acquirer has the last word.** A record without findings
is no certificate, and a finding may be one that your acquirer does not ask about: `--no-rule NAME` leaves
it out. The rules without a source are this library's own: what it would leave out, cut or misread.

What stands on general knowledge, and not on a document that is named:

- **When a rule applies**, and whether it is an error or a warning: the documents mostly say what a receipt
  of a purchase shows; that refunds and voids are asked for less is ours. They differ on the TVR, the TSI
  and the cryptogram, which some processors require and some leave open.
- **Which keys hold a secret**: the names under which records usually hold an expiry date, a verification
  value, a PIN or a track.
- **What a card number is**: 13 to 19 digits with blanks, hyphens or dashes between them, the check digit
  of ISO/IEC 7812-1, and a range of an issuer. The register of issuers is not public; the ranges are those
  of public lists and of the test numbers of processors, and are wider than what is issued. Left out are
  airline cards (1…, 15 digits), transit cards (31…) and cards without a check digit, for too many other
  numbers look like them. Of 1,000,000 texts of 13 to 19 digits by chance 17,588 are taken for card
  numbers, and all of 47 test numbers are found in each of ten ways of writing them: `scripts/card-numbers`
  counts both.
- **The first digits of an account**: six, as PCI SSC FAQ 1136 has it. PCI DSS 4.0.1 (3.4.1) speaks of the
  BIN, which may have eight.
- **Notices that were read second-hand**: Visa's of August 2025 as passed on by a processor
  (Checkout.com), the requirements of the schemes as summed up by Adyen, EMV as quoted by others.

The command adds a rule of its own: `repeated-key`, a warning that a record has a key twice; the later
value counts.

The general forms are plain text, HTML, XML and JSON. A payment is a sale or an authorization.
)";

constexpr std::pair<Qel_rcpt_rule_group_t, std::string_view> rule_headings[] = {
    {QEL_RCPT_RULES_VALUES, "Values that cannot be used"},
    {QEL_RCPT_RULES_CONTRADICTIONS, "Values that contradict each other"},
    {QEL_RCPT_RULES_SECRETS, "What must not be shown"},
    {QEL_RCPT_RULES_REQUIRED, "What must be shown"},
};

std::string rule_row(const Qel_rcpt_rule_t &rule)
{
    std::string row = "| `" + std::string(rule.name) + "` | ";
    row.append(tool::word_of(rule.severity)).append(" | ").append(rule.wants).append(" | ");
    row.append(rule.applies[0] == '\0' ? "always" : rule.applies).append(" | ").append(rule.keys);
    return row.append(" | ").append(rule.source).append(" | ").append(rule.date).append(" |\n");
}

std::string requirements_document(const std::string & /*old*/, const fs::path & /*root*/)
{
    std::string document(requirements_head);
    for (const auto &[group, heading] : rule_headings) {
        document.append("\n## ").append(heading).append("\n\n");
        document += "| rule | finding | wants | when | keys | source | read |\n"
                    "|---|---|---|---|---|---|---|\n";
        for (std::size_t i = 0; const Qel_rcpt_rule_t *rule = Qel_rcpt_check_rule(i); ++i) {
            if (rule->group == group)
                document += rule_row(*rule);
        }
    }
    return document;
}

struct made_document {
    const char *path;
    std::string (*make)(const std::string &old, const fs::path &root);
};

constexpr made_document made_documents[] = {
    {"docs/record.md",
     [](const std::string &old, const fs::path &root) { return record_document(old, root); }},
    {"docs/requirements.md", requirements_document},
    {"man/qelrcpt-record.5", record_manual},
    {"fuzz/record.dict", fuzz_dictionary},
    {"bindings/javascript/src/words.js",
     [](const std::string & /*old*/, const fs::path & /*root*/) {
         return documents::javascript_words();
     }},
};

// The number of the first line in which the two differ, and what is expected there.
std::string first_difference(std::string_view old, std::string_view made)
{
    size_t line = 1;
    size_t begin = 0;
    for (size_t i = 0; i < std::min(old.size(), made.size()) && old[i] == made[i]; ++i) {
        if (made[i] == '\n') {
            ++line;
            begin = i + 1;
        }
    }
    const std::string_view expected = made.substr(begin, made.find('\n', begin) - begin);
    return std::to_string(line) + ": expected '" + std::string(expected) + "'";
}

int run(const fs::path &root, bool writes)
{
    int differing = 0;
    for (const made_document &document : made_documents) {
        const fs::path path = root / document.path;
        const std::string old = read(path);
        const std::string made = document.make(old, root);
        if (made == old)
            continue;
        if (writes) {
            std::ofstream(path, std::ios::binary) << made;
            continue;
        }
        std::cout << document.path << ':' << first_difference(old, made)
                  << "; scripts/update-documents makes it\n";
        ++differing;
    }
    return differing == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::cerr << "usage: qelrcpt_documents ROOT [--write]\n";
        return 2;
    }
    try {
        return run(argv[1], argc > 2 && std::string_view(argv[2]) == "--write");
    } catch (const std::exception &fault) {
        std::cerr << fault.what() << '\n';
        return 1;
    }
}
