#pragma once

#include "Platform/Linux/AtSpi/AtSpiProtocol.h"

#include <utility>

namespace veltrin::AtSpi {

/// An element of the port: an application (by its process), a top-level window (of the X server), or an
/// object of the accessibility bus.
class AtSpiElement final : public AXElement {
public:
    enum class Kind { application, window, object };

    static AXElementRef application(qint32 process) { return make(Kind::application, process, 0, {}); }
    static AXElementRef window(qint32 process, quint32 id) { return make(Kind::window, process, id, {}); }
    static AXElementRef object(qint32 process, ObjectAddress address) {
        return make(Kind::object, process, 0, std::move(address));
    }

    Kind kind() const { return kind_; }
    qint32 process() const { return process_; }
    quint32 windowId() const { return windowId_; }
    const ObjectAddress& address() const { return address_; }

    std::optional<qint32> processIdentifier() const override { return process_; }
    bool isEqual(const AXElement& other) const override {
        const auto* element = dynamic_cast<const AtSpiElement*>(&other);
        return element && element->kind_ == kind_ && element->process_ == process_ &&
               element->windowId_ == windowId_ && element->address_ == address_;
    }

private:
    AtSpiElement(Kind kind, qint32 process, quint32 windowId, ObjectAddress address)
        : kind_(kind), process_(process), windowId_(windowId), address_(std::move(address)) {}
    static AXElementRef make(Kind kind, qint32 process, quint32 windowId, ObjectAddress address) {
        return AXElementRef(new AtSpiElement(kind, process, windowId, std::move(address)));
    }

    Kind kind_;
    qint32 process_;
    quint32 windowId_;
    ObjectAddress address_;
};

}  // namespace veltrin::AtSpi
