# From a call to the loudspeaker, on a sound server of its own: ./build/release/bin/veltrin_sound_bench
file(GLOB VELTRIN_SOUND_BENCH_SOURCES CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/bench/sound/*.cpp)
add_executable(veltrin_sound_bench EXCLUDE_FROM_ALL ${VELTRIN_SOUND_BENCH_SOURCES})
target_link_libraries(veltrin_sound_bench PRIVATE veltrin_core veltrin_linux veltrin_test_support)
