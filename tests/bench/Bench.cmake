# What the hot paths cost, with Google Benchmark: ./build/release/bin/veltrin_bench
find_package(benchmark REQUIRED)

file(GLOB VELTRIN_BENCH_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/bench/*.cpp)
add_executable(veltrin_bench EXCLUDE_FROM_ALL ${VELTRIN_BENCH_SOURCES})
target_link_libraries(veltrin_bench PRIVATE veltrin_fake_desktop benchmark::benchmark)
