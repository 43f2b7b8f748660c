// The line items of an order: what of them would not be shown, and whether they add up.
#include "qel_rcpt_check.hpp"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace qel_rcpt::check
{

namespace
{

enum class item_member { none, name, qty, price, type, notes, modifiers };

struct item_member_name {
    std::string_view name;
    item_member member;
};

constexpr item_member_name item_members[] = {
    {"name", item_member::name},   {"qty", item_member::qty},
    {"price", item_member::price}, {"type", item_member::type},
    {"notes", item_member::notes}, {"modifiers", item_member::modifiers},
};

enum class item_type { none, item, addon, discount, percentage, cash_percentage, unknown };

struct item_type_name {
    std::string_view name;
    item_type type;
};

constexpr item_type_name item_types[] = {
    {"item", item_type::item},
    {"addon", item_type::addon},
    {"discount_fixed", item_type::discount},
    {"discount_percent", item_type::percentage},
    {"cashdiscount", item_type::cash_percentage},
};

struct item {
    std::size_t begin = 0;
    item_type type = item_type::none;
    item_member member = item_member::none; // whose value is next
    std::size_t name_at = no_offset;
    std::size_t price_at = no_offset;
    std::string name;
    std::string price;
    std::string qty;
};

// What the items come to, in hundredths; of no use when something about them is unclear.
struct items_sum {
    bool is_known = true;
    bool is_empty = true;
    std::int64_t total = 0;
    std::int64_t discounts = 0; // taken off in total
    std::int64_t by_piece = 0;  // as if prices were those of a piece
};

class items_handler
{
  public:
    items_handler(const subject &record, report &findings) : record_(record), findings_(findings) {}

    [[nodiscard]] const items_sum &sum() const { return sum_; }

    void begin(qel::json_kind kind, std::size_t at)
    {
        const bool is_array = kind == qel::json_kind::array;
        const bool is_list =
            is_array && (depth_ == 0 || (!in_list_ && member() == item_member::modifiers));
        const bool is_item = !is_array && in_list_ && items_.size() < most_levels;
        if (ignored_ > 0 || !(is_list || is_item)) {
            begin_ignored(at);
        } else if (is_list) {
            in_list_ = true;
        } else {
            items_.emplace_back().begin = at;
            in_list_ = false;
        }
        ++depth_;
    }

    void end(qel::json_kind kind, std::size_t /*at*/)
    {
        --depth_;
        if (end_ignored())
            return;
        in_list_ = kind == qel::json_kind::object;
        if (!in_list_)
            return;
        const item done = std::move(items_.back());
        items_.pop_back();
        finish(done);
    }

    void name(std::string_view name, std::size_t at)
    {
        if (ignored_ > 0)
            return;
        const auto *found = std::ranges::find(item_members, name, &item_member_name::name);
        const bool is_known = found != std::end(item_members);
        items_.back().member = is_known ? found->member : item_member::none;
        if (!is_known)
            add_unknown_member(key, name, at, item_members, findings_);
    }

    // null counts as absent.
    void value(qel::json_kind kind, std::string_view text, std::size_t at)
    {
        if (ignored_ > 0 || (kind == qel::json_kind::null && !in_list_))
            return;
        const bool is_text = kind == qel::json_kind::string;
        if (!is_text || in_list_ || items_.empty() || member() == item_member::modifiers)
            return add_wrong_kind(at);
        item &current = items_.back();
        switch (member()) {
        case item_member::name:
            current.name = text;
            current.name_at = at;
            break;
        case item_member::qty:
            current.qty = text;
            break;
        case item_member::price:
            current.price = text;
            current.price_at = at;
            break;
        case item_member::type:
            take_type(text, at);
            break;
        default:
            break;
        }
    }

  private:
    static constexpr const char *key = "line_items";
    static constexpr std::size_t most_levels = 32; // what is nested deeper is not looked at

    [[nodiscard]] item_member member() const
    {
        return items_.empty() ? item_member::none : items_.back().member;
    }

    void begin_ignored(std::size_t at)
    {
        if (ignored_++ == 0 && items_.size() < most_levels)
            add_wrong_kind(at);
    }

    bool end_ignored()
    {
        if (ignored_ == 0)
            return false;
        --ignored_;
        return true;
    }

    void add_wrong_kind(std::size_t at)
    {
        sum_.is_known = false;
        if (in_list_)
            findings_.add(rule_named("entry-not-object"), key, at,
                          "this entry is no JSON object and would not be shown");
        else if (member() == item_member::modifiers)
            findings_.add(rule_named("member-not-text"), key, at,
                          "modifiers is no JSON array, so none would be shown");
        else if (member() != item_member::none)
            findings_.add(rule_named("member-not-text"), key, at,
                          "the value is no JSON string, so it would not be shown; write it in "
                          "double quotes");
    }

    void take_type(std::string_view text, std::size_t at)
    {
        const auto *found = std::ranges::find_if(item_types, [&](const item_type_name &known) {
            return is_word(text, {&known.name, 1});
        });
        const bool is_cash =
            found != std::end(item_types) && found->type == item_type::cash_percentage;
        if (found != std::end(item_types) && !(is_cash && items_.size() > 1)) {
            items_.back().type = found->type;
            return;
        }
        items_.back().type = item_type::unknown;
        nearest_word nearest(text);
        for (const item_type_name &known : item_types) {
            if (!is_cash)
                nearest.offer(known.name);
        }
        findings_.add(rule_named("item-type-unknown"), key, at,
                      {quoted(text),
                       " is no type of an entry here, so it would be shown as an item",
                       nearest.found().empty() ? "" : "; did you mean ",
                       nearest.found().empty() ? piece("") : quoted(nearest.found()),
                       nearest.found().empty() ? "" : "?"});
    }

    // The item has been taken from the open ones.
    void finish(const item &done)
    {
        look_at_name(done);
        if (done.qty.empty())
            findings_.add(rule_named("item-quantity-missing"), key, done.begin,
                          "this entry has no quantity, which plain text shows as empty brackets; "
                          "give qty");
        if (done.price_at == no_offset)
            return;
        const bool is_percentage =
            done.type == item_type::percentage || done.type == item_type::cash_percentage;
        if (is_percentage)
            look_at_percentage(done);
        else if (look_at_amount(record_, key, done.price, done.price_at, findings_))
            add_up(done);
        else
            sum_.is_known = false;
    }

    // Plain text has room for so much behind the "+ " of an add-on, as a modifier of any known type
    // is; other names stand alone and wrap.
    void look_at_name(const item &done)
    {
        constexpr std::size_t most = 253;
        const bool is_modifier = !items_.empty();
        const bool has_known_type = done.type != item_type::none && done.type != item_type::unknown;
        if (done.name.empty()) {
            sum_.is_known = false;
            findings_.add(rule_named("entry-without-name"), key, done.begin,
                          "this entry has no name and would not be shown, nor anything in it");
        } else if (done.type == item_type::addon || (is_modifier && has_known_type)) {
            look_at_cut(key, done.name_at, done.name, most, findings_);
        }
    }

    void look_at_percentage(const item &done)
    {
        if (done.type == item_type::percentage)
            sum_.is_known = false;
        if (!is_amount(done.price))
            findings_.add(rule_named("item-percentage-unreadable"), key, done.price_at,
                          {quoted(done.price),
                           " is shown as it stands with a % behind it; write the number alone"});
    }

    void add_up(const item &done)
    {
        constexpr std::int64_t most = std::int64_t{1} << 40U; // hundredths; sums of it are exact
        const std::int64_t price = Qel_atofi100(done.price.c_str());
        const std::int64_t count = Qel_atofi100(done.qty.c_str());
        sum_.is_empty = false;
        if (price > most || price < -most || count < 0 || count > 1'000'000 ||
            sum_.total > most * 1000 || done.type == item_type::unknown) {
            sum_.is_known = false;
            return;
        }
        const bool is_discount = done.type == item_type::discount;
        sum_.total += is_discount ? -price : price;
        sum_.discounts += is_discount ? price : 0;
        sum_.by_piece += is_discount ? -price : price * count / 100;
    }

    const subject &record_;
    report &findings_;
    items_sum sum_;
    std::vector<item> items_; // the open ones
    std::size_t depth_ = 0;   // of open brackets
    std::size_t ignored_ = 0; // of these, the ones inside of what is not looked at
    bool in_list_ = false;    // an entry is next, or the end of the array
};

// The items should come to what the receipt shows beside them: the subtotal of the order or else of
// the payment, with or without tax, and with or without the discounts.
void look_at_items_sum(const subject &record, const items_sum &sum, report &findings)
{
    const bool has_order = record.has_order();
    if (!sum.is_known || sum.is_empty ||
        !record.has(has_order ? known_key("order_total") : known_key("amount")))
        return;
    const std::int64_t order_discount = record.amount("order_discount");
    const std::int64_t targets[] = {
        has_order ? record.order_subtotal() : record.subtotal(),
        has_order ? saturating_add(record.order_subtotal(), order_discount)
                  : saturating_subtract(record.subtotal(), record.amount("discountamount")),
        has_order ? saturating_subtract(record.amount("order_total"), record.amount("order_tip"))
                  : saturating_add(record.subtotal(), record.amount("tax")),
        record.amount(has_order ? known_key("order_total") : known_key("amount")),
    };
    const auto fits = [&](std::int64_t total) {
        return std::ranges::find(targets, total) != std::end(targets);
    };
    if (fits(sum.total) || fits(sum.total + sum.discounts))
        return;
    findings.add(rule_named("items-total"), "line_items", no_offset,
                 fits(sum.by_piece)
                     ? "the items add up only if each price is multiplied by its quantity; give "
                       "the price of the line"
                     : "the items do not add up to the subtotal beside them; check the prices and "
                       "what belongs to the amount");
}

} // namespace

void look_at_line_items(const subject &record, report &findings)
{
    if (!record.is_general() || !record.has("line_items") ||
        !is_document(record, "line_items", qel::json_kind::array,
                     rule_named("line-items-unreadable"), "no items", findings))
        return;
    items_handler handler(record, findings);
    qel::json_reader(record.text("line_items"), handler, reading_rules).read();
    look_at_items_sum(record, handler.sum(), findings);
}

} // namespace qel_rcpt::check
