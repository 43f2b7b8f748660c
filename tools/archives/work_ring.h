// Work that several threads do at once and whose results come in the order of the work.
#ifndef QELRCPT_TOOLS_WORK_RING_H
#define QELRCPT_TOOLS_WORK_RING_H

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <utility>

namespace tool
{

// One thread puts tasks in, any number take and finish them, one collects the results. At most so
// many tasks, weighing so much together, are in it; a heavier one goes in alone.
template <typename Task, typename Result>
class work_ring
{
  public:
    struct item {
        Task task;
        Result result{};
        size_t weight = 0;
        bool is_finished = false;
    };

    work_ring(size_t most_items, size_t most_weight)
        : most_items_(most_items), most_weight_(most_weight)
    {
    }

    // Waits for room; false when the ring is stopped.
    bool put(Task task, size_t weight)
    {
        std::unique_lock lock(mutex_);
        room_.wait(lock, [&] { return is_stopped_ || has_room(weight); });
        if (is_stopped_)
            return false;
        items_.push_back({std::move(task), {}, weight, false});
        weight_ += weight;
        work_.notify_one();
        return true;
    }

    // No more tasks come.
    void close()
    {
        const std::lock_guard lock(mutex_);
        is_closed_ = true;
        work_.notify_all();
        results_.notify_all();
    }

    // The thread that collects the results wants no more.
    void stop()
    {
        const std::lock_guard lock(mutex_);
        is_stopped_ = true;
        room_.notify_all();
        work_.notify_all();
    }

    // The next task; absent when there are no more.
    item *take()
    {
        std::unique_lock lock(mutex_);
        work_.wait(lock, [&] { return is_stopped_ || is_closed_ || taken_ < items_.size(); });
        return is_stopped_ || taken_ == items_.size() ? nullptr : &items_[taken_++];
    }

    void finish(item &done)
    {
        const std::lock_guard lock(mutex_);
        done.is_finished = true;
        results_.notify_one();
    }

    // Waits for the result of the oldest task; absent when there are no more.
    item *oldest()
    {
        std::unique_lock lock(mutex_);
        results_.wait(lock,
                      [&] { return items_.empty() ? is_closed_ : items_.front().is_finished; });
        return items_.empty() ? nullptr : &items_.front();
    }

    void drop_oldest()
    {
        const std::lock_guard lock(mutex_);
        weight_ -= items_.front().weight;
        items_.pop_front();
        --taken_;
        room_.notify_one();
    }

  private:
    bool has_room(size_t weight) const
    {
        return items_.empty() || (items_.size() < most_items_ && weight_ + weight <= most_weight_);
    }

    const size_t most_items_;
    const size_t most_weight_;
    std::mutex mutex_;
    std::condition_variable room_;
    std::condition_variable work_;
    std::condition_variable results_;
    std::deque<item> items_; // its ends move, its items stay where they are
    size_t taken_ = 0;       // the items from the front that were taken
    size_t weight_ = 0;
    bool is_closed_ = false;
    bool is_stopped_ = false;
};

} // namespace tool

#endif
