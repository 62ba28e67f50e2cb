# Reading and writing, or selecting, at random in real applications, for as long as one likes: tools/soak
veltrin_sources(VELTRIN_SOAK_SOURCES soak support/fields)
add_executable(veltrin_soak EXCLUDE_FROM_ALL ${VELTRIN_SOAK_SOURCES}
    ${CMAKE_CURRENT_SOURCE_DIR}/desktop/matrix/MatrixTable.cpp)
target_include_directories(veltrin_soak PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_compile_definitions(veltrin_soak PRIVATE VELTRIN_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
                           VELTRIN_BINARY_DIR="${CMAKE_BINARY_DIR}")
target_link_libraries(veltrin_soak PRIVATE veltrin_fake_desktop veltrin_linux veltrin_test_support)
add_dependencies(veltrin_soak veltrin_desktop_keeper veltrin_test_editor veltrin_quick_editor)
