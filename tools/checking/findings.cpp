#include "checking/findings.h"

#include "messages.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tool
{

namespace
{

// The one rule that needs the file: in a record a key stands once.
constexpr Qel_rcpt_rule_t repeated_key = {"repeated-key",
                                          QEL_RCPT_SEVERITY_WARNING,
                                          QEL_RCPT_RULES_VALUES,
                                          "each key once; otherwise the later value counts",
                                          "",
                                          "every key",
                                          "",
                                          ""};
constexpr std::string_view unknown_key = "unknown-key";

bool is_chosen(std::string_view rule, const options &options)
{
    const auto has = [&](const std::vector<std::string> &names) {
        return std::ranges::find(names, rule) != names.end();
    };
    return (options.rules.empty() || has(options.rules)) && !has(options.left_out_rules);
}

// Where the keys of a record stand. A record of the usual size is searched from its end; of one
// that may have millions of keys that nothing reads, the places are sorted first.
class key_places
{
  public:
    explicit key_places(const std::vector<member_place> &members) : members_(members) {}

    // The last place of the key counts, as its value does.
    std::optional<size_t> of(std::string_view key)
    {
        constexpr size_t usual_number = 64;
        if (members_.size() <= usual_number) {
            const auto found =
                std::ranges::find(members_.rbegin(), members_.rend(), key, &member_place::key);
            return found == members_.rend() ? std::nullopt : std::optional(found->offset);
        }
        if (sorted_.empty())
            sort();
        const auto behind = std::ranges::upper_bound(sorted_, key, {}, key_of);
        if (behind == sorted_.begin() || key_of(behind[-1]) != key)
            return std::nullopt;
        return behind[-1]->offset;
    }

  private:
    static std::string_view key_of(const member_place *member) { return member->key; }

    void sort()
    {
        for (const member_place &member : members_)
            sorted_.push_back(&member);
        std::ranges::sort(sorted_, {}, [](const member_place *member) {
            return std::pair(key_of(member), member->offset);
        });
    }

    const std::vector<member_place> &members_;
    std::vector<const member_place *> sorted_;
};

struct collector {
    key_places places;
    const options &chosen;
    std::vector<finding> findings;
};

void collect(void *info, const Qel_rcpt_finding_t *found)
{
    auto &[places, chosen, findings] = *static_cast<collector *>(info);
    const std::optional<size_t> place = places.of(found->key);
    const bool is_added = found->rule == unknown_key && !place; // and told of already
    if (is_added || !is_chosen(found->rule, chosen))
        return;
    std::optional<size_t> offset;
    if (found->offset != QEL_RCPT_NO_OFFSET)
        offset = found->offset;
    findings.push_back({found->severity, found->rule, masked(found->key), place, offset,
                        masked(found->message), found->source, found->date});
}

} // namespace

std::string_view word_of(Qel_rcpt_severity_t severity)
{
    static constexpr std::array<std::string_view, 3> words = {"note", "warning", "error"};
    return words[severity];
}

std::string text_of(const finding &finding)
{
    std::string text = finding.message + " [" + std::string(finding.rule);
    if (!finding.source.empty())
        text.append("; ").append(finding.source).append(", ").append(finding.date);
    return text + "]";
}

const std::vector<Qel_rcpt_rule_t> &rules()
{
    static const std::vector<Qel_rcpt_rule_t> all = [] {
        std::vector<Qel_rcpt_rule_t> made;
        for (size_t i = 0; const Qel_rcpt_rule_t *rule = Qel_rcpt_check_rule(i); ++i)
            made.push_back(*rule);
        made.push_back(repeated_key);
        return made;
    }();
    return all;
}

std::string_view severity_of(std::string_view rule)
{
    return word_of(std::ranges::find(rules(), rule, &Qel_rcpt_rule_t::name)->severity);
}

std::vector<finding> findings_of(const record_file &file, const Qel_rcpt_config_t &config,
                                 const options &options)
{
    collector collected{key_places(file.members), options, {}};
    Qel_rcpt_check(file.record.get(), &config, options.layout.form->checked_as, collect,
                   &collected);
    for (const member_place &member : file.repeated) {
        if (is_chosen(repeated_key.name, options))
            collected.findings.push_back(
                {repeated_key.severity, repeated_key.name, masked(member.key), member.offset,
                 std::nullopt, "the record has this key again; the later value counts", "", ""});
    }
    return std::move(collected.findings);
}

bool is_error(const finding &finding)
{
    return finding.severity == QEL_RCPT_SEVERITY_ERROR;
}

bool is_worth_a_warning(const finding &finding)
{
    return is_error(finding) || finding.rule == unknown_key || finding.rule == repeated_key.name;
}

std::string totals_of(const std::map<Qel_rcpt_severity_t, uint64_t> &counts)
{
    std::string text;
    for (const auto severity :
         {QEL_RCPT_SEVERITY_ERROR, QEL_RCPT_SEVERITY_WARNING, QEL_RCPT_SEVERITY_NOTE}) {
        const auto found = counts.find(severity);
        const uint64_t count = found == counts.end() ? 0 : found->second;
        text.append(text.empty() ? "" : ", ");
        text += count == 0 ? "no " + std::string(word_of(severity)) + "s"
                           : counted(count, word_of(severity));
    }
    return text;
}

} // namespace tool
