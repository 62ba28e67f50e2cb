#include "Platform/Linux/AtSpi/AtSpiProtocol.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QStringList>

namespace veltrin::AtSpi {
namespace {

/// Containers come as an argument to be read; a const one, since reading another detaches it at every step.
std::optional<QDBusArgument> container(const QVariant& value, QDBusArgument::ElementType type) {
    if (!value.canConvert<QDBusArgument>()) return {};
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentType() != type) return {};
    return argument;
}

}  // namespace

QVariant Reply::value(int index) const {
    if (index < 0 || index >= arguments.size()) return {};
    const QVariant& argument = arguments[index];
    return argument.canConvert<QDBusVariant>() ? argument.value<QDBusVariant>().variant() : argument;
}

StateSet Reply::states() const {
    const auto found = container(value(), QDBusArgument::ArrayType);
    if (!found) return {};
    const QDBusArgument& array = *found;
    quint64 bits = 0;
    int shift = 0;
    array.beginArray();
    for (; !array.atEnd(); shift += 32) {
        uint word = 0;
        array >> word;
        if (shift < 64) bits |= static_cast<quint64>(word) << shift;
    }
    array.endArray();
    return StateSet(bits);
}

QStringList Reply::texts() const {
    return value().toStringList();
}

std::vector<ObjectAddress> Reply::objects() const {
    const auto found = container(value(), QDBusArgument::ArrayType);
    if (!found) return {};
    const QDBusArgument& array = *found;
    std::vector<ObjectAddress> objects;
    array.beginArray();
    while (!array.atEnd() && array.currentType() == QDBusArgument::StructureType) {
        ObjectAddress object;
        QDBusObjectPath path;
        array.beginStructure();
        array >> object.bus >> path;
        array.endStructure();
        object.path = path.path();
        if (!object.isNull() && object.path != QLatin1String(Name::nullPath)) objects.push_back(object);
    }
    array.endArray();
    return objects;
}

ObjectAddress Reply::object() const {
    const auto found = container(value(), QDBusArgument::StructureType);
    if (!found) return {};
    const QDBusArgument& structure = *found;
    ObjectAddress object;
    QDBusObjectPath path;
    structure.beginStructure();
    structure >> object.bus >> path;
    structure.endStructure();
    object.path = path.path();
    return object.path == QLatin1String(Name::nullPath) ? ObjectAddress{} : object;
}

std::optional<QRectF> Reply::rectangle() const {
    if (arguments.size() == 4)
        return QRectF(value(0).toInt(), value(1).toInt(), value(2).toInt(), value(3).toInt());
    const auto found = container(value(), QDBusArgument::StructureType);
    if (!found) return {};
    const QDBusArgument& structure = *found;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    structure.beginStructure();
    structure >> x >> y >> width >> height;
    structure.endStructure();
    return QRectF(x, y, width, height);
}

}  // namespace veltrin::AtSpi
