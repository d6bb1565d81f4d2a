// bounded_cache.h - values that took time to make. Those that were used last are kept.
#pragma once

#include "kernel/mutex.h"

#include <algorithm>
#include <cstdint>
#include <list>
#include <memory>
#include <unordered_map>
#include <utility>

namespace quillbox_mount {

// Any thread. A value that is dropped lives on as long as somebody uses it.
template <class Value>
class BoundedCache {
public:
    using Shared = std::shared_ptr<Value>;

    // The costs of all kept values together are at most `limit`.
    explicit BoundedCache(std::uint64_t limit) : limit_(limit) {}

    // Null if there is no such value.
    Shared find(std::uint64_t key) EXCLUDES(mutex_)
    {
        const platform::kernel::MutexLock lock(mutex_);
        const auto place = places_.find(key);
        if (place == places_.end())
            return nullptr;
        entries_.splice(entries_.begin(), entries_, place->second);
        return place->second->value;
    }

    // Returns the value that is kept, which is another one if a second thread made it at the same time. A value that
    // costs more than the limit is kept alone.
    Shared add(std::uint64_t key, Shared value, std::uint64_t cost) EXCLUDES(mutex_)
    {
        const platform::kernel::MutexLock lock(mutex_);
        if (const auto place = places_.find(key); place != places_.end())
            return place->second->value;
        cost = std::min(cost, limit_);
        entries_.push_front({key, value, cost});
        places_.emplace(key, entries_.begin());
        for (used_ += cost; used_ > limit_; entries_.pop_back()) {
            used_ -= entries_.back().cost;
            places_.erase(entries_.back().key);
        }
        return value;
    }

private:
    struct Entry {
        std::uint64_t key;
        Shared value;
        std::uint64_t cost;
    };

    const std::uint64_t limit_;
    platform::kernel::Mutex mutex_;
    std::list<Entry> entries_ GUARDED_BY(mutex_);  // the one that was used last comes first
    std::unordered_map<std::uint64_t, typename std::list<Entry>::iterator> places_ GUARDED_BY(mutex_);
    std::uint64_t used_ GUARDED_BY(mutex_) = 0;
};

}  // namespace quillbox_mount
