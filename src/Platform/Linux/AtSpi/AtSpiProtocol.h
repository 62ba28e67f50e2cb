#pragma once

#include "Platform/Accessibility.h"

#include <QString>
#include <QVariantList>

/// The words of the accessibility bus that this program uses.
namespace veltrin::AtSpi {

/// An object of another process: its connection's unique name and its path there.
struct ObjectAddress {
    QString bus;
    QString path;
    bool isNull() const { return bus.isEmpty() || path.isEmpty(); }
    friend bool operator==(const ObjectAddress&, const ObjectAddress&) = default;
};

/// How far a rectangle is asked for; 0 is in the desktop's pixels.
inline constexpr quint32 screenCoordinates = 0;

namespace Name {
inline constexpr char registry[] = "org.a11y.atspi.Registry";
inline constexpr char registryPath[] = "/org/a11y/atspi/registry";
inline constexpr char rootPath[] = "/org/a11y/atspi/accessible/root";
inline constexpr char nullPath[] = "/org/a11y/atspi/null";

inline constexpr char accessible[] = "org.a11y.atspi.Accessible";
inline constexpr char application[] = "org.a11y.atspi.Application";
inline constexpr char component[] = "org.a11y.atspi.Component";
inline constexpr char text[] = "org.a11y.atspi.Text";
inline constexpr char editableText[] = "org.a11y.atspi.EditableText";
inline constexpr char objectEvent[] = "org.a11y.atspi.Event.Object";
inline constexpr char windowEvent[] = "org.a11y.atspi.Event.Window";
inline constexpr char properties[] = "org.freedesktop.DBus.Properties";
inline constexpr char daemon[] = "org.freedesktop.DBus";
inline constexpr char daemonPath[] = "/org/freedesktop/DBus";
}  // namespace Name

/// Role numbers, those that matter here.
enum class Role : quint32 {
    invalid = 0,
    alert = 2,
    checkBox = 7,
    comboBox = 11,
    dialog = 16,
    frame = 23,
    icon = 26,
    image = 27,
    label = 29,
    list = 31,
    listItem = 32,
    menu = 33,
    menuBar = 34,
    menuItem = 35,
    pageTab = 37,
    pageTabList = 38,
    panel = 39,
    passwordText = 40,
    popupMenu = 41,
    progressBar = 42,
    pushButton = 43,
    radioButton = 44,
    rootPane = 46,
    scrollBar = 48,
    scrollPane = 49,
    slider = 51,
    spinButton = 52,
    splitPane = 53,
    table = 55,
    tableCell = 56,
    terminal = 60,
    text = 61,
    toggleButton = 62,
    toolBar = 63,
    tree = 65,
    treeTable = 66,
    window = 69,
    paragraph = 73,
    application = 75,
    autocomplete = 76,
    editBar = 77,
    entry = 79,
    documentFrame = 82,
    heading = 83,
    section = 85,
    link = 88,
    documentText = 94,
    documentWeb = 95,
    documentEmail = 96,
    comment = 97,
    listBox = 98,
    blockQuote = 105,
    article = 109,
    staticText = 116,
};

/// Bits of an object's state set.
enum class State : int {
    active = 1,
    defunct = 6,
    editable = 7,
    focused = 12,
    multiLine = 17,
    showing = 25,
    singleLine = 26,
    managesDescendants = 31,
    readOnly = 43,
};

class StateSet {
public:
    StateSet() = default;
    explicit StateSet(quint64 bits) : bits_(bits) {}
    bool has(State state) const { return (bits_ >> static_cast<int>(state) & 1) != 0; }

private:
    quint64 bits_ = 0;
};

/// What came back for one call.
struct Reply {
    AXError error = AXError::failure;
    QVariantList arguments;
    bool ok() const { return error == AXError::success; }

    /// The argument with the variant around it, if any, taken off.
    QVariant value(int index = 0) const;
    qint64 number(int index = 0) const { return value(index).toLongLong(); }
    QString text() const { return value().toString(); }
    bool flag() const { return value().toBool(); }
    StateSet states() const;
    QStringList texts() const;
    std::vector<ObjectAddress> objects() const;
    /// The one object; null when there is none.
    ObjectAddress object() const;
    /// Four numbers in one structure, x, y, width, height.
    std::optional<QRectF> rectangle() const;
};

}  // namespace veltrin::AtSpi
