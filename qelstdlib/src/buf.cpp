#include "qelstdlib_int.h"

#include <memory>

struct Qel_buf {
    std::string text;
};

namespace
{

// The longest start of a text that has at most max_chars characters.
struct text_start {
    std::size_t bytes;
    std::size_t chars;
};

text_start first_chars(std::string_view str, std::size_t max_chars)
{
    if (str.size() <= max_chars)
        return {str.size(), qel::utf8_cnt(str)};
    std::size_t chars = 0;
    std::size_t bytes = 0;
    for (; bytes < str.size(); ++bytes) {
        if (qel::is_continuation(str[bytes]))
            continue;
        if (chars == max_chars)
            break;
        ++chars;
    }
    return {bytes, chars};
}

} // namespace

Qel_buf_t *Qel_buf_create(void) noexcept
{
    constexpr std::size_t usual_len = 100; // of a line
    auto buf = std::make_unique<Qel_buf>();
    buf->text.reserve(usual_len);
    return buf.release();
}

void Qel_buf_add_str(Qel_buf_t *buf, const char *str) noexcept
{
    if (buf != nullptr)
        buf->text.append(qel::view(str));
}

void Qel_buf_add_byte(Qel_buf_t *buf, uint8_t byte) noexcept
{
    Qel_buf_add_fill(buf, byte, 1);
}

void Qel_buf_add_fill(Qel_buf_t *buf, uint8_t byte, size_t count) noexcept
{
    if (buf != nullptr)
        buf->text.append(count, static_cast<char>(byte));
}

void Qel_buf_add_str_just(Qel_buf_t *buf, const char *str, Qel_str_justify_t /*the only one*/,
                          uint8_t fill, size_t width) noexcept
{
    if (buf == nullptr)
        return;

    const std::string_view text = qel::view(str);
    const text_start kept = first_chars(text, width);
    buf->text.append(text.substr(0, kept.bytes));
    Qel_buf_add_fill(buf, fill, width - kept.chars);
}

const char *Qel_buf_peek(const Qel_buf_t *buf) noexcept
{
    return buf == nullptr ? "" : buf->text.c_str();
}

void Qel_buf_cancel(Qel_buf_t *buf) noexcept
{
    const std::unique_ptr<Qel_buf> ended(buf);
}

char *Qel_buf_finish_str(Qel_buf_t *buf, size_t *len) noexcept
{
    const std::unique_ptr<Qel_buf> ended(buf);
    if (len != nullptr)
        *len = ended ? ended->text.size() : 0;
    return ended ? qel::new_text(ended->text) : nullptr;
}
