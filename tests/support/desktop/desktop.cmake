# What the desktop tests need besides their own sources: libraries, and small programs that run beside them.
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets Quick Network)
pkg_check_modules(VELTRIN_TYPIST REQUIRED IMPORTED_TARGET x11 xi xtst)

# Ends the desktop of a test program that died. Plain C++, so that nothing can keep it from working.
add_executable(veltrin_desktop_keeper
    ${CMAKE_CURRENT_LIST_DIR}/../apps/DesktopKeeper.cpp ${CMAKE_CURRENT_LIST_DIR}/ProcessSweep.cpp)
target_include_directories(veltrin_desktop_keeper PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(veltrin_desktop_keeper PRIVATE veltrin_build)

# Qt applications to work on: one of widgets, one of Qt Quick.
set(VELTRIN_TEST_APPS ${CMAKE_CURRENT_LIST_DIR}/../apps)
add_executable(veltrin_test_editor ${VELTRIN_TEST_APPS}/TestEditor.cpp ${VELTRIN_TEST_APPS}/FieldControl.cpp)
target_include_directories(veltrin_test_editor PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(veltrin_test_editor PRIVATE veltrin_build Qt6::Widgets Qt6::Network)
add_executable(veltrin_unreliable_editor ${VELTRIN_TEST_APPS}/UnreliableEditor.cpp)
target_link_libraries(veltrin_unreliable_editor PRIVATE veltrin_build Qt6::Widgets)
add_executable(veltrin_quick_editor ${VELTRIN_TEST_APPS}/QuickEditor.cpp ${VELTRIN_TEST_APPS}/FieldControl.cpp)
target_include_directories(veltrin_quick_editor PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(veltrin_quick_editor PRIVATE veltrin_build Qt6::Quick Qt6::Network)
qt_add_resources(veltrin_quick_editor veltrin_quick_editor_qml PREFIX / BASE ${VELTRIN_TEST_APPS}
    FILES ${VELTRIN_TEST_APPS}/QuickEditor.qml)

# The floating panels alone, for tests of their windows.
add_executable(veltrin_panel_host ${VELTRIN_TEST_APPS}/PanelHost.cpp ${VELTRIN_TEST_APPS}/SelectionHost.cpp)
target_link_libraries(veltrin_panel_host PRIVATE veltrin_fake_desktop veltrin_linux veltrin_ui)

target_link_libraries(veltrin_test_support PRIVATE PkgConfig::VELTRIN_TYPIST)
