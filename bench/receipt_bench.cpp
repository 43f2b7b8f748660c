// Time and heap allocations of a receipt (both copies) beside its floor, and how the time grows
// with what a record holds. Ends with a table of the least time of all repetitions.
#include "allocations.h"
#include "workload.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace workload;

struct measured {
    double ns = 0; // the least of the repetitions
    double allocations = 0;
};

struct point {
    double x;
    double y;
};

// Of the line of least squares.
double slope(const std::vector<point> &points)
{
    point mean{};
    for (const auto &[x, y] : points) {
        mean.x += x / static_cast<double>(points.size());
        mean.y += y / static_cast<double>(points.size());
    }
    double covariance = 0;
    double variance = 0;
    for (const auto &[x, y] : points) {
        covariance += (x - mean.x) * (y - mean.y);
        variance += (x - mean.x) * (x - mean.x);
    }
    return covariance / variance;
}

// Prints as the console reporter does and keeps what the table needs.
class table_reporter : public benchmark::ConsoleReporter
{
  public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            if (run.run_type == Run::RT_Iteration)
                keep(run);
        }
    }

    void Finalize() override
    {
        if (!times_.empty())
            print_receipts();
        if (!growth_.empty())
            print_growth();
    }

  private:
    void keep(const Run &run)
    {
        const std::string &name = run.run_name.function_name;
        const double ns = run.GetAdjustedCPUTime();
        if (const auto n = run.counters.find("n"); n != run.counters.end()) {
            double &known = growth_[name][n->second];
            known = known == 0 ? ns : std::min(known, ns);
            return;
        }
        measured &known = times_[name];
        known.ns = known.ns == 0 ? ns : std::min(known.ns, ns);
        known.allocations = run.counters.at("allocations");
    }

    void print_receipts() const
    {
        std::puts("\n| form | sample | floor ns | receipt ns | ratio | floor allocations "
                  "| receipt allocations |\n|---|---|--:|--:|--:|--:|--:|");
        for (const form &form : forms) {
            for (const sample &sample : samples)
                print_row(form, sample);
        }
        for (const sample &sample : samples)
            print_beside(sample);
    }

    void print_beside(const sample &sample) const
    {
        for (const auto &[what, name] : {std::pair("check", "Checking the record"),
                                         std::pair("print", "One copy for a printer")}) {
            const auto found = times_.find(std::string(what) + "/" + sample.name);
            if (found != times_.end())
                std::printf("%s, %s: %.0f ns, %.0f allocations\n", name, sample.name,
                            found->second.ns, found->second.allocations);
        }
    }

    void print_row(const form &form, const sample &sample) const
    {
        const std::string name = std::string(form.name) + "/" + sample.name;
        const auto floor = times_.find(name + "/floor");
        const auto receipt = times_.find(name + "/receipt");
        if (floor == times_.end() || receipt == times_.end())
            return;
        std::printf("| %s | %s | %.0f | %.0f | %.1f | %.0f | %.0f |\n", form.name, sample.name,
                    floor->second.ns, receipt->second.ns, receipt->second.ns / floor->second.ns,
                    floor->second.allocations, receipt->second.allocations);
    }

    // The slope of the logarithm of what n of them add to the time over the logarithm of n: 1 where
    // the time grows in proportion. Below a hundred they add too
    // little to be told from noise.
    void print_growth() const
    {
        std::puts("\n| form and what grows | ns with none | ns with 10,000 | slope |\n"
                  "|---|--:|--:|--:|");
        for (const auto &[name, times] : growth_) {
            std::vector<point> points;
            for (const auto &[n, ns] : times) {
                if (n >= 100)
                    points.push_back({std::log(n), std::log(ns - times.begin()->second)});
            }
            std::printf("| %s | %.0f | %.0f | %.2f |\n", name.c_str(), times.begin()->second,
                        times.rbegin()->second, slope(points));
        }
    }

    std::map<std::string, measured> times_;
    std::map<std::string, std::map<double, double>> growth_; // least ns by n
};

template <typename Call>
void measure(benchmark::State &state, Call call)
{
    call(); // whatever is built on first use
    state.counters["allocations"] = static_cast<double>(allocations::of(call));
    for (auto _ : state)
        call();
}

void register_form(const form &form, const sample &sample)
{
    const std::string name = std::string(form.name) + "/" + sample.name;
    const auto in = std::make_shared<input>(read(sample));
    benchmark::RegisterBenchmark((name + "/floor").c_str(), [&form, in](benchmark::State &state) {
        const qel::dict finished = finished_blocks(form, *in);
        measure(state, [&] { floor(finished.get()); });
    });
    benchmark::RegisterBenchmark((name + "/receipt").c_str(), [&form, in](benchmark::State &state) {
        measure(state, [&] { generate(form, *in); });
    });
}

// What goes with a receipt.
void register_beside(const sample &sample)
{
    const auto in = std::make_shared<input>(read(sample));
    const std::string name = std::string("/") + sample.name;
    benchmark::RegisterBenchmark(("check" + name).c_str(), [in](benchmark::State &state) {
        measure(state, [&] { check(*in); });
    });
    benchmark::RegisterBenchmark(("print" + name).c_str(), [in](benchmark::State &state) {
        const qel::dict plain = finished_blocks(forms[0], *in);
        measure(state, [&] { print(plain.get(), *in); });
    });
}

// Growth: the short sale with count items, words of notes or custom fields.

std::string repeated(std::string_view text, std::int64_t count)
{
    std::string all;
    for (std::int64_t i = 0; i < count; ++i)
        all.append(text);
    return all;
}

std::string items(std::int64_t count)
{
    std::string list = repeated(
        R"({"name":"Almond croissant","qty":"2","price":"7.50","type":"item","notes":"Warm"},)",
        count);
    if (!list.empty())
        list.pop_back();
    return "[" + list + "]";
}

std::string custom_fields(std::int64_t count)
{
    std::string list;
    for (std::int64_t i = 0; i < count; ++i)
        list += "field " + std::to_string(i) + ":value,";
    return list;
}

std::string notes(std::int64_t count)
{
    return repeated("Fresh loaves daily from seven. ", count);
}

struct growth {
    const char *name;
    const char *key;
    std::string (*text)(std::int64_t count);
    bool general_only; // the processor's layouts do not show it
};

constexpr growth growths[] = {
    {"items", "line_items", items, true},
    {"notes", "order_notes", notes, true},
    {"custom fields", "rcpt_custom", custom_fields, false},
};

void register_growth(const form &form, const growth &growth)
{
    const std::string name = std::string("growth: ") + form.name + ", " + growth.name;
    benchmark::RegisterBenchmark(name.c_str(), [&](benchmark::State &state) {
        const input in = read(samples[0]);
        Qel_hash_dict_insert(in.file.record.get(), growth.key, growth.text(state.range(0)).c_str());
        for (auto _ : state)
            generate(form, in);
        state.counters["n"] = static_cast<double>(state.range(0));
    })->ArgsProduct({{0, 1, 10, 100, 1000, 10000}});
}

} // namespace

int main(int argc, char **argv)
{
    Qel_rcpt_init();
    benchmark::Initialize(&argc, argv);
    for (const form &form : forms) {
        for (const sample &sample : samples)
            register_form(form, sample);
    }
    for (const sample &sample : samples)
        register_beside(sample);
    for (const form &form : forms) {
        const bool is_general = !std::string_view(form.name).starts_with("moneris");
        for (const growth &growth : growths) {
            if (is_general || !growth.general_only)
                register_growth(form, growth);
        }
    }
    table_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    Qel_rcpt_deinit();
}
