#pragma once

#include <memory>
#include <utility>

namespace veltrin {

/// Lets callbacks hold their owner weakly: the owner has a Lifetime as its last member, and a callback made
/// by `bind` does nothing (and gives a default-made result) once the owner is gone. Main thread only.
class Lifetime {
public:
    class Token {
    public:
        bool alive() const { return !owner_.expired(); }

    private:
        friend class Lifetime;
        std::weak_ptr<char> owner_;
    };

    Lifetime() = default;
    Lifetime(const Lifetime&) = delete;
    Lifetime& operator=(const Lifetime&) = delete;

    Token token() const {
        Token token;
        token.owner_ = alive_;
        return token;
    }

    template <typename Function>
    auto bind(Function function) const {
        return [token = token(), function = std::move(function)](auto&&... arguments) mutable {
            using Result = decltype(function(std::forward<decltype(arguments)>(arguments)...));
            if constexpr (std::is_void_v<Result>) {
                if (token.alive()) function(std::forward<decltype(arguments)>(arguments)...);
            } else {
                return token.alive() ? function(std::forward<decltype(arguments)>(arguments)...) : Result{};
            }
        };
    }

private:
    std::shared_ptr<char> alive_ = std::make_shared<char>();
};

}  // namespace veltrin
