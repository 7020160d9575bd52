// An observable value, as view models hold them.
//
// Provides: Published<T>.
// Written on the main queue; every write notifies the observers, in the
// order they subscribed, on the writing thread, after the value is stored.
// Reads are safe from any thread: a short lock guards a copy, so a reader
// elsewhere sees the old value or the new one, never a torn one.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace velmora::support {

template <typename T>
class Published {
public:
    using Observer = std::function<void(const T&)>;
    using Token = std::uint64_t;

    Published() = default;
    explicit Published(T initial) : value_(std::move(initial)) {}

    T get() const {
        std::lock_guard lock(mutex_);
        return value_;
    }

    void set(T value) {
        {
            std::lock_guard lock(mutex_);
            value_ = std::move(value);
        }
        notify();
    }

    // Changes the value in place and notifies once.
    template <typename Change>
    void modify(Change&& change) {
        {
            std::lock_guard lock(mutex_);
            change(value_);
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
        T value;
        {
            std::lock_guard lock(mutex_);
            observers = observers_;
            value = value_;
        }
        for (const auto& [token, observer] : observers) observer(value);
    }

    mutable std::mutex mutex_;
    T value_{};
    std::vector<std::pair<Token, Observer>> observers_;
    Token lastToken_ = 0;
};

}  // namespace velmora::support
