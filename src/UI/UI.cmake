# The windows: QML on the software scene graph, and the thin objects that feed it. QML is not compiled ahead of time:
# qmlcachegen's output is not deterministic, so that it defeats ccache, and it gains a few milliseconds a panel.
find_package(Qt6 6.4 REQUIRED COMPONENTS DBus Gui Qml Quick Widgets)

veltrin_library(veltrin_ui FOLDERS UI MOC
    LINK veltrin_core Qt6::DBus Qt6::Gui Qt6::Qml Qt6::Quick Qt6::Widgets PkgConfig::VELTRIN_XCB
    PCH ${VELTRIN_CORE_PCH} <QQuickWindow>)
# The generated type registrations include the elements' headers by their bare names.
target_include_directories(veltrin_ui PRIVATE ${CMAKE_CURRENT_LIST_DIR}/Design ${CMAKE_CURRENT_LIST_DIR}/Shortcuts)

file(GLOB_RECURSE VELTRIN_QML RELATIVE ${CMAKE_CURRENT_LIST_DIR} CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*.qml)
foreach(file IN LISTS VELTRIN_QML)
    get_filename_component(name ${file} NAME)
    set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/${file} PROPERTIES QT_RESOURCE_ALIAS ${name})
    list(APPEND VELTRIN_QML_FILES ${CMAKE_CURRENT_LIST_DIR}/${file})
endforeach()
set_source_files_properties(${CMAKE_CURRENT_LIST_DIR}/Design/L.qml PROPERTIES QT_QML_SINGLETON_TYPE TRUE)
qt_add_qml_module(veltrin_ui
    URI Veltrin VERSION 1.0 RESOURCE_PREFIX /qt/qml
    OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/qml/Veltrin IMPORT_PATH ${CMAKE_BINARY_DIR}/qml
    QML_FILES ${VELTRIN_QML_FILES} DEPENDENCIES QtQuick NO_CACHEGEN NO_PLUGIN)
