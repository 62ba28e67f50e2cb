# The windows: QML on the software scene graph, and the thin objects that feed it.
find_package(Qt6 6.4 REQUIRED COMPONENTS Quick)
