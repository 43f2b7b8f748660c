// Text on its way to the caller, who releases it with Qel_free.
#ifndef QELSTDLIB_NEW_TEXT_H
#define QELSTDLIB_NEW_TEXT_H

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string_view>

namespace qel
{

// Memory that Qel_free releases. It comes from malloc because programs in other languages hand it
// to Qel_free.
inline char *resized_area(char *area, std::size_t size) noexcept
{
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)
    auto *resized = static_cast<char *>(std::realloc(area, size));
    if (resized == nullptr)
        std::terminate();
    return resized;
}

// Room for a text of len bytes, terminated; its bytes are the caller's to fill.
inline char *new_text_area(std::size_t len) noexcept
{
    char *const area = resized_area(nullptr, len + 1);
    area[len] = '\0';
    return area;
}

inline char *new_text(std::string_view str) noexcept
{
    char *const area = new_text_area(str.size());
    str.copy(area, str.size());
    return area;
}

// Text that grows at its end and is handed over without another copy.
class text_builder
{
  public:
    explicit text_builder(std::size_t expected_len) noexcept { resize(expected_len + 1); }
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)
    ~text_builder() { std::free(area_); }
    text_builder(const text_builder &) = delete;
    text_builder &operator=(const text_builder &) = delete;

    text_builder &append(std::string_view str) noexcept
    {
        if (!str.empty())
            std::memcpy(grow(str.size()), str.data(), str.size());
        return *this;
    }
    text_builder &append(char chr) noexcept
    {
        *grow(1) = chr;
        return *this;
    }
    text_builder &append(std::size_t count, char chr) noexcept
    {
        if (count > 0)
            std::memset(grow(count), chr, count);
        return *this;
    }

    // The place after the text's end, with room for count bytes; extend_to() makes those that were
    // written there, up to the end given, part of the text.
    char *reserve(std::size_t count) noexcept
    {
        if (len_ + count >= size_)
            resize(std::max<std::size_t>(2 * (len_ + count), 32)); // with room for the terminator
        return area_ + len_;
    }
    void extend_to(const char *end) noexcept { len_ = static_cast<std::size_t>(end - area_); }

    [[nodiscard]] std::size_t size() const noexcept { return len_; }
    [[nodiscard]] bool empty() const noexcept { return len_ == 0; }
    [[nodiscard]] std::string_view view() const noexcept { return {area_, len_}; }

    // The text, which is the caller's from here on; once only.
    char *release() noexcept
    {
        char *const released = area_;
        released[len_] = '\0';
        area_ = nullptr;
        len_ = 0;
        size_ = 0;
        return released;
    }

  private:
    // Makes the text count bytes longer and gives their place.
    char *grow(std::size_t count) noexcept
    {
        char *const place = reserve(count);
        len_ += count;
        return place;
    }

    void resize(std::size_t size) noexcept
    {
        area_ = resized_area(area_, size);
        size_ = size;
    }

    char *area_ = nullptr;
    std::size_t len_ = 0;
    std::size_t size_ = 0;
};

} // namespace qel

#endif
