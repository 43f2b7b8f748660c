// JSON trees.
#include "formats_int.h"
#include "json_node.h"

using node_ptr = std::unique_ptr<Qel_json_node>;

Qel_json_node::Qel_json_node(Qel_json_type_t node_type, std::string node_text)
    : type(node_type), text(std::move(node_text))
{
}

Qel_json_node::~Qel_json_node()
{
    if (!children.empty()) {
        formats::release_children(children);
    }
}

bool Qel_json_node::is_container() const
{
    return type == QEL_JSON_TYPE_OBJECT || type == QEL_JSON_TYPE_ARRAY;
}

std::size_t Qel_json_node::find_member(std::string_view member_name) const
{
    if (index_) {
        const auto found = index_->find(member_name);
        return found != index_->end() ? found->second : children.size();
    }
    const auto found = std::find_if(children.begin(), children.end(), [&](const node_ptr &child) {
        return child->name == member_name;
    });
    return static_cast<std::size_t>(std::distance(children.begin(), found));
}

Qel_json_node *Qel_json_node::member(std::string_view member_name) const
{
    const std::size_t place = find_member(member_name);
    return place < children.size() ? children[place].get() : nullptr;
}

bool Qel_json_node::wants_index() const
{
    constexpr std::size_t few = 32;
    return type == QEL_JSON_TYPE_OBJECT && children.size() > few;
}

void Qel_json_node::update_index()
{
    index_.reset();
    if (!wants_index()) {
        return;
    }
    index_ = std::make_unique<member_index>(children.size(), qel::own_hasher());
    for (std::size_t place = 0; place < children.size(); ++place) {
        index_->emplace(children[place]->name, place);
    }
}

Qel_json_node *Qel_json_node::append(node_ptr value)
{
    constexpr std::size_t usual = 8;
    if (children.empty()) {
        children.reserve(usual);
    }
    value->parent = this;
    Qel_json_node *const added = children.emplace_back(std::move(value)).get();
    if (index_) {
        index_->emplace(added->name, children.size() - 1);
    } else if (wants_index()) {
        update_index();
    }
    return added;
}

Qel_json_node *Qel_json_node::set_member(std::string_view member_name, node_ptr value)
{
    value->name = member_name;
    const std::size_t place = find_member(value->name);
    if (place == children.size()) {
        return append(std::move(value));
    }
    value->parent = this;
    children[place].swap(
        value); // value is the earlier one from here on, whose name the index views
    if (index_) {
        index_->erase(value->name);
        index_->emplace(children[place]->name, place);
    }
    return children[place].get();
}

node_ptr Qel_json_node::take_from_parent()
{
    Qel_json_node *const old_parent = parent;
    node_ptr taken = formats::take_out(*this);
    old_parent->update_index();
    return taken;
}

static const char *initial_text(Qel_json_type_t type)
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

static bool is_type(const Qel_json_node_t *node, Qel_json_type_t type)
{
    return node != nullptr && node->type == type;
}

// Whether val may go under node. A root that node itself stands under may not: the two would own
// each other. Only a node with children can be one, so building downwards stays linear.
static bool may_adopt(const Qel_json_node_t *node, const Qel_json_node_t *val)
{
    if (val == nullptr || val == node || val->parent != nullptr) {
        return false;
    }
    if (val->children.empty()) {
        return true;
    }
    while (node->parent != nullptr) {
        node = node->parent;
    }
    return node != val;
}

Qel_json_node_t *Qel_json_node_create(Qel_json_type_t type) noexcept
{
    const char *const text = initial_text(type);
    return text != nullptr ? std::make_unique<Qel_json_node>(type, text).release() : nullptr;
}

Qel_json_type_t Qel_json_node_type(const Qel_json_node_t *node) noexcept
{
    return node != nullptr ? node->type : QEL_JSON_TYPE_UNKNOWN;
}

Qel_json_node_t *Qel_json_object_value(const Qel_json_node_t *node, const char *name) noexcept
{
    if (!is_type(node, QEL_JSON_TYPE_OBJECT) || name == nullptr) {
        return nullptr;
    }
    return node->member(name);
}

const char *Qel_json_object_value_string(const Qel_json_node_t *node, const char *name) noexcept
{
    const Qel_json_node_t *const value = Qel_json_object_value(node, name);
    return is_type(value, QEL_JSON_TYPE_STRING) ? value->text.c_str() : nullptr;
}

bool Qel_json_object_insert_string(Qel_json_node_t *node, const char *name,
                                   const char *str) noexcept
{
    if (!is_type(node, QEL_JSON_TYPE_OBJECT) || name == nullptr || str == nullptr) {
        return false;
    }
    node->set_member(name, std::make_unique<Qel_json_node>(QEL_JSON_TYPE_STRING, str));
    return true;
}

bool Qel_json_object_insert(Qel_json_node_t *node, const char *name, Qel_json_node_t *val) noexcept
{
    if (!is_type(node, QEL_JSON_TYPE_OBJECT) || name == nullptr || !may_adopt(node, val)) {
        return false;
    }
    node->set_member(name, node_ptr(val));
    return true;
}

size_t Qel_json_object_num_children(const Qel_json_node_t *node) noexcept
{
    return node != nullptr ? node->children.size() : 0;
}

size_t Qel_json_array_len(const Qel_json_node_t *node) noexcept
{
    return is_type(node, QEL_JSON_TYPE_ARRAY) ? node->children.size() : 0;
}

Qel_json_node_t *Qel_json_array_at(const Qel_json_node_t *node, size_t idx) noexcept
{
    return idx < Qel_json_array_len(node) ? node->children[idx].get() : nullptr;
}

bool Qel_json_array_insert(Qel_json_node_t *node, Qel_json_node_t *val) noexcept
{
    if (!is_type(node, QEL_JSON_TYPE_ARRAY) || !may_adopt(node, val)) {
        return false;
    }
    node->append(node_ptr(val));
    return true;
}

void Qel_json_take_from_parent(Qel_json_node_t *node) noexcept
{
    if (node != nullptr && node->parent != nullptr) {
        static_cast<void>(node->take_from_parent().release()); // the caller's from here on
    }
}

void Qel_json_node_destroy(Qel_json_node_t *node) noexcept
{
    Qel_json_take_from_parent(node);
    const node_ptr doomed(node);
}
