#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace veltrin {

/// Keeps one observation alive; ends it when destroyed. May outlive what it observes.
class [[nodiscard]] Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::function<void()> end) : end_(std::move(end)) {}
    Subscription(Subscription&& other) noexcept : end_(std::exchange(other.end_, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            cancel();
            end_ = std::exchange(other.end_, nullptr);
        }
        return *this;
    }
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;
    ~Subscription() { cancel(); }

    void cancel() {
        if (auto end = std::exchange(end_, nullptr)) end();
    }

private:
    std::function<void()> end_;
};

/// A list of observers of one happening. An observer may subscribe or cancel, itself included, while it is
/// told. Main thread only.
template <typename... Arguments>
class Observers {
public:
    using Function = std::function<void(const Arguments&...)>;

    Subscription subscribe(Function observer) {
        const auto id = ++list_->last;
        list_->functions.emplace(id, std::move(observer));
        return Subscription([weak = std::weak_ptr<List>(list_), id] {
            if (const auto list = weak.lock()) list->functions.erase(id);
        });
    }

    void notify(const Arguments&... arguments) const {
        const auto list = list_;  // an observer may destroy the owner of this object
        std::vector<std::uint64_t> ids;
        ids.reserve(list->functions.size());
        for (const auto& entry : list->functions)
            ids.push_back(entry.first);
        for (const auto id : ids) {
            const auto found = list->functions.find(id);
            if (found == list->functions.end()) continue;
            const Function function = found->second;
            function(arguments...);
        }
    }

private:
    struct List {
        std::uint64_t last = 0;
        std::map<std::uint64_t, Function> functions;
    };
    std::shared_ptr<List> list_ = std::make_shared<List>();
};

}  // namespace veltrin
