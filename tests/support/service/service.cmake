# The stand-in model service as a program of its own; test material, never installed.
file(GLOB service_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/*.cpp ${CMAKE_CURRENT_LIST_DIR}/*.h)
add_executable(veltrin_model_service ${service_sources} ${CMAKE_CURRENT_LIST_DIR}/standalone/main.cpp)
target_include_directories(veltrin_model_service PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(veltrin_model_service PRIVATE veltrin_foundation Qt6::Network)
target_precompile_headers(veltrin_model_service PRIVATE ${VELTRIN_CORE_PCH})
