#pragma once

#include "Foundation/Error.h"

#include <QCoro/QCoroTask>

#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <variant>

namespace veltrin {

/// What became of a task. Filled when the task ends, which may be at once.
template <typename T>
struct Outcome {
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

    std::optional<Value> value;
    std::exception_ptr failure;

    bool finished() const { return value.has_value() || failure != nullptr; }
    bool failed() const { return failure != nullptr; }
    /// The words of the failure; empty when there is none.
    QString errorDescription() const {
        if (!failure) return {};
        try {
            std::rethrow_exception(failure);
        } catch (const std::exception& error) {
            return describe(error);
        }
    }
    template <typename E>
    bool failedWith() const {
        if (!failure) return false;
        try {
            std::rethrow_exception(failure);
        } catch (const E&) {
            return true;
        } catch (...) {
            return false;
        }
    }
};

namespace detail {
template <typename T>
QCoro::Task<void> drive(QCoro::Task<T> task, std::shared_ptr<Outcome<T>> outcome) {
    try {
        if constexpr (std::is_void_v<T>) {
            co_await task;
            outcome->value.emplace();
        } else {
            outcome->value = co_await task;
        }
    } catch (...) {
        outcome->failure = std::current_exception();
    }
}
}  // namespace detail

/// Follows a task to its end without an event loop: whatever the task waits for has to be moved by the test's
/// fakes.
template <typename T>
std::shared_ptr<Outcome<T>> follow(QCoro::Task<T> task) {
    auto outcome = std::make_shared<Outcome<T>>();
    detail::drive(std::move(task), outcome);
    return outcome;
}

/// The value of a task that ends at once. Throws what the task threw, and std::logic_error when it waits.
template <typename T>
T valueOf(QCoro::Task<T> task) {
    const auto outcome = follow(std::move(task));
    if (outcome->failure) std::rethrow_exception(outcome->failure);
    std::optional<typename Outcome<T>::Value> value = std::move(outcome->value);
    if (!value) throw std::logic_error("the task waits for something");
    if constexpr (!std::is_void_v<T>) return *std::move(value);
}

}  // namespace veltrin
