# What a person waits for, and what the program costs while nobody asks anything: ./build/release/bin/veltrin_road_bench
add_executable(veltrin_road_bench EXCLUDE_FROM_ALL ${CMAKE_CURRENT_LIST_DIR}/road/RoadBench.cpp)
target_link_libraries(veltrin_road_bench PRIVATE veltrin_test_support)
add_dependencies(veltrin_road_bench veltrin veltrin_desktop_keeper)
