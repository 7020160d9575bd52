// An observable value, as view models hold them.
//
// Provides: Published<T>.
// Written on the main queue; every write notifies the observers, in the
// order they subscribed, on the writing thread, after the value is stored.
// Reads are safe from any thread: a short lock guards a copy, so a reader
// elsewhere sees the old value or the new one, never a torn one. Observers
// see a shared snapshot rather than a copy, and a change made while no
// snapshot is out happens in place, so growing a long list one element at a
// time costs no copy of it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace velmora::support {

template <typename T>
class Published {
public:
    using Observer = std::function<void(const T&)>;
    using Token = std::uint64_t;

    Published() : value_(std::make_shared<T>()) {}
    explicit Published(T initial) : value_(std::make_shared<T>(std::move(initial))) {}

    T get() const {
        std::lock_guard lock(mutex_);
        return *value_;
    }

    // The current value without a copy; it stays as it is while held.
    std::shared_ptr<const T> snapshot() const {
        std::lock_guard lock(mutex_);
        return value_;
    }

    void set(T value) {
        {
            std::lock_guard lock(mutex_);
            value_ = std::make_shared<T>(std::move(value));
        }
        notify();
    }

    // Changes the value and notifies once. The change goes to a copy only
    // when an observer still holds the current snapshot.
    template <typename Change>
    void modify(Change&& change) {
        {
            std::lock_guard lock(mutex_);
            if (value_.use_count() != 1) value_ = std::make_shared<T>(*value_);
            change(*value_);
        }
        notify();
    }

    Token observe(Observer observer) {
        std::lock_guard lock(mutex_);
        observers_.emplace_back(++lastToken_, std::move(observer));
        return lastToken_;
    }

    void removeObserver(Token token) {
        std::lock_guard lock(mutex_);
        std::erase_if(observers_, [token](const auto& entry) { return entry.first == token; });
    }

private:
    void notify() {
        std::vector<std::pair<Token, Observer>> observers;
        std::shared_ptr<const T> snapshot;
        {
            std::lock_guard lock(mutex_);
            if (observers_.empty()) return;
            observers = observers_;
            snapshot = value_;
        }
        for (const auto& [token, observer] : observers) observer(*snapshot);
    }

    mutable std::mutex mutex_;
    std::shared_ptr<T> value_;
    std::vector<std::pair<Token, Observer>> observers_;
    Token lastToken_ = 0;
};

}  // namespace velmora::support
