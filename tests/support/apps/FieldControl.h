#pragma once

#include <QHash>
#include <QJsonObject>
#include <QLocalServer>
#include <QString>

#include <functional>

namespace veltrin {

/// Lets a test set and look at the fields of a test application over a local socket, past everything that is
/// under test. Offsets are UTF-16 units. One JSON object a line each way:
///
///   {"field": NAME, "do": "set", "text": TEXT, "start": N, "end": N}   text, selection and focus
///   {"field": NAME, "do": "select", "start": N, "end": N}
///   {"field": NAME, "do": "state"}
///
/// Each is answered by {"text": TEXT, "start": N, "end": N, "focused": BOOL}.
class FieldControl {
public:
    struct Field {
        std::function<void(const QString& text)> setText;
        std::function<void(int start, int end)> select;  ///< takes the focus, too
        std::function<QJsonObject()> state;
    };

    /// Listens until it is destroyed; nobody is listened to when `socket` is empty.
    FieldControl(const QString& socket, QHash<QString, Field> fields);

private:
    QJsonObject answer(const QJsonObject& request) const;

    QLocalServer server_;
    QHash<QString, Field> fields_;
};

}  // namespace veltrin
