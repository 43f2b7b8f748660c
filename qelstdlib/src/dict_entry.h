// The entries of a dictionary, in the order in which they came.
#ifndef QELSTDLIB_DICT_ENTRY_H
#define QELSTDLIB_DICT_ENTRY_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace qel
{

// A key with its value, in one piece of memory with both texts, but for a later value that is
// longer than the first.
class dict_entry
{
  public:
    static std::unique_ptr<dict_entry> create(std::string_view key, std::string_view val)
    {
        const std::size_t room = key.size() + val.size() + 2;
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): the owner takes it at once
        return std::unique_ptr<dict_entry>(new (room) dict_entry(key, val));
    }

    [[nodiscard]] std::string_view key() const { return {texts(), key_len_}; }
    [[nodiscard]] const char *val() const { return val_; }

    // The value may be a part of the one before.
    void set_val(std::string_view val)
    {
        if (val.size() <= val_room_) {
            std::char_traits<char>::move(val_, val.data(), val.size());
            val_[val.size()] = '\0';
            return;
        }
        longer_val_ = std::make_unique_for_overwrite<char[]>(val.size() + 1);
        val_ = put(longer_val_.get(), val);
        val_room_ = val.size();
    }

    static void *operator new(std::size_t size, std::size_t room)
    {
        return ::operator new(size + room);
    }
    // NOLINTNEXTLINE(misc-new-delete-overloads): none is made without room
    static void operator delete(void *memory) { ::operator delete(memory); }

    std::size_t hash = 0;
    dict_entry *previous = nullptr;
    dict_entry *next = nullptr;

  private:
    dict_entry(std::string_view key, std::string_view val)
        : key_len_(key.size()), val_(put(put(texts(), key) + key.size() + 1, val)),
          val_room_(val.size())
    {
    }

    [[nodiscard]] const char *texts() const { return reinterpret_cast<const char *>(this + 1); }
    [[nodiscard]] char *texts() { return reinterpret_cast<char *>(this + 1); }

    // Gives the place of the copy.
    static char *put(char *place, std::string_view str)
    {
        str.copy(place, str.size());
        place[str.size()] = '\0';
        return place;
    }

    std::size_t key_len_;
    char *val_;
    std::size_t val_room_;
    std::unique_ptr<char[]> longer_val_;
};

// Owns entries, which stay where they are while others come and go.
class dict_entries
{
  public:
    dict_entries() = default;
    ~dict_entries()
    {
        while (first_ != nullptr)
            take(*first_);
    }
    dict_entries(const dict_entries &) = delete;
    dict_entries &operator=(const dict_entries &) = delete;

    [[nodiscard]] dict_entry *first() const { return first_; }
    [[nodiscard]] std::size_t size() const { return size_; }

    dict_entry &append(std::unique_ptr<dict_entry> entry)
    {
        entry->previous = last_;
        entry->next = nullptr;
        (last_ == nullptr ? first_ : last_->next) = entry.get();
        last_ = entry.release();
        ++size_;
        return *last_;
    }

    std::unique_ptr<dict_entry> take(dict_entry &entry)
    {
        (entry.previous == nullptr ? first_ : entry.previous->next) = entry.next;
        (entry.next == nullptr ? last_ : entry.next->previous) = entry.previous;
        --size_;
        return std::unique_ptr<dict_entry>(&entry);
    }

  private:
    dict_entry *first_ = nullptr;
    dict_entry *last_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace qel

#endif
