# libFuzzer programs, one a reader of foreign bytes. Each starts from its seeds in fuzz/corpus and keeps what it finds in
# the build folder; as a test it runs for VELTRIN_FUZZ_SECONDS.
set(VELTRIN_FUZZ_SECONDS 5 CACHE STRING "Seconds that each fuzz target runs as a test")

function(veltrin_fuzz_target name source)
    add_executable(veltrin_fuzz_${name} ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/${source} ${ARGN})
    target_include_directories(veltrin_fuzz_${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(veltrin_fuzz_${name} PRIVATE veltrin_core)
    target_compile_options(veltrin_fuzz_${name} PRIVATE -fsanitize=fuzzer)
    target_link_options(veltrin_fuzz_${name} PRIVATE -fsanitize=fuzzer)
    set(found ${CMAKE_BINARY_DIR}/fuzz/${name})
    file(MAKE_DIRECTORY ${found})
    add_test(NAME veltrin_fuzz_${name}
        COMMAND veltrin_fuzz_${name} -max_total_time=${VELTRIN_FUZZ_SECONDS} -timeout=10 -max_len=8192
                -artifact_prefix=${found}/ ${found} ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/corpus/${name})
endfunction()

veltrin_fuzz_target(json JsonFuzz.cpp)
target_link_libraries(veltrin_fuzz_json PRIVATE nlohmann_json::nlohmann_json)
# A decoder without a desktop, so it is compiled in alone.
veltrin_fuzz_target(preferences PreferencesFuzz.cpp ${CMAKE_SOURCE_DIR}/src/Platform/Linux/PreferencesDocument.cpp)
veltrin_fuzz_target(answers ModelAnswerFuzz.cpp)
veltrin_fuzz_target(recommendations CommandRecommendationFuzz.cpp)
veltrin_fuzz_target(stores StoresFuzz.cpp)
veltrin_fuzz_target(memory ExpressionMemoryFuzz.cpp)
veltrin_fuzz_target(characters CharactersFuzz.cpp)
veltrin_fuzz_target(context ExternalTextContextFuzz.cpp)
veltrin_fuzz_target(task_answers TaskAnswersFuzz.cpp)
veltrin_fuzz_target(prompts PromptsFuzz.cpp)
veltrin_fuzz_target(lab PromptLabFuzz.cpp)
veltrin_fuzz_target(agents AgentFilesFuzz.cpp)
veltrin_fuzz_target(agent_answers AgentAnswersFuzz.cpp)
# Arithmetic on texts and offsets of foreign applications; no bus in it.
veltrin_fuzz_target(offsets TextOffsetsFuzz.cpp ${CMAKE_SOURCE_DIR}/src/Platform/Linux/AtSpi/TextOffsets.cpp)
