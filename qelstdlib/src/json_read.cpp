// Reading JSON trees.
#include "formats_int.h"
#include "json_node.h"
#include "qelstdlib_json.hpp"

namespace
{

using qel::json_fault;
using qel::json_problem;
using qel::json_scalar;

Qel_json_type_t type_of(json_scalar kind)
{
    switch (kind) {
    case json_scalar::integer:
        return QEL_JSON_TYPE_INTEGER;
    case json_scalar::decimal:
        return QEL_JSON_TYPE_DECIMAL;
    case json_scalar::boolean:
        return QEL_JSON_TYPE_BOOL;
    case json_scalar::null:
        break;
    }
    return QEL_JSON_TYPE_NULL;
}

// Builds the tree from what is read. The texts that stand for themselves are views of one copy of
// the source, in which a NUL takes the place of the quote that ends each.
class builder
{
  public:
    explicit builder(std::string_view source)
        : memory_(*formats::tree_memory::create(source.size() + room_for_nodes(source))),
          source_(source), copy_(memory_.copy(source))
    {
    }
    ~builder()
    {
        if (!is_taken_)
            memory_.drop_share();
    }
    builder(const builder &) = delete;
    builder &operator=(const builder &) = delete;

    // The caller's from here on.
    Qel_json_node *take_root()
    {
        is_taken_ = true;
        root_->has_share = true;
        return root_;
    }

    void begin_object(std::size_t) { open_ = add(QEL_JSON_TYPE_OBJECT, {}); }
    void begin_array(std::size_t) { open_ = add(QEL_JSON_TYPE_ARRAY, {}); }
    void end_object(std::size_t) { open_ = open_->parent; }
    void end_array(std::size_t)
    {
        open_->index_elements();
        open_ = open_->parent;
    }
    void name(std::string_view text, std::size_t offset) { name_ = kept(text, offset); }
    void string(std::string_view text, std::size_t offset)
    {
        add(QEL_JSON_TYPE_STRING, kept(text, offset));
    }
    void scalar(json_scalar kind, std::string_view spelling, std::size_t)
    {
        add(type_of(kind), view_of_copy(spelling));
    }

  private:
    // About as much as the nodes of a list of line items take.
    static std::size_t room_for_nodes(std::string_view source)
    {
        constexpr std::size_t most = 16384;
        return std::min(8 * source.size() + 256, most);
    }

    std::string_view view_of_copy(std::string_view text) const
    {
        return {copy_ + (text.data() - source_.data()), text.size()};
    }

    // The text of the string whose quote stands at the offset.
    std::string_view kept(std::string_view text, std::size_t offset)
    {
        if (text.data() != source_.data() + offset + 1)
            return kept_other(text);
        copy_[offset + 1 + text.size()] = '\0';
        return {copy_ + offset + 1, text.size()};
    }

    // As C sees it: up to its first NUL.
    [[gnu::noinline]] std::string_view kept_other(std::string_view text)
    {
        return memory_.keep(text.substr(0, text.find('\0')));
    }

    Qel_json_node *add(Qel_json_type_t type, std::string_view text)
    {
        Qel_json_node *const node = Qel_json_node::create(memory_, type, text);
        if (open_ == nullptr) {
            root_ = node;
        } else if (open_->type == QEL_JSON_TYPE_ARRAY) {
            open_->link(*node);
        } else {
            node->name = name_;
            open_->set_member(*node);
        }
        return node;
    }

    formats::tree_memory &memory_;
    std::string_view source_;
    char *copy_;
    Qel_json_node *root_ = nullptr;
    Qel_json_node *open_ = nullptr;
    std::string_view name_;
    bool is_taken_ = false;
};

// A fault as the C interface tells it.
struct read_error {
    Qel_json_error_t error;
    std::size_t offset;
};

read_error error_of(const json_fault &fault, std::string_view text, bool repair)
{
    switch (fault.problem) {
    case json_problem::lone_surrogate:
    case json_problem::broken_utf8:
        return {QEL_JSON_ERROR_ENCODING, fault.begin};
    case json_problem::too_deep:
        return {QEL_JSON_ERROR_DEPTH, fault.at};
    case json_problem::incomplete_number:
    case json_problem::overlong_number:
        return {QEL_JSON_ERROR_SYNTAX, fault.begin};
    default:
        break;
    }
    const std::string_view rest = text.substr(fault.at);
    const bool is_broken = !repair && !rest.empty() && !qel::utf8_at(rest).is_whole;
    return {is_broken ? QEL_JSON_ERROR_ENCODING : QEL_JSON_ERROR_SYNTAX, fault.at};
}

template <typename T>
void store(T *out, T value)
{
    if (out != nullptr)
        *out = value;
}

void store_position(std::string_view before, std::size_t *line, std::size_t *pos)
{
    const auto line_feeds = std::count(before.begin(), before.end(), '\n');
    store(line, static_cast<std::size_t>(line_feeds) + 1);
    store(pos, before.size() - (before.rfind('\n') + 1) + 1); // npos + 1 is 0
}

} // namespace

Qel_json_node_t *Qel_json_read(const char *text, size_t len, uint32_t flags, size_t *processed,
                               Qel_json_error_t *error, size_t *error_line,
                               size_t *error_pos) noexcept
{
    const std::string_view view(text, text != nullptr ? len : 0);
    const bool repair = (flags & QEL_JSON_READER_REPLACE_BAD_CHARS) != 0;
    read_error stop{QEL_JSON_ERROR_EMPTY, 0};
    if (!view.empty()) {
        builder tree(view);
        qel::json_rules rules;
        rules.repair = repair;
        rules.check_comments = !repair;
        const json_fault fault = qel::json_reader(view, tree, rules).read();
        if (fault.problem == json_problem::none) {
            store(processed, view.size());
            store(error, QEL_JSON_ERROR_SUCCESS);
            store<std::size_t>(error_line, 0);
            store<std::size_t>(error_pos, 0);
            return tree.take_root();
        }
        stop = error_of(fault, view, repair);
    }
    store(processed, stop.offset);
    store(error, stop.error);
    store_position(view.substr(0, stop.offset), error_line, error_pos);
    return nullptr;
}
