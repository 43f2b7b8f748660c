// Formatted texts: the few directives, without printf and its locale.
#include "qelstdlib_int.h"

#include <cstdarg>

namespace
{

using qel::view;

enum class argument { none, text, integer, natural, natural_two_digits };

struct directive {
    std::string_view spelling;
    argument takes;
};

constexpr directive directives[] = {
    {"%s", argument::text},      {"%lld", argument::integer},
    {"%llu", argument::natural}, {"%02llu", argument::natural_two_digits},
    {"%%", argument::none},
};

// The directive that the format begins with, or absent.
const directive *find_directive(std::string_view fmt)
{
    if (!fmt.starts_with('%'))
        return nullptr;
    const auto *const found = std::ranges::find_if(
        directives, [&](const directive &known) { return fmt.starts_with(known.spelling); });
    return found == std::end(directives) ? nullptr : found;
}

// A va_list that functions can share: passed by itself, it would be spent after the first.
struct arguments {
    va_list list;
};

template <typename Put>
void put_argument(argument takes, arguments &args, Put &put)
{
    switch (takes) {
    case argument::none:
        put("%");
        break;
    case argument::text:
        put(view(va_arg(args.list, const char *)));
        break;
    case argument::integer:
        put(qel::decimal(va_arg(args.list, long long), 1));
        break;
    case argument::natural:
        put(qel::decimal(va_arg(args.list, unsigned long long), 1));
        break;
    case argument::natural_two_digits:
        put(qel::decimal(va_arg(args.list, unsigned long long), 2));
        break;
    }
}

// Hands the pieces of the formatted text to put, one after the other.
template <typename Put>
void format(const char *fmt, arguments &args, Put &put)
{
    std::string_view rest = view(fmt);
    while (!rest.empty()) {
        if (const directive *const found = find_directive(rest)) {
            put_argument(found->takes, args, put);
            rest.remove_prefix(found->spelling.size());
            continue;
        }
        // Up to the next '%'. One that begins no directive stands for itself.
        const std::string_view literal = rest.substr(0, rest.find('%', 1));
        put(literal);
        rest.remove_prefix(literal.size());
    }
}

// Takes what fits into an area of the caller's.
class bounded_text
{
  public:
    bounded_text(char *area, std::size_t size) : area_(area), max_len_(size - 1) {}

    void operator()(std::string_view piece)
    {
        const std::size_t kept = piece.copy(area_ + len_, max_len_ - len_);
        len_ += kept;
        if (kept < piece.size() && first_lost_ == '\0')
            first_lost_ = piece[kept];
    }

    std::size_t finish()
    {
        if (qel::is_continuation(first_lost_))
            drop_cut_character();
        area_[len_] = '\0';
        return len_;
    }

  private:
    // Stray bytes that belong to no character are no reason to drop any, nor is one that follows a
    // whole character.
    void drop_cut_character()
    {
        std::size_t begin = len_;
        while (begin > 0 && qel::is_continuation(area_[begin - 1]))
            --begin;
        if (begin > 0 && len_ - (begin - 1) < char_len(area_[begin - 1]))
            len_ = begin - 1;
    }

    // How many bytes a character has that begins so; 1 for what begins none of more.
    static std::size_t char_len(char lead)
    {
        const auto byte = static_cast<unsigned char>(lead);
        if (byte >= 0xF0U)
            return 4;
        if (byte >= 0xE0U)
            return 3;
        return byte >= 0xC0U ? 2 : 1;
    }

    char *area_;
    std::size_t max_len_;
    std::size_t len_ = 0;
    char first_lost_ = '\0';
};

} // namespace

size_t Qel_snprintf(char *buf, size_t size, const char *fmt, ...) noexcept
{
    if (buf == nullptr || size == 0)
        return 0;

    bounded_text bounded(buf, size);
    arguments args;
    va_start(args.list, fmt);
    format(fmt, args, bounded);
    va_end(args.list);
    return bounded.finish();
}

size_t Qel_asprintf(char **out, const char *fmt, ...) noexcept
{
    if (out == nullptr)
        return 0;

    qel::text_builder text(31);
    const auto append = [&](std::string_view piece) { text.append(piece); };
    arguments args;
    va_start(args.list, fmt);
    format(fmt, args, append);
    va_end(args.list);
    const std::size_t len = text.size();
    *out = text.release();
    return len;
}
