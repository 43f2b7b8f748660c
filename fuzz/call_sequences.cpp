// The containers of the utility layer: calls in any order, beside models of them that are too
// simple to be wrong.
#include "fuzz.hpp"

#include <array>
#include <iterator>
#include <map>

#include <nlohmann/json.hpp>

namespace
{

using fuzz::input;
using fuzz::pairs;
using fuzz::require;
using fuzz::taken;

std::string folded(std::string text)
{
    for (char &chr : text)
        chr = chr >= 'A' && chr <= 'Z' ? static_cast<char>(chr + 32) : chr;
    return text;
}

// Dictionaries: a list of pairs, searched from the front

class dict_pair
{
  public:
    explicit dict_pair(std::uint32_t flags)
        : flags_(flags), dict_(Qel_hash_dict_create(0, 0, flags))
    {
    }

    void insert(const std::string &key, const std::string &val)
    {
        require(Qel_hash_dict_insert(dict_.get(), key.c_str(), val.c_str()), "a pair is stored");
        model_insert(key, val);
    }

    void remove(const std::string &key)
    {
        const auto found = find(key);
        const bool is_there = found != model_.end();
        if (is_there)
            model_.erase(found);
        require(Qel_hash_dict_remove(dict_.get(), key.c_str()) == is_there, "a pair is removed");
    }

    void look_up(const std::string &key)
    {
        const auto found = find(key);
        const char *val = "untouched";
        const bool is_there = Qel_hash_dict_get(dict_.get(), key.c_str(), &val);
        require(is_there == (found != model_.end()), "a key is found where it is");
        require(!is_there || found->second == val, "the value is the last one stored");
    }

    void merge(dict_pair &source)
    {
        for (const auto &[key, val] : source.in_order())
            model_insert(key, val);
        Qel_hash_dict_t *dest = dict_.release();
        Qel_hash_dict_merge(&dest, source.dict_.release());
        dict_.reset(dest);
        source = dict_pair(source.flags_);
    }

    void check() const
    {
        require(Qel_hash_dict_num_keys(dict_.get()) == model_.size(), "keys are counted");
        require(fuzz::pairs_of(dict_.get()) == in_order(), "pairs come in their order");
    }

  private:
    std::string rule(const std::string &key) const
    {
        return (flags_ & QEL_HASH_DICT_CASECMP) != 0 ? folded(key) : key;
    }

    pairs::iterator find(const std::string &key)
    {
        return std::ranges::find_if(
            model_, [&](const auto &pair) { return rule(pair.first) == rule(key); });
    }

    void model_insert(const std::string &key, const std::string &val)
    {
        const auto found = find(key);
        if (found == model_.end())
            model_.emplace_back(key, val);
        else
            found->second = val;
    }

    pairs in_order() const
    {
        constexpr std::uint32_t sorted = QEL_HASH_DICT_KEYS_ORDERED | QEL_HASH_DICT_KEYS_SORTASC;
        pairs all = model_;
        if ((flags_ & sorted) == sorted)
            std::ranges::sort(all, {}, [&](const auto &pair) { return rule(pair.first); });
        return all;
    }

    std::uint32_t flags_;
    qel::dict dict_;
    pairs model_;
};

class dictionaries
{
  public:
    void take_step(input &from)
    {
        dict_pair &dict = dicts_[from.byte() % dicts_.size()];
        switch (from.byte() % 8) {
        case 0:
            dict.remove(from.text());
            return;
        case 1:
            dict.look_up(from.text());
            return;
        case 2: {
            dict_pair &source = dicts_[from.byte() % dicts_.size()];
            if (&source != &dict)
                dict.merge(source);
            return;
        }
        default: {
            const std::string key = from.text();
            dict.insert(key, from.text());
        }
        }
    }

    void check() const { std::ranges::for_each(dicts_, &dict_pair::check); }

