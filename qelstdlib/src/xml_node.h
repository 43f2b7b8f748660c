// The nodes of XML trees, as their making and their writing know them.
#ifndef XML_NODE_H
#define XML_NODE_H

#include "formats_int.h"
#include "key_hash.h"
#include "qelstdlib_int.h"

#include <array>
#include <cstring>
#include <memory>
#include <memory_resource>
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
    template <typename T, typename... Fields>
    T *create(Fields... fields)
    {
        static_assert(std::is_trivially_destructible_v<T>);
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the arena owns the place
        return new (memory_.allocate(sizeof(T), alignof(T))) T{fields...};
    }

    attribute **create_slots(std::size_t count)
    {
        auto **const slots = std::pmr::polymorphic_allocator<attribute *>(&memory_).allocate(count);
        std::uninitialized_value_construct_n(slots, count);
        return slots;
    }

    std::string_view keep(std::string_view text)
    {
        if (text.empty())
            return {};
        void *const kept = memory_.allocate(text.size(), 1);
        std::memcpy(kept, text.data(), text.size());
        return {static_cast<const char *>(kept), text.size()};
    }

  private:
    std::array<std::byte, 4000> first_; // which most trees do with
    std::pmr::monotonic_buffer_resource memory_{first_.data(), first_.size(),
                                                std::pmr::new_delete_resource()};
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
