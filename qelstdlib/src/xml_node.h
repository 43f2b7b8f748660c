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

// The attributes of an element, in their order.
struct attribute {
    std::string_view name;
    std::string_view value{};
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
        static_assert(alignof(T) <= alignment);
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the arena owns the place
        return new (allocate(sizeof(T))) T{fields...};
    }

    attribute **create_slots(std::size_t count)
    {
        std::byte *const slots = allocate(count * sizeof(attribute *));
        return new (slots) attribute *[count] {};
    }

    std::string_view keep(std::string_view text)
    {
        if (text.empty()) {
            return {};
        }
        std::byte *const kept = allocate(text.size());
        std::memcpy(kept, text.data(), text.size());
        return {reinterpret_cast<const char *>(kept), text.size()};
    }

  private:
    std::byte *allocate(std::size_t size)
    {
        size = (size + alignment - 1) / alignment * alignment;
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

    static constexpr std::size_t alignment = alignof(void *);
    static constexpr std::size_t first_chunk = 4000;
    static_assert(first_chunk % alignment == 0);

    alignas(alignment) std::array<std::byte, first_chunk> first_;
    std::vector<std::unique_ptr<std::byte[]>> chunks_; // beside the first
    std::size_t next_chunk_ = first_chunk;
    std::size_t left_ = first_chunk;
    std::byte *free_ = first_.data();
};

} // namespace formats

struct Qel_xml_node {
    [[nodiscard]] bool is_element() const { return !tag.empty(); }
    [[nodiscard]] std::string_view name() const { return tag.substr(0, name_len); }

    formats::arena *memory;
    // An element's name, with the attributes of the tag that it was made from, if any; these are
    // written as they stand, in front of the others. A document has no name.
    std::string_view tag;
    std::size_t name_len;
    Qel_xml_node *parent = nullptr;
    Qel_xml_node *previous = nullptr; // the siblings
    Qel_xml_node *next = nullptr;
    Qel_xml_node *first_child = nullptr;
    Qel_xml_node *last_child = nullptr;
    std::size_t num_children = 0; // the text among them
    formats::attribute *first_attribute = nullptr;
    formats::attribute_index *index = nullptr;
    std::optional<std::string_view> text = std::nullopt; // the first child
};

#endif
