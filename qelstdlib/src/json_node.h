// The nodes of a JSON tree.
#ifndef QELSTDLIB_JSON_NODE_H
#define QELSTDLIB_JSON_NODE_H

#include "key_hash.h"
#include "qelstdlib_formats.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

struct Qel_json_node {
    explicit Qel_json_node(Qel_json_type_t node_type, std::string node_text = {});
    ~Qel_json_node();
    Qel_json_node(const Qel_json_node &) = delete;
    Qel_json_node &operator=(const Qel_json_node &) = delete;

    [[nodiscard]] bool is_container() const;

    // Absent when there is no member of that name.
    [[nodiscard]] Qel_json_node *member(std::string_view member_name) const;

    // Both return the value in its place in the tree.
    Qel_json_node *set_member(std::string_view member_name, std::unique_ptr<Qel_json_node> value);
    Qel_json_node *append(std::unique_ptr<Qel_json_node> value);

    // Cuts the node out of its parent, which it must have.
    std::unique_ptr<Qel_json_node> take_from_parent();

    Qel_json_type_t type;
    std::string name; // as a member of its parent
    std::string text; // of a string; of all other scalars as they are written
    Qel_json_node *parent = nullptr;
    std::vector<std::unique_ptr<Qel_json_node>> children;

  private:
    [[nodiscard]] std::size_t find_member(std::string_view member_name) const;
    [[nodiscard]] bool wants_index() const;
    void update_index();

    using member_index = std::unordered_map<std::string_view, std::size_t, qel::key_hasher>;

    // Where each member stands. Only an object of more than a few members has one, and it is kept
    // up on every change, so that looking a member up changes nothing.
    std::unique_ptr<member_index> index_;
};

#endif
