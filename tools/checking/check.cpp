#include "checking/check.h"

#include "checking/findings.h"
#include "checking/findings_json.h"
#include "messages.h"

#include <algorithm>

namespace tool
{

namespace
{

struct placed_finding {
    tool::finding finding;
    std::string file;
    text_place place; // line 0: none
};

// The findings with their places in the file, which are found in one pass.
std::vector<placed_finding> placed(std::vector<finding> findings, const record_file &file)
{
    std::ranges::stable_sort(findings, {}, [](const finding &f) { return f.place.value_or(0); });
    places where(file.name, file.text);
    std::vector<placed_finding> result;
    for (finding &each : findings) {
        const text_place place = each.place ? where.place_at(*each.place) : text_place{};
        result.push_back({std::move(each), file.name, place});
    }
    return result;
}

std::string position_of(const placed_finding &placed)
{
    if (placed.place.line == 0)
        return placed.file;
    return placed.file + ":" + std::to_string(placed.place.line) + ":" +
           std::to_string(placed.place.column);
}

std::string as_text(const std::vector<placed_finding> &all, size_t records)
{
    std::string text;
    std::map<Qel_rcpt_severity_t, uint64_t> counts;
    for (const placed_finding &each : all) {
        text.append(position_of(each)).append(": ").append(word_of(each.finding.severity));
        text.append(": ").append(text_of(each.finding)).append("\n");
        ++counts[each.finding.severity];
    }
    return text.append(totals_of(counts)).append(" in ").append(counted(records, "record")) + "\n";
}

std::string as_json(const std::vector<placed_finding> &all)
{
    std::string json = "[";
    for (const placed_finding &each : all) {
        json += &each == &all.front() ? "\n  " : ",\n  ";
        append_finding(json, each.finding, {each.file, each.place});
    }
    return json + (all.empty() ? "]\n" : "\n]\n");
}

} // namespace

checked_records check_records(const options &options)
{
    std::vector<placed_finding> all;
    for (const std::string &name : options.files) {
        record_file file = read_record_file(name);
        const Qel_rcpt_config_t config = complete(file, options.merchant, options.added);
        for (placed_finding &each : placed(findings_of(file, config, options), file))
            all.push_back(std::move(each));
    }
    std::ranges::stable_sort(all, std::greater(),
                             [](const placed_finding &f) { return f.finding.severity; });
    const bool is_json = options.format == output_format::json;
    return {is_json ? as_json(all) : as_text(all, options.files.size()),
            std::ranges::any_of(all, is_error, &placed_finding::finding)};
}

void warn_of_additions(const options &options)
{
    tool::options alone;
    alone.rules = {"unknown-key", "repeated-key", "card-number", "track-data",
                   "verification-value"};
    if (options.quiet)
        return;
    const Qel_rcpt_config_t config{};
    if (options.added.under.record) {
        for (const placed_finding &each :
             placed(findings_of(options.added.under, config, alone), options.added.under))
            complain(position_of(each) + ": warning: " + text_of(each.finding));
    }
    for (const auto &[key, value] : options.added.over) {
        record_file one;
        one.record.reset(Qel_hash_dict_create(1, 75, QEL_HASH_DICT_NONE));
        Qel_hash_dict_insert(one.record.get(), key.c_str(), value.c_str());
        one.members.push_back({key, 0});
        for (const finding &each : findings_of(one, config, alone))
            complain("--set: warning: " + text_of(each));
    }
}

void warn_of_record(const record_file &file, const Qel_rcpt_config_t &config,
                    const options &options)
{
    constexpr size_t most_warnings = 20;
    if (options.quiet && !options.strict)
        return;
    const auto all = placed(findings_of(file, config, options), file);
    size_t shown = 0;
    size_t errors = 0;
    for (const placed_finding &each : all) {
        const bool counts = options.strict && is_error(each.finding);
        errors += counts ? 1 : 0;
        if (!counts && (options.quiet || !is_worth_a_warning(each.finding)))
            continue;
        const std::string begin = position_of(each) + (counts ? ": error: " : ": warning: ");
        if (shown++ < most_warnings)
            complain(begin + text_of(each.finding));
        else if (shown == most_warnings + 1)
            complain(begin + "further warnings are left out");
    }
    if (errors > 0)
        throw input_error(file.name + ": " + counted(errors, "error") +
                          ", so no receipt is written");
}

} // namespace tool
