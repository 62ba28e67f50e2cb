# How much listening to the keyboard delays a key: ./build/release/bin/veltrin_key_latency
add_executable(veltrin_key_latency EXCLUDE_FROM_ALL ${CMAKE_CURRENT_LIST_DIR}/latency/KeyLatency.cpp)
target_link_libraries(veltrin_key_latency PRIVATE veltrin_linux veltrin_test_support)
add_dependencies(veltrin_key_latency veltrin_desktop_keeper veltrin_keyguard)
