# What the desktop tests need besides their own sources: libraries, and small programs that run beside them.
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets)
pkg_check_modules(VELTRIN_TYPIST REQUIRED IMPORTED_TARGET x11 xi xtst)

# Ends the desktop of a test program that died. Plain C++, so that nothing can keep it from working.
add_executable(veltrin_desktop_keeper
    ${CMAKE_CURRENT_LIST_DIR}/../apps/DesktopKeeper.cpp ${CMAKE_CURRENT_LIST_DIR}/ProcessSweep.cpp)
target_include_directories(veltrin_desktop_keeper PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(veltrin_desktop_keeper PRIVATE veltrin_build)

# A Qt application to work on.
add_executable(veltrin_test_editor ${CMAKE_CURRENT_LIST_DIR}/../apps/TestEditor.cpp)
target_link_libraries(veltrin_test_editor PRIVATE veltrin_build Qt6::Widgets)

target_link_libraries(veltrin_test_support PRIVATE PkgConfig::VELTRIN_TYPIST)
