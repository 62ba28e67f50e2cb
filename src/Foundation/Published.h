#pragma once

#include "Foundation/Observers.h"

#include <utility>

namespace veltrin {

/// A value of an observable object: setting it tells the object's observers, also of an equal value.
template <typename T>
class Published {
public:
    explicit Published(Observers<>& changed, T value = {}) : changed_(changed), value_(std::move(value)) {}
    Published(const Published&) = delete;
    Published& operator=(const Published&) = delete;

    const T& operator()() const { return value_; }
    void set(T value) {
        value_ = std::move(value);
        changed_.notify();
    }

private:
    Observers<>& changed_;
    T value_;
};

}  // namespace veltrin
