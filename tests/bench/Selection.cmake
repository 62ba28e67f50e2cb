# What the user waits for after selecting something with the mouse: ./build/release/bin/veltrin_selection_bench
veltrin_sources(VELTRIN_SELECTION_BENCH_SOURCES bench/selection support/fields)
add_executable(veltrin_selection_bench EXCLUDE_FROM_ALL ${VELTRIN_SELECTION_BENCH_SOURCES})
target_include_directories(veltrin_selection_bench PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_compile_definitions(veltrin_selection_bench PRIVATE VELTRIN_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
                           VELTRIN_BINARY_DIR="${CMAKE_BINARY_DIR}")
target_link_libraries(veltrin_selection_bench PRIVATE veltrin_coordinator veltrin_linux veltrin_test_support)
add_dependencies(veltrin_selection_bench veltrin_desktop_keeper veltrin_test_editor veltrin_quick_editor)
