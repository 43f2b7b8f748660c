// JSON trees.
#include "formats_int.h"
#include "json_node.h"
#include "key_hash.h"

namespace
{

std::size_t hash_of(std::string_view name)
{
    return static_cast<std::size_t>(qel::own_hasher()(name));
}

const char *initial_text(Qel_json_type_t type)
{
    switch (type) {
    case QEL_JSON_TYPE_INTEGER:
        return "0";
    case QEL_JSON_TYPE_DECIMAL:
        return "0.0"; // still a decimal when it is read back
    case QEL_JSON_TYPE_BOOL:
        return "false";
    case QEL_JSON_TYPE_NULL:
        return "null";
    case QEL_JSON_TYPE_OBJECT:
    case QEL_JSON_TYPE_ARRAY:
    case QEL_JSON_TYPE_STRING:
        return "";
    case QEL_JSON_TYPE_UNKNOWN:
        break;
    }
    return nullptr;
}

bool is_type(const Qel_json_node_t *node, Qel_json_type_t type)
{
    return node != nullptr && node->type == type;
}

// Whether val may go under node. A root that node itself stands under may not: the two would own
// each other. Only a node with children can be one, so building downwards stays linear.
bool may_adopt(const Qel_json_node_t *node, const Qel_json_node_t *val)
{
    if (val == nullptr || val == node || val->parent != nullptr)
        return false;
    if (!val->is_container() || val->children->count == 0)
        return true;
    while (node->parent != nullptr)
        node = node->parent;
    return node != val;
}

} // namespace

Qel_json_node *Qel_json_node::create_root(Qel_json_type_t type, std::string_view text)
{
    // So much that an object with its room is no more than what allocators have at hand, 1,032
    // bytes.
    const std::size_t room_for_members = type == QEL_JSON_TYPE_OBJECT ? 720 : 64;
    formats::tree_memory *const memory = formats::tree_memory::create(
        sizeof(Qel_json_node) + sizeof(json_children) + text.size() + room_for_members);
    Qel_json_node *const root = create(*memory, type, memory->keep(text));
    root->has_share = true;
    return root;
}

Qel_json_node *Qel_json_node::member(std::string_view member_name) const
{
    return children->slots != nullptr ? *slot_of(member_name) : find_linked(member_name);
}

// A repeated one, or one of many.
void Qel_json_node::set_other_member(Qel_json_node &value)
{
    Qel_json_node *const earlier = member(value.name);
    if (earlier != nullptr) {
        replace(*earlier, value);
        return;
    }
    link(value);
    if (children->slots != nullptr || children->count > few_members)
        index_member(value);
}

void Qel_json_node::append(Qel_json_node &value)
{
    json_children &all = *children;
    if (all.first_slot + all.count == all.num_slots)
        make_room_for_element();
    all.slots[all.first_slot + all.count] = &value;
    link(value);
}

// Elements that were taken from the front leave room, too.
void Qel_json_node::make_room_for_element() const
{
    json_children &all = *children;
    if (all.first_slot > all.count) {
        std::copy_n(all.slots + all.first_slot, all.count, all.slots);
        all.first_slot = 0;
    } else {
        resize_slots(std::max<std::size_t>(2 * all.count, 8));
    }
}

void Qel_json_node::index_elements() const
{
    if (children->count > 0)
        resize_slots(children->count);
}

void Qel_json_node::replace(Qel_json_node &earlier, Qel_json_node &value)
{
    json_children &all = *children;
    value.parent = this;
    value.previous = earlier.previous;
    value.next = earlier.next;
    (value.previous == nullptr ? all.first : value.previous->next) = &value;
    (value.next == nullptr ? all.last : value.next->previous) = &value;
    if (all.slots != nullptr)
        *slot_of(value.name) = &value;
    if (earlier.memory == memory)
        memory->expect_waste();
    earlier.parent = nullptr;
    earlier.release();
}

void Qel_json_node::unlink()
{
    json_children &all = *parent->children;
    if (all.slots != nullptr)
        (parent->type == QEL_JSON_TYPE_OBJECT ? parent->remove_slot_of(*this)
                                              : parent->remove_element(*this));
    (previous == nullptr ? all.first : previous->next) = next;
    (next == nullptr ? all.last : next->previous) = previous;
    --all.count;
    if (memory == parent->memory)
        memory->expect_waste();
    parent = nullptr;
    previous = nullptr;
    next = nullptr;
}

// Without recursion: a tree that was built may be deeper than the stack allows. The shares are
// given up at the end, because nodes still to be visited may stand in that memory.
void Qel_json_node::release()
{
    if (!memory->has_guests()) {
        if (has_share)
            memory->drop_share();
        return;
    }
    std::vector<Qel_json_node *> waiting{this};
    std::vector<formats::tree_memory *> shares;
    while (!waiting.empty()) {
        const Qel_json_node *const node = waiting.back();
        waiting.pop_back();
        if (node->has_share)
            shares.push_back(node->memory);
        if (!node->is_container() || !node->memory->has_guests())
            continue;
        for (Qel_json_node *child = node->children->first; child != nullptr; child = child->next)
            waiting.push_back(child);
    }
    for (formats::tree_memory *const share : shares)
        share->drop_share();
}

// The slot with the member, or the empty one where it would be put.
Qel_json_node **Qel_json_node::slot_of(std::string_view member_name) const
{
    const std::size_t last = children->num_slots - 1;
    std::size_t at = hash_of(member_name) & last;
    while (children->slots[at] != nullptr && children->slots[at]->name != member_name)
        at = (at + 1) & last;
    return &children->slots[at];
}

