# Compiler settings that every target of this project shares.

# An archive of one commit is the same wherever it is built: no times, no owners.
set(CMAKE_CXX_ARCHIVE_CREATE "<CMAKE_AR> qcD <TARGET> <LINK_FLAGS> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_APPEND "<CMAKE_AR> qD <TARGET> <LINK_FLAGS> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_FINISH "<CMAKE_RANLIB> -D <TARGET>")

function(fundo_configure target)
    target_compile_features(${target} PRIVATE cxx_std_17)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    target_compile_definitions(${target} PRIVATE _GNU_SOURCE)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
    if(FUNDO_SANITIZE)
        string(REPLACE ";" "," sanitizers "${FUNDO_SANITIZE}")
        # UBSan reports must fail a test, not scroll by.
        target_compile_options(${target} PRIVATE
            -fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
        target_link_options(${target} PUBLIC -fsanitize=${sanitizers})
    endif()
endfunction()

# fundo_add_tests(<name> [INTERNAL] [SOURCES ...] [LIBRARIES ...])
#
# One test program, linked with the shared library, or with the library's objects when the tests
# reach private parts (INTERNAL). CTest runs each TEST in a process of its own, since options, pools
# and singletons are process-wide. Without SOURCES every .cpp of the folder is taken.
function(fundo_add_tests name)
    cmake_parse_arguments(arg "INTERNAL" "" "SOURCES;LIBRARIES" ${ARGN})
    if(NOT arg_SOURCES)
        file(GLOB arg_SOURCES CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
    endif()
    add_executable(${name} ${arg_SOURCES})
    fundo_configure(${name})
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/Tests")
    if(arg_INTERNAL)
        target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/Src")
        target_link_libraries(${name} PRIVATE FundoObjects)
    else()
        target_link_libraries(${name} PRIVATE Fundo::Fundo)
    endif()
    # As the library itself: threads with small stacks call what the tests interpose.
    target_link_options(${name} PRIVATE "LINKER:-z,now")
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gtest_main)
    gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()

# fundo_add_benchmark(<name> [INTERNAL] [LIBRARIES ...])
#
# One benchmark program from every .cpp of the folder.
function(fundo_add_benchmark name)
    cmake_parse_arguments(arg "INTERNAL" "" "LIBRARIES" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
    add_executable(${name} ${sources})
    fundo_configure(${name})
    if(arg_INTERNAL)
        target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/Src")
        target_link_libraries(${name} PRIVATE FundoObjects)
    else()
        target_link_libraries(${name} PRIVATE Fundo::Fundo)
    endif()
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} benchmark::benchmark_main)
endfunction()

# fundo_add_peer(<benchmark> <name> <package> <target>... [COMPONENTS <component>...])
# fundo_add_peer(<benchmark> <name> HEADER <header> LIBRARY <library>)
#
# Links a benchmark with a library to compare with, where it is installed, and defines HAVE_<name>.
function(fundo_add_peer benchmark name)
    cmake_parse_arguments(arg "" "HEADER;LIBRARY" "COMPONENTS" ${ARGN})
    if(arg_LIBRARY)
        find_path(${name}_HEADERS ${arg_HEADER})
        find_library(${name}_BINARY ${arg_LIBRARY})
        if(NOT ${name}_HEADERS OR NOT ${name}_BINARY)
            return()
        endif()
        target_include_directories(${benchmark} PRIVATE "${${name}_HEADERS}")
        target_link_libraries(${benchmark} PRIVATE "${${name}_BINARY}")
    else()
        list(POP_FRONT arg_UNPARSED_ARGUMENTS package)
        find_package(${package} QUIET COMPONENTS ${arg_COMPONENTS})
        if(NOT ${package}_FOUND)
            return()
        endif()
        target_link_libraries(${benchmark} PRIVATE ${arg_UNPARSED_ARGUMENTS})
    endif()
    target_compile_definitions(${benchmark} PRIVATE HAVE_${name})
endfunction()

# fundo_add_example(<name> <source>...)
function(fundo_add_example name)
    add_executable(${name} ${ARGN})
    fundo_configure(${name})
    target_link_libraries(${name} PRIVATE Fundo::Fundo)
endfunction()
