// C++ owners of the handles of qelstdlib and qelstdlib_formats: each releases what it holds when it
// goes out of scope, moves, and does not copy. Header only, C++17.
#ifndef QELSTDLIB_HPP
#define QELSTDLIB_HPP

#include "qelstdlib.h"
#include "qelstdlib_formats.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace qel
{

// Ends a handle with the C operation that belongs to it.
template <auto End>
struct ender {
    template <typename T>
    void operator()(T *handle) const noexcept
    {
        End(handle);
    }
};

template <typename Handle, auto End>
using owner = std::unique_ptr<Handle, ender<End>>;

// New text of a C operation, or absent.
using text = owner<char, Qel_free>;

using buf = owner<Qel_buf_t, Qel_buf_cancel>;
using list_str = owner<Qel_list_str_t, Qel_list_str_destroy>;
using dict = owner<Qel_hash_dict_t, Qel_hash_dict_destroy>;
using u64str = owner<Qel_hash_u64str_t, Qel_hash_u64str_destroy>;
using time_tz = owner<Qel_time_tz_t, Qel_time_tz_destroy>;
using json = owner<Qel_json_node_t, Qel_json_node_destroy>;
using xml_doc = owner<Qel_xml_node_t, Qel_xml_node_destroy>;

// Ends the buffer and gives its contents as text.
inline text finish(buf buffer) noexcept
{
    return text(Qel_buf_finish_str(buffer.release(), nullptr));
}

// The text as a view; an absent one is empty.
inline std::string_view view(const char *str) noexcept
{
    return {str, Qel_str_len(str)}; // {nullptr, 0} is a valid view
}

inline std::string_view view(const text &str) noexcept
{
    return view(str.get());
}

// As Qel_utf8_cnt: the bytes that go on with no character, eight at a time.
inline std::size_t utf8_cnt(std::string_view str) noexcept
{
    constexpr std::uint64_t ones = 0x0101010101010101U;
    std::size_t count = str.size();
    for (; str.size() >= sizeof ones; str.remove_prefix(sizeof ones)) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, str.data(), sizeof bytes);
        const std::uint64_t continuations = (bytes >> 7U) & (~bytes >> 6U) & ones; // 1 for each
        count -= static_cast<std::size_t>(continuations * ones >> 56U);            // their sum
    }
    for (const char byte : str)
        count -= (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U ? 1 : 0;
    return count;
}

// The pairs of a dictionary in its order, for a range-based for:
//     for (auto [key, val] : qel::pairs(dict)) ...
class pairs
{
  public:
    explicit pairs(const Qel_hash_dict_t *source) noexcept : dict_(source)
    {
        Qel_hash_dict_enum_t *walk = nullptr;
        Qel_hash_dict_enumerate(source, &walk);
        walk_.reset(walk);
    }

    struct pair {
        const char *key;
        const char *val;
    };

    struct end_mark {
    };

    class iterator
    {
      public:
        explicit iterator(const pairs &range) noexcept : range_(&range) { ++*this; }
        pair operator*() const noexcept { return pair_; }
        iterator &operator++() noexcept
        {
            more_ = Qel_hash_dict_enumerate_next(range_->dict_, range_->walk_.get(), &pair_.key,
                                                 &pair_.val);
            return *this;
        }
        bool operator!=(end_mark) const noexcept { return more_; }

      private:
        const pairs *range_;
        pair pair_{};
        bool more_ = false;
    };

    [[nodiscard]] iterator begin() const noexcept { return iterator(*this); }
    [[nodiscard]] static end_mark end() noexcept { return {}; }

  private:
    const Qel_hash_dict_t *dict_;
    owner<Qel_hash_dict_enum_t, Qel_hash_dict_enumerate_free> walk_;
};

} // namespace qel

#endif
