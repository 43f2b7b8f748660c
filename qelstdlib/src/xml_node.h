// The nodes of XML trees, as their making and their writing know them.
#ifndef XML_NODE_H
#define XML_NODE_H

#include "formats_int.h"
#include "key_hash.h"
#include "qelstdlib_int.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace formats
{

// A text in an arena, where whole stretches of it may be read: what is after it is filled up.
struct kept_text {
    std::string_view view;
};

// The attributes of an element, in their order.
struct attribute {
    kept_text name;
    kept_text value{};
    attribute *next = nullptr;
};

// Where the attributes of an element with more than a few are found by the hashes of their names:
// each stands in the slot that its hash names or in one of the next, with no empty slot between.
struct attribute_index {
    attribute **slots;
    std::size_t num_slots;
    std::size_t count;
    attribute *last;
};

// Holds the nodes of one tree with their texts. They go when the tree does, all at once: the
// nodes link to each other and own nothing.
class arena
{
  public:
    arena() = default;
    arena(const arena &) = delete;
    arena &operator=(const arena &) = delete;

    template <typename T, typename... Fields>
    T *create(Fields... fields)
    {
        static_assert(std::is_trivially_destructible_v<T>);
        static_assert(alignof(T) <= formats::stretch_len);
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the arena owns the place
        return new (allocate(sizeof(T))) T{fields...};
    }

    attribute **create_slots(std::size_t count)
    {
        std::byte *const slots = allocate(count * sizeof(attribute *));
        return new (slots) attribute *[count] {};
    }

    // A copy of the text, filled up with spaces.
    kept_text keep(std::string_view text)
    {
        if (text.empty()) {
            return {};
        }
        std::byte *const kept = allocate(text.size());
        std::memset(free_ - formats::stretch_len, ' ', formats::stretch_len);
        std::memcpy(kept, text.data(), text.size());
        return {{reinterpret_cast<const char *>(kept), text.size()}};
    }

    // Where a valid name stands once it is kept: most that recur have a place of their own.
    kept_text &place_of_name(const char *name)
    {
        return names_[static_cast<unsigned char>(*name) % names_.size()];
    }

  private:
    // In whole stretches, so that what is allocated next is aligned.
    std::byte *allocate(std::size_t size)
    {
        size = (size + formats::stretch_len - 1) / formats::stretch_len * formats::stretch_len;
        if (size > left_) {
            return add_chunk(size);
        }
        std::byte *const allocated = free_;
        free_ += size;
        left_ -= size;
        return allocated;
    }

    // Each chunk is twice as large as the one before, so that many nodes take few of them.
    std::byte *add_chunk(std::size_t size)
    {
        next_chunk_ *= 2;
        left_ = std::max(size, next_chunk_) - size;
        std::byte *const chunk =
            chunks_.emplace_back(std::make_unique_for_overwrite<std::byte[]>(size + left_)).get();
        free_ = chunk + size;
        return chunk;
    }

    static constexpr std::size_t first_chunk = 4000;
    static_assert(first_chunk % formats::stretch_len == 0);

    alignas(formats::stretch_len) std::array<std::byte, first_chunk> first_;
    std::array<kept_text, 32> names_{};
    std::vector<std::unique_ptr<std::byte[]>> chunks_; // beside the first
    std::size_t next_chunk_ = first_chunk;
    std::size_t left_ = first_chunk;
    std::byte *free_ = first_.data();
};

} // namespace formats

struct Qel_xml_node {
    [[nodiscard]] bool is_element() const { return !name.view.empty(); }

    formats::arena *memory;
    formats::kept_text name; // of an element; a document has none
    Qel_xml_node *parent = nullptr;
    Qel_xml_node *previous = nullptr; // the siblings
    Qel_xml_node *next = nullptr;
    Qel_xml_node *first_child = nullptr;
    Qel_xml_node *last_child = nullptr;
    std::size_t num_children = 0; // the text among them
    formats::attribute *first_attribute = nullptr;
    formats::attribute_index *index = nullptr;
    std::optional<formats::kept_text> text = std::nullopt; // the first child
};

#endif
