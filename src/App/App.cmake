# The process: main and the composition root.
add_executable(veltrin ${CMAKE_CURRENT_LIST_DIR}/main.cpp
    ${CMAKE_CURRENT_LIST_DIR}/CompositionRoot.cpp ${CMAKE_CURRENT_LIST_DIR}/CompositionRoot.h
    ${CMAKE_CURRENT_LIST_DIR}/GalleryMode.cpp ${CMAKE_CURRENT_LIST_DIR}/GalleryMode.h)
target_link_libraries(veltrin PRIVATE veltrin_coordinator veltrin_linux veltrin_ui)
add_dependencies(veltrin veltrin_keyguard)
target_precompile_headers(veltrin PRIVATE ${VELTRIN_CORE_PCH})

include(GNUInstallDirs)
install(TARGETS veltrin RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${CMAKE_SOURCE_DIR}/packaging/com.veltrin.app.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/com.veltrin.app.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
