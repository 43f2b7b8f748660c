// The memory of JSON trees.
#ifndef QELSTDLIB_TREE_MEMORY_H
#define QELSTDLIB_TREE_MEMORY_H

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace formats
{

// Where a program has no threads, the C++ library has no locks.
#if defined(_LIBCPP_HAS_NO_THREADS) || (defined(_LIBCPP_HAS_THREADS) && !_LIBCPP_HAS_THREADS)
struct memory_lock {
    void lock() {}
    void unlock() {}
};
#else
using memory_lock = std::mutex;
#endif

// Holds the nodes of a tree with their texts, one behind the other. They go all at once, when the
// last of those that have a share has given it up: the tree's root, and each node that was taken
// out of it since. Several threads may hold one each.
class alignas(std::max_align_t) tree_memory
{
  public:
    // With room for so many bytes in one piece with itself, and one share.
    static tree_memory *create(std::size_t room)
    {
        room = rounded(room);
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): who has the last share releases it
        return new (room) tree_memory(room);
    }

    void add_share() { ++shares_; }

    void drop_share()
    {
        if (--shares_ == 0)
            delete this; // NOLINT(cppcoreguidelines-owning-memory)
    }

    template <typename T, typename... Fields>
    T *make(Fields... fields)
    {
        static_assert(std::is_trivially_destructible_v<T>);
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): it is this memory's
        return new (allocate(sizeof(T))) T{fields...};
    }

    template <typename T>
    T *make_array(std::size_t count)
    {
        const std::size_t size =
            count * sizeof(T); // NOLINT(bugprone-sizeof-expression): of pointers
        return static_cast<T *>(std::memset(allocate(size), 0, size));
    }

    // A copy of the text with a NUL after it.
    char *copy(std::string_view text)
    {
        return put(static_cast<char *>(allocate(text.size() + 1)), text);
    }
    std::string_view keep(std::string_view text) { return {copy(text), text.size()}; }

    // Two texts in one piece.
    std::pair<std::string_view, std::string_view> keep(std::string_view one, std::string_view other)
    {
        char *const kept = static_cast<char *>(allocate(one.size() + other.size() + 2));
        char *const behind = put(kept, one) + one.size() + 1;
        return {{kept, one.size()}, {put(behind, other), other.size()}};
    }

    // Whether something in it may have a share of another memory below it.
    [[nodiscard]] bool has_guests() const { return has_guests_; }
    void expect_guests() { has_guests_ = true; }

    // Whether something in it is of no use any more. What is added to a tree from then on gets a
    // memory of its own, so that changing a tree over and over does not make it larger.
    [[nodiscard]] bool has_waste() const { return has_waste_; }
    void expect_waste() { has_waste_ = true; }

    static void *operator new(std::size_t size, std::size_t room)
    {
        return ::operator new(size + room);
    }
    // NOLINTNEXTLINE(misc-new-delete-overloads): none is made without room
    static void operator delete(void *memory) { ::operator delete(memory); }

  private:
    static constexpr std::size_t unit = alignof(std::max_align_t);

    explicit tree_memory(std::size_t room)
        : free_(reinterpret_cast<std::byte *>(this + 1)), left_(room)
    {
    }

    // Gives the place of the copy.
    static char *put(char *place, std::string_view text)
    {
        text.copy(place, text.size());
        place[text.size()] = '\0';
        return place;
    }

    static std::size_t rounded(std::size_t size) { return (size + unit - 1) / unit * unit; }

    void *allocate(std::size_t size)
    {
        return shares_ == 1 ? taken(rounded(size)) : allocate_locked(rounded(size));
    }

    [[gnu::noinline]] void *allocate_locked(std::size_t size)
    {
        const std::lock_guard held(lock_);
        return taken(size);
    }

    void *taken(std::size_t size)
    {
        if (size > left_)
            add_chunk(size);
        left_ -= size;
        free_ += size;
        return free_ - size;
    }

    // Each is twice as large as the one before, so that many nodes take few of them.
    [[gnu::noinline]] void add_chunk(std::size_t size)
    {
        next_chunk_ *= 2;
        left_ = std::max(size, next_chunk_);
        free_ = chunks_.emplace_back(std::make_unique_for_overwrite<std::byte[]>(left_)).get();
    }

    std::byte *free_;
    std::size_t left_;
    std::size_t next_chunk_ = 512;
    std::vector<std::unique_ptr<std::byte[]>> chunks_; // beside what came with itself
    std::atomic<std::size_t> shares_ = 1;
    std::atomic<bool> has_guests_ = false;
    std::atomic<bool> has_waste_ = false;
    memory_lock lock_; // while there are several shares
};

} // namespace formats

#endif
