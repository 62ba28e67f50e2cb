# What the hot paths cost, with Google Benchmark: ./build/release/bin/veltrin_bench
find_package(benchmark REQUIRED)

file(GLOB VELTRIN_BENCH_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/bench/*.cpp)
veltrin_sources(VELTRIN_BENCH_FAKES support/fake)
add_executable(veltrin_bench EXCLUDE_FROM_ALL ${VELTRIN_BENCH_SOURCES} ${VELTRIN_BENCH_FAKES})
target_include_directories(veltrin_bench PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(veltrin_bench PRIVATE veltrin_coordinator benchmark::benchmark)
