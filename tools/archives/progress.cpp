#include "archives/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

namespace tool
{

namespace
{

// With a comma before every third digit from the right.
std::string grouped(uint64_t number)
{
    std::string digits = std::to_string(number);
    for (size_t at = digits.size(); at > 3;) {
        at -= 3;
        digits.insert(at, 1, ',');
    }
    return digits;
}

std::string two_digits(uint64_t number)
{
    std::string text(number < 10 ? 1 : 0, '0');
    return text += std::to_string(number);
}

// "0:07", "12:30", "1:00:05".
std::string clock_text(uint64_t seconds)
{
    const uint64_t minutes = seconds / 60;
    std::string text = minutes < 60 ? std::to_string(minutes)
                                    : std::to_string(minutes / 60) + ":" + two_digits(minutes % 60);
    return text.append(1, ':').append(two_digits(seconds % 60));
}

// "[####      ]  40%".
std::string bar(double part, size_t width)
{
    const auto filled = static_cast<size_t>(part * static_cast<double>(width));
    std::string percent = std::to_string(static_cast<int>(part * 100)) + "%";
    percent.insert(0, 5 - std::min<size_t>(percent.size(), 5), ' ');
    std::string text(1, '[');
    text.append(filled, '#').append(width - filled, ' ');
    return text.append(1, ']').append(percent);
}

} // namespace

std::string progress_line(const progress &progress, size_t columns)
{
    constexpr size_t widest_bar = 30;
    constexpr size_t narrowest_bar = 5;
    constexpr size_t around_bar = 9; // brackets, percent and the gap behind
    const double seconds = std::max(progress.elapsed.count(), 1e-3);
    std::string text =
        grouped(progress.records) + (progress.records == 1 ? " record  " : " records  ");
    text.append(grouped(static_cast<uint64_t>(static_cast<double>(progress.records) / seconds)));
    text += "/s";
    if (progress.total_bytes && *progress.total_bytes > 0) {
        const auto total = static_cast<double>(*progress.total_bytes);
        const double part = std::min(static_cast<double>(progress.bytes) / total, 1.0);
        if (progress.bytes > 0) {
            const double left = seconds * (1 - part) / part;
            text.append("  ").append(clock_text(static_cast<uint64_t>(std::lround(left))));
            text += " left";
        }
        const size_t taken = text.size() + around_bar;
        if (columns >= taken + narrowest_bar)
            text.insert(0, bar(part, std::min(columns - taken, widest_bar)) + "  ");
    }
    return text.substr(0, columns);
}

size_t terminal_columns()
{
    constexpr size_t usual = 80;
    winsize size{};
    const bool is_known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return is_known ? size.ws_col : usual;
}

} // namespace tool
