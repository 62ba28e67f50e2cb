# What every target of this project is built with: language, warnings, sanitizers, and the tools that keep
# builds quick (ccache, mold, precompiled headers).
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC OFF)
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

find_program(VELTRIN_CCACHE ccache)
if(VELTRIN_CCACHE)
    # The sloppiness makes precompiled headers cacheable; the base directory lets two checkouts share entries.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
        ${VELTRIN_CCACHE})
endif()

add_library(veltrin_build INTERFACE)
target_include_directories(veltrin_build INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_definitions(veltrin_build INTERFACE
    QT_NO_KEYWORDS QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_URL_CAST_FROM_STRING
    QT_NO_FOREACH QT_DISABLE_DEPRECATED_BEFORE=0x060400
    VELTRIN_VERSION="${PROJECT_VERSION}")
target_compile_options(veltrin_build INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wimplicit-fallthrough
    -Werror -fvisibility=hidden)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # -Wrestrict is wrong about std::string's operator+ in GCC 12.
    target_compile_options(veltrin_build INTERFACE -fpch-preprocess -Wduplicated-cond -Wlogical-op -Wno-restrict)
endif()
find_program(VELTRIN_MOLD mold)
if(VELTRIN_MOLD)
    target_link_options(veltrin_build INTERFACE -fuse-ld=mold)
endif()
if(VELTRIN_SANITIZE)
    target_compile_options(veltrin_build INTERFACE
        -fsanitize=${VELTRIN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -g1)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # The instrumentation hides initialisations from GCC 12.
        target_compile_options(veltrin_build INTERFACE -Wno-maybe-uninitialized)
    endif()
    target_link_options(veltrin_build INTERFACE -fsanitize=${VELTRIN_SANITIZE})
endif()
if(VELTRIN_FUZZ)
    target_compile_options(veltrin_build INTERFACE -fsanitize=fuzzer-no-link)
endif()

# veltrin_library(NAME FOLDERS folder... LINK library... [PCH header...] [MOC])
# A storey of the house: every source below the named folders of src/, linked with what stands below it.
function(veltrin_library name)
    cmake_parse_arguments(ARG "MOC" "" "FOLDERS;EXCLUDE;LINK;PRIVATE_LINK;PCH" ${ARGN})
    set(sources)
    foreach(folder IN LISTS ARG_FOLDERS)
        file(GLOB_RECURSE found CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${folder}/*.cpp
             ${CMAKE_SOURCE_DIR}/src/${folder}/*.h)
        list(APPEND sources ${found})
    endforeach()
    foreach(pattern IN LISTS ARG_EXCLUDE)
        list(FILTER sources EXCLUDE REGEX ${pattern})
    endforeach()
    add_library(${name} STATIC ${sources})
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX AUTOMOC ${ARG_MOC})
    target_link_libraries(${name} PUBLIC veltrin_build ${ARG_LINK} PRIVATE ${ARG_PRIVATE_LINK})
    if(ARG_PCH)
        target_precompile_headers(${name} PRIVATE ${ARG_PCH})
    endif()
endfunction()

set(VELTRIN_CORE_PCH <QString> <QList> <QHash> <QObject> <QRectF> <functional> <memory> <optional> <vector> <variant>)
