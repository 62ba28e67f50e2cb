#include "Platform/Linux/X11/X11Settings.h"

#include <QtEndian>

namespace veltrin {
namespace {

/// Real ones are a few kilobytes.
constexpr std::uint32_t mostBytes = 256 * 1024;
constexpr std::int32_t longestMilliseconds = 5000;
constexpr std::int32_t farthestPixels = 200;

enum class Kind { integer = 0, string = 1, colour = 2 };

/// Reads the published bytes from front to end; what goes beyond the end makes it invalid for good.
class SettingsReader {
public:
    explicit SettingsReader(const QByteArray& bytes) : bytes_(bytes) {
        isLittleEndian_ = number<std::uint8_t>() == 0;
        skip(7);
    }
    bool isValid() const { return isValid_; }

    template <typename T>
    T number() {
        const qsizetype from = position_;
        if (!skip(sizeof(T))) return {};
        const char* data = bytes_.constData() + from;
        return isLittleEndian_ ? qFromLittleEndian<T>(data) : qFromBigEndian<T>(data);
    }
    /// Padded to whole words.
    QByteArray bytes(qsizetype length) {
        const qsizetype from = position_;
        return skip(length) && skip((4 - length % 4) % 4) ? bytes_.mid(from, length) : QByteArray();
    }
    bool skip(qsizetype length) {
        isValid_ = isValid_ && length >= 0 && length <= bytes_.size() - position_;
        if (isValid_) position_ += length;
        return isValid_;
    }

private:
    const QByteArray& bytes_;
    qsizetype position_ = 0;
    bool isValid_ = true;
    bool isLittleEndian_ = true;
};

}  // namespace

std::optional<std::int32_t> xsettingsInteger(const QByteArray& settings, const QByteArray& name) {
    SettingsReader reader(settings);
    const auto count = reader.number<std::uint32_t>();
    for (std::uint32_t i = 0; i < count && reader.isValid(); ++i) {
        const auto kind = static_cast<Kind>(reader.number<std::uint8_t>());
        reader.skip(1);
        const QByteArray found = reader.bytes(reader.number<std::uint16_t>());
        reader.skip(4);
        if (kind == Kind::integer) {
            const auto value = reader.number<std::int32_t>();
            if (reader.isValid() && found == name) return value;
        } else if (kind == Kind::string) {
            reader.bytes(reader.number<std::uint32_t>());
        } else if (kind == Kind::colour) {
            reader.skip(8);
        } else {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

DoubleClick doubleClickOf(const X11Connection& connection) {
    DoubleClick result;
    const X11Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection.xcb(), xcb_get_selection_owner(connection.xcb(), connection.atom("_XSETTINGS_S0")),
        nullptr));
    if (!owner || owner->owner == XCB_NONE) return result;
    const auto settings = connection.property(owner->owner, connection.atom("_XSETTINGS_SETTINGS"),
                                              connection.atom("_XSETTINGS_SETTINGS"), mostBytes);
    if (!settings) return result;
    const auto time = xsettingsInteger(settings->bytes, "Net/DoubleClickTime");
    const auto distance = xsettingsInteger(settings->bytes, "Net/DoubleClickDistance");
    if (time && *time > 0 && *time <= longestMilliseconds) result.milliseconds = *time;
    if (distance && *distance >= 0 && *distance <= farthestPixels) result.pixels = *distance;
    return result;
}

}  // namespace veltrin
