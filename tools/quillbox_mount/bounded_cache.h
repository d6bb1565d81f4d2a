// bounded_cache.h - a cache for values that take time to make. It keeps the most recently used ones.
#pragma once

#include "kernel/mutex.h"

#include <algorithm>
#include <cstdint>
#include <list>
#include <memory>
#include <unordered_map>
#include <utility>

namespace quillbox_mount {

// Can be used on any thread. A value that the cache drops stays alive as long as a caller has a pointer to it.
template <class Value>
class BoundedCache {
public:
    using Shared = std::shared_ptr<Value>;

    // The sum of the costs of all cached values is at most `limit`.
    explicit BoundedCache(std::uint64_t limit) : limit_(limit) {}

    // Returns null if the cache has no value for the key.
    Shared find(std::uint64_t key) EXCLUDES(mutex_)
    {
        const platform::kernel::MutexLock lock(mutex_);
        const auto place = places_.find(key);
        if (place == places_.end())
            return nullptr;
        entries_.splice(entries_.begin(), entries_, place->second);
        return place->second->value;
    }

    // Adds the value and returns it. If the cache already has a value for the key, for example from another thread,
    // returns that value. If `cost` is larger than the limit, the cache uses the limit as the cost, and drops all other
    // values.
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
    std::list<Entry> entries_ GUARDED_BY(mutex_);  // the most recently used one comes first
    std::unordered_map<std::uint64_t, typename std::list<Entry>::iterator> places_ GUARDED_BY(mutex_);
    std::uint64_t used_ GUARDED_BY(mutex_) = 0;
};

}  // namespace quillbox_mount