  private:
    std::array<dict_pair, 4> dicts_ = {
        dict_pair(QEL_HASH_DICT_NONE), dict_pair(QEL_HASH_DICT_KEYS_ORDERED),
        dict_pair(QEL_HASH_DICT_CASECMP),
        dict_pair(QEL_HASH_DICT_CASECMP | QEL_HASH_DICT_KEYS_ORDERED | QEL_HASH_DICT_KEYS_SORTASC)};
};

// Lists: what was borrowed stays as it is while the list grows

class list
{
  public:
    void take_step(input &from)
    {
        model_.push_back(from.text());
        Qel_list_str_insert(list_.get(), model_.back().c_str());
        borrowed_.push_back(Qel_list_str_at(list_.get(), model_.size() - 1));
    }

    void check() const
    {
        require(Qel_list_str_len(list_.get()) == model_.size(), "entries are counted");
        require(Qel_list_str_at(list_.get(), model_.size()) == nullptr, "there is an end");
        std::string joined;
        for (std::size_t i = 0; i < model_.size(); ++i) {
            require(borrowed_[i] == model_[i], "a borrowed entry stays valid");
            joined.append(i == 0 ? "" : ", ").append(model_[i]);
        }
        require(taken(Qel_list_str_join_str(list_.get(), ", ")) == joined, "entries are joined");
    }

  private:
    qel::list_str list_{Qel_list_str_create(QEL_LIST_STR_NONE)};
    std::vector<std::string> model_;
    std::vector<const char *> borrowed_;
};

// Buffers

// The first characters of the text: bytes that continue none count as part of the one before.
std::string first_columns(const std::string &text, std::size_t columns)
{
    std::size_t end = 0;
    for (std::size_t seen = 0; end < text.size(); ++end) {
        seen += fuzz::is_continuation(text[end]) ? 0 : 1;
        if (seen > columns)
            break;
    }
    return text.substr(0, end);
}

class buffer
{
  public:
    void take_step(input &from)
    {
        const unsigned step = from.byte() % 4;
        const auto byte = static_cast<std::uint8_t>(from.byte() | 1U); // no NUL
        const std::size_t count = from.byte();
        const std::string text = step % 2 == 0 ? from.text() : "";
        switch (step) {
        case 0:
            Qel_buf_add_str(buf_.get(), text.c_str());
            model_ += text;
            return;
        case 1:
            Qel_buf_add_byte(buf_.get(), byte);
            model_ += static_cast<char>(byte);
            return;
        case 2: {
            Qel_buf_add_str_just(buf_.get(), text.c_str(), QEL_STR_JUSTIFY_LEFT_TRUNC_RIGHT, byte,
                                 count);
            const std::string cell = first_columns(text, count);
            model_ += cell;
            model_.append(count - std::min(count, Qel_utf8_cnt(cell.c_str())),
                          static_cast<char>(byte));
            return;
        }
        default:
            Qel_buf_add_fill(buf_.get(), byte, count);
            model_.append(count, static_cast<char>(byte));
        }
    }

    void check()
    {
        require(Qel_buf_peek(buf_.get()) == model_, "a buffer holds what was added");
        std::size_t len = 0;
        require(taken(Qel_buf_finish_str(buf_.release(), &len)) == model_ && len == model_.size(),
                "a buffer becomes its text");
        buf_.reset(Qel_buf_create());
        model_.clear();
    }

  private:
    qel::buf buf_{Qel_buf_create()};
    std::string model_;
};

// Tables of numbers

class table
{
  public:
    void take_step(input &from)
    {
        const std::uint64_t key = std::uint64_t{from.byte()} << (from.byte() % 64);
        model_[key] = from.text();
        Qel_hash_u64str_insert(table_.get(), key, model_[key].c_str());
    }

    void check() const
    {
        for (const auto &[key, text] : model_)
            require(Qel_hash_u64str_get_direct(table_.get(), key) == text, "a number is found");
        for (std::uint64_t key = 0; key < 300; key += 7)
            require(model_.contains(key) ==
                        (Qel_hash_u64str_get_direct(table_.get(), key) != nullptr),
                    "only what was stored is found");
    }

  private:
    qel::u64str table_{Qel_hash_u64str_create(0, 0, 0)};
    std::map<std::uint64_t, std::string> model_;
};

// JSON trees

std::string ascii(std::string text)
{
    for (char &chr : text)
        chr = static_cast<char>(chr & 0x7F) == '\0' ? '?' : static_cast<char>(chr & 0x7F);
    return text;
}

class tree
{
    using json = nlohmann::ordered_json;

