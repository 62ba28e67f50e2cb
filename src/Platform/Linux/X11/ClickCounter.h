#pragma once

#include <QPoint>

#include <cstdint>
#include <cstdlib>
#include <optional>

namespace veltrin {

/// What the desktop takes for a double click.
struct DoubleClick {
    std::int32_t milliseconds = 400;
    std::int32_t pixels = 5;  ///< on either axis, from press to press
};

/// Counts the presses of one button that belong together: the second of a double click is 2, the third of a
/// triple click 3, and so on for as long as they come.
class ClickCounter {
public:
    /// `time` is the server's, in milliseconds that may wrap around.
    int press(std::uint32_t time, QPoint at, const DoubleClick& limits) {
        const bool belongs = last_ && time - last_->time < static_cast<std::uint32_t>(limits.milliseconds) &&
                             std::abs(at.x() - last_->at.x()) <= limits.pixels &&
                             std::abs(at.y() - last_->at.y()) <= limits.pixels;
        count_ = belongs ? count_ + 1 : 1;
        last_ = Press{time, at};
        return count_;
    }
    /// Another button was pressed in between.
    void interrupt() { last_.reset(); }
    int count() const { return count_; }

private:
    struct Press {
        std::uint32_t time;
        QPoint at;
    };
    std::optional<Press> last_;
    int count_ = 0;
};

}  // namespace veltrin
