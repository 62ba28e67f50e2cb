# A small program beside the main one; see its source.
add_executable(veltrin_keyguard ${CMAKE_CURRENT_LIST_DIR}/KeyGuard.cpp)
set_target_properties(veltrin_keyguard PROPERTIES OUTPUT_NAME veltrin-keyguard)
target_include_directories(veltrin_keyguard PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(veltrin_keyguard PRIVATE veltrin_build PkgConfig::VELTRIN_XCB)

include(GNUInstallDirs)
install(TARGETS veltrin_keyguard RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/veltrin)
