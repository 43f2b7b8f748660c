// Reading JSON trees.
#include "formats_int.h"
#include "json_node.h"
#include "qelstdlib_json.hpp"

#include <functional>

namespace
{

using qel::json_fault;
using qel::json_kind;
using qel::json_problem;

static_assert(int{QEL_JSON_TYPE_OBJECT} == static_cast<int>(json_kind::object) &&
              int{QEL_JSON_TYPE_NULL} == static_cast<int>(json_kind::null));

struct drop_share {
    void operator()(formats::tree_memory *memory) const { memory->drop_share(); }
};

// Builds the tree from what is read, a copy of the source. The texts that stand for themselves are
// views of it, in which a NUL takes the place of the quote that ends each.
class builder
{
  public:
    explicit builder(std::string_view source)
        : memory_(formats::tree_memory::create(source.size() + room_for_nodes(source))),
          text_(memory_->copy(source)), size_(source.size())
    {
    }

    [[nodiscard]] std::string_view text() const { return {text_, size_}; }

    // The caller's from here on.
    Qel_json_node *take_root()
    {
        root_->has_share = true;
        (void)memory_.release();
        return root_;
    }

    void begin(json_kind kind, std::size_t)
    {
        const auto type = static_cast<Qel_json_type_t>(kind);
        Qel_json_node *const node = Qel_json_node::create_container(*memory_, type);
        add(*node);
        open_ = node;
    }
    void end(json_kind kind, std::size_t)
    {
        if (kind == json_kind::array)
            open_->index_elements();
        open_ = open_->parent;
    }
    void name(std::string_view text, std::size_t) { name_ = kept(text); }
    void value(json_kind kind, std::string_view text, std::size_t)
    {
        add(*memory_->make<Qel_json_node>(static_cast<Qel_json_type_t>(kind), false, memory_.get(),
                                          kind == json_kind::string ? kept(text) : text, nullptr));
    }

  private:
    // About as much as the nodes of a list of line items take.
    static std::size_t room_for_nodes(std::string_view source)
    {
        constexpr std::size_t most = 16384;
        return std::min(8 * source.size() + 256, most);
    }

    std::string_view kept(std::string_view text)
    {
        const std::less<> is_before;
        if (is_before(text.data(), text_) || !is_before(text.data(), text_ + size_))
            return kept_other(text);
        text_[text.data() + text.size() - text_] = '\0';
        return text;
    }

    // As C sees it: up to its first NUL.
    [[gnu::noinline]] std::string_view kept_other(std::string_view text)
    {
        return memory_->keep(text.substr(0, text.find('\0')));
    }

    void add(Qel_json_node &node)
    {
        if (open_ == nullptr) {
            root_ = &node;
        } else if (open_->type == QEL_JSON_TYPE_ARRAY) {
            open_->link(node);
        } else {
            node.name = name_;
            open_->set_member(node);
        }
    }

    std::unique_ptr<formats::tree_memory, drop_share> memory_;
    char *text_;
    std::size_t size_;
    Qel_json_node *root_ = nullptr;
    Qel_json_node *open_ = nullptr;
    std::string_view name_;
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
        const json_fault fault = qel::json_reader(tree.text(), tree, rules).read();
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
