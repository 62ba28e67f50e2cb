# What the files of the stores cost at their caps: ./build/release/bin/veltrin_stores_bench
veltrin_sources(VELTRIN_STORES_BENCH_FAKES support/fake)
add_executable(veltrin_stores_bench EXCLUDE_FROM_ALL ${CMAKE_CURRENT_LIST_DIR}/stores/StoresBench.cpp
    ${VELTRIN_STORES_BENCH_FAKES})
target_include_directories(veltrin_stores_bench PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(veltrin_stores_bench PRIVATE veltrin_coordinator)