  public:
    void take_step(input &from)
    {
        const auto [node, model] = walk(from);
        switch (from.byte() % 8) {
        case 0:
            remove_child(node, *model, from, false);
            return;
        case 1:
            remove_child(node, *model, from, true);
            return;
        case 2:
            insert_text(node, *model, from);
            return;
        default:
            insert_node(node, *model, from);
        }
    }

    void check() const { check(root_.get(), model_); }

  private:
    struct place {
        Qel_json_node_t *node;
        json *model;
    };

    static void check(const Qel_json_node_t *node, const json &model)
    {
        const std::string text = taken(Qel_json_write(node, QEL_JSON_WRITER_NONE, nullptr));
        require(json::parse(text, nullptr, false) == model, "a tree is written as it was built");
    }

    static place child_of(const place &at, std::size_t idx)
    {
        if (at.model->is_array())
            return {Qel_json_array_at(at.node, idx), &(*at.model)[idx]};
        const auto member = std::next(at.model->begin(), static_cast<std::ptrdiff_t>(idx));
        return {Qel_json_object_value(at.node, member.key().c_str()), &member.value()};
    }

    place walk(input &from)
    {
        place at{root_.get(), &model_};
        for (unsigned steps = from.byte() % 4; steps > 0 && at.model->is_structured(); --steps) {
            require(Qel_json_object_num_children(at.node) == at.model->size(),
                    "children are counted");
            if (at.model->empty())
                break;
            at = child_of(at, from.byte() % at.model->size());
        }
        return at;
    }

    static void insert_text(Qel_json_node_t *node, json &model, input &from)
    {
        const std::string name = ascii(from.text());
        const std::string text = ascii(from.text());
        require(Qel_json_object_insert_string(node, name.c_str(), text.c_str()) ==
                    model.is_object(),
                "only objects take members");
        if (model.is_object())
            model[name] = text;
    }

    static void insert_node(Qel_json_node_t *node, json &model, input &from)
    {
        const bool is_array = from.byte() % 2 == 0;
        const std::string name = ascii(from.text());
        qel::json added(
            Qel_json_node_create(is_array ? QEL_JSON_TYPE_ARRAY : QEL_JSON_TYPE_OBJECT));
        const bool is_taken = model.is_array()
                                  ? Qel_json_array_insert(node, added.get())
                                  : Qel_json_object_insert(node, name.c_str(), added.get());
        require(is_taken == model.is_structured(), "only objects and arrays take nodes");
        if (!is_taken)
            return;
        static_cast<void>(added.release());
        json &place = model.is_array() ? model.emplace_back() : model[name];
        place = is_array ? json::array() : json::object();
    }

    // Takes the child out, which outlives its parent, or destroys it where it is.
    static void remove_child(Qel_json_node_t *node, json &model, input &from, bool is_taken)
    {
        if (!model.is_structured() || model.empty())
            return;
        const std::size_t idx = from.byte() % model.size();
        const place child = child_of({node, &model}, idx);
        if (is_taken)
            Qel_json_take_from_parent(child.node);
        check(child.node, *child.model);
        const qel::json owned(child.node);
        model.erase(std::next(model.begin(), static_cast<std::ptrdiff_t>(idx)));
    }

    qel::json root_{Qel_json_node_create(QEL_JSON_TYPE_OBJECT)};
    json model_ = json::object();
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    input from(data, size);
    dictionaries dicts;
    list texts;
    buffer buf;
    table numbers;
    tree json;
    const auto check = [&] {
        dicts.check();
        texts.check();
        buf.check();
        numbers.check();
        json.check();
    };
    for (unsigned steps = 1; !from.empty(); ++steps) {
        switch (from.byte() % 8) {
        case 0:
            texts.take_step(from);
            break;
        case 1:
            buf.take_step(from);
            break;
        case 2:
            numbers.take_step(from);
            break;
        case 3:
        case 4:
        case 5:
            json.take_step(from);
            break;
        default:
            dicts.take_step(from);
        }
        if (steps % 64 == 0)
            check();
    }
    check();
    return 0;
}
