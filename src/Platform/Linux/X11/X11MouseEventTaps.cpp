#include "Platform/Linux/X11/X11MouseEventTaps.h"

#include "Platform/Linux/X11/X11MouseListener.h"

#include <utility>

namespace veltrin {
namespace {

/// Seconds until a tap says that it lost its connection: not at once, lest a server that goes be asked for
/// another in a loop.
constexpr double lossDelay = 0.1;

}  // namespace

class X11MouseEventTaps::Tap final : public MouseEventTap {
public:
    Tap(RunLoop& runLoop, QByteArray display, std::shared_ptr<bool> isSilent, Handler handler)
        : state_(std::make_shared<State>(
              State{runLoop, std::move(display), std::move(isSilent), std::move(handler), 0, nullptr})) {}
    ~Tap() override {
        ++state_->generation;
        state_->listener.reset();
    }
    Tap(const Tap&) = delete;
    Tap& operator=(const Tap&) = delete;

    void setEnabled(bool enabled) override {
        if (enabled == (state_->listener != nullptr)) return;
        // What an earlier listener has told is of no interest any more.
        ++state_->generation;
        state_->listener.reset();
        if (enabled) start();
    }
    bool start() {
        const auto later = [weak = std::weak_ptr(state_), &loop = state_->runLoop,
                            generation = state_->generation](auto action) {
            loop.post([weak, generation, action] {
                const auto state = weak.lock();
                if (state && state->generation == generation) action(state);
            });
        };
        state_->listener = X11MouseListener::start(
            state_->display,
            {[later](const MouseEvent& event) {
                 later([event](const std::shared_ptr<State>& state) { deliver(state, event); });
             },
             [later] { later([](const std::shared_ptr<State>& state) { lost(state); }); }});
        return state_->listener != nullptr;
    }

private:
    struct State {
        RunLoop& runLoop;
        QByteArray display;
        std::shared_ptr<bool> isSilent;
        Handler handler;
        quint64 generation;
        std::unique_ptr<X11MouseListener> listener;
    };

    /// The handler may end the tap.
    static void deliver(const std::shared_ptr<State>& state, const MouseEvent& event) {
        if (!*state->isSilent) state->handler(event);
    }
    static void lost(const std::shared_ptr<State>& state) {
        state->listener.reset();
        state->runLoop.afterDetached(lossDelay,
                                     [weak = std::weak_ptr(state), generation = state->generation] {
                                         const auto still = weak.lock();
                                         if (!still || still->generation != generation) return;
                                         MouseEvent event;
                                         event.type = MouseEventType::tapDisabledByTimeout;
                                         still->handler(event);
                                     });
    }

    std::shared_ptr<State> state_;
};

X11MouseEventTaps::X11MouseEventTaps(RunLoop& runLoop, QByteArray display)
    : runLoop_(runLoop), display_(std::move(display)) {
}

std::unique_ptr<MouseEventTap> X11MouseEventTaps::create(MouseEventTap::Handler handler) {
    // Under Wayland the server sees the mouse over the windows of its own clients only.
    if (!handler || qgetenv("XDG_SESSION_TYPE") == "wayland") return nullptr;
    auto tap = std::make_unique<Tap>(runLoop_, display_, isSilent_, std::move(handler));
    // Tried once, so that nobody waits for what can never come.
    if (!tap->start()) return nullptr;
    tap->setEnabled(false);
    return tap;
}

}  // namespace veltrin
