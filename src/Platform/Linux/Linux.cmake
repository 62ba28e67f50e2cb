# The adapters for the Linux desktop: X11, AT-SPI over D-Bus, freedesktop files, Qt Network.
find_package(Qt6 6.4 REQUIRED COMPONENTS Gui DBus Network)
find_package(QCoro6 REQUIRED COMPONENTS Network)
find_package(PkgConfig REQUIRED)
pkg_check_modules(VELTRIN_XCB REQUIRED IMPORTED_TARGET GLOBAL
    xcb xcb-xinput xcb-xfixes xcb-xtest xcb-randr xcb-shape xcb-ewmh xcb-icccm xcb-xkb xcb-record xcb-res
    xkbcommon xkbcommon-x11)

pkg_check_modules(VELTRIN_PULSE REQUIRED IMPORTED_TARGET libpulse)

veltrin_library(veltrin_linux FOLDERS Platform/Linux MOC
    LINK veltrin_platform Qt6::Gui Qt6::DBus Qt6::Network QCoro6::Network PkgConfig::VELTRIN_XCB
    PRIVATE_LINK PkgConfig::VELTRIN_PULSE
    PCH ${VELTRIN_CORE_PCH} <QDBusMessage> <xcb/xcb.h>)
