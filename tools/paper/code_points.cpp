#include "paper/code_points.h"

#include <utf8.h>

#include <iconv.h>

#include <iterator>
#include <map>
#include <mutex>
#include <stdexcept>

namespace paper
{

namespace
{

class converter
{
  public:
    explicit converter(const std::string &page) : handle_(::iconv_open("UTF-32LE", page.c_str()))
    {
        if (handle_ == none())
            throw std::runtime_error("iconv does not know " + page);
    }
    ~converter() { ::iconv_close(handle_); }
    converter(const converter &) = delete;
    converter &operator=(const converter &) = delete;

    // 0 for a byte that stands for nothing.
    char32_t convert(char byte)
    {
        unsigned char point[4] = {};
        char *from = &byte;
        char *to = reinterpret_cast<char *>(point);
        size_t from_left = 1;
        size_t to_left = sizeof point;
        if (::iconv(handle_, &from, &from_left, &to, &to_left) != 0 || to_left != 0) {
            ::iconv(handle_, nullptr, nullptr, nullptr, nullptr);
            return 0;
        }
        return static_cast<char32_t>(point[0] | point[1] << 8 | point[2] << 16);
    }

  private:
    // iconv's own mark. NOLINTNEXTLINE(performance-no-int-to-ptr)
    static iconv_t none() { return reinterpret_cast<iconv_t>(-1); }

    iconv_t handle_;
};

page read_page(const std::string &name)
{
    page characters{};
    converter from_page(name);
    for (unsigned byte = 0x20; byte < characters.size(); ++byte) {
        const char32_t character = from_page.convert(static_cast<char>(byte));
        const bool is_control = character >= 0x7F && character < 0xA0;
        characters[byte] = is_control ? 0 : character;
    }
    return characters;
}

} // namespace

const page &page_named(const std::string &name)
{
    static std::mutex mutex;
    static std::map<std::string, page> pages;
    const std::lock_guard lock(mutex);
    const auto known = pages.find(name);
    return known != pages.end() ? known->second
                                : pages.emplace(name, read_page(name)).first->second;
}

std::string to_utf8(std::u32string_view text)
{
    std::string bytes;
    utf8::utf32to8(text.begin(), text.end(), std::back_inserter(bytes));
    return bytes;
}

} // namespace paper