void Qel_json_node::index_member(Qel_json_node &value) const
{
    if (2 * children->count > children->num_slots)
        resize_slots(std::max(2 * children->num_slots, 4 * few_members));
    else
        *slot_of(value.name) = &value;
}

// Gives the children slots anew.
void Qel_json_node::resize_slots(std::size_t count) const
{
    json_children &all = *children;
    all.names = ~std::uint64_t{0}; // members are found by their slots from here on
    all.slots = memory->make_array<Qel_json_node *>(count);
    all.num_slots = count;
    all.first_slot = 0;
    std::size_t place = 0;
    for (Qel_json_node *child = all.first; child != nullptr; child = child->next)
        (type == QEL_JSON_TYPE_OBJECT ? *slot_of(child->name) : all.slots[place++]) = child;
}

// Moves the members behind it up, so that none is cut off from its slot.
void Qel_json_node::remove_slot_of(const Qel_json_node &value) const
{
    const std::size_t last = children->num_slots - 1;
    Qel_json_node **const slots = children->slots;
    auto at = static_cast<std::size_t>(slot_of(value.name) - slots);
    slots[at] = nullptr;
    for (at = (at + 1) & last; slots[at] != nullptr; at = (at + 1) & last) {
        Qel_json_node *const moved = std::exchange(slots[at], nullptr);
        *slot_of(moved->name) = moved;
    }
}

// In proportion to the elements before it or to those behind it, whichever are fewer.
void Qel_json_node::remove_element(const Qel_json_node &value) const
{
    json_children &all = *children;
    Qel_json_node **const begin = all.slots + all.first_slot;
    Qel_json_node **const end = begin + all.count;
    std::ptrdiff_t distance = 0;
    while (begin[distance] != &value && end[-1 - distance] != &value)
        ++distance;
    if (begin[distance] == &value) {
        std::move_backward(begin, begin + distance, begin + distance + 1);
        ++all.first_slot;
    } else {
        std::move(end - distance, end, end - distance - 1);
    }
}

Qel_json_node_t *Qel_json_node_create(Qel_json_type_t type) noexcept
{
    const char *const text = initial_text(type);
    return text != nullptr ? Qel_json_node::create_root(type, text) : nullptr;
}

Qel_json_type_t Qel_json_node_type(const Qel_json_node_t *node) noexcept
{
    return node != nullptr ? node->type : QEL_JSON_TYPE_UNKNOWN;
}

Qel_json_node_t *Qel_json_object_value(const Qel_json_node_t *node, const char *name) noexcept
{
    if (!is_type(node, QEL_JSON_TYPE_OBJECT) || name == nullptr)
        return nullptr;
    return node->member(name);
}

const char *Qel_json_object_value_string(const Qel_json_node_t *node, const char *name) noexcept
{
    const Qel_json_node_t *const value = Qel_json_object_value(node, name);
    return is_type(value, QEL_JSON_TYPE_STRING) ? value->text.data() : nullptr;
}

bool Qel_json_object_insert_string(Qel_json_node_t *node, const char *name,
                                   const char *str) noexcept
{
    if (!is_type(node, QEL_JSON_TYPE_OBJECT) || name == nullptr || str == nullptr)
        return false;
    Qel_json_node *value = nullptr;
    if (node->memory->has_waste()) {
        value = Qel_json_node::create_root(QEL_JSON_TYPE_STRING, str);
        value->name = value->memory->keep(name);
        node->memory->expect_guests();
    } else {
        const auto [text, kept_name] = node->memory->keep(str, name);
        value = Qel_json_node::create(*node->memory, QEL_JSON_TYPE_STRING, text);
        value->name = kept_name;
    }
    node->set_member(*value);
    return true;
}

bool Qel_json_object_insert(Qel_json_node_t *node, const char *name, Qel_json_node_t *val) noexcept
{
    if (!is_type(node, QEL_JSON_TYPE_OBJECT) || name == nullptr || !may_adopt(node, val))
        return false;
    if (val->name != name)
        val->name = val->memory->keep(name);
    node->memory->expect_guests();
    node->set_member(*val);
    return true;
}

size_t Qel_json_object_num_children(const Qel_json_node_t *node) noexcept
{
    return node != nullptr && node->is_container() ? node->children->count : 0;
}

size_t Qel_json_array_len(const Qel_json_node_t *node) noexcept
{
    return is_type(node, QEL_JSON_TYPE_ARRAY) ? node->children->count : 0;
}

Qel_json_node_t *Qel_json_array_at(const Qel_json_node_t *node, size_t idx) noexcept
{
    if (idx >= Qel_json_array_len(node))
        return nullptr;
    return node->children->slots[node->children->first_slot + idx];
}

bool Qel_json_array_insert(Qel_json_node_t *node, Qel_json_node_t *val) noexcept
{
    if (!is_type(node, QEL_JSON_TYPE_ARRAY) || !may_adopt(node, val))
        return false;
    node->memory->expect_guests();
    node->append(*val);
    return true;
}

void Qel_json_take_from_parent(Qel_json_node_t *node) noexcept
{
    if (node == nullptr || node->parent == nullptr)
        return;
    node->unlink();
    if (!node->has_share) {
        node->has_share = true;
        node->memory->add_share();
    }
}

void Qel_json_node_destroy(Qel_json_node_t *node) noexcept
{
    if (node == nullptr)
        return;
    if (node->parent != nullptr)
        node->unlink();
    node->release();
}
