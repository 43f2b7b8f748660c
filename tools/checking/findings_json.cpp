#include "checking/findings_json.h"

#include "writing/safe_text.h"

namespace tool
{

namespace
{

class object_writer
{
  public:
    explicit object_writer(std::string &json) : json_(json) {}

    void add(std::string_view name, std::string_view text)
    {
        begin(name);
        append_json_text(json_, text);
    }
    void add(std::string_view name, std::uint64_t number)
    {
        begin(name);
        json_ += std::to_string(number);
    }
    void end() { json_ += is_empty_ ? "{}" : "}"; }

  private:
    void begin(std::string_view name)
    {
        json_ += is_empty_ ? "{" : ", ";
        is_empty_ = false;
        append_json_text(json_, name);
        json_ += ": ";
    }

    std::string &json_;
    bool is_empty_ = true;
};

} // namespace

void append_finding(std::string &json, const finding &finding, const finding_origin &origin)
{
    object_writer object(json);
    if (!origin.file.empty())
        object.add("file", origin.file);
    if (origin.place.line > 0) {
        object.add("line", origin.place.line);
        object.add("column", origin.place.column);
    }
    object.add("severity", word_of(finding.severity));
    object.add("rule", finding.rule);
    object.add("key", finding.key);
    if (finding.offset)
        object.add("offset", *finding.offset);
    object.add("message", finding.message);
    if (!finding.source.empty()) {
        object.add("source", finding.source);
        object.add("date", finding.date);
    }
    object.end();
}

} // namespace tool
