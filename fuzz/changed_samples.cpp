// changed_samples ROUNDS FOLDER: runs a fuzz target, where no fuzzer leads it, over the samples of
// the folder and over as many changes of them, the same ones in every run.
#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace
{

using namespace std::string_view_literals;

// What the texts of a record, the readers and the markups take for something else than text.
constexpr std::string_view pieces[] = {"\x1E"sv,
                                       "\0"sv,
                                       "\n"sv,
                                       "\r"sv,
                                       "\t"sv,
                                       " "sv,
                                       "\x1B"sv,
                                       "\x7F"sv,
                                       "\x80"sv,
                                       "\xC2\x85"sv,
                                       "é"sv,
                                       "€"sv,
                                       "\U0001F37A"sv,
                                       "\xFF"sv,
                                       "\xE2\x82"sv,
                                       "\xED\xA0\x80"sv,
                                       "<"sv,
                                       ">"sv,
                                       "&"sv,
                                       "&amp;"sv,
                                       "<b>"sv,
                                       "</div>"sv,
                                       "\""sv,
                                       "'"sv,
                                       "\"\""sv,
                                       "\\"sv,
                                       "\\u0041"sv,
                                       "\\uD800"sv,
                                       "{"sv,
                                       "}"sv,
                                       "["sv,
                                       "]"sv,
                                       ","sv,
                                       ":"sv,
                                       "/*"sv,
                                       "*/"sv,
                                       "//"sv,
                                       "="sv,
                                       "-"sv,
                                       "0"sv,
                                       "1"sv,
                                       "9"sv,
                                       "."sv,
                                       "1e5"sv,
                                       "true"sv,
                                       "null"sv,
                                       "longestwordofthemall"sv,
                                       "        "sv};

std::vector<std::string> read_samples(const char *folder)
{
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        files.push_back(entry.path());
    std::ranges::sort(files);
    std::vector<std::string> samples;
    for (const auto &file : files) {
        std::ifstream in(file, std::ios::binary);
        samples.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    return samples;
}

class changes
{
  public:
    explicit changes(const std::vector<std::string> &samples) : samples_(samples) {}

    std::string next()
    {
        std::string changed = any_sample();
        for (std::size_t count = 1 + below(6); count > 0; --count)
            change(changed);
        return changed;
    }

  private:
    std::size_t below(std::size_t end) { return random_() % std::max<std::size_t>(end, 1); }
    const std::string &any_sample() { return samples_[below(samples_.size())]; }

    void change(std::string &input)
    {
        const std::size_t place = below(input.size() + 1);
        const std::string &other = any_sample();
        switch (below(5)) {
        case 0:
            input.erase(place, 1 + below(8));
            break;
        case 1:
            input.insert(place, other, below(other.size() + 1), below(40));
            break;
        case 2:
            if (place < input.size())
                input[place] = static_cast<char>(random_());
            break;
        default:
            input.insert(place, pieces[below(std::size(pieces))]);
        }
    }

    const std::vector<std::string> &samples_;
    std::mt19937 random_{20240229};
};

std::string current;

// A target that finds something aborts.
void keep_current(int /*signal*/)
{
    std::ofstream("finding", std::ios::binary) << current;
    std::fputs("the input is kept in the file 'finding'\n", stderr);
}

void run(std::string input)
{
    current = std::move(input);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(current.data()), current.size());
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3)
        return 2;
    const std::vector<std::string> samples = read_samples(argv[2]);
    if (samples.empty())
        return 2;
    std::signal(SIGABRT, keep_current);
    for (const std::string &sample : samples)
        run(sample);
    changes changed(samples);
    for (long rounds = std::atol(argv[1]); rounds > 0; --rounds)
        run(changed.next());
    return 0;
}
