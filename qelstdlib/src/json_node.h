// The nodes of a JSON tree.
#ifndef QELSTDLIB_JSON_NODE_H
#define QELSTDLIB_JSON_NODE_H

#include "qelstdlib_formats.h"
#include "tree_memory.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

// What an object or an array holds.
struct json_children {
    Qel_json_node *first = nullptr;
    Qel_json_node *last = nullptr;
    std::size_t count = 0;
    std::uint64_t names = 0; // of an object: the name_bit of each member that it has or had

    // Of an array, its elements in their order, from some slot on. Of an object with more than a
    // few members, where they are found by the hashes of their names: each stands in the slot that
    // its hash names or in one of the next, with no empty slot between. It is kept up on every
    // change, so that looking a member up changes nothing.
    Qel_json_node **slots = nullptr;
    std::size_t num_slots = 0;
    std::size_t first_slot = 0;
};

// Stands in its memory together with its texts; nodes link to each other and own nothing, except
// that those which were a root once hold a share of their memory.
struct Qel_json_node {
    static Qel_json_node *create_root(Qel_json_type_t type, std::string_view text);
    static Qel_json_node *create(formats::tree_memory &memory, Qel_json_type_t type,
                                 std::string_view kept_text);
    static Qel_json_node *create_container(formats::tree_memory &memory, Qel_json_type_t type);

    [[nodiscard]] bool is_container() const { return children != nullptr; }

    // Absent when there is no member of that name.
    [[nodiscard]] Qel_json_node *member(std::string_view member_name) const;

    // Adds the value, or puts it in the place of an earlier one, which is released. Its name is
    // already kept.
    void set_member(Qel_json_node &value);
    void append(Qel_json_node &value);

    // Adds an element that array_at does not find before index_elements.
    void link(Qel_json_node &value);
    void index_elements() const;

    // Cuts the node out of its parent, which it must have.
    void unlink();

    // Gives up what the node, which has no parent, and what is under it hold.
    void release();

    Qel_json_type_t type;
    bool has_share; // of its memory
    formats::tree_memory *memory;
    std::string_view text;   // of a string, with a NUL after it; of other scalars as written
    json_children *children; // of an object or array
    // As a member of its parent, with a NUL after it.
    // NOLINTNEXTLINE(readability-redundant-string-init)
    std::string_view name = "";
    Qel_json_node *parent{};
    Qel_json_node *previous{}; // the siblings
    Qel_json_node *next{};

  private:
    static constexpr std::size_t few_members = 32;

    [[nodiscard]] Qel_json_node *find_linked(std::string_view member_name) const;
    void set_other_member(Qel_json_node &value);
    void replace(Qel_json_node &earlier, Qel_json_node &value);
    void index_member(Qel_json_node &value) const;
    void make_room_for_element() const;
    [[nodiscard]] Qel_json_node **slot_of(std::string_view member_name) const;
    void resize_slots(std::size_t count) const;
    void remove_slot_of(const Qel_json_node &value) const;
    void remove_element(const Qel_json_node &value) const;
};

// An object or array in one piece.
struct json_container {
    Qel_json_node node;
    json_children children;
};

// What reading does for each node is inline.

// One bit, by the name's length and its first byte: while no member has it, none has the name.
inline std::uint64_t name_bit(std::string_view name)
{
    return std::uint64_t{1} << ((name.size() + static_cast<unsigned char>(*name.data())) % 64);
}

inline Qel_json_node *Qel_json_node::create_container(formats::tree_memory &memory,
                                                      Qel_json_type_t type)
{
    auto *const both = memory.make<json_container>(Qel_json_node{type, false, &memory, "", nullptr},
                                                   json_children{});
    both->node.children = &both->children;
    return &both->node;
}

inline Qel_json_node *Qel_json_node::create(formats::tree_memory &memory, Qel_json_type_t type,
                                            std::string_view kept_text)
{
    const bool is_container = type == QEL_JSON_TYPE_OBJECT || type == QEL_JSON_TYPE_ARRAY;
    return is_container ? create_container(memory, type)
                        : memory.make<Qel_json_node>(type, false, &memory, kept_text, nullptr);
}

inline void Qel_json_node::link(Qel_json_node &value)
{
    json_children &all = *children;
    value.parent = this;
    value.previous = all.last;
    value.next = nullptr;
    (all.last == nullptr ? all.first : all.last->next) = &value;
    all.last = &value;
    ++all.count;
}

inline Qel_json_node *Qel_json_node::find_linked(std::string_view member_name) const
{
    Qel_json_node *found = children->first;
    while (found != nullptr && found->name != member_name)
        found = found->next;
    return found;
}

inline void Qel_json_node::set_member(Qel_json_node &value)
{
    json_children &all = *children;
    const std::uint64_t bit = name_bit(value.name);
    const bool is_new = (all.names & bit) == 0 && all.count < few_members;
    all.names |= bit;
    if (is_new)
        link(value);
    else
        set_other_member(value);
}

#endif
